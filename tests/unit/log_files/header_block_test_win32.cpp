// The module facts of the header from real version resources.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/header_block.h"
#include "common/text/convert.h"
#include "support/bin_dir.h"

namespace {

// The shipped library, which carries a version resource with comments.
std::string library_path() { return dsl_test::bin_dir() + "\\DbShadowLink.dll"; }

TEST(PlatformHeaderSource, ReadsTheFixedFileVersionAndTheComments) {
  const std::string path = library_path();
  if (::GetFileAttributesW(reinterpret_cast<const wchar_t*>(util::from_utf8(path).c_str())) ==
      INVALID_FILE_ATTRIBUTES) {
    GTEST_SKIP() << "the library is not built beside the tests: " << path;
  }
  std::string comments;
  const std::string version = logging::platform_header_source().module_version(path, comments);
  EXPECT_EQ(version, "1.0.0.0");
  EXPECT_EQ(comments,
            "Oracle discovery, snapshot consistency, archived-log backup and restore");
}

TEST(PlatformHeaderSource, AModuleWithoutVersionResourceFailsWithTheSizeText) {
  const logging::header_source_t& source = logging::platform_header_source();
  const std::string path = source.module_path();  // this test program has no version resource
  std::string comments = "untouched";
  try {
    source.module_version(path, comments);
    FAIL() << "a version was found";
  } catch (const exc::win_sys_exc_t& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("Size of the version resource is unknown."), std::string::npos) << what;
    EXPECT_NE(what.find("Cannot retrieve the version of the specified module. Module path: [" +
                        path + "]."),
              std::string::npos)
        << what;
  }
  EXPECT_EQ(comments, "untouched");
}

TEST(PlatformHeaderSource, TheProcessIdIsThisProcesssId) {
  EXPECT_EQ(logging::platform_header_source().process_id(), ::GetCurrentProcessId());
}

TEST(PlatformHeaderSource, TheOperatingSystemIsAWindowsVersion) {
  const std::string text = logging::platform_header_source().os_version();
  EXPECT_EQ(text.rfind("Windows ", 0), 0u) << text;
}

}  // namespace
