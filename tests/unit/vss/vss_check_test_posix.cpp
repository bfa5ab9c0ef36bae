// The VSS check with the library's own probes when discovery fails: the host build's registry
// file that does not parse makes every key open fail, which Windows has no way to bring about.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "oracle/discovery/vss_state.h"
#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace {

TEST(VssCheckDiscovery, FailedDiscoveryFailsTheCheckWithItsTextAndLeavesTheCacheEmpty) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("registry_broken_machine.reg"));
  specific::oracle::CVssState state;
  dsl_test::capture_log_t log;
  std::string text;
  try {
    state.check_vss_functionality();
    ADD_FAILURE() << "the check did not fail";
  } catch (const exc::exc_base_t& e) {
    text = e.what();
  }
  EXPECT_NE(text.find("Failed to create oracle homes."), std::string::npos) << text;
  EXPECT_FALSE(state.vss_must_be_enabled());
  const auto lines = dsl_test::plain_log(log);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "Checking if oracle VSS must be disabled");
  EXPECT_EQ(lines.back(), "Checking if oracle VSS must be disabled Failed.");
}

}  // namespace
