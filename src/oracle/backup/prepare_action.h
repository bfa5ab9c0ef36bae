// EDbPrepareAction: what the preparation did to one database, as the preparation document
// stores it (its number) and the log shows it (its name). Pure values, any thread.
#pragma once
#include <cstdint>
#include <string>

namespace specific::oracle {

enum EDbPrepareAction : uint32_t {
  kActionFailure = 0,         // preparation did not finish; the initial value
  kActionInactive = 1,        // instance not open or database not active; nothing done
  kActionBackup = 2,          // the database stands in hot-backup state
  kActionShutdown = 3,        // the database was shut down
  kActionVss = 4,             // Oracle's VSS writer looks after it; nothing done
  kActionOracleSkipVss = 5,   // nothing done; the database has no archive log
  kActionOracleNoAction = 6,  // nothing done; the database has an archive log
};

// "failure", "inactive", "backup", "shutdown", "vss", "oracleSkipVss", "oracleNoAction", and
// "unknown" for any other number.
const char* action_name(uint32_t action);

}  // namespace specific::oracle
