#include <dlfcn.h>

#include <string>

#include "ocisim_platform.h"
#include "support/bin_dir.h"

namespace ocisim_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }
std::string missing_library() { return "/no/such/folder/libclntsh.so"; }
bool load_and_unload_client() {
  void* module = ::dlopen(ocisim_library().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return false;
  return ::dlclose(module) == 0;
}

}  // namespace ocisim_test
