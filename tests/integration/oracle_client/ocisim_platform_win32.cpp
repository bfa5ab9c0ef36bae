#include <windows.h>

#include <string>

#include "ocisim_platform.h"

namespace ocisim_test {

namespace {

std::string narrow(const std::wstring& wide) {
  if (wide.empty()) return std::string();
  const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()),
                                       nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), result.data(), size,
                      nullptr, nullptr);
  return result;
}

// CTest hands a Unix path to a test that runs under Wine; Wine's kernel32 turns it into the
// DOS path that Win32 calls understand.
std::wstring dos_path(const std::wstring& path) {
  if (path.empty() || path[0] != L'/') return path;
  using convert_fn = wchar_t* (*)(const char*);
  const auto convert = reinterpret_cast<convert_fn>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
  if (convert == nullptr) return path;
  wchar_t* converted = convert(narrow(path).c_str());
  if (converted == nullptr) return path;
  std::wstring result(converted);
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

std::wstring bin_dir() {
  wchar_t buffer[32768];
  const DWORD length = GetEnvironmentVariableW(L"DSL_BIN_DIR", buffer, 32768);
  std::wstring dir;
  if (length > 0 && length < 32768) {
    dir = dos_path(std::wstring(buffer, length));
  } else {
    const DWORD exe = GetModuleFileNameW(/*hModule=*/nullptr, buffer, 32768);
    dir.assign(buffer, exe);
    dir = dir.substr(0, dir.find_last_of(L"\\/"));
  }
  while (dir.size() > 3 && (dir.back() == L'\\' || dir.back() == L'/')) dir.pop_back();
  return dir;
}

}  // namespace

std::string ocisim_library() { return narrow(bin_dir() + L"\\ocisim\\OCI.dll"); }
std::string missing_library() { return "C:\\no\\such\\folder\\OCI.dll"; }
bool cut_off_worker_is_terminated() { return true; }

}  // namespace ocisim_test
