// The single-value queries of a database: each gets the session from the holder, runs one
// statement and returns the first column of the first row, or "" when no row came back.
// Failures rise with the query's own trace line. The database id and the current SCN also serve
// the backup preparation and the log backup. On the operation's thread.
#pragma once
#include <string>

namespace specific::oracle {

class COracleSessionHolder;

std::u16string query_database_name(const COracleSessionHolder& holder);
std::u16string query_database_id(const COracleSessionHolder& holder);
std::u16string query_current_scn(const COracleSessionHolder& holder);
std::u16string query_last_log_sequence(const COracleSessionHolder& holder);
std::u16string query_recovery_area(const COracleSessionHolder& holder);
std::u16string query_unique_name(const COracleSessionHolder& holder);
std::u16string query_domain(const COracleSessionHolder& holder);

// The statements, for tests that read the journal.
extern const char* const kSqlDatabaseName;
extern const char* const kSqlDatabaseId;
extern const char* const kSqlCurrentScn;
extern const char* const kSqlLastLogSequence;
extern const char* const kSqlRecoveryArea;
extern const char* const kSqlUniqueName;
extern const char* const kSqlDomain;

}  // namespace specific::oracle
