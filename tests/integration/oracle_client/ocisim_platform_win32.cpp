#include <windows.h>

#include <string>

#include "common/text/convert.h"
#include "ocisim_platform.h"
#include "support/bin_dir.h"

namespace ocisim_test {

// In the code page, as _putenv takes it.
std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}
std::string missing_library() { return "C:\\no\\such\\folder\\OCI.dll"; }
bool load_and_unload_client() {
  const std::u16string path = util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll");
  HMODULE module = ::LoadLibraryW(reinterpret_cast<const wchar_t*>(path.c_str()));
  if (module == nullptr) return false;
  return ::FreeLibrary(module) != FALSE;
}

}  // namespace ocisim_test
