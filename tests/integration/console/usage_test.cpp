// Usage errors: each says what is wrong and exits 2. The runs name a library that does not
// exist, so exit 2 (rather than the 1 of a library that cannot be loaded) also shows that the
// arguments are checked before anything is loaded.
#include <gtest/gtest.h>

#include "console_fixture.h"

namespace console_test {
namespace {

class UsageTest : public console_test_t {
 protected:
  // Runs the host with a missing library and expects a usage error that mentions `needle`.
  void expect_usage_error(std::vector<std::string> args, const std::string& needle) {
    args.insert(args.begin(), {"--lib", path_in_test_folder("no-such-library")});
    const process_result_t run = host(args);
    EXPECT_EQ(run.exit_code, 2) << "stderr: " << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("dbshadowlink: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(needle), std::string::npos) << "stderr: " << run.err;
  }

  // Runs a command whose export must be reached (so the arguments were accepted) and fails,
  // since no database answers in the test environment.
  void expect_export_reached(const std::vector<std::string>& args, const std::string& command,
                             const std::string& export_name) {
    const process_result_t run = host(args);
    EXPECT_FALSE(run.timed_out);
    EXPECT_EQ(run.exit_code, 1) << "stderr: " << run.err;
    EXPECT_EQ(run.err.rfind("dbshadowlink: " + command + ": " + export_name +
                                " failed with 0x80004005:\n",
                            0),
              0u)
        << run.err;
  }
};

TEST_F(UsageTest, UnknownCommandIsAUsageErrorThatNamesIt) {
  expect_usage_error({"frobnicate"}, "unknown command 'frobnicate'");
}

TEST_F(UsageTest, UnknownCommandWithNonAsciiLettersIsEchoedInUtf8) {
  expect_usage_error({"frob-\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80"},
                     "unknown command 'frob-\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80'");
}

TEST_F(UsageTest, UnknownOptionIsAUsageError) {
  expect_usage_error({"logs-folder", "--bogus"}, "unknown option '--bogus'");
}

TEST_F(UsageTest, UnknownGlobalOptionIsAUsageError) {
  expect_usage_error({"--bogus", "logs-folder"}, "unknown option '--bogus'");
}

TEST_F(UsageTest, BackupLogsWithoutHomeIsAUsageError) {
  expect_usage_error({"backup-logs", "--sid", "ORCL"}, "missing option '--home H'");
}

TEST_F(UsageTest, DeleteLogsBySizeWithoutSidIsAUsageError) {
  expect_usage_error({"delete-logs-by-size", "--home", "C:\\oracle", "--size", "1"},
                     "missing option '--sid S'");
}

TEST_F(UsageTest, DeleteLogsByTimeWithoutMinutesIsAUsageError) {
  expect_usage_error({"delete-logs-by-time", "--home", "C:\\oracle", "--sid", "ORCL"},
                     "missing option '--minutes N'");
}

TEST_F(UsageTest, FinishWithoutDocumentIsAUsageError) {
  expect_usage_error({"finish"}, "missing option '--document FILE'");
}

TEST_F(UsageTest, RemoveLogsWithoutListIsAUsageError) {
  expect_usage_error({"remove-logs"}, "missing option '--list FILE'");
}

TEST_F(UsageTest, MinutesOutsideSigned32BitOrNotDecimalAreRefused) {
  for (const char* minutes : {"2147483648", "-2147483649", "12x", "", "+5", " 5", "0x10", "1.5",
                              "99999999999999999999"}) {
    SCOPED_TRACE(minutes);
    expect_usage_error({"delete-logs-by-time", "--home", "H", "--sid", "S", "--minutes", minutes},
                       "'--minutes' needs a whole number from -2147483648 to 2147483647");
  }
}

TEST_F(UsageTest, SizeOutsideUnsigned64BitOrNotDecimalIsRefused) {
  for (const char* size : {"18446744073709551616", "-1", "", "+1", "1e3", "1 ", "0x10"}) {
    SCOPED_TRACE(size);
    expect_usage_error({"delete-logs-by-size", "--home", "H", "--sid", "S", "--size", size},
                       "'--size' needs a whole number from 0 to 18446744073709551615");
  }
}

TEST_F(UsageTest, RecordIdAndUsnOfBackupLogsMustBeNumbers) {
  expect_usage_error({"backup-logs", "--home", "H", "--sid", "S", "--last-rec-id", "5 OR 1=1"},
                     "'--last-rec-id' needs a whole number");
  expect_usage_error({"backup-logs", "--home", "H", "--sid", "S", "--usn", "abc"},
                     "'--usn' needs a whole number");
}

TEST_F(UsageTest, MinutesAtBothEndsOfTheirRangeReachTheExport) {
  for (const char* minutes : {"-2147483648", "2147483647", "0"}) {
    SCOPED_TRACE(minutes);
    expect_export_reached(
        {"delete-logs-by-time", "--home", "C:\\oracle", "--sid", "NOSUCHSID", "--minutes", minutes},
        "delete-logs-by-time", "OracleDeleteLogsByTime");
  }
}

TEST_F(UsageTest, SizesAtBothEndsOfTheirRangeReachTheExport) {
  for (const char* size : {"0", "18446744073709551615"}) {
    SCOPED_TRACE(size);
    expect_export_reached(
        {"delete-logs-by-size", "--home", "C:\\oracle", "--sid", "NOSUCHSID", "--size", size},
        "delete-logs-by-size", "OracleDeleteLogsBySize");
  }
}

TEST_F(UsageTest, OptionValuesMayFollowAnEqualsSign) {
  expect_export_reached({"backup-logs", "--home=C:\\oracle", "--sid=NOSUCHSID", "--last-rec-id=7"},
                        "backup-logs", "OracleBackupLogs");
}

TEST_F(UsageTest, ShouldSkipWriterWithoutSidIsAUsageError) {
  expect_usage_error({"should-skip-writer"}, "missing SID");
}

TEST_F(UsageTest, ShouldSkipWriterWithTwoSidsIsAUsageError) {
  expect_usage_error({"should-skip-writer", "A", "B"}, "unexpected argument 'B'");
}

TEST_F(UsageTest, CommandWithoutArgumentsRefusesOne) {
  expect_usage_error({"logs-folder", "extra"}, "unexpected argument 'extra'");
}

TEST_F(UsageTest, OptionGivenTwiceIsAUsageError) {
  expect_usage_error({"finish", "--document", "a", "--document", "b"},
                     "option '--document' is given twice");
}

TEST_F(UsageTest, FlagWithAValueIsAUsageError) {
  expect_usage_error({"explore", "--collect=1"}, "option '--collect' takes no value");
}

TEST_F(UsageTest, OptionWithoutItsValueIsAUsageError) {
  expect_usage_error({"finish", "--document"}, "option '--document' needs a value");
  expect_usage_error({"logs-folder", "--log-name"}, "option '--log-name' needs a value");
}

TEST_F(UsageTest, KeepGoingWithoutScriptIsAUsageError) {
  expect_usage_error({"--keep-going", "logs-folder"}, "'--keep-going' needs --script");
}

TEST_F(UsageTest, ScriptAndCommandTogetherAreAUsageError) {
  expect_usage_error({"--script", "x.txt", "logs-folder"}, "either a command or --script");
}

TEST_F(UsageTest, StandardInputNamedTwiceIsAUsageError) {
  // The script itself comes from standard input, so its line cannot read it again.
  const process_result_t run =
      host({"--lib", path_in_test_folder("no-such-library"), "--script", "-"},
           "finish --document -\n");
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("standard input ('-') can be read only once"), std::string::npos)
      << run.err;
}

TEST_F(UsageTest, MissingInputFileIsAUsageErrorThatNamesIt) {
  const std::string missing = path_in_test_folder("missing-document.xml");
  const process_result_t run = host({"finish", "--document", missing});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("dbshadowlink: finish: cannot read '" + missing + "' (--document)"),
            std::string::npos)
      << run.err;
}

TEST_F(UsageTest, InputFileInUtf16IsRefused) {
  const std::string file = write_file("utf16.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10));
  const process_result_t run = host({"remove-logs", "--list", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("is UTF-16 text; save it as UTF-8"), std::string::npos) << run.err;
}

TEST_F(UsageTest, InputFileWithIllFormedUtf8IsRefused) {
  const std::string file = write_file("bad.xml", "<a>\xC3(</a>");
  const process_result_t run = host({"remove-logs", "--list", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("is not valid UTF-8 (byte 3)"), std::string::npos) << run.err;
}

TEST_F(UsageTest, InputFileWithANulCharacterIsRefused) {
  const std::string file = write_file("with-a-zero-byte.xml", std::string("<a>\0</a>", 8));
  const process_result_t run = host({"finish", "--document", file});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("holds a NUL character (byte 3)"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace console_test
