// Windows itself takes "\\server\share" as the root of a share path: the full path of a path
// with ".." at the share root stays on that share. The library's recognition of its own folders
// folds paths the same way.
#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

#include "common/win/impersonation_tables.h"
#include "common/win/safe_folder_sys.h"
#include "support/wide.h"

namespace {

std::u16string system_full_path(const std::u16string& path) {
  std::vector<wchar_t> buffer(1024);
  const DWORD n = ::GetFullPathNameW(reinterpret_cast<const wchar_t*>(path.c_str()),
                                     static_cast<DWORD>(buffer.size()), buffer.data(), nullptr);
  return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), n);
}

TEST(ShareRootWindows, DotDotAtTheShareRootStaysOnTheShare) {
  const std::u16string path = u"\\\\srv\\share\\..\\other\\x";
  EXPECT_EQ(dsl_test::utf8(system_full_path(path)), "\\\\srv\\share\\other\\x");
  EXPECT_EQ(dsl_test::utf8(win::sys::full_path(path)), "\\\\srv\\share\\other\\x");
  EXPECT_EQ(dsl_test::utf8(win::share_key(path)), "\\\\srv\\share");
}

}  // namespace
