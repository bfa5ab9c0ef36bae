#include "script.h"

#include "console_io.h"
#include "host_errors.h"
#include "input_text.h"

namespace host {

std::vector<parsed_command_t> load_script(const std::string& path) {
  std::string bytes;
  std::string why;
  if (!read_whole_file(path, bytes, why)) {
    const std::string name = path == "-" ? std::string("standard input") : "'" + path + "'";
    throw usage_error_t("cannot read the script " + name + ": " + why);
  }
  return parse_script(checked_input_text(std::move(bytes), path),
                      path == "-" ? std::string("<stdin>") : path);
}

std::vector<parsed_command_t> parse_script(const std::string& text, const std::string& name) {
  std::vector<parsed_command_t> commands;
  size_t start = 0;
  int number = 0;
  while (start <= text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    start = end + 1;
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '#') continue;
    const std::string origin = name + ":" + std::to_string(number);
    std::vector<std::string> words;
    try {
      words = split_script_line(line);
    } catch (const usage_error_t& failure) {
      throw usage_error_t(origin + ": " + failure.what());
    }
    commands.push_back(parse_script_command(words, origin));
  }
  if (commands.empty()) throw usage_error_t("the script " + name + " holds no command");
  return commands;
}

}  // namespace host
