#include "oracle/discovery/explore_flow.h"

#include <map>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "config/oracle_config.h"
#include "oracle/discovery/vss_state.h"

namespace specific::oracle {

const char16_t kTempSidPrefix[] = u"TreloTmp";

namespace {

const char kStateNotValid[] = "Oracle database instance state is not valid for property collection";

bool has_temp_prefix(const std::u16string& name) {
  return name.compare(0, std::char_traits<char16_t>::length(kTempSidPrefix), kTempSidPrefix) == 0;
}

CSidCollectionError collected(bool open) { return {false, open, false, std::string()}; }
CSidCollectionError skipped() { return {false, true, true, std::string()}; }
CSidCollectionError failure(bool open, std::string text) {
  return {true, open, false, std::move(text)};
}

}  // namespace

std::string render_explored_document(const xml::xml_doc_ptr_t& doc) { return xml::print(doc); }

std::u16string COracleExplorer::explore(bool option, const conn_t& conn,
                                        const std::u16string& configText) {
  try {
    SExploreContext context;
    context.option = option;
    context.conn = conn;
    context.config = CExploreDbConfig::parse(configText);
    const std::string text = render_explored_document(build_document(context));
    logging::oralib().info(text);
    // UTF-8, as the records wrote it (oracle_props.cpp).
    return util::from_utf8(text);
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to explore oracle instances.", e);
  }
}

xml::xml_doc_ptr_t COracleExplorer::build_document(const SExploreContext& context) {
  const std::vector<SOracleSid> instances = backend_.find_instances();
  if (instances.empty()) {
    // Nothing to describe: a bare root, without the machine's facts.
    const xml::xml_doc_ptr_t doc = xml::new_doc();
    xml::add_element(xml::root_ref(doc), "OracleOverall");
    return doc;
  }
  // By home name in plain code-unit order ("Zeta" before "alpha"); two homes with one name
  // make one group. Inside a group the discovery order stays.
  std::map<std::u16string, std::vector<SOracleSid>> groups;
  for (const SOracleSid& instance : instances) groups[instance.homeName].push_back(instance);

  COverallProps overall;
  for (const auto& [name, members] : groups) {
    auto home = std::make_shared<CHomeProps>(name);
    if (explore_home(context, *home, members)) overall.homes.push_back(std::move(home));
  }
  overall.env = backend_.environment();
  return overall.ToXml();
}

bool COracleExplorer::explore_home(const SExploreContext& context, CHomeProps& home,
                                   const std::vector<SOracleSid>& instances) {
  size_t collectedCount = 0;
  bool anySkipped = false;
  bool anyAsm = false;
  try {
    for (const SOracleSid& instance : instances) {
      // The library's own temporary instances are not the agent's business: not connected
      // to, not counted, not logged.
      if (has_temp_prefix(instance.sid)) continue;
      if (instance.isAsm) anyAsm = true;
      const CSidCollectionError outcome = collect_instance(context, home, instance);
      if (outcome.skipped) {
        anySkipped = true;
        continue;
      }
      if (!outcome.failed) ++collectedCount;
      // A failed ASM instance is told by the log alone.
      if (outcome.failed && !instance.isAsm) add_error_record(home, instance, outcome);
    }
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to gather props for oracle home", e);
  }
  // A home where nothing was collected goes when something in it was skipped or was ASM: the
  // agent has nothing of it to back up. Error records alone keep their home.
  return !(collectedCount == 0 && (anyAsm || anySkipped));
}

CSidCollectionError COracleExplorer::collect_instance(const SExploreContext& context,
                                                      CHomeProps& home,
                                                      const SOracleSid& instance) {
  const COracleConfig& config = COracleConfig::get();
  bool open = false;
  bool active = false;
  try {
    const std::unique_ptr<CExploreSession> session = backend_.connect(instance, context.conn);
    open = session->is_instance_open(instance.isAsm);
    if (open) active = session->is_database_active();
    if (open && active) {
      if (should_skip(*session, instance.isAsm)) {
        record_skipped_vss_state(*session);
        logging::oralib().info("Database (SID: %1) skipped from data collection",
                               util::to_utf8(instance.sid));
        return skipped();
      }
      if (home.version.empty()) {
        // The first collected instance of a home describes the home.
        home.version = session->instance_version();
        home.path = instance.home;
        home.desc = session->version_banner();
      }
      oracle_props_ptr_t props =
          session->collect(instance, context.config.find(instance.sid), context.option);
      home.instances.push_back(std::move(props));
      return collected(open);
    }
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to gather database props for SID: %1",
                   util::to_utf8(instance.sid), e);
    if (config.disableOracleProcessing) return skipped();
    const char* what = e.what();
    return failure(open, what != nullptr ? what : "");
  }
  if (config.disableOracleProcessing) return skipped();
  logging::oralib().error(kStateNotValid);
  return failure(open, kStateNotValid);
}

bool COracleExplorer::should_skip(CExploreSession& session, bool isAsm) {
  const COracleConfig& config = COracleConfig::get();
  if (config.disableOracleProcessing) return true;
  if (session.is_version_below_11() && !config.supportOracle10) return true;
  return !isAsm && has_temp_prefix(session.get_database_name());
}

void COracleExplorer::record_skipped_vss_state(CExploreSession& session) {
  // A skipped database without ARCHIVELOG cannot take part in Oracle's writer either.
  try {
    if (!session.archive_log_on()) CVssState::instance().add_skip_sid(session.sid());
  } catch (const std::exception& e) {
    exc::rethrow_with_context("Failed to set database VSS state", e);
  }
}

void COracleExplorer::add_error_record(CHomeProps& home, const SOracleSid& instance,
                                       const CSidCollectionError& outcome) {
  try {
    auto record = std::make_shared<CDatabaseProps>();
    record->isError = true;
    record->errorDescription = util::to_unicode(outcome.text);
    record->sid = instance.sid;
    record->config = backend_.parameter_file(instance);
    if (home.version.empty()) home.path = instance.home;
    home.instances.push_back(std::move(record));
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to fill error database props for SID: %1",
                   util::to_utf8(instance.sid), e);
  }
}

}  // namespace specific::oracle
