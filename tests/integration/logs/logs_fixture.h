// Integration tests of the archived-log flows: the manager's operations in this process against
// the simulated client, on a private machine folder (test_folder_t) that the library and the
// simulated client both reach through the same Windows paths. Each test gets its scenario, its
// journal and the library's log captured. Main thread only.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/capture_receiver.h"
#include "support/test_folder.h"

namespace logs_test {

class logs_test_t : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  void SetUp() override;
  void TearDown() override;

  // Writes `xml` as the scenario and points the client at it.
  void use_scenario(const std::string& xml);
  // The logs folder (OracleTempLogPath) and the staging switch of the configuration.
  void configure(const std::u16string& logsFolder, bool stage);

  std::vector<std::string> sql_lines() const;  // the SQL statements of the journal
  std::string journal_text() const;
  std::vector<std::string> log_lines() const;
  bool log_has(const std::string& text) const;

  // The machine's base folder as a narrow Windows path ending in "\".
  std::string base() const;
  // Names of the files directly in a folder (Windows path relative to base()).
  std::vector<std::string> files_in(const std::string& relative) const;

  // The rows of V$ARCHIVED_LOG, as "RECID STATUS" texts, read through a session of its own.
  std::vector<std::string> archived_log_states(const std::string& sid, const std::string& home);

  std::unique_ptr<dsl_test::test_folder_t> folder_;
  std::unique_ptr<dsl_test::capture_log_t> log_;
  std::string scenarioDir_;  // native
};

std::string ocisim_library();
// The native path of a Windows path of the test folder.
std::string native_path(const dsl_test::test_folder_t& folder, const std::string& windowsPath);

}  // namespace logs_test
