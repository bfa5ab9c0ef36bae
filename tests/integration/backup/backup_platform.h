// What the backup tests need from the platform: where the built simulated client and its image
// tool are, and the native path of a Windows path of the test machine. Main thread only.
#pragma once
#include <string>

namespace backup_test {

std::string ocisim_library();
std::string image_tool();
// The path the platform's own calls take for a Windows path of the machine (the drive mapping
// of the host build; the path itself on Windows), UTF-8.
std::string native_path(const std::u16string& windows_path);
// Runs a command line with the system's interpreter; its exit code.
int run_command(const std::string& command_line);

}  // namespace backup_test
