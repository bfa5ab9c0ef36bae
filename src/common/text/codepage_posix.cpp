#include "common/text/codepage.h"

namespace util::codepage {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void append_utf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | cp >> 6));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | cp >> 12));
    out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | cp >> 18));
    out.push_back(static_cast<char>(0x80 | (cp >> 12 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp >> 6 & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

void append_utf16(std::u16string& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 | cp >> 10));
    out.push_back(static_cast<char16_t>(0xDC00 | (cp & 0x3FF)));
  }
}

// Decodes one code point at `i`; an ill-formed sequence gives U+FFFD for its maximal
// well-formed prefix, as Windows' UTF-8 decoder does.
char32_t decode_utf8(const std::string& s, size_t& i) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char b0 = byte(i++);
  if (b0 < 0x80) return b0;
  int extra;
  char32_t cp;
  unsigned char lo = 0x80, hi = 0xBF;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    extra = 1;
    cp = b0 & 0x1F;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    extra = 2;
    cp = b0 & 0x0F;
    if (b0 == 0xE0) lo = 0xA0;
    if (b0 == 0xED) hi = 0x9F;  // no surrogates
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    extra = 3;
    cp = b0 & 0x07;
    if (b0 == 0xF0) lo = 0x90;
    if (b0 == 0xF4) hi = 0x8F;
  } else {
    return kReplacement;
  }
  for (int k = 0; k < extra; ++k) {
    if (i >= s.size()) return kReplacement;
    const unsigned char b = byte(i);
    if (b < lo || b > hi) return kReplacement;
    lo = 0x80;
    hi = 0xBF;
    cp = cp << 6 | (b & 0x3F);
    ++i;
  }
  return cp;
}

}  // namespace

bool wide_to_narrow(uint32_t /*code_page*/, const std::u16string& wide, std::string& out,
                    uint32_t& /*error*/) {
  out.clear();
  out.reserve(wide.size());
  for (size_t i = 0; i < wide.size() && wide[i] != 0; ++i) {
    char32_t cp = wide[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 &&
        wide[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (wide[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = kReplacement;
    }
    append_utf8(out, cp);
  }
  return true;
}

bool narrow_to_wide(uint32_t /*code_page*/, const std::string& narrow, std::u16string& out,
                    uint32_t& /*error*/) {
  out.clear();
  out.reserve(narrow.size());
  size_t i = 0;
  while (i < narrow.size() && narrow[i] != '\0') append_utf16(out, decode_utf8(narrow, i));
  return true;
}

}  // namespace util::codepage
