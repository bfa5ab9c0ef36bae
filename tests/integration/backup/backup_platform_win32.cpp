#include "backup_platform.h"
#include "common/text/convert.h"
#include "support/bin_dir.h"

namespace backup_test {

// In the code page, as _putenv takes it.
std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}

}  // namespace backup_test
