// The eighteen exports. Each copies its arguments, makes the narrow login pair, calls one
// operation and hands the result out; the error frame turns any failure into DSL_E_FAIL and a
// text. Nothing here keeps state but the initialised flag and the gather list.
#include "DbShadowLink.h"

#include <cstdlib>

#include "common/common_file_hooks.h"
#include "common/common_lib_ctx.h"
#include "common/logging/log_start.h"
#include "common/text/convert.h"
#include "common/win/file_name_rule.h"
#include "frame/error_frame.h"
#include "frame/library_state.h"
#include "config/oracle_config.h"
#include "frame/oracle_manager.h"
#include "oracle/discovery/vss_gather.h"
#include "oracle/discovery/vss_state.h"

using specific::oracle::COracleManager;
using specific::oracle::CVssState;
using specific::oracle::conn_t;
using specific::oracle::frame::CLibraryState;
using specific::oracle::frame::copy_arg;
using specific::oracle::frame::guarded;
using specific::oracle::frame::make_out_string;

namespace {

conn_t make_conn(const DSL_WCHAR* user, const DSL_WCHAR* password) {
  return conn_t(util::to_multibyte(copy_arg(user)), util::to_multibyte(copy_arg(password)));
}

}  // namespace

extern "C" {

DSL_API DSL_RESULT DSL_CALL OracleVssInitLib(const DSL_WCHAR* logName, DSL_WCHAR** error) {
  if (CLibraryState::instance().initialised()) return DSL_S_OK;
  return guarded("Failed to initialize oracle VSS lib.", error, [&] {
    const std::u16string name = copy_arg(logName);
    // The name becomes a file in the data folder: nothing is touched before it is known to be
    // one bare file name.
    win::check_file_name(name, "Log name");
    ctx();
    common::install_file_hooks();
    logging::log_start(name, {});
    COracleManager::instance();
    const auto& config = specific::oracle::COracleConfig::get();
    config.dump();
    CLibraryState::instance().set_initialised();
  });
}

DSL_API DSL_RESULT DSL_CALL OracleVssStopLib(DSL_WCHAR** error) {
  return guarded("Failed to stop oracle VSS lib.", error,
                 [] { CLibraryState::instance().reset_gather_list(); });
}

DSL_API DSL_RESULT DSL_CALL OracleGatherVssInfo(void* /*reserved1*/, void* /*reserved2*/,
                                                DSL_WCHAR** xml, DSL_WCHAR** error) {
  return guarded("Failed to gather oracle info.", error, [&] {
    *xml = make_out_string(
        specific::oracle::gather_vss_info(CLibraryState::instance().gather_list()));
  });
}

DSL_API DSL_RESULT DSL_CALL OracleShouldSkipVssWriter(const DSL_WCHAR* sid, uint8_t* skip,
                                                      DSL_WCHAR** error) {
  return guarded("Failed to check if should skip VSS writer", error, [&] {
    const std::u16string copy = copy_arg(sid);
    *skip = CVssState::instance().should_skip(copy) ? 1 : 0;
  });
}

DSL_API DSL_RESULT DSL_CALL OracleCheckVssFunctionality(uint8_t* ok, DSL_WCHAR** error) {
  return guarded("Failed to check VSS functionality.", error,
                 [&] { *ok = CVssState::instance().check_vss_functionality() ? 1 : 0; });
}

DSL_API void DSL_CALL OracleLibStrFree(void* text) { std::free(text); }

DSL_API DSL_RESULT DSL_CALL OracleExploreInstances(uint8_t collect, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password,
                                                   const DSL_WCHAR* configXml, DSL_WCHAR** xml,
                                                   DSL_WCHAR** error) {
  return guarded("Failed to explore oracle instances.", error, [&] {
    const std::u16string config = copy_arg(configXml);
    const conn_t conn = make_conn(user, password);
    *xml = make_out_string(COracleManager::instance().explore(collect != 0, conn, config));
  });
}

DSL_API DSL_RESULT DSL_CALL OracleBackupLogs(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                             const DSL_WCHAR* usn, const DSL_WCHAR* lastRecId,
                                             const DSL_WCHAR* user, const DSL_WCHAR* password,
                                             DSL_WCHAR** xml, DSL_WCHAR** error) {
  return guarded("Failed to backup oracle logs.", error, [&] {
    const std::u16string h = copy_arg(home), s = copy_arg(sid), u = copy_arg(usn),
                         r = copy_arg(lastRecId);
    const conn_t conn = make_conn(user, password);
    *xml = make_out_string(COracleManager::instance().backup_logs(h, s, u, r, conn));
  });
}

DSL_API DSL_RESULT DSL_CALL OracleEnumLogs(DSL_WCHAR** xml, DSL_WCHAR** error) {
  return guarded("Failed to enum oracle logs.", error,
                 [&] { *xml = make_out_string(COracleManager::instance().enum_logs()); });
}

DSL_API DSL_RESULT DSL_CALL OraclePrepareDbsForBackup(const DSL_WCHAR* configXml,
                                                      const DSL_WCHAR* user,
                                                      const DSL_WCHAR* password,
                                                      const DSL_WCHAR* osUser,
                                                      const DSL_WCHAR* osPassword,
                                                      DSL_WCHAR** xml, DSL_WCHAR** error) {
  return guarded("Failed to prepare dbs for backup", error, [&] {
    const std::u16string config = copy_arg(configXml), os_user = copy_arg(osUser),
                         os_password = copy_arg(osPassword);
    const conn_t conn = make_conn(user, password);
    *xml = make_out_string(COracleManager::instance().prepare(config, conn, os_user, os_password));
  });
}

DSL_API DSL_RESULT DSL_CALL OracleFinishDbsBackup(const DSL_WCHAR* dbPrepareXml,
                                                  const DSL_WCHAR* user,
                                                  const DSL_WCHAR* password, DSL_WCHAR** error) {
  return guarded("Failed to finish dbs backup", error, [&] {
    const std::u16string document = copy_arg(dbPrepareXml);
    const conn_t conn = make_conn(user, password);
    COracleManager::instance().finish(document, conn);
  });
}

DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsByTime(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   int32_t minutes, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error) {
  return guarded("Failed to delete oracle logs by time", error, [&] {
    const std::u16string h = copy_arg(home), s = copy_arg(sid);
    const conn_t conn = make_conn(user, password);
    COracleManager::instance().delete_logs_by_time(h, s, minutes, conn);
  });
}

DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsBySize(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   uint64_t size, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error) {
  return guarded("Failed to delete oracle logs by size", error, [&] {
    const std::u16string h = copy_arg(home), s = copy_arg(sid);
    const conn_t conn = make_conn(user, password);
    COracleManager::instance().delete_logs_by_size(h, s, size, conn);
  });
}

DSL_API DSL_RESULT DSL_CALL OracleRemoveLogsInTemp(const DSL_WCHAR* logsXml, DSL_WCHAR** error) {
  return guarded("Failed to remove oracle logs.", error, [&] {
    const std::u16string list = copy_arg(logsXml);
    COracleManager::instance().remove_logs_in_temp(list);
  });
}

DSL_API DSL_RESULT DSL_CALL OracleIsRestoreRequired(uint8_t* required, DSL_WCHAR** error) {
  return guarded("Failed to check if restore required", error,
                 [&] { *required = COracleManager::instance().restore_required() ? 1 : 0; });
}

DSL_API DSL_RESULT DSL_CALL OracleDoRestore(DSL_WCHAR** error) {
  return guarded("Failed to do oracle restore", error,
                 [] { COracleManager::instance().do_restore(); });
}

DSL_API DSL_RESULT DSL_CALL OracleGetLogsFolder(DSL_WCHAR** folder, DSL_WCHAR** error) {
  return guarded("Failed to get oracle logs folder.", error,
                 [&] { *folder = make_out_string(COracleManager::instance().logs_folder()); });
}

DSL_API DSL_RESULT DSL_CALL OracleTest(void* /*reserved1*/, void* /*reserved2*/,
                                       const DSL_WCHAR* logName, DSL_WCHAR** error) {
  const DSL_RESULT named = guarded("Failed to test oracle.", error, [&] {
    win::check_file_name(copy_arg(logName), "Log name");
  });
  if (named != DSL_S_OK) return named;
  const DSL_RESULT init = OracleVssInitLib(logName, error);
  if (static_cast<int32_t>(init) < 0) return init;
  const DSL_RESULT tested =
      guarded("Failed to test oracle.", error, [] { COracleManager::instance().test(); });
  if (tested != DSL_S_OK) return tested;
  return OracleVssStopLib(error);
}

}  // extern "C"
