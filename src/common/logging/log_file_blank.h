// Reports of the logging machinery about itself (a start-up group that failed, an archive that
// would not close). They go to the process-wide log on the blank format, five blanks where a
// channel's name would stand, so that they read apart from the work being logged. Never throw.
#pragma once
#include <exception>
#include <string>

#include "common/logging/line_format.h"

namespace logging {

class log_t;

// The one blank format, alive until process exit.
const format::line_format_t& blank_format();

// One error line (or one per line feed in `text`).
void write_blank_error(const std::string& text) noexcept;
// The failure's text and the line naming the thread where it arose, as one error.
void write_blank_error(const std::exception& failure) noexcept;
// The same into a given log rather than the process-wide one.
void write_blank_error(log_t& log, const std::exception& failure) noexcept;

}  // namespace logging
