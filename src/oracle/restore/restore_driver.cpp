#include "oracle/restore/restore_driver.h"

#include <cstdint>

#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "common/win/path_ops.h"
#include "config/oracle_config.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/restore/restore_wait.h"
#include "oracle/restore/run_as_user.h"

namespace specific::oracle {

bool CRestoreDriver::restore_required() {
  const std::u16string path = CDbsBackupXml::meta_path();
  const bool required = win::file_exists(path);
  logging::oralib().info("Oracle restore is required: %1", required ? "true" : "false");
  return required;
}

void CRestoreDriver::restore_databases(const std::u16string& dbPrepareXml, const conn_t& conn,
                                       const std::u16string& osUser,
                                       const std::u16string& osPassword) {
  const auto walk = [&] {
    if (dbPrepareXml.empty()) return;  // no databases
    CDbsBackupFinish::finish_all(dbPrepareXml, conn, /*restore=*/true);
  };
  if (!osUser.empty()) {
    run_as_user(osUser, osPassword, walk);
  } else {
    walk();
  }
}

void CRestoreDriver::do_restore() {
  // The wait gives the services of a just-booted machine time to bring their instances up; it
  // comes first, whether or not there is anything to restore.
  const uint32_t waitSec = COracleConfig::get().restoreWaitInSec;
  logging::oralib().info("Waiting for %1 sec", std::to_string(waitSec));
  // In 64 bits: a setting above 4,294,967 s must not wrap into a short wait.
  if (waitSec != 0) {
    const uint64_t milliseconds = static_cast<uint64_t>(waitSec) * 1000u;
    restore_sleep(milliseconds > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(milliseconds));
  }
  const std::u16string path = CDbsBackupXml::meta_path();
  std::u16string document;
  conn_t conn;
  std::u16string osUser;
  std::u16string osPassword;
  CDbsBackupXml::load_meta(path, document, conn, osUser, osPassword);
  CDbsBackupXml::remove_meta(path);
  restore_databases(document, conn, osUser, osPassword);
}

}  // namespace specific::oracle
