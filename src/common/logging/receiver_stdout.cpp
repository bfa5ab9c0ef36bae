#include "common/logging/receiver_stdout.h"

#include <iostream>

namespace logging::receiver {

const char kStdoutFrameLine[] =
    "//////////////////////////////////////////////////////////////////////////";
static_assert(sizeof kStdoutFrameLine == 74 + 1, "the frame is 74 slashes wide");

stdout_log_file_t::stdout_log_file_t() { std::cout << kStdoutFrameLine << eol_; }

stdout_log_file_t::~stdout_log_file_t() {
  try {
    std::cout << kStdoutFrameLine << eol_;
    std::cout.flush();
  } catch (...) {
  }
}

void stdout_log_file_t::write(const std::string& text) { std::cout << text; }

}  // namespace logging::receiver
