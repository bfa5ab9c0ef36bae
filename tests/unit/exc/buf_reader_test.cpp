// The binary form's primitives: byte_writer_t appends little-endian values and grows its
// buffer in 1 MiB steps; CBufReader reads them back and names what went wrong.
#include "common/exc/buf_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>

#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::plain;
using dsl_test::thrown;
using dsl_test::trace;
using exc::byte_buffer_t;
using exc::byte_writer_t;
using exc::CBufReader;

constexpr size_t kMiB = 1048576;

std::shared_ptr<const byte_buffer_t> bytes(std::initializer_list<uint8_t> list) {
  return std::make_shared<const byte_buffer_t>(list);
}

void put_u32(byte_buffer_t& b, uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void put_text(byte_buffer_t& b, const std::string& s) {
  put_u32(b, static_cast<uint32_t>(s.size()));
  b.insert(b.end(), s.begin(), s.end());
}

// ---- byte_writer_t -------------------------------------------------------------------------

TEST(ByteWriter, WritesAU32InLittleEndianOrder) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  writer.write_u32(0x04030201u);
  EXPECT_EQ(writer.position(), 4u);
  ASSERT_GE(buffer->size(), 4u);
  EXPECT_EQ((*buffer)[0], 0x01);
  EXPECT_EQ((*buffer)[1], 0x02);
  EXPECT_EQ((*buffer)[2], 0x03);
  EXPECT_EQ((*buffer)[3], 0x04);
}

TEST(ByteWriter, WritesABooleanAsOneByteZeroOrOne) {
  auto buffer = std::make_shared<byte_buffer_t>(8, 0xAA);
  byte_writer_t writer(buffer);
  writer.write_bool(true);
  writer.write_bool(false);
  EXPECT_EQ(writer.position(), 2u);
  EXPECT_EQ((*buffer)[0], 1);
  EXPECT_EQ((*buffer)[1], 0);
  EXPECT_EQ((*buffer)[2], 0xAA);
}

TEST(ByteWriter, WritesAStringAsItsLengthAndItsBytesWithoutTerminator) {
  auto buffer = std::make_shared<byte_buffer_t>(16, 0xEE);
  byte_writer_t writer(buffer);
  writer.write_string("abc");
  EXPECT_EQ(writer.position(), 7u);
  const byte_buffer_t expected = {3, 0, 0, 0, 'a', 'b', 'c', 0xEE};
  EXPECT_EQ(byte_buffer_t(buffer->begin(), buffer->begin() + 8), expected);
}

TEST(ByteWriter, WritesAnEmptyStringAsAZeroLength) {
  auto buffer = std::make_shared<byte_buffer_t>(8, 0xEE);
  byte_writer_t writer(buffer);
  writer.write_string("");
  EXPECT_EQ(writer.position(), 4u);
  const byte_buffer_t expected = {0, 0, 0, 0, 0xEE};
  EXPECT_EQ(byte_buffer_t(buffer->begin(), buffer->begin() + 5), expected);
}

TEST(ByteWriter, WritesRawBytesAsTheyAre) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  const uint8_t raw[] = {0, 1, 0xFF, 0};
  writer.write_bytes(raw, sizeof raw);
  EXPECT_EQ(writer.position(), 4u);
  ASSERT_GE(buffer->size(), 4u);
  EXPECT_EQ(0, std::memcmp(buffer->data(), raw, sizeof raw));
}

TEST(ByteWriter, StartsAtTheGivenPositionAndLeavesWhatStandsBefore) {
  auto buffer = std::make_shared<byte_buffer_t>(8, 0x11);
  byte_writer_t writer(buffer, 4);
  writer.write_u32(0xA0B0C0D0u);
  EXPECT_EQ(writer.position(), 8u);
  const byte_buffer_t expected = {0x11, 0x11, 0x11, 0x11, 0xD0, 0xC0, 0xB0, 0xA0};
  EXPECT_EQ(*buffer, expected);
}

TEST(ByteWriter, SharesItsBufferWithTheCaller) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  EXPECT_EQ(writer.buffer().get(), buffer.get());
  writer.write_u32(1);
  EXPECT_EQ(writer.buffer().get(), buffer.get());
}

TEST(ByteWriter, GrowsAnEmptyBufferToOneMebibyte) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  writer.write_u32(7);
  EXPECT_EQ(buffer->size(), kMiB);
}

TEST(ByteWriter, DoesNotGrowWhileTheWriteFitsInTheBuffer) {
  auto buffer = std::make_shared<byte_buffer_t>(100, 0);
  byte_writer_t writer(buffer, 96);
  writer.write_u32(7);
  EXPECT_EQ(buffer->size(), 100u);
}

TEST(ByteWriter, GrowsASmallBufferToTheNextMebibyteWhenAWritePassesItsEnd) {
  auto buffer = std::make_shared<byte_buffer_t>(100, 0);
  byte_writer_t writer(buffer, 98);
  writer.write_u32(7);
  EXPECT_EQ(buffer->size(), kMiB);
}

TEST(ByteWriter, RoundsTheNeededSizeUpToTheNextMultipleOfOneMebibyte) {
  auto buffer = std::make_shared<byte_buffer_t>(kMiB, 0);
  byte_writer_t writer(buffer, kMiB - 2);
  writer.write_u32(0x01020304u);
  EXPECT_EQ(buffer->size(), 2 * kMiB);
  EXPECT_EQ((*buffer)[kMiB - 2], 0x04);
  EXPECT_EQ((*buffer)[kMiB + 1], 0x01);
}

TEST(ByteWriter, KeepsANeededSizeThatIsAlreadyAMultipleOfOneMebibyte) {
  auto buffer = std::make_shared<byte_buffer_t>(kMiB, 0);
  byte_writer_t writer(buffer, kMiB);
  const std::vector<uint8_t> block(kMiB, 0x5A);
  writer.write_bytes(block.data(), block.size());
  EXPECT_EQ(buffer->size(), 2 * kMiB);
  EXPECT_EQ(writer.position(), 2 * kMiB);
}

TEST(ByteWriter, GrowsByAsManyMebibytesAsOneLargeWriteNeeds) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  writer.write_string(std::string(2 * kMiB, 'x'));  // 4 bytes of length pass 2 MiB
  EXPECT_EQ(buffer->size(), 3 * kMiB);
  EXPECT_EQ(writer.position(), 2 * kMiB + 4);
}

TEST(ByteWriter, KeepsTheExistingContentWhenItGrows) {
  auto buffer = std::make_shared<byte_buffer_t>(byte_buffer_t{9, 8, 7});
  byte_writer_t writer(buffer, 3);
  writer.write_u32(0x00000006u);
  ASSERT_EQ(buffer->size(), kMiB);
  const byte_buffer_t expected = {9, 8, 7, 6, 0, 0, 0};
  EXPECT_EQ(byte_buffer_t(buffer->begin(), buffer->begin() + 7), expected);
}

TEST(ByteWriter, LeavesABufferOfAnOddSizeAsItIsWhenTheWriteFits) {
  auto buffer = std::make_shared<byte_buffer_t>(3 * kMiB + 5, 0);
  byte_writer_t writer(buffer, 3 * kMiB);
  writer.write_u32(1);
  writer.write_bool(true);
  EXPECT_EQ(buffer->size(), 3 * kMiB + 5);
}

// ---- CBufReader ----------------------------------------------------------------------------

TEST(BufReader, ReadsBackWhatTheWriterWrote) {
  auto buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(buffer);
  writer.write_u32(0xDEADBEEFu);
  writer.write_bool(true);
  writer.write_string("hello");
  writer.write_bool(false);
  writer.write_string("");

  CBufReader reader(1024, buffer);
  EXPECT_EQ(reader.read_u32(), 0xDEADBEEFu);
  EXPECT_TRUE(reader.read_bool());
  EXPECT_EQ(reader.read_string(), "hello");
  EXPECT_FALSE(reader.read_bool());
  EXPECT_EQ(reader.read_string(), "");
  EXPECT_EQ(reader.position(), writer.position());
}

TEST(BufReader, ReadsAU32InLittleEndianOrder) {
  CBufReader reader(16, bytes({0x78, 0x56, 0x34, 0x12}));
  EXPECT_EQ(reader.read_u32(), 0x12345678u);
  EXPECT_EQ(reader.position(), 4u);
}

TEST(BufReader, StartsAtTheGivenPosition) {
  CBufReader reader(16, bytes({0xFF, 0xFF, 5, 0, 0, 0}), 2);
  EXPECT_EQ(reader.position(), 2u);
  EXPECT_EQ(reader.read_u32(), 5u);
}

TEST(BufReader, ReadsFromABufferSetLater) {
  CBufReader reader(16);
  reader.set_buffer(bytes({0, 1, 0, 0, 0}), 1);
  EXPECT_EQ(reader.read_u32(), 1u);
  EXPECT_EQ(reader.position(), 5u);
}

TEST(BufReader, ReadsAStringAsLongAsItsMaximum) {
  auto buffer = std::make_shared<byte_buffer_t>();
  put_text(*buffer, "0123456789");
  CBufReader reader(10, buffer);
  EXPECT_EQ(reader.read_string(), "0123456789");
}

TEST(BufReader, ReadsAnEmptyStringEvenWithAMaximumOfZero) {
  CBufReader reader(0, bytes({0, 0, 0, 0}));
  EXPECT_EQ(reader.read_string(), "");
  EXPECT_EQ(reader.position(), 4u);
}

TEST(BufReader, CutsAStringAtAnEmbeddedZeroAndGoesOnBehindAllItsBytes) {
  auto buffer = std::make_shared<byte_buffer_t>();
  put_text(*buffer, std::string("ab\0cd", 5));
  put_u32(*buffer, 7);
  CBufReader reader(64, buffer);
  EXPECT_EQ(reader.read_string(), "ab");
  EXPECT_EQ(reader.position(), 9u);
  EXPECT_EQ(reader.read_u32(), 7u);
}

TEST(BufReader, WithoutABufferFailsToReadAnInteger) {
  CBufReader reader(16);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_u32(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("CBufReader buffer not initialized."),
      trace("Failed to extract integer value from buffer.")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(),
               "CBufReader buffer not initialized.\n"
               "--tr:Failed to extract integer value from buffer.");
}

TEST(BufReader, WithoutABufferFailsToReadABoolean) {
  CBufReader reader(16);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_bool(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("CBufReader buffer not initialized."),
      trace("Failed to extract boolean value from buffer.")};
  EXPECT_EQ(lines_of(*e), expected);
}

TEST(BufReader, WithoutABufferFailsToReadAString) {
  CBufReader reader(16);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_string(); });
  ASSERT_TRUE(e);
  ASSERT_GE(e->messages().size(), 2u);
  EXPECT_EQ(lines_of(*e).front(), plain("CBufReader buffer not initialized."));
  EXPECT_EQ(lines_of(*e).back(), trace("Failed to extract multi-byte string from buffer ."));
}

TEST(BufReader, RejectsAnIntegerThatPassesTheBufferEnd) {
  CBufReader reader(16, bytes({1, 2, 3}));
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_u32(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("Out of the buffer, buffer size '3', struct size '4', buffer pointer '0'."),
      trace("Failed to extract integer value from buffer.")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_EQ(e->code(), 0u);
}

TEST(BufReader, NamesTheReadPositionWhenAnIntegerPassesTheEnd) {
  CBufReader reader(16, bytes({1, 2, 3, 4, 5, 6}), 3);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_u32(); });
  ASSERT_TRUE(e);
  ASSERT_FALSE(e->messages().empty());
  EXPECT_EQ(e->messages()[0].text,
            "Out of the buffer, buffer size '6', struct size '4', buffer pointer '3'.");
}

TEST(BufReader, RejectsABooleanBehindTheLastByte) {
  CBufReader reader(16, bytes({1, 0, 0, 0}));
  EXPECT_EQ(reader.read_u32(), 1u);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_bool(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("Out of the buffer, buffer size '4', struct size '1', buffer pointer '4'."),
      trace("Failed to extract boolean value from buffer.")};
  EXPECT_EQ(lines_of(*e), expected);
}

TEST(BufReader, RejectsAStringWhoseBytesPassTheBufferEnd) {
  auto buffer = std::make_shared<byte_buffer_t>();
  put_u32(*buffer, 5);
  buffer->push_back('a');
  buffer->push_back('b');
  buffer->push_back('c');
  CBufReader reader(64, buffer);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_string(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("Out of the buffer, buffer size '7', struct size '5', buffer pointer '4'."),
      trace("Failed to extract multi-byte string from buffer .")};
  EXPECT_EQ(lines_of(*e), expected);
}

TEST(BufReader, RejectsAStringLengthFieldThatPassesTheBufferEnd) {
  CBufReader reader(64, bytes({5, 0}));
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_string(); });
  ASSERT_TRUE(e);
  ASSERT_GE(e->messages().size(), 2u);
  EXPECT_EQ(lines_of(*e).front(),
            plain("Out of the buffer, buffer size '2', struct size '4', buffer pointer '0'."));
  EXPECT_EQ(lines_of(*e).back(), trace("Failed to extract multi-byte string from buffer ."));
}

TEST(BufReader, RejectsAStringLongerThanItsMaximum) {
  auto buffer = std::make_shared<byte_buffer_t>();
  put_text(*buffer, "01234567890");  // 11 bytes, all present
  CBufReader reader(10, buffer);
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_string(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("Invalid length of the string '11'."),
      trace("Failed to extract multi-byte string from buffer .")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(),
               "Invalid length of the string '11'.\n"
               "--tr:Failed to extract multi-byte string from buffer .");
}

TEST(BufReader, RejectsAHugeLengthFieldBeforeTouchingTheBytes) {
  CBufReader reader(1024, bytes({0xFF, 0xFF, 0xFF, 0xFF, 'x'}));
  auto e = thrown<exc::runtime_exc_t>([&] { reader.read_string(); });
  ASSERT_TRUE(e);
  const std::vector<dsl_test::line_t> expected = {
      plain("Invalid length of the string '4294967295'."),
      trace("Failed to extract multi-byte string from buffer .")};
  EXPECT_EQ(lines_of(*e), expected);
}

}  // namespace
