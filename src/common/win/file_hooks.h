// Where the file layer meets the rest of the common library: the access policy and the
// impersonation scope, asked before a path is named to the system, and the per-thread
// observers, fed around every operation on an open file. Until an implementation is installed
// every hook does nothing: all access is granted, no path needs another identity and nobody
// observes. Install once at start-up, before file calls are made; an installed object is kept
// until process exit, so that a call already running on the previous one can finish.
#pragma once
#include <cstdint>
#include <memory>

#include "common/win/path_holder.h"

namespace win {

// The observer counters that the file layer feeds.
enum class io_counter_t { read, write };

// Per-file trace switches, fixed when a win_file_t is made.
struct file_trace_flags_t {
  bool seek = false;
  bool write = false;
  bool read = false;
  bool flush = false;
  bool resize = false;
  bool close = false;
};

class file_hooks_t {
 public:
  virtual ~file_hooks_t();

  // Asked first by every operation that names a path; throws to refuse it.
  virtual void check_access(const path_holder_t& path);
  // Asked next; the object returned is held until the operation is done, and the identity it
  // stands for is the calling thread's meanwhile. Empty when nothing is to be done.
  virtual std::shared_ptr<void> scope_for_path(const path_holder_t& path);

  // Around every operation of an open file: the thread is counted in and out. Leaving must
  // not throw, since it runs while a failure may be on its way out.
  virtual void file_op_enter();
  virtual void file_op_leave() noexcept;
  // Right before and right after each read or write system call; `amount` is the byte count
  // of that call.
  virtual void counter_enter(io_counter_t counter);
  virtual void counter_leave(io_counter_t counter, int64_t amount);

  virtual file_trace_flags_t trace_flags();
};

// Installs `hooks`; an empty pointer brings back the defaults.
void set_file_hooks(std::shared_ptr<file_hooks_t> hooks);
file_hooks_t& file_hooks();

// The permission check and the impersonation scope for one operation on `path`, in that
// order; the scope ends with this object.
class path_guard_t {
 public:
  explicit path_guard_t(const path_holder_t& path);
  // The access check on `path`, with the scope of `scope_path` (rename and delete act in the
  // scope of the folder).
  path_guard_t(const path_holder_t& path, const path_holder_t& scope_path);
  path_guard_t(const path_guard_t&) = delete;
  path_guard_t& operator=(const path_guard_t&) = delete;

 private:
  std::shared_ptr<void> scope_;
};

// Counts the calling thread in for the span of one file operation.
class file_op_t {
 public:
  file_op_t();
  ~file_op_t();
  file_op_t(const file_op_t&) = delete;
  file_op_t& operator=(const file_op_t&) = delete;

 private:
  file_hooks_t& hooks_;
};

}  // namespace win
