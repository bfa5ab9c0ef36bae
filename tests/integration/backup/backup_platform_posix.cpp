#include <cstdlib>

#include "backup_platform.h"
#include "common/win/path_map_posix.h"
#include "support/bin_dir.h"

namespace backup_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }
std::string image_tool() { return dsl_test::bin_dir() + "/ocisim/ocisim-image"; }
std::string native_path(const std::u16string& windows_path) { return win::host::host_path(windows_path); }

int run_command(const std::string& command_line) {
  const int rc = std::system(command_line.c_str());
  return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

}  // namespace backup_test
