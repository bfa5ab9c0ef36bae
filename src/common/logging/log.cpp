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

// Each thread keeps its nesting per log, in plain data: a thread that ends, or a library that
// is unloaded while threads still run, leaves nothing to clean up. A log takes one slot of
// every thread's storage for its lifetime; a slot still holding the key of an earlier log
// reads as 0 for the new one.
struct indent_slot_t {
  uint64_t key;
  int depth;
};
constexpr int kIndentSlots = 32;
thread_local indent_slot_t t_indent_slots[kIndentSlots];
// One bit per slot taken by a living log. Constant-initialised and trivially destructible, so
// logs made or destroyed during start-up or exit find it valid.
std::atomic<uint32_t> g_taken_indent_slots{0};

int take_indent_slot() {
  uint32_t taken = g_taken_indent_slots.load();
  for (;;) {
    int slot = 0;
    while (slot < kIndentSlots && (taken & (1u << slot)) != 0) ++slot;
    if (slot == kIndentSlots) return -1;
    if (g_taken_indent_slots.compare_exchange_weak(taken, taken | (1u << slot))) return slot;
  }
}

void give_back_indent_slot(int slot) {
  if (slot >= 0) g_taken_indent_slots.fetch_and(~(1u << slot));
}

uint64_t next_indent_key() {
  static std::atomic<uint64_t> next{1};  // 0 is the key of a slot never used
  return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

log_t::log_t() : indent_slot_(take_indent_slot()), indent_key_(next_indent_key()) {}

log_t::log_t(std::shared_ptr<receiver::log_file_t> file)
    : file_(std::move(file)), indent_slot_(take_indent_slot()), indent_key_(next_indent_key()) {}

log_t::~log_t() { give_back_indent_slot(indent_slot_); }

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
  if (indent_slot_ < 0) return;
  indent_slot_t& slot = t_indent_slots[indent_slot_];
  if (slot.key != indent_key_) slot = indent_slot_t{indent_key_, 0};
  ++slot.depth;
}

void log_t::indent_less() {
  if (indent_slot_ < 0) return;
  indent_slot_t& slot = t_indent_slots[indent_slot_];
  if (slot.key == indent_key_ && slot.depth > 0) --slot.depth;
}

int log_t::current_indent() const {
  if (indent_slot_ < 0) return 0;
  const indent_slot_t& slot = t_indent_slots[indent_slot_];
  return slot.key == indent_key_ ? slot.depth : 0;
}

}  // namespace logging
