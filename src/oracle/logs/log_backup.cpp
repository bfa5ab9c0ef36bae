#include "oracle/logs/log_backup.h"

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/text/guid.h"
#include "common/text/numbers.h"
#include "common/win/file_copy.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/sql_text.h"
#include "oracle/discovery/single_values.h"
#include "oracle/logs/asm_file_ops.h"
#include "oracle/logs/log_calendar.h"
#include "oracle/logs/log_descriptions.h"

namespace specific::oracle {

namespace logs {

std::string select_logs_statement(const std::u16string& lastRecId) {
  const std::string condition =
      lastRecId.empty() ? std::string() : util::fmt_t::format("WHERE RECID > %1", util::to_utf8(lastRecId));
  return util::fmt_t::format(
      "SELECT FIRST_CHANGE#, %1, NEXT_CHANGE#, %2, NAME, SEQUENCE#, RECID, STAMP FROM "
      "V$ARCHIVED_LOG %3",
      sql::utc_time_text_of("FIRST_TIME"), sql::utc_time_text_of("NEXT_TIME"), condition);
}

void check_bookmark(const std::u16string& lastRecId) {
  if (!lastRecId.empty() && !sql::is_decimal_number(lastRecId)) {
    throw exc::runtime_exc_t(
        "The last record id [%1] is not a decimal number: give the recId of the last log taken, "
        "or nothing for every log.",
        util::to_utf8(lastRecId));
  }
}

std::u16string folder_with_separator(const std::u16string& folder) {
  if (!folder.empty() && (folder.back() == u'\\' || folder.back() == u'/')) return folder;
  return folder + u"\\";
}

}  // namespace logs

COracleLogBackup::COracleLogBackup(std::shared_ptr<COracleSessionHolder> holder)
    : holder_(std::move(holder)), dbId_(query_database_id(*holder_)) {}

void COracleLogBackup::flush() {
  const auto query = holder_->make_query();
  try {
    query->run("ALTER SYSTEM ARCHIVE LOG ALL");
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to archive logs all", e);
  }
  try {
    query->run("ALTER SYSTEM ARCHIVE LOG CURRENT");
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to archive logs current", e);
  }
}

arch_log_list_t COracleLogBackup::select_logs(const std::u16string& lastRecId,
                                              const std::u16string& usn) {
  try {
    logs::check_bookmark(lastRecId);
    arch_log_list_t list;
    const auto result =
        holder_->make_query()->exec(logs::select_logs_statement(lastRecId), 8, /*upperCase=*/false);
    for (const oracle_row_t& row : result->rows()) {
      if (row.size() != 8) continue;
      auto log = std::make_shared<SArchLogInfo>();
      log->firstChange = row[0];
      log->firstTimeUtc = row[1];
      log->nextChange = row[2];
      log->nextTimeUtc = row[3];
      log->logPath = row[4];
      log->seqNum = row[5];
      log->recId = row[6];
      log->stamp = row[7];
      log->dbId = dbId_;
      log->creationUsn = usn;
      list.push_back(std::move(log));
    }
    // The message says sequence number though the bound is a record id; readers of the log
    // know it by these words.
    logging::oralib().info("Found %1 log files with seq number above %2",
                           util::to_str(static_cast<uint64_t>(list.size())),
                           util::to_utf8(lastRecId));
    return list;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to get logs to copy", e);
  }
}

std::u16string COracleLogBackup::thread_of(const SArchLogInfo& log) {
  // Only for the failure text: the selection does not read THREAD#.
  try {
    if (!sql::is_decimal_number(log.recId)) return u"unknown";
    const std::u16string thread = holder_->make_query()->single_value(
        util::fmt_t::format("SELECT THREAD# FROM V$ARCHIVED_LOG WHERE RECID = %1",
                            util::to_utf8(log.recId)),
        false);
    return thread.empty() ? u"unknown" : thread;
  } catch (const std::exception&) {
    return u"unknown";
  }
}

void COracleLogBackup::copy_one(SArchLogInfo& log, const std::u16string& folder, bool stage) {
  log.homePath = holder_->get_home();
  log.sid = holder_->get_sid();
  const std::u16string target = win::join_path_windows(folder, util::guid_to_text(util::new_guid()));
  log.xmlLogPath = target + u".xml";
  const bool onAsm = !log.logPath.empty() && log.logPath[0] == u'+';
  if (!onAsm && !stage) {
    log.backupPath = log.logPath;
    log.isLogCopied = false;
  } else {
    const std::string from = util::to_utf8(log.logPath);
    const std::string to = util::to_utf8(target);
    logging::log_step_t step(logging::oralib(), "Copying log file [%1]", from);
    try {
      if (onAsm) {
        copy_asm_file(holder_->get_session(), from, to);
      } else {
        win::copy_file(win::path_holder_t(log.logPath), win::path_holder_t(target));
      }
      log.backupPath = target;
      log.isLogCopied = true;
      step.ok();
    } catch (const std::exception& e) {
      exc::log_warn(logging::oralib(), "Failed to copy archived log from [%1] to [%2]", from, to, e);
    }
  }
  {
    if (!log.backupPath.empty()) {
      try {
        log.size = util::to_wstr(win::file_size(win::path_holder_t(log.backupPath)));
        return;
      } catch (const std::exception& e) {
        const std::string args[] = {util::to_utf8(thread_of(log)), util::to_utf8(log.seqNum),
                                    util::to_utf8(log.recId), util::to_utf8(log.backupPath)};
        exc::rethrow_with_context(
            util::fmt_t::format(
                "The archived log of thread %1, sequence %2, RECID %3 is listed by the database, "
                "but its file [%4] cannot be read. If the file was removed outside the database, "
                "have the database crosscheck its archived logs and delete the expired ones: it "
                "then no longer lists the log.",
                args, 4),
            e);
      }
    }
  }
  const std::string args[] = {util::to_utf8(thread_of(log)), util::to_utf8(log.seqNum),
                              util::to_utf8(log.recId), util::to_utf8(log.logPath)};
  throw exc::runtime_exc_t(util::fmt_t::format(
      "The archived log of thread %1, sequence %2, RECID %3 at [%4] could not be copied to the "
      "logs folder (the warning before tells why). If its file was removed outside the "
      "database, have the database crosscheck its archived logs and delete the expired ones: it "
      "then no longer lists the log.",
      args, 4));
}

void COracleLogBackup::copy_logs(const arch_log_list_t& logs, const std::u16string& folder,
                                 bool stage) {
  for (const auto& log : logs) copy_one(*log, folder, stage);
}

std::u16string COracleLogBackup::backup_to_folder(const std::u16string& folder,
                                                  const std::u16string& usn,
                                                  const std::u16string& lastRecId) {
  try {
    logging::log_step_t step("Backup logs to folder: %1, usn %2, last rec id: %3",
                             util::to_utf8(folder), util::to_utf8(usn), util::to_utf8(lastRecId));
    logs::check_bookmark(lastRecId);
    if (folder.empty()) {
      throw exc::runtime_exc_t(
          "The logs folder is empty: OracleTempLogPath is not set and the common application "
          "data folder could not be found.");
    }
    win::create_directories(win::path_holder_t(logs::folder_with_separator(folder)));
    const std::string creationTimeUtc = logs::utc_time_stamp(logs::unix_now_us());
    arch_log_list_t list;
    const auto session = holder_->get_session();
    if (session->is_instance_open(/*assumeOpen=*/false) && session->is_database_active()) {
      flush();
      list = select_logs(lastRecId, usn);
      copy_logs(list, folder, COracleConfig::get().stageLogsBeforeBackup);
    }
    std::u16string text = logs::write_descriptions(list, creationTimeUtc);
    step.ok();
    return text;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to backup logs to path: %1", util::to_utf8(folder), e);
  }
}

}  // namespace specific::oracle
