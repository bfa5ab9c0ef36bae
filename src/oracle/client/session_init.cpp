#include "oracle/client/session_init.h"

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/numbers.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_worker.h"

namespace specific::oracle {

// session_init_work_t -----------------------------------------------------------------------

session_init_work_t::session_init_work_t(const conn_t& conn, bool prelimAuth)
    : conn_(conn), prelimAuth_(prelimAuth), cutOff_(std::make_shared<std::atomic<bool>>(false)) {}

bool session_init_work_t::set_environment(const std::u16string& name,
                                          const std::u16string& value) {
  std::lock_guard<std::mutex> guard(lock_);
  if (cutOff_->load()) return false;
  set_env_variable(name, value);
  return true;
}

void session_init_work_t::publish(std::shared_ptr<COracleSession> session) {
  std::shared_ptr<COracleSession> previous;
  {
    std::lock_guard<std::mutex> guard(lock_);
    if (cutOff_->load()) session->set_terminated();
    previous = std::move(session_);
    session_ = std::move(session);
  }
  // A replaced session goes outside the lock; its destructor may call the client.
}

std::shared_ptr<COracleSession> session_init_work_t::session() const {
  std::lock_guard<std::mutex> guard(lock_);
  return session_;
}

void session_init_work_t::set_thread_failure(exc::exc_ptr_t failure) {
  std::lock_guard<std::mutex> guard(lock_);
  threadFailure_ = std::move(failure);
}

exc::exc_ptr_t session_init_work_t::thread_failure() const {
  std::lock_guard<std::mutex> guard(lock_);
  return threadFailure_;
}

bool session_init_work_t::cut_off() {
  std::lock_guard<std::mutex> guard(lock_);
  if (finished_) return false;
  if (session_) session_->set_terminated();
  cutOff_->store(true);
  return true;
}

bool session_init_work_t::finish() {
  std::lock_guard<std::mutex> guard(lock_);
  if (cutOff_->load()) return false;
  finished_ = true;
  return true;
}

// The worker -------------------------------------------------------------------------------

namespace {

void try_to_initialize(session_init_work_t& work) {
  logging::log_step_t step(logging::oralib(), "Trying to initialize oracle interface");
  auto session = std::make_shared<COracleSession>(work.conn());
  work.publish(session);
  bool fallBack = false;
  try {
    session->init(work.prelim_auth() ? kLogonSysdbaPrelim : kLogonSysdba);
  } catch (const COracleExc&) {
    // Operating-system authentication has no other way in; a named account may lack SYSDBA
    // and still log on normally, whatever the cause Oracle gave.
    if (work.conn().first.empty()) throw;
    fallBack = true;
  }
  if (fallBack) {
    logging::oralib().info(
        "Failed to connect as SYSDBA: insufficient privileges or channel error. Connecting by "
        "default...");
    auto second = std::make_shared<COracleSession>(work.conn());
    work.publish(second);
    session = std::move(second);  // the first session ends here
    session->init(work.prelim_auth() ? kLogonDefaultPrelim : kLogonDefault);
  }
  step.ok();
}

void try_to_initialize_entry(void* work) {
  try_to_initialize(*static_cast<session_init_work_t*>(work));
}

}  // namespace

seh_filter_result_t session_init_filter(uint32_t code) {
  if (code == kDelayLoadModuleNotFound || code == kDelayLoadProcNotFound) {
    logging::oralib().error("Failed to load OCI library");
    return seh_filter_result_t::execute_handler;
  }
  if (code == kMsvcCppExceptionCode || code == kGccCppExceptionCode) {
    return seh_filter_result_t::continue_search;  // the worker's own handler takes it
  }
  logging::oralib().warn(
      "SEH exception has occurred while initializing Oracle session, exception code: %1",
      util::to_hex(code));
  return seh_filter_result_t::execute_handler;
}

void run_session_worker(const std::shared_ptr<session_init_work_t>& work,
                        const std::u16string& sid, const std::u16string& home) {
  session_cut_off_scope_t scope(work->cut_off_flag());
  try {
    // A worker given up on before it got this far leaves without a trace.
    if (!work->set_environment(u"ORACLE_HOME", home)) return;
    if (!work->set_environment(u"ORACLE_SID", sid)) return;
    CWinOraInterface::instance();
    run_guarded(&try_to_initialize_entry, work.get(), &session_init_filter);
  } catch (const std::exception& e) {
    if (work->is_cut_off()) return;  // nobody waits for this any more: say nothing
    exc::log_error(logging::oralib(), "Oracle session init thread failed", e);
    work->set_thread_failure(exc::capture(e));
  }
}

bool run_session_worker_within(const std::shared_ptr<session_init_work_t>& work,
                               const std::u16string& sid, const std::u16string& home,
                               std::chrono::microseconds timeout) {
  // The loader's work is done here rather than on a thread that may be given up on; a client
  // that cannot be bound is tried again, and reported, by the worker.
  CWinOraInterface::bind();
  session_worker_t worker([work, sid, home]() {
    try {
      run_session_worker(work, sid, home);
    } catch (...) {
      // Not of the library's family (the body catches those): the worker's end decides all
      // the same below.
    }
    // A worker given up on never ends its thread (session_worker.h).
    if (!work->finish()) end_cut_off_worker();
  });
  worker.wait_until_running();
  const auto deadline =
      std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now()) +
      timeout;
  if (worker.join_until(deadline)) return true;
  // The flags first, then the thread: whatever the worker does next must not reach the
  // client, and the session it leaves must not be freed through it. A worker that finished
  // its body just as the deadline passed only has its thread's end left: it is joined.
  if (!work->cut_off()) {
    // Its outcome is in the work record already; the end of its thread is waited for only a
    // little, since a thread's end needs the loader's lock, which a hung worker may hold.
    worker.join_until(std::chrono::system_clock::now() + std::chrono::seconds(10));
    return true;
  }
  logging::log_step_t terminating(logging::oralib(), "Terminating oracle init thread");
  worker.cut_off();
  terminating.ok();
  return false;
}

}  // namespace specific::oracle
