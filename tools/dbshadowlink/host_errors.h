// The two ways the host stops early, and the exit status of each. A usage error (exit 2) is
// the caller's mistake, found before the library was asked anything about it; a library error
// (exit 1) is the library that cannot be loaded, lacks an export or breaks its contract.
// A failing export is no exception: its command reports it and returns exit_failure.
#pragma once
#include <stdexcept>
#include <string>

namespace host {

constexpr int exit_ok = 0;
constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

class usage_error_t : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class library_error_t : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace host
