#include "oracle/client/oracle_session.h"

#include <mutex>
#include <vector>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/numbers.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_query.h"

namespace specific::oracle {

namespace {

// The error handles of abandoned sessions, held to process end and never freed.
void keep_for_ever(std::shared_ptr<COracleError> error) {
  static auto* lock = new std::mutex;
  static auto* kept = new std::vector<std::shared_ptr<COracleError>>;
  std::lock_guard<std::mutex> guard(*lock);
  kept->push_back(std::move(error));
}

}  // namespace

COracleSession::COracleSession(const conn_t& conn) : conn_(conn) {}

COracleSession::~COracleSession() {
  if (terminated()) {
    // The worker was cut off, possibly inside the client with its locks held: no call, no
    // line. The members go without freeing their handles.
    abandon_all();
    return;
  }
  logging::log_step_t step(logging::oralib(), "Destroying oracle session");
  try {
    destroy();
    step.ok();
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to destroy Oracle session.", e);
  }
}

void COracleSession::destroy() {
  auto gate = CWinOraInterface::instance();
  if (initialised_) {
    // Also when the instance was found down: the logon still made a session.
    const sword rc = gate->session_end(svcCtx_->as<OCISvcCtx>(), env_->error_handle(),
                                       userSession_->as<OCISession>(), OCI_DEFAULT);
    if (rc != OCI_SUCCESS) {
      logging::oralib().warn("Failed to end OCI session, error: %1", util::to_str(rc));
    }
  }
  if (serverAttached_) {
    const sword rc =
        gate->server_detach(server_->as<OCIServer>(), env_->error_handle(), OCI_DEFAULT);
    if (rc != OCI_SUCCESS) {
      logging::oralib().warn("Failed to detach OCI server, error: %1", util::to_str(rc));
    }
  }
  userSession_.reset();
  server_.reset();
  svcCtx_.reset();
  env_.reset();
}

void COracleSession::abandon_all() {
  for (const auto* handle : {&userSession_, &server_, &svcCtx_}) {
    if (*handle) (*handle)->abandon();
  }
  if (env_) {
    env_->abandon();
    // The environment lets its error handle go as a member, and the error handle has no
    // abandoned flag of its own: one more owner, never released, keeps it from being freed
    // through a client a terminated thread may have left locked.
    if (env_->error()) keep_for_ever(env_->error());
  }
}

void COracleSession::init(ub4 mode) {
  logging::log_step_t step(logging::oralib(), "Initializing oracle session");
  try {
    env_ = COracleEnv::create();
    svcCtx_ = COracleHandle::create(env_, OCI_HTYPE_SVCCTX);
    server_ = COracleHandle::create(env_, OCI_HTYPE_SERVER);
    init_server();
    init_session_handle();
    const sword rc = logon(mode);
    if (check_oci_result(*env_, rc, kOraNotAvailable) == kOraNotAvailable) instanceDown_ = true;
    initialised_ = true;
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to create oracle session.", e);
  }
}

void COracleSession::init_server() {
  try {
    auto gate = CWinOraInterface::instance();
    // No database link: the local instance that ORACLE_SID names.
    check_oci_result(*env_, gate->server_attach(server_->as<OCIServer>(), env_->error_handle(),
                                                /*link=*/nullptr, /*linkLength=*/0,
                                                OCI_DEFAULT));
    serverAttached_ = true;
    check_oci_result(*env_, gate->attr_set(svcCtx_->handle(), OCI_HTYPE_SVCCTX,
                                           server_->handle(), /*size=*/0, OCI_ATTR_SERVER,
                                           env_->error_handle()));
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("OracleSession: failed to init server.", e);
  }
}

void COracleSession::init_session_handle() {
  try {
    userSession_ = COracleHandle::create(env_, OCI_HTYPE_SESSION);
    if (!conn_.first.empty()) {
      auto gate = CWinOraInterface::instance();
      check_oci_result(*env_, gate->attr_set(userSession_->handle(), OCI_HTYPE_SESSION,
                                             const_cast<char*>(conn_.first.data()),
                                             static_cast<ub4>(conn_.first.size()),
                                             OCI_ATTR_USERNAME, env_->error_handle()));
      check_oci_result(*env_, gate->attr_set(userSession_->handle(), OCI_HTYPE_SESSION,
                                             const_cast<char*>(conn_.second.data()),
                                             static_cast<ub4>(conn_.second.size()),
                                             OCI_ATTR_PASSWORD, env_->error_handle()));
    }
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("OracleSession: failed to init session.", e);
  }
}

sword COracleSession::logon(ub4 mode) {
  auto gate = CWinOraInterface::instance();
  const ub4 credentials = conn_.first.empty() ? OCI_CRED_EXT : OCI_CRED_RDBMS;
  const sword rc = gate->session_begin(svcCtx_->as<OCISvcCtx>(), env_->error_handle(),
                                       userSession_->as<OCISession>(), credentials, mode);
  // A success with information (a password about to expire, ORA-28002) is a logon like any
  // other: the service context gets its session now, or a command, a start-up or a shut-down
  // made right after it would run on no session. Its information is dropped by the caller's
  // check. Any other answer goes to that check as it came.
  if (rc != OCI_SUCCESS && rc != OCI_SUCCESS_WITH_INFO) return rc;
  check_oci_result(*env_, gate->attr_set(svcCtx_->handle(), OCI_HTYPE_SVCCTX,
                                         userSession_->handle(), /*size=*/0, OCI_ATTR_SESSION,
                                         env_->error_handle()));
  return rc;
}

std::shared_ptr<COracleQuery> COracleSession::make_query() const {
  return std::make_shared<COracleQuery>(env_, svcCtx_, userSession_);
}

std::shared_ptr<COracleCmdExec> COracleSession::make_command(const std::string& sql) const {
  return std::make_shared<COracleCmdExec>(env_, svcCtx_, sql);
}

}  // namespace specific::oracle
