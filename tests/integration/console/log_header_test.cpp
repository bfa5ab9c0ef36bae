// The log that one host run leaves in the standard folder: the header block that names the
// program which loaded the library, then the configuration it runs with.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "console_fixture.h"
#include "test_platform.h"

namespace console_test {
namespace {

namespace fs = std::filesystem;

using LogHeaderTest = console_test_t;

std::string read_all(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

// The log file of one test, removed before the run and after it.
class log_file_t {
 public:
  explicit log_file_t(const std::string& path) : path_(fs::u8path(path)) { remove(); }
  ~log_file_t() { remove(); }
  const fs::path& path() const { return path_; }

 private:
  void remove() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
  fs::path path_;
};

TEST_F(LogHeaderTest, LogsFolderLeavesTheHeaderBlockAndTheConfigurationInTheStandardFolder) {
  const std::string name = "console-header-check.log";
  const log_file_t log(standard_log_file(machine_root(), name));
  const process_result_t run = host({"--log-name", name, "logs-folder"});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  ASSERT_TRUE(fs::exists(log.path())) << log.path().u8string();
  const std::string text = read_all(log.path());

  const size_t module = text.find("Path to the executable module: ");
  ASSERT_NE(module, std::string::npos) << text;
  const std::string module_line = text.substr(module, text.find('\n', module) - module);
  EXPECT_NE(module_line.find(host_file_name()), std::string::npos) << module_line;
#ifdef _WIN32
  // The host's own version resource, not the library's.
  EXPECT_NE(text.find("Module version: " DSL_PROJECT_VERSION ".0"), std::string::npos) << text;
  EXPECT_NE(text.find("Comments: Calls the library's exports as an agent does, to diagnose a "
                      "machine"),
            std::string::npos)
      << text;
#else
  // Host executables carry no version resource; the header says so and goes on.
  EXPECT_NE(text.find("Cannot retrieve the version of the specified module. Module path: ["),
            std::string::npos)
      << text;
#endif
  const size_t os = text.find("OS version: ");
  const size_t process = text.find("Process Id: ");
  const size_t config = text.find("Oracle agent config:");
  EXPECT_NE(os, std::string::npos) << text;
  EXPECT_NE(process, std::string::npos) << text;
  ASSERT_NE(config, std::string::npos) << text;
  EXPECT_LT(module, config);
  EXPECT_LT(process, config);
  for (const char* setting : {"ConnectionTimeoutSec: ", "OracleRestoreWaitInSec: ",
                              "OracleAgentTtlSec: ", "DisableOracleProcessing: ",
                              "OracleTempLogPath: "}) {
    EXPECT_NE(text.find(setting, config), std::string::npos) << setting;
  }
}

}  // namespace
}  // namespace console_test
