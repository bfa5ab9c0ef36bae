// The frame of the explore tests: a machine made of one .reg fixture (tests/fixtures) and one
// ocisim scenario (tests/scenarios), the explore run in this process through the manager, as
// the export runs it, and the document compared with an expected file and validated against
// docs/schemas/explored.xsd with xmllint.
//
// Normalisation of what cannot be the same on every run and machine, done on the actual
// document before it is compared (the expected files hold "*" in these places):
//   - `timeUtc` of a collected database: the moment of collection; checked to have the form
//     YYYY-MM-DDThh:mm:ss, then replaced by "*".
//   - `serverName`, `osName` and `timeZone` of OracleOverall: facts of the machine the test
//     runs on; checked to be non-empty, and an integer of quarter hours between -48 and 56,
//     then replaced by "*".
// Attributes are compared by name and value in their order, elements by name and position.
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace explore_test {

class explore_test_t : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  void SetUp() override;
  void TearDown() override;

  // Installs tests/fixtures/<reg> and a fresh copy of tests/scenarios/<scenario>, and reads
  // the agent configuration of that registry as a new process would.
  void use_machine(const std::string& reg, const std::string& scenario = "explore_machine.xml");

  // The explore through the manager; fails the test on a failure.
  std::string explore(bool collect = false, const std::u16string& input = u"");
  // The failure text of an explore that must fail.
  std::string explore_failure(bool collect, const std::u16string& input);

  // Compares `document` with expected/<name> after the normalisation above, and validates it.
  void expect_document(const std::string& document, const std::string& name);
  // Validates a document against the schema of the explored document, or of the explore input.
  void expect_valid(const std::string& document, const char* schema = "explored.xsd");

  std::vector<std::string> log_lines() const;
  bool logged(const std::string& line) const;
  std::string journal() const;

  std::filesystem::path dir_;
  std::unique_ptr<dsl_test::capture_log_t> log_;
  std::unique_ptr<dsl_test::reg_machine_t> machine_;
};

// The text of a file below the source tree.
std::string source_file(const std::string& relative);

// Differences between two documents after normalisation, one line each; empty when equal.
std::vector<std::string> document_differences(const std::string& expected, const std::string& actual);
std::string normalised(const std::string& document);

// Platform: the built ocisim client.
std::string ocisim_library();

}  // namespace explore_test
