// COracleLogBackup: one call of the log backup. It forces the current redo out into archived
// logs, selects the logs the database lists after the caller's bookmark (a RECID), copies those
// the agent cannot read where they are (logs on ASM always, local logs only when
// OracleStageLogsBeforeBackup is set) into the logs folder under fresh GUID names, and writes
// one description per log. It keeps no memory of earlier runs: the bookmark lives with the
// caller, who takes the next one from the `recId` values of the result.
// On the operation's thread, with the holder's one session.
//
// Decisions of this library beyond the bare flow:
// - A bookmark that is not decimal digits fails the call before any statement is sent (it
//   would otherwise be filled into the statement as it stands); an empty one asks for every
//   log the database lists, also those it marks as deleted.
// - The logs folder is created whole, its last part included, whether or not the configured
//   path ends with a separator.
// - A log whose copy failed, or whose file is gone though the database still lists it, fails
//   the whole call after all copies: its error names the log by thread, sequence, RECID and
//   path, and says that the database's own crosscheck and deletion of expired logs clears a
//   file removed behind its back. No description of that run is written; copies made so far
//   stay in the folder without one.
#pragma once
#include <memory>
#include <string>

#include "oracle/logs/arch_log_info.h"

namespace specific::oracle {

class COracleSessionHolder;

class COracleLogBackup {
 public:
  // Keeps the holder and reads the database's id ("SELECT DBID FROM V$DATABASE").
  explicit COracleLogBackup(std::shared_ptr<COracleSessionHolder> holder);

  // The run under the step "Backup logs to folder: %1, usn %2, last rec id: %3": answers the
  // `archived_logs` list text. Any failure leaves as "Failed to backup logs to path: %1".
  std::u16string backup_to_folder(const std::u16string& folder, const std::u16string& usn,
                                  const std::u16string& lastRecId);

  // The selection alone: the rows of V$ARCHIVED_LOG after `lastRecId` (all for an empty one),
  // in the view's order, with dbId and creationUsn set. "Failed to get logs to copy" on failure.
  arch_log_list_t select_logs(const std::u16string& lastRecId, const std::u16string& usn);

  const std::u16string& db_id() const { return dbId_; }

 private:
  void flush();
  void copy_logs(const arch_log_list_t& logs, const std::u16string& folder, bool stage);
  void copy_one(SArchLogInfo& log, const std::u16string& folder, bool stage);
  std::u16string thread_of(const SArchLogInfo& log);

  std::shared_ptr<COracleSessionHolder> holder_;
  std::u16string dbId_;
};

namespace logs {

// The statement of the selection for a bookmark (already checked to be digits, or empty).
std::string select_logs_statement(const std::u16string& lastRecId);

// Fails with a clear text when `lastRecId` is neither empty nor decimal digits.
void check_bookmark(const std::u16string& lastRecId);

// The folder as create_directories must see it to create its last part too.
std::u16string folder_with_separator(const std::u16string& folder);

}  // namespace logs

}  // namespace specific::oracle
