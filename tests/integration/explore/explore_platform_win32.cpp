#include <windows.h>

#include "common/text/convert.h"
#include "explore_fixture.h"
#include "support/bin_dir.h"

namespace explore_test {

std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}

}  // namespace explore_test
