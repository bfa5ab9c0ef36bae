// A test against the simulated client: each test gets a folder of its own with its scenario,
// the scenario's state file and the journal, and the library's log captured. The gate is
// pointed at the built ocisim through DSL_OCI_LIBRARY before its first use.
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/capture_receiver.h"

namespace ocisim_test {

// One line of the journal: "<pid> <tid> <kind> <rest>".
struct journal_line_t {
  std::string thread;
  std::string kind;  // CALL, SQL or HANG
  std::string rest;  // for CALL: "<function> <arguments> => <outcome>"
  std::string function() const { return rest.substr(0, rest.find(' ')); }
};

class ocisim_test_t : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  void SetUp() override;
  void TearDown() override;

  // Writes `xml` as the scenario of this test and points the client at it.
  void use_scenario(const std::string& xml);
  void set_timeout(uint32_t seconds);

  std::vector<journal_line_t> journal() const;
  std::vector<journal_line_t> journal_of(const std::string& kind) const;
  // The CALL lines of one function, as "<arguments> => <outcome>".
  std::vector<std::string> calls_of(const std::string& function) const;
  std::vector<std::string> log_lines() const;
  // The whole journal, for failure messages.
  std::string journal_text() const;

  static void set_env(const std::string& name, const std::string& value);

  std::filesystem::path dir_;
  std::unique_ptr<dsl_test::capture_log_t> log_;
};

// A scenario of one machine with the given instances (XML of <instance> elements).
std::string machine_with(const std::string& instances);

}  // namespace ocisim_test
