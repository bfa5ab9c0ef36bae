// The command table: one command per export of the library, each with its options, its help
// text and the function that calls the export. The argument parser, the help text and the run
// loop all read this one table. Immutable after start-up.
#pragma once
#include <string_view>
#include <vector>

namespace host {

class session_t;
struct parsed_command_t;

enum class value_kind_t {
  flag,    // no value
  text,    // any text
  file,    // a UTF-8 file whose content is passed on; "-" is standard input
  int32,   // signed 32-bit decimal
  uint64,  // unsigned 64-bit decimal
};

struct option_def_t {
  std::string_view name;  // with its dashes: "--home"
  value_kind_t kind;
  bool required;
  std::string_view value_name;  // in the synopsis: "H"
  std::string_view help;
};

using command_fn_t = int (*)(session_t& session, const parsed_command_t& command);

struct command_def_t {
  std::string_view name;
  std::string_view export_name;
  std::string_view positional;  // the one positional argument's name, or empty for none
  std::vector<option_def_t> options;
  std::string_view summary;
  command_fn_t run;
  // The export starts and stops the library by itself, so a lone run of this command calls
  // neither OracleVssInitLib nor OracleVssStopLib around it.
  bool starts_library_itself;
};

const std::vector<command_def_t>& command_table();
const command_def_t* find_command(std::string_view name);
const option_def_t* find_option(const command_def_t& command, std::string_view name);

}  // namespace host
