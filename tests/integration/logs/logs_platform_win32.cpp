#include "common/text/convert.h"
#include "logs_fixture.h"
#include "support/bin_dir.h"

namespace logs_test {

// In the code page, as _putenv takes it.
std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}

std::string native_path(const dsl_test::test_folder_t&, const std::string& windowsPath) {
  return windowsPath;
}

}  // namespace logs_test
