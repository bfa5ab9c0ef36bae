#include "frame/oracle_manager.h"

#include <iostream>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "frame/console_pause.h"
#include "config/oracle_config.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/backup/backup_prepare.h"
#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/explore_flow.h"
#include "oracle/discovery/oracle_homes.h"
#include "oracle/logs/log_backup.h"
#include "oracle/logs/log_deletion.h"
#include "oracle/logs/log_descriptions.h"
#include "oracle/restore/restore_driver.h"

namespace specific::oracle {

namespace {

// Runs one operation and adds its failure line to whatever escapes.
template <typename Body>
auto run_operation(const char* failure_line, Body&& body) -> decltype(body()) {
  try {
    return body();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace(failure_line, e);
  }
}

}  // namespace

COracleManager& COracleManager::instance() {
  static COracleManager manager;
  return manager;
}

std::u16string COracleManager::explore(bool option, const conn_t& conn,
                                       const std::u16string& configXml) {
  return run_operation("Oracle manager failed to explore Oracle instances", [&]() -> std::u16string {
    logging::log_step_t step(logging::oralib(), "Exploring oracle instances");
    const std::unique_ptr<CExploreBackend> backend = make_explore_backend();
    std::u16string document = COracleExplorer(*backend).explore(option, conn, configXml);
    step.ok();
    return document;
  });
}

void COracleManager::delete_logs_by_time(const std::u16string& home, const std::u16string& sid,
                                         int32_t minutes, const conn_t& conn) {
  run_operation("Oracle manager failed to delete archived logs by time", [&] {
    logging::log_step_t step(logging::oralib(), "Deleting oracle logs by time. Sid: %1",
                             util::to_utf8(sid));
    COracleLogDeletion(std::make_shared<COracleSessionHolder>(sid, home, conn, false))
        .delete_by_time(minutes);
    step.ok();
  });
}

void COracleManager::delete_logs_by_size(const std::u16string& home, const std::u16string& sid,
                                         uint64_t size, const conn_t& conn) {
  // The by-size operation reports its failure with the by-time line; callers match on it.
  run_operation("Oracle manager failed to delete archived logs by time", [&] {
    logging::log_step_t step(logging::oralib(), "Deleting oracle logs by size. Sid: %1",
                             util::to_utf8(sid));
    COracleLogDeletion(std::make_shared<COracleSessionHolder>(sid, home, conn, false))
        .delete_by_size(size);
    step.ok();
  });
}

std::u16string COracleManager::prepare(const std::u16string& configXml, const conn_t& conn,
                                       const std::u16string& osUser,
                                       const std::u16string& osPassword) {
  return run_operation("Oracle manager failed to prepare dbs for backup", [&]() -> std::u16string {
    const std::u16string document = CDbsBackupPrepare::prepare_all(configXml, conn);
    // A meta file that cannot be saved fails nothing: the databases are prepared by now, and
    // the caller needs the document to finish them. That holds for a temp folder that cannot
    // be made as well as for a file that cannot be written.
    try {
      CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), document, conn, osUser, osPassword);
    } catch (const std::exception& e) {
      exc::log_warn(logging::oralib(), "Failed to save oracle backup meta", e);
    }
    return document;
  });
}

void COracleManager::finish(const std::u16string& dbPrepareXml, const conn_t& conn) {
  run_operation("Oracle manager failed to finish dbs backup", [&] {
    CDbsBackupFinish::finish_all(dbPrepareXml, conn, /*restore=*/false);
    // A normal end of a backup leaves no meta file behind: it lives only in the snapshot. The
    // databases are finished by now, so a temp folder that cannot be made is only logged.
    try {
      CDbsBackupXml::remove_meta(CDbsBackupXml::meta_path());
    } catch (const std::exception& e) {
      exc::log_warn(logging::oralib(), "Failed to remove restore meta file: %1",
                    util::to_utf8(COracleConfig::get().tempLogPath), e);
    }
  });
}

std::u16string COracleManager::backup_logs(const std::u16string& home, const std::u16string& sid,
                                           const std::u16string& usn,
                                           const std::u16string& lastRecId, const conn_t& conn) {
  return run_operation("Oracle manager failed to backup archived logs", [&]() -> std::u16string {
    logging::log_step_t step(logging::oralib(), "Backup oracle logs. Sid: %1", util::to_utf8(sid));
    // A bookmark that is no number fails before the session is made and any statement sent.
    logs::check_bookmark(lastRecId);
    COracleLogBackup backup(std::make_shared<COracleSessionHolder>(sid, home, conn, false));
    std::u16string text =
        backup.backup_to_folder(COracleConfig::get().tempLogPath, usn, lastRecId);
    step.ok();
    return text;
  });
}

std::u16string COracleManager::logs_folder() {
  return run_operation("Oracle manager failed to get oracle logs temp folder",
                       []() -> std::u16string { return COracleConfig::get().tempLogPath; });
}

std::u16string COracleManager::enum_logs() {
  return run_operation("Oracle manager failed to enum logs", []() -> std::u16string {
    logging::log_step_t step(logging::oralib(), "Enumerating oracle logs");
    std::u16string text = logs::enumerate_descriptions(COracleConfig::get().tempLogPath);
    step.ok();
    return text;
  });
}

void COracleManager::remove_logs_in_temp(const std::u16string& logsXml) {
  run_operation("Oracle manager failed to remove logs in temp", [&] {
    logging::log_step_t step(logging::oralib(), "Removing oracle logs in temp: %1",
                             util::to_utf8(logsXml));
    // Nothing outside the logs folder is ever deleted, whatever the list names.
    logs::remove_described_logs(logsXml, COracleConfig::get().tempLogPath);
    step.ok();
  });
}

bool COracleManager::restore_required() {
  return run_operation("Oracle manager failed to check if restore required",
                       []() -> bool { return CRestoreDriver::restore_required(); });
}

void COracleManager::do_restore() {
  run_operation("Oracle manager failed to do db restore", [] {
    logging::log_step_t step(logging::oralib(), "Performing oracle db restore");
    CRestoreDriver::do_restore();
    step.ok();
  });
}

void COracleManager::test() {
  // For a person at a console: what the library sees of each open instance.
  std::ostream& out = std::cout;
  const COracleHomes homes;
  for (const SOracleSid& instance : homes) {
    const auto holder = COracleSessionHolder::create(instance, conn_t());
    if (!holder) continue;
    const auto session = holder->get_session();
    if (!session->is_instance_open(instance.isAsm)) continue;
    out << "Checking SID: " << util::to_utf8(instance.sid) << std::endl;
    if (!instance.isAsm) {
      bool readOnly = true;
      bool archiveLog = true;
      session->get_database_options(readOnly, archiveLog);
      out << "ARCHIVE LOGS: " << (archiveLog ? "ON" : "OFF") << std::endl;
      const auto logs = holder->make_query()->exec("SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG",
                                                   2, /*upperCase=*/false);
      // The first cell is the sequence number; this check shows just that.
      while (const auto row = logs->next_row()) {
        out << "Log path: " << util::to_utf8(row->at(0)) << std::endl;
      }
      out << "LOCAL: " << 0 << ", ASM: " << 0 << std::endl;
    }
    out << "ok" << std::endl;
  }
  console_pause();
}

}  // namespace specific::oracle
