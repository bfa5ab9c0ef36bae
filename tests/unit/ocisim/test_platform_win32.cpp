#include <windows.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "test_platform.h"

namespace ocisim_test {

std::string env_value(const char* name) {
  std::vector<char> buffer(32768);
  const DWORD length = GetEnvironmentVariableA(name, buffer.data(), static_cast<DWORD>(buffer.size()));
  if (length == 0 || length >= buffer.size()) return std::string();
  return std::string(buffer.data(), length);
}

void set_env(const char* name, const std::string& value) {
  // _putenv keeps the C runtime's copy and the process environment block in step, as the
  // library's own _putenv does.
  const std::string assignment = std::string(name) + "=" + value;
  _putenv(assignment.c_str());
  SetEnvironmentVariableA(name, value.empty() ? nullptr : value.c_str());
}

std::string make_temp_dir() {
  char base[MAX_PATH + 1];
  const DWORD length = GetTempPathA(sizeof base, base);
  if (length == 0) return std::string();
  static unsigned counter = 0;
  for (;;) {
    const std::string path = std::string(base) + "ocisim-test-" + std::to_string(GetCurrentProcessId()) +
                             "-" + std::to_string(++counter);
    if (CreateDirectoryA(path.c_str(), /*lpSecurityAttributes=*/nullptr)) return path;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return std::string();
  }
}

void remove_tree(const std::string& path) {
  WIN32_FIND_DATAA data;
  HANDLE find = FindFirstFileA((path + "\\*").c_str(), &data);
  if (find != INVALID_HANDLE_VALUE) {
    do {
      const std::string name = data.cFileName;
      if (name == "." || name == "..") continue;
      const std::string child = path + "\\" + name;
      if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
        remove_tree(child);
      } else {
        DeleteFileA(child.c_str());
      }
    } while (FindNextFileA(find, &data));
    FindClose(find);
  }
  RemoveDirectoryA(path.c_str());
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
  return CopyFileA(from.c_str(), to.c_str(), /*bFailIfExists=*/FALSE) != 0;
}

bool file_exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

long long file_size(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return -1;
  return (static_cast<long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

std::string join(const std::string& folder, const std::string& name) { return folder + "\\" + name; }

std::string scenario_folder(const std::string& test_folder, const std::string& name) {
  return test_folder + "\\" + name;
}

std::string native_of(const std::string&, const std::string& windows_path) { return windows_path; }

unsigned long current_process_id() { return GetCurrentProcessId(); }

unsigned long current_thread_id() { return GetCurrentThreadId(); }

}  // namespace ocisim_test
