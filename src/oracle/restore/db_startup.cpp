#include "oracle/restore/db_startup.h"

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/sql_text.h"
#include "oracle/restore/restore_wait.h"

namespace specific::oracle {

const char* const kSqlInstanceStatus = "SELECT STATUS FROM V$INSTANCE";
const char* const kSqlEndBackup = "ALTER DATABASE END BACKUP";
const char* const kSqlOpenDatabase = "ALTER DATABASE OPEN";
const char* const kSqlArchiveCurrent = "ALTER SYSTEM ARCHIVE LOG CURRENT";
const char* const kSqlMountDatabase = "ALTER DATABASE MOUNT";

namespace {

// The start itself is tried once; the message that counts attempts is kept all the same.
constexpr uint32_t kStartAttempts = 1;

bool begins_with(const std::u16string& text, const char16_t* word) {
  return text.rfind(word, 0) == 0;
}

std::string narrow_sid(const SOracleSid& sid) { return util::to_utf8(sid.sid); }

std::u16string instance_status(const COracleSessionHolder& holder) {
  return holder.make_query()->single_value(kSqlInstanceStatus, /*upperCase=*/true);
}

}  // namespace

std::string pdb_mode_query(const std::u16string& name) {
  return "SELECT OPEN_MODE FROM V$PDBS WHERE NAME = '" +
         sql::literal_text(util::to_multibyte(name)) + "'";
}

std::string pdb_open_statement(const std::u16string& name, const std::u16string& mode) {
  // The mode comes from a document that travelled through the agent: only the three forms a
  // preparation records (with MIGRATE already turned into UPGRADE) may follow OPEN.
  if (mode != u"READ ONLY" && mode != u"READ WRITE" && mode != u"UPGRADE") {
    throw exc::runtime_exc_t("The open mode [%1] of a plugged database cannot be restored.",
                             util::to_utf8(mode));
  }
  return "ALTER PLUGGABLE DATABASE " + sql::quoted_identifier(util::to_multibyte(name)) +
         " OPEN " + util::to_multibyte(mode);
}

bool CDbStartup::finish_mounted_db(const COracleSessionHolder& holder) {
  try {
    const auto query = holder.make_query();
    query->run(kSqlEndBackup);
    query->run(kSqlOpenDatabase);
    query->run(kSqlArchiveCurrent);
    return true;
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to end backup", e);
    return false;
  }
}

void CDbStartup::recover_database(const SOracleSid& sid, const conn_t& conn,
                                  const std::vector<SPdbInfo>& pdbs) {
  const uint32_t attempts = COracleConfig::get().waitDbStartedAttemptCount;
  bool done = false;
  for (uint32_t attempt = 1; !done; ++attempt) {
    if (attempt > attempts) {
      last_attempt(sid, conn);
      break;
    }
    {
      const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
      if (holder && holder->get_session()->is_instance_open(/*assumeOpen=*/true)) {
        const std::u16string status = instance_status(*holder);
        if (begins_with(status, u"MOUNTED")) {
          done = finish_mounted_db(*holder);
        } else if (begins_with(status, u"OPEN")) {
          // Open, OPEN MIGRATE included: nothing to recover, whatever backup state it has.
          done = true;
        }
      }
    }
    if (!done) {
      logging::oralib().info(
          "Unable to perform db restore. Wait for db initialization, attempt %1 of %2",
          std::to_string(attempt), std::to_string(attempts));
      restore_sleep(kWaitBetweenAttemptsMs);
    }
  }
  restore_plugged_dbs(sid, conn, pdbs);
}

void CDbStartup::last_attempt(const SOracleSid& sid, const conn_t& conn) {
  {
    const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
    if (!holder) return;
    // The instance is there: nothing more is tried.
    if (holder->get_session()->is_instance_open(/*assumeOpen=*/true)) return;
  }
  if (!is_mounted(sid, conn)) startup_mount(sid, conn);
  if (const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn)) {
    finish_mounted_db(*holder);
  }
}

bool CDbStartup::is_mounted(const SOracleSid& sid, const conn_t& conn) {
  try {
    const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
    if (!holder) return false;
    if (!holder->get_session()->is_instance_open(/*assumeOpen=*/true)) return false;
    return begins_with(instance_status(*holder), u"MOUNTED");
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to check if db is mounted", e);
    return false;
  }
}

void CDbStartup::start_instance(const SOracleSid& sid, const conn_t& conn) {
  exc::exc_ptr_t failure;
  for (uint32_t attempt = 1; attempt <= kStartAttempts; ++attempt) {
    try {
      COracleSessionHolder holder(sid.sid, sid.home, conn, /*prelimAuth=*/true);
      holder.get_session()->startup();
      failure.reset();
      break;
    } catch (const std::exception& e) {
      failure = exc::capture(e);
      exc::log_warn(logging::oralib(), "Unable to start database, attempt %1 of %2",
                    std::to_string(attempt), std::to_string(kStartAttempts), e);
      restore_sleep(kWaitAfterFailedStartMs);
    }
  }
  if (failure) failure->throw_copy();
}

void CDbStartup::startup_mount(const SOracleSid& sid, const conn_t& conn) {
  logging::log_step_t step(logging::oralib(), "Startup mount, sid: %1", narrow_sid(sid));
  start_instance(sid, conn);
  COracleSessionHolder holder(sid.sid, sid.home, conn, /*prelimAuth=*/false);
  holder.make_query()->run(kSqlMountDatabase);
  step.ok();
}

void CDbStartup::start_up(const SOracleSid& sid, const conn_t& conn,
                          const std::vector<SPdbInfo>& pdbs) {
  logging::log_step_t step(logging::oralib(), "Starting up oracle db");
  try {
    {
      COracleSessionHolder holder(sid.sid, sid.home, conn, /*prelimAuth=*/false);
      if (holder.get_session()->is_instance_open(/*assumeOpen=*/false)) {
        logging::oralib().info("No need to startup database: instance is open");
        step.ok();
        return;
      }
    }
    start_instance(sid, conn);
    {
      // A new session: the one above learned at logon that the instance was down.
      COracleSessionHolder holder(sid.sid, sid.home, conn, /*prelimAuth=*/false);
      holder.get_session()->mount_and_open();
    }
    restore_plugged_dbs(sid, conn, pdbs);
    step.ok();
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to startup db: %1", narrow_sid(sid), e);
  }
}

void CDbStartup::restore_plugged_dbs(const SOracleSid& sid, const conn_t& conn,
                                     const std::vector<SPdbInfo>& pdbs) {
  if (pdbs.empty()) return;
  logging::log_step_t step(logging::oralib(), "Restoring plugged dbs");
  const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
  if (!holder || !holder->get_session()->is_instance_open(/*assumeOpen=*/true)) {
    step.ok();
    return;
  }
  for (const SPdbInfo& pdb : pdbs) {
    logging::log_step_t pdbStep(logging::oralib(), "Restoring plugged db: %1",
                                util::to_utf8(pdb.name));
    try {
      // Only OPEN UPGRADE brings a plugged database back into MIGRATE.
      const std::u16string wanted = pdb.mode == u"MIGRATE" ? std::u16string(u"UPGRADE") : pdb.mode;
      const auto query = holder->make_query();
      const std::u16string current = query->single_value(pdb_mode_query(pdb.name), true);
      if (current != pdb.mode) query->run(pdb_open_statement(pdb.name, wanted));
      pdbStep.ok();
    } catch (const std::exception& e) {
      exc::log_warn(logging::oralib(), "Failed to restore pdb: %1", util::to_utf8(pdb.name), e);
    }
  }
  step.ok();
}

}  // namespace specific::oracle
