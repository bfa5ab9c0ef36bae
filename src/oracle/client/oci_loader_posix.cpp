#include <dlfcn.h>

#include <cstdlib>

#include "common/text/fmt.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/system_exception.h"

namespace specific::oracle {

const char kOciLibraryWindows[] = "OCI.dll";
const char kOciLibraryPosix[] = "libclntsh.so";
const char kOciLibraryVariable[] = "DSL_OCI_LIBRARY";

namespace {

std::string last_dl_error() {
  const char* text = ::dlerror();
  return text ? text : "unknown loader error";
}

}  // namespace

oci_load_result_t load_oci_table(oci_table_t& table) {
  oci_load_result_t result;
  const char* configured = std::getenv(kOciLibraryVariable);
  const std::string path = (configured && *configured) ? configured : kOciLibraryPosix;

  // RTLD_NOW: a client that cannot resolve its own dependencies fails here, at binding, and
  // not in the middle of a session.
  void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    result.code = kDelayLoadModuleNotFound;
    result.detail = util::fmt_t::format("Cannot load OCI client library [%1]: %2", path,
                                        last_dl_error());
    return result;
  }
  oci_table_t bound;
  for (const auto& entry : oci_entries(bound)) {
    ::dlerror();
    void* symbol = ::dlsym(module, entry.name);
    if (!symbol) {
      result.code = kDelayLoadProcNotFound;
      result.detail = util::fmt_t::format("OCI client library [%1] has no entry point [%2]",
                                          path, entry.name);
      ::dlclose(module);
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
