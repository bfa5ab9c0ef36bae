// The log file as a receiver: one handle for its life, appending, others may read but not
// write, and compression that empties it in place.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/holder_process.h"
#include "common/exc/exc_base.h"
#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/zip_writer.h"
#include "common/win/file.h"
#include "log_files_env.h"

namespace {

using dsl_test::test_folder_t;
using logging::receiver::win_log_file_t;
using logging::receiver::zip_writer_t;

TEST(WinLogFile, EndsLinesTheWindowsWayAndDoesNotFlushEachWrite) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  EXPECT_EQ(file.eol(), "\r\n");
  EXPECT_FALSE(file.flush_each_write);
}

TEST(WinLogFile, NamesItsPathAsGiven) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("sub-less.log"));
  EXPECT_EQ(file.path(), folder.path8("sub-less.log"));
}

TEST(WinLogFile, WritesEachTextWholeAndCountsItsSize) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  EXPECT_EQ(file.size(), 0u);
  file.write("one\r\n");
  file.write("two\r\nthree\r\n");
  file.write("");
  EXPECT_EQ(file.size(), 17u);
  EXPECT_EQ(folder.raw_read(u"X.log"), "one\r\ntwo\r\nthree\r\n");
}

TEST(WinLogFile, LetsReadersInWhileItIsOpen) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  file.write("visible\r\n");
  const win::win_file_ptr_t reader = win::win_file_t::open_read(folder.path(u"X.log"));
  char buffer[32] = {};
  EXPECT_EQ(reader->read(buffer, sizeof buffer), 9u);
  EXPECT_EQ(std::string(buffer, 9), "visible\r\n");
}

TEST(WinLogFile, KeepsOtherWritersOut) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  uint32_t error = 0;
  win::open_mode_t mode;
  mode.access = win::kGenericWrite;
  mode.share = win::kFileShareRead | win::kFileShareWrite;
  mode.disposition = win::kOpenExisting;
  EXPECT_EQ(win::win_file_t::try_open(folder.path(u"X.log"), mode, error), nullptr);
  EXPECT_EQ(error, win::kErrorSharingViolation);
}

TEST(WinLogFile, AFileHeldForWritingByAnotherProcessIsLocked) {
  test_folder_t folder;
  folder.raw_write(u"X.log", "");
  dsl_test::holder_process_t holder(dsl_test::hold_kind_t::write_open, folder.path(u"X.log"), 0, 0,
                                    30000);
  ASSERT_TRUE(holder.holding());
  try {
    win_log_file_t file(folder.path8("X.log"));
    FAIL() << "opened a held file";
  } catch (const exc::file_locked_exc_t& e) {
    EXPECT_EQ(e.path(), folder.path8("X.log"));
  }
}

TEST(WinLogFile, AFileThatCannotBeMadeFailsWithTheOpenText) {
  test_folder_t folder;
  try {
    win_log_file_t file(folder.path8("no such folder\\X.log"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorPathNotFound);
    EXPECT_NE(std::string(e.what()).find("Failed to create or open file [" +
                                         folder.path8("no such folder\\X.log") + "]."),
              std::string::npos);
  }
}

// The file layer's warnings about a write that waits are written to the log, which is this
// very file: they must follow the line they are about, not break into its write.
TEST(WinLogFile, ALineThatWaitsForALockedRegionIsFollowedByTheWarningsOfTheWait) {
  if (dsl_test::running_under_wine()) GTEST_SKIP() << "Wine lets writes into locked regions pass";
  test_folder_t folder;
  folder.raw_write(u"L.log", "start\r\n");
  auto file = std::make_shared<win_log_file_t>(folder.path8("L.log"));
  const auto previous = logging::log_t::instance()->file();
  logging::log_t::instance()->set_file(file);
  {
    dsl_test::holder_process_t holder(dsl_test::hold_kind_t::region_lock, folder.path(u"L.log"),
                                      7, 1 << 20, 450);
    EXPECT_TRUE(holder.holding());
    logging::default_channel().info("the line that waited");
    EXPECT_EQ(holder.wait(), 0);
  }
  logging::log_t::instance()->set_file(previous);
  const auto lines = dsl_test::crlf_lines(folder.raw_read(u"L.log"));
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[0], "start");
  EXPECT_NE(lines[1].find("> the line that waited"), std::string::npos) << lines[1];
  EXPECT_NE(lines[2].find("> WARN|"), std::string::npos) << lines[2];
  int retries = 0;
  for (const auto& line : lines) retries += line.find("> WARN|Retry.") != std::string::npos;
  EXPECT_GE(retries, 2);
  EXPECT_NE(lines.back().find("> WARN|Retry."), std::string::npos) << lines.back();
}

TEST(WinLogFile, CompressionMovesTheContentsAndEmptiesTheFileInPlace) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  std::string contents;
  // More than two transfer buffers, so that the reading goes round its loop.
  while (contents.size() < 2 * logging::receiver::kCompressBufferSize + 12345) {
    contents += "[01.02.2024 10:11:12] <  4242> oralib| line " +
                std::to_string(contents.size()) + "\r\n";
  }
  file.write(contents);
  const win::win_file_ptr_t handle_before = file.file();
  {
    zip_writer_t zip(folder.path8("X.log.gz"));
    file.compress_into(zip);
  }
  EXPECT_EQ(dsl_test::read_gz(folder.path(u"X.log.gz")), contents);
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(file.file(), handle_before);
  file.write("next\r\n");
  EXPECT_EQ(folder.raw_read(u"X.log"), "next\r\n");
}

TEST(WinLogFile, CompressingAnEmptyFileGivesAnEmptyArchive) {
  test_folder_t folder;
  win_log_file_t file(folder.path8("X.log"));
  {
    zip_writer_t zip(folder.path8("X.log.gz"));
    file.compress_into(zip);
  }
  EXPECT_EQ(dsl_test::read_gz(folder.path(u"X.log.gz")), "");
  EXPECT_EQ(file.size(), 0u);
}

}  // namespace
