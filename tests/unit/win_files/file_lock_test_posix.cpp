// The host build's stand-ins for Windows' file errors and share modes.
#include "common/win/file_lock_posix.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>

#include "common/exc/exc_base.h"
#include "common/win/errno_codes_posix.h"
#include "common/win/file.h"
#include "common/win/file_codes.h"
#include "support/ofd_lock_posix.h"
#include "support/test_folder.h"

namespace {

namespace fs = std::filesystem;
using win::host::error_from_errno;

TEST(HostErrors, MissingFileAndMissingFolderAreToldApart) {
  dsl_test::test_folder_t dir;
  const std::string base = dir.host_root() + "/c/t";
  EXPECT_EQ(error_from_errno(ENOENT, base + "/missing.txt"), win::kErrorFileNotFound);
  EXPECT_EQ(error_from_errno(ENOENT, base + "/no/missing.txt"), win::kErrorPathNotFound);
  EXPECT_EQ(error_from_errno(ENOENT, base + "/missing/"), win::kErrorFileNotFound);
  EXPECT_EQ(error_from_errno(ENOENT, ""), win::kErrorFileNotFound);
}

TEST(HostErrors, EachErrnoHasItsWin32Number) {
  EXPECT_EQ(error_from_errno(0, ""), 0u);
  EXPECT_EQ(error_from_errno(ENOTDIR, ""), win::kErrorPathNotFound);
  EXPECT_EQ(error_from_errno(EACCES, ""), win::kErrorAccessDenied);
  EXPECT_EQ(error_from_errno(EPERM, ""), win::kErrorAccessDenied);
  EXPECT_EQ(error_from_errno(EISDIR, ""), win::kErrorAccessDenied);
  EXPECT_EQ(error_from_errno(EEXIST, ""), win::kErrorAlreadyExists);
  EXPECT_EQ(error_from_errno(ENOTEMPTY, ""), win::kErrorDirNotEmpty);
  EXPECT_EQ(error_from_errno(ENOSPC, ""), win::kErrorDiskFull);
  EXPECT_EQ(error_from_errno(EFBIG, ""), win::kErrorDiskFull);
  EXPECT_EQ(error_from_errno(EAGAIN, ""), win::kErrorSharingViolation);
  EXPECT_EQ(error_from_errno(ENAMETOOLONG, ""), win::kErrorFilenameExcedRange);
  EXPECT_EQ(error_from_errno(EIO, ""), win::kErrorIoDevice);
}

TEST(HostLocks, RegionTestSeesOnlyOtherOpensAndOnlyTheRegion) {
  dsl_test::test_folder_t dir;
  dir.raw_write(u"r.bin", std::string(100, '.'));
  const std::string path = dir.host_root() + "/c/t/r.bin";
  const int holder = ::open(path.c_str(), O_RDWR);
  const int other = ::open(path.c_str(), O_RDWR);
  ASSERT_GE(holder, 0);
  ASSERT_GE(other, 0);
  ASSERT_TRUE(dsl_test::take_ofd_lock(holder, F_RDLCK, 10, 10));
  // A shared lock stops writers but lets readers through.
  EXPECT_TRUE(win::host::region_locked_by_other(other, true, 15, 1));
  EXPECT_FALSE(win::host::region_locked_by_other(other, false, 15, 1));
  EXPECT_FALSE(win::host::region_locked_by_other(other, true, 20, 50));
  EXPECT_TRUE(win::host::region_locked_by_other(other, true, 0, 11));
  EXPECT_FALSE(win::host::region_locked_by_other(other, true, 0, 10));
  EXPECT_FALSE(win::host::region_locked_by_other(other, true, 15, 0));
  // The holder's own lock is no obstacle to the holder.
  EXPECT_FALSE(win::host::region_locked_by_other(holder, true, 15, 1));
  ::close(holder);
  EXPECT_FALSE(win::host::region_locked_by_other(other, true, 15, 1));
  ::close(other);
}

TEST(HostLocks, RegionAtThePositionIsTakenFromTheFilePosition) {
  dsl_test::test_folder_t dir;
  dir.raw_write(u"p.bin", std::string(100, '.'));
  const std::string path = dir.host_root() + "/c/t/p.bin";
  const int holder = ::open(path.c_str(), O_RDWR);
  const int other = ::open(path.c_str(), O_RDWR);
  ASSERT_GE(holder, 0);
  ASSERT_GE(other, 0);
  ASSERT_TRUE(dsl_test::take_ofd_lock(holder, F_WRLCK, 40, 10));
  using win::host::region_at_position_locked_by_other;
  ASSERT_EQ(::lseek(other, 30, SEEK_SET), 30);
  EXPECT_FALSE(region_at_position_locked_by_other(other, false, 10));
  EXPECT_TRUE(region_at_position_locked_by_other(other, false, 11));
  EXPECT_TRUE(region_at_position_locked_by_other(other, true, 11));
  EXPECT_FALSE(region_at_position_locked_by_other(other, true, 0));
  ASSERT_EQ(::lseek(other, 49, SEEK_SET), 49);
  EXPECT_TRUE(region_at_position_locked_by_other(other, false, 1));
  ASSERT_EQ(::lseek(other, 50, SEEK_SET), 50);
  EXPECT_FALSE(region_at_position_locked_by_other(other, true, 1000));
  // The test leaves the position where it was.
  EXPECT_EQ(::lseek(other, 0, SEEK_CUR), 50);
  EXPECT_FALSE(region_at_position_locked_by_other(holder, true, 100));
  ::close(holder);
  ::close(other);
}

TEST(HostLocks, RegionAtTheFarEndOfTheOffsetsDoesNotMeetTheShareMarkers) {
  // Only a file system whose files may reach the far end of the offsets lets a position
  // stand there; tmpfs does, the usual disk file systems stop at some terabytes.
  char name[] = "/dev/shm/dsl-far-XXXXXX";
  const int other = ::mkstemp(name);
  if (other < 0) GTEST_SKIP() << "no tmpfs at /dev/shm";
  ::unlink(name);
  const off_t far = std::numeric_limits<off_t>::max() - 100;
  if (::lseek(other, far, SEEK_SET) != far) {
    ::close(other);
    GTEST_SKIP() << "/dev/shm does not take a position at the far end of the offsets";
  }
  // Another open holds its share markers there, as every open of the file layer does.
  const std::string path = "/proc/self/fd/" + std::to_string(other);
  const int marked = ::open(path.c_str(), O_RDWR);
  ASSERT_GE(marked, 0);
  ASSERT_EQ(win::host::take_share_markers(marked, win::kGenericRead, win::kFileShareRead), 0u);
  // The plain question over the range meets the markers; the region test must not.
  struct flock plain = {};
  plain.l_type = F_WRLCK;
  plain.l_whence = SEEK_CUR;
  plain.l_len = 90;
  ASSERT_EQ(::fcntl(other, F_OFD_GETLK, &plain), 0);
  EXPECT_NE(plain.l_type, F_UNLCK);
  EXPECT_FALSE(win::host::region_at_position_locked_by_other(other, true, 90));
  // A real lock just below the markers is still met.
  const int holder = ::open(path.c_str(), O_RDWR);
  ASSERT_GE(holder, 0);
  ASSERT_TRUE(dsl_test::take_ofd_lock(holder, F_WRLCK, far + 10, 5));
  EXPECT_TRUE(win::host::region_at_position_locked_by_other(other, true, 90));
  EXPECT_EQ(::lseek(other, 0, SEEK_CUR), far);
  ::close(holder);
  ::close(marked);
  ::close(other);
}

TEST(HostLocks, DeleteIsWithheldWhileAnOpenOfThisLayerLasts) {
  dsl_test::test_folder_t dir;
  const std::string path = dir.host_root() + "/c/t/d.bin";
  EXPECT_FALSE(win::host::delete_withheld(path));
  auto file = win::win_file_t::create(dir.path(u"d.bin"));
  EXPECT_TRUE(win::host::delete_withheld(path));
  file.reset();
  EXPECT_FALSE(win::host::delete_withheld(path));
  uint32_t error = 0;
  win::open_mode_t sharing_delete{win::kGenericRead,
                                  win::kFileShareRead | win::kFileShareDelete,
                                  win::kOpenExisting, 0};
  auto shared = win::win_file_t::try_open(dir.path(u"d.bin"), sharing_delete, error);
  ASSERT_TRUE(shared);
  EXPECT_FALSE(win::host::delete_withheld(path));
}

TEST(HostLocks, FileSizeLimitMakesAWriteFailAsADiskFull) {
  dsl_test::test_folder_t dir;
  const pid_t pid = ::fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    // The child alone meets the limit; the signal it would get stands down so that the write
    // itself reports.
    ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = {1000, 1000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    int code = 1;
    try {
      auto file = win::win_file_t::create(dir.path(u"big.bin"));
      const std::string bytes(3000, 'b');
      file->write(static_cast<uint32_t>(bytes.size()), bytes.data());
      code = 2;
    } catch (const exc::win_sys_exc_t& e) {
      code = e.code() == win::kErrorDiskFull &&
                     e.messages()[1].text ==
                         "Failed to write data to the file [" + dir.path8("big.bin") + "]."
                 ? 0
                 : 3;
    } catch (...) {
      code = 4;
    }
    ::_exit(code);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(pid, &status, 0), pid);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  // The part that fitted stays written; nothing rolls it back.
  EXPECT_EQ(fs::file_size(dir.host_root() + "/c/t/big.bin"), 1000u);
}

}  // namespace
