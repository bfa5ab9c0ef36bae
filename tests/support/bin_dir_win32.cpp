#include "support/bin_dir.h"

#include <windows.h>

#include <stdexcept>

#include "common/text/convert.h"

namespace dsl_test {

namespace {

std::string to_utf8(const std::wstring& wide) {
  return util::to_utf8(std::u16string(wide.begin(), wide.end()));
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

}  // namespace dsl_test
