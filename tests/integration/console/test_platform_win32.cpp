#include "test_platform.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

#include "test_text.h"

namespace console_test {

namespace {

std::wstring to_wide(const std::string& utf8) {
  const std::u16string wide = utf8_to_utf16(utf8);
  return std::wstring(wide.begin(), wide.end());
}

std::string to_utf8(const std::wstring& wide) {
  return utf16_to_utf8(std::u16string(wide.begin(), wide.end()));
}

// CTest hands a Unix path to a test that runs under Wine; Wine's kernel32 turns it into the
// DOS path that Win32 calls understand.
std::wstring dos_path(const std::wstring& path) {
  if (path.empty() || path[0] != L'/') return path;
  using convert_fn = wchar_t* (*)(const char*);
  const auto convert = reinterpret_cast<convert_fn>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
  if (convert == nullptr) return path;
  wchar_t* converted = convert(to_utf8(path).c_str());
  if (converted == nullptr) return path;
  std::wstring result(converted);
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

}  // namespace

const char* host_file_name() { return "dbshadowlink.exe"; }
const char* library_file_name() { return "DbShadowLink.dll"; }

std::string bin_dir() {
  wchar_t buffer[32768];
  const DWORD length = GetEnvironmentVariableW(L"DSL_BIN_DIR", buffer, 32768);
  std::wstring dir;
  if (length > 0 && length < 32768) {
    dir = dos_path(std::wstring(buffer, length));
  } else {
    const DWORD exe_length = GetModuleFileNameW(/*hModule=*/nullptr, buffer, 32768);
    if (exe_length == 0) throw std::runtime_error("cannot find the test's own path");
    dir.assign(buffer, exe_length);
    dir = dir.substr(0, dir.find_last_of(L"\\/"));
  }
  while (dir.size() > 3 && (dir.back() == L'\\' || dir.back() == L'/')) dir.pop_back();
  return to_utf8(dir);
}

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
