#include <windows.h>

#include "common/text/codepage.h"

namespace util::codepage {

bool wide_to_narrow(uint32_t code_page, const std::u16string& wide, std::string& out,
                    uint32_t& error) {
  const auto* source = reinterpret_cast<const wchar_t*>(wide.c_str());
  // The source length counts the terminator, so that it is converted as well.
  const int source_length = static_cast<int>(wide.size() + 1);
  const int size = WideCharToMultiByte(code_page, /*dwFlags=*/0, source, source_length, nullptr,
                                       0, nullptr, nullptr);
  if (size < 1) {
    error = GetLastError();
    return false;
  }
  std::string buffer(static_cast<size_t>(size), '\0');
  const int written = WideCharToMultiByte(code_page, 0, source, source_length, buffer.data(), size,
                                          nullptr, nullptr);
  if (written < 1) {
    error = GetLastError();
    return false;
  }
  out.assign(buffer.c_str());
  return true;
}

bool narrow_to_wide(uint32_t code_page, const std::string& narrow, std::u16string& out,
                    uint32_t& error) {
  const int source_length = static_cast<int>(narrow.size() + 1);
  const int size = MultiByteToWideChar(code_page, /*dwFlags=*/0, narrow.c_str(), source_length,
                                       nullptr, 0);
  if (size < 1) {
    error = GetLastError();
    return false;
  }
  std::wstring buffer(static_cast<size_t>(size), L'\0');
  const int written =
      MultiByteToWideChar(code_page, 0, narrow.c_str(), source_length, buffer.data(), size);
  if (written < 1) {
    error = GetLastError();
    return false;
  }
  out.assign(reinterpret_cast<const char16_t*>(buffer.c_str()));
  return true;
}

}  // namespace util::codepage
