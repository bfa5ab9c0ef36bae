// The thread a session holder makes its session on: started at once, joined with a deadline,
// and given up on when the deadline passes, because OCI offers no way to cancel an attach or a
// logon that hangs. Owned and driven by one thread, the holder's.
//
// Giving up (cut_off) never kills the thread from outside, on either build. A thread killed at
// an arbitrary instant (TerminateThread) may die holding the loader lock (while it starts, ends
// or loads a library), the heap lock of the C run-time or of the client (inside any allocation,
// ours or OCI's own), a stream lock or the log's lock; the next thread that needs that lock
// then waits for ever, and with it the agent. Our own locks could be taken before a kill, and
// the client bound and the thread started before the deadline counts, but the client's own
// allocations cannot be fenced off from outside. So the worker is abandoned instead:
//   - the deadline counts from the moment the worker runs its body (wait_until_running), so
//     that thread start-up is never what is given up on;
//   - cut_off() returns at once; the thread is left to itself and keeps shared ownership of
//     everything it touches;
//   - the gate of the client (ora_interface.h) stops a cut-off worker at its very next call
//     or return: end_cut_off_worker() parks it there for good, where it holds no lock of
//     ours, without unwinding (nothing it holds is freed through a client it may have left in
//     an unknown state). It is not ended from inside its body (ExitThread): that skips the
//     unwinding of whatever the body holds, and a parked thread holds nothing at all. A parked
//     thread costs its stack until the process ends. A worker hung inside the client stays
//     there.
//   - a worker given up on never ends its thread, also when its body returns on its own after
//     the cut-off: it parks at the end of the body (session_init.cpp). A thread's end runs the
//     C run-time's and the threads library's clean-up of its thread-local data under their
//     own locks, and one that ran while the process ends, or while another thread loads or
//     unloads a library, was seen to freeze the process under Wine. Whether the body finished
//     in time or was given up on is decided once, under the work record's lock, so a worker
//     is either waited for by its holder or parked, never left to end unobserved;
//   - lines the worker writes before it reaches the gate (a step that ends) still go to the
//     log, under the log's own lock, as any thread's lines do.
// So the caller returns at the deadline whatever the client does, and no later call reaches
// the handles of a session that was given up on (the session's flags see to the destructor).
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

  // Waits, without a limit, until the thread has started and begins to run `body`.
  void wait_until_running();

  // Waits until the thread has ended or `deadline` has passed; true when it ended. A deadline
  // in the past only looks.
  bool join_until(clock_t::time_point deadline);

  // Gives up on a thread that did not end in time (see above). Returns at once.
  void cut_off();

 private:
  struct impl_t;
  std::unique_ptr<impl_t> impl_;
};

// Parks the calling thread, a session worker that was cut off, for good, at a point where it
// holds no lock of ours (see above). Never returns.
[[noreturn]] void end_cut_off_worker();

}  // namespace specific::oracle
