// The database collector: fills one CDatabaseProps from an open, active database instance over
// its session. The steps run in a fixed order; a step's failure either ends the collection
// ("Failed to gather database properties." over the cause) or is logged and the step's field
// keeps its default. Which is which is written at each step below.
#include <memory>
#include <string>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/db_info_collector_rules.h"
#include "oracle/discovery/explore_db_config.h"
#include "oracle/discovery/ora_sid_collector.h"
#include "oracle/discovery/parameter_files.h"
#include "oracle/discovery/single_values.h"
#include "oracle/logs/asm_file_ops.h"

namespace specific::oracle {

namespace {

using session_ptr_t = std::shared_ptr<COracleSession>;

std::string narrow(const std::u16string& text) { return util::to_multibyte(text); }

void gather_file_list(const session_ptr_t& session, const char* sql, db_file_list_t& list) {
  auto result = session->make_query()->exec(sql, 2, false);
  while (auto row = result->next_row()) {
    if (row->size() != 2) {
      logging::oralib().warn("Failed to get file properties. Result is incorrect.");
      continue;
    }
    list.push_back(std::make_shared<CDbFileProps>((*row)[0], (*row)[1]));
  }
}

// Fatal: a database whose files cannot be listed cannot be backed up.
void gather_database_files(const session_ptr_t& session, CDatabaseProps& props) {
  logging::log_step_t step(logging::oralib(), "Gathering database files");
  gather_file_list(session, collect_sql::kLogFiles, props.logFiles);
  gather_file_list(session, collect_sql::kDataFiles, props.dataFiles);
  gather_file_list(session, collect_sql::kTempFiles, props.tempFiles);
  gather_file_list(session, collect_sql::kControlFiles, props.controlFiles);
  step.ok();
}

// Fatal, as "Failed to gather log files groups".
void gather_log_groups(const session_ptr_t& session, CDatabaseProps& props) {
  try {
    logging::log_step_t step(logging::oralib(), "Gathering log files groups");
    auto result = session->make_query()->exec(collect_sql::kLogGroups, 2, false);
    while (auto row = result->next_row()) {
      if (row->size() != 2) continue;
      props.logGroups[(*row)[0]] = narrow((*row)[1]);
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to gather log files groups", e);
  }
}

// Version 12 and later may be container databases; a failure counts as "no".
bool is_container_database(const session_ptr_t& session) {
  try {
    if (!session->is_version_12_or_higher()) session->read_version();
    if (!*session->is_version_12_or_higher()) return false;
    return session->make_query()->single_value(collect_sql::kIsCdb, true) == u"YES";
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to check if database is pluggable", e);
    return false;
  }
}

// Logged only: the rows read so far stay.
void gather_pdbs(const session_ptr_t& session, CDatabaseProps& props) {
  if (!is_container_database(session)) return;
  try {
    auto result = session->make_query()->exec(collect_sql::kPdbs, 2, false);
    while (auto row = result->next_row()) {
      if (row->size() != 2) continue;
      props.pdbs.push_back(SPdbProps{(*row)[0], (*row)[1]});
    }
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Unable to gather plugged databases", e);
  }
}

// The current log is archived first, so that the list holds everything up to now; archiving
// the rest is a courtesy whose failure ("nothing to archive" is usual) is only logged.
void flush_archived_logs(const session_ptr_t& session) {
  logging::log_step_t step(logging::oralib(), "Flushing archived logs");
  try {
    session->make_query()->run(collect_sql::kArchiveCurrent);
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to archive logs current", e);
  }
  try {
    session->make_query()->run(collect_sql::kArchiveAll);
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to archive logs all", e);
  }
  step.ok();
}

// A log whose existence cannot be told counts as existing.
bool archived_log_exists(const session_ptr_t& session, const std::u16string& path) {
  try {
    if (!is_asm_path(path)) return win::file_exists(path);
    if (!COracleConfig::get().checkAsmLogFileExistence) return true;
    return asm_file_exists(session, narrow(path));
  } catch (const std::exception& e) {
    logging::oralib().warn("Unable to check if log [%1] exists: %2", narrow(path), e.what());
    return true;
  }
}

// Fatal, as "Failed to gather archived logs".
void gather_archived_logs(const session_ptr_t& session, CDatabaseProps& props) {
  try {
    logging::log_step_t step(logging::oralib(), "Gathering archived logs");
    flush_archived_logs(session);
    auto result = session->make_query()->exec(archived_logs_sql(), 7, false);
    while (auto row = result->next_row()) {
      arch_log_ptr_t log = arch_log_from_row(*row);
      if (!log) continue;
      if (archived_log_exists(session, log->logPath)) props.archivedLogs.push_back(log);
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to gather archived logs", e);
  }
}

void gather_listeners(const session_ptr_t& session, CDatabaseProps& props) {
  auto result = session->make_query()->exec(collect_sql::kListeners, 2, false);
  while (auto row = result->next_row()) {
    apply_listener_row(*row, props.localListener, props.remoteListener);
  }
}

// Logged only: the answer is then false.
bool was_reverted(const session_ptr_t& session, const SDbLogRecInfo* record) {
  try {
    std::string sql;
    if (!reverted_check_sql(record, sql)) {
      if (record != nullptr && !record->recId.empty() && !record->stamp.empty()) {
        logging::oralib().warn(
            "Failed to check if db was reverted: record id [%1] or stamp [%2] is no number",
            narrow(record->recId), narrow(record->stamp));
      }
      return false;
    }
    return session->make_query()->single_value(sql, true).empty();
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to check if db was reverted", e);
    return false;
  }
}

void read_newest_log_record(const session_ptr_t& session, CDatabaseProps& props) {
  const oracle_row_t row = session->make_query()->first_row(collect_sql::kNewestLogRecord, 2, true);
  if (row.size() != 2) return;
  props.maxLogRecId = row[0];
  props.maxLogStamp = row[1];
}

}  // namespace

oracle_props_ptr_t CDbInfoCollector::Collect() {
  logging::log_step_t step(logging::oralib(), "Gathering database properties for SID: [%1]",
                           narrow(instance.sid));
  try {
    auto props = std::make_shared<CDatabaseProps>();
    const session_ptr_t session = holder->get_session();
    props->name = query_database_name(*holder);
    props->sid = instance.sid;
    session->get_database_options(props->isReadonly, props->archiveLogsOn);
    props->config = find_parameter_file(instance);
    props->pwdFilePath = get_password_file_location(*holder, instance);
    gather_database_files(session, *props);
    gather_log_groups(session, *props);
    gather_pdbs(session, *props);
    if (option) {
      if (props->archiveLogsOn) gather_archived_logs(session, *props);
      get_pfile_content(session, *props);
    }
    props->id = query_database_id(*holder);
    props->lastScn = query_current_scn(*holder);
    props->lastLogNum = query_last_log_sequence(*holder);
    const std::u16string uniqueName = query_unique_name(*holder);  // then the domain, in order
    props->globalName = global_name_of(uniqueName, query_domain(*holder));
    props->recoveryFileDest = query_recovery_area(*holder);
    gather_listeners(session, *props);
    if (props->archiveLogsOn) {
      props->reverted = was_reverted(session, logRecInfo.get());
      read_newest_log_record(session, *props);
    }
    step.ok();
    return props;
  } catch (const std::exception& e) {
    exc::rethrow_with_context("Failed to gather database properties.", e);
  }
}

}  // namespace specific::oracle
