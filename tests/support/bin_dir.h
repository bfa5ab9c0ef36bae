// Where the built programs and libraries are that tests start or load.
#pragma once
#include <string>

namespace dsl_test {

// The folder that DSL_BIN_DIR names, as this platform's calls take it (under Wine the host
// path CTest hands over becomes a DOS path), else the test program's own folder; UTF-8,
// without a trailing separator.
std::string bin_dir();

}  // namespace dsl_test
