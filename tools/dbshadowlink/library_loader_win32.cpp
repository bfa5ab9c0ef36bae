#include "library_loader.h"

#include <windows.h>

#include <vector>

#include "system_text.h"
#include "utf.h"

namespace host {

namespace {

std::wstring to_wide(const std::string& utf8) {
  std::u16string wide;
  size_t bad_offset = 0;
  if (!utf8_to_utf16(utf8, wide, bad_offset)) return std::wstring();
  return std::wstring(wide.begin(), wide.end());
}

std::string to_utf8(const std::wstring& wide) {
  return utf16_to_utf8(std::u16string(wide.begin(), wide.end()));
}

}  // namespace

std::unique_ptr<library_loader_t> library_loader_t::open(const std::string& path,
                                                         std::string& error) {
  const std::wstring wide = to_wide(path);
  if (wide.empty()) {
    error = "cannot load the library '" + path + "': the path is empty or not valid UTF-8";
    return nullptr;
  }
  // LoadLibraryW looks a bare name up in the application folder and the system folders; the
  // administrator means the file in the current folder, so the name is made absolute first.
  std::wstring full(MAX_PATH, L'\0');
  DWORD length = GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(),
                                  /*lpFilePart=*/nullptr);
  if (length >= full.size()) {
    full.resize(length);
    length = GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(),
                              /*lpFilePart=*/nullptr);
  }
  if (length == 0) {
    error = "cannot load the library '" + path + "': " + system_error_text(GetLastError());
    return nullptr;
  }
  full.resize(length);
  HMODULE module = LoadLibraryW(full.c_str());
  if (module == nullptr) {
    error = "cannot load the library '" + to_utf8(full) + "': " + system_error_text(GetLastError());
    return nullptr;
  }
  return std::unique_ptr<library_loader_t>(new library_loader_t(module, to_utf8(full)));
}

const char* library_loader_t::file_name() { return "DbShadowLink.dll"; }

std::string library_loader_t::default_path(std::string& error) {
  std::vector<wchar_t> buffer(MAX_PATH);
  for (;;) {
    const DWORD length =
        GetModuleFileNameW(/*hModule=*/nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) {
      error = "cannot find the path of this program: " + system_error_text(GetLastError());
      return std::string();
    }
    if (length < buffer.size()) {
      std::wstring exe(buffer.data(), length);
      const size_t slash = exe.find_last_of(L"\\/");
      const std::wstring folder = slash == std::wstring::npos ? L"" : exe.substr(0, slash + 1);
      return to_utf8(folder) + file_name();
    }
    buffer.resize(buffer.size() * 2);
  }
}

library_loader_t::~library_loader_t() { FreeLibrary(static_cast<HMODULE>(handle_)); }

void* library_loader_t::symbol(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace host
