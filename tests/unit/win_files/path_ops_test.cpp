#include "common/win/path_ops.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/file.h"
#include "common/win/file_codes.h"
#include "common/win/path.h"
#include "support/capture_receiver.h"
#include "support/test_folder.h"

namespace {

using dsl_test::test_folder_t;

std::string sentence_of(const exc::win_sys_exc_t& e) {
  return e.messages().size() >= 2 ? e.messages()[1].text : std::string();
}

TEST(FileExists, FindsFilesAndFolders) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "x");
  dir.raw_mkdir(u"sub");
  EXPECT_TRUE(win::file_exists(dir.path(u"a.txt")));
  EXPECT_TRUE(win::file_exists(dir.path8("a.txt")));
  EXPECT_TRUE(win::file_exists(dir.path(u"sub")));
  EXPECT_FALSE(win::file_exists(dir.path(u"b.txt")));
  EXPECT_FALSE(win::file_exists(dir.path(u"no\\such\\b.txt")));
}

TEST(FileExists, EmptyPathIsNothing) {
  test_folder_t dir;
  EXPECT_FALSE(win::file_exists(std::u16string()));
  win::create_directories(std::string());
}

TEST(FileExists, IgnoresOneTrailingSeparator) {
  test_folder_t dir;
  dir.raw_mkdir(u"sub");
  EXPECT_TRUE(win::file_exists(dir.path(u"sub\\")));
  EXPECT_TRUE(win::file_exists(dir.path(u"sub/")));
  EXPECT_TRUE(win::file_exists(dir.base()));
}

TEST(FileExists, TakesWildcardsAsTheSearchDoes) {
  test_folder_t dir;
  dir.raw_write(u"arch_1.log", "x");
  EXPECT_TRUE(win::file_exists(dir.path(u"arch_*.log")));
  EXPECT_TRUE(win::file_exists(dir.path(u"ARCH_?.LOG")));
  EXPECT_FALSE(win::file_exists(dir.path(u"arch_*.xml")));
}

TEST(FileExists, OtherSearchFailureIsLoggedOnTheBlankFormatAndThrown) {
  test_folder_t dir;
  dsl_test::capture_log_t log;
  // A wildcard in a folder part: the search refuses the name rather than finding nothing.
  const std::string path = dir.path8("*\\x");
  try {
    win::file_exists(path);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_NE(e.code(), win::kErrorFileNotFound);
    EXPECT_NE(e.code(), win::kErrorPathNotFound);
    EXPECT_EQ(sentence_of(e), "Failed to check whether file '" + path + "' exists.");
    const auto bodies = log.bodies();
    ASSERT_GE(bodies.size(), 2u);
    EXPECT_EQ(bodies[0], "     ERR |Failed to check whether file '" + path + "' exists.");
    EXPECT_EQ(bodies[1], "     ERR |" + e.messages()[0].text);
  }
}

TEST(DirExists, AsksForTheFolderPart) {
  test_folder_t dir;
  dir.raw_mkdir(u"sub");
  EXPECT_TRUE(win::dir_exists(dir.path(u"sub\\missing.txt")));
  EXPECT_FALSE(win::dir_exists(dir.path(u"nosub\\missing.txt")));
}

TEST(FileSize, OpensForReadingAndAsksTheSize) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", std::string(12345, 'q'));
  EXPECT_EQ(win::file_size(dir.path(u"a.txt")), 12345u);
  try {
    win::file_size(dir.path(u"b.txt"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorFileNotFound);
    EXPECT_EQ(sentence_of(e), "Failed to open file [" + dir.path8("b.txt") + "] in readonly mode.");
  }
}

TEST(RemoveFile, DeletesAFileAndAnEmptyFolder) {
  test_folder_t dir;
  dir.raw_write(u"a.txt", "x");
  dir.raw_mkdir(u"empty");
  EXPECT_TRUE(win::remove_file(dir.path(u"a.txt")));
  EXPECT_TRUE(win::remove_file(dir.path8("empty")));
  EXPECT_FALSE(dir.raw_exists(u"a.txt"));
  EXPECT_FALSE(dir.raw_exists(u"empty"));
}

TEST(RemoveFile, NothingThereIsNoFailure) {
  test_folder_t dir;
  EXPECT_FALSE(win::remove_file(dir.path(u"a.txt")));
  EXPECT_FALSE(win::remove_file(dir.path(u"no\\such\\a.txt")));
}

TEST(RemoveFile, FolderThatIsNotEmptyFails) {
  test_folder_t dir;
  dir.raw_write(u"full\\a.txt", "x");
  try {
    win::remove_file(dir.path(u"full"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorDirNotEmpty);
    EXPECT_EQ(sentence_of(e), "Failed to delete file [" + dir.path8("full") + "].");
  }
  EXPECT_TRUE(dir.raw_exists(u"full\\a.txt"));
}

TEST(RemoveFile, FileThatIsOpenFailsWithASharingViolation) {
  test_folder_t dir;
  auto open = win::win_file_t::create_or_open(dir.path(u"a.log"));
  try {
    win::remove_file(dir.path(u"a.log"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorSharingViolation);
  }
  open.reset();
  EXPECT_TRUE(win::remove_file(dir.path(u"a.log")));
}

TEST(RenameFile, MovesAndReplacesAnExistingTarget) {
  test_folder_t dir;
  dir.raw_write(u"a.log.gz", "new");
  dir.raw_write(u"a.1.log.gz", "old");
  win::rename_file(dir.path(u"a.log.gz"), dir.path(u"a.1.log.gz"));
  EXPECT_FALSE(dir.raw_exists(u"a.log.gz"));
  EXPECT_EQ(dir.raw_read(u"a.1.log.gz"), "new");
}

TEST(RenameFile, MissingSourceFailsWithBothNames) {
  test_folder_t dir;
  try {
    win::rename_file(dir.path8("x"), dir.path8("y"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorFileNotFound);
    EXPECT_EQ(sentence_of(e),
              "Failed to rename file [" + dir.path8("x") + "] to [" + dir.path8("y") + "].");
  }
}

TEST(RenameFile, FileThatIsOpenFailsWithASharingViolation) {
  test_folder_t dir;
  auto open = win::win_file_t::create_or_open(dir.path(u"a.log"));
  try {
    win::rename_file(dir.path(u"a.log"), dir.path(u"b.log"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorSharingViolation);
  }
  EXPECT_TRUE(dir.raw_exists(u"a.log"));
}

TEST(CreateDirectories, CreatesEveryMissingFolderButNotTheFile) {
  test_folder_t dir;
  win::create_directories(dir.path(u"a\\b\\c\\d\\e\\f\\g\\h\\file.txt"));
  EXPECT_TRUE(dir.raw_is_directory(u"a\\b\\c\\d\\e\\f\\g\\h"));
  EXPECT_FALSE(dir.raw_exists(u"a\\b\\c\\d\\e\\f\\g\\h\\file.txt"));
}

TEST(CreateDirectories, PathEndingInASeparatorCreatesItsLastPart) {
  test_folder_t dir;
  win::create_directories(dir.path8("x/y/"));
  EXPECT_TRUE(dir.raw_is_directory(u"x\\y"));
}

TEST(CreateDirectories, ExistingFoldersAreLeftAlone) {
  test_folder_t dir;
  dir.raw_write(u"a\\keep.txt", "kept");
  win::create_directories(dir.path(u"a\\b\\"));
  EXPECT_EQ(dir.raw_read(u"a\\keep.txt"), "kept");
  EXPECT_TRUE(dir.raw_is_directory(u"a\\b"));
  win::create_directories(dir.path(u"a\\b\\"));
}

TEST(CreateDirectories, AFileInTheWayFailsAndKeepsWhatWasMade) {
  test_folder_t dir;
  dir.raw_write(u"a\\blocker", "x");
  try {
    win::create_directories(dir.path(u"a\\blocker\\c\\file"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    // Which folder fails is the system's affair: the file itself or the folder below it.
    EXPECT_EQ(sentence_of(e).rfind("Failed to create directory [" + dir.path8("a\\blocker"), 0),
              0u)
        << sentence_of(e);
  }
  EXPECT_TRUE(dir.raw_exists(u"a\\blocker"));
}

TEST(CreateDirectories, UnreachableShareFailsFirstBelowTheShareNeverAtServerOrShare) {
  test_folder_t dir;  // on the host build, a root without any share
  const struct {
    std::u16string path;
    std::string first_folder;
  } cases[] = {
      {u"\\\\nosrv\\share\\a\\b\\file", "\\\\nosrv\\share\\a\\"},
      {u"\\\\?\\UNC\\nosrv\\share\\a\\file", "\\\\?\\UNC\\nosrv\\share\\a\\"},
  };
  for (const auto& c : cases) {
    try {
      win::create_directories(c.path);
      FAIL() << "no failure";
    } catch (const exc::win_sys_exc_t& e) {
      EXPECT_EQ(sentence_of(e), "Failed to create directory [" + c.first_folder + "].");
    }
  }
}

TEST(CreateDirectories, LongPrefixedDrivePathIsCreated) {
  test_folder_t dir;
  const std::u16string path = u"\\\\?\\" + dir.path(u"long\\deep\\er\\file");
  win::create_directories(path);
  EXPECT_TRUE(dir.raw_is_directory(u"long\\deep\\er"));
  EXPECT_TRUE(win::file_exists(u"\\\\?\\" + dir.path(u"long\\deep\\er")));
}

TEST(TempPath, EndsInASeparatorAndExists) {
  test_folder_t dir;  // on the host build the temp folder lies in the test's own root
  const std::u16string temp = win::temp_path();
  ASSERT_FALSE(temp.empty());
  EXPECT_TRUE(temp.back() == u'\\' || temp.back() == u'/');
  EXPECT_TRUE(win::file_exists(temp));
}

TEST(CommonAppdataFolder, AnswersSuccessAndAnExistingFolder) {
  test_folder_t dir;
  std::u16string folder = u"untouched";
  ASSERT_EQ(win::common_appdata_folder(folder), 0);
  EXPECT_NE(folder, u"untouched");
  EXPECT_TRUE(win::file_exists(folder));
}

TEST(LibraryTempFolder, LiesUnderTheCommonDataFolderAndIsCreated) {
  test_folder_t dir;
  std::u16string common;
  ASSERT_EQ(win::common_appdata_folder(common), 0);
  const std::u16string folder = win::library_temp_folder();
  EXPECT_EQ(folder, win::join_path_windows(common, u"Trelo\\Backup\\Tmp\\"));
  EXPECT_TRUE(win::file_exists(folder));
  const std::u16string a = win::make_temp_file_path();
  const std::u16string b = win::make_temp_file_path();
  EXPECT_NE(a, b);
  EXPECT_EQ(a.compare(0, folder.size(), folder), 0);
  const std::u16string name = a.substr(folder.size());
  ASSERT_EQ(name.size(), 38u);
  EXPECT_EQ(name.front(), u'{');
  EXPECT_EQ(name.back(), u'}');
  // The name is free and usable.
  EXPECT_FALSE(win::file_exists(a));
  win::win_file_t::create(a)->write(1, "x");
  EXPECT_TRUE(win::remove_file(a));
}

TEST(ListDirectory, GivesEntriesWithoutDotsAndTellsFoldersFromFiles) {
  test_folder_t dir;
  dir.raw_write(u"list\\a.xml", "x");
  dir.raw_write(u"list\\b.txt", "y");
  dir.raw_mkdir(u"list\\sub");
  auto entries = win::list_directory(dir.path(u"list"));
  std::sort(entries.begin(), entries.end(),
            [](const win::dir_entry_t& x, const win::dir_entry_t& y) { return x.name < y.name; });
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].name, u"a.xml");
  EXPECT_TRUE(entries[0].is_regular);
  EXPECT_FALSE(entries[0].is_directory);
  EXPECT_EQ(entries[1].name, u"b.txt");
  EXPECT_EQ(entries[2].name, u"sub");
  EXPECT_TRUE(entries[2].is_directory);
  EXPECT_FALSE(entries[2].is_regular);
}

TEST(ListDirectory, MissingFolderFails) {
  test_folder_t dir;
  try {
    win::list_directory(dir.path(u"missing"));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorPathNotFound);
    EXPECT_EQ(sentence_of(e), "Failed to list directory [" + dir.path8("missing") + "].");
  }
}

TEST(ListDirectory, EmptyFolderGivesNothing) {
  test_folder_t dir;
  dir.raw_mkdir(u"empty");
  EXPECT_TRUE(win::list_directory(dir.path(u"empty")).empty());
}

}  // namespace
