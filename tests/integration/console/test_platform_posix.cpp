#include "test_platform.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace console_test {

const char* host_file_name() { return "dbshadowlink"; }
const char* library_file_name() { return "libDbShadowLink.so"; }

std::string bin_dir() {
  if (const char* dir = std::getenv("DSL_BIN_DIR"); dir != nullptr && *dir != '\0') {
    std::string text(dir);
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
  }
  char buffer[4096];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (length <= 0) throw std::runtime_error("cannot find the test's own path");
  const std::string exe(buffer, static_cast<size_t>(length));
  return exe.substr(0, exe.rfind('/'));
}

std::string library_without_exports() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&getpid), &info) == 0 || info.dli_fname == nullptr) {
    throw std::runtime_error("cannot find the C library's path");
  }
  return info.dli_fname;
}

std::string standard_log_file(const std::string& machine_root, const std::string& name) {
  return machine_root + "/c/ProgramData/Trelo/Backup/" + name;
}

void set_environment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void* load_library(const std::string& path, std::string& error) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle == nullptr) error = dlerror();
  return handle;
}

void* library_symbol(void* library, const char* name) { return dlsym(library, name); }

}  // namespace console_test
