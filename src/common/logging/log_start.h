// Starting the library's log under a name. Called by OracleVssInitLib with the agent's log
// name and an argument list (which may carry "-log <path>" and "-verbose").
// The file receiver joins here with the log-file layer; until then start-up records the
// requested name and attaches nothing, so lines are dropped as for any log without receiver.
#pragma once
#include <string>
#include <vector>

namespace logging {

void log_start(const std::u16string& log_name, const std::vector<std::u16string>& args);

// The name of the last start-up, empty before the first.
std::u16string started_log_name();

}  // namespace logging
