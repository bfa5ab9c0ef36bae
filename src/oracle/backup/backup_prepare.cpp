#include "oracle/backup/backup_prepare.h"

#include <tinyxml.h>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/oracle_homes.h"
#include "oracle/discovery/single_values.h"
#include "oracle/discovery/vss_state.h"

namespace specific::oracle {

const char* const kSqlPdbs = "SELECT NAME, OPEN_MODE FROM V$PDBS";
const char* const kSqlCdb = "SELECT CDB FROM V$DATABASE";
const char* const kSqlBackupStatus = "SELECT STATUS FROM V$BACKUP";
const char* const kSqlBeginBackup = "ALTER DATABASE BEGIN BACKUP";

namespace {

const char16_t kTempSidPrefix[] = u"TreloTmp";

const char* flag(bool value) { return value ? "true" : "false"; }

std::string narrow_sid(const std::u16string& sid) { return util::to_utf8(sid); }

bool version_12_or_higher(COracleSession& session) {
  if (!session.is_version_12_or_higher()) session.read_version();
  return *session.is_version_12_or_higher();
}

bool version_below_11(COracleSession& session) {
  if (!session.is_version_below_11()) session.read_version();
  return *session.is_version_below_11();
}

bool is_container(const COracleSessionHolder& holder) {
  return holder.make_query()->single_value(kSqlCdb, /*upperCase=*/true) == u"YES";
}

// The pluggable check, once known, for the collection of plugged databases.
struct pluggable_t {
  bool known = false;
  bool value = false;
};

bool should_skip(const COracleSessionHolder& holder, const std::u16string& sid, bool active,
                 bool archiveLog, pluggable_t& pluggableOut) {
  logging::log_step_t step(logging::oralib(), "Checking if should skip db from VSS, sid: %1",
                           narrow_sid(sid));
  COracleSession& session = *holder.get_session();
  const bool version12 = version_12_or_higher(session);
  const bool locatedOnAsm = session.is_control_file_on_asm();
  const bool pluggable = version12 && is_container(holder);
  pluggableOut.known = true;
  pluggableOut.value = pluggable;
  const bool keep = !locatedOnAsm && !(pluggable && version12) && active && archiveLog;
  const bool skip = !keep;
  const auto& log = logging::oralib();
  log.info("Database settings:");
  log.info("Version 12 or higher: %1", flag(version12));
  log.info("Active: %1", flag(active));
  log.info("Archivelog: %1", flag(archiveLog));
  log.info("Pluggable: %1", flag(pluggable));
  log.info("Located on ASM: %1", flag(locatedOnAsm));
  log.info("Skip from VSS: %1", flag(skip));
  step.ok();
  return skip;
}

// Whether Oracle's VSS writer may keep this database; may add the SID to vssSkipSids.
bool writer_state(const COracleSessionHolder& holder, const std::u16string& sid,
                  const sid_set_t& vssWriterSids, bool archiveLog, pluggable_t& pluggable) {
  bool enabled = vssWriterSids.count(upper_sid(sid)) != 0;
  logging::oralib().info("VSS writer for SID %1 is %2", narrow_sid(sid),
                         enabled ? "enabled" : "disabled");
  const bool active = holder.get_session()->is_database_active();
  if (enabled && should_skip(holder, sid, active, archiveLog, pluggable)) {
    CVssState::instance().add_skip_sid(sid);
    enabled = false;
  }
  return enabled;
}

void collect_pdbs(const COracleSessionHolder& holder, pluggable_t pluggable,
                  std::vector<SPdbInfo>& pdbs) {
  try {
    if (!pluggable.known) {
      // The writer's test did not run: make the same check here (see the header).
      pluggable.known = true;
      pluggable.value = version_12_or_higher(*holder.get_session()) && is_container(holder);
    }
    if (!pluggable.value) return;
    const auto result = holder.make_query()->exec(kSqlPdbs, 2, /*upperCase=*/true);
    while (const auto row = result->next_row()) {
      if (row->size() != 2) continue;
      const std::u16string& mode = (*row)[1];
      // A plugged database in any other mode, MOUNTED above all, is not reopened later.
      if (mode == u"READ ONLY" || mode == u"READ WRITE" || mode == u"MIGRATE") {
        pdbs.push_back(SPdbInfo{(*row)[0], mode});
      }
    }
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to gather plugged dbs info", e);
  }
}

void switch_to_backup_state(const COracleSessionHolder& holder) {
  logging::log_step_t step(logging::oralib(), "Switching database to backup state");
  const auto query = holder.make_query();
  const auto result = query->exec(kSqlBackupStatus, 1, /*upperCase=*/true);
  while (const auto row = result->next_row()) {
    if (!row->empty() && (*row)[0] == u"ACTIVE") {
      // One file in backup state counts for the whole database, and the finish will end it.
      logging::oralib().info("Database already in backup state");
      step.ok();
      return;
    }
  }
  query->run(kSqlBeginBackup);
  step.ok();
}

uint32_t no_processing_action(bool archiveLog) {
  return archiveLog ? kActionOracleNoAction : kActionOracleSkipVss;
}

}  // namespace

std::u16string upper_sid(const std::u16string& sid) {
  std::u16string result = sid;
  for (char16_t& c : result) {
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
  }
  return result;
}

sid_set_t CDbsBackupPrepare::parse_writer_sids(const std::u16string& configXml) {
  sid_set_t sids;
  if (configXml.empty()) return sids;
  const xml::xml_doc_ptr_t doc = xml::parse(util::to_utf8(configXml));
  const xml::xml_node_ref_t root = xml::child(xml::root_ref(doc), "databases");
  for (xml::xml_node_ref_t c = xml::first_child(root); c; c = xml::next_sibling(c)) {
    if (c.node->ToElement() == nullptr) continue;
    sids.insert(upper_sid(util::from_utf8(xml::attr(c, "sid"))));
  }
  return sids;
}

void CDbsBackupPrepare::prepare_one(SDbPrepareContext& context, sid_set_t vssWriterSids,
                                    const conn_t& conn) {
  const SOracleSid& sid = *context.sid;
  logging::log_step_t step(logging::oralib(), "Prepare db for backup. Sid: %1",
                           narrow_sid(sid.sid));
  try {
    const auto holder = COracleSessionHolder::create(sid.sid, sid.home, conn);
    if (!holder) {
      // The holder has logged why; the record stays "failure" without a text.
      step.ok();
      return;
    }
    COracleSession& session = *holder->get_session();
    if (!session.is_instance_open(sid.isAsm) || !session.is_database_active()) {
      context.action = kActionInactive;
      step.ok();
      return;
    }
    bool readOnly = false;
    bool archiveLog = false;
    session.get_database_options(readOnly, archiveLog);
    pluggable_t pluggable;
    const bool writerUsable =
        writer_state(*holder, sid.sid, vssWriterSids, archiveLog, pluggable);
    collect_pdbs(*holder, pluggable, context.pdbs);

    const COracleConfig& config = COracleConfig::get();
    if (config.disableOracleProcessing) {
      context.action = no_processing_action(archiveLog);
      step.ok();
      return;
    }
    if (version_below_11(session) && !config.supportOracle10) {
      context.action = no_processing_action(archiveLog);
      step.ok();
      return;
    }
    if (!archiveLog) {
      if (config.skipNoArchiveLogDb) {
        context.action = kActionOracleSkipVss;
      } else {
        // The action follows the shut-down: a failing one leaves "failure".
        session.shutdown();
        context.action = kActionShutdown;
      }
      step.ok();
      return;
    }
    if (writerUsable) {
      logging::oralib().info("Database is in correct state for VSS backup. Nothing to do.");
      context.action = kActionVss;
    } else {
      switch_to_backup_state(*holder);
      context.action = kActionBackup;
    }
    context.scn = query_current_scn(*holder);
    step.ok();
  } catch (const std::exception& e) {
    context.errMsg = util::to_unicode_safe(e.what());
    exc::log_error(logging::oralib(), "Failed to prepare db for backup. Sid: %1",
                   narrow_sid(sid.sid), e);
  }
}

std::u16string CDbsBackupPrepare::prepare_instances(const std::vector<SOracleSid>& instances,
                                                    const sid_set_t& vssWriterSids,
                                                    const conn_t& conn) {
  CDbsBackupXml::info_list_t infos;
  for (const SOracleSid& instance : instances) {
    if (instance.sid.compare(0, std::char_traits<char16_t>::length(kTempSidPrefix),
                             kTempSidPrefix) == 0) {
      continue;
    }
    if (instance.isAsm) continue;
    SDbPrepareContext context;
    context.sid = std::make_shared<SOracleSid>(instance);
    prepare_one(context, vssWriterSids, conn);
    auto info = std::make_shared<SDbPrepareInfo>();
    info->sid = context.sid->sid;
    info->home = context.sid->home;
    info->action = context.action;
    info->pdbs = context.pdbs;
    info->scn = context.scn;
    info->errMsg = context.errMsg;
    info->timeUtc = CDbsBackupXml::current_time_utc();
    infos.push_back(info);
  }
  return CDbsBackupXml::write_document(infos);
}

std::u16string CDbsBackupPrepare::prepare_all(const std::u16string& configXml,
                                              const conn_t& conn) {
  logging::log_step_t step(logging::oralib(), "Preparing dbs for backup");
  try {
    const sid_set_t vssWriterSids = parse_writer_sids(configXml);
    const COracleHomes homes;
    const std::vector<SOracleSid> instances(homes.begin(), homes.end());
    std::u16string document = prepare_instances(instances, vssWriterSids, conn);
    step.ok();
    return document;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to prepare dbs for backup", e);
  }
}

}  // namespace specific::oracle
