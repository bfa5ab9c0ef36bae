// What the benchmark programs share: the median of a sample, the way a benchmark gives up, a
// scratch folder of its own in /tmp that goes with everything in it, and the simulated client
// that the Oracle benchmarks load.
#pragma once
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

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

// The folder of this program (from /proc/self/exe); `program` names the caller when that fails.
inline std::string own_folder(const char* program) {
  char buffer[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) fail(program, "cannot find this program's path");
  const std::string exe(buffer, static_cast<size_t>(length));
  return exe.substr(0, exe.find_last_of('/'));
}

// Points the library at the simulated client built beside the benchmarks (bin/ocisim), unless
// DSL_OCI_LIBRARY already names a client, and keeps ocisim from writing a journal, whose
// writing would be measured too.
inline void use_simulated_client(const char* program) {
  if (const char* configured = std::getenv("DSL_OCI_LIBRARY"); !configured || !*configured) {
    const std::string library = own_folder(program) + "/../bin/ocisim/libclntsh.so";
    if (!std::filesystem::exists(library)) {
      fail(program, "no simulated client at " + library + " (build target ocisim)");
    }
    ::setenv("DSL_OCI_LIBRARY", library.c_str(), 1);
  }
  ::unsetenv("OCISIM_JOURNAL");
}

}  // namespace bench
