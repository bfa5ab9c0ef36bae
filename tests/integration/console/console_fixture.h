// The frame of the console tests: a private folder per test, the built host run as a child
// process, and the library loaded into the test process as the reference for what the host
// must report. The library's files and registry stand-in live in a folder of the test run, set
// in the environment before anything is loaded, so the host and the reference see one machine.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "DbShadowLink.h"
#include "support/process_runner.h"

namespace console_test {

// What one export answered when the test called it directly.
struct outcome_t {
  DSL_RESULT result = DSL_E_FAIL;
  bool has_text = false;
  std::string text;   // the out text, on success
  std::string error;  // the error text, on failure
  uint8_t boolean = 0xA5;
};

// The host run that an outcome calls for: exit status and the two streams.
struct expected_run_t {
  int exit_code = 0;
  std::string out;
  std::string err;
};

// The library in the test process, started once with its own log name.
class reference_t {
 public:
  static reference_t& instance();

  outcome_t logs_folder();
  outcome_t enum_logs();
  outcome_t gather_vss_info();
  outcome_t check_vss();
  outcome_t restore_required();
  outcome_t should_skip_writer(const std::string& sid);
  outcome_t finish(const std::string& document, const std::string& user,
                   const std::string& password);
  outcome_t remove_logs(const std::string& list);
  outcome_t explore(bool collect, const std::string& user, const std::string& password,
                    const std::string& config);

 private:
  reference_t();
  void* symbol(const char* name);
  void take(outcome_t& outcome, DSL_WCHAR* text, DSL_WCHAR* error);

  void* library_ = nullptr;
  void (*free_)(void*) = nullptr;
};

// What the host prints for an outcome. `command` is the host's command name, `origin` the
// "FILE:LINE" of a script line or empty.
expected_run_t expected_text_run(const std::string& command, const std::string& export_name,
                                 const outcome_t& outcome, const std::string& origin = "");
expected_run_t expected_boolean_run(const std::string& command, const std::string& export_name,
                                    const outcome_t& outcome, const std::string& origin = "");
expected_run_t expected_plain_run(const std::string& command, const std::string& export_name,
                                  const outcome_t& outcome, const std::string& origin = "");
// Lines of a script in one process: outputs in order, up to the first failure unless
// `keep_going`; the status of the first failure.
expected_run_t expected_script_run(const std::vector<expected_run_t>& lines, bool keep_going);

class console_test_t : public ::testing::Test {
 public:
  static std::string host_path();
  static std::string library_path();
  // The folder that stands for the machine's disks in the host build (DBSHADOWLINK_ROOT).
  static std::string machine_root();

 protected:
  void SetUp() override;
  void TearDown() override;

  // Runs the built host with `args`.
  process_result_t host(const std::vector<std::string>& args, const std::string& input = "",
                        const environment_t& environment = {});
  // A UTF-8 path inside this test's own folder; `write_file` also creates the file.
  std::string path_in_test_folder(const std::string& name) const;
  std::string write_file(const std::string& name, const std::string& bytes) const;

 private:
  std::string folder_;
};

void expect_run(const process_result_t& actual, const expected_run_t& expected);

}  // namespace console_test
