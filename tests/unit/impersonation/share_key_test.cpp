#include <gtest/gtest.h>

#include <string>

#include "common/win/impersonation_tables.h"
#include "support/wide.h"

namespace {

using win::share_key;

std::string key(const std::u16string& path) { return dsl_test::utf8(share_key(path)); }

TEST(ShareKey, ServerAndShareOfAPlainUncPath) {
  EXPECT_EQ(key(u"\\\\srv\\share\\a\\b.txt"), "\\\\srv\\share");
  EXPECT_EQ(key(u"\\\\srv\\share"), "\\\\srv\\share");
}

TEST(ShareKey, LongUncFormTakesTheThirdAndFourthParts) {
  EXPECT_EQ(key(u"\\\\?\\UNC\\SRV\\share\\a"), "\\\\SRV\\share");
  EXPECT_EQ(key(u"\\\\?\\UNC\\srv\\share"), "\\\\srv\\share");
}

TEST(ShareKey, LongFormWithoutUncTakesTheSecondAndThirdParts) {
  EXPECT_EQ(key(u"\\\\?\\C:\\dir\\file"), "\\\\C:\\dir");
  EXPECT_EQ(key(u"\\\\?\\x\\y"), "\\\\x\\y");
}

TEST(ShareKey, ServerAloneHasNoKey) {
  EXPECT_EQ(key(u"\\\\srv"), "");
  EXPECT_EQ(key(u"\\\\"), "");
}

TEST(ShareKey, PathsThatDoNotBeginWithTwoBackslashesHaveNoKey) {
  EXPECT_EQ(key(u"C:\\dir\\file"), "");
  EXPECT_EQ(key(u"\\srv\\share"), "");
  EXPECT_EQ(key(u"//srv/share"), "");
  EXPECT_EQ(key(u"relative\\path"), "");
  EXPECT_EQ(key(u""), "");
}

TEST(ShareKey, ForwardSlashesSeparateAfterThePrefix) {
  EXPECT_EQ(key(u"\\\\srv/share/a"), "\\\\srv\\share");
  EXPECT_EQ(key(u"\\\\?/UNC/srv/share/a"), "\\\\srv\\share");
}

TEST(ShareKey, ShortLongForms) {
  // "\\?\UNC\srv" has three parts: too few for the UNC form, and UNC forms never fall back to
  // the plain long form.
  EXPECT_EQ(key(u"\\\\?\\UNC\\srv"), "");
  EXPECT_EQ(key(u"\\\\?\\UNC"), "");
  EXPECT_EQ(key(u"\\\\?\\x"), "");
  EXPECT_EQ(key(u"\\\\?"), "");
}

TEST(ShareKey, QuestionMarkAndUncAreComparedExactly) {
  // "unc" in lower case is not the UNC marker, so the long form without UNC applies.
  EXPECT_EQ(key(u"\\\\?\\unc\\srv\\share"), "\\\\unc\\srv");
  // "??" is not "?": a server of that name.
  EXPECT_EQ(key(u"\\\\??\\UNC\\srv"), "\\\\??\\UNC");
}

TEST(ShareKey, EmptyPartsCountAsParts) {
  EXPECT_EQ(key(u"\\\\srv\\\\share"), "\\\\srv\\");
  EXPECT_EQ(key(u"\\\\srv\\"), "\\\\srv\\");
}

}  // namespace
