#include "system_text.h"

#include <windows.h>

#include "utf.h"

namespace host {

std::string system_error_text(unsigned long code) {
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      /*lpSource=*/nullptr, code, /*dwLanguageId=*/0, reinterpret_cast<wchar_t*>(&buffer),
      /*nSize=*/0, /*Arguments=*/nullptr);
  std::u16string text;
  if (length != 0 && buffer != nullptr) {
    text.assign(reinterpret_cast<const char16_t*>(buffer), length);
    while (!text.empty() && (text.back() == u'\r' || text.back() == u'\n' || text.back() == u' ' ||
                             text.back() == u'.')) {
      text.pop_back();
    }
  }
  if (buffer != nullptr) LocalFree(buffer);
  std::string result = text.empty() ? std::string("unknown error") : utf16_to_utf8(text);
  return result + " (error " + std::to_string(code) + ")";
}

}  // namespace host
