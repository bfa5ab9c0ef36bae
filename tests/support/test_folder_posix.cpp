#include "support/test_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/text/convert.h"

namespace dsl_test {

namespace fs = std::filesystem;

namespace {

// Where a name below base() lies on the host, worked out here rather than by the mapping
// under test.
fs::path host_of(const std::string& root, const std::u16string& name) {
  std::string rel = util::to_utf8(name);
  for (auto& c : rel) {
    if (c == '\\') c = '/';
  }
  return fs::path(root) / "c" / "t" / rel;
}

}  // namespace

test_folder_t::test_folder_t() {
  char pattern[] = "/tmp/dsl-win-files-XXXXXX";
  const char* made = ::mkdtemp(pattern);
  if (made == nullptr) throw std::runtime_error("mkdtemp failed");
  host_root_ = made;
  if (const char* old = std::getenv("DBSHADOWLINK_ROOT")) {
    had_previous_root_ = true;
    previous_root_ = old;
  }
  ::setenv("DBSHADOWLINK_ROOT", host_root_.c_str(), 1);
  fs::create_directories(fs::path(host_root_) / "c" / "t");
  base_ = u"C:\\t\\";
}

test_folder_t::~test_folder_t() {
  std::error_code ignored;
  fs::remove_all(host_root_, ignored);
  if (had_previous_root_) {
    ::setenv("DBSHADOWLINK_ROOT", previous_root_.c_str(), 1);
  } else {
    ::unsetenv("DBSHADOWLINK_ROOT");
  }
}

std::string test_folder_t::path8(const std::string& name) const {
  return util::to_utf8(base_) + name;
}

void test_folder_t::raw_write(const std::u16string& name, const std::string& bytes) const {
  const fs::path where = host_of(host_root_, name);
  fs::create_directories(where.parent_path());
  std::ofstream out(where, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("raw_write failed");
}

std::string test_folder_t::raw_read(const std::u16string& name) const {
  std::ifstream in(host_of(host_root_, name), std::ios::binary);
  if (!in) throw std::runtime_error("raw_read failed");
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool test_folder_t::raw_exists(const std::u16string& name) const {
  return fs::exists(host_of(host_root_, name));
}

bool test_folder_t::raw_is_directory(const std::u16string& name) const {
  return fs::is_directory(host_of(host_root_, name));
}

void test_folder_t::raw_mkdir(const std::u16string& name) const {
  fs::create_directories(host_of(host_root_, name));
}

win::native_handle_t test_folder_t::raw_open_for_writing(const std::u16string& name) const {
  const int fd = ::open(host_of(host_root_, name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd < 0) throw std::runtime_error("raw open failed");
  return fd;
}

bool running_under_wine() { return false; }

bool raw_handle_is_open(win::native_handle_t handle) {
  return ::fcntl(static_cast<int>(handle), F_GETFD) != -1;
}

}  // namespace dsl_test
