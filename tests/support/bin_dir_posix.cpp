#include "support/bin_dir.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace dsl_test {

std::string bin_dir() {
  if (const char* dir = std::getenv("DSL_BIN_DIR"); dir != nullptr && *dir != '\0') {
    std::string text(dir);
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
  }
  char buffer[4096];
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (length <= 0) throw std::runtime_error("cannot find the test's own path");
  const std::string exe(buffer, static_cast<size_t>(length));
  return exe.substr(0, exe.rfind('/'));
}

}  // namespace dsl_test
