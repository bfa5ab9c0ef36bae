#include "backup_platform.h"
#include "support/bin_dir.h"

namespace backup_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }

}  // namespace backup_test
