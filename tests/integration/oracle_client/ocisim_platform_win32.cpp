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
bool cut_off_worker_is_terminated() { return true; }

}  // namespace ocisim_test
