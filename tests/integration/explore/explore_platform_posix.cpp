#include "explore_fixture.h"
#include "support/bin_dir.h"

namespace explore_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }

}  // namespace explore_test
