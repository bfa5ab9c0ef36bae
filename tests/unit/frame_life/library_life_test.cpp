// The life of the library in one process: the initialised flag is never set back, so these
// steps run in one test, in the order an agent could call them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DbShadowLink.h"
#include "common/logging/log_start.h"
#include "frame/library_state.h"
#include "support/capture_receiver.h"
#include "support/wide.h"

using dsl_test::W;

namespace {

DSL_WCHAR* const kUntouched = reinterpret_cast<DSL_WCHAR*>(0x1234);

TEST(LibraryLife, InitStopAndInitAgainFollowTheAgentsOrder) {
  using specific::oracle::frame::CLibraryState;
  ASSERT_FALSE(CLibraryState::instance().initialised()) << "this executable must start fresh";

  // Stop without init: 0, nothing written.
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  EXPECT_FALSE(CLibraryState::instance().initialised());

  // The first init starts the log under its name, dumps the configuration (no registry key
  // here: the defaults) and sets the flag.
  {
    dsl_test::capture_log_t capture;
    EXPECT_EQ(OracleVssInitLib(W(u"first.log"), &error), DSL_S_OK);
    const std::vector<std::string> expected = {
        "oralib| Oracle agent config:",
        "oralib| ConnectionTimeoutSec: 300",
        "oralib| OracleRestoreWaitInSec: 45",
        "oralib| OracleAgentTtlSec: 600",
        "oralib| WaitDbStartedAttemptCount: 30",
        "oralib| CheckAsmLogFileExistence: false",
        "oralib| SupportOracle10: false",
        "oralib| OracleStageLogsBeforeBackup: false",
        "oralib| DisableOracleProcessing: false",
        "oralib| OracleSkipNoArchiveLogDB: false",
        "oralib| OracleTempLogPath: C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup\\",
        "oralib| =======================",
    };
    EXPECT_EQ(capture.bodies(), expected);
  }
  EXPECT_EQ(error, kUntouched);
  EXPECT_TRUE(CLibraryState::instance().initialised());
  EXPECT_EQ(logging::started_log_name(), u"first.log");

  // A second init returns at once: no line, no new log, error untouched.
  {
    dsl_test::capture_log_t capture;
    EXPECT_EQ(OracleVssInitLib(W(u"second.log"), &error), DSL_S_OK);
    EXPECT_TRUE(capture.receiver().writes().empty());
  }
  EXPECT_EQ(error, kUntouched);
  EXPECT_EQ(logging::started_log_name(), u"first.log");

  // Stop keeps the flag; a later init does no work and keeps the first log.
  EXPECT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_TRUE(CLibraryState::instance().initialised());
  EXPECT_EQ(OracleVssInitLib(W(u"third.log"), &error), DSL_S_OK);
  EXPECT_EQ(logging::started_log_name(), u"first.log");
  EXPECT_EQ(error, kUntouched);
}

}  // namespace
