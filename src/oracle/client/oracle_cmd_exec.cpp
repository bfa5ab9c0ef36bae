#include "oracle/client/oracle_cmd_exec.h"

#include <cstdint>

#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/numbers.h"
#include "oracle/client/ora_interface.h"

namespace specific::oracle {

COracleCmdExec::COracleCmdExec(std::shared_ptr<COracleEnv> env,
                               std::shared_ptr<COracleHandle> svcCtx, const std::string& sql)
    : env_(std::move(env)), svcCtx_(std::move(svcCtx)) {
  try {
    logging::log_step_t step(logging::oralib(), "Creating oracle cmd executor: %1", sql);
    statement_ = COracleHandle::create(env_, OCI_HTYPE_STMT);
    check_oci_result(*env_, CWinOraInterface::instance()->stmt_prepare(
                                statement_->as<OCIStmt>(), env_->error_handle(), sql));
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to create oracle cmd executor.", e);
  }
}

std::string COracleCmdExec::handle_text() const {
  // The statement handle's value as a number: enough to match the lines of one command.
  return util::to_str(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(statement_->handle())));
}

void COracleCmdExec::bind(const std::string& name, void* value, ub2 type, ub4 size) {
  try {
    OCIBind* bind = nullptr;
    check_oci_result(*env_, CWinOraInterface::instance()->bind_by_name(
                                statement_->as<OCIStmt>(), &bind, env_->error_handle(), name,
                                value, static_cast<sb4>(size), type));
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to bind param [%1] to cmd executor, handle: %2", name,
                            handle_text(), e);
  }
}

void COracleCmdExec::execute() {
  try {
    logging::log_step_t step(logging::oralib(), "Executing oracle cmd: %1", handle_text());
    check_oci_result(*env_, CWinOraInterface::instance()->stmt_execute(
                                svcCtx_->as<OCISvcCtx>(), statement_->as<OCIStmt>(),
                                env_->error_handle(), /*iterations=*/1));
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to execute oracle command, handle: %1", handle_text(), e);
  }
}

}  // namespace specific::oracle
