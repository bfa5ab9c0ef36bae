// Each command calls its export with the arguments it was given and reports exactly what the
// export answered. The reference is the same export called directly by the test, so these
// hold whether an operation succeeds or fails in this build of the library.
#include <gtest/gtest.h>

#include "console_fixture.h"

namespace console_test {
namespace {

using ExportCallsTest = console_test_t;

// A SID with Latin, CJK and a character outside the Basic Multilingual Plane, which must reach
// the library as a surrogate pair.
const std::string non_ascii_sid = "orcl-\xC3\x9C\xC3\xAF-\xE6\x97\xA5\xE6\x9C\xAC-\xF0\x9F\x98\x80";

TEST_F(ExportCallsTest, LogsFolderPrintsWhatTheExportGives) {
  const outcome_t direct = reference_t::instance().logs_folder();
  expect_run(host({"logs-folder"}), expected_text_run("logs-folder", "OracleGetLogsFolder", direct));
}

TEST_F(ExportCallsTest, EnumLogsPrintsWhatTheExportGives) {
  const outcome_t direct = reference_t::instance().enum_logs();
  expect_run(host({"enum-logs"}), expected_text_run("enum-logs", "OracleEnumLogs", direct));
}

TEST_F(ExportCallsTest, GatherVssInfoPrintsWhatTheExportGives) {
  const outcome_t direct = reference_t::instance().gather_vss_info();
  expect_run(host({"gather-vss-info"}),
             expected_text_run("gather-vss-info", "OracleGatherVssInfo", direct));
}

TEST_F(ExportCallsTest, CheckVssPrintsTheBooleanAsTrueOrFalse) {
  const outcome_t direct = reference_t::instance().check_vss();
  expect_run(host({"check-vss"}),
             expected_boolean_run("check-vss", "OracleCheckVssFunctionality", direct));
}

TEST_F(ExportCallsTest, RestoreRequiredPrintsTheBooleanAsTrueOrFalse) {
  const outcome_t direct = reference_t::instance().restore_required();
  expect_run(host({"restore-required"}),
             expected_boolean_run("restore-required", "OracleIsRestoreRequired", direct));
}

TEST_F(ExportCallsTest, ShouldSkipWriterPassesANonAsciiSidThrough) {
  const outcome_t direct = reference_t::instance().should_skip_writer(non_ascii_sid);
  expect_run(host({"should-skip-writer", non_ascii_sid}),
             expected_boolean_run("should-skip-writer", "OracleShouldSkipVssWriter", direct));
}

TEST_F(ExportCallsTest, ShouldSkipWriterTakesASidThatStartsWithADashAfterTwoDashes) {
  const outcome_t direct = reference_t::instance().should_skip_writer("-ORCL");
  expect_run(host({"should-skip-writer", "--", "-ORCL"}),
             expected_boolean_run("should-skip-writer", "OracleShouldSkipVssWriter", direct));
}

TEST_F(ExportCallsTest, FinishPassesTheDocumentFileAndTheLoginThrough) {
  const std::string document = "<dbPrepare><database sid=\"\xC3\x84\" /></dbPrepare";
  const std::string file = write_file("prepared.xml", document);
  const outcome_t direct = reference_t::instance().finish(document, "backup", "s3cret");
  expect_run(host({"finish", "--document", file, "--user", "backup", "--password", "s3cret"}),
             expected_plain_run("finish", "OracleFinishDbsBackup", direct));
}

TEST_F(ExportCallsTest, FinishReadsTheDocumentFromStandardInput) {
  const std::string document = "<dbPrepare><unclosed></dbPrepare>";
  const outcome_t direct = reference_t::instance().finish(document, "", "");
  expect_run(host({"finish", "--document", "-"}, document),
             expected_plain_run("finish", "OracleFinishDbsBackup", direct));
}

TEST_F(ExportCallsTest, ByteOrderMarkOfAnInputFileIsNotPassedOn) {
  const std::string list = "<archived_logs><log path=\"C:\\\xE6\x97\xA5.arc\"";
  const std::string file = write_file("list.xml", "\xEF\xBB\xBF" + list);
  const outcome_t direct = reference_t::instance().remove_logs(list);
  expect_run(host({"remove-logs", "--list", file}),
             expected_plain_run("remove-logs", "OracleRemoveLogsInTemp", direct));
}

TEST_F(ExportCallsTest, InputFileWithANonAsciiNameIsRead) {
  const std::string list = "<archived_logs";
  const std::string file = write_file("liste-\xC3\xA9t\xC3\xA9-\xE6\x97\xA5.xml", list);
  const outcome_t direct = reference_t::instance().remove_logs(list);
  expect_run(host({"remove-logs", "--list", file}),
             expected_plain_run("remove-logs", "OracleRemoveLogsInTemp", direct));
}

TEST_F(ExportCallsTest, ExplorePassesItsConfigFileThrough) {
  const std::string config = "<explore><database sid=\"ORCL\" recId=\"3\"";
  const std::string file = write_file("explore-config.xml", config);
  const outcome_t direct = reference_t::instance().explore(false, "", "", config);
  expect_run(host({"explore", "--config", file}),
             expected_text_run("explore", "OracleExploreInstances", direct));
}

TEST_F(ExportCallsTest, ExploreWithCollectAndLoginPassesThemThrough) {
  const std::string config = "<explore";
  const std::string file = write_file("explore-config.xml", config);
  const outcome_t direct = reference_t::instance().explore(true, "sys", "pw", config);
  expect_run(
      host({"explore", "--collect", "--user", "sys", "--password", "pw", "--config", file}),
      expected_text_run("explore", "OracleExploreInstances", direct));
}

TEST_F(ExportCallsTest, TestCommandEndsWithoutWaitingForAKey) {
  // OracleTest may pause for a person at a console; the host's standard input is empty, so
  // the run must end on its own. It reports like any export.
  const process_result_t run = host({"--log-name", "console-test-command.log", "test"});
  EXPECT_FALSE(run.timed_out);
  if (run.exit_code != 0) {
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err.rfind("dbshadowlink: test: OracleTest failed with 0x80004005:\n", 0), 0u)
        << run.err;
  }
}

}  // namespace
}  // namespace console_test
