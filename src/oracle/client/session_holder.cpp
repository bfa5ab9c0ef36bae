#include "oracle/client/session_holder.h"

#include <chrono>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_init.h"
#include "oracle/client/session_lock.h"

namespace specific::oracle {

COracleSessionHolder::COracleSessionHolder(const std::u16string& sid, const std::u16string& home,
                                           const conn_t& conn, bool prelimAuth)
    : home_(home), sid_(sid), conn_(conn), prelimAuth_(prelimAuth) {
  const std::string sidText = util::to_multibyte_safe(sid_);
  try {
    logging::log_step_t step(logging::oralib(), "Creating oracle session holder: %1.", sidText);
    // Held from before the worker sets the environment to the end of the wait, on every way
    // out: the environment decides which instance the worker reaches.
    session_lock_guard_t lock;

    auto work = std::make_shared<session_init_work_t>(conn_, prelimAuth_);
    const auto timeout = static_cast<int32_t>(COracleConfig::get().connectionTimeoutSec);
    if (!run_session_worker_within(work, sid_, home_, std::chrono::seconds(timeout))) {
      throw COracleInitTimeoutExc("Failed to wait oracle session initialization");
    }

    session_ = work->session();
    threadFailure_ = work->thread_failure();
    if (threadFailure_) threadFailure_->throw_copy();
    if (!session_) throw COracleSessionCreateExc("Failed to create oracle session holder.");
    if (!session_->initialised()) {
      // The worker met a system exception, such as a missing client: the log says which.
      throw COracleSessionCreateExc("Failed to create oracle session holder. Session is invalid.");
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to create oracle session holder. SID: %1.", sidText, e);
  }
}

COracleSessionHolder::~COracleSessionHolder() = default;

std::shared_ptr<COracleSessionHolder> COracleSessionHolder::create(const std::u16string& sid,
                                                                   const std::u16string& home,
                                                                   const conn_t& conn) noexcept {
  try {
    return std::make_shared<COracleSessionHolder>(sid, home, conn, /*prelimAuth=*/false);
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to create session holder for SID: %1",
                   util::to_multibyte_safe(sid), e);
    return nullptr;
  }
}

std::shared_ptr<COracleQuery> COracleSessionHolder::make_query() const {
  return session_->make_query();
}

}  // namespace specific::oracle
