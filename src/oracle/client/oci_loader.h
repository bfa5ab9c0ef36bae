// Opening the Oracle client library and filling the entry-point table from it, with the
// platform's own loader: LoadLibraryW / GetProcAddress on Windows, dlopen / dlsym on the host.
// Called only by the gate, once per successful binding; the library stays loaded for the life
// of the process. The variable DSL_OCI_LIBRARY, when set, names the library to open instead of
// the client's own name; tests and diagnosis use it to point at another client.
#pragma once
#include <cstdint>
#include <string>

#include "oracle/client/oci_table.h"

namespace specific::oracle {

// The names of the client library when DSL_OCI_LIBRARY is not set.
extern const char kOciLibraryWindows[];  // "OCI.dll"
extern const char kOciLibraryPosix[];    // "libclntsh.so"
extern const char kOciLibraryVariable[];  // "DSL_OCI_LIBRARY"

// The outcome of one attempt to bind. On failure `code` is what a failed delay-load raises:
// 0xC06D007E when the library could not be loaded, 0xC06D007F when an entry point is missing;
// `detail` names the library or the entry point and says what the loader answered.
struct oci_load_result_t {
  bool ok = false;
  uint32_t code = 0;
  std::string detail;
};

// Fills every slot of `table` or none: on failure `table` is not touched.
oci_load_result_t load_oci_table(oci_table_t& table);

}  // namespace specific::oracle
