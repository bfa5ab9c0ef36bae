// The backup preparation: just before a snapshot, every ordinary database instance of the
// machine is visited, connected to, and put into the state the snapshot needs: left alone,
// handed to Oracle's VSS writer, switched into hot-backup state, or shut down. The result is
// the preparation document (dbs_backup_xml.h). Runs on the caller's thread, one database after
// another; each database's failure is caught and recorded, never thrown.
//
// The decision for an open, active database:
//   DisableOracleProcessing            -> "oracleNoAction" (archive log on) / "oracleSkipVss"
//   version below 11, no SupportOracle10 -> the same pair
//   archive log off, OracleSkipNoArchiveLogDB -> "oracleSkipVss"
//   archive log off                    -> shut down, "shutdown"
//   archive log on, writer usable      -> "vss"     (then the current SCN)
//   archive log on, writer not usable  -> BEGIN BACKUP unless a file is in backup, "backup"
//
// Plugged databases: their open modes are collected for every open, active database whose
// pluggable check is true. That check is made inside the writer's should-skip test, which runs
// only for SIDs whose writer the caller reports as enabled; when it did not run, the
// collection makes the same check itself (version 12 or higher and V$DATABASE.CDB = "YES"),
// so that a container database put into hot-backup state without the writer keeps its plugged
// databases' modes for the restore. A failure of that check is a failure of the collection:
// a warning, and the preparation goes on.
#pragma once
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/client/conn.h"
#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

class COracleSessionHolder;

// The SIDs whose writer the caller reports as enabled, upper-cased; exact comparison.
using sid_set_t = std::set<std::u16string>;

// The working record of one database while it is prepared.
struct SDbPrepareContext {
  std::shared_ptr<SOracleSid> sid;
  uint32_t action = kActionFailure;
  std::vector<SPdbInfo> pdbs;
  std::u16string scn;
  std::u16string errMsg;
};

class CDbsBackupPrepare {
 public:
  // The whole preparation: reads `configXml`, scans the registry (COracleHomes) and prepares
  // every ordinary instance. A configXml that cannot be read or a failing scan throws with
  // "Failed to prepare dbs for backup" on top; no database has been touched then.
  static std::u16string prepare_all(const std::u16string& configXml, const conn_t& conn);

  // The same over a given list of instances (what the scan would give).
  static std::u16string prepare_instances(const std::vector<SOracleSid>& instances,
                                          const sid_set_t& vssWriterSids, const conn_t& conn);

  // The writer-enabled set of `configXml`: the `sid` of every child of `databases`,
  // upper-cased. An empty text gives an empty set. Throws on a text without `databases` or a
  // child without `sid`.
  static sid_set_t parse_writer_sids(const std::u16string& configXml);

  // One database; never throws. The set is the database's own copy.
  static void prepare_one(SDbPrepareContext& context, sid_set_t vssWriterSids,
                          const conn_t& conn);
};

// ASCII letters upper-cased, every other unit as it stands: the same rule for the writer set
// and the lookup, whatever the locale.
std::u16string upper_sid(const std::u16string& sid);

// The statements of the preparation, for tests that read the journal.
extern const char* const kSqlPdbs;          // SELECT NAME, OPEN_MODE FROM V$PDBS
extern const char* const kSqlCdb;           // SELECT CDB FROM V$DATABASE
extern const char* const kSqlBackupStatus;  // SELECT STATUS FROM V$BACKUP
extern const char* const kSqlBeginBackup;   // ALTER DATABASE BEGIN BACKUP

}  // namespace specific::oracle
