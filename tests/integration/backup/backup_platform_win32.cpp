#include <cstdlib>

#include "backup_platform.h"
#include "common/text/convert.h"
#include "support/bin_dir.h"

namespace backup_test {

// In the code page, as _putenv takes it.
std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}
std::string image_tool() { return dsl_test::bin_dir() + "\\ocisim\\ocisim-image.exe"; }
std::string native_path(const std::u16string& windows_path) { return util::to_utf8(windows_path); }

// cmd.exe drops the outer quotes of a line that begins with one; a second pair keeps the rest.
int run_command(const std::string& command_line) {
  return std::system(("\"" + command_line + "\"").c_str());
}

}  // namespace backup_test
