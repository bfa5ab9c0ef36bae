// The layout of a log line: the channel's prefix ("oralib| ") and the way one physical line is
// laid out from stamp, thread, prefix, mark, indent and text. Pure: safe from any thread.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "common/win/local_time.h"

namespace logging::format {

// What stands in front of a piece of text besides the channel's prefix.
struct line_head_t {
  uint32_t style = 0;   // 0: stamp, thread, prefix, mark; 1: stamp, short thread, level word
  int level = 2;        // 1 step, 2 information, 3 warning, 4 error
  size_t piece = 0;     // number of this line within its message, from 0
  int indent = 0;       // two blanks each
  const win::local_time_t* time = nullptr;  // null when the local time could not be had
  uint32_t thread_id = 0;
};

class line_format_t {
 public:
  // An empty name gives an empty prefix; any other name gives the name followed by "| ".
  explicit line_format_t(const std::string& channel_name);
  // The blank format, five blanks, used when the logging start-up itself must report.
  static line_format_t blank();

  const std::string& prefix() const { return prefix_; }

  // Appends one physical line, `eol` included, to `out`.
  void append_line(std::string& out, const line_head_t& head, const std::string& text,
                   const std::string& eol) const;

 private:
  line_format_t() = default;
  std::string prefix_;
};

// "[dd.mm.yyyy hh:mm:ss] ", or "TIME ---" when `time` is null.
std::string stamp_text(const win::local_time_t* time);

}  // namespace logging::format
