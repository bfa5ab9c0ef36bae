#include "common/logging/log_file_blank.h"

#include "common/exc/exc_log.h"
#include "common/logging/log.h"

namespace logging {

const format::line_format_t& blank_format() {
  static const auto* const blank = new format::line_format_t(format::line_format_t::blank());
  return *blank;
}

void write_blank_error(const std::string& text) noexcept {
  try {
    log_t::instance()->write(kLevelError, 0, &blank_format(), text);
  } catch (...) {
    // Nothing is left to report a failing report to.
  }
}

void write_blank_error(const std::exception& failure) noexcept {
  try {
    write_blank_error(*log_t::instance(), failure);
  } catch (...) {
  }
}

void write_blank_error(log_t& log, const std::exception& failure) noexcept {
  try {
    const char* what = failure.what();
    log.write(kLevelError, 0, &blank_format(),
              std::string(what != nullptr ? what : "") + exc::thread_line(failure));
  } catch (...) {
  }
}

}  // namespace logging
