#include "oracle/discovery/db_info_collector_rules.h"

#include <memory>

#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "oracle/client/sql_text.h"
#include "oracle/discovery/explore_db_config.h"

namespace specific::oracle {

namespace collect_sql {
const char* const kLogFiles =
    "SELECT F.MEMBER, L.BYTES FROM V$LOG L, V$LOGFILE F WHERE L.GROUP# = F.GROUP#";
const char* const kDataFiles = "SELECT NAME, BYTES FROM V$DATAFILE";
const char* const kTempFiles = "SELECT NAME, BYTES FROM V$TEMPFILE";
const char* const kControlFiles = "SELECT NAME, BLOCK_SIZE*FILE_SIZE_BLKS FROM V$CONTROLFILE";
const char* const kLogGroups = "SELECT MEMBER, GROUP# FROM V$LOGFILE";
const char* const kIsCdb = "SELECT CDB FROM V$DATABASE";
const char* const kPdbs = "SELECT NAME, GUID FROM V$PDBS";
const char* const kArchiveCurrent = "ALTER SYSTEM ARCHIVE LOG CURRENT";
const char* const kArchiveAll = "ALTER SYSTEM ARCHIVE LOG ALL";
const char* const kListeners = "SELECT NAME, VALUE FROM V$PARAMETER WHERE NAME LIKE '%_listener'";
const char* const kNewestLogRecord =
    "SELECT RECID, STAMP FROM V$ARCHIVED_LOG WHERE RECID=(SELECT MAX(RECID) FROM V$ARCHIVED_LOG)";
}  // namespace collect_sql

std::string archived_logs_sql() {
  // The three tab characters are part of the statement as the server sees it.
  return util::fmt_t::format(
      "SELECT NAME, FIRST_CHANGE#, NEXT_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\t%1, %2, SEQUENCE# FROM "
      "V$ARCHIVED_LOG WHERE STATUS != 'D'",
      sql::utc_time_text_of("FIRST_TIME"), sql::utc_time_text_of("NEXT_TIME"));
}

arch_log_ptr_t arch_log_from_row(const std::vector<std::u16string>& row) {
  if (row.size() != 7) return nullptr;
  auto log = std::make_shared<SArchLogInfo>();
  log->logPath = row[0];
  log->firstChange = row[1];
  log->nextChange = row[2];
  log->size = row[3];
  log->firstTimeUtc = row[4];
  log->nextTimeUtc = row[5];
  log->seqNum = row[6];
  return log;
}

bool is_asm_path(const std::u16string& path) { return path.find(u'+') == 0; }

void apply_listener_row(const std::vector<std::u16string>& row, std::u16string& local,
                        std::u16string& remote) {
  if (row.size() != 2) return;
  if (row[0].find(u"local_") == 0) local = row[1];
  else if (row[0].find(u"remote_") == 0) remote = row[1];
}

std::u16string global_name_of(const std::u16string& uniqueName, const std::u16string& domain) {
  if (domain.empty()) return uniqueName;
  return util::fmt_t::format(u"%1.%2", uniqueName, domain);
}

bool reverted_check_sql(const SDbLogRecInfo* record, std::string& sql) {
  sql.clear();
  if (record == nullptr || record->recId.empty() || record->stamp.empty()) return false;
  if (!sql::is_decimal_number(record->recId) || !sql::is_decimal_number(record->stamp)) {
    return false;
  }
  sql = util::fmt_t::format("SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=%1 AND STAMP=%2",
                            util::to_multibyte(record->recId), util::to_multibyte(record->stamp));
  return true;
}

}  // namespace specific::oracle
