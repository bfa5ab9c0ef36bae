#include <windows.h>

#include "common/exc/sys_text.h"
#include "common/text/convert.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/oci_module.h"

namespace specific::oracle::module {

void* open(std::string& shown, std::string& error) {
  // The process's own environment block, which both _putenv and SetEnvironmentVariable change.
  const std::u16string variable = util::from_utf8(kOciLibraryVariable);
  wchar_t configured[32768];
  const DWORD length = ::GetEnvironmentVariableW(
      reinterpret_cast<const wchar_t*>(variable.c_str()), configured, 32768);
  const std::u16string path =
      (length > 0 && length < 32768)
          ? std::u16string(reinterpret_cast<const char16_t*>(configured), length)
          : util::from_utf8(kOciLibraryWindows);
  shown = util::to_utf8(path);
  // The ordinary search order, as the delay-load helper uses it: the folder of the process,
  // the system folders, then PATH (where an Oracle home puts its bin folder).
  HMODULE handle = ::LoadLibraryW(reinterpret_cast<const wchar_t*>(path.c_str()));
  if (!handle) error = exc::system_error_text(::GetLastError());
  return reinterpret_cast<void*>(handle);
}

void* symbol(void* module, const char* name) {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

void close(void* module) { ::FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace specific::oracle::module
