#include "oracle/discovery/single_values.h"

#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"

namespace specific::oracle {

const char* const kSqlDatabaseName = "SELECT SYS_CONTEXT('USERENV','DB_NAME') FROM DUAL";
const char* const kSqlDatabaseId = "SELECT DBID FROM V$DATABASE";
const char* const kSqlCurrentScn = "SELECT CURRENT_SCN FROM V$DATABASE";
const char* const kSqlLastLogSequence =
    "SELECT MAX(SEQUENCE#) FROM V$ARCHIVED_LOG WHERE STATUS != 'D'";
const char* const kSqlRecoveryArea = "SELECT NAME FROM V$RECOVERY_FILE_DEST";
const char* const kSqlUniqueName = "SELECT SYS_CONTEXT('USERENV','DB_UNIQUE_NAME') FROM DUAL";
const char* const kSqlDomain = "SELECT SYS_CONTEXT('USERENV','DB_DOMAIN') FROM DUAL";

namespace {

std::u16string single_value(const COracleSessionHolder& holder, const char* sql, bool upperCase) {
  return holder.get_session()->make_query()->single_value(sql, upperCase);
}

}  // namespace

std::u16string query_database_name(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlDatabaseName, false);
}
std::u16string query_database_id(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlDatabaseId, true);
}
std::u16string query_current_scn(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlCurrentScn, true);
}
std::u16string query_last_log_sequence(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlLastLogSequence, true);
}
std::u16string query_recovery_area(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlRecoveryArea, false);
}
std::u16string query_unique_name(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlUniqueName, false);
}
std::u16string query_domain(const COracleSessionHolder& holder) {
  return single_value(holder, kSqlDomain, false);
}

}  // namespace specific::oracle
