#include "common/win/file_name_rule.h"

#include <exception>

#include "common/exc/exc_base.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace win {

namespace {

const char kRefused[] = "%1 [%2] is not a valid file name: %3.";

bool is_device_digit(char16_t c) {
  // Windows takes the superscript digits one to three as digits of a device name too.
  return (c >= u'0' && c <= u'9') || c == u'\u00B9' || c == u'\u00B2' || c == u'\u00B3';
}

// The part of the name Windows compares with its device names: up to the first ".", without
// the blanks before it.
bool is_device_name(const std::u16string& name) {
  std::u16string base = name.substr(0, name.find(u'.'));
  while (!base.empty() && base.back() == u' ') base.pop_back();
  static const char16_t* const kPlain[] = {u"CON", u"PRN", u"AUX", u"NUL", u"CONIN$", u"CONOUT$"};
  for (const char16_t* device : kPlain) {
    if (util::equals_nocase(base, device)) return true;
  }
  if (base.size() == 4 && is_device_digit(base[3])) {
    const std::u16string stem = base.substr(0, 3);
    if (util::equals_nocase(stem, u"COM") || util::equals_nocase(stem, u"LPT")) return true;
  }
  return false;
}

std::string quoted_for_text(const std::u16string& name) {
  try {
    return util::to_utf8(name);
  } catch (const std::exception&) {
    return "?";
  }
}

}  // namespace

std::string file_name_problem(const std::u16string& name) {
  if (name.empty()) return "it is empty";
  if (name.size() > kMaxFileNameLength) return "it is longer than 255 characters";
  for (const char16_t c : name) {
    if (c == u'\\' || c == u'/') return "it contains a path separator";
    if (c == u':') return "it names a drive or a stream";
    if (c < 0x20) return "it contains a control character";
    if (c == u'<' || c == u'>' || c == u'"' || c == u'|' || c == u'?' || c == u'*') {
      return "it contains a character that Windows does not allow in a file name";
    }
  }
  if (name == u"." || name == u"..") return "it names a folder";
  if (name.back() == u'.' || name.back() == u' ') {
    return "it ends in a dot or a blank, which Windows drops";
  }
  if (is_device_name(name)) return "it names a device";
  return std::string();
}

bool is_safe_file_name(const std::u16string& name) { return file_name_problem(name).empty(); }

// The wide form of `utf8`, refusing text that does not come back the same: bytes that are not
// UTF-8 are widened to a replacement character, which would hide what the name really was.
static std::u16string strict_from_utf8(const std::string& utf8) {
  std::u16string wide = util::from_utf8(utf8);
  if (util::to_utf8(wide) != utf8) throw exc::runtime_exc_t("not UTF-8");
  return wide;
}

bool is_safe_file_name(const std::string& utf8_name) {
  try {
    return is_safe_file_name(strict_from_utf8(utf8_name));
  } catch (const std::exception&) {
    return false;
  }
}

void check_file_name(const std::u16string& name, const std::string& what) {
  const std::string problem = file_name_problem(name);
  if (problem.empty()) return;
  throw exc::runtime_exc_t(util::fmt_t::format(kRefused, what, quoted_for_text(name), problem));
}

void check_file_name(const std::string& utf8_name, const std::string& what) {
  std::u16string wide;
  try {
    wide = strict_from_utf8(utf8_name);
  } catch (const std::exception&) {
    throw exc::runtime_exc_t(
        util::fmt_t::format(kRefused, what, std::string("?"), std::string("it is not valid UTF-8")));
  }
  check_file_name(wide, what);
}

}  // namespace win
