#include "oracle/discovery/vss_state.h"

#include <vector>

#include "common/logging/log_step.h"

namespace specific::oracle {

CVssState& CVssState::instance() {
  static CVssState state;
  return state;
}

bool CVssState::check_vss_functionality() {
  return check_vss_functionality(default_vss_check_probes());
}

bool CVssState::check_vss_functionality(const SVssCheckProbes& probes) {
  if (vssMustBeEnabled_) return *vssMustBeEnabled_;
  logging::log_step_t step(logging::oralib(), "Checking if oracle VSS must be disabled");
  bool result = true;
  const std::vector<SOracleSid> instances = probes.instances();
  for (const SOracleSid& instance : instances) {
    if (instance.isAsm) continue;
    if (probes.database(instance)) continue;
    // The database is open but not active, or did not answer in time: its own writer would
    // take part in the snapshot unless its service is down.
    if (probes.writer(instance.sid)) {
      result = false;
      break;
    }
  }
  set_vss_must_be_enabled(result);
  logging::oralib().info("VSS must be %1", result ? "enabled" : "disabled");
  step.ok();
  return result;
}

}  // namespace specific::oracle
