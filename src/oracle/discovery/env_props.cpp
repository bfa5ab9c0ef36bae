#include "oracle/discovery/env_props.h"

#include "common/exc/rethrow.h"
#include "common/logging/log_step.h"
#include "oracle/discovery/env_props_sys.h"

namespace specific::oracle {

int32_t current_bias_minutes(const STimeZoneBias& zone) {
  switch (zone.result) {
    case kTimeZoneIdUnknown:
      return zone.bias;
    case kTimeZoneIdStandard:
      return zone.bias + zone.standardBias;
    case kTimeZoneIdDaylight:
      return zone.bias + zone.daylightBias;
    default:
      return 0;
  }
}

int32_t time_zone_quarters(int32_t biasMinutes) {
  // Integer division truncates toward zero, which is the rule.
  return -biasMinutes / 15;
}

std::shared_ptr<CEnvProps> collect_env_props() {
  try {
    logging::log_step_t step(logging::oralib(), "Collecting environment properties");
    auto env = std::make_shared<CEnvProps>();
    env->serverName = env_sys::computer_fqdn();
    env->osName = env_sys::os_name();
    env->timeZone = time_zone_quarters(current_bias_minutes(env_sys::time_zone_bias()));
    step.ok();
    return env;
  } catch (const std::exception& e) {
    exc::rethrow_with_context("Failed to collect environment properties", e);
  }
}

}  // namespace specific::oracle
