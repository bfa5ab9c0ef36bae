#include "utf.h"

namespace host {

namespace {

constexpr char32_t replacement_char = 0xFFFD;

bool is_continuation(unsigned char c) { return (c & 0xC0) == 0x80; }

void append_utf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

}  // namespace

bool utf8_to_utf16(std::string_view utf8, std::u16string& out, size_t& bad_offset) {
  std::u16string result;
  result.reserve(utf8.size());
  size_t i = 0;
  while (i < utf8.size()) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    size_t length = 0;
    char32_t cp = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
      length = 1;
      cp = lead;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
      cp = lead & 0x1F;
      minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      cp = lead & 0x0F;
      minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      cp = lead & 0x07;
      minimum = 0x10000;
    } else {
      bad_offset = i;
      return false;
    }
    if (utf8.size() - i < length) {
      bad_offset = i;
      return false;
    }
    for (size_t k = 1; k < length; ++k) {
      const auto c = static_cast<unsigned char>(utf8[i + k]);
      if (!is_continuation(c)) {
        bad_offset = i;
        return false;
      }
      cp = (cp << 6) | (c & 0x3F);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      bad_offset = i;
      return false;
    }
    if (cp < 0x10000) {
      result.push_back(static_cast<char16_t>(cp));
    } else {
      cp -= 0x10000;
      result.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      result.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    }
    i += length;
  }
  out = std::move(result);
  return true;
}

std::string utf16_to_utf8(std::u16string_view utf16) {
  std::string out;
  out.reserve(utf16.size());
  for (size_t i = 0; i < utf16.size(); ++i) {
    const char32_t unit = utf16[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
        utf16[i + 1] <= 0xDFFF) {
      append_utf8(out, 0x10000 + ((unit - 0xD800) << 10) + (utf16[i + 1] - 0xDC00));
      ++i;
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      append_utf8(out, replacement_char);
    } else {
      append_utf8(out, unit);
    }
  }
  return out;
}

}  // namespace host
