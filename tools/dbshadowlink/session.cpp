#include "session.h"

#include <cstdio>

#include "console_io.h"
#include "host_errors.h"
#include "input_text.h"

namespace host {

namespace {

std::string hex(DSL_RESULT result) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
  return text;
}

void print_line(const std::string& text) {
  if (text.empty() || text.back() != '\n') write_stdout(text + "\n");
  else write_stdout(text);
}

}  // namespace

std::string message_prefix(const parsed_command_t& command) {
  std::string text = "dbshadowlink: ";
  if (!command.origin.empty()) text += command.origin + ": ";
  return text + std::string(command.def->name) + ": ";
}

int session_t::start_library() {
  const wide_string_t name = to_wide(log_name_);
  out_text_t error(api_);
  const DSL_RESULT result = HOST_EXPORT(api_, OracleVssInitLib)(name.c_str(), error.out());
  if (result != DSL_S_OK) return report_failure("dbshadowlink: ", "OracleVssInitLib", result, error);
  return exit_ok;
}

int session_t::stop_library() {
  out_text_t error(api_);
  flush_stdout();
  const DSL_RESULT result = HOST_EXPORT(api_, OracleVssStopLib)(error.out());
  if (result != DSL_S_OK) return report_failure("dbshadowlink: ", "OracleVssStopLib", result, error);
  return exit_ok;
}

int session_t::run(const parsed_command_t& command) {
  int status = exit_ok;
  try {
    // The library may print to standard output itself; what the host wrote so far goes first.
    flush_stdout();
    status = command.def->run(*this, command);
  } catch (const usage_error_t& failure) {
    write_stderr(message_prefix(command) + failure.what() + "\n");
    status = exit_usage;
  }
  flush_stdout();
  return status;
}

std::string session_t::input_text(const parsed_command_t& command, std::string_view option) const {
  if (!command.has(option)) return std::string();
  const std::string path = command.text(option);
  std::string bytes;
  std::string why;
  if (!read_whole_file(path, bytes, why)) {
    const std::string name = path == "-" ? std::string("standard input") : "'" + path + "'";
    throw usage_error_t("cannot read " + name + " (" + std::string(option) + "): " + why);
  }
  return checked_input_text(std::move(bytes), path);
}

int session_t::text_result(const parsed_command_t& command, DSL_RESULT result,
                           const out_text_t& text, const out_text_t& error) const {
  if (result != DSL_S_OK) {
    return report_failure(message_prefix(command), command.def->export_name, result, error);
  }
  if (!text.is_set()) {
    write_stderr(message_prefix(command) + std::string(command.def->export_name) +
                 " reported success but handed out no text\n");
    return exit_failure;
  }
  print_line(text.utf8());
  return exit_ok;
}

int session_t::boolean_result(const parsed_command_t& command, DSL_RESULT result, uint8_t value,
                              const out_text_t& error) const {
  if (result != DSL_S_OK) {
    return report_failure(message_prefix(command), command.def->export_name, result, error);
  }
  if (value > 1) {
    write_stderr(message_prefix(command) + std::string(command.def->export_name) +
                 " reported success but its boolean holds " + std::to_string(value) +
                 " (expected 0 or 1)\n");
    return exit_failure;
  }
  print_line(value == 1 ? "true" : "false");
  return exit_ok;
}

int session_t::plain_result(const parsed_command_t& command, DSL_RESULT result,
                            const out_text_t& error) const {
  if (result != DSL_S_OK) {
    return report_failure(message_prefix(command), command.def->export_name, result, error);
  }
  return exit_ok;
}

int session_t::report_failure(const std::string& where, std::string_view export_name,
                              DSL_RESULT result, const out_text_t& error) const {
  flush_stdout();
  std::string message = where + std::string(export_name) + " failed with " + hex(result) + ":\n";
  message += error.is_set() ? error.utf8() : std::string("(the library gave no error text)");
  if (message.back() != '\n') message += "\n";
  write_stderr(message);
  return exit_failure;
}

}  // namespace host
