#include <windows.h>

#include "common/exc/sys_text.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/system_exception.h"

namespace specific::oracle {

const char kOciLibraryWindows[] = "OCI.dll";
const char kOciLibraryPosix[] = "libclntsh.so";
const char kOciLibraryVariable[] = "DSL_OCI_LIBRARY";

oci_load_result_t load_oci_table(oci_table_t& table) {
  oci_load_result_t result;
  // The process's own environment block, which both _putenv and SetEnvironmentVariable change.
  wchar_t configured[32768];
  const DWORD length = ::GetEnvironmentVariableW(L"DSL_OCI_LIBRARY", configured, 32768);
  const std::wstring path = (length > 0 && length < 32768) ? std::wstring(configured, length)
                                                           : std::wstring(L"OCI.dll");
  const std::string shown =
      util::to_utf8(std::u16string(reinterpret_cast<const char16_t*>(path.c_str())));

  // The ordinary search order, as the delay-load helper uses it: the folder of the process,
  // the system folders, then PATH (where an Oracle home puts its bin folder).
  HMODULE module = ::LoadLibraryW(path.c_str());
  if (!module) {
    const DWORD error = ::GetLastError();
    result.code = kDelayLoadModuleNotFound;
    result.detail = util::fmt_t::format("Cannot load OCI client library [%1]: %2", shown,
                                        exc::system_error_text(error));
    return result;
  }
  oci_table_t bound;
  for (const auto& entry : oci_entries(bound)) {
    FARPROC symbol = ::GetProcAddress(module, entry.name);
    if (!symbol) {
      result.code = kDelayLoadProcNotFound;
      result.detail = util::fmt_t::format("OCI client library [%1] has no entry point [%2]",
                                          shown, entry.name);
      ::FreeLibrary(module);
      return result;
    }
    *entry.slot = reinterpret_cast<void*>(symbol);
  }
  // The module is never freed: the table points into it for the rest of the process.
  table = bound;
  result.ok = true;
  return result;
}

}  // namespace specific::oracle
