#include "test_platform.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace console_test {

const char* host_file_name() { return "dbshadowlink"; }
const char* library_file_name() { return "libDbShadowLink.so"; }

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
