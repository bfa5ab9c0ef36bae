#include "oracle/discovery/vss_probes.h"

#include <cstdint>
#include <memory>
#include <stdexcept>

#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "common/win/svc_manager.h"
#include "oracle/client/conn.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/oracle_homes.h"

namespace specific::oracle {

SVssCheckProbes default_vss_check_probes() {
  return SVssCheckProbes{discover_instances, probe_database, probe_writer};
}

std::vector<SOracleSid> discover_instances() {
  const COracleHomes homes;
  return std::vector<SOracleSid>(homes.begin(), homes.end());
}

bool probe_database(const SOracleSid& instance) {
  try {
    COracleSessionHolder holder(instance.sid, instance.home, conn_t(), /*prelimAuth=*/false);
    const std::shared_ptr<COracleSession> session = holder.get_session();
    if (!session->is_instance_open(/*assumeOpen=*/false)) return true;
    return session->is_database_active();
  } catch (const COracleInitTimeoutExc& e) {
    exc::log_error(logging::oralib(), "Failed create oracle session: timeout. Sid: %1",
                   util::to_multibyte_safe(instance.sid), e);
    return false;
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), "Failed to check if oracle db is active, sid: %1",
                   util::to_multibyte_safe(instance.sid), e);
    return true;
  }
}

std::u16string vss_writer_service_name(const std::u16string& sid) {
  return u"OracleVssWriter" + sid;
}

bool probe_writer(const std::u16string& sid) {
  const char kFailure[] = "Failed to check if VSS oracle writer service enabled, sid: %1";
  try {
    const std::u16string name = vss_writer_service_name(sid);
    win::win_svc_t service(std::make_shared<win::win_scm_t>());
    service.open(name);
    const uint32_t state = service.state();
    logging::oralib().info("Found service: %1, status: %2", util::to_multibyte_safe(name),
                           util::to_str(state));
    return state != win::kServiceStopped && state != win::kServicePaused;
  } catch (const std::exception& e) {
    exc::log_error(logging::oralib(), kFailure, util::to_multibyte_safe(sid), e);
    return false;
  } catch (const char* text) {
    // The service wrappers throw plain texts for misuse; the probe swallows them all the same.
    exc::log_error(logging::oralib(), kFailure, util::to_multibyte_safe(sid),
                   std::runtime_error(text != nullptr ? text : ""));
    return false;
  }
}

}  // namespace specific::oracle
