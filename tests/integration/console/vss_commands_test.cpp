// The VSS commands of the host on the test run's machine, which has no Oracle at all: each one
// answers, and prints what the library answers there.
#include <gtest/gtest.h>

#include "console_fixture.h"

namespace console_test {
namespace {

class VssCommands : public console_test_t {};

TEST_F(VssCommands, CheckVssOnAMachineWithoutOraclePrintsTrue) {
  const process_result_t run = host({"check-vss"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "true\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(VssCommands, ShouldSkipWriterWithNothingSkippedPrintsFalse) {
  const process_result_t run = host({"should-skip-writer", "ORCL"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "false\n");
}

TEST_F(VssCommands, GatherVssInfoOnAMachineWithoutOraclePrintsAnEmptyList) {
  const process_result_t run = host({"gather-vss-info"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "<OracleEntries />\n");
}

}  // namespace
}  // namespace console_test
