// Base64 with the standard alphabet; decoding stops quietly at the first character that is
// not part of it.
#include "common/text/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using util::base64_decode;
using util::base64_encode;

TEST(Base64, EncodesTheStandardTestVectors) {
  EXPECT_EQ(base64_encode(std::string("")), "");
  EXPECT_EQ(base64_encode(std::string("f")), "Zg==");
  EXPECT_EQ(base64_encode(std::string("fo")), "Zm8=");
  EXPECT_EQ(base64_encode(std::string("foo")), "Zm9v");
  EXPECT_EQ(base64_encode(std::string("foob")), "Zm9vYg==");
  EXPECT_EQ(base64_encode(std::string("fooba")), "Zm9vYmE=");
  EXPECT_EQ(base64_encode(std::string("foobar")), "Zm9vYmFy");
}

TEST(Base64, DecodesTheStandardTestVectors) {
  EXPECT_EQ(base64_decode(std::string("")), "");
  EXPECT_EQ(base64_decode(std::string("Zg==")), "f");
  EXPECT_EQ(base64_decode(std::string("Zm8=")), "fo");
  EXPECT_EQ(base64_decode(std::string("Zm9v")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9vYg==")), "foob");
  EXPECT_EQ(base64_decode(std::string("Zm9vYmE=")), "fooba");
  EXPECT_EQ(base64_decode(std::string("Zm9vYmFy")), "foobar");
}

TEST(Base64, DecodesQQPaddedToOneByteAndEncodesItBack) {
  std::vector<uint8_t> bytes;
  base64_decode("QQ==", bytes);
  EXPECT_EQ(bytes, std::vector<uint8_t>{0x41});
  EXPECT_EQ(base64_encode(bytes), "QQ==");
  const uint8_t one = 0x41;
  EXPECT_EQ(base64_encode(&one, 1), "QQ==");
}

TEST(Base64, UsesPlusAndSlashForTheLastTwoValues) {
  const std::vector<uint8_t> bytes = {0xFB, 0xFF};
  EXPECT_EQ(base64_encode(bytes), "+/8=");
  const std::vector<uint8_t> all_ones = {0xFF, 0xFF, 0xFF};
  EXPECT_EQ(base64_encode(all_ones), "////");
  std::vector<uint8_t> back;
  base64_decode("+/8=", back);
  EXPECT_EQ(back, bytes);
}

TEST(Base64, RoundTripsEveryByteValue) {
  std::vector<uint8_t> bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<uint8_t>(i));
  for (size_t len : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{4}, size_t{255},
                     size_t{256}}) {
    const std::vector<uint8_t> part(bytes.begin(), bytes.begin() + len);
    const std::string text = base64_encode(part);
    EXPECT_EQ(text.size(), (len + 2) / 3 * 4) << "length " << len;
    std::vector<uint8_t> back;
    base64_decode(text, back);
    EXPECT_EQ(back, part) << "length " << len;
  }
}

TEST(Base64, WritesNoLineBreaksForLongInput) {
  const std::string text = base64_encode(std::string(1000, 'x'));
  EXPECT_EQ(text.size(), 1336u);
  EXPECT_EQ(text.find('\n'), std::string::npos);
  EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST(Base64, EncodesZeroBytesAsData) {
  EXPECT_EQ(base64_encode(std::string("\0\0\0", 3)), "AAAA");
  EXPECT_EQ(base64_decode(std::string("AAAA")), std::string("\0\0\0", 3));
}

TEST(Base64, OffersTheSameEncodingForPointerVectorAndString) {
  const std::string s = "DbShadowLink";
  const std::vector<uint8_t> v(s.begin(), s.end());
  const std::string expected = "RGJTaGFkb3dMaW5r";
  EXPECT_EQ(base64_encode(s), expected);
  EXPECT_EQ(base64_encode(v), expected);
  EXPECT_EQ(base64_encode(v.data(), v.size()), expected);
}

TEST(Base64, StopsDecodingAtALineFeedAndKeepsWhatCameBefore) {
  EXPECT_EQ(base64_decode(std::string("Zm9v\nYmFy")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9vYg\n==")), "foob");
  std::vector<uint8_t> bytes;
  base64_decode("QUJD\r\nREVG", bytes);
  EXPECT_EQ(bytes, (std::vector<uint8_t>{'A', 'B', 'C'}));
}

TEST(Base64, StopsDecodingAtTheFirstPaddingWhateverFollows) {
  EXPECT_EQ(base64_decode(std::string("QQ==QUJD")), "A");
  EXPECT_EQ(base64_decode(std::string("QUI=QUJD")), "AB");
  EXPECT_EQ(base64_decode(std::string("=QUJD")), "");
}

TEST(Base64, StopsDecodingAtACharacterOutsideTheAlphabet) {
  EXPECT_EQ(base64_decode(std::string("Zm9v-YmFy")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9v_YmFy")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9v YmFy")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9v\xC3\xA4YmFy")), "foo");
  EXPECT_EQ(base64_decode(std::string("Zm9v\0YmFy", 9)), "foo");
}

TEST(Base64, DecodesALastGroupWithoutPadding) {
  EXPECT_EQ(base64_decode(std::string("Zm8")), "fo");
  EXPECT_EQ(base64_decode(std::string("Zg")), "f");
  EXPECT_EQ(base64_decode(std::string("Zm9vYg")), "foob");
}

TEST(Base64, DecodesALoneLastCharacterToNothing) {
  EXPECT_EQ(base64_decode(std::string("Z")), "");
  EXPECT_EQ(base64_decode(std::string("Zm9vY")), "foo");
}

TEST(Base64, DecodesIntoAVector) {
  std::vector<uint8_t> bytes;
  base64_decode("AP8QIA==", bytes);
  EXPECT_EQ(bytes, (std::vector<uint8_t>{0x00, 0xFF, 0x10, 0x20}));
}

}  // namespace
