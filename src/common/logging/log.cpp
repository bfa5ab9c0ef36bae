#include "common/logging/log.h"

#include <atomic>
#include <cstddef>
#include <utility>

#include "common/win/local_time.h"
#include "common/win/thread_id.h"

namespace logging {

namespace {

// Rotation looks at the file size only every this many writes, to keep size() off the
// common path.
constexpr int32_t kWritesPerRotationCheck = 1000;

// Each thread keeps its nesting per log. The storage is plain data, so a thread that ends, or
// a library that is unloaded while threads still run, leaves nothing to clean up. A slot at
// depth 0 carries no information and is free for any log; only when every slot holds a deeper
// nesting of other logs is a further log's nesting lost, and it then reads as 0.
struct indent_slot_t {
  uint64_t key;
  int depth;
};
constexpr size_t kIndentSlots = 8;
thread_local indent_slot_t t_indent_slots[kIndentSlots];

indent_slot_t* find_indent_slot(uint64_t key) {
  for (auto& slot : t_indent_slots) {
    if (slot.key == key) return &slot;
  }
  return nullptr;
}

indent_slot_t* find_or_claim_indent_slot(uint64_t key) {
  if (indent_slot_t* own = find_indent_slot(key)) return own;
  for (auto& slot : t_indent_slots) {
    if (slot.depth == 0) {
      slot.key = key;
      return &slot;
    }
  }
  return nullptr;
}

uint64_t next_indent_key() {
  static std::atomic<uint64_t> next{1};  // 0 marks a slot never used
  return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

log_t::log_t() : indent_key_(next_indent_key()) {}

log_t::log_t(std::shared_ptr<receiver::log_file_t> file)
    : file_(std::move(file)), indent_key_(next_indent_key()) {}

const std::shared_ptr<log_t>& log_t::instance() {
  // Never destroyed: code that runs during process exit (static destructors, late clean-up)
  // may still log, and must find the log alive.
  static const auto* const the_log = new std::shared_ptr<log_t>(std::make_shared<log_t>());
  return *the_log;
}

void log_t::write(int level, int indent, const format::line_format_t* format,
                  const std::string& text) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  if (disabled_ || !file_ || format == nullptr) return;
  try {
    // Kept alive here even if the receiver itself replaces the log's receiver.
    const std::shared_ptr<receiver::log_file_t> file = file_;
    const std::string message = compose(level, indent, *format, text, file->eol());
    file->write(message);
    if (rotate_enabled_ && ++lines_since_rotation_check_ >= kWritesPerRotationCheck) {
      // Reset first: a failed rotation is tried again only after the next round of writes.
      lines_since_rotation_check_ = 0;
      rotate_check();
    }
  } catch (const std::exception&) {
    // A failing log never stops the work it reports on.
  }
}

std::string log_t::compose(int level, int indent, const format::line_format_t& format,
                           const std::string& text, const std::string& eol) const {
  format::line_head_t head;
  head.style = style_;
  head.level = level;
  head.indent = indent;
  head.thread_id = win::current_thread_id();

  std::string out;
  size_t start = 0;
  do {
    const size_t end = text.find('\n', start);
    std::string piece =
        text.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (translator_) piece = translator_->translate(piece);
    // Each piece carries the moment it is laid out.
    win::local_time_t now;
    head.time = win::current_local_time(now) ? &now : nullptr;
    format.append_line(out, head, piece, eol);
    ++head.piece;
    if (end == std::string::npos) break;
    start = end + 1;
  } while (start < text.size());  // a final line feed makes no further line
  return out;
}

void log_t::set_file(std::shared_ptr<receiver::log_file_t> file) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  file_ = std::move(file);
}

std::shared_ptr<receiver::log_file_t> log_t::file() const {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  return file_;
}

void log_t::mark_opened() {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  opened_ = true;
}

bool log_t::opened() const {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  return opened_;
}

void log_t::set_rotate_enabled(bool enabled) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  rotate_enabled_ = enabled;
}

void log_t::rotate_check() {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  if (!file_ || !rotate_handler_) return;
  rotate_handler_(*this);
}

void log_t::set_rotate_handler(std::function<void(log_t&)> handler) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  rotate_handler_ = std::move(handler);
}

void log_t::set_disabled(bool disabled) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  disabled_ = disabled;
}

void log_t::set_style(uint32_t style) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  style_ = style;
}

void log_t::set_translator(std::shared_ptr<exc::text_translator_t> translator) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  translator_ = std::move(translator);
}

void log_t::indent_more() {
  if (indent_slot_t* slot = find_or_claim_indent_slot(indent_key_)) ++slot->depth;
}

void log_t::indent_less() {
  indent_slot_t* slot = find_indent_slot(indent_key_);
  if (slot != nullptr && slot->depth > 0) --slot->depth;
}

int log_t::current_indent() const {
  const indent_slot_t* slot = find_indent_slot(indent_key_);
  return slot != nullptr ? slot->depth : 0;
}

}  // namespace logging
