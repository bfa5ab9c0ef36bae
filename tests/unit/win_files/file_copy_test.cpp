#include "common/win/file_copy.h"

#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "support/test_folder.h"

namespace {

using dsl_test::test_folder_t;
using win::win_file_t;

// Bytes that differ from chunk to chunk and within each, so that a chunk out of place or a
// byte lost shows.
std::string pattern(size_t size) {
  std::string out(size, '\0');
  uint32_t x = 2463534242u;
  for (size_t i = 0; i < size; ++i) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    out[i] = static_cast<char>(x & 0xFF);
  }
  return out;
}

TEST(CopyFile, FileOfSeveralChunksAndARemainderArrivesExactly) {
  test_folder_t dir;
  const std::string bytes = pattern(3 * win::kCopyChunkSize + 12345);
  dir.raw_write(u"src.arc", bytes);
  win::copy_file(dir.path(u"src.arc"), dir.path(u"dst.arc"));
  const std::string copied = dir.raw_read(u"dst.arc");
  EXPECT_EQ(copied.size(), bytes.size());
  EXPECT_TRUE(copied == bytes);
}

TEST(CopyFile, ExactlyOneChunkAndAnEmptyFile) {
  test_folder_t dir;
  const std::string bytes = pattern(win::kCopyChunkSize);
  dir.raw_write(u"one.arc", bytes);
  dir.raw_write(u"empty.arc", "");
  win::copy_file(dir.path(u"one.arc"), dir.path(u"one.copy"));
  win::copy_file(dir.path(u"empty.arc"), dir.path(u"empty.copy"));
  EXPECT_TRUE(dir.raw_read(u"one.copy") == bytes);
  EXPECT_EQ(dir.raw_read(u"empty.copy"), "");
}

TEST(CopyFile, ReplacesAnExistingTarget) {
  test_folder_t dir;
  dir.raw_write(u"src.arc", "short");
  dir.raw_write(u"dst.arc", std::string(1000, 'x'));
  win::copy_file(dir.path8("src.arc"), dir.path8("dst.arc"));
  EXPECT_EQ(dir.raw_read(u"dst.arc"), "short");
}

TEST(CopyFile, ReadThatDeliversLessThanAskedFails) {
  test_folder_t dir;
  dir.raw_write(u"src.arc", pattern(win::kCopyChunkSize + 100));
  auto from = win_file_t::open_read(dir.path(u"src.arc"));
  auto to = win_file_t::create(dir.path(u"dst.arc"));
  // From position 50 the file holds 50 bytes fewer than its size: the remainder comes short.
  from->seek_set(50);
  try {
    win::copy_file_contents(*from, *to);
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(std::string(e.what()), "Only 50 bytes were read from the file [" +
                                         dir.path8("src.arc") + "] (requested 100 bytes)");
  }
  EXPECT_EQ(to->size(), win::kCopyChunkSize);
}

TEST(CopyFile, MissingSourceFailsWithTheOpenText) {
  test_folder_t dir;
  try {
    win::copy_file(dir.path(u"none.arc"), dir.path(u"dst.arc"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.messages()[1].text,
              "Failed to open file [" + dir.path8("none.arc") + "] in readonly mode.");
  }
  EXPECT_FALSE(dir.raw_exists(u"dst.arc"));
}

}  // namespace
