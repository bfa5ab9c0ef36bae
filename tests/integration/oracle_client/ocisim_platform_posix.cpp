#include <string>

#include "ocisim_platform.h"
#include "support/bin_dir.h"

namespace ocisim_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }
std::string missing_library() { return "/no/such/folder/libclntsh.so"; }
bool cut_off_worker_is_terminated() { return false; }

}  // namespace ocisim_test
