#include "oracle/client/oci_loader.h"

#include "common/text/fmt.h"
#include "oracle/client/oci_module.h"
#include "oracle/client/system_exception.h"

namespace specific::oracle {

const char kOciLibraryWindows[] = "OCI.dll";
const char kOciLibraryPosix[] = "libclntsh.so";
const char kOciLibraryVariable[] = "DSL_OCI_LIBRARY";

oci_load_result_t load_oci_table(oci_table_t& table) {
  oci_load_result_t result;
  std::string shown, error;
  void* handle = module::open(shown, error);
  if (!handle) {
    result.code = kDelayLoadModuleNotFound;
    result.detail =
        util::fmt_t::format("Cannot load OCI client library [%1]: %2", shown, error);
    return result;
  }
  oci_table_t bound;
  for (const auto& entry : oci_entries(bound)) {
    void* symbol = module::symbol(handle, entry.name);
    if (!symbol) {
      result.code = kDelayLoadProcNotFound;
      result.detail = util::fmt_t::format("OCI client library [%1] has no entry point [%2]",
                                          shown, entry.name);
      module::close(handle);
      return result;
    }
    *entry.slot = symbol;
  }
  // The module is never closed: the table points into it for the rest of the process.
  table = bound;
  result.ok = true;
  return result;
}

}  // namespace specific::oracle
