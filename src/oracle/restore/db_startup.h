// Bringing one database back into service, after an image restore (the walk of the finish in
// restore mode) and, for a database the preparation shut down, after the snapshot on the live
// machine. A machine restored from an image wakes up as the snapshot saw it: a database that
// stood in hot-backup state comes up MOUNTED and refuses to open until the backup state is
// ended; one that was shut down is down; the services take their time. On the caller's
// thread; the waits sleep it (restore_wait.h).
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/client/conn.h"
#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

class COracleSessionHolder;

class CDbStartup {
 public:
  // Waits for the instance (OracleWaitDbStartedAttemptCount attempts, 15 s apart): a MOUNTED
  // database gets END BACKUP, OPEN and a log switch, an OPEN one nothing; when the attempts
  // are used up, the last attempt starts and mounts a database that is down. Then the plugged
  // databases are reopened, in every case. A failing query leaves at once with its failure.
  static void recover_database(const SOracleSid& sid, const conn_t& conn,
                               const std::vector<SPdbInfo>& pdbs);
  // Starts, mounts and opens a database that is down, then reopens its plugged databases;
  // does nothing to one that is open. Never throws: "Failed to startup db: %1".
  static void start_up(const SOracleSid& sid, const conn_t& conn,
                       const std::vector<SPdbInfo>& pdbs);
  // Reopens each plugged database in its recorded mode (MIGRATE as UPGRADE) unless it stands
  // there already. Failures are per plugged database warnings.
  static void restore_plugged_dbs(const SOracleSid& sid, const conn_t& conn,
                                  const std::vector<SPdbInfo>& pdbs);
  // END BACKUP, OPEN, ARCHIVE LOG CURRENT; false after the warning "Failed to end backup".
  static bool finish_mounted_db(const COracleSessionHolder& holder);
  static void last_attempt(const SOracleSid& sid, const conn_t& conn);
  static bool is_mounted(const SOracleSid& sid, const conn_t& conn);
  // One try of a start-up to NOMOUNT on a preliminary session; its failure is logged,
  // followed by a 10 s wait, and thrown again.
  static void start_instance(const SOracleSid& sid, const conn_t& conn);
  static void startup_mount(const SOracleSid& sid, const conn_t& conn);
};

extern const char* const kSqlInstanceStatus;  // SELECT STATUS FROM V$INSTANCE
extern const char* const kSqlEndBackup;       // ALTER DATABASE END BACKUP
extern const char* const kSqlOpenDatabase;    // ALTER DATABASE OPEN
extern const char* const kSqlArchiveCurrent;  // ALTER SYSTEM ARCHIVE LOG CURRENT
extern const char* const kSqlMountDatabase;   // ALTER DATABASE MOUNT

// "SELECT OPEN_MODE FROM V$PDBS WHERE NAME = '<name>'" and
// "ALTER PLUGGABLE DATABASE "<name>" OPEN <mode>": the name as a literal with its apostrophes
// doubled and as a quoted identifier, so that no name from a document can end either.
std::string pdb_mode_query(const std::u16string& name);
std::string pdb_open_statement(const std::u16string& name, const std::u16string& mode);

}  // namespace specific::oracle
