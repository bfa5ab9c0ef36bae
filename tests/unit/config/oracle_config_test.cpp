// The agent's settings from the registry: defaults, every value read, values of the wrong
// kind, and what the log says.
#include "config/oracle_config.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/capture_receiver.h"
#include "support/reg_machine.h"

using specific::oracle::COracleConfig;

namespace {

const char16_t kDefaultPath[] = u"C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup\\";

COracleConfig built() {
  COracleConfig config;
  config.load_defaults();
  config.load_registry();
  return config;
}

void expect_defaults(const COracleConfig& c) {
  EXPECT_EQ(c.connectionTimeoutSec, 300u);
  EXPECT_EQ(c.restoreWaitInSec, 45u);
  EXPECT_EQ(c.agentTtlSec, 600u);
  EXPECT_EQ(c.waitDbStartedAttemptCount, 30u);
  EXPECT_EQ(c.tempLogPath, kDefaultPath);
  EXPECT_FALSE(c.checkAsmLogFileExistence);
  EXPECT_FALSE(c.supportOracle10);
  EXPECT_FALSE(c.disableOracleProcessing);
  EXPECT_FALSE(c.stageLogsBeforeBackup);
  EXPECT_FALSE(c.skipNoArchiveLogDb);
}

TEST(OracleConfig, WithoutTheKeyEverySettingIsItsDefaultAndNothingIsLogged) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("registry_values_machine.reg"));
  dsl_test::capture_log_t capture;
  expect_defaults(built());
  EXPECT_TRUE(capture.bodies().empty());
}

TEST(OracleConfig, EverySettingIsReadFromTheKey) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_full_machine.reg"));
  dsl_test::capture_log_t capture;
  const COracleConfig c = built();
  EXPECT_EQ(c.connectionTimeoutSec, 60u);
  EXPECT_EQ(c.restoreWaitInSec, 10u);
  EXPECT_EQ(c.agentTtlSec, 3600u);
  EXPECT_EQ(c.waitDbStartedAttemptCount, 5u);
  EXPECT_EQ(c.tempLogPath, u"D:\\Backup\\Logs\\");
  EXPECT_TRUE(c.checkAsmLogFileExistence);
  EXPECT_TRUE(c.supportOracle10);
  EXPECT_TRUE(c.disableOracleProcessing);
  EXPECT_TRUE(c.stageLogsBeforeBackup);
  EXPECT_TRUE(c.skipNoArchiveLogDb);
  EXPECT_TRUE(capture.bodies().empty());
}

TEST(OracleConfig, ValuesOfTheWrongKindKeepTheirDefaultsWithoutALogLine) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_odd_values_machine.reg"));
  dsl_test::capture_log_t capture;
  const COracleConfig c = built();
  EXPECT_EQ(c.restoreWaitInSec, 45u) << "a REG_SZ where a number belongs";
  EXPECT_EQ(c.agentTtlSec, 600u) << "binary data where a number belongs";
  EXPECT_FALSE(c.disableOracleProcessing) << "a REG_SZ where a boolean belongs";
  EXPECT_TRUE(capture.bodies().empty());
}

TEST(OracleConfig, ABooleanOfTwoIsTrue) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_odd_values_machine.reg"));
  EXPECT_TRUE(built().supportOracle10);
}

TEST(OracleConfig, ATimeOutOfZeroIsTakenAsItStands) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_odd_values_machine.reg"));
  EXPECT_EQ(built().connectionTimeoutSec, 0u);
}

TEST(OracleConfig, ATempPathWithoutTrailingBackslashIsKeptAsItIs) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_odd_values_machine.reg"));
  EXPECT_EQ(built().tempLogPath, u"E:\\OracleLogs");
}

TEST(OracleConfig, TheDefaultPathLiesBelowTheCommonApplicationData) {
  COracleConfig c;
  c.load_defaults();
  EXPECT_EQ(c.tempLogPath, kDefaultPath);
}

TEST(OracleConfig, TheDumpWritesTwelveLinesInTheirOrder) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_full_machine.reg"));
  const COracleConfig c = built();
  dsl_test::capture_log_t capture;
  c.dump();
  const std::vector<std::string> expected = {
      "oralib| Oracle agent config:",
      "oralib| ConnectionTimeoutSec: 60",
      "oralib| OracleRestoreWaitInSec: 10",
      "oralib| OracleAgentTtlSec: 3600",
      "oralib| WaitDbStartedAttemptCount: 5",
      "oralib| CheckAsmLogFileExistence: true",
      "oralib| SupportOracle10: true",
      "oralib| OracleStageLogsBeforeBackup: true",
      "oralib| DisableOracleProcessing: true",
      "oralib| OracleSkipNoArchiveLogDB: true",
      "oralib| OracleTempLogPath: D:\\Backup\\Logs\\",
      "oralib| =======================",
  };
  EXPECT_EQ(capture.bodies(), expected);
}

TEST(OracleConfig, TheSharedRecordIsBuiltOnceAndCanBeReplacedForTests) {
  const COracleConfig& first = COracleConfig::get();
  EXPECT_EQ(&first, &COracleConfig::get());
  COracleConfig changed = first;
  changed.connectionTimeoutSec = 2;
  COracleConfig::replace_for_tests(changed);
  EXPECT_EQ(COracleConfig::get().connectionTimeoutSec, 2u);
}

}  // namespace
