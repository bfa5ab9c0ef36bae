// The module facts of the header on the host build.
#include <sys/utsname.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/header_block.h"

namespace {

TEST(PlatformHeaderSource, HostModulesHaveNoVersionResource) {
  const logging::header_source_t& source = logging::platform_header_source();
  const std::string path = source.module_path();
  std::string comments = "untouched";
  try {
    source.module_version(path, comments);
    FAIL() << "a version was found";
  } catch (const exc::exc_base_t& e) {
    const std::string what = e.what();
    EXPECT_EQ(what.rfind("Size of the version resource is unknown.", 0), 0u) << what;
    EXPECT_NE(what.find("Cannot retrieve the version of the specified module. Module path: [" +
                        path + "]."),
              std::string::npos)
        << what;
  }
  EXPECT_EQ(comments, "untouched");
}

TEST(PlatformHeaderSource, TheModuleIsThisExecutable) {
  char buffer[4096] = {};
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  ASSERT_GT(length, 0);
  EXPECT_EQ(logging::platform_header_source().module_path(), std::string(buffer));
}

TEST(PlatformHeaderSource, TheProcessIdIsThisProcesssId) {
  EXPECT_EQ(logging::platform_header_source().process_id(), static_cast<uint32_t>(::getpid()));
}

TEST(PlatformHeaderSource, TheOperatingSystemIsTheKernelWithItsRelease) {
  utsname names;
  ASSERT_EQ(::uname(&names), 0);
  const std::string text = logging::platform_header_source().os_version();
  EXPECT_EQ(text.rfind(std::string(names.sysname) + " (", 0), 0u) << text;
  const std::string release = names.release;
  const std::string numbers = text.substr(text.find('(') + 1, text.size() - text.find('(') - 2);
  EXPECT_EQ(release.rfind(numbers.substr(0, numbers.rfind('.')), 0), 0u) << text << " " << release;
}

}  // namespace
