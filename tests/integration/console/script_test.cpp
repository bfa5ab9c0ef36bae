// Scripts: several commands in one process, checked as a whole before the library is loaded,
// started once and stopped once, stopped at the first failure unless --keep-going.
#include <gtest/gtest.h>

#include "console_fixture.h"

namespace console_test {
namespace {

class ScriptTest : public console_test_t {
 protected:
  std::vector<expected_run_t> three_lines(const std::string& origin_prefix,
                                          const std::vector<int>& lines) {
    reference_t& reference = reference_t::instance();
    return {
        expected_text_run("logs-folder", "OracleGetLogsFolder", reference.logs_folder(),
                          origin_prefix + std::to_string(lines[0])),
        expected_text_run("enum-logs", "OracleEnumLogs", reference.enum_logs(),
                          origin_prefix + std::to_string(lines[1])),
        expected_boolean_run("check-vss", "OracleCheckVssFunctionality", reference.check_vss(),
                             origin_prefix + std::to_string(lines[2])),
    };
  }
};

const char* const three_line_script =
    "# a comment\n"
    "\n"
    "logs-folder\n"
    "   \t\n"
    "   # an indented comment\n"
    "enum-logs\n"
    "check-vss\n";

TEST_F(ScriptTest, ScriptRunsItsLinesInOrderAndSkipsBlanksAndComments) {
  const std::string file = write_file("three.txt", three_line_script);
  expect_run(host({"--script", file}),
             expected_script_run(three_lines(file + ":", {3, 6, 7}), /*keep_going=*/false));
}

TEST_F(ScriptTest, KeepGoingRunsTheLinesAfterAFailedOne) {
  const std::string file = write_file("three.txt", three_line_script);
  expect_run(host({"--keep-going", "--script", file}),
             expected_script_run(three_lines(file + ":", {3, 6, 7}), /*keep_going=*/true));
}

TEST_F(ScriptTest, ScriptIsReadFromStandardInput) {
  expect_run(host({"--script", "-"}, three_line_script),
             expected_script_run(three_lines("<stdin>:", {3, 6, 7}), /*keep_going=*/false));
}

TEST_F(ScriptTest, WindowsLineEndsAreAccepted) {
  const std::string file = write_file("crlf.txt", "logs-folder\r\nenum-logs\r\ncheck-vss\r\n");
  expect_run(host({"--keep-going", "--script", file}),
             expected_script_run(three_lines(file + ":", {1, 2, 3}), /*keep_going=*/true));
}

TEST_F(ScriptTest, SkipWriterQuestionsAreAnsweredInOneProcess) {
  const std::string file =
      write_file("skip.txt", "should-skip-writer ORCL\nshould-skip-writer \"OTHER SID\"\n");
  reference_t& reference = reference_t::instance();
  expect_run(host({"--keep-going", "--script", file}),
             expected_script_run(
                 {expected_boolean_run("should-skip-writer", "OracleShouldSkipVssWriter",
                                       reference.should_skip_writer("ORCL"), file + ":1"),
                  expected_boolean_run("should-skip-writer", "OracleShouldSkipVssWriter",
                                       reference.should_skip_writer("OTHER SID"), file + ":2")},
                 /*keep_going=*/true));
}

TEST_F(ScriptTest, QuotedValueKeepsItsBlanksAndBackslashes) {
  const std::string document = "<dbPrepare";
  const std::string path = write_file("a document with blanks.xml", document);
  const std::string file = write_file("quoted.txt", "finish --document \"" + path +
                                                        "\" --user \"\" --password \"p w\"\n");
  const outcome_t direct = reference_t::instance().finish(document, "", "p w");
  expect_run(host({"--script", file}),
             expected_plain_run("finish", "OracleFinishDbsBackup", direct, file + ":1"));
}

TEST_F(ScriptTest, EveryLineIsCheckedBeforeTheLibraryIsLoaded) {
  const std::string file = write_file("bad.txt", "logs-folder\nfrobnicate --x\nenum-logs\n");
  const process_result_t run = host({"--lib", path_in_test_folder("no-such-library"), "--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.rfind("dbshadowlink: " + file + ":2: unknown command 'frobnicate'\n", 0), 0u)
      << run.err;
}

TEST_F(ScriptTest, BadNumberInALaterLineIsFoundBeforeAnythingRuns) {
  const std::string file = write_file(
      "bad-number.txt", "logs-folder\ndelete-logs-by-size --home H --sid S --size -5\n");
  const process_result_t run = host({"--lib", path_in_test_folder("no-such-library"), "--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find(file + ":2: delete-logs-by-size: option '--size' needs a whole number"),
            std::string::npos)
      << run.err;
}

TEST_F(ScriptTest, UnclosedQuoteIsAUsageErrorThatNamesItsLine) {
  const std::string file = write_file("quote.txt", "\nshould-skip-writer \"ORCL\n");
  const process_result_t run = host({"--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find(file + ":2: a double quote is not closed"), std::string::npos) << run.err;
}

TEST_F(ScriptTest, CommandLineOptionsAreRefusedInAScriptLine) {
  const std::string file = write_file("global.txt", "logs-folder --lib other.dll\n");
  const process_result_t run = host({"--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find(file + ":1: logs-folder: option '--lib' belongs on the command line"),
            std::string::npos)
      << run.err;
}

TEST_F(ScriptTest, LineThatStartsWithAnOptionIsRefused) {
  const std::string file = write_file("option.txt", "--keep-going\n");
  const process_result_t run = host({"--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find(file + ":1: a line starts with a command"), std::string::npos) << run.err;
}

TEST_F(ScriptTest, ScriptWithoutACommandIsAUsageError) {
  const std::string file = write_file("empty.txt", "# nothing here\n\n");
  const process_result_t run = host({"--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("holds no command"), std::string::npos) << run.err;
}

TEST_F(ScriptTest, MissingScriptFileIsAUsageError) {
  const std::string missing = path_in_test_folder("missing-script.txt");
  const process_result_t run = host({"--script", missing});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("cannot read the script '" + missing + "'"), std::string::npos) << run.err;
}

TEST_F(ScriptTest, UnreadableInputFileStopsTheScriptWithUsageStatus) {
  const std::string missing = path_in_test_folder("missing.xml");
  const std::string file = write_file("stops.txt", "finish --document \"" + missing + "\"\nlogs-folder\n");
  const process_result_t run = host({"--script", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.rfind("dbshadowlink: " + file + ":1: finish: cannot read '" + missing + "'", 0),
            0u)
      << run.err;
  EXPECT_EQ(run.err.find("OracleGetLogsFolder"), std::string::npos) << run.err;
}

TEST_F(ScriptTest, KeepGoingRunsPastAnUnreadableInputFileAndKeepsItsStatus) {
  const std::string missing = path_in_test_folder("missing.xml");
  const std::string file = write_file("goes-on.txt", "finish --document \"" + missing + "\"\nlogs-folder\n");
  const process_result_t run = host({"--keep-going", "--script", file});
  const expected_run_t folder = expected_text_run(
      "logs-folder", "OracleGetLogsFolder", reference_t::instance().logs_folder(), file + ":2");
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, folder.out);
  EXPECT_EQ(run.err.rfind("dbshadowlink: " + file + ":1: finish: cannot read '" + missing + "'", 0),
            0u)
      << run.err;
  EXPECT_NE(run.err.find(folder.err), std::string::npos) << run.err;
}

}  // namespace
}  // namespace console_test
