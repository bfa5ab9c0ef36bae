#include "journal.h"

#include "platform.h"

namespace ocisim {

namespace {

void write_line(const std::string& kind, const std::string& rest) {
  const std::string path = env_value("OCISIM_JOURNAL");
  if (path.empty()) return;
  std::string line = std::to_string(process_id()) + " " + std::to_string(thread_id()) + " " +
                     kind + " " + rest;
  for (char& c : line) {
    if (c == '\r' || c == '\n') c = ' ';
  }
  line += '\n';
  append_to_file(path, line);
}

}  // namespace

std::string journal_value(const std::string& value) {
  bool plain = !value.empty();
  for (char c : value) {
    if (c == ' ' || c == '"' || c == '\t' || c == '\r' || c == '\n') plain = false;
  }
  if (plain) return value;
  std::string quoted = "\"";
  for (char c : value) {
    quoted += c;
    if (c == '"') quoted += '"';
  }
  return quoted + "\"";
}

void journal_call(const std::string& function, const journal_args_t& args,
                  const std::string& outcome) {
  std::string rest = function;
  for (const auto& arg : args) rest += " " + arg.first + "=" + journal_value(arg.second);
  rest += " => " + outcome;
  write_line("CALL", rest);
}

void journal_sql(const std::string& text) { write_line("SQL", text); }

void journal_hang(const std::string& function, const std::string& duration) {
  write_line("HANG", function + " " + duration);
}

}  // namespace ocisim
