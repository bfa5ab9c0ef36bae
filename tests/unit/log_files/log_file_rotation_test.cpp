// Rotation: the size limit to the byte, the archive's name and ageing, and rotation inside
// the write path of a log.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/text/convert.h"
#include "log_files_env.h"

namespace {

using dsl_test::read_gz;
using dsl_test::test_folder_t;
using dsl_test::write_gz;
using logging::age_file;
using logging::aged_name;
using logging::check_log_size;
using logging::kLogSizeLimit;
using logging::receiver::win_log_file_t;

// `size` bytes of log-like text.
std::string log_text(uint64_t size) {
  std::string text;
  text.reserve(size);
  for (int n = 0; text.size() < size; ++n) {
    text += "[05.06.2024 07:08:09] <  1234> oralib| step " + std::to_string(n) + " of the work\r\n";
  }
  text.resize(size);
  return text;
}

std::u16string u(const std::string& text) { return util::from_utf8(text); }

TEST(AgedName, AgeZeroIsThePathItself) {
  EXPECT_EQ(aged_name("C:\\l\\X.log.gz", ".log.gz", 0), "C:\\l\\X.log.gz");
}

TEST(AgedName, TheAgeStandsBeforeTheExtension) {
  EXPECT_EQ(aged_name("C:\\l\\X.log.gz", ".log.gz", 1), "C:\\l\\X.1.log.gz");
  EXPECT_EQ(aged_name("C:\\l\\X.log.gz", ".log.gz", 10), "C:\\l\\X.10.log.gz");
}

TEST(AgedName, TheExtensionIsFoundWithoutRegardToCaseAndWrittenAsGiven) {
  EXPECT_EQ(aged_name("C:\\l\\X.LOG.GZ", ".log.gz", 2), "C:\\l\\X.2.log.gz");
}

TEST(AgedName, AnotherEndingGetsTheAgeAppended) {
  EXPECT_EQ(aged_name("C:\\l\\X.txt.gz", ".log.gz", 1), "C:\\l\\X.txt.gz.1");
}

TEST(AgedName, ANameWithoutADotGetsDotAndAge) {
  EXPECT_EQ(aged_name("C:\\l\\X", ".log.gz", 3), "C:\\l\\X.3");
}

TEST(AgedName, AFinalDotTakesTheAge) {
  EXPECT_EQ(aged_name("C:\\l\\X.", ".log.gz", 4), "C:\\l\\X.4");
}

TEST(AgedName, ADotlessExtensionIsMatchedAsTheWholeLastEnding) {
  EXPECT_EQ(aged_name("C:\\l\\X.gz", "gz", 5), "C:\\l\\X.5.gz");
  EXPECT_EQ(aged_name("C:\\l\\X.GZ", "gz", 5), "C:\\l\\X.5.GZ");
  EXPECT_EQ(aged_name("C:\\l\\Xgz", "gz", 5), "C:\\l\\Xgz.5");
  EXPECT_EQ(aged_name("C:\\l\\X.tgz", "gz", 5), "C:\\l\\X.tgz.5");
}

TEST(AgeFile, MovesEachArchiveUpOneAge) {
  test_folder_t folder;
  folder.raw_write(u"X.log.gz", "newest");
  folder.raw_write(u"X.1.log.gz", "older");
  age_file(folder.path8("X.log.gz"), ".log.gz");
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  EXPECT_EQ(folder.raw_read(u"X.1.log.gz"), "newest");
  EXPECT_EQ(folder.raw_read(u"X.2.log.gz"), "older");
}

TEST(AgeFile, KeepsAGapInTheAgesAsAGap) {
  test_folder_t folder;
  folder.raw_write(u"X.log.gz", "age 0");
  folder.raw_write(u"X.1.log.gz", "age 1");
  folder.raw_write(u"X.3.log.gz", "age 3");
  folder.raw_write(u"X.4.log.gz", "age 4");
  age_file(folder.path8("X.log.gz"), ".log.gz");
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  EXPECT_EQ(folder.raw_read(u"X.1.log.gz"), "age 0");
  EXPECT_EQ(folder.raw_read(u"X.2.log.gz"), "age 1");
  EXPECT_FALSE(folder.raw_exists(u"X.3.log.gz"));
  EXPECT_EQ(folder.raw_read(u"X.4.log.gz"), "age 3");
  EXPECT_EQ(folder.raw_read(u"X.5.log.gz"), "age 4");
}

TEST(AgeFile, WithElevenArchivesTheOldestGoes) {
  test_folder_t folder;
  folder.raw_write(u"X.log.gz", "age 0");
  for (int age = 1; age <= 10; ++age) {
    folder.raw_write(u"X." + u(std::to_string(age)) + u".log.gz", "age " + std::to_string(age));
  }
  age_file(folder.path8("X.log.gz"), ".log.gz");
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  for (int age = 1; age <= 10; ++age) {
    EXPECT_EQ(folder.raw_read(u"X." + u(std::to_string(age)) + u".log.gz"),
              "age " + std::to_string(age - 1));
  }
  EXPECT_FALSE(folder.raw_exists(u"X.11.log.gz"));
}

TEST(AgeFile, WithNothingToAgeDoesNothing) {
  test_folder_t folder;
  age_file(folder.path8("X.log.gz"), ".log.gz");
  EXPECT_FALSE(folder.raw_exists(u"X.1.log.gz"));
}

TEST(AgeFile, AFailureNamesPathExtensionAndLimit) {
  test_folder_t folder;
  folder.raw_write(u"X.log.gz", "age 0");
  // The oldest age cannot be deleted while a folder with contents stands there.
  folder.raw_mkdir(u"X.10.log.gz\\inside");
  try {
    age_file(folder.path8("X.log.gz"), ".log.gz");
    FAIL() << "no failure";
  } catch (const exc::exc_base_t& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("Cannot age file. File path: [" + folder.path8("X.log.gz") +
                        "]. Extension: [.log.gz]. Ages limit: [10]."),
              std::string::npos)
        << what;
  }
}

TEST(CheckLogSize, OneByteBelowTheLimitDoesNotRotate) {
  test_folder_t folder;
  const std::string contents = log_text(kLogSizeLimit - 1);
  folder.raw_write(u"X.log", contents);
  win_log_file_t file(folder.path8("X.log"));
  check_log_size(file);
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  EXPECT_EQ(file.size(), kLogSizeLimit - 1);
}

TEST(CheckLogSize, ExactlyTheLimitRotates) {
  test_folder_t folder;
  EXPECT_EQ(kLogSizeLimit, 15728640u);
  const std::string contents = log_text(kLogSizeLimit);
  folder.raw_write(u"X.log", contents);
  win_log_file_t file(folder.path8("X.log"));
  check_log_size(file);
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(folder.raw_read(u"X.log"), "");
  EXPECT_EQ(read_gz(folder.path(u"X.log.gz")), contents);
}

TEST(CheckLogSize, WritesTheArchiveAtBestCompression) {
  test_folder_t folder;
  folder.raw_write(u"X.log", log_text(kLogSizeLimit));
  win_log_file_t file(folder.path8("X.log"));
  check_log_size(file);
  const std::string archive = folder.raw_read(u"X.log.gz");
  ASSERT_GT(archive.size(), 10u);
  EXPECT_EQ(static_cast<unsigned char>(archive[0]), 0x1f);
  EXPECT_EQ(static_cast<unsigned char>(archive[1]), 0x8b);
  // The header's extra flags say 2 for the slowest, best compression.
  EXPECT_EQ(static_cast<unsigned char>(archive[8]), 2);
}

TEST(CheckLogSize, AgesTheArchivesBeforeTheNewOneIsWritten) {
  test_folder_t folder;
  write_gz(folder.path(u"X.log.gz"), "previous rotation");
  write_gz(folder.path(u"X.2.log.gz"), "two rotations ago, after a gap");
  const std::string contents = log_text(kLogSizeLimit + 100);
  folder.raw_write(u"X.log", contents);
  win_log_file_t file(folder.path8("X.log"));
  check_log_size(file);
  EXPECT_EQ(read_gz(folder.path(u"X.log.gz")), contents);
  EXPECT_EQ(read_gz(folder.path(u"X.1.log.gz")), "previous rotation");
  EXPECT_FALSE(folder.raw_exists(u"X.2.log.gz"));
  EXPECT_EQ(read_gz(folder.path(u"X.3.log.gz")), "two rotations ago, after a gap");
}

TEST(CheckLogSize, ElevenArchivesStandAfterwardsWithTheNewest) {
  test_folder_t folder;
  write_gz(folder.path(u"X.log.gz"), "age 0");
  for (int age = 1; age <= 10; ++age) {
    write_gz(folder.path(u"X." + u(std::to_string(age)) + u".log.gz"),
             "age " + std::to_string(age));
  }
  const std::string contents = log_text(kLogSizeLimit);
  folder.raw_write(u"X.log", contents);
  win_log_file_t file(folder.path8("X.log"));
  check_log_size(file);
  EXPECT_EQ(read_gz(folder.path(u"X.log.gz")), contents);
  for (int age = 1; age <= 10; ++age) {
    EXPECT_EQ(read_gz(folder.path(u"X." + u(std::to_string(age)) + u".log.gz")),
              "age " + std::to_string(age - 1));
  }
  EXPECT_FALSE(folder.raw_exists(u"X.11.log.gz"));
}

TEST(CheckLogSize, ALogWithAnotherEndingGetsItsArchiveAgedByAppending) {
  test_folder_t folder;
  folder.raw_write(u"X.txt.gz", "previous");
  folder.raw_write(u"X.txt", log_text(kLogSizeLimit));
  win_log_file_t file(folder.path8("X.txt"));
  check_log_size(file);
  EXPECT_TRUE(folder.raw_exists(u"X.txt.gz"));
  EXPECT_EQ(folder.raw_read(u"X.txt.gz.1"), "previous");
}

// The log checks the size every 1000 writes; the write that reaches the count rotates.
TEST(RotationInTheLog, HappensOnTheThousandthWriteAndKeepsTheHandle) {
  test_folder_t folder;
  const std::string before = log_text(kLogSizeLimit - 500);
  folder.raw_write(u"X.log", before);
  auto file = std::make_shared<win_log_file_t>(folder.path8("X.log"));
  const win::win_file_ptr_t handle = file->file();
  auto log = std::make_shared<logging::log_t>(file);
  logging::install_rotation(*log);
  log->set_rotate_enabled(true);
  logging::log_channel_t channel(log, "oralib");
  for (int i = 1; i < 1000; ++i) channel.info("line " + std::to_string(i));
  ASSERT_FALSE(folder.raw_exists(u"X.log.gz")) << "rotated before the check was due";
  channel.info("line 1000");
  ASSERT_TRUE(folder.raw_exists(u"X.log.gz"));
  EXPECT_EQ(file->size(), 0u);
  EXPECT_EQ(file->file(), handle);
  const std::string archived = read_gz(folder.path(u"X.log.gz"));
  EXPECT_EQ(archived.substr(0, before.size()), before);
  const auto archived_lines = dsl_test::crlf_lines(archived.substr(before.size()));
  ASSERT_EQ(archived_lines.size(), 1000u);
  EXPECT_NE(archived_lines.back().find("oralib| line 1000"), std::string::npos);

  channel.info("first line after rotation");
  const std::string live = folder.raw_read(u"X.log");
  ASSERT_FALSE(live.empty());
  EXPECT_EQ(live[0], '[');
  EXPECT_NE(live.find("oralib| first line after rotation\r\n"), std::string::npos);
  EXPECT_EQ(dsl_test::crlf_lines(live).size(), 1u);
}

TEST(RotationInTheLog, AFailingRotationIsDroppedAndTriedAgainAThousandWritesLater) {
  test_folder_t folder;
  folder.raw_write(u"X.log", log_text(kLogSizeLimit));
  auto file = std::make_shared<win_log_file_t>(folder.path8("X.log"));
  auto log = std::make_shared<logging::log_t>(file);
  logging::install_rotation(*log);
  log->set_rotate_enabled(true);
  logging::log_channel_t channel(log, "");
  // An oldest archive that cannot be deleted makes the rotation impossible.
  folder.raw_mkdir(u"X.10.log.gz\\inside");
  for (int i = 0; i < 1000; ++i) channel.info("before the check " + std::to_string(i));
  EXPECT_GT(file->size(), kLogSizeLimit);
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  // The file keeps its lines, and new ones follow them rather than overwrite them.
  channel.info("still appended");
  const std::string live = folder.raw_read(u"X.log");
  EXPECT_EQ(live.substr(0, 100), log_text(kLogSizeLimit).substr(0, 100));
  EXPECT_NE(live.find("still appended\r\n", kLogSizeLimit), std::string::npos);

  // With the way clear again the next check, a thousand writes on, rotates.
  dsl_test::remove_folder(folder.host_root().empty()
                              ? util::to_utf8(folder.path(u"X.10.log.gz"))
                              : folder.host_root() + "/c/t/X.10.log.gz");
  for (int i = 0; i < 998; ++i) channel.info("after " + std::to_string(i));
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
  channel.info("the thousandth");
  EXPECT_TRUE(folder.raw_exists(u"X.log.gz"));
  EXPECT_EQ(file->size(), 0u);
}

TEST(RotationInTheLog, ALogWithoutRotationEnabledNeverChecks) {
  test_folder_t folder;
  folder.raw_write(u"X.log", log_text(kLogSizeLimit));
  auto file = std::make_shared<win_log_file_t>(folder.path8("X.log"));
  auto log = std::make_shared<logging::log_t>(file);
  logging::install_rotation(*log);
  logging::log_channel_t channel(log, "");
  for (int i = 0; i < 2000; ++i) channel.info("line");
  EXPECT_FALSE(folder.raw_exists(u"X.log.gz"));
}

}  // namespace
