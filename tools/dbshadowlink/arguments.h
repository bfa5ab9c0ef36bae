// Argument parsing for the console host: the process command line (global options and one
// command) and the lines of a script (one command each). Every check that needs no library
// happens here, so a usage error never reaches the library. Errors are usage_error_t.
#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"

namespace host {

// One command with its checked options.
struct parsed_command_t {
  const command_def_t* def = nullptr;
  std::map<std::string, std::string, std::less<>> values;  // option name -> value; "" for a flag
  std::string positional;
  // Where the command came from, for messages: "" on the command line, "FILE:LINE" in a script.
  std::string origin;

  bool has(std::string_view option) const { return values.find(option) != values.end(); }
  // The option's value, or "" when it was not given.
  std::string text(std::string_view option) const;
};

struct invocation_t {
  std::optional<std::string> library_path;    // --lib
  std::string log_name = "dbshadowlink.log";  // --log-name
  std::optional<std::string> script_path;     // --script
  bool keep_going = false;                    // --keep-going
  bool help = false;                          // --help, -h
  const command_def_t* help_command = nullptr;  // the command named along with --help
  std::optional<parsed_command_t> command;    // absent with --script or --help
};

// The process arguments without the program name, each in UTF-8.
invocation_t parse_command_line(const std::vector<std::string>& args);

// One script line split into words: blanks separate words; a double-quoted part (which may
// be empty) keeps its blanks; there is no escape character, so backslashes stay as written.
std::vector<std::string> split_script_line(std::string_view line);
// The words of one script line, which must start with a command. Global options are refused.
parsed_command_t parse_script_command(const std::vector<std::string>& words,
                                      const std::string& origin);

// Strict decimal parsers: digits only (a leading '-' for the signed one), no blanks, no '+',
// within range. On failure return false and leave `value` untouched.
[[nodiscard]] bool parse_int32(std::string_view text, int32_t& value);
[[nodiscard]] bool parse_uint64(std::string_view text, uint64_t& value);

}  // namespace host
