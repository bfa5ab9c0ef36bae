#include "oracle/client/env_variable.h"

#include "common/exc/exc_base.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"

namespace specific::oracle {

void set_env_variable(const std::u16string& name, const std::u16string& value) {
  const std::string assignment = util::to_multibyte(name + u"=" + value);
  logging::oralib().info("Setting env variable: %1", assignment);
  if (!put_env_assignment(assignment)) {
    throw exc::runtime_exc_t("Failed to set env variable: %1", assignment);
  }
}

}  // namespace specific::oracle
