// Case-insensitive comparisons and searches on whole strings.
#include "common/text/compare.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using util::find_nocase;

TEST(FoldCase, MakesUpperAndLowerAsciiLettersEqual) {
  EXPECT_EQ(util::fold_case(u'A'), util::fold_case(u'a'));
  EXPECT_EQ(util::fold_case(u'Z'), util::fold_case(u'z'));
  EXPECT_NE(util::fold_case(u'a'), util::fold_case(u'b'));
}

TEST(FoldCase, MakesUpperAndLowerLatin1LettersEqual) {
  EXPECT_EQ(util::fold_case(u'\u00c4'), util::fold_case(u'\u00e4'));
  EXPECT_EQ(util::fold_case(u'\u00d6'), util::fold_case(u'\u00f6'));
  EXPECT_EQ(util::fold_case(u'\u00de'), util::fold_case(u'\u00fe'));
}

TEST(FoldCase, LeavesDigitsAndPunctuationAlone) {
  for (char16_t c : {u'0', u'9', u'\\', u'_', u'@', u'[', u'`', u'{'}) {
    EXPECT_EQ(util::fold_case(c), c);
  }
  // Multiplication and division signs sit among the Latin-1 letters but are no letters.
  EXPECT_NE(util::fold_case(u'\u00d7'), util::fold_case(u'\u00f7'));
}

TEST(EqualsNocase, ComparesWholeStringsWithoutRegardToCase) {
  EXPECT_TRUE(util::equals_nocase(u"Orcl", u"ORCL"));
  EXPECT_TRUE(util::equals_nocase(u"", u""));
  EXPECT_FALSE(util::equals_nocase(u"ORCL", u"ORCL1"));
  EXPECT_FALSE(util::equals_nocase(u"ORCL1", u"ORCL"));
  EXPECT_FALSE(util::equals_nocase(u"ORCL", u"ORCX"));
}

TEST(EqualsNocasePrefix, MatchesTheLeadingPartWithoutRegardToCase) {
  EXPECT_TRUE(util::equals_nocase_prefix(u"C:\\Oracle\\Product", u"c:\\oracle"));
  EXPECT_TRUE(util::equals_nocase_prefix(u"ORCL", u"orcl"));
  EXPECT_TRUE(util::equals_nocase_prefix(u"anything", u""));
  EXPECT_FALSE(util::equals_nocase_prefix(u"C:\\Oracle", u"D:\\"));
}

TEST(EqualsNocasePrefix, IsFalseWhenTheTextIsShorterThanThePrefix) {
  EXPECT_FALSE(util::equals_nocase_prefix(u"C:", u"c:\\oracle"));
  EXPECT_FALSE(util::equals_nocase_prefix(u"", u"x"));
}

TEST(EndsWithNocase, MatchesTheTailWithoutRegardToCase) {
  EXPECT_TRUE(util::ends_with_nocase("ARC0001.LOG", ".log"));
  EXPECT_TRUE(util::ends_with_nocase(".log", ".LOG"));
  EXPECT_TRUE(util::ends_with_nocase("x", ""));
  EXPECT_FALSE(util::ends_with_nocase("file.log.bak", ".log"));
}

TEST(EndsWithNocase, IsFalseWhenTheTextIsShorterThanTheSuffix) {
  EXPECT_FALSE(util::ends_with_nocase("log", ".log"));
  EXPECT_FALSE(util::ends_with_nocase("", "a"));
}

TEST(FindNocase, FindsThePartWithoutRegardToCase) {
  EXPECT_EQ(find_nocase(u"xABcx", u"abc"), std::optional<size_t>(1));
  EXPECT_EQ(find_nocase(u"scott AS sysdba", u" as "), std::optional<size_t>(5));
}

TEST(FindNocase, GivesTheFirstOfSeveralPlaces) {
  EXPECT_EQ(find_nocase(u"abAbab", u"AB"), std::optional<size_t>(0));
  EXPECT_EQ(find_nocase(u"xabab", u"b"), std::optional<size_t>(2));
}

TEST(FindNocase, FindsNothingWhenThePartIsMissing) {
  EXPECT_EQ(find_nocase(u"abcdef", u"xyz"), std::nullopt);
}

TEST(FindNocase, FindsNothingWhenThePartIsAsLongAsTheTextEvenIfEqual) {
  EXPECT_EQ(find_nocase(u"abc", u"abc"), std::nullopt);
  EXPECT_EQ(find_nocase(u"abc", u"ABC"), std::nullopt);
}

TEST(FindNocase, DoesNotFindAPartThatStandsOnlyAtTheVeryEnd) {
  EXPECT_EQ(find_nocase(u"abc", u"bc"), std::nullopt);
  EXPECT_EQ(find_nocase(u"aab", u"b"), std::nullopt);
  EXPECT_EQ(find_nocase(u"user/pass@DB", u"@db"), std::nullopt);
}

TEST(FindNocase, FindsAPartAtTheStart) { EXPECT_EQ(find_nocase(u"abc", u"ab"), std::optional<size_t>(0)); }

TEST(FindNocase, FindsAPartThatEndsOneBeforeTheEnd) {
  EXPECT_EQ(find_nocase(u"abcd", u"bc"), std::optional<size_t>(1));
}

TEST(FindNocase, FindsNothingWhenThePartIsLongerThanTheText) {
  EXPECT_EQ(find_nocase(u"ab", u"abc"), std::nullopt);
  EXPECT_EQ(find_nocase(u"", u"a"), std::nullopt);
}

TEST(SplitAt, GivesWhatStandsBeforeAndAfterThePart) {
  std::u16string left, right;
  ASSERT_TRUE(util::split_at(u"scott/tiger@orcl", u"/", left, right));
  EXPECT_EQ(left, u"scott");
  EXPECT_EQ(right, u"tiger@orcl");
}

TEST(SplitAt, FindsThePartWithoutRegardToCaseAndSplitsAtTheFirst) {
  std::u16string left, right;
  ASSERT_TRUE(util::split_at(u"sys AS sysdba as x", u" as ", left, right));
  EXPECT_EQ(left, u"sys");
  EXPECT_EQ(right, u"sysdba as x");
}

TEST(SplitAt, IsFalseWhenFindNocaseFindsNothing) {
  std::u16string left, right;
  EXPECT_FALSE(util::split_at(u"scott", u"/", left, right));
  EXPECT_FALSE(util::split_at(u"scott/", u"/", left, right));  // only at the very end
  EXPECT_FALSE(util::split_at(u"/", u"/", left, right));
}

TEST(SplitAt, GivesAnEmptyLeftPartWhenTextStartsWithThePart) {
  std::u16string left = u"old", right = u"old";
  ASSERT_TRUE(util::split_at(u"/x", u"/", left, right));
  EXPECT_EQ(left, u"");
  EXPECT_EQ(right, u"x");
}

TEST(FindArg, GivesTheIndexOfTheFirstEqualEntryWithoutRegardToCase) {
  const std::vector<std::u16string> list = {u"-sid", u"-Verbose", u"-VERBOSE"};
  EXPECT_EQ(util::find_arg(list, u"-verbose"), std::optional<size_t>(1));
  EXPECT_EQ(util::find_arg(list, u"-SID"), std::optional<size_t>(0));
}

TEST(FindArg, FindsNothingForAMissingOrPartialName) {
  const std::vector<std::u16string> list = {u"-sid", u"-verbose"};
  EXPECT_EQ(util::find_arg(list, u"-home"), std::nullopt);
  EXPECT_EQ(util::find_arg(list, u"-verb"), std::nullopt);
  EXPECT_EQ(util::find_arg({}, u"-sid"), std::nullopt);
}

}  // namespace
