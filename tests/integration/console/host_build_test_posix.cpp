// Checks that need the host build's stand-ins: its registry file, raw argument bytes and the
// folder that holds the machine's disks.
#include <gtest/gtest.h>

#include <filesystem>

#include "console_fixture.h"

namespace console_test {
namespace {

namespace fs = std::filesystem;

using HostBuildTest = console_test_t;

bool file_named_below(const fs::path& folder, const std::string& name) {
  std::error_code ignored;
  for (fs::recursive_directory_iterator it(folder, ignored), end; it != end; it.increment(ignored)) {
    if (it->path().filename() == name) return true;
  }
  return false;
}

TEST_F(HostBuildTest, ArgumentThatIsNotUtf8IsAUsageError) {
  const process_result_t run =
      host({"--lib", path_in_test_folder("no-such-library"), "should-skip-writer", "OR\xFF" "CL"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("is not valid UTF-8"), std::string::npos) << run.err;
}

TEST_F(HostBuildTest, LogsFolderDefaultsToTheCommonApplicationDataFolder) {
  const process_result_t run = host({"logs-folder"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup\\\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(HostBuildTest, LogsFolderFromTheRegistryIsPrintedInUtf8) {
  // A registry path with Latin, CJK and a character outside the Basic Multilingual Plane: it
  // leaves the library as UTF-16 with a surrogate pair and must reach the console as UTF-8.
  const std::string folder = "D:\\Sicherung\\T\xC3\xABst\\\xE6\x97\xA5\xE6\x9C\xAC\\\xF0\x9F\x98\x80";
  const std::string registry = write_file(
      "registry.reg",
      "Windows Registry Editor Version 5.00\r\n\r\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Trelo\\Trelo Safekeep]\r\n"
      "\"OracleTempLogPath\"=\"D:\\\\Sicherung\\\\T\xC3\xABst\\\\\xE6\x97\xA5\xE6\x9C\xAC\\\\"
      "\xF0\x9F\x98\x80\"\r\n");
  const process_result_t run =
      host({"logs-folder"}, "", {{"DBSHADOWLINK_REGISTRY", registry}});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, folder + "\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(HostBuildTest, LogNameNamesTheLibrarysLogFile) {
  const std::string name = "console-log-name-check.log";
  // The reference library in this process started its log before; without it, this build
  // writes no log file and the host's log name cannot be seen.
  reference_t::instance();
  if (!file_named_below(machine_root(), "dbshadowlink-console-test.log")) {
    GTEST_SKIP() << "this build of the library writes no log file";
  }
  const process_result_t run = host({"--log-name", name, "logs-folder"});
  EXPECT_FALSE(run.timed_out);
  EXPECT_TRUE(file_named_below(machine_root(), name));
}

}  // namespace
}  // namespace console_test
