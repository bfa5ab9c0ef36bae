#include "common/text/numbers.h"

#include <cstdio>
#include <limits>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"

namespace util {

namespace {

template <typename Char>
bool is_blank(Char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

std::u16string widen_ascii(const std::string& s) { return std::u16string(s.begin(), s.end()); }

}  // namespace

template <typename Char>
bool parse_long(const std::basic_string<Char>& text, size_t pos, int32_t& value, size_t& end) {
  size_t i = pos;
  while (i < text.size() && is_blank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  const size_t first_digit = i;
  // Accumulate in 64 bits and saturate to the 32-bit range, as strtol does where long is
  // 32 bits wide (Windows), so that both builds read the same numbers.
  int64_t magnitude = 0;
  constexpr int64_t kLimit = static_cast<int64_t>(std::numeric_limits<int32_t>::max()) + 1;
  while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
    if (magnitude <= kLimit) magnitude = magnitude * 10 + (text[i] - '0');
    ++i;
  }
  if (i == first_digit) return false;
  if (negative) {
    value = magnitude >= kLimit ? std::numeric_limits<int32_t>::min()
                                : static_cast<int32_t>(-magnitude);
  } else {
    value = magnitude >= kLimit ? std::numeric_limits<int32_t>::max()
                                : static_cast<int32_t>(magnitude);
  }
  end = i;
  return true;
}

template bool parse_long<char>(const std::string&, size_t, int32_t&, size_t&);
template bool parse_long<char16_t>(const std::u16string&, size_t, int32_t&, size_t&);

std::string to_str(int32_t value) { return std::to_string(value); }
std::string to_str(uint32_t value) { return std::to_string(value); }
std::string to_str(uint64_t value) { return std::to_string(value); }
std::string to_str(bool value) { return value ? "true" : "false"; }
std::u16string to_wstr(int32_t value) { return widen_ascii(to_str(value)); }
std::u16string to_wstr(uint32_t value) { return widen_ascii(to_str(value)); }
std::u16string to_wstr(uint64_t value) { return widen_ascii(to_str(value)); }

std::string to_hex(uint32_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08x", value);
  return buffer;
}

std::string to_hex(uint64_t value) {
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "0x%016llx", static_cast<unsigned long long>(value));
  return buffer;
}

std::string to_hex(int32_t value) { return to_hex(static_cast<uint32_t>(value)); }

int32_t to_int(const std::string& text) {
  int32_t value = 0;
  size_t end = 0;
  if (!parse_long(text, 0, value, end)) {
    throw exc::runtime_exc_t("Cannot convert string value to signed integer. Given string: [%1].",
                             text);
  }
  return value;
}

int32_t to_int(const std::u16string& text) { return to_int(to_multibyte(text)); }

}  // namespace util
