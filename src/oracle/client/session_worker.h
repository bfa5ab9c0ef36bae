// The thread a session holder makes its session on: started at once, joined with a deadline,
// and cut off when the deadline passes, because OCI offers no way to cancel an attach or a
// logon that hangs.
//   Windows: a thread of CreateThread; cut_off() terminates it with exit code 1460
//     (ERROR_TIMEOUT) and waits for it without a limit.
//   Host: a std::thread; cut_off() abandons it: the caller goes on at once, the thread is
//     detached and never joined, and keeps shared ownership of everything it touches (the
//     gate stops it before it reaches the client again).
// Owned and driven by one thread, the holder's.
#pragma once
#include <chrono>
#include <functional>
#include <memory>

namespace specific::oracle {

class session_worker_t {
 public:
  using clock_t = std::chrono::system_clock;

  // Starts `body` on a new thread; a failure to start throws as the platform reports it. An
  // exception that leaves `body` is dropped: the body reports its own failures.
  explicit session_worker_t(std::function<void()> body);
  // Never waits: a thread that did not end is left to itself.
  ~session_worker_t();
  session_worker_t(const session_worker_t&) = delete;
  session_worker_t& operator=(const session_worker_t&) = delete;

  // Waits until the thread has ended or `deadline` has passed; true when it ended. A deadline
  // in the past only looks.
  bool join_until(clock_t::time_point deadline);

  // Ends the wait for a thread that did not end in time (see above). Windows throws
  // win_sys_exc_t "Failed to terminate oracle session init thread" when it cannot terminate.
  void cut_off();

 private:
  struct impl_t;
  std::unique_ptr<impl_t> impl_;
};

}  // namespace specific::oracle
