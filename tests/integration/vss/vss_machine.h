// The frame of the VSS end-to-end tests: a machine made of a registry fixture (homes,
// instances, the connection time-out) and optionally a fixture with the VSS writer service of
// ORCL in its state, an ocisim scenario for the instances, and the console host run against
// them with a log of the test's own. Host build: the two fixtures are joined into one registry
// file. Windows: the first goes into the registry, the writer service is created around the
// test service program and brought into its state.
#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/process_runner.h"
#include "support/schema_check.h"

namespace vss_test {

using console_test::process_result_t;

class vss_machine_t {
 public:
  explicit vss_machine_t(const std::string& instances_fixture,
                         const std::string& writer_fixture = std::string());
  ~vss_machine_t();
  vss_machine_t(const vss_machine_t&) = delete;
  vss_machine_t& operator=(const vss_machine_t&) = delete;

 private:
  struct state_t;
  std::unique_ptr<state_t> state_;
};

// Platform facts.
std::string host_program();     // the built console host
std::string client_library();   // the built ocisim client
std::string scenario_path(const std::string& name);  // a file of tests/scenarios
std::string log_file(const std::string& name);       // where the library keeps log `name`
// xmllint --noout --schema <docs/schemas/name> on `document`; empty when valid, else what it
// said.
inline std::string schema_errors(const std::string& name, const std::string& document) {
  return dsl_test::schema_problems(document, name);
}

class vss_console_t : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The host with `args` against `scenario` (a file of tests/scenarios; empty: no instances
  // answer), with this test's log name, journal and state file.
  process_result_t host(const std::vector<std::string>& args, const std::string& scenario);
  // A script of host commands in one process.
  process_result_t script(const std::string& lines, const std::string& scenario);

  // The lines of this test's log, each without stamp, thread, channel and indent.
  std::vector<std::string> log_lines() const;
  bool logged(const std::string& text) const;
  bool logged_containing(const std::string& part) const;
  size_t count_logged(const std::string& text) const;
  // The ocisim journal of this test.
  std::string journal() const;
  std::string folder() const { return folder_; }
  std::string write(const std::string& name, const std::string& bytes) const;

 private:
  std::string folder_;
  std::string log_name_;
};

}  // namespace vss_test
