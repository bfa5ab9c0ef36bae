// One run of the host against a loaded library: starting and stopping the library, running a
// command, reading its input files and reporting what its export answered. Main thread only.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "arguments.h"
#include "library_api.h"

namespace host {

class session_t {
 public:
  session_t(const library_api_t& api, std::string log_name)
      : api_(api), log_name_(std::move(log_name)) {}

  const library_api_t& api() const { return api_; }
  const std::string& log_name() const { return log_name_; }

  // OracleVssInitLib and OracleVssStopLib; each returns an exit status.
  int start_library();
  int stop_library();

  // Runs one command and returns its exit status. A usage error found only now (an input
  // file that cannot be read) is reported here and gives exit_usage.
  int run(const parsed_command_t& command);

  // The checked text of a file option, or "" when the option was not given.
  std::string input_text(const parsed_command_t& command, std::string_view option) const;

  // Report the answer of the command's export and give the exit status: on success the
  // result goes to standard output, on failure the error text goes to standard error.
  int text_result(const parsed_command_t& command, DSL_RESULT result, const out_text_t& text,
                  const out_text_t& error) const;
  int boolean_result(const parsed_command_t& command, DSL_RESULT result, uint8_t value,
                     const out_text_t& error) const;
  int plain_result(const parsed_command_t& command, DSL_RESULT result,
                   const out_text_t& error) const;

  // A boolean out argument starts with this value, so an export that reports success without
  // writing it is caught.
  static constexpr uint8_t unwritten_boolean = 0xA5;

 private:
  int report_failure(const std::string& where, std::string_view export_name, DSL_RESULT result,
                     const out_text_t& error) const;

  const library_api_t& api_;
  std::string log_name_;
};

// "origin: command: " for messages about a command.
std::string message_prefix(const parsed_command_t& command);

}  // namespace host
