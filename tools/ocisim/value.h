// A value of the simulated SQL: NULL, a NUMBER, a character string, a DATE or a TIMESTAMP.
// Numbers keep an exact 64-bit integer when they have one; dates are seconds from 1970-01-01
// in the database's own wall-clock time. The conversions follow Oracle's defaults: a NUMBER
// prints without trailing zeros or a leading zero (".5"), a DATE as DD-MON-RR.
#pragma once
#include <cstdint>
#include <string>

namespace ocisim {

struct value_t {
  enum class kind_t { null, number, text, date, timestamp };
  kind_t kind = kind_t::null;
  std::string text;          // kind text
  bool integral = false;     // kind number: `integer` holds the exact value
  std::int64_t integer = 0;  // kind number
  double real = 0;           // kind number, always set
  std::int64_t seconds = 0;  // kind date and timestamp

  static value_t null() { return value_t{}; }
  static value_t of_text(std::string text);  // '' is NULL, as in Oracle
  static value_t of_integer(std::int64_t number);
  static value_t of_real(double number);
  static value_t of_date(std::int64_t seconds, bool timestamp = false);

  bool is_null() const { return kind == kind_t::null; }
};

// Reads a number as Oracle's implicit conversion does (blanks around, sign, digits, a point,
// an exponent); false when the text is no number.
bool parse_number(const std::string& text, value_t& number);
// The scenario's form of a date: "YYYY-MM-DD HH:MI:SS" or "YYYY-MM-DD"; false otherwise.
bool parse_date(const std::string& text, std::int64_t& seconds);
std::string format_number(const value_t& number);

// Civil time from and to seconds since 1970 (proleptic Gregorian, no leap seconds).
struct civil_t {
  int year, month, day, hour, minute, second;
};
civil_t to_civil(std::int64_t seconds);
std::int64_t from_civil(const civil_t& civil);

// Oracle's TO_CHAR of a date with a format model (YYYY YY RR MM MON Mon MONTH DD DY HH HH12
// HH24 MI SS AM PM and literal punctuation or "quoted text"). Raises ORA-01821 for a model it
// does not know.
std::string format_date(std::int64_t seconds, const std::string& model);

// The value as text, as a SQLT_STR define would receive it; NULL gives "".
std::string to_text(const value_t& value);

}  // namespace ocisim
