// The walk over the preparation document after the snapshot: database by database, undo what
// the preparation did (end the hot-backup state and switch the log, or start a database that
// was shut down). The same walk, with `restore` set, brings the databases of a machine restored
// from the snapshot back into service (restore/db_startup.h). It keeps no state: everything
// it knows stands in the document. On the caller's thread, one database at a time.
#pragma once
#include <memory>
#include <string>

#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/client/conn.h"

namespace specific::oracle {

class CDbsBackupFinish {
 public:
  // Reads the document and finishes each record in order. Fails only when the document cannot
  // be read, with "Failed to finish dbs backup" on top, before any database is touched.
  static void finish_all(const std::u16string& dbPrepareXml, const conn_t& conn, bool restore);
  // One record; never throws. A failure, "Unexpected backup action: %1" included, is logged
  // under "Failed to finish db backup. Sid: %1".
  static void finish_one(const std::shared_ptr<SDbPrepareInfo>& info, const conn_t& conn,
                         bool restore);
};

}  // namespace specific::oracle
