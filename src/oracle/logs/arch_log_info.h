// SArchLogInfo: the record of one archived redo log. The property collection, the log backup,
// the description files and the deletion each fill the part of it that their own query or
// step knows; no flow fills all of it. Held by shared pointer; a plain record.
#pragma once
#include <memory>
#include <string>
#include <vector>

namespace specific::oracle {

struct SArchLogInfo {
  std::u16string logPath;          // NAME of V$ARCHIVED_LOG; "+..." on ASM
  std::u16string backupPath;       // where the agent reads the log: the copy, or logPath
  std::u16string xmlLogPath;       // the description file
  std::u16string size;             // bytes, decimal text
  std::u16string firstChange;      // FIRST_CHANGE#
  std::u16string firstTimeUtc;     // FIRST_TIME in UTC, "yyyy/mm/dd hh24:mi:ss"
  std::u16string nextChange;       // NEXT_CHANGE#
  std::u16string nextTimeUtc;      // NEXT_TIME in UTC, same form
  std::u16string sid;              // SID of the session holder
  std::u16string homePath;         // home of the session holder
  std::u16string seqNum;           // SEQUENCE#
  std::u16string recId;            // RECID
  std::u16string stamp;            // STAMP
  std::u16string threadNum;        // THREAD#
  std::u16string resetlogsChange;  // RESETLOGS_CHANGE#
  std::u16string blockSize;        // BLOCK_SIZE
  std::u16string dbId;             // DBID, the same in every record of one run
  std::u16string creationUsn;      // the caller's usn
  bool isLogCopied = false;        // a copy of the log exists in the logs folder
};

using arch_log_ptr_t = std::shared_ptr<SArchLogInfo>;
using arch_log_list_t = std::vector<arch_log_ptr_t>;

}  // namespace specific::oracle
