// The calendar value behind the time rule of the log deletion: a date and time held as a day
// count from 30 December 1899 with the time of day as its fraction, built and checked the way
// the Windows date conversions do it (SYSTEMTIME to a variant time and back), but written out
// here so that both builds compare times alike. Also the UTC clock texts of the log flows.
// Pure functions, any thread.
#pragma once
#include <cstdint>
#include <string>

namespace specific::oracle::logs {

// Six fields as they were parsed; they are not checked until a calendar value is made.
struct calendar_fields_t {
  int32_t year = 0;
  int32_t month = 0;
  int32_t day = 0;
  int32_t hours = 0;
  int32_t minutes = 0;
  int32_t seconds = 0;
};

// A day count: whole days since 1899-12-30 in the integer part; the fraction is the time of
// day. Before that day the integer part is negative and the fraction still counts forward
// from midnight, so that -1.25 is 1899-12-29 06:00 (the platform's own form).
struct calendar_value_t {
  double days = 0;
};

// Half a second in days (1/172800): two values closer than this are one moment.
constexpr double kHalfSecondInDays = 1.0 / 172800.0;

// The platform's conversion: fails (false) for fields that cannot be converted at all (a month
// outside 1..12, a day outside 1..31, hours above 23, minutes or seconds above 59, a field that
// does not fit the unsigned 16 bits of a SYSTEMTIME field, a year above 9999). Years below 100
// are read as two-digit years (0-29 in 2000-2029, 30-99 in 1930-1999) and days past the end of
// their month roll over into the next, as the platform does; valid_calendar_value() catches
// both by converting back.
bool fields_to_calendar_value(const calendar_fields_t& fields, calendar_value_t& value);
// The way back: the fields of a day count, the time rounded to the nearest second.
calendar_fields_t calendar_value_to_fields(const calendar_value_t& value);

// The check of the deletion rule: the fields convert, and converting back gives the same six
// fields. So 31/02 (which rolls over to 3 March) and two-digit years are invalid.
bool valid_calendar_value(const calendar_fields_t& fields, calendar_value_t& value);

// The day count laid out on one straight line: values below minus half a second are mapped
// from the platform's form (negative day, forward fraction) to their distance from the epoch.
double linear_days(const calendar_value_t& value);
// Equal: less than half a second apart either way (a difference of exactly half a second,
// within rounding, still counts as equal).
bool calendar_equal(const calendar_value_t& a, const calendar_value_t& b);
// Later: after `b` and not equal to it, so that a moment within half a second is never later.
bool calendar_later(const calendar_value_t& a, const calendar_value_t& b);

// "dd/mm/yyyy hh:mm:ss" as day, month, year, hours, minutes, seconds; and Oracle's
// "yyyy/mm/dd hh24:mi:ss" as year, month, day, hours, minutes, seconds. As swscanf reads
// "%d/%d/%d %d:%d:%d": blanks before each number are skipped, a sign is allowed, and what
// follows the sixth number is ignored. False when any of the six numbers is missing.
bool parse_day_first(const std::u16string& text, calendar_fields_t& fields);
bool parse_year_first(const std::u16string& text, calendar_fields_t& fields);

// The UTC fields of a moment given in microseconds since 1970-01-01 (negative before),
// proleptic Gregorian; years below 1 come out as 0, -1, ...
calendar_fields_t utc_fields_from_unix_us(int64_t unixMicroseconds);
// Microseconds since 1970-01-01 UTC now, from the system clock.
int64_t unix_now_us();

// The limit of the time rule: now minus `minutes` (a negative count lies in the future), as
// strftime's "%d/%m/%Y %H:%M:%S" writes it; a year before 1 is written with its sign, as glibc
// does, and is then no valid date for the rule.
std::string time_limit_text(int64_t nowUnixMicroseconds, int32_t minutes);

// The run's time stamp: "%4d-%02d-%02dT%02d:%02d:%02d" of the UTC clock.
std::string utc_time_stamp(int64_t unixMicroseconds);

}  // namespace specific::oracle::logs
