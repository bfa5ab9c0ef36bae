// The gzip writer of rotated logs.
#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/zip_writer.h"
#include "log_files_env.h"

namespace {

using dsl_test::test_folder_t;
using logging::receiver::zip_writer_t;

TEST(ZipWriter, WhatIsWrittenComesBackWhenRead) {
  test_folder_t folder;
  std::string bytes;
  for (int i = 0; i < 100000; ++i) bytes += static_cast<char>((i * 7919) % 251);
  {
    zip_writer_t zip(folder.path8("a.gz"));
    EXPECT_EQ(zip.path(), folder.path8("a.gz"));
    zip.write(bytes.data(), 1);
    zip.write(bytes.data() + 1, bytes.size() - 1);
    zip.write(bytes.data(), 0);
  }
  EXPECT_EQ(dsl_test::read_gz(folder.path(u"a.gz")), bytes);
}

TEST(ZipWriter, ReplacesAnArchiveThatStandsThere) {
  test_folder_t folder;
  dsl_test::write_gz(folder.path(u"a.gz"), "old contents");
  {
    zip_writer_t zip(folder.path8("a.gz"));
    zip.write("new", 3);
  }
  EXPECT_EQ(dsl_test::read_gz(folder.path(u"a.gz")), "new");
}

TEST(ZipWriter, OpensAtBestCompression) {
  EXPECT_STREQ(logging::receiver::kGzOpenMode, "wb9");
}

TEST(ZipWriter, AnArchiveInAMissingFolderCannotBeOpened) {
  test_folder_t folder;
  try {
    zip_writer_t zip(folder.path8("missing\\a.gz"));
    FAIL() << "opened";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 3u);
    EXPECT_NE(std::string(e.what()).find("Failed to open GZ archive [" +
                                         folder.path8("missing\\a.gz") + "]."),
              std::string::npos)
        << e.what();
  }
}

TEST(ZipWriter, AFolderWhereTheArchiveGoesCannotBeOpened) {
  test_folder_t folder;
  folder.raw_mkdir(u"a.gz");
  try {
    zip_writer_t zip(folder.path8("a.gz"));
    FAIL() << "opened";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 5u);
    EXPECT_NE(std::string(e.what()).find("Failed to open GZ archive ["), std::string::npos);
  }
}

}  // namespace
