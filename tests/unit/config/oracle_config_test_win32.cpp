// A key this process may not read gives the warning, and the defaults stand.
#include <gtest/gtest.h>

#include "config/oracle_config.h"
#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace {

TEST(OracleConfigOnWindows, AnUnreadableKeyLogsTheWarningAndKeepsTheDefaults) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("config_full_machine.reg"));
  machine.make_unreadable(u"SOFTWARE\\Trelo\\Trelo Safekeep");
  dsl_test::capture_log_t capture;
  specific::oracle::COracleConfig c;
  c.load_defaults();
  c.load_registry();
  EXPECT_EQ(c.connectionTimeoutSec, 300u);
  EXPECT_FALSE(c.supportOracle10);
  const auto lines = capture.bodies();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "oralib| WARN|Failed to init oracle config");
  bool names_the_key = false;
  for (const auto& l : lines) {
    names_the_key |= l.find("Failed to open subkey. Path: [SOFTWARE\\Trelo\\Trelo Safekeep].") !=
                     std::string::npos;
  }
  EXPECT_TRUE(names_the_key);
}

}  // namespace
