// The host against a stand-in library that answers by fixed rules and keeps a journal of the
// calls it gets: results, booleans, arguments, failures, the start and stop around a run and
// the release of every text, each checked byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "console_fixture.h"
#include "test_platform.h"

namespace console_test {
namespace {

namespace fs = std::filesystem;

// The file name of the stand-in, as its CMake target names it.
std::string fake_library_file_name() {
  return library_file_name() == std::string("DbShadowLink.dll") ? "dbshadowlink_fake.dll"
                                                                 : "libdbshadowlink_fake.so";
}

class FakeLibraryTest : public console_test_t {
 protected:
  process_result_t fake(std::vector<std::string> args, const std::string& input = "",
                        environment_t environment = {}) {
    args.insert(args.begin(), {"--lib", fake_library_path()});
    environment.emplace_back("DSL_FAKE_JOURNAL", path_in_test_folder("journal.txt"));
    return host(args, input, environment);
  }

  static std::string fake_library_path() {
    return (fs::u8path(bin_dir()) / fake_library_file_name()).u8string();
  }

  // The calls that the stand-in saw, without the alloc and free lines.
  std::vector<std::string> calls() const { return journal(false); }
  std::vector<std::string> journal(bool with_memory = true) const {
    std::ifstream file(fs::u8path(path_in_test_folder("journal.txt")), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
      if (!with_memory && (line == "alloc" || line == "free")) continue;
      lines.push_back(line);
    }
    return lines;
  }
};

using lines_t = std::vector<std::string>;

TEST_F(FakeLibraryTest, TextResultIsPrintedInUtf8WithOneLineEnd) {
  const process_result_t run = fake({"enum-logs"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out,
            "<archived_logs><log path=\"C:\\T\xC3\xABst\\\xE6\x97\xA5\xE6\x9C\xAC\\"
            "\xF0\x9F\x98\x80.arc\"/></archived_logs>\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(FakeLibraryTest, TextThatEndsWithALineEndGetsNoSecondOne) {
  const process_result_t run = fake({"prepare"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "config=|user=|password=|osUser=|osPassword=\n");
}

TEST_F(FakeLibraryTest, LoneSurrogateIsPrintedAsTheReplacementCharacter) {
  const process_result_t run = fake({"gather-vss-info"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "<OracleEntries note=\"\xEF\xBF\xBD\"/>\n");
}

TEST_F(FakeLibraryTest, BooleansArePrintedAsTrueAndFalse) {
  EXPECT_EQ(fake({"should-skip-writer", "SKIPPED"}).out, "true\n");
  EXPECT_EQ(fake({"should-skip-writer", "ORCL"}).out, "false\n");
  EXPECT_EQ(fake({"check-vss"}).out, "true\n");
  EXPECT_EQ(fake({"restore-required"}).out, "false\n");
}

TEST_F(FakeLibraryTest, ExploreArgumentsReachTheExportUnchanged) {
  const std::string config = "<explore sid=\"\xC3\x84\xE6\x97\xA5\xF0\x9F\x98\x80\"/>\n";
  const std::string file = write_file("config.xml", config);
  const process_result_t run = fake({"explore", "--collect", "--user", "\xC3\xBC" "ser",
                                     "--password", "p w\"x", "--config", file});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "collect=1|user=\xC3\xBCser|password=p w\"x|config=" + config);
}

TEST_F(FakeLibraryTest, AbsentOptionsReachTheExportAsEmptyTexts) {
  const process_result_t run = fake({"explore"});
  EXPECT_EQ(run.out, "collect=0|user=|password=|config=\n");
}

TEST_F(FakeLibraryTest, PrepareArgumentsReachTheExportUnchanged) {
  const std::string file = write_file("config.xml", "<databases/>");
  const process_result_t run = fake({"prepare", "--config", file, "--user", "u", "--password", "p",
                                     "--os-user", "DOMAIN\\admin", "--os-password", "o p"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out,
            "config=<databases/>|user=u|password=p|osUser=DOMAIN\\admin|osPassword=o p\n");
}

TEST_F(FakeLibraryTest, BackupLogsNumbersTravelAsTheirDecimalText) {
  const process_result_t run =
      fake({"backup-logs", "--home", "C:\\app\\oracle\\product\\19.0.0\\dbhome_1", "--sid", "ORCL",
            "--usn", "18446744073709551615", "--last-rec-id", "0042", "--user", "sys"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out,
            "home=C:\\app\\oracle\\product\\19.0.0\\dbhome_1|sid=ORCL|usn=18446744073709551615|"
            "lastRecId=0042|user=sys|password=\n");
}

TEST_F(FakeLibraryTest, MinutesReachTheExportWithTheirFullRange) {
  EXPECT_EQ(fake({"delete-logs-by-time", "--home", "H", "--sid", "S", "--minutes", "-2147483648",
                  "--user", "u", "--password", "p"})
                .exit_code,
            0);
  EXPECT_EQ(fake({"delete-logs-by-time", "--home", "H", "--sid", "S", "--minutes", "2147483647"})
                .exit_code,
            0);
  const lines_t seen = calls();
  EXPECT_NE(std::find(seen.begin(), seen.end(), "delete-by-time H|S|-2147483648|u|p"), seen.end());
  EXPECT_NE(std::find(seen.begin(), seen.end(), "delete-by-time H|S|2147483647||"), seen.end());
}

TEST_F(FakeLibraryTest, SizeReachesTheExportWithItsFullRange) {
  const process_result_t run = fake(
      {"delete-logs-by-size", "--home", "H", "--sid", "S", "--size", "18446744073709551615"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "");
  const lines_t seen = calls();
  EXPECT_NE(std::find(seen.begin(), seen.end(), "delete-by-size H|S|18446744073709551615||"),
            seen.end());
}

TEST_F(FakeLibraryTest, RemoveLogsPassesTheListFromStandardInput) {
  const process_result_t run =
      fake({"remove-logs", "--list", "-"}, "<archived_logs><log seq=\"1\"/></archived_logs>");
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log",
                              "remove <archived_logs><log seq=\"1\"/></archived_logs>", "stop"}));
}

TEST_F(FakeLibraryTest, HostStartsTheLibraryBeforeTheCommandAndStopsItAfter) {
  ASSERT_EQ(fake({"logs-folder"}).exit_code, 0);
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log", "logs-folder", "stop"}));
}

TEST_F(FakeLibraryTest, LogNameIsGivenToTheLibrary) {
  ASSERT_EQ(fake({"--log-name", "agent \xC3\xA9.log", "check-vss"}).exit_code, 0);
  EXPECT_EQ(calls(), (lines_t{"init agent \xC3\xA9.log", "check-vss", "stop"}));
}

TEST_F(FakeLibraryTest, TestCommandIsNotWrappedInStartAndStop) {
  const process_result_t run = fake({"--log-name", "manual.log", "test"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "fake test output\n");
  EXPECT_EQ(calls(), (lines_t{"test manual.log"}));
}

TEST_F(FakeLibraryTest, ScriptStartsTheLibraryOnceAndStopsItOnce) {
  const std::string script = write_file(
      "script.txt", "should-skip-writer SKIPPED\nshould-skip-writer ORCL\ntest\nlogs-folder\n");
  const process_result_t run = fake({"--script", script});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "true\nfalse\nfake test output\nC:\\Fake\\Logs\\\n");
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log", "skip SKIPPED", "skip ORCL",
                              "test dbshadowlink.log", "logs-folder", "stop"}));
}

TEST_F(FakeLibraryTest, FailedExportPrintsItsWholeErrorTextToStandardError) {
  const std::string document = write_file("fail.xml", "fail");
  const process_result_t run = fake({"finish", "--document", document});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "dbshadowlink: finish: OracleFinishDbsBackup failed with 0x80004005:\n"
            "finish refused\n--tr:Oracle manager failed\n");
  // The library is stopped after a failed command too.
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log", "finish fail||", "stop"}));
}

TEST_F(FakeLibraryTest, FailedExportWithoutErrorTextSaysSo) {
  const process_result_t run = fake({"should-skip-writer", "noerror"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.err,
            "dbshadowlink: should-skip-writer: OracleShouldSkipVssWriter failed with 0x80004005:\n"
            "(the library gave no error text)\n");
}

TEST_F(FakeLibraryTest, SuccessWithoutTheResultTextIsAFailure) {
  const process_result_t run = fake({"logs-folder"}, "", {{"DSL_FAKE_NULL_TEXT", "1"}});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "dbshadowlink: logs-folder: OracleGetLogsFolder reported success but handed out no "
            "text\n");
}

TEST_F(FakeLibraryTest, SuccessWithoutWritingTheBooleanIsAFailure) {
  const process_result_t run = fake({"should-skip-writer", "unwritten"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("OracleShouldSkipVssWriter reported success but its boolean holds 165"),
            std::string::npos)
      << run.err;
}

TEST_F(FakeLibraryTest, EveryTextHandedOutIsReleasedThroughTheLibrary) {
  const std::string document = write_file("fail.xml", "fail");
  const std::string script = write_file(
      "script.txt", "enum-logs\ngather-vss-info\nshould-skip-writer fail\nexplore\nfinish --document \"" +
                        document + "\"\nlogs-folder\n");
  const process_result_t run = fake({"--keep-going", "--script", script});
  EXPECT_EQ(run.exit_code, 1);
  const lines_t lines = journal();
  const auto allocs = std::count(lines.begin(), lines.end(), "alloc");
  EXPECT_EQ(allocs, 6);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "free"), allocs);
  // Each text is released before the next export is called.
  for (size_t i = 0; i + 1 < lines.size(); ++i) {
    if (lines[i] == "alloc") {
      EXPECT_EQ(lines[i + 1], "free") << "line " << i;
    }
  }
}

TEST_F(FakeLibraryTest, MissingExportIsNamedBeforeTheLibraryIsStarted) {
  const process_result_t run = fake({"restore"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "dbshadowlink: the library '" + fake_library_path() +
                         "' does not export OracleDoRestore\n");
  EXPECT_EQ(calls(), lines_t{});
}

TEST_F(FakeLibraryTest, ScriptThatNeedsAMissingExportRunsNoLine) {
  const std::string script = write_file("script.txt", "logs-folder\nrestore\n");
  const process_result_t run = fake({"--script", script});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_NE(run.err.find("does not export OracleDoRestore"), std::string::npos) << run.err;
  EXPECT_EQ(calls(), lines_t{});
}

TEST_F(FakeLibraryTest, CommandsWhoseExportsExistRunWithoutTheMissingOne) {
  const process_result_t run = fake({"restore-required"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "false\n");
}

TEST_F(FakeLibraryTest, FailedStartEndsTheRunWithItsErrorText) {
  const process_result_t run = fake({"logs-folder"}, "", {{"DSL_FAKE_FAIL_INIT", "1"}});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "dbshadowlink: OracleVssInitLib failed with 0x80004005:\ninit refused\n");
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log"}));
}

TEST_F(FakeLibraryTest, FailedStopMakesASuccessfulRunFail) {
  const process_result_t run = fake({"logs-folder"}, "", {{"DSL_FAKE_FAIL_STOP", "1"}});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "C:\\Fake\\Logs\\\n");
  EXPECT_EQ(run.err, "dbshadowlink: OracleVssStopLib failed with 0x80004005:\nstop refused\n");
}

TEST_F(FakeLibraryTest, ScriptStopsAtTheFirstFailedLine) {
  const std::string script =
      write_file("script.txt", "logs-folder\nshould-skip-writer fail\ncheck-vss\n");
  const process_result_t run = fake({"--script", script});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "C:\\Fake\\Logs\\\n");
  EXPECT_EQ(run.err, "dbshadowlink: " + script +
                         ":2: should-skip-writer: OracleShouldSkipVssWriter failed with "
                         "0x80004005:\nno writer for [fail]\n--tr:second line\n");
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log", "logs-folder", "skip fail", "stop"}));
}

TEST_F(FakeLibraryTest, KeepGoingEndsWithTheStatusOfTheFirstFailedLine) {
  const std::string missing = path_in_test_folder("missing.xml");
  const std::string script = write_file(
      "script.txt", "should-skip-writer fail\nremove-logs --list \"" + missing + "\"\ncheck-vss\n");
  const process_result_t run = fake({"--keep-going", "--script", script});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "true\n");
  EXPECT_NE(run.err.find(script + ":2: remove-logs: cannot read '" + missing + "'"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(calls(), (lines_t{"init dbshadowlink.log", "skip fail", "check-vss", "stop"}));
}

}  // namespace
}  // namespace console_test
