// Scripts: several commands run by one process, one per line, so that what one export leaves
// in the process (skipped writers, the started library) is seen by the next, as an agent sees
// it. The whole script is checked before anything runs.
#pragma once
#include <string>
#include <vector>

#include "arguments.h"

namespace host {

// Reads and checks the script `path` ("-" is standard input). Throws usage_error_t naming the
// file and line of the first problem; a script without any command is one too.
std::vector<parsed_command_t> load_script(const std::string& path);

// The commands parsed from a script's text; `name` is used in messages.
std::vector<parsed_command_t> parse_script(const std::string& text, const std::string& name);

}  // namespace host
