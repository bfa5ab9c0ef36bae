#include "help.h"

#include "library_loader.h"

namespace host {

namespace {

std::string option_synopsis(const option_def_t& option) {
  std::string text(option.name);
  if (option.kind != value_kind_t::flag) text += " " + std::string(option.value_name);
  return option.required ? text : "[" + text + "]";
}

// Words of `text` in lines of at most `width` columns, each line indented by `indent` blanks.
std::string wrapped(const std::string& text, size_t indent, size_t width) {
  std::string result;
  std::string line;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find(' ', start);
    if (end == std::string::npos) end = text.size();
    const std::string word = text.substr(start, end - start);
    start = end + 1;
    if (word.empty()) continue;
    if (!line.empty() && indent + line.size() + 1 + word.size() > width) {
      result += std::string(indent, ' ') + line + "\n";
      line.clear();
    }
    line += (line.empty() ? "" : " ") + word;
  }
  if (!line.empty()) result += std::string(indent, ' ') + line + "\n";
  return result;
}

std::string padded(std::string text, size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  else text += "  ";
  return text;
}

}  // namespace

std::string command_synopsis(const command_def_t& command) {
  std::string text(command.name);
  if (!command.positional.empty()) text += " " + std::string(command.positional);
  for (const auto& option : command.options) text += " " + option_synopsis(option);
  return text;
}

std::string usage_hint() { return "Run 'dbshadowlink --help' for usage.\n"; }

std::string general_help() {
  std::string text =
      "Usage: dbshadowlink [--lib PATH] [--log-name NAME] COMMAND [OPTIONS]\n"
      "       dbshadowlink [--lib PATH] [--log-name NAME] [--keep-going] --script FILE\n"
      "       dbshadowlink [COMMAND] --help\n"
      "\n"
      "Loads the DbShadowLink library as a backup agent does, starts it (OracleVssInitLib),\n"
      "runs one command, which calls one export, and stops it (OracleVssStopLib).\n"
      "\n"
      "Options:\n";
  text += "  --lib PATH       the library to load; default: " +
          std::string(library_loader_t::file_name()) + " beside this program\n";
  text +=
      "  --log-name NAME  the log name given to OracleVssInitLib; default: dbshadowlink.log\n"
      "  --script FILE    run the commands of FILE in one process, one per line\n"
      "  --keep-going     with --script: run the lines after a failed line as well\n"
      "  -h, --help       print this help, or the help of COMMAND\n"
      "\n"
      "Commands:\n";
  for (const auto& command : command_table()) {
    text += "  " + command_synopsis(command) + "\n";
    text += wrapped(std::string(command.summary) + " (" + std::string(command.export_name) + ")",
                    /*indent=*/6, /*width=*/90);
  }
  text +=
      "\n"
      "Files are UTF-8 (a byte-order mark is allowed); '-' names standard input, which can be\n"
      "read once per run. Results go to standard output as UTF-8, one per command, booleans as\n"
      "true or false; commands without a result print nothing. An empty --user means OS\n"
      "authentication. Numbers are decimal.\n"
      "\n"
      "A script holds one command with its options per line. Blank lines and lines whose first\n"
      "character other than a blank is '#' are skipped. Double quotes keep blanks inside a\n"
      "value (\"C:\\Program Files\\x\"); backslashes are plain characters. Every line is checked\n"
      "before the library is loaded. The library is started once before the first line and\n"
      "stopped once after the last, so what one line leaves in the process is seen by the\n"
      "next. A failed line ends the script unless --keep-going is given.\n"
      "\n"
      "The test command calls OracleTest, which starts and stops the library itself: run alone,\n"
      "it is not wrapped in OracleVssInitLib and OracleVssStopLib, and it gets --log-name.\n"
      "\n"
      "Exit status:\n"
      "  0  success\n"
      "  1  the library failed: it cannot be loaded, lacks an export that the run needs, or an\n"
      "     export returned an error, whose text goes to standard error\n"
      "  2  usage error: wrong arguments, an unreadable or ill-formed input file\n"
      "A script ends with the status of its first failed line.\n";
  return text;
}

std::string command_help(const command_def_t& command) {
  std::string text = "Usage: dbshadowlink [--lib PATH] [--log-name NAME] " +
                     command_synopsis(command) + "\n\n" + std::string(command.summary) +
                     "\nCalls " + std::string(command.export_name) + ".\n";
  if (!command.positional.empty() || !command.options.empty()) text += "\nArguments:\n";
  if (!command.positional.empty()) {
    text += "  " + padded(std::string(command.positional), 20) + "required\n";
  }
  for (const auto& option : command.options) {
    std::string name(option.name);
    if (option.kind != value_kind_t::flag) name += " " + std::string(option.value_name);
    text += "  " + padded(name, 20) + std::string(option.help);
    if (option.required) text += " (required)";
    if (option.kind == value_kind_t::file) text += "; '-' reads standard input";
    text += "\n";
  }
  return text;
}

}  // namespace host
