// What the console tests need from the platform: where the built host and library are, a
// system library to stand in for a wrong one, the environment, and loading the library into
// the test process for reference calls. Main thread only.
#pragma once
#include <string>

#include "support/bin_dir.h"

namespace console_test {

const char* host_file_name();     // dbshadowlink.exe or dbshadowlink
const char* library_file_name();  // DbShadowLink.dll or libDbShadowLink.so

// The folder that holds the host and the library.
using dsl_test::bin_dir;
// A library of the system that loads fine and exports none of the library's functions.
std::string library_without_exports();

// Where the library keeps a log of this name when no folder is configured: the common
// application-data folder on drive C, which the host build finds below `machine_root`.
std::string standard_log_file(const std::string& machine_root, const std::string& name);

void set_environment(const std::string& name, const std::string& value);

// Loads a library into the test process; null with `error` set on failure. Never unloaded.
void* load_library(const std::string& path, std::string& error);
void* library_symbol(void* library, const char* name);

}  // namespace console_test
