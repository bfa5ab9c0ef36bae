#include "test_platform.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

#include "support/test_text.h"

namespace console_test {

namespace {

std::wstring to_wide(const std::string& utf8) {
  const std::u16string wide = utf8_to_utf16(utf8);
  return std::wstring(wide.begin(), wide.end());
}

std::string to_utf8(const std::wstring& wide) {
  return utf16_to_utf8(std::u16string(wide.begin(), wide.end()));
}

}  // namespace

const char* host_file_name() { return "dbshadowlink.exe"; }
const char* library_file_name() { return "DbShadowLink.dll"; }

std::string standard_log_file(const std::string& /*machine_root*/, const std::string& name) {
  return "C:\\ProgramData\\Trelo\\Backup\\" + name;
}

std::string library_without_exports() {
  wchar_t folder[MAX_PATH];
  const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) throw std::runtime_error("no system folder");
  return to_utf8(std::wstring(folder, length) + L"\\kernel32.dll");
}

void set_environment(const std::string& name, const std::string& value) {
  SetEnvironmentVariableW(to_wide(name).c_str(), to_wide(value).c_str());
}

void* load_library(const std::string& path, std::string& error) {
  HMODULE module = LoadLibraryW(to_wide(path).c_str());
  if (module == nullptr) error = "LoadLibraryW failed with " + std::to_string(GetLastError());
  return module;
}

void* library_symbol(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace console_test
