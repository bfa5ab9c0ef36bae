#include "support/test_text.h"

#include <stdexcept>

namespace console_test {

std::u16string utf8_to_utf16(std::string_view utf8) {
  std::u16string out;
  for (size_t i = 0; i < utf8.size();) {
    const unsigned char lead = static_cast<unsigned char>(utf8[i]);
    const int extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : -1;
    if (extra < 0) throw std::invalid_argument("ill-formed UTF-8");
    char32_t cp = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= utf8.size()) throw std::invalid_argument("truncated UTF-8");
      const unsigned char c = static_cast<unsigned char>(utf8[i + k]);
      if ((c & 0xC0) != 0x80) throw std::invalid_argument("ill-formed UTF-8");
      cp = (cp << 6) | (c & 0x3F);
    }
    i += static_cast<size_t>(extra) + 1;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 | (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 | (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
  }
  return out;
}

std::string utf16_to_utf8(std::u16string_view utf16) {
  std::string out;
  for (size_t i = 0; i < utf16.size(); ++i) {
    char32_t cp = utf16[i];
    if (cp >= 0xD800 && cp < 0xDC00) {
      if (i + 1 >= utf16.size() || utf16[i + 1] < 0xDC00 || utf16[i + 1] > 0xDFFF) {
        throw std::invalid_argument("lone surrogate");
      }
      cp = 0x10000 + ((cp - 0xD800) << 10) + (utf16[++i] - 0xDC00);
    } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
      throw std::invalid_argument("lone surrogate");
    }
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return out;
}

dsl_string_t to_dsl(std::string_view utf8) {
  const std::u16string wide = utf8_to_utf16(utf8);
  return dsl_string_t(wide.begin(), wide.end());
}

std::string from_dsl(const DSL_WCHAR* text) {
  std::u16string wide;
  for (const DSL_WCHAR* p = text; *p != 0; ++p) wide.push_back(static_cast<char16_t>(*p));
  return utf16_to_utf8(wide);
}

}  // namespace console_test
