// COracleConfig: the agent's settings, read once from the registry key
// HKLM\SOFTWARE\Trelo\Trelo Safekeep on first use and read-only afterwards. Building it never
// fails: whatever cannot be read keeps its default, and only the log says so. A change in the
// registry needs a new process.
#pragma once
#include <cstdint>
#include <string>

namespace specific::oracle {

class COracleConfig {
 public:
  // The one record, built at first use. Not locked: OracleVssInitLib builds it before any
  // other use.
  static const COracleConfig& get();

  // Writes the settings to the library log, one line each.
  void dump() const;

  uint32_t connectionTimeoutSec = 300;       // OracleConnectionTimeout
  uint32_t restoreWaitInSec = 45;            // OracleRestoreWaitInSec
  uint32_t agentTtlSec = 600;                // OracleAgentTtlSec
  uint32_t waitDbStartedAttemptCount = 30;   // OracleWaitDbStartedAttemptCount
  std::u16string tempLogPath;                // OracleTempLogPath
  bool checkAsmLogFileExistence = false;     // CheckAsmLogFileExistence
  bool supportOracle10 = false;              // SupportOracle10
  bool disableOracleProcessing = false;      // DisableOracleProcessing
  bool stageLogsBeforeBackup = false;        // OracleStageLogsBeforeBackup
  bool skipNoArchiveLogDb = false;           // OracleSkipNoArchiveLogDB

  // The two steps of building, exposed for tests: defaults with the derived temp path, then
  // the registry on top.
  void load_defaults();
  void load_registry();

  // Replaces the process's record. For tests that need another setting than the registry
  // gives, such as a short connection time-out; the product never calls it.
  static void replace_for_tests(const COracleConfig& config);
};

}  // namespace specific::oracle
