// log_t: the one process-wide log. It writes whole messages to one receiver, synchronously in
// the calling thread, under one recursive lock; there is no queue and no writer thread.
// A failing receiver never stops the caller: failures derived from std::exception are dropped.
// Code writes through a log_channel_t, not to log_t directly.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/line_format.h"
#include "common/logging/receiver.h"

namespace logging {

enum level_t : int {
  kLevelStep = 1,
  kLevelInfo = 2,
  kLevelWarning = 3,
  kLevelError = 4,
};

class log_t {
 public:
  log_t();
  explicit log_t(std::shared_ptr<receiver::log_file_t> file);
  ~log_t();
  log_t(const log_t&) = delete;
  log_t& operator=(const log_t&) = delete;

  // The singleton, created on first request with no receiver. Lines written before a
  // receiver is set are dropped.
  static const std::shared_ptr<log_t>& instance();

  // Composes `text` (one physical line per line feed) and hands it to the receiver in one call.
  void write(int level, int indent, const format::line_format_t* format, const std::string& text);

  void set_file(std::shared_ptr<receiver::log_file_t> file);
  std::shared_ptr<receiver::log_file_t> file() const;
  void mark_opened();
  bool opened() const;
  void set_rotate_enabled(bool enabled);
  // Rotation of the receiver's file; the log-file layer installs the work behind it. Does
  // nothing without a receiver or a handler; the handler's failures reach the caller.
  void rotate_check();
  void set_rotate_handler(std::function<void(log_t&)> handler);
  void set_disabled(bool disabled);
  void set_style(uint32_t style);
  void set_translator(std::shared_ptr<exc::text_translator_t> translator);

  // Per-thread nesting: indent_more adds one, indent_less never goes below zero.
  void indent_more();
  void indent_less();
  int current_indent() const;

  std::recursive_mutex& lock() { return lock_; }

 private:
  std::string compose(int level, int indent, const format::line_format_t& format,
                      const std::string& text, const std::string& eol) const;

  mutable std::recursive_mutex lock_;
  std::shared_ptr<receiver::log_file_t> file_;
  bool opened_ = false;
  uint32_t style_ = 0;
  bool disabled_ = false;
  bool rotate_enabled_ = false;
  int32_t lines_since_rotation_check_ = 0;
  std::shared_ptr<exc::text_translator_t> translator_;
  std::function<void(log_t&)> rotate_handler_;
  // Where this log keeps its nesting in each thread's indent storage (-1: no room, the log
  // then writes unindented), and the never reused key that tells this log's nesting from that
  // of an earlier log that had the same slot.
  int indent_slot_;
  uint64_t indent_key_;
};

}  // namespace logging
