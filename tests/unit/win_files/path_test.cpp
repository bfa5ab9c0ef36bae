#include "common/win/path.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using u16s = std::vector<std::u16string>;

TEST(SplitPath, CutsAtTheLaterOfTheLastSlashAndTheLastBackslash) {
  std::string dir, file;
  win::split_path("C:\\a/b\\c.txt", dir, file);
  EXPECT_EQ(dir, "C:\\a/b");
  EXPECT_EQ(file, "c.txt");
  win::split_path("C:\\a\\b/c.txt", dir, file);
  EXPECT_EQ(dir, "C:\\a\\b");
  EXPECT_EQ(file, "c.txt");
}

TEST(SplitPath, WithoutSeparatorGivesEmptyDirAndTheWholePathAsFile) {
  std::u16string dir = u"old", file;
  win::split_path(u"name.log", dir, file);
  EXPECT_EQ(dir, u"");
  EXPECT_EQ(file, u"name.log");
}

TEST(SplitPath, TrailingSeparatorGivesEmptyFile) {
  std::string dir, file;
  win::split_path("C:\\a\\", dir, file);
  EXPECT_EQ(dir, "C:\\a");
  EXPECT_EQ(file, "");
}

TEST(SplitPath, MayWriteIntoItsOwnInput) {
  std::string path = "C:\\a\\b.txt";
  std::string file;
  win::split_path(path, path, file);
  EXPECT_EQ(path, "C:\\a");
  EXPECT_EQ(file, "b.txt");
}

TEST(FileName, IsTheFilePartOfSplitPath) {
  EXPECT_EQ(win::file_name(std::string("C:\\a\\b.txt")), "b.txt");
  EXPECT_EQ(win::file_name(std::u16string(u"b.txt")), u"b.txt");
  EXPECT_EQ(win::file_name(std::u16string(u"/x/y")), u"y");
}

TEST(LastSeparator, FindsTheLaterSeparatorOrNpos) {
  EXPECT_EQ(win::last_separator(std::string("a/b\\c")), 3u);
  EXPECT_EQ(win::last_separator(std::string("a\\b/c")), 3u);
  EXPECT_EQ(win::last_separator(std::u16string(u"abc")), std::u16string::npos);
}

TEST(PathSeparator, IsBackslashWhenThePathHasOneElseSlash) {
  EXPECT_EQ(win::path_separator(std::string("C:/a\\b")), "\\");
  EXPECT_EQ(win::path_separator(std::string("C:/a/b")), "/");
  EXPECT_EQ(win::path_separator(std::u16string(u"")), u"/");
}

TEST(JoinPath, UsesTheSeparatorThePathAlreadyHas) {
  EXPECT_EQ(win::join_path(std::string("C:\\a"), std::string("b")), "C:\\a\\b");
  EXPECT_EQ(win::join_path(std::string("C:/a"), std::string("b")), "C:/a/b");
  EXPECT_EQ(win::join_path(std::u16string(u"C:\\a"), std::u16string(u"b")), u"C:\\a\\b");
}

TEST(JoinPath, OfAnEmptyDirectoryGivesTheName) {
  EXPECT_EQ(win::join_path(std::string(""), std::string("b")), "b");
  EXPECT_EQ(win::join_path(std::u16string(u""), std::u16string(u"b"), std::u16string(u"\\")),
            u"b");
}

TEST(JoinPath, AddsNoSecondSeparator) {
  EXPECT_EQ(win::join_path(std::string("C:\\a\\"), std::string("b")), "C:\\a\\b");
  EXPECT_EQ(win::join_path(std::string("C:\\a/"), std::string("b")), "C:\\a/b");
}

TEST(JoinPath, WithAGivenSeparatorUsesIt) {
  EXPECT_EQ(win::join_path(std::string("C:\\a"), std::string("b"), std::string("/")), "C:\\a/b");
}

TEST(JoinPathWindows, TurnsEverySlashIntoABackslash) {
  EXPECT_EQ(win::join_path_windows(std::string("C:/a"), std::string("b/c")), "C:\\a\\b\\c");
  EXPECT_EQ(win::join_path_windows(std::u16string(u"C:/a"), std::u16string(u"b/c")),
            u"C:\\a\\b\\c");
  EXPECT_EQ(win::join_path_windows(std::u16string(u""), std::u16string(u"x/y")), u"x\\y");
}

TEST(StripTrailingSeparator, DropsOneFinalSeparatorOnly) {
  EXPECT_EQ(win::strip_trailing_separator(std::string("C:\\a\\\\")), "C:\\a\\");
  EXPECT_EQ(win::strip_trailing_separator(std::string("C:/a/")), "C:/a");
  EXPECT_EQ(win::strip_trailing_separator(std::u16string(u"C:\\a")), u"C:\\a");
  EXPECT_EQ(win::strip_trailing_separator(std::u16string(u"")), u"");
}

TEST(IsNetworkPath, KnowsUncAndLongUncPaths) {
  EXPECT_TRUE(win::is_network_path(std::u16string(u"\\\\srv\\share\\a")));
  EXPECT_TRUE(win::is_network_path(std::u16string(u"\\\\?\\UNC\\srv\\share")));
  EXPECT_TRUE(win::is_network_path(std::string("\\\\?\\unc\\srv\\share")));
  EXPECT_FALSE(win::is_network_path(std::u16string(u"\\\\?\\C:\\a")));
  EXPECT_FALSE(win::is_network_path(std::u16string(u"C:\\a")));
  EXPECT_FALSE(win::is_network_path(std::u16string(u"\\a")));
  EXPECT_FALSE(win::is_network_path(std::string("")));
}

TEST(ReplaceExtension, ReplacesThePartFromTheLastDot) {
  EXPECT_EQ(win::replace_extension(std::string("C:\\a\\x.log"), std::string(".gz")),
            "C:\\a\\x.gz");
  EXPECT_EQ(win::replace_extension(std::string("x.tar.log"), std::string("gz")), "x.tar.gz");
}

TEST(ReplaceExtension, AppendsWhenThereIsNoDot) {
  EXPECT_EQ(win::replace_extension(std::u16string(u"C:\\a\\x"), std::u16string(u"xml")),
            u"C:\\a\\x.xml");
}

TEST(ReplaceExtension, EmptyExtensionCutsAtTheLastDot) {
  EXPECT_EQ(win::replace_extension(std::string("x.log"), std::string("")), "x");
  EXPECT_EQ(win::replace_extension(std::string("x"), std::string("")), "x");
}

TEST(ReplaceExtension, TakesTheLastDotEvenInAFolderName) {
  EXPECT_EQ(win::replace_extension(std::string("C:\\a.b\\x"), std::string("y")), "C:\\a.y");
}

TEST(PathRelation, ComparesPartByPartWithoutRegardToCase) {
  EXPECT_EQ(win::path_relation(u"C:\\A\\b", u"c:/a"), 1);
  EXPECT_EQ(win::path_relation(u"c:/a", u"C:\\A\\b"), 0);
  EXPECT_EQ(win::path_relation(u"c:\\a", u"d:\\a"), 3);
}

TEST(PathRelation, EqualTextsAndEqualPartsAreTwo) {
  EXPECT_EQ(win::path_relation(u"C:\\Logs", u"c:\\logs"), 2);
  EXPECT_EQ(win::path_relation(u"C:\\Logs\\", u"c:/logs"), 2);
  EXPECT_EQ(win::path_relation(u"C:\\\\Logs", u"C:\\Logs"), 2);
}

TEST(PathRelation, APartThatOnlyBeginsTheSameIsADifference) {
  EXPECT_EQ(win::path_relation(u"C:\\Logs2\\x", u"C:\\Logs"), 3);
}

TEST(ExistenceSearchText, AppendsAStarToAShareRoot) {
  EXPECT_EQ(win::existence_search_text(u"\\\\srv\\share"), u"\\\\srv\\share\\*");
  EXPECT_EQ(win::existence_search_text(u"\\\\srv\\share\\"), u"\\\\srv\\share\\*");
}

TEST(ExistenceSearchText, LeavesOtherPathsButForOneTrailingSeparator) {
  EXPECT_EQ(win::existence_search_text(u"\\\\srv\\share\\a"), u"\\\\srv\\share\\a");
  EXPECT_EQ(win::existence_search_text(u"\\\\srv"), u"\\\\srv");
  EXPECT_EQ(win::existence_search_text(u"C:\\a\\"), u"C:\\a");
  EXPECT_EQ(win::existence_search_text(u"C:\\a\\b"), u"C:\\a\\b");
  // Four parts: "?", "UNC", the server and the share.
  EXPECT_EQ(win::existence_search_text(u"\\\\?\\UNC\\srv\\share"), u"\\\\?\\UNC\\srv\\share");
}

TEST(DirectoryPrefixes, DrivePathStartsAtTheDriveRootAndLeavesTheFileOut) {
  EXPECT_EQ(win::directory_prefixes(u"C:\\a\\b\\file.log"),
            (u16s{u"C:\\", u"C:\\a\\", u"C:\\a\\b\\"}));
}

TEST(DirectoryPrefixes, PathEndingInASeparatorIncludesItsLastPart) {
  EXPECT_EQ(win::directory_prefixes(u"C:/a/b/"), (u16s{u"C:/", u"C:/a/", u"C:/a/b/"}));
}

TEST(DirectoryPrefixes, UncPathNeverIncludesTheServerOrTheShare) {
  EXPECT_EQ(win::directory_prefixes(u"\\\\srv\\share\\a\\b\\file"),
            (u16s{u"\\\\srv\\share\\a\\", u"\\\\srv\\share\\a\\b\\"}));
  EXPECT_EQ(win::directory_prefixes(u"//srv/share/a/file"), (u16s{u"//srv/share/a/"}));
}

TEST(DirectoryPrefixes, LongUncPathSkipsThePrefixTheServerAndTheShare) {
  EXPECT_EQ(win::directory_prefixes(u"\\\\?\\UNC\\srv\\share\\a\\file"),
            (u16s{u"\\\\?\\UNC\\srv\\share\\a\\"}));
  EXPECT_EQ(win::directory_prefixes(u"\\\\?\\unc\\srv\\share\\a\\b\\"),
            (u16s{u"\\\\?\\unc\\srv\\share\\a\\", u"\\\\?\\unc\\srv\\share\\a\\b\\"}));
}

TEST(DirectoryPrefixes, LongDrivePathStartsAfterThePrefixAtTheDrive) {
  EXPECT_EQ(win::directory_prefixes(u"\\\\?\\C:\\a\\file"),
            (u16s{u"\\\\?\\C:\\", u"\\\\?\\C:\\a\\"}));
}

TEST(DirectoryPrefixes, ShareRootAndBareFileGiveNothing) {
  EXPECT_EQ(win::directory_prefixes(u"\\\\srv\\share\\file"), u16s{});
  EXPECT_EQ(win::directory_prefixes(u"\\\\srv\\share"), u16s{});
  EXPECT_EQ(win::directory_prefixes(u"file.txt"), u16s{});
}

TEST(DirectoryPrefixes, RelativePathStartsAtItsFirstSeparator) {
  EXPECT_EQ(win::directory_prefixes(u"a\\b\\file"), (u16s{u"a\\", u"a\\b\\"}));
}

TEST(PathParts, SkipsEmptyParts) {
  EXPECT_EQ(win::path_parts(u"\\\\srv//share\\"), (u16s{u"srv", u"share"}));
  EXPECT_EQ(win::path_parts(u""), u16s{});
}

}  // namespace
