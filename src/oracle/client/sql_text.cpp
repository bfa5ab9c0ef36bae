#include "oracle/client/sql_text.h"

namespace specific::oracle::sql {

namespace {

template <typename Text>
bool all_digits(const Text& text) {
  if (text.empty()) return false;
  for (const auto c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

std::string doubled(const std::string& value, char quote) {
  std::string out;
  out.reserve(value.size() + 2);
  for (const char c : value) {
    out += c;
    if (c == quote) out += quote;
  }
  return out;
}

}  // namespace

bool is_decimal_number(const std::string& text) { return all_digits(text); }
bool is_decimal_number(const std::u16string& text) { return all_digits(text); }

std::string literal_text(const std::string& value) { return doubled(value, '\''); }

std::string quoted_identifier(const std::string& name) {
  return "\"" + doubled(name, '"') + "\"";
}

std::string utc_time_text_of(const std::string& column) {
  return "TO_CHAR(SYS_EXTRACT_UTC(CAST(" + column + " AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss')";
}

}  // namespace specific::oracle::sql
