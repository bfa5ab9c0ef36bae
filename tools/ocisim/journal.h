// The journal tests read: one line per entry, appended to the file named by OCISIM_JOURNAL and
// written at once, so a test sees it even when the caller hangs or is cut off afterwards.
//   <pid> <tid> CALL <function> <argument>... => <outcome>
//   <pid> <tid> SQL <statement text>
//   <pid> <tid> HANG <function> <seconds|forever>
// Arguments are name=value; a value with a blank, a quote or nothing in it is written in double
// quotes with inner quotes doubled. Line breaks inside a statement become blanks. No journal
// variable, no journal. Any thread.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace ocisim {

using journal_args_t = std::vector<std::pair<std::string, std::string>>;

void journal_call(const std::string& function, const journal_args_t& args,
                  const std::string& outcome);
void journal_sql(const std::string& text);
void journal_hang(const std::string& function, const std::string& duration);

// The quoting rule above, for one value.
std::string journal_value(const std::string& value);

}  // namespace ocisim
