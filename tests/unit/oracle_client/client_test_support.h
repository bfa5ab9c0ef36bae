// Helpers shared by the client-layer unit tests: the library's log lines as plain texts, and
// a fixture that installs the fake client and a capture of the log for each test.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "fake_oci.h"
#include "support/capture_receiver.h"

namespace dsl_test {

inline bool has_line(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// Index of the first line equal to `line`, or -1.
inline long index_of(const std::vector<std::string>& lines, const std::string& line,
                     size_t from = 0) {
  for (size_t i = from; i < lines.size(); ++i) {
    if (lines[i] == line) return static_cast<long>(i);
  }
  return -1;
}

inline long index_starting(const std::vector<std::string>& lines, const std::string& start,
                           size_t from = 0) {
  for (size_t i = from; i < lines.size(); ++i) {
    if (lines[i].rfind(start, 0) == 0) return static_cast<long>(i);
  }
  return -1;
}

class client_test_t : public ::testing::Test {
 protected:
  std::unique_ptr<capture_log_t> log_ = std::make_unique<capture_log_t>();
  std::unique_ptr<fake_oci_t> oci_ = std::make_unique<fake_oci_t>();

  std::vector<std::string> log_lines() const { return plain_log(*log_); }
};

}  // namespace dsl_test
