// file_op_activity_t: which threads are inside a file operation, since when (the tick at entry)
// and how deeply nested. The file layer counts a thread in at the start of every operation on
// an open file and out at its end; an entry lasts as long as the outermost operation. Nothing
// in this library reads it; the time-out is kept for a host that watches for stuck calls.
// Process-wide, made on first use from any thread; the lock covers one map visit.
#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace monitoring {

class file_op_activity_t {
 public:
  struct entry_t {
    uint32_t start_tick = 0;
    int32_t depth = 0;
  };

  static file_op_activity_t& instance();

  // The calling thread: a first entry at the current tick with depth 1, or one level deeper.
  void enter();
  // One level up; at 0 the thread is forgotten. A thread that is not in the map is left alone.
  void leave() noexcept;

  std::optional<entry_t> find(uint32_t thread_id) const;
  uint32_t timeout_ms() const { return timeout_ms_; }

 private:
  file_op_activity_t() = default;

  mutable std::mutex lock_;
  uint32_t timeout_ms_ = 3600000;
  std::map<uint32_t, entry_t> threads_;
};

void file_op_enter();
void file_op_leave() noexcept;

// Counts the calling thread in for the span of one file operation.
class file_op_scope_t {
 public:
  file_op_scope_t() { file_op_enter(); }
  ~file_op_scope_t() { file_op_leave(); }
  file_op_scope_t(const file_op_scope_t&) = delete;
  file_op_scope_t& operator=(const file_op_scope_t&) = delete;
};

}  // namespace monitoring
