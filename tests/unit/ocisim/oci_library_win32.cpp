#include <windows.h>

#include "oci_library.h"
#include "test_platform.h"

namespace ocisim_test {

std::unique_ptr<oci_library_t> oci_library_t::load(const std::string& path, bool keep_loaded,
                                                   std::string& error) {
  const std::wstring wide(path.begin(), path.end());  // test paths are ASCII
  HMODULE module = LoadLibraryW(wide.c_str());
  if (module == nullptr) {
    error = "cannot load " + path + ": error " + std::to_string(GetLastError());
    return nullptr;
  }
  if (keep_loaded) {
    // A second reference that is never released keeps the code mapped for sleeping workers.
    HMODULE pinned = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, wide.c_str(), &pinned);
  }
  std::unique_ptr<oci_library_t> library(new oci_library_t(module));
  if (!library->bind_all(error)) return nullptr;
  return library;
}

const char* oci_library_t::file_name() { return "OCI.dll"; }

oci_library_t::~oci_library_t() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* oci_library_t::symbol(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace ocisim_test
