#include "common/text/compare.h"

#include <cctype>

namespace util {

char16_t fold_case(char16_t c) {
  if (c >= u'a' && c <= u'z') return static_cast<char16_t>(c - 0x20);
  // Latin-1 lower-case letters, but for the division sign and y with diaeresis (whose capital
  // lies outside Latin-1).
  if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 0x20);
  return c;
}

namespace {

bool same_nocase(const char16_t* a, const char16_t* b, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    if (fold_case(a[i]) != fold_case(b[i])) return false;
  }
  return true;
}

}  // namespace

bool equals_nocase(const std::u16string& a, const std::u16string& b) {
  return a.size() == b.size() && same_nocase(a.data(), b.data(), a.size());
}

bool equals_nocase_prefix(const std::u16string& text, const std::u16string& prefix) {
  if (text.size() < prefix.size()) return false;
  return same_nocase(text.data(), prefix.data(), prefix.size());
}

bool ends_with_nocase(const std::string& text, const std::string& suffix) {
  if (text.size() < suffix.size()) return false;
  const size_t offset = text.size() - suffix.size();
  for (size_t i = 0; i < suffix.size(); ++i) {
    const auto a = static_cast<unsigned char>(text[offset + i]);
    const auto b = static_cast<unsigned char>(suffix[i]);
    if (std::toupper(a) != std::toupper(b)) return false;
  }
  return true;
}

std::optional<size_t> find_nocase(const std::u16string& text, const std::u16string& part) {
  if (text.size() <= part.size()) return std::nullopt;
  const size_t last_exclusive = text.size() - part.size();
  for (size_t pos = 0; pos < last_exclusive; ++pos) {
    if (same_nocase(text.data() + pos, part.data(), part.size())) return pos;
  }
  return std::nullopt;
}

bool split_at(const std::u16string& text, const std::u16string& part, std::u16string& left,
              std::u16string& right) {
  const auto pos = find_nocase(text, part);
  if (!pos) return false;
  left = text.substr(0, *pos);
  right = text.substr(*pos + part.size());
  return true;
}

std::optional<size_t> find_arg(const std::vector<std::u16string>& list,
                               const std::u16string& name) {
  for (size_t i = 0; i < list.size(); ++i) {
    if (equals_nocase(list[i], name)) return i;
  }
  return std::nullopt;
}

}  // namespace util
