// Runs a program as a child process and captures what it writes and how it ends, for tests
// that drive a program from outside (the console host, the schema tool). Call from the test's
// main thread.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace console_test {

struct process_result_t {
  int exit_code = -1;
  std::string out;  // standard output, bytes as written
  std::string err;  // standard error, bytes as written
  bool timed_out = false;
};

using environment_t = std::vector<std::pair<std::string, std::string>>;

// Runs `program` (a UTF-8 path) with `args`, each passed as one argument whatever it holds.
// `input` is all the child reads from standard input; `environment` is added to what the child
// inherits. A child still running after `timeout_seconds` is killed and reported as timed out.
process_result_t run_process(const std::string& program, const std::vector<std::string>& args,
                             const std::string& input = std::string(),
                             const environment_t& environment = {}, int timeout_seconds = 120);

}  // namespace console_test
