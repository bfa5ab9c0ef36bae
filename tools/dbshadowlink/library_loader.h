// Loads the DbShadowLink library at run time and finds its exports by name, the way a backup
// agent does (LoadLibraryW and GetProcAddress, or dlopen and dlsym). The host's main thread
// owns the one instance; the library is released when it is destroyed.
#pragma once
#include <memory>
#include <string>

namespace host {

class library_loader_t {
 public:
  // Loads the library at `path` (UTF-8). A relative path is taken from the current directory,
  // never from a search path, so the file named is the file loaded. On failure returns null
  // and sets `error` to a sentence that names the path and what the system answered.
  [[nodiscard]] static std::unique_ptr<library_loader_t> open(const std::string& path,
                                                              std::string& error);
  // The file name of the library on this platform: DbShadowLink.dll or libDbShadowLink.so.
  static const char* file_name();
  // The library beside the running executable; empty with `error` set if the executable's own
  // path cannot be found.
  static std::string default_path(std::string& error);

  library_loader_t(const library_loader_t&) = delete;
  library_loader_t& operator=(const library_loader_t&) = delete;
  ~library_loader_t();

  // The address of the export `name`, or null when the library has none of that name.
  void* symbol(const char* name) const;
  // The full path that was loaded.
  const std::string& path() const { return path_; }

 private:
  library_loader_t(void* handle, std::string path) : handle_(handle), path_(std::move(path)) {}

  void* handle_;
  std::string path_;
};

}  // namespace host
