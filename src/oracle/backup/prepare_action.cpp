#include "oracle/backup/prepare_action.h"

namespace specific::oracle {

const char* action_name(uint32_t action) {
  switch (action) {
    case kActionFailure: return "failure";
    case kActionInactive: return "inactive";
    case kActionBackup: return "backup";
    case kActionShutdown: return "shutdown";
    case kActionVss: return "vss";
    case kActionOracleSkipVss: return "oracleSkipVss";
    case kActionOracleNoAction: return "oracleNoAction";
    default: return "unknown";
  }
}

}  // namespace specific::oracle
