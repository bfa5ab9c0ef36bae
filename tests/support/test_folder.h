// A private folder for one test of the file layer, removed with everything in it at the end.
// On the host build it is a fresh DBSHADOWLINK_ROOT with drive C holding the folder "C:\t\";
// on Windows a fresh folder below the system's temp folder. The raw_ helpers reach the files
// with the platform's own means, not through the code under test.
#pragma once
#include <cstdint>
#include <string>

#include "common/win/file_codes.h"

namespace dsl_test {

class test_folder_t {
 public:
  test_folder_t();
  ~test_folder_t();
  test_folder_t(const test_folder_t&) = delete;
  test_folder_t& operator=(const test_folder_t&) = delete;

  // The folder as a Windows path, ending in "\".
  const std::u16string& base() const { return base_; }
  // base() followed by `name` (which may hold "\").
  std::u16string path(const std::u16string& name) const { return base_ + name; }
  std::string path8(const std::string& name) const;

  // The host folder that DBSHADOWLINK_ROOT names; empty on Windows.
  const std::string& host_root() const { return host_root_; }

  void raw_write(const std::u16string& name, const std::string& bytes) const;
  std::string raw_read(const std::u16string& name) const;
  bool raw_exists(const std::u16string& name) const;
  bool raw_is_directory(const std::u16string& name) const;
  void raw_mkdir(const std::u16string& name) const;
  // An open handle (descriptor) with read and write access, owned by the caller.
  win::native_handle_t raw_open_for_writing(const std::u16string& name) const;

 private:
  std::u16string base_;
  std::string host_root_;
  std::string previous_root_;
  bool had_previous_root_ = false;
};

// True when the Windows build runs under Wine, which does not refuse reads and writes in a
// region that another process has locked.
bool running_under_wine();

// Whether the system still knows `handle` as open.
bool raw_handle_is_open(win::native_handle_t handle);

}  // namespace dsl_test
