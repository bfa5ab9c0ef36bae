// fmt_t, the "%1" placeholder formatter behind every message.
#include "common/text/fmt.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using util::fmt_t;

std::string format_n(const std::string& tmpl, const std::vector<std::string>& args) {
  return fmt_t::format(tmpl, args.data(), args.size());
}

std::vector<std::string> ten_args() {
  return {"a1", "a2", "a3", "a4", "a5", "a6", "a7", "a8", "a9", "a10"};
}

TEST(Fmt, ReplacesAPlaceholderByItsArgument) {
  EXPECT_EQ(fmt_t::format("File [%1] is locked.", "C:\\x"), "File [C:\\x] is locked.");
}

TEST(Fmt, LeavesAPlaceholderBeyondTheArgumentsVisible) {
  EXPECT_EQ(fmt_t::format("[%1] [%2]", "a"), "[a] [%2]");
}

TEST(Fmt, LeavesPlaceholderZeroVisible) { EXPECT_EQ(fmt_t::format("%0", "a"), "%0"); }

TEST(Fmt, CopiesALonePercentSign) { EXPECT_EQ(fmt_t::format("%", "a"), "%"); }

TEST(Fmt, GivesAnEmptyStringForAnEmptyTemplate) { EXPECT_EQ(fmt_t::format("", "a"), ""); }

TEST(Fmt, RepeatsAnArgumentReferredToTwice) { EXPECT_EQ(fmt_t::format("%1%1", "ab"), "abab"); }

TEST(Fmt, DoesNotScanASubstitutedArgumentAgain) {
  EXPECT_EQ(fmt_t::format("%1|%2", "%2", "b"), "%2|b");
  EXPECT_EQ(fmt_t::format("<%1>", "%1"), "<%1>");
}

TEST(Fmt, TakesPlaceholdersInAnyOrder) {
  EXPECT_EQ(fmt_t::format("%3 %2 %1 %2", "a", "b", "c"), "c b a b");
}

TEST(Fmt, DropsAnArgumentNeverReferredTo) {
  EXPECT_EQ(fmt_t::format("only %2", "a", "b"), "only b");
  EXPECT_EQ(fmt_t::format("none", "a"), "none");
}

TEST(Fmt, OffersOneToFourNarrowArguments) {
  EXPECT_EQ(fmt_t::format("%1", "1"), "1");
  EXPECT_EQ(fmt_t::format("%1%2", "1", "2"), "12");
  EXPECT_EQ(fmt_t::format("%1%2%3", "1", "2", "3"), "123");
  EXPECT_EQ(fmt_t::format("%4%3%2%1", "1", "2", "3", "4"), "4321");
  EXPECT_EQ(fmt_t::format("%5", "1", "2", "3", "4"), "%5");
}

TEST(Fmt, JoinsAFollowingDigitToThePlaceholder) {
  EXPECT_EQ(fmt_t::format("%10", "x"), "%10");
  EXPECT_EQ(fmt_t::format("%12", "x"), "%12");
  EXPECT_EQ(format_n("%10", ten_args()), "a10");
  EXPECT_EQ(format_n("%1%10", ten_args()), "a1a10");
}

TEST(Fmt, EndsThePlaceholderAtTheFirstNonDigit) {
  EXPECT_EQ(fmt_t::format("%1a", "X"), "Xa");
  EXPECT_EQ(fmt_t::format("%1.", "X"), "X.");
}

TEST(Fmt, SkipsBlanksBetweenThePercentSignAndTheNumber) {
  EXPECT_EQ(fmt_t::format("[% 1]", "a"), "[a]");
  EXPECT_EQ(fmt_t::format("[%   2]", "a", "b"), "[b]");
  EXPECT_EQ(fmt_t::format("[%\t1]", "a"), "[a]");
}

TEST(Fmt, NormalisesLeadingZerosOfAPlaceholderLeftVisible) {
  EXPECT_EQ(fmt_t::format("%007", "a"), "%7");
  EXPECT_EQ(fmt_t::format("%00", "a"), "%0");
  EXPECT_EQ(fmt_t::format("% 09", "a"), "%9");
}

TEST(Fmt, ReadsLeadingZerosOfAValidPlaceholder) {
  EXPECT_EQ(fmt_t::format("%01", "a"), "a");
  EXPECT_EQ(format_n("%007", ten_args()), "a7");
}

TEST(Fmt, LeavesANegativePlaceholderVisible) {
  EXPECT_EQ(fmt_t::format("%-2", "a"), "%-2");
  EXPECT_EQ(fmt_t::format("%-1", "a"), "%-1");
  EXPECT_EQ(fmt_t::format("%-0", "a"), "%0");
}

TEST(Fmt, AcceptsAPlusSign) {
  EXPECT_EQ(fmt_t::format("%+1", "a"), "a");
  EXPECT_EQ(fmt_t::format("%+9", "a"), "%9");
}

TEST(Fmt, CopiesAPercentSignNotFollowedByANumber) {
  EXPECT_EQ(fmt_t::format("100%", "a"), "100%");
  EXPECT_EQ(fmt_t::format("%x %s", "a"), "%x %s");
  EXPECT_EQ(fmt_t::format("a % b", "z"), "a % b");
  EXPECT_EQ(fmt_t::format("50% ", "z"), "50% ");
  EXPECT_EQ(fmt_t::format("%-x", "z"), "%-x");
  EXPECT_EQ(fmt_t::format("%+", "z"), "%+");
  EXPECT_EQ(fmt_t::format("%- 1", "z"), "%- 1");
}

TEST(Fmt, HasNoEscapeForThePercentSign) {
  EXPECT_EQ(fmt_t::format("%%1", "a"), "%a");
  EXPECT_EQ(fmt_t::format("%%", "a"), "%%");
}

TEST(Fmt, SaturatesAHugePlaceholderNumberAt32Bits) {
  EXPECT_EQ(fmt_t::format("%99999999999", "a"), "%2147483647");
  EXPECT_EQ(fmt_t::format("%2147483648", "a"), "%2147483647");
  EXPECT_EQ(fmt_t::format("%-99999999999", "a"), "%-2147483648");
  EXPECT_EQ(fmt_t::format("[%99999999999999999999999]", "a"), "[%2147483647]");
}

TEST(Fmt, ContinuesBehindTheLastDigitOfASaturatedNumber) {
  EXPECT_EQ(fmt_t::format("%99999999999x%1", "a"), "%2147483647xa");
}

TEST(Fmt, KeepsTextWithoutPlaceholdersAsItIs) {
  const std::string text = "Plain text with digits 123 and UTF-8 \xC3\xA4.";
  EXPECT_EQ(fmt_t::format(text, "unused"), text);
}

TEST(Fmt, InsertsArgumentsWithLineFeedsAndZeroBytesAsTheyAre) {
  const std::string arg("x\ny\0z", 5);
  EXPECT_EQ(fmt_t::format("[%1]", arg), "[" + arg + "]");
}

TEST(Fmt, WithNoArgumentsLeavesEveryPlaceholderVisible) {
  EXPECT_EQ(fmt_t::format(std::string("%1 and %2"), nullptr, 0), "%1 and %2");
}

// ---- the wide forms ------------------------------------------------------------------------

TEST(FmtWide, ReplacesPlaceholdersByTheSameRule) {
  EXPECT_EQ(fmt_t::format(u"[%1] [%2]", u"a"), u"[a] [%2]");
  EXPECT_EQ(fmt_t::format(u"%2-%1", u"a", u"b"), u"b-a");
  EXPECT_EQ(fmt_t::format(u"%1%2%3", u"a", u"b", u"c"), u"abc");
}

TEST(FmtWide, OffersSevenArguments) {
  EXPECT_EQ(fmt_t::format(u"%7%6%5%4%3%2%1", u"1", u"2", u"3", u"4", u"5", u"6", u"7"),
            u"7654321");
  EXPECT_EQ(fmt_t::format(u"%8", u"1", u"2", u"3", u"4", u"5", u"6", u"7"), u"%8");
}

TEST(FmtWide, KeepsTheEdgeCasesOfTheNarrowForm) {
  EXPECT_EQ(fmt_t::format(u"%0", u"a"), u"%0");
  EXPECT_EQ(fmt_t::format(u"%", u"a"), u"%");
  EXPECT_EQ(fmt_t::format(u"", u"a"), u"");
  EXPECT_EQ(fmt_t::format(u"100%", u"a"), u"100%");
  EXPECT_EQ(fmt_t::format(u"%%1", u"a"), u"%a");
  EXPECT_EQ(fmt_t::format(u"%10", u"a"), u"%10");
  EXPECT_EQ(fmt_t::format(u"[% 1]", u"a"), u"[a]");
  EXPECT_EQ(fmt_t::format(u"%007", u"a"), u"%7");
  EXPECT_EQ(fmt_t::format(u"%-2", u"a"), u"%-2");
  EXPECT_EQ(fmt_t::format(u"%1%1", u"a"), u"aa");
  EXPECT_EQ(fmt_t::format(u"%1|%2", u"%2", u"b"), u"%2|b");
}

TEST(FmtWide, SaturatesAHugePlaceholderNumberAt32Bits) {
  EXPECT_EQ(fmt_t::format(u"%99999999999", u"a"), u"%2147483647");
  EXPECT_EQ(fmt_t::format(u"%-99999999999", u"a"), u"%-2147483648");
}

TEST(FmtWide, CopiesCharactersOutsideAsciiAndSurrogatePairs) {
  const std::u16string tmpl = u"\u00c4\u20ac %1 \U0001F600";
  EXPECT_EQ(fmt_t::format(tmpl, u"\u4e2d"), u"\u00c4\u20ac \u4e2d \U0001F600");
}

}  // namespace
