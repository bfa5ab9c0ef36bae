// A registry that cannot be read: on the host build, a store file that does not parse makes
// every open fail, which is the unreadable key of a Windows machine.
#include <gtest/gtest.h>

#include "config/oracle_config.h"
#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace {

TEST(OracleConfigOnHost, AnUnreadableKeyLogsTheWarningAndKeepsTheDefaults) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("registry_broken_machine.reg"));
  dsl_test::capture_log_t capture;
  specific::oracle::COracleConfig c;
  c.load_defaults();
  c.load_registry();
  EXPECT_EQ(c.connectionTimeoutSec, 300u);
  EXPECT_EQ(c.tempLogPath, u"C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup\\");
  const auto lines = capture.bodies();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "oralib| WARN|Failed to init oracle config");
  EXPECT_NE(lines.back().find("Failed to open subkey. Path: [SOFTWARE\\Trelo\\Trelo Safekeep]."),
            std::string::npos)
      << lines.back();
}

}  // namespace
