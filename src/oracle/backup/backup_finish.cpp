#include "oracle/backup/backup_finish.h"

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/oracle_sid.h"
#include "oracle/restore/db_startup.h"

namespace specific::oracle {

namespace {

// A database in hot-backup state: end it and switch the log. Without a session, or with the
// instance not open or the database not active, nothing is sent and nothing is said.
void end_backup(const SOracleSid& sid, const conn_t& conn) {
  const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
  if (!holder) return;
  COracleSession& session = *holder->get_session();
  if (!session.is_instance_open(/*assumeOpen=*/false) || !session.is_database_active()) return;
  const auto query = holder->make_query();
  query->run(kSqlEndBackup);
  query->run(kSqlArchiveCurrent);
}

}  // namespace

void CDbsBackupFinish::finish_one(const std::shared_ptr<SDbPrepareInfo>& info,
                                  const conn_t& conn, bool restore) {
  SOracleSid sid;
  sid.sid = info->sid;
  sid.home = info->home;
  const std::string sidText = util::to_utf8(info->sid);
  logging::log_step_t step("Finish db backup. Sid: %1, action: %2", sidText,
                           action_name(info->action));
  try {
    const auto& log = logging::oralib();
    switch (info->action) {
      case kActionFailure:
        log.info("Database backup prepare finished with error");
        break;
      case kActionInactive:
        log.info("Database is inactive. Nothing to do.");
        break;
      case kActionBackup:
        if (restore) CDbStartup::recover_database(sid, conn, info->pdbs);
        else end_backup(sid, conn);
        break;
      case kActionShutdown:
        CDbStartup::start_up(sid, conn, info->pdbs);
        break;
      case kActionVss:
        // After an image restore a database under the writer's care is treated like one in
        // hot-backup state.
        if (restore) CDbStartup::recover_database(sid, conn, info->pdbs);
        else log.info("Database backup performed by VSS. Nothing to do.");
        break;
      case kActionOracleSkipVss:
      case kActionOracleNoAction:
        // One message for both, whatever brought the database here.
        log.info("Oracle version is not supported. Nothing to do.");
        break;
      default:
        throw exc::runtime_exc_t("Unexpected backup action: %1", std::to_string(info->action));
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to finish db backup. Sid: %1", sidText, e);
  }
}

void CDbsBackupFinish::finish_all(const std::u16string& dbPrepareXml, const conn_t& conn,
                                  bool restore) {
  logging::log_step_t step(logging::oralib(), "Finish dbs backup");
  CDbsBackupXml::info_list_t infos;
  try {
    infos = CDbsBackupXml::read_document(dbPrepareXml);
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to finish dbs backup", e);
  }
  for (const auto& info : infos) finish_one(info, conn, restore);
  step.ok();
}

}  // namespace specific::oracle
