// What the session worker thread does for its holder: sets ORACLE_HOME and ORACLE_SID, makes
// the session inside the system-exception frame, and leaves the outcome in the shared work
// record. The holder's thread waits for it under the session lock; a worker that is cut off
// leaves the record to itself, and the record stays alive as long as the worker holds it.
#pragma once
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "common/exc/exc_base.h"
#include "oracle/client/conn.h"
#include "oracle/client/system_exception.h"

namespace specific::oracle {

class COracleSession;

// Shared by the holder's thread and its worker.
class session_init_work_t {
 public:
  session_init_work_t(const conn_t& conn, bool prelimAuth);

  const conn_t& conn() const { return conn_; }
  bool prelim_auth() const { return prelimAuth_; }

  // Sets a variable of the process environment for the worker, unless the worker has been
  // cut off: then it sets nothing and answers false. Checked and set under the record's lock,
  // which cut_off() also takes, so that an abandoned worker can never change the environment
  // under the next holder's worker.
  bool set_environment(const std::u16string& name, const std::u16string& value);

  // The worker's session; a session published after the cut-off is flagged at once.
  void publish(std::shared_ptr<COracleSession> session);
  std::shared_ptr<COracleSession> session() const;
  void set_thread_failure(exc::exc_ptr_t failure);
  exc::exc_ptr_t thread_failure() const;

  // Called by the waiting thread before it cuts the worker off: flags the session, if one
  // exists, then the worker, so that neither calls the client again. False, and nothing
  // flagged, when the worker has already finished its body (finish()): then it is joined.
  bool cut_off();
  // Called by the worker when its body is done: true when it may end its thread, false when
  // it was cut off first and must park (session_worker.h). Decided under the same lock as
  // cut_off(), so exactly one of the two wins.
  bool finish();
  bool is_cut_off() const { return cutOff_->load(); }
  const std::shared_ptr<std::atomic<bool>>& cut_off_flag() const { return cutOff_; }

 private:
  const conn_t conn_;
  const bool prelimAuth_;
  mutable std::mutex lock_;
  std::shared_ptr<COracleSession> session_;
  exc::exc_ptr_t threadFailure_;
  std::shared_ptr<std::atomic<bool>> cutOff_;
  bool finished_ = false;
};

// The worker thread's body.
void run_session_worker(const std::shared_ptr<session_init_work_t>& work,
                        const std::u16string& sid, const std::u16string& home);

// What the holder does with its worker, under the session lock the caller holds: binds the
// client on this thread, starts the worker with run_session_worker, and waits for it,
// `timeout` counted from the moment the worker runs its body. True when the worker ended in
// time. Else the work is flagged, the step "Terminating oracle init thread" is logged and the
// worker is given up on (session_worker.h), and the answer is false.
bool run_session_worker_within(const std::shared_ptr<session_init_work_t>& work,
                               const std::u16string& sid, const std::u16string& home,
                               std::chrono::microseconds timeout);

// The filter of the worker's system-exception frame: a failed delay-load (the client library
// or one of its entry points is missing) logs "Failed to load OCI library" at error level; a
// C++ exception passes on; any other system exception logs a warning with its code. The
// worker then ends normally and its holder finds the session uninitialised.
seh_filter_result_t session_init_filter(uint32_t code);

}  // namespace specific::oracle
