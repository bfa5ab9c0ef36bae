// GUIDs: new ones from the system and their braced, lower-case text.
#include "common/text/guid.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

bool is_lower_hex(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f'); }

void expect_guid_shape(const std::u16string& text) {
  ASSERT_EQ(text.size(), 38u);
  EXPECT_EQ(text.front(), u'{');
  EXPECT_EQ(text.back(), u'}');
  const std::u16string inside = text.substr(1, 36);
  for (size_t i = 0; i < inside.size(); ++i) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      EXPECT_EQ(inside[i], u'-') << "at " << i;
    } else {
      EXPECT_TRUE(is_lower_hex(inside[i])) << "at " << i << ": " << static_cast<int>(inside[i]);
    }
  }
}

TEST(GuidToText, WritesTheFieldsInBracesWithLowerCaseDigits) {
  util::guid_t g;
  g.data1 = 0x12345678u;
  g.data2 = 0x9ABC;
  g.data3 = 0xDEF0;
  g.data4 = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
  EXPECT_EQ(util::guid_to_text(g), u"{12345678-9abc-def0-0123-456789abcdef}");
}

TEST(GuidToText, ZeroFillsEveryField) {
  util::guid_t g;
  g.data1 = 0x1;
  g.data2 = 0x2;
  g.data3 = 0x3;
  g.data4 = {0, 4, 0, 0, 0, 0, 0, 5};
  EXPECT_EQ(util::guid_to_text(g), u"{00000001-0002-0003-0004-000000000005}");
}

TEST(GuidToText, WritesTheNullGuid) {
  EXPECT_EQ(util::guid_to_text(util::guid_t{}), u"{00000000-0000-0000-0000-000000000000}");
}

TEST(NewGuid, HasTheShapeOfABracedLowerCaseGuid) { expect_guid_shape(util::guid_to_text(util::new_guid())); }

TEST(NewGuid, GivesADifferentValueEachTime) {
  std::set<std::u16string> seen;
  for (int i = 0; i < 100; ++i) seen.insert(util::guid_to_text(util::new_guid()));
  EXPECT_EQ(seen.size(), 100u);
}

TEST(NewGuid, IsNotTheNullGuid) {
  EXPECT_NE(util::guid_to_text(util::new_guid()), u"{00000000-0000-0000-0000-000000000000}");
}

}  // namespace
