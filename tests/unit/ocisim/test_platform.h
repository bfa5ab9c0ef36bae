// What the ocisim tests need from the operating system: environment variables as a client
// library sees them, a private temporary folder per test, whole files, and the ids the
// journal writes. Test thread only, unless said otherwise.
#pragma once
#include <string>

namespace ocisim_test {

std::string env_value(const char* name);
// Sets (or, for an empty value, removes) a variable of the process environment.
void set_env(const char* name, const std::string& value);

// A new empty folder in the system's temporary folder; native path with '/' or '\'.
std::string make_temp_dir();
void remove_tree(const std::string& path);

bool read_file(const std::string& path, std::string& content);
bool write_file(const std::string& path, const std::string& content);
bool copy_file(const std::string& from, const std::string& to);
bool file_exists(const std::string& path);
long long file_size(const std::string& path);
// Joins a folder and a name with the platform's separator.
std::string join(const std::string& folder, const std::string& name);

// Files a scenario names by Windows paths: a Windows folder `name` for the test, and the
// native path of a Windows path in it. On Windows the folder lies in the test folder; on the
// host build it is C:\<name>, which the drive mapping puts below <test folder>/root.
std::string scenario_folder(const std::string& test_folder, const std::string& name);
std::string native_of(const std::string& test_folder, const std::string& windows_path);

unsigned long current_process_id();
unsigned long current_thread_id();  // any thread

}  // namespace ocisim_test
