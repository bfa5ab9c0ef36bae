#include <ftw.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "test_platform.h"

namespace ocisim_test {

std::string env_value(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

void set_env(const char* name, const std::string& value) {
  if (value.empty()) {
    unsetenv(name);
  } else {
    setenv(name, value.c_str(), /*overwrite=*/1);
  }
}

std::string make_temp_dir() {
  std::string base = env_value("TMPDIR");
  if (base.empty()) base = "/tmp";
  std::string pattern = base + "/ocisim-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) return std::string();
  return pattern;
}

void remove_tree(const std::string& path) {
  nftw(path.c_str(),
       [](const char* p, const struct stat*, int, struct FTW*) { return ::remove(p); },
       /*nopenfd=*/16, FTW_DEPTH | FTW_PHYS);
}

bool read_file(const std::string& path, std::string& content) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream text;
  text << in.rdbuf();
  content = text.str();
  return true;
}

bool write_file(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  return static_cast<bool>(out);
}

bool copy_file(const std::string& from, const std::string& to) {
  std::string content;
  if (!read_file(from, content)) return false;
  if (!write_file(to, content)) return false;
  return chmod(to.c_str(), 0755) == 0;
}

bool file_exists(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0;
}

long long file_size(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? static_cast<long long>(info.st_size) : -1;
}

std::string join(const std::string& folder, const std::string& name) { return folder + "/" + name; }

std::string scenario_folder(const std::string&, const std::string& name) { return "C:\\" + name; }

std::string native_of(const std::string& test_folder, const std::string& windows_path) {
  std::string rest = windows_path.substr(2);  // after the drive
  for (char& c : rest) {
    if (c == '\\') c = '/';
  }
  const char drive = static_cast<char>(windows_path[0] | 0x20);
  return test_folder + "/root/" + std::string(1, drive) + rest;
}

unsigned long current_process_id() { return static_cast<unsigned long>(getpid()); }

unsigned long current_thread_id() { return static_cast<unsigned long>(syscall(SYS_gettid)); }

}  // namespace ocisim_test
