// What the benchmark programs share: the median of a sample, the way a benchmark gives up, and
// a scratch folder of its own in /tmp that goes with everything in it.
#pragma once
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace bench {

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Says why on standard error, prefixed with the program's name, and ends with status 1.
[[noreturn]] inline void fail(const char* program, const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", program, text.c_str());
  std::exit(1);
}

class scratch_folder_t {
 public:
  // A fresh /tmp/<prefix>XXXXXX; `program` names the caller when that fails.
  scratch_folder_t(const char* program, const std::string& prefix) {
    std::string pattern = "/tmp/" + prefix + "XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) fail(program, "mkdtemp failed");
    path_ = pattern;
  }
  ~scratch_folder_t() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  scratch_folder_t(const scratch_folder_t&) = delete;
  scratch_folder_t& operator=(const scratch_folder_t&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace bench
