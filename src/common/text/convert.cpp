#include "common/text/convert.h"

#include "common/exc/exc_base.h"
#include "common/text/codepage.h"

namespace util {

const char kToMultibyteFailed[] = "UNICODE->ANSI failed";
const char16_t kToUnicodeFailed[] = u"ANSI -> UNICODE failed.";

namespace {

std::string narrow_or_throw(uint32_t code_page, const std::u16string& wide, const char* message) {
  if (wide.empty()) return std::string();
  std::string out;
  uint32_t error = 0;
  if (!codepage::wide_to_narrow(code_page, wide, out, error)) throw exc::win_sys_exc_t(message, error);
  return out;
}

std::u16string widen_or_throw(uint32_t code_page, const std::string& narrow, const char* tmpl) {
  if (narrow.empty()) return std::u16string();
  std::u16string out;
  uint32_t error = 0;
  if (!codepage::narrow_to_wide(code_page, narrow, out, error)) {
    throw exc::win_sys_exc_t(tmpl, narrow, error);
  }
  return out;
}

}  // namespace

std::string to_multibyte(const std::u16string& wide) {
  return narrow_or_throw(codepage::kSystem, wide,
                         "Unicode string cannot be converted to multibyte string.");
}

std::string to_multibyte_safe(const std::u16string& wide) {
  if (wide.empty()) return std::string();
  std::string out;
  uint32_t error = 0;
  if (!codepage::wide_to_narrow(codepage::kSystem, wide, out, error)) return kToMultibyteFailed;
  return out;
}

std::u16string to_unicode(const std::string& narrow) {
  return widen_or_throw(codepage::kSystem, narrow,
                        "Multibyte string cannot be converted to unicode string. Source string: [%1].");
}

std::u16string to_unicode_safe(const std::string& narrow) {
  if (narrow.empty()) return std::u16string();
  std::u16string out;
  uint32_t error = 0;
  if (!codepage::narrow_to_wide(codepage::kSystem, narrow, out, error)) return kToUnicodeFailed;
  return out;
}

std::string to_utf8(const std::u16string& wide) {
  return narrow_or_throw(codepage::kUtf8, wide, "Unicode string cannot be converted to UTF8 string.");
}

std::u16string from_utf8(const std::string& utf8) {
  return widen_or_throw(
      codepage::kUtf8, utf8,
      "Multibyte UTF8 string cannot be converted to unicode string. Source string: [%1].");
}

std::string multibyte_to_utf8(const std::string& narrow) {
  try {
    return to_utf8(to_unicode(narrow));
  } catch (const std::exception&) {
    return narrow;
  }
}

}  // namespace util
