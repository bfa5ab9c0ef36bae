#include <dlfcn.h>

#include <cstdlib>

#include "oracle/client/oci_loader.h"
#include "oracle/client/oci_module.h"

namespace specific::oracle::module {

void* open(std::string& shown, std::string& error) {
  const char* configured = std::getenv(kOciLibraryVariable);
  shown = (configured && *configured) ? configured : kOciLibraryPosix;
  // RTLD_NOW: a client that cannot resolve its own dependencies fails here, at binding, and
  // not in the middle of a session.
  void* handle = ::dlopen(shown.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* text = ::dlerror();
    error = text ? text : "unknown loader error";
  }
  return handle;
}

void* symbol(void* module, const char* name) {
  ::dlerror();
  return ::dlsym(module, name);
}

void close(void* module) { ::dlclose(module); }

}  // namespace specific::oracle::module
