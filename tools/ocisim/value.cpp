#include "value.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "errors.h"

namespace ocisim {

value_t value_t::of_text(std::string text) {
  value_t v;
  if (!text.empty()) {
    v.kind = kind_t::text;
    v.text = std::move(text);
  }
  return v;
}

value_t value_t::of_integer(std::int64_t number) {
  value_t v;
  v.kind = kind_t::number;
  v.integral = true;
  v.integer = number;
  v.real = static_cast<double>(number);
  return v;
}

value_t value_t::of_real(double number) {
  if (std::isfinite(number) && std::floor(number) == number && std::fabs(number) < 9.0e18) {
    return of_integer(static_cast<std::int64_t>(number));
  }
  value_t v;
  v.kind = kind_t::number;
  v.real = number;
  return v;
}

value_t value_t::of_date(std::int64_t seconds, bool timestamp) {
  value_t v;
  v.kind = timestamp ? kind_t::timestamp : kind_t::date;
  v.seconds = seconds;
  return v;
}

bool parse_number(const std::string& text, value_t& number) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
  while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
  if (begin == end) return false;
  const std::string body = text.substr(begin, end - begin);
  size_t i = 0;
  if (body[i] == '+' || body[i] == '-') ++i;
  size_t digits = 0;
  bool point = false;
  bool exponent = false;
  for (; i < body.size(); ++i) {
    const char c = body[i];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      ++digits;
    } else if (c == '.' && !point && !exponent) {
      point = true;
    } else if ((c == 'e' || c == 'E') && digits > 0 && !exponent) {
      exponent = true;
      if (i + 1 < body.size() && (body[i + 1] == '+' || body[i + 1] == '-')) ++i;
      if (i + 1 >= body.size()) return false;
    } else {
      return false;
    }
  }
  if (digits == 0) return false;
  if (!point && !exponent && digits <= 18) {
    number = value_t::of_integer(std::strtoll(body.c_str(), nullptr, 10));
  } else {
    number = value_t::of_real(std::strtod(body.c_str(), nullptr));
  }
  return true;
}

std::string format_number(const value_t& number) {
  if (number.integral) return std::to_string(number.integer);
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.15g", number.real);
  std::string text = buffer;
  if (text.find('e') == std::string::npos && text.find('.') != std::string::npos) {
    while (!text.empty() && text.back() == '0') text.pop_back();
    if (!text.empty() && text.back() == '.') text.pop_back();
  }
  // Oracle writes no zero before the decimal point.
  if (text.compare(0, 2, "0.") == 0) text.erase(0, 1);
  if (text.compare(0, 3, "-0.") == 0) text.erase(1, 1);
  return text;
}

namespace {

std::int64_t days_from_civil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civil_from_days(std::int64_t z, int& y, int& m, int& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2));
}

const char* const kMonths[] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
                               "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
const char* const kDays[] = {"THURSDAY", "FRIDAY", "SATURDAY", "SUNDAY",
                             "MONDAY",   "TUESDAY", "WEDNESDAY"};

void append_digits(std::string& out, int n, int width) {
  char digits[12];
  int count = 0;
  unsigned value = static_cast<unsigned>(n < 0 ? -n : n);
  do {
    digits[count++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0 && count < 11);
  if (n < 0) out += '-';
  for (int i = count; i < width; ++i) out += '0';
  while (count > 0) out += digits[--count];
}

// Gives a word the letter case of the format element that asked for it: "MON" upper, "Mon"
// capitalised, "mon" lower.
std::string cased(std::string word, const std::string& element) {
  const bool first_upper = std::isupper(static_cast<unsigned char>(element[0])) != 0;
  const bool second_upper =
      element.size() > 1 && std::isupper(static_cast<unsigned char>(element[1])) != 0;
  for (size_t i = 0; i < word.size(); ++i) {
    const bool up = i == 0 ? first_upper : second_upper;
    word[i] = static_cast<char>(up ? std::toupper(static_cast<unsigned char>(word[i]))
                                   : std::tolower(static_cast<unsigned char>(word[i])));
  }
  return word;
}

bool match_element(const std::string& model, size_t at, const char* element) {
  for (size_t i = 0; element[i] != '\0'; ++i) {
    if (at + i >= model.size() ||
        std::toupper(static_cast<unsigned char>(model[at + i])) != element[i]) {
      return false;
    }
  }
  return true;
}

}  // namespace

civil_t to_civil(std::int64_t seconds) {
  std::int64_t days = seconds / 86400;
  std::int64_t rest = seconds % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  civil_t c{};
  civil_from_days(days, c.year, c.month, c.day);
  c.hour = static_cast<int>(rest / 3600);
  c.minute = static_cast<int>(rest / 60 % 60);
  c.second = static_cast<int>(rest % 60);
  return c;
}

std::int64_t from_civil(const civil_t& c) {
  return days_from_civil(c.year, static_cast<unsigned>(c.month), static_cast<unsigned>(c.day)) *
             86400 +
         c.hour * 3600 + c.minute * 60 + c.second;
}

bool parse_date(const std::string& text, std::int64_t& seconds) {
  civil_t c{};
  char tail = '\0';
  const int fields = std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d%c", &c.year, &c.month, &c.day,
                                 &c.hour, &c.minute, &c.second, &tail);
  if (fields != 3 && fields != 6) return false;
  if (c.month < 1 || c.month > 12 || c.day < 1 || c.day > 31 || c.hour < 0 || c.hour > 23 ||
      c.minute < 0 || c.minute > 59 || c.second < 0 || c.second > 59) {
    return false;
  }
  seconds = from_civil(c);
  return true;
}

std::string format_date(std::int64_t seconds, const std::string& model) {
  const civil_t c = to_civil(seconds);
  std::string out;
  size_t i = 0;
  while (i < model.size()) {
    const char ch = model[i];
    if (ch == '"') {
      const size_t close = model.find('"', i + 1);
      if (close == std::string::npos) throw ora(1821);
      out += model.substr(i + 1, close - i - 1);
      i = close + 1;
    } else if (ch != '\0' && std::strchr(" -/,.;:_", ch) != nullptr) {
      out += ch;
      ++i;
    } else if (match_element(model, i, "YYYY")) {
      append_digits(out, c.year, 4);
      i += 4;
    } else if (match_element(model, i, "YY") || match_element(model, i, "RR")) {
      append_digits(out, c.year % 100, 2);
      i += 2;
    } else if (match_element(model, i, "MONTH")) {
      out += cased(kMonths[c.month - 1], model.substr(i, 5));
      i += 5;
    } else if (match_element(model, i, "MON")) {
      out += cased(std::string(kMonths[c.month - 1]).substr(0, 3), model.substr(i, 3));
      i += 3;
    } else if (match_element(model, i, "MM")) {
      append_digits(out, c.month, 2);
      i += 2;
    } else if (match_element(model, i, "MI")) {
      append_digits(out, c.minute, 2);
      i += 2;
    } else if (match_element(model, i, "DD")) {
      append_digits(out, c.day, 2);
      i += 2;
    } else if (match_element(model, i, "DY")) {
      const std::int64_t days = (seconds >= 0 ? seconds : seconds - 86399) / 86400;
      const int weekday = static_cast<int>(((days % 7) + 7) % 7);
      out += cased(std::string(kDays[weekday]).substr(0, 3), model.substr(i, 2));
      i += 2;
    } else if (match_element(model, i, "HH24")) {
      append_digits(out, c.hour, 2);
      i += 4;
    } else if (match_element(model, i, "HH12") || match_element(model, i, "HH")) {
      const int h12 = c.hour % 12 == 0 ? 12 : c.hour % 12;
      append_digits(out, h12, 2);
      i += match_element(model, i, "HH12") ? 4 : 2;
    } else if (match_element(model, i, "SS")) {
      append_digits(out, c.second, 2);
      i += 2;
    } else if (match_element(model, i, "AM") || match_element(model, i, "PM")) {
      out += cased(c.hour < 12 ? "AM" : "PM", model.substr(i, 2));
      i += 2;
    } else {
      throw ora(1821);
    }
  }
  return out;
}

std::string to_text(const value_t& value) {
  switch (value.kind) {
    case value_t::kind_t::null:
      return std::string();
    case value_t::kind_t::number:
      return format_number(value);
    case value_t::kind_t::text:
      return value.text;
    case value_t::kind_t::date:
      return format_date(value.seconds, "DD-MON-RR");
    case value_t::kind_t::timestamp:
      return format_date(value.seconds, "DD-MON-RR HH.MI.SS") + ".000000 " +
             format_date(value.seconds, "AM");
  }
  return std::string();
}

}  // namespace ocisim
