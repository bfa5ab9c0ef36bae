#include "oracle/discovery/vss_gather.h"

#include <memory>

#include "common/exc/exc_log.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "oracle/client/conn.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/vss_entries_doc.h"
#include "oracle/discovery/vss_probes.h"

namespace specific::oracle {

SVssInfoEntry probe_vss_info(const SOracleSid& instance) {
  SVssInfoEntry entry;
  entry.sid = instance.sid;
  entry.home = instance.home;
  entry.homeName = instance.homeName;
  try {
    COracleSessionHolder holder(instance.sid, instance.home, conn_t(), /*prelimAuth=*/false);
    const std::shared_ptr<COracleSession> session = holder.get_session();
    entry.instanceOpen = session->is_instance_open(/*assumeOpen=*/false);
    if (entry.instanceOpen) {
      entry.dbActive = session->is_database_active();
      session->get_database_options(entry.dbOpenReadonly, entry.dbArchiveLogsOn);
      entry.dbName = session->get_database_name();
    }
    entry.valid = true;
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to gather VSS info, sid: %1",
                  util::to_multibyte_safe(instance.sid), e);
    SVssInfoEntry failed;
    failed.sid = instance.sid;
    failed.home = instance.home;
    failed.homeName = instance.homeName;
    failed.error = util::to_unicode_safe(e.what() != nullptr ? e.what() : "");
    return failed;
  }
  return entry;
}

vss_info_list_t collect_vss_info(const std::vector<SOracleSid>& instances,
                                 const vss_info_probe_t& probe) {
  vss_info_list_t list;
  for (const SOracleSid& instance : instances) {
    if (!instance.isAsm) list.push_back(probe(instance));
  }
  return list;
}

std::u16string gather_vss_info(vss_info_list_ptr_t& list) {
  return gather_vss_info(list, discover_instances, probe_vss_info);
}

std::u16string gather_vss_info(vss_info_list_ptr_t& list,
                               const std::function<std::vector<SOracleSid>()>& instances,
                               const vss_info_probe_t& probe) {
  if (!list) {
    logging::log_step_t step(logging::oralib(), "Gathering oracle VSS info");
    auto filled = std::make_shared<vss_info_list_t>(collect_vss_info(instances(), probe));
    list = filled;
    step.ok();
  }
  return render_vss_entries(*list);
}

}  // namespace specific::oracle
