#include "oracle/logs/log_calendar.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace specific::oracle::logs {

namespace {

// Days from 1970-01-01 to y-m-d in the proleptic Gregorian calendar; d may run past the end of
// its month, which then rolls into the next (the arithmetic does not care).
int64_t days_from_civil(int64_t y, int64_t m, int64_t d) {
  y -= m <= 2 ? 1 : 0;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void civil_from_days(int64_t z, int64_t& y, int64_t& m, int64_t& d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  d = doy - (153 * mp + 2) / 5 + 1;
  m = mp + (mp < 10 ? 3 : -9);
  y = yoe + era * 400 + (m <= 2 ? 1 : 0);
}

// 1899-12-30, day 0 of the platform's count, from 1970-01-01.
const int64_t kEpochFromUnix = days_from_civil(1899, 12, 30);
const int64_t kFirstDay = days_from_civil(100, 1, 1) - kEpochFromUnix;
const int64_t kLastDay = days_from_civil(9999, 12, 31) - kEpochFromUnix;

bool fits_word(int32_t v) { return v >= 0 && v <= 0xFFFF; }

// swscanf's "%d": blanks, an optional sign, at least one digit; saturates instead of wrapping.
bool scan_int(const std::u16string& text, size_t& pos, int32_t& value) {
  while (pos < text.size() && (text[pos] == u' ' || (text[pos] >= u'\t' && text[pos] <= u'\r'))) {
    ++pos;
  }
  bool negative = false;
  if (pos < text.size() && (text[pos] == u'-' || text[pos] == u'+')) {
    negative = text[pos] == u'-';
    ++pos;
  }
  const size_t start = pos;
  int64_t v = 0;
  while (pos < text.size() && text[pos] >= u'0' && text[pos] <= u'9') {
    if (v < 100000000000LL) v = v * 10 + (text[pos] - u'0');
    ++pos;
  }
  if (pos == start) return false;
  if (negative) v = -v;
  if (v > INT32_MAX) v = INT32_MAX;
  if (v < INT32_MIN) v = INT32_MIN;
  value = static_cast<int32_t>(v);
  return true;
}

// The literal characters of the format; a blank in the format matches any run of blanks.
bool scan_literal(const std::u16string& text, size_t& pos, char16_t c) {
  if (c == u' ') {
    while (pos < text.size() && (text[pos] == u' ' || (text[pos] >= u'\t' && text[pos] <= u'\r'))) {
      ++pos;
    }
    return true;
  }
  if (pos < text.size() && text[pos] == c) {
    ++pos;
    return true;
  }
  return false;
}

bool scan_six(const std::u16string& text, int32_t (&n)[6]) {
  static const char16_t separators[5] = {u'/', u'/', u' ', u':', u':'};
  size_t pos = 0;
  for (int i = 0; i < 6; ++i) {
    if (i > 0 && !scan_literal(text, pos, separators[i - 1])) return false;
    if (!scan_int(text, pos, n[i])) return false;
  }
  return true;
}

}  // namespace

bool fields_to_calendar_value(const calendar_fields_t& f, calendar_value_t& value) {
  if (!fits_word(f.year) || !fits_word(f.month) || !fits_word(f.day) || !fits_word(f.hours) ||
      !fits_word(f.minutes) || !fits_word(f.seconds)) {
    return false;
  }
  if (f.month < 1 || f.month > 12 || f.day < 1 || f.day > 31) return false;
  if (f.hours > 23 || f.minutes > 59 || f.seconds > 59) return false;
  int64_t year = f.year;
  if (year < 30) {
    year += 2000;
  } else if (year < 100) {
    year += 1900;
  }
  const int64_t day = days_from_civil(year, f.month, f.day) - kEpochFromUnix;
  if (day < kFirstDay || day > kLastDay) return false;
  const double fraction = (f.hours * 3600.0 + f.minutes * 60.0 + f.seconds) / 86400.0;
  value.days = day >= 0 ? static_cast<double>(day) + fraction : static_cast<double>(day) - fraction;
  return true;
}

calendar_fields_t calendar_value_to_fields(const calendar_value_t& value) {
  // Back onto the straight line, to whole seconds, then split.
  const double linear = linear_days(value);
  const int64_t seconds = static_cast<int64_t>(std::llround(linear * 86400.0));
  int64_t day = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
  const int64_t second_of_day = seconds - day * 86400;
  int64_t y = 0, m = 0, d = 0;
  civil_from_days(day + kEpochFromUnix, y, m, d);
  calendar_fields_t f;
  f.year = static_cast<int32_t>(y);
  f.month = static_cast<int32_t>(m);
  f.day = static_cast<int32_t>(d);
  f.hours = static_cast<int32_t>(second_of_day / 3600);
  f.minutes = static_cast<int32_t>(second_of_day / 60 % 60);
  f.seconds = static_cast<int32_t>(second_of_day % 60);
  return f;
}

bool valid_calendar_value(const calendar_fields_t& fields, calendar_value_t& value) {
  calendar_value_t converted;
  if (!fields_to_calendar_value(fields, converted)) return false;
  const calendar_fields_t back = calendar_value_to_fields(converted);
  if (back.year != fields.year || back.month != fields.month || back.day != fields.day ||
      back.hours != fields.hours || back.minutes != fields.minutes ||
      back.seconds != fields.seconds) {
    return false;
  }
  value = converted;
  return true;
}

double linear_days(const calendar_value_t& value) {
  if (value.days >= -kHalfSecondInDays) return value.days;
  const double ceiling = std::ceil(value.days);
  return ceiling + (ceiling - value.days);
}

bool calendar_equal(const calendar_value_t& a, const calendar_value_t& b) {
  // A hair of tolerance, so that a difference of exactly half a second, which the day counts
  // hold only to the nearest double, is not split by rounding.
  return std::fabs(linear_days(a) - linear_days(b)) <= kHalfSecondInDays * (1 + 1e-9);
}

bool calendar_later(const calendar_value_t& a, const calendar_value_t& b) {
  return !calendar_equal(a, b) && linear_days(a) > linear_days(b);
}

bool parse_day_first(const std::u16string& text, calendar_fields_t& fields) {
  int32_t n[6];
  if (!scan_six(text, n)) return false;
  fields = {n[2], n[1], n[0], n[3], n[4], n[5]};
  return true;
}

bool parse_year_first(const std::u16string& text, calendar_fields_t& fields) {
  int32_t n[6];
  if (!scan_six(text, n)) return false;
  fields = {n[0], n[1], n[2], n[3], n[4], n[5]};
  return true;
}

calendar_fields_t utc_fields_from_unix_us(int64_t us) {
  const int64_t seconds = us >= 0 ? us / 1000000 : -((-us + 999999) / 1000000);
  const int64_t day = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
  const int64_t second_of_day = seconds - day * 86400;
  int64_t y = 0, m = 0, d = 0;
  civil_from_days(day, y, m, d);
  calendar_fields_t f;
  f.year = static_cast<int32_t>(y);
  f.month = static_cast<int32_t>(m);
  f.day = static_cast<int32_t>(d);
  f.hours = static_cast<int32_t>(second_of_day / 3600);
  f.minutes = static_cast<int32_t>(second_of_day / 60 % 60);
  f.seconds = static_cast<int32_t>(second_of_day % 60);
  return f;
}

int64_t unix_now_us() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::string time_limit_text(int64_t nowUnixMicroseconds, int32_t minutes) {
  // At most 2^31 minutes of 6e7 microseconds: about 1.3e17, far inside 64 bits.
  const int64_t limit = nowUnixMicroseconds - static_cast<int64_t>(minutes) * 60000000LL;
  const calendar_fields_t f = utc_fields_from_unix_us(limit);
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, "%02d/%02d/%04d %02d:%02d:%02d", f.day, f.month, f.year,
                f.hours, f.minutes, f.seconds);
  return buffer;
}

std::string utc_time_stamp(int64_t unixMicroseconds) {
  const calendar_fields_t f = utc_fields_from_unix_us(unixMicroseconds);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%4d-%02d-%02dT%02d:%02d:%02d", f.year, f.month, f.day,
                f.hours, f.minutes, f.seconds);
  return buffer;
}

}  // namespace specific::oracle::logs
