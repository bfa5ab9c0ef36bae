// The help texts, built from the command table so that they cannot drift from what the
// parser accepts.
#pragma once
#include <string>

#include "commands.h"

namespace host {

// "backup-logs --home H --sid S [--usn N] ..."
std::string command_synopsis(const command_def_t& command);
// The whole help: usage, global options, every command, files, output and exit status.
std::string general_help();
// One command: synopsis, summary, export and each option.
std::string command_help(const command_def_t& command);
// The line that follows a usage error.
std::string usage_hint();

}  // namespace host
