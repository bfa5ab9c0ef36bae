// The host's help: every command and option is listed, and help needs no library.
#include <gtest/gtest.h>

#include "console_fixture.h"

namespace console_test {
namespace {

using HelpTest = console_test_t;

struct command_and_export_t {
  const char* command;
  const char* export_name;
};

constexpr command_and_export_t every_command[] = {
    {"explore", "OracleExploreInstances"},
    {"check-vss", "OracleCheckVssFunctionality"},
    {"should-skip-writer", "OracleShouldSkipVssWriter"},
    {"gather-vss-info", "OracleGatherVssInfo"},
    {"prepare", "OraclePrepareDbsForBackup"},
    {"finish", "OracleFinishDbsBackup"},
    {"backup-logs", "OracleBackupLogs"},
    {"enum-logs", "OracleEnumLogs"},
    {"remove-logs", "OracleRemoveLogsInTemp"},
    {"logs-folder", "OracleGetLogsFolder"},
    {"delete-logs-by-time", "OracleDeleteLogsByTime"},
    {"delete-logs-by-size", "OracleDeleteLogsBySize"},
    {"restore-required", "OracleIsRestoreRequired"},
    {"restore", "OracleDoRestore"},
    {"test", "OracleTest"},
};

TEST_F(HelpTest, HelpListsEveryCommandWithItsExportAndExitsZero) {
  const process_result_t run = host({"--help"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  for (const auto& entry : every_command) {
    EXPECT_NE(run.out.find(std::string("\n  ") + entry.command), std::string::npos) << entry.command;
    EXPECT_NE(run.out.find(entry.export_name), std::string::npos) << entry.export_name;
  }
}

TEST_F(HelpTest, HelpShowsTheSynopsisOfEachCommandWithItsOptions) {
  const process_result_t run = host({"--help"});
  ASSERT_EQ(run.exit_code, 0);
  const char* synopses[] = {
      "explore [--collect] [--user U] [--password P] [--config FILE]",
      "should-skip-writer SID",
      "prepare [--config FILE] [--user U] [--password P] [--os-user U] [--os-password P]",
      "finish --document FILE [--user U] [--password P]",
      "backup-logs --home H --sid S [--usn N] [--last-rec-id N] [--user U] [--password P]",
      "remove-logs --list FILE",
      "delete-logs-by-time --home H --sid S --minutes N [--user U] [--password P]",
      "delete-logs-by-size --home H --sid S --size BYTES [--user U] [--password P]",
  };
  for (const char* synopsis : synopses) {
    EXPECT_NE(run.out.find(synopsis), std::string::npos) << synopsis;
  }
}

TEST_F(HelpTest, HelpNamesTheGlobalOptionsAndTheExitStatuses) {
  const process_result_t run = host({"--help"});
  ASSERT_EQ(run.exit_code, 0);
  for (const char* text : {"--lib PATH", "--log-name NAME", "--script FILE", "--keep-going",
                           "dbshadowlink.log", "Exit status", "standard input"}) {
    EXPECT_NE(run.out.find(text), std::string::npos) << text;
  }
}

TEST_F(HelpTest, ShortHelpOptionPrintsTheSameHelp) {
  const process_result_t long_form = host({"--help"});
  const process_result_t short_form = host({"-h"});
  EXPECT_EQ(short_form.exit_code, 0);
  EXPECT_EQ(short_form.out, long_form.out);
}

TEST_F(HelpTest, HelpLinesEndWithLineFeedsOnly) {
  // Standard output is binary: no line-end translation on any platform.
  const process_result_t run = host({"--help"});
  ASSERT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.out.find('\r'), std::string::npos);
}

TEST_F(HelpTest, CommandHelpListsItsOptionsWithoutLoadingTheLibrary) {
  const process_result_t run =
      host({"--lib", path_in_test_folder("no-such-library"), "backup-logs", "--help"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  for (const char* text : {"OracleBackupLogs", "--home H", "--sid S", "--usn N", "--last-rec-id N",
                           "--user U", "--password P"}) {
    EXPECT_NE(run.out.find(text), std::string::npos) << text;
  }
}

TEST_F(HelpTest, HelpBeforeTheCommandNameShowsThatCommand) {
  const process_result_t run = host({"--help", "delete-logs-by-size"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_NE(run.out.find("--size BYTES"), std::string::npos);
  EXPECT_EQ(run.out.find("backup-logs"), std::string::npos);
}

TEST_F(HelpTest, NoCommandIsAUsageError) {
  const process_result_t run = host({});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("no command given"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("--help"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace console_test
