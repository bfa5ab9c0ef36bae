#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "ocisim_platform.h"

namespace ocisim_test {

namespace {

std::string bin_dir() {
  if (const char* dir = std::getenv("DSL_BIN_DIR"); dir != nullptr && *dir != '\0') return dir;
  char buffer[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) return ".";
  std::string exe(buffer, static_cast<size_t>(length));
  return exe.substr(0, exe.find_last_of('/'));
}

}  // namespace

std::string ocisim_library() { return bin_dir() + "/ocisim/libclntsh.so"; }
std::string missing_library() { return "/no/such/folder/libclntsh.so"; }
bool cut_off_worker_is_terminated() { return false; }

}  // namespace ocisim_test
