#include "library_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "system_text.h"

namespace host {

std::unique_ptr<library_loader_t> library_loader_t::open(const std::string& path,
                                                         std::string& error) {
  if (path.empty()) {
    error = "cannot load the library '': the path is empty";
    return nullptr;
  }
  // dlopen searches the library path for a name without a slash; the administrator means the
  // file in the current folder.
  const std::string name = path.find('/') == std::string::npos ? "./" + path : path;
  // RTLD_NODELETE: a session worker abandoned at its deadline may still be running the
  // library's code when the host ends, so the code must stay mapped until the process exits.
  void* handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (handle == nullptr) {
    const char* why = dlerror();
    error = "cannot load the library '" + name + "': " + (why != nullptr ? why : "unknown error");
    return nullptr;
  }
  return std::unique_ptr<library_loader_t>(new library_loader_t(handle, name));
}

const char* library_loader_t::file_name() { return "libDbShadowLink.so"; }

std::string library_loader_t::default_path(std::string& error) {
  std::vector<char> buffer(4096);
  for (;;) {
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length < 0) {
      error = "cannot find the path of this program: " + system_error_text(errno);
      return std::string();
    }
    if (static_cast<size_t>(length) < buffer.size()) {
      const std::string exe(buffer.data(), static_cast<size_t>(length));
      const size_t slash = exe.rfind('/');
      return (slash == std::string::npos ? std::string("./") : exe.substr(0, slash + 1)) +
             file_name();
    }
    buffer.resize(buffer.size() * 2);
  }
}

library_loader_t::~library_loader_t() { dlclose(handle_); }

void* library_loader_t::symbol(const char* name) const { return dlsym(handle_, name); }

}  // namespace host
