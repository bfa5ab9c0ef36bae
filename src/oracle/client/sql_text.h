// Rules for text that is filled into a SQL or PL/SQL template. The sessions run as SYSDBA, so a
// value from outside (the agent's record ids, a path that Oracle's own views return, which may
// legally hold an apostrophe on Windows) must never be able to end its literal or its number.
// Pure functions, any thread.
#pragma once
#include <string>

namespace specific::oracle::sql {

// True when `text` is one or more decimal digits and nothing else: the only shape a value may
// have where a statement uses it as a number.
bool is_decimal_number(const std::string& text);
bool is_decimal_number(const std::u16string& text);

// The inside of a '...' literal: every apostrophe doubled. The template supplies the outer
// apostrophes, e.g. "CREATE DIRECTORY %1 AS '%2'" with literal_text(dir) as %2.
std::string literal_text(const std::string& value);

// A quoted identifier: `name` in double quotes, every double quote inside doubled.
std::string quoted_identifier(const std::string& name);

// A date column of Oracle's views as its moment in UTC, in the text form the archived-log
// records carry: TO_CHAR(SYS_EXTRACT_UTC(CAST(<column> AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss').
std::string utc_time_text_of(const std::string& column);

}  // namespace specific::oracle::sql
