// Oracle errors as the server reports them: a code and the full message, one "ORA-NNNNN: text"
// line per error of the stack, each ending with a line feed. Thrown by the simulated server and
// caught at the OCI boundary, which stores it in the caller's error handle. Any thread.
#pragma once
#include <exception>
#include <initializer_list>
#include <string>
#include <vector>

namespace ocisim {

// One line of an error stack: the code and the words that fill the message's %s places.
struct ora_line_t {
  int code;
  std::vector<std::string> args;
};

class ora_error_t : public std::exception {
 public:
  // The top of the stack gives the code OCIErrorGet reports.
  explicit ora_error_t(std::initializer_list<ora_line_t> lines);
  explicit ora_error_t(const std::vector<ora_line_t>& lines);
  // An error with a message of its own (a fault that names its text).
  ora_error_t(int code, std::string message);

  int code() const { return code_; }
  const std::string& message() const { return message_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  int code_ = 0;
  std::string message_;
};

// Shorthand for a one-line error.
ora_error_t ora(int code, std::vector<std::string> args = {});

// "ORA-NNNNN: text\n" for one line, the text from Oracle's wording with %s filled in; a code
// the catalog lacks reads as Oracle prints an unknown message number.
std::string ora_line_text(const ora_line_t& line);

// The code part of an error's first line, "ORA-01034".
std::string error_code_text(int code);

// The message of a code as the catalog has it, with its %s places unfilled; empty if unknown.
std::string ora_template(int code);

}  // namespace ocisim
