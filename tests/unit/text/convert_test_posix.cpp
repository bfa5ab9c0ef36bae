// On the host build the system code page is UTF-8.
#include <gtest/gtest.h>

#include "common/text/convert.h"

namespace {

TEST(ConvertOnHost, UsesUtf8AsTheCodePage) {
  const std::u16string wide = u"Gr\u00fc\u00dfe \u20ac";
  const std::string utf8 = "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC";
  EXPECT_EQ(util::to_multibyte(wide), utf8);
  EXPECT_EQ(util::to_multibyte_safe(wide), utf8);
  EXPECT_EQ(util::to_unicode(utf8), wide);
  EXPECT_EQ(util::to_unicode_safe(utf8), wide);
}

TEST(ConvertOnHost, LeavesUtf8AsItIsWhenConvertingTheCodePageToUtf8) {
  const std::string utf8 = "Gr\xC3\xBC\xC3\x9F" "e \xF0\x9F\x98\x80";
  EXPECT_EQ(util::multibyte_to_utf8(utf8), utf8);
}

TEST(ConvertOnHost, ReplacesWhatTheCodePageCannotTake) {
  EXPECT_EQ(util::to_multibyte(std::u16string(1, char16_t(0xD800))), "\xEF\xBF\xBD");
  EXPECT_EQ(util::to_unicode("a\xFFz"), u"a\ufffdz");
}

}  // namespace
