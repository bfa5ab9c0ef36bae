// Conversions between wide text, the system code page and UTF-8: the rules common to both
// builds. What the code page itself is differs and stands in the paired files.
#include "common/text/convert.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::u16string kWide = u"Gr\u00fc\u00dfe \u20ac \u4e2d \U0001F600";
const std::string kUtf8 =
    "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC \xE4\xB8\xAD \xF0\x9F\x98\x80";

TEST(Convert, GivesAnEmptyResultForAnEmptySource) {
  EXPECT_EQ(util::to_multibyte(u""), "");
  EXPECT_EQ(util::to_multibyte_safe(u""), "");
  EXPECT_EQ(util::to_unicode(""), u"");
  EXPECT_EQ(util::to_unicode_safe(""), u"");
  EXPECT_EQ(util::to_utf8(u""), "");
  EXPECT_EQ(util::from_utf8(""), u"");
  EXPECT_EQ(util::multibyte_to_utf8(""), "");
}

TEST(Convert, TurnsWideTextIntoUtf8) { EXPECT_EQ(util::to_utf8(kWide), kUtf8); }

TEST(Convert, TurnsUtf8IntoWideText) { EXPECT_EQ(util::from_utf8(kUtf8), kWide); }

TEST(Convert, CutsTheResultAtAnEmbeddedZero) {
  EXPECT_EQ(util::to_utf8(std::u16string(u"ab\0cd", 5)), "ab");
  EXPECT_EQ(util::from_utf8(std::string("ab\0cd", 5)), u"ab");
  EXPECT_EQ(util::to_multibyte(std::u16string(u"ab\0cd", 5)), "ab");
  EXPECT_EQ(util::to_unicode(std::string("ab\0cd", 5)), u"ab");
}

TEST(Convert, GivesAnEmptyResultForASourceStartingWithZero) {
  EXPECT_EQ(util::to_utf8(std::u16string(u"\0x", 2)), "");
  EXPECT_EQ(util::from_utf8(std::string("\0x", 2)), u"");
}

TEST(Convert, ReplacesInvalidUtf8WithTheReplacementCharacter) {
  EXPECT_EQ(util::from_utf8("a\xFFz"), u"a\ufffdz");
}

TEST(Convert, ReplacesALoneSurrogateWhenWritingUtf8) {
  EXPECT_EQ(util::to_utf8(std::u16string(u"a") + char16_t(0xD800) + u"z"), "a\xEF\xBF\xBDz");
}

TEST(Convert, RoundTripsAsciiThroughTheCodePage) {
  const std::u16string wide = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1 ORCL";
  const std::string narrow = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1 ORCL";
  EXPECT_EQ(util::to_multibyte(wide), narrow);
  EXPECT_EQ(util::to_unicode(narrow), wide);
  EXPECT_EQ(util::to_multibyte_safe(wide), narrow);
  EXPECT_EQ(util::to_unicode_safe(narrow), wide);
  EXPECT_EQ(util::multibyte_to_utf8(narrow), narrow);
}

TEST(Convert, SafeNarrowingOfTextTheCodePageCannotTakeStillReturns) {
  const std::u16string hard = std::u16string(u"\u4e2d\u6587 ") + char16_t(0xDC00) + u" \U0001F600";
  std::string result;
  EXPECT_NO_THROW(result = util::to_multibyte_safe(hard));
  EXPECT_FALSE(result.empty());
}

TEST(Convert, SafeWideningOfInvalidBytesStillReturns) {
  std::u16string result;
  EXPECT_NO_THROW(result = util::to_unicode_safe("\xFF\xFE\x80\xC3"));
  EXPECT_FALSE(result.empty());
}

TEST(Convert, MultibyteToUtf8NeverThrows) {
  EXPECT_NO_THROW(util::multibyte_to_utf8("\xFF\xFE\x80\xC3 plain"));
}

TEST(Convert, NamesTheMarkersOfTheSafeForms) {
  EXPECT_STREQ(util::kToMultibyteFailed, "UNICODE->ANSI failed");
  EXPECT_EQ(std::u16string(util::kToUnicodeFailed), u"ANSI -> UNICODE failed.");
}

}  // namespace
