// What only the host build can show: shares exist there as folders of the mapping root, so
// UNC paths can be created and searched for real.
#include "common/win/path_ops.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/exc/exc_base.h"
#include "common/win/file.h"
#include "common/win/file_codes.h"
#include "support/ofd_lock_posix.h"
#include "support/test_folder.h"

namespace {

namespace fs = std::filesystem;
using dsl_test::test_folder_t;

TEST(HostShares, CreateDirectoriesBelowAShareNeverTouchesTheServerOrTheShare) {
  test_folder_t dir;
  const fs::path share = fs::path(dir.host_root()) / "unc" / "srv" / "share";
  fs::create_directories(share);
  win::create_directories(u"\\\\srv\\share\\a\\b\\file");
  EXPECT_TRUE(fs::is_directory(share / "a" / "b"));
  EXPECT_FALSE(fs::exists(share / "a" / "b" / "file"));
}

TEST(HostShares, CreateDirectoriesWithTheLongUncPrefixBehavesTheSame) {
  test_folder_t dir;
  const fs::path share = fs::path(dir.host_root()) / "unc" / "srv" / "share";
  fs::create_directories(share);
  win::create_directories(u"\\\\?\\UNC\\srv\\share\\a\\file");
  EXPECT_TRUE(fs::is_directory(share / "a"));
  EXPECT_FALSE(fs::exists(share / "a" / "file"));
}

TEST(HostShares, CreateDirectoriesOnAMissingShareFailsWithoutMakingIt) {
  test_folder_t dir;
  try {
    win::create_directories(u"\\\\srv\\noshare\\a\\file");
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorPathNotFound);
    EXPECT_EQ(e.messages()[1].text, "Failed to create directory [\\\\srv\\noshare\\a\\].");
  }
  EXPECT_FALSE(fs::exists(fs::path(dir.host_root()) / "unc" / "srv" / "noshare"));
}

TEST(HostShares, FileExistsOnAShareRootSearchesItsContents) {
  test_folder_t dir;
  fs::create_directories(fs::path(dir.host_root()) / "unc" / "srv" / "share");
  EXPECT_TRUE(win::file_exists(u"\\\\srv\\share"));
  EXPECT_TRUE(win::file_exists(u"\\\\srv\\share\\"));
  EXPECT_FALSE(win::file_exists(u"\\\\srv\\other"));
  EXPECT_FALSE(win::file_exists(u"\\\\nosrv\\share"));
}

TEST(HostShares, FilesOnAShareOpenLikeLocalOnes) {
  test_folder_t dir;
  fs::create_directories(fs::path(dir.host_root()) / "unc" / "srv" / "share");
  win::win_file_t::create(u"\\\\srv\\share\\x.txt")->write(3, "abc");
  std::ifstream in(fs::path(dir.host_root()) / "unc" / "srv" / "share" / "x.txt");
  std::string text;
  in >> text;
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(win::file_size(u"\\\\?\\UNC\\srv\\share\\x.txt"), 3u);
}

TEST(HostPaths, NamesAreFoundWithoutRegardToCaseAsOnWindows) {
  test_folder_t dir;
  dir.raw_write(u"Oracle\\SPFILEORCL.ORA", "x");
  EXPECT_TRUE(win::file_exists(u"C:\\T\\oracle\\spfileorcl.ora"));
  EXPECT_EQ(win::file_size(u"c:\\t\\ORACLE\\SpFileOrcl.ora"), 1u);
  // A new file in a folder spelled otherwise lands in the existing folder.
  win::win_file_t::create(u"C:\\t\\ORACLE\\new.txt");
  EXPECT_TRUE(dir.raw_exists(u"Oracle\\new.txt"));
}

TEST(HostPaths, LockRegionOverTheWholeFileKeepsOpensOut) {
  // A lock that runs to the end of the offset range also covers the share markers: an open
  // meets it as another process's share mode.
  test_folder_t dir;
  dir.raw_write(u"a.bin", "x");
  const int fd = ::open((dir.host_root() + "/c/t/a.bin").c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  ASSERT_TRUE(dsl_test::take_ofd_lock(fd, F_WRLCK, 0, 0));
  try {
    win::win_file_t::open_read(dir.path(u"a.bin"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorSharingViolation);
  }
  ::close(fd);
  EXPECT_TRUE(win::win_file_t::open_read(dir.path(u"a.bin")));
}

}  // namespace
