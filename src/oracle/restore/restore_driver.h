// The restore of a machine that woke up from a snapshot: the meta file OracleMeta.xml in the
// temp log folder is the whole signal. Its presence says a restore is due; the restore waits
// for the database services (OracleRestoreWaitInSec), reads the file, removes it before any
// database is touched (so that a restore that fails halfway is not run again at the next
// boot) and walks the preparation document in restore mode. Caller's thread.
#pragma once
#include <string>

#include "oracle/client/conn.h"

namespace specific::oracle {

class CRestoreDriver {
 public:
  // True when the meta file exists; creates the temp log folder on the way.
  static bool restore_required();
  // The whole restore. Fails when the logon or the impersonation of an account named by the
  // meta file fails, and when the document the file held cannot be read (a dbPrepareXml whose
  // base64 stops early gives a shortened text that is no document): in both cases no database
  // has been touched, and the file is gone, so the restore is not tried again at the next boot.
  // A file that cannot be read at all is only a warning: nothing is restored.
  static void do_restore();
  // The walk after the meta file was read: under `osUser` when one is named, else on the
  // process's identity. An empty document is an empty list of databases.
  static void restore_databases(const std::u16string& dbPrepareXml, const conn_t& conn,
                                const std::u16string& osUser, const std::u16string& osPassword);
};

}  // namespace specific::oracle
