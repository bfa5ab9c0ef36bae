#include "common/logging/line_format.h"

#include <cstdio>

#include "common/logging/log.h"

namespace logging::format {

namespace {

// Marks of style 0: the first line of a warning or error names its level, the lines after it
// show that they continue the same message.
const char* mark_of(int level, size_t piece) {
  if (level != kLevelWarning && level != kLevelError) return "";
  if (piece > 0) return ">>  |";
  return level == kLevelWarning ? "WARN|" : "ERR |";
}

// Words of style 1, all padded to one width so that the texts line up.
const char* word_of(int level) {
  switch (level) {
    case kLevelStep:
    case kLevelInfo:
      return "Info     ";
    case kLevelWarning:
      return "Warning  ";
    case kLevelError:
      return "Error    ";
    default:
      return "";
  }
}

void append_thread(std::string& out, uint32_t style, uint32_t thread_id) {
  char buf[32];
  if (style == 1) {
    std::snprintf(buf, sizeof buf, "<%2u> ", static_cast<unsigned>(thread_id % 100));
  } else {
    std::snprintf(buf, sizeof buf, "<%6u> ", static_cast<unsigned>(thread_id));
  }
  out += buf;
}

}  // namespace

line_format_t::line_format_t(const std::string& channel_name) {
  if (!channel_name.empty()) prefix_ = channel_name + "| ";
}

line_format_t line_format_t::blank() {
  line_format_t f;
  f.prefix_ = "     ";
  return f;
}

void line_format_t::append_line(std::string& out, const line_head_t& head,
                                const std::string& text, const std::string& eol) const {
  out += stamp_text(head.time);
  append_thread(out, head.style, head.thread_id);
  if (head.style == 1) {
    out += word_of(head.level);
  } else {
    out += prefix_;
    out += mark_of(head.level, head.piece);
  }
  if (head.indent > 0) out.append(static_cast<size_t>(head.indent) * 2, ' ');
  out += text;
  out += eol;
}

std::string stamp_text(const win::local_time_t* time) {
  if (time == nullptr) return "TIME ---";
  char buf[48];
  std::snprintf(buf, sizeof buf, "[%02u.%02u.%04u %02u:%02u:%02u] ", unsigned{time->day},
                unsigned{time->month}, unsigned{time->year}, unsigned{time->hour},
                unsigned{time->minute}, unsigned{time->second});
  return buf;
}

}  // namespace logging::format
