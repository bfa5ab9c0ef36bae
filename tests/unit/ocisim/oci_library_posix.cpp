#include <dlfcn.h>

#include "oci_library.h"

namespace ocisim_test {

std::unique_ptr<oci_library_t> oci_library_t::load(const std::string& path, bool keep_loaded,
                                                   std::string& error) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | (keep_loaded ? RTLD_NODELETE : 0));
  if (handle == nullptr) {
    const char* why = dlerror();
    error = "cannot load " + path + ": " + (why != nullptr ? why : "unknown error");
    return nullptr;
  }
  std::unique_ptr<oci_library_t> library(new oci_library_t(handle));
  if (!library->bind_all(error)) return nullptr;
  return library;
}

const char* oci_library_t::file_name() { return "libclntsh.so"; }

oci_library_t::~oci_library_t() { dlclose(handle_); }

void* oci_library_t::symbol(const char* name) const { return dlsym(handle_, name); }

}  // namespace ocisim_test
