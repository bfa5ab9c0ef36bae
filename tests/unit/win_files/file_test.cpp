#include "common/win/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/file_codes.h"
#include "support/holder_process.h"
#include "support/capture_receiver.h"
#include "support/test_folder.h"

namespace {

using dsl_test::hold_kind_t;
using dsl_test::holder_process_t;
using dsl_test::test_folder_t;
using win::win_file_t;
using strings = std::vector<std::string>;

std::string read_all(win_file_t& file) {
  std::string out;
  char buffer[4096];
  for (;;) {
    const uint32_t got = file.read(buffer, sizeof buffer);
    if (got == 0) break;
    out.append(buffer, got);
  }
  return out;
}

// The caller's sentence of a system failure: the line after the system's own text.
std::string sentence_of(const exc::win_sys_exc_t& e) {
  return e.messages().size() >= 2 ? e.messages()[1].text : std::string();
}

long retries_in(const strings& bodies) {
  return std::count(bodies.begin(), bodies.end(), std::string("WARN|Retry."));
}

TEST(WinFile, CreateOrOpenMakesAMissingFileAndKeepsAnExistingOne) {
  test_folder_t dir;
  {
    auto file = win_file_t::create_or_open(dir.path(u"a.txt"));
    file->write(5, "hello");
  }
  EXPECT_EQ(dir.raw_read(u"a.txt"), "hello");
  {
    auto file = win_file_t::create_or_open(dir.path8("a.txt"));
    EXPECT_EQ(file->size(), 5u);
    EXPECT_EQ(file->seek_end(0), 5);
    file->write(1, "!");
  }
  EXPECT_EQ(dir.raw_read(u"a.txt"), "hello!");
}

TEST(WinFile, CreateWithOverwriteEmptiesTheFile) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "old contents");
  auto file = win_file_t::create(dir.path(u"a.txt"));
  EXPECT_EQ(file->size(), 0u);
}

TEST(WinFile, CreateWithoutOverwriteRefusesAnExistingFile) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "x");
  try {
    win_file_t::create(dir.path(u"a.txt"), /*overwrite=*/false);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorFileExists);
    EXPECT_EQ(sentence_of(e), "Failed to create or open file [" + dir.path8("a.txt") + "].");
  }
  EXPECT_EQ(dir.raw_read(u"a.txt"), "x");
}

TEST(WinFile, CreateInAMissingFolderFailsWithPathNotFound) {
  test_folder_t dir;
  try {
    win_file_t::create_or_open(dir.path(u"no\\such\\a.txt"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorPathNotFound);
    EXPECT_EQ(sentence_of(e), "Failed to create or open file [" + dir.path8("no\\such\\a.txt") +
                                  "].");
  }
}

TEST(WinFile, OpenReadOfAMissingFileFailsWithFileNotFound) {
  test_folder_t dir;
  try {
    win_file_t::open_read(dir.path(u"missing.txt"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorFileNotFound);
    EXPECT_EQ(sentence_of(e), "Failed to open file [" + dir.path8("missing.txt") +
                                  "] in readonly mode.");
    EXPECT_EQ(e.messages().back().text, "Error code: 0x00000002");
  }
}

TEST(WinFile, OpenReadNocacheHasItsOwnFailureText) {
  test_folder_t dir;
  try {
    win_file_t::open_read_nocache(dir.path(u"missing.txt"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(sentence_of(e), "Failed to open file [" + dir.path8("missing.txt") +
                                  "] in readonly mode (without cache).");
  }
}

TEST(WinFile, OpenReadNocacheReadsWholeSectors) {
  test_folder_t dir;
  dir.raw_write(u"a.bin", std::string(4096, 'z'));
  auto file = win_file_t::open_read_nocache(dir.path(u"a.bin"));
  // Sector-sized and sector-aligned, as reads past the cache must be on Windows.
  std::vector<char> buffer(4096 * 2);
  char* aligned = buffer.data() + (4096 - reinterpret_cast<uintptr_t>(buffer.data()) % 4096) % 4096;
  EXPECT_EQ(file->read(aligned, 4096), 4096u);
  EXPECT_EQ(std::string(aligned, 4096), std::string(4096, 'z'));
}

TEST(WinFile, ReadAtTheEndGivesASmallerCountWithoutFailure) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "abc");
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  char buffer[10];
  EXPECT_EQ(file->read(buffer, sizeof buffer), 3u);
  EXPECT_EQ(std::string(buffer, 3), "abc");
  EXPECT_EQ(file->read(buffer, sizeof buffer), 0u);
}

TEST(WinFile, WriteOnAReadOnlyFileFailsAtOnceWithAccessDenied) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "abc");
  dsl_test::capture_log_t log;
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  const auto start = std::chrono::steady_clock::now();
  try {
    file->write(3, "xyz");
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorAccessDenied);
    EXPECT_EQ(sentence_of(e), "Failed to write data to the file [" + dir.path8("a.txt") + "].");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  EXPECT_EQ(retries_in(log.bodies()), 0);
  // The file stays usable after the failure.
  char buffer[3];
  EXPECT_EQ(file->read(buffer, 3), 3u);
  EXPECT_EQ(dir.raw_read(u"a.txt"), "abc");
}

TEST(WinFile, SeekAnswersTheNewPositionForEachMethod) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "0123456789");
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  EXPECT_EQ(file->seek(4, win::kFileBegin), 4);
  EXPECT_EQ(file->seek(2, win::kFileCurrent), 6);
  EXPECT_EQ(file->seek(-3, win::kFileEnd), 7);
  EXPECT_EQ(file->seek_set(1), 1);
  char c = 0;
  ASSERT_EQ(file->read(&c, 1), 1u);
  EXPECT_EQ(c, '1');
  EXPECT_EQ(file->seek_end(0), 10);
}

TEST(WinFile, SeekFailureWithAnUnknownMethodPrintsItsNumber) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "0123456789");
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  try {
    file->seek(1, 7);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(sentence_of(e), "Seek operation has failed. File: [" + dir.path8("a.txt") +
                                  "]. Distance to move: [1]. Move method: [7].");
  }
}

TEST(WinFile, SeekBeforeTheStartFailsAndNamesTheMethod) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "0123456789");
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  try {
    file->seek(-5, win::kFileBegin);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorNegativeSeek);
    EXPECT_EQ(sentence_of(e), "Seek operation has failed. File: [" + dir.path8("a.txt") +
                                  "]. Distance to move: [-5]. Move method: [FILE_BEGIN].");
  }
  EXPECT_EQ(file->seek(0, win::kFileCurrent), 0);
}

TEST(WinFile, MoveMethodTexts) {
  EXPECT_EQ(win_file_t::move_method_text(0), "FILE_BEGIN");
  EXPECT_EQ(win_file_t::move_method_text(1), "FILE_CURRENT");
  EXPECT_EQ(win_file_t::move_method_text(2), "FILE_END");
  EXPECT_EQ(win_file_t::move_method_text(3), "3");
  EXPECT_EQ(win_file_t::move_method_text(4294967295u), "4294967295");
}

TEST(WinFile, ResetSizeCutsAndLeavesThePositionAtTheNewEnd) {
  test_folder_t dir;
  auto file = win_file_t::create(dir.path(u"a.txt"));
  file->write(10, "0123456789");
  file->reset_size(4);
  EXPECT_EQ(file->size(), 4u);
  EXPECT_EQ(file->seek(0, win::kFileCurrent), 4);
  file->write(1, "x");
  file->reset_size(0);
  EXPECT_EQ(file->size(), 0u);
  file->write(2, "ab");
  file.reset();
  EXPECT_EQ(dir.raw_read(u"a.txt"), "ab");
}

TEST(WinFile, ResetSizeCanGrowTheFile) {
  test_folder_t dir;
  auto file = win_file_t::create(dir.path(u"a.txt"));
  file->reset_size(5000);
  EXPECT_EQ(file->size(), 5000u);
  EXPECT_EQ(file->seek(0, win::kFileCurrent), 5000);
}

TEST(WinFile, ResetSizeOfAReadOnlyFileFailsAtTheTruncation) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "0123456789");
  auto file = win_file_t::open_read(dir.path(u"a.txt"));
  try {
    file->reset_size(3);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    // Windows and the host build answer access denied; Wine answers invalid parameter.
    EXPECT_TRUE(e.code() == win::kErrorAccessDenied || e.code() == win::kErrorInvalidParameter)
        << e.code();
    EXPECT_EQ(sentence_of(e), "Unable to reset file size: trunk operation has failed. File: [" +
                                  dir.path8("a.txt") + "].");
  }
  EXPECT_EQ(dir.raw_read(u"a.txt"), "0123456789");
}

TEST(WinFile, FlushAndSizeWork) {
  test_folder_t dir;
  auto file = win_file_t::create(dir.path(u"a.txt"));
  file->write(3, "abc");
  file->flush();
  EXPECT_EQ(file->size(), 3u);
}

TEST(WinFile, PathIsAvailableInBothForms) {
  test_folder_t dir;
  auto file = win_file_t::create(dir.path(u"\u00e9.txt"));
  EXPECT_EQ(file->path_wide(), dir.path(u"\u00e9.txt"));
  EXPECT_EQ(file->path_narrow(), dir.path8("\xc3\xa9.txt"));
}

TEST(WinFile, FromHandleTakesTheHandleOverAndClosesItAtTheEnd) {
  test_folder_t dir;
  const win::native_handle_t handle = dir.raw_open_for_writing(u"a.txt");
  ASSERT_TRUE(dsl_test::raw_handle_is_open(handle));
  {
    auto taken = win_file_t::from_handle(handle, "named.txt");
    EXPECT_EQ(taken->path_narrow(), "named.txt");
    EXPECT_EQ(taken->path_wide(), u"named.txt");
    taken->write(2, "ok");
  }
  EXPECT_FALSE(dsl_test::raw_handle_is_open(handle));
  EXPECT_EQ(dir.raw_read(u"a.txt"), "ok");
}

TEST(WinFile, FailureTextsOfAFileFromAHandleNameTheGivenPath) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "abc");
  auto file = win_file_t::from_handle(dir.raw_open_for_writing(u"a.txt"), "given name");
  try {
    file->seek(1, 9);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(sentence_of(e), "Seek operation has failed. File: [given name]. Distance to move: "
                              "[1]. Move method: [9].");
  }
}

TEST(WinFile, TryOpenAnswersTheCodeInsteadOfThrowing) {
  test_folder_t dir;
  uint32_t error = 0;
  win::open_mode_t mode;
  auto file = win_file_t::try_open(dir.path(u"missing.txt"), mode, error);
  EXPECT_FALSE(file);
  EXPECT_EQ(error, win::kErrorFileNotFound);
}

TEST(WinFile, SecondWriterIsRefusedWithASharingViolationInOneProcess) {
  test_folder_t dir;
  auto first = win_file_t::create_or_open(dir.path(u"a.log"));
  try {
    win_file_t::create_or_open(dir.path(u"a.log"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorSharingViolation);
  }
  // Readers are let in.
  auto reader = win_file_t::open_read(dir.path(u"a.log"));
  EXPECT_TRUE(reader);
  first.reset();
  EXPECT_TRUE(win_file_t::create_or_open(dir.path(u"a.log")));
}

TEST(WinFile, ReaderSharingOnlyReadKeepsWritersOut) {
  test_folder_t dir;
  dir.raw_write(u"a.log", "x");
  auto reader = win_file_t::open_read(dir.path(u"a.log"));
  uint32_t error = 0;
  win::open_mode_t mode;
  mode.access = win::kGenericWrite;
  mode.share = win::kFileShareRead | win::kFileShareWrite;
  mode.disposition = win::kOpenExisting;
  EXPECT_FALSE(win_file_t::try_open(dir.path(u"a.log"), mode, error));
  EXPECT_EQ(error, win::kErrorSharingViolation);
}

TEST(WinFile, ReadOnlyOpenOfAFileAnotherProcessWritesSucceedsThroughTheSecondTry) {
  test_folder_t dir;
  dir.raw_write(u"live.log", "line one\n");
  holder_process_t holder(hold_kind_t::write_open, dir.path(u"live.log"), 0, 0, 20000);
  ASSERT_TRUE(holder.holding());
  // A plain read-only open, which keeps writers out, clashes with the writer...
  uint32_t error = 0;
  win::open_mode_t mode;
  EXPECT_FALSE(win_file_t::try_open(dir.path(u"live.log"), mode, error));
  EXPECT_EQ(error, win::kErrorSharingViolation);
  // ...and open_read gets in by sharing the write right as well.
  auto reader = win_file_t::open_read(dir.path(u"live.log"));
  EXPECT_EQ(read_all(*reader), "line one\n");
  // A second writer is still refused.
  try {
    win_file_t::create_or_open(dir.path(u"live.log"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorSharingViolation);
  }
  holder.end();
  EXPECT_TRUE(win_file_t::create_or_open(dir.path(u"live.log")));
}

TEST(WinFile, ReadOnlyOpenOfAFolderSucceedsThroughBackupSemantics) {
  test_folder_t dir;
  dir.raw_mkdir(u"sub");
  // Without backup semantics a folder cannot be opened at all.
  uint32_t error = 0;
  win::open_mode_t mode;
  EXPECT_FALSE(win_file_t::try_open(dir.path(u"sub"), mode, error));
  EXPECT_EQ(error, win::kErrorAccessDenied);
  auto folder = win_file_t::open_read(dir.path(u"sub"));
  ASSERT_TRUE(folder);
  char buffer[4];
  EXPECT_THROW(folder->read(buffer, sizeof buffer), exc::win_sys_exc_t);
}

TEST(WinFile, CreateOrOpenOfAFolderFailsWithAccessDenied) {
  test_folder_t dir;
  dir.raw_mkdir(u"sub");
  try {
    win_file_t::create_or_open(dir.path(u"sub"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorAccessDenied);
  }
}

TEST(WinFile, WriteOutsideARegionLockedByAnotherProcessGoesThroughAtOnce) {
  test_folder_t dir;
  dir.raw_write(u"data.bin", std::string(100, '.'));
  holder_process_t holder(hold_kind_t::region_lock, dir.path(u"data.bin"), 0, 50, 20000);
  ASSERT_TRUE(holder.holding());
  dsl_test::capture_log_t log;
  auto file = win_file_t::create_or_open(dir.path(u"data.bin"));
  file->seek_set(60);
  file->write(4, "ABCD");
  EXPECT_EQ(retries_in(log.bodies()), 0);
  holder.end();
  EXPECT_EQ(dir.raw_read(u"data.bin").substr(60, 4), "ABCD");
}

TEST(WinFile, WriteIntoARegionLockedForAMomentSucceedsAfterRetries) {
  if (dsl_test::running_under_wine()) {
    GTEST_SKIP() << "Wine lets WriteFile into a region another process has locked, so no lock "
                    "violation can be met here";
  }
  test_folder_t dir;
  dir.raw_write(u"data.bin", std::string(100, '.'));
  auto file = win_file_t::create_or_open(dir.path(u"data.bin"));
  dsl_test::capture_log_t log;
  holder_process_t holder(hold_kind_t::region_lock, dir.path(u"data.bin"), 0, 50, 350);
  ASSERT_TRUE(holder.holding());
  const auto start = std::chrono::steady_clock::now();
  file->write(4, "ABCD");
  const auto waited = std::chrono::steady_clock::now() - start;
  const strings bodies = log.bodies();
  EXPECT_GE(retries_in(bodies), 1);
  EXPECT_LT(retries_in(bodies), 50);
  EXPECT_GE(waited, std::chrono::milliseconds(100));
  EXPECT_NE(std::find(bodies.begin(), bodies.end(),
                      ">>  |Failed to write data to the file [" + dir.path8("data.bin") + "]."),
            bodies.end());
  EXPECT_EQ(holder.wait(), 0);
  file.reset();
  EXPECT_EQ(dir.raw_read(u"data.bin").substr(0, 4), "ABCD");
}

TEST(WinFile, WriteIntoARegionLockedForGoodFailsAfterFiveSecondsWithTheByteCount) {
  if (dsl_test::running_under_wine()) {
    GTEST_SKIP() << "Wine lets WriteFile into a region another process has locked, so no lock "
                    "violation can be met here";
  }
  test_folder_t dir;
  dir.raw_write(u"data.bin", std::string(100, '.'));
  auto file = win_file_t::create_or_open(dir.path(u"data.bin"));
  holder_process_t holder(hold_kind_t::region_lock, dir.path(u"data.bin"), 0, 50, 60000);
  ASSERT_TRUE(holder.holding());
  dsl_test::capture_log_t log;
  const auto start = std::chrono::steady_clock::now();
  try {
    file->write(4, "ABCD");
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(std::string(e.what()), "Failed to write 4 bytes to the file '" +
                                         dir.path8("data.bin") +
                                         "': 0 bytes were written instead");
  }
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(retries_in(log.bodies()), 50);
  EXPECT_GE(waited, std::chrono::milliseconds(5000));
  holder.end();
  // Nothing of the failed write reached the file, and the file is still usable.
  EXPECT_EQ(dir.raw_read(u"data.bin"), std::string(100, '.'));
  file->write(4, "ABCD");
  file.reset();
  EXPECT_EQ(dir.raw_read(u"data.bin").substr(0, 4), "ABCD");
}

TEST(WinFile, ReadOfARegionLockedByAnotherProcessFailsWithLockViolation) {
  if (dsl_test::running_under_wine()) {
    GTEST_SKIP() << "Wine lets ReadFile into a region another process has locked";
  }
  test_folder_t dir;
  dir.raw_write(u"data.bin", std::string(100, '.'));
  holder_process_t holder(hold_kind_t::region_lock, dir.path(u"data.bin"), 0, 50, 20000);
  ASSERT_TRUE(holder.holding());
  auto file = win_file_t::open_read(dir.path(u"data.bin"));
  char buffer[10];
  try {
    file->read(buffer, sizeof buffer);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorLockViolation);
    EXPECT_EQ(sentence_of(e), "Failed to read data from the file [" + dir.path8("data.bin") +
                                  "].");
  }
  file->seek_set(60);
  EXPECT_EQ(file->read(buffer, sizeof buffer), 10u);
}

}  // namespace
