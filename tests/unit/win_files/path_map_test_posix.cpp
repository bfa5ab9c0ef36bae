#include "common/win/path_map_posix.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using win::host::map_windows_path;

const std::string kRoot = "/r";

TEST(PathMap, DriveLetterBecomesALowerCaseFolder) {
  EXPECT_EQ(map_windows_path(u"C:\\a\\b", kRoot), "/r/c/a/b");
  EXPECT_EQ(map_windows_path(u"d:/x/Y.txt", kRoot), "/r/d/x/Y.txt");
  EXPECT_EQ(map_windows_path(u"C:", kRoot), "/r/c");
  EXPECT_EQ(map_windows_path(u"C:\\", kRoot), "/r/c/");
}

TEST(PathMap, UncPathLiesUnderUnc) {
  EXPECT_EQ(map_windows_path(u"\\\\srv\\share\\x", kRoot), "/r/unc/srv/share/x");
  EXPECT_EQ(map_windows_path(u"//srv/share", kRoot), "/r/unc/srv/share");
}

TEST(PathMap, LongPrefixesAreDropped) {
  EXPECT_EQ(map_windows_path(u"\\\\?\\C:\\a\\b", kRoot), "/r/c/a/b");
  EXPECT_EQ(map_windows_path(u"\\\\?\\UNC\\srv\\share\\x", kRoot), "/r/unc/srv/share/x");
  EXPECT_EQ(map_windows_path(u"\\\\?\\unc\\srv\\share\\x", kRoot), "/r/unc/srv/share/x");
  EXPECT_EQ(map_windows_path(u"//?/UNC/srv/share", kRoot), "/r/unc/srv/share");
}

TEST(PathMap, RootedPathWithoutDriveLiesOnDriveC) {
  EXPECT_EQ(map_windows_path(u"\\Temp\\x", kRoot), "/r/c/Temp/x");
}

TEST(PathMap, RelativePathStaysRelative) {
  EXPECT_EQ(map_windows_path(u"a\\b.txt", kRoot), "a/b.txt");
  EXPECT_EQ(map_windows_path(u"..\\b", kRoot), "../b");
}

TEST(PathMap, DotsFoldButNeverClimbAboveTheDriveOrTheServer) {
  EXPECT_EQ(map_windows_path(u"C:\\a\\.\\b\\..\\c", kRoot), "/r/c/a/c");
  EXPECT_EQ(map_windows_path(u"C:\\..\\..\\etc", kRoot), "/r/c/etc");
  EXPECT_EQ(map_windows_path(u"\\\\srv\\..\\..\\x", kRoot), "/r/unc/srv/x");
}

TEST(PathMap, RepeatedSeparatorsCollapseAndATrailingOneIsKept) {
  EXPECT_EQ(map_windows_path(u"C:\\\\a//b\\", kRoot), "/r/c/a/b/");
}

TEST(PathMap, RootWithTrailingSlashIsNotDoubled) {
  EXPECT_EQ(map_windows_path(u"C:\\a", "/r/"), "/r/c/a");
}

TEST(PathMap, NarrowPathsAreUtf8) {
  EXPECT_EQ(map_windows_path(std::string("C:\\\xc3\xa9"), kRoot), "/r/c/\xc3\xa9");
}

TEST(PathMap, WildcardsPassUnchanged) {
  EXPECT_EQ(map_windows_path(u"\\\\srv\\share\\*", kRoot), "/r/unc/srv/share/*");
}

class PathMapRoot : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/dsl-map-XXXXXX";
    root_ = ::mkdtemp(pattern);
    if (const char* old = std::getenv("DBSHADOWLINK_ROOT")) saved_ = old;
    ::setenv("DBSHADOWLINK_ROOT", root_.c_str(), 1);
  }
  void TearDown() override {
    std::filesystem::remove_all(root_);
    if (saved_.empty()) {
      ::unsetenv("DBSHADOWLINK_ROOT");
    } else {
      ::setenv("DBSHADOWLINK_ROOT", saved_.c_str(), 1);
    }
  }
  std::string root_;
  std::string saved_;
};

TEST_F(PathMapRoot, RootComesFromTheEnvironment) {
  EXPECT_EQ(win::host::mapping_root(), root_);
  EXPECT_EQ(win::host::host_path(u"C:\\x"), root_ + "/c/x");
}

TEST_F(PathMapRoot, UnsetRootFallsBackToTheHomeFolder) {
  ::unsetenv("DBSHADOWLINK_ROOT");
  const char* home = std::getenv("HOME");
  ASSERT_NE(home, nullptr);
  EXPECT_EQ(win::host::mapping_root(), std::string(home) + "/.dbshadowlink");
  ::setenv("DBSHADOWLINK_ROOT", "", 1);
  EXPECT_EQ(win::host::mapping_root(), std::string(home) + "/.dbshadowlink");
}

TEST_F(PathMapRoot, ExistingNamesAreFoundWithoutRegardToCase) {
  std::filesystem::create_directories(root_ + "/c/Oracle/Product");
  std::ofstream(root_ + "/c/Oracle/Product/SPFILEORCL.ORA") << "x";
  EXPECT_EQ(win::host::host_path(u"C:\\ORACLE\\product\\spfileorcl.ora"),
            root_ + "/c/Oracle/Product/SPFILEORCL.ORA");
}

TEST_F(PathMapRoot, MissingPartsKeepTheirSpellingBelowTheLastFoundFolder) {
  std::filesystem::create_directories(root_ + "/c/Logs");
  EXPECT_EQ(win::host::host_path(u"C:\\LOGS\\New\\x.log"), root_ + "/c/Logs/New/x.log");
  EXPECT_EQ(win::host::host_path(u"C:\\logs\\"), root_ + "/c/Logs/");
}

TEST_F(PathMapRoot, ShareNamesAreFoundWithoutRegardToCase) {
  std::filesystem::create_directories(root_ + "/unc/srv/Share");
  EXPECT_EQ(win::host::host_path(u"\\\\SRV\\share\\a"), root_ + "/unc/srv/Share/a");
}

}  // namespace
