#include "logs_fixture.h"
#include "support/bin_dir.h"

namespace logs_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }

std::string native_path(const dsl_test::test_folder_t& folder, const std::string& windowsPath) {
  // "C:\t\x" lies at <root>/c/t/x.
  std::string rest = windowsPath.substr(2);
  for (char& c : rest) {
    if (c == '\\') c = '/';
  }
  return folder.host_root() + "/c" + rest;
}

}  // namespace logs_test
