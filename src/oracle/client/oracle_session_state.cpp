// The state operations of COracleSession: what the instance and its database are doing, and
// the three commands that start, open and stop them. Catalog words are compared on values
// fetched upper-cased; a word "begins" a value when it is found at position 0.
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"

namespace specific::oracle {

namespace {

bool begins_with(const std::u16string& text, const std::u16string& word) {
  return text.compare(0, word.size(), word) == 0;
}

}  // namespace

bool COracleSession::is_instance_open(bool assumeOpen) {
  if (instanceDown_) {
    logging::oralib().info("Oracle instance is shutdown");
    return false;
  }
  if (assumeOpen) return true;  // an ASM instance has no database to be open
  try {
    logging::log_step_t step(logging::oralib(), "Checking oracle instance state");
    const std::u16string status = make_query()->single_value("SELECT STATUS FROM V$INSTANCE", true);
    // "OPEN MIGRATE" (an upgrade in progress) counts as open too.
    const bool open = begins_with(status, u"OPEN");
    logging::oralib().info("Oracle instance status: %1", util::to_multibyte_safe(status));
    step.ok();
    return open;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("OracleSession: failed to check if instance is open.", e);
  }
}

bool COracleSession::is_database_active() {
  try {
    logging::log_step_t step(logging::oralib(), "Checking if oracle db is active");
    const std::u16string status =
        make_query()->single_value("SELECT DATABASE_STATUS FROM V$INSTANCE", true);
    const bool active = begins_with(status, u"ACTIVE");
    logging::oralib().info("Oracle db status: %1", util::to_multibyte_safe(status));
    step.ok();
    return active;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to check if oracle db is active.", e);
  }
}

void COracleSession::get_database_options(bool& readOnly, bool& archiveLog) {
  try {
    logging::log_step_t step(logging::oralib(), "Getting oracle database options");
    readOnly = false;
    archiveLog = false;
    const oracle_row_t row =
        make_query()->first_row("SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE", 2, true);
    // Both cells are tested for both words: the columns need not be told apart.
    for (const auto& cell : row) {
      if (begins_with(cell, u"READ ONLY")) readOnly = true;
      if (begins_with(cell, u"ARCHIVELOG")) archiveLog = true;
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("OracleSession: failed to get database options.", e);
  }
}

std::u16string COracleSession::get_database_name() {
  try {
    if (databaseName_.empty()) {
      logging::log_step_t step(logging::oralib(), "Getting oracle database name");
      databaseName_ = make_query()->single_value("SELECT NAME FROM V$DATABASE", false);
      step.ok();
    }
    return databaseName_;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("OracleSession: failed to get database name.", e);
  }
}

bool COracleSession::is_control_file_on_asm() {
  if (!initialised_ || instanceDown_) return false;
  const std::u16string name =
      make_query()->single_value("SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1", true);
  return name.find(u'+') == 0;  // a disk group name: "+DATA/..."
}

void COracleSession::read_version() {
  bool below11 = false;
  bool atLeast12 = false;
  if (initialised_ && !instanceDown_) {
    const std::u16string version = make_query()->single_value("SELECT VERSION FROM V$INSTANCE", true);
    const size_t point = version.find(u'.');
    if (point != std::u16string::npos) {
      const int32_t major = util::to_int(version.substr(0, point));
      below11 = major < 11;
      atLeast12 = major >= 12;
    }
  }
  isVersion12OrHigher_ = std::make_shared<bool>(atLeast12);
  isVersionBelow11_ = std::make_shared<bool>(below11);
}

void COracleSession::startup() {
  try {
    logging::log_step_t step(logging::oralib(), "Starting up database");
    logging::oralib().info("Startup in NOMOUNT mode");
    check_oci_result(*env_, CWinOraInterface::instance()->db_startup(
                                svcCtx_->as<OCISvcCtx>(), env_->error_handle(),
                                /*admin=*/nullptr, OCI_DEFAULT, /*flags=*/0));
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to startup database", e);
  }
}

void COracleSession::mount_and_open() {
  auto query = make_query();
  query->run("ALTER DATABASE MOUNT");
  query->run("ALTER DATABASE OPEN");
}

void COracleSession::shutdown() {
  try {
    logging::log_step_t step(logging::oralib(), "Shutting down database");
    auto gate = CWinOraInterface::instance();
    // The answers of both shut-down calls are not looked at: the statements in between tell
    // whether the database went down.
    gate->db_shutdown(svcCtx_->as<OCISvcCtx>(), env_->error_handle(), /*admin=*/nullptr,
                      OCI_DBSHUTDOWN_IMMEDIATE);
    auto query = make_query();
    query->run("ALTER DATABASE CLOSE NORMAL");
    query->run("ALTER DATABASE DISMOUNT");
    gate->db_shutdown(svcCtx_->as<OCISvcCtx>(), env_->error_handle(), /*admin=*/nullptr,
                      OCI_DBSHUTDOWN_FINAL);
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to shutdown database", e);
  }
}

}  // namespace specific::oracle
