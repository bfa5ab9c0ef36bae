// Numbers and booleans as text, and text to number.
#include "common/text/numbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "common/exc/exc_base.h"
#include "support/thrown.h"

namespace {

using dsl_test::thrown;

TEST(ToStr, WritesSignedNumbersInDecimal) {
  EXPECT_EQ(util::to_str(int32_t{0}), "0");
  EXPECT_EQ(util::to_str(int32_t{-12}), "-12");
  EXPECT_EQ(util::to_str(std::numeric_limits<int32_t>::min()), "-2147483648");
  EXPECT_EQ(util::to_str(std::numeric_limits<int32_t>::max()), "2147483647");
}

TEST(ToStr, WritesUnsignedNumbersInDecimalWithoutGrouping) {
  EXPECT_EQ(util::to_str(uint32_t{1234567}), "1234567");
  EXPECT_EQ(util::to_str(std::numeric_limits<uint32_t>::max()), "4294967295");
  EXPECT_EQ(util::to_str(uint64_t{0}), "0");
  EXPECT_EQ(util::to_str(std::numeric_limits<uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(util::to_str(uint64_t{5000000000ull}), "5000000000");
}

TEST(ToStr, WritesBooleansAsWords) {
  EXPECT_EQ(util::to_str(true), "true");
  EXPECT_EQ(util::to_str(false), "false");
}

TEST(ToWstr, WritesTheSameDigitsInWideText) {
  EXPECT_EQ(util::to_wstr(int32_t{-7}), u"-7");
  EXPECT_EQ(util::to_wstr(std::numeric_limits<int32_t>::min()), u"-2147483648");
  EXPECT_EQ(util::to_wstr(std::numeric_limits<uint32_t>::max()), u"4294967295");
  EXPECT_EQ(util::to_wstr(std::numeric_limits<uint64_t>::max()), u"18446744073709551615");
  EXPECT_EQ(util::to_wstr(uint64_t{1234567}), u"1234567");
}

TEST(ToHex, WritesAU32AsEightLowerCaseDigits) {
  EXPECT_EQ(util::to_hex(uint32_t{5}), "0x00000005");
  EXPECT_EQ(util::to_hex(uint32_t{0}), "0x00000000");
  EXPECT_EQ(util::to_hex(uint32_t{0xABCDEF12u}), "0xabcdef12");
  EXPECT_EQ(util::to_hex(std::numeric_limits<uint32_t>::max()), "0xffffffff");
  EXPECT_EQ(util::to_hex(uint32_t{0x80004005u}).size(), 10u);
}

TEST(ToHex, WritesAU64AsSixteenLowerCaseDigits) {
  EXPECT_EQ(util::to_hex(uint64_t{1}), "0x0000000000000001");
  EXPECT_EQ(util::to_hex(uint64_t{0xDEADBEEFCAFEBABEull}), "0xdeadbeefcafebabe");
  EXPECT_EQ(util::to_hex(uint64_t{0xFFFFFFFFull}), "0x00000000ffffffff");
  EXPECT_EQ(util::to_hex(uint64_t{0}).size(), 18u);
}

TEST(ToHex, WritesANegativeI32AsItsBitPattern) {
  EXPECT_EQ(util::to_hex(int32_t{-1}), "0xffffffff");
  EXPECT_EQ(util::to_hex(std::numeric_limits<int32_t>::min()), "0x80000000");
  EXPECT_EQ(util::to_hex(int32_t{-2147467259}), "0x80004005");
}

TEST(ToHex, WritesAPositiveI32ZeroFilledToEightDigits) {
  EXPECT_EQ(util::to_hex(int32_t{255}), "0x000000ff");
  EXPECT_EQ(util::to_hex(int32_t{0}), "0x00000000");
  EXPECT_EQ(util::to_hex(std::numeric_limits<int32_t>::max()), "0x7fffffff");
}

TEST(ToInt, ReadsANegativeNumber) { EXPECT_EQ(util::to_int("-12"), -12); }

TEST(ToInt, SkipsLeadingBlanks) {
  EXPECT_EQ(util::to_int(" 7"), 7);
  EXPECT_EQ(util::to_int("\t\n  42"), 42);
}

TEST(ToInt, AcceptsAPlusSign) { EXPECT_EQ(util::to_int("+5"), 5); }

TEST(ToInt, IgnoresTrailingCharacters) {
  EXPECT_EQ(util::to_int("12x"), 12);
  EXPECT_EQ(util::to_int("3 4"), 3);
  EXPECT_EQ(util::to_int("0x10"), 0);
  EXPECT_EQ(util::to_int("1.9"), 1);
}

TEST(ToInt, ReadsLeadingZerosInBaseTen) { EXPECT_EQ(util::to_int("010"), 10); }

TEST(ToInt, SaturatesAt32Bits) {
  EXPECT_EQ(util::to_int("2147483647"), 2147483647);
  EXPECT_EQ(util::to_int("2147483648"), 2147483647);
  EXPECT_EQ(util::to_int("99999999999"), 2147483647);
  EXPECT_EQ(util::to_int("-2147483648"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(util::to_int("-2147483649"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(util::to_int("-99999999999999999999"), std::numeric_limits<int32_t>::min());
}

TEST(ToInt, FailsOnTextWithoutANumberAndNamesTheText) {
  auto e = thrown<exc::runtime_exc_t>([] { util::to_int("abc"); });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "Cannot convert string value to signed integer. Given string: [abc].");
}

TEST(ToInt, FailsOnAnEmptyString) {
  auto e = thrown<exc::runtime_exc_t>([] { util::to_int(""); });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "Cannot convert string value to signed integer. Given string: [].");
}

TEST(ToInt, FailsOnBlanksOrASignAlone) {
  auto blank = thrown<exc::runtime_exc_t>([] { util::to_int("  "); });
  ASSERT_TRUE(blank);
  EXPECT_STREQ(blank->what(), "Cannot convert string value to signed integer. Given string: [  ].");
  auto sign = thrown<exc::runtime_exc_t>([] { util::to_int("-"); });
  ASSERT_TRUE(sign);
  EXPECT_STREQ(sign->what(), "Cannot convert string value to signed integer. Given string: [-].");
  auto sign_then_blank = thrown<exc::runtime_exc_t>([] { util::to_int("- 1"); });
  ASSERT_TRUE(sign_then_blank);
}

TEST(ToIntWide, ReadsTheSameWayAsTheNarrowForm) {
  EXPECT_EQ(util::to_int(u"-12"), -12);
  EXPECT_EQ(util::to_int(u" 7"), 7);
  EXPECT_EQ(util::to_int(u"12x"), 12);
  EXPECT_EQ(util::to_int(u"99999999999"), 2147483647);
}

TEST(ToIntWide, FailsOnTextWithoutANumberAndNamesTheText) {
  auto e = thrown<exc::runtime_exc_t>([] { util::to_int(u"abc"); });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "Cannot convert string value to signed integer. Given string: [abc].");
}

// ---- the shared strtol core ----------------------------------------------------------------

TEST(ParseLong, ReadsANumberAtAPositionAndTellsWhereItEnds) {
  const std::string text = "ab%12x";
  int32_t value = 0;
  size_t end = 0;
  ASSERT_TRUE(util::parse_long(text, 3, value, end));
  EXPECT_EQ(value, 12);
  EXPECT_EQ(end, 5u);
}

TEST(ParseLong, SkipsBlanksAndASign) {
  const std::string text = "  -7;";
  int32_t value = 0;
  size_t end = 0;
  ASSERT_TRUE(util::parse_long(text, 0, value, end));
  EXPECT_EQ(value, -7);
  EXPECT_EQ(end, 4u);
}

TEST(ParseLong, FindsNoNumberInLettersOrAtTheEnd) {
  int32_t value = 0;
  size_t end = 0;
  EXPECT_FALSE(util::parse_long(std::string("x1"), 0, value, end));
  EXPECT_FALSE(util::parse_long(std::string("12"), 2, value, end));
  EXPECT_FALSE(util::parse_long(std::string(" +"), 0, value, end));
}

TEST(ParseLong, SaturatesAndEndsBehindAllTheDigits) {
  const std::string text = "99999999999z";
  int32_t value = 0;
  size_t end = 0;
  ASSERT_TRUE(util::parse_long(text, 0, value, end));
  EXPECT_EQ(value, 2147483647);
  EXPECT_EQ(end, 11u);
}

TEST(ParseLong, WorksOnWideText) {
  const std::u16string text = u"%-0042!";
  int32_t value = 0;
  size_t end = 0;
  ASSERT_TRUE(util::parse_long(text, 1, value, end));
  EXPECT_EQ(value, -42);
  EXPECT_EQ(end, 6u);
}

}  // namespace
