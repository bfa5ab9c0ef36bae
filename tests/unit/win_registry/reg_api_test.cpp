// The registry calls in their Win32 shape, on both targets: the codes and sizes the readers
// build on. The host build's answers must be the ones the system gives.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/text/convert.h"
#include "common/win/reg_api.h"
#include "support/reg_machine.h"

namespace {

namespace api = win::reg_api;

constexpr char16_t kSettings[] = u"SOFTWARE\\DbShadowLink Tests\\Values Machine\\Settings";
constexpr char16_t kSorted[] = u"SOFTWARE\\DbShadowLink Tests\\Values Machine\\Sorted";

class RegApiOnValuesMachine : public ::testing::Test {
 protected:
  void TearDown() override {
    for (auto key : opened_) api::close_key(key);
  }
  win::reg_handle_t open(const std::u16string& path, uint32_t access = win::kKeyRead64) {
    win::reg_handle_t key = nullptr;
    EXPECT_EQ(api::open_key(nullptr, path, access, key), win::kErrorSuccess);
    if (key != nullptr) opened_.push_back(key);
    return key;
  }

  dsl_test::reg_machine_t machine_{dsl_test::fixture_path("registry_values_machine.reg")};
  std::vector<win::reg_handle_t> opened_;
};

TEST_F(RegApiOnValuesMachine, OpenKeyRefusesAPathThatBeginsWithABackslash) {
  win::reg_handle_t key = nullptr;
  EXPECT_EQ(api::open_key(nullptr, u"\\SOFTWARE", win::kKeyRead, key), win::kErrorBadPathname);
  EXPECT_EQ(key, nullptr);
}

TEST_F(RegApiOnValuesMachine, OpenKeyPassesOverDoubledAndTrailingBackslashes) {
  EXPECT_NE(open(u"SOFTWARE\\\\DbShadowLink Tests\\Values Machine\\Settings\\"), nullptr);
}

TEST_F(RegApiOnValuesMachine, OpenKeyOfAMissingKeyLeavesTheHandleAlone) {
  win::reg_handle_t key = reinterpret_cast<win::reg_handle_t>(0x1234);
  EXPECT_EQ(api::open_key(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Absent", win::kKeyRead, key),
            win::kErrorFileNotFound);
  EXPECT_EQ(key, reinterpret_cast<win::reg_handle_t>(0x1234));
}

TEST_F(RegApiOnValuesMachine, OpenKeyWithAnEmptyPathOpensTheSameKeyAgain) {
  const auto settings = open(kSettings);
  win::reg_handle_t again = nullptr;
  ASSERT_EQ(api::open_key(settings, u"", win::kKeyRead, again), win::kErrorSuccess);
  opened_.push_back(again);
  uint32_t size = 0;
  EXPECT_EQ(api::query_value_w(again, u"Text", nullptr, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 22u);
}

TEST_F(RegApiOnValuesMachine, QueryValueWithoutABufferGivesTypeAndSizeWithTerminator) {
  const auto key = open(kSettings);
  uint32_t type = 0;
  uint32_t size = 0;
  ASSERT_EQ(api::query_value_w(key, u"Text", &type, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(type, win::kRegSz);
  EXPECT_EQ(size, 22u);  // "plain text" and its terminator, two bytes a character
  ASSERT_EQ(api::query_value_w(key, u"ZeroLength", &type, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 0u);
  ASSERT_EQ(api::query_value_w(key, u"OddLength", &type, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 5u);
}

TEST_F(RegApiOnValuesMachine, QueryValueIntoASmallBufferGivesMoreDataAndTheSizeNeeded) {
  const auto key = open(kSettings);
  uint8_t data[4] = {};
  uint32_t type = 0;
  uint32_t size = sizeof(data);
  EXPECT_EQ(api::query_value_w(key, u"Text", &type, data, &size), win::kErrorMoreData);
  EXPECT_EQ(size, 22u);
  EXPECT_EQ(type, win::kRegSz);
}

TEST_F(RegApiOnValuesMachine, QueryValueOfAMissingValueGivesFileNotFound) {
  const auto key = open(kSettings);
  uint32_t size = 0;
  EXPECT_EQ(api::query_value_w(key, u"Missing", nullptr, nullptr, &size), win::kErrorFileNotFound);
  EXPECT_EQ(api::query_value_a(key, "Missing", nullptr, nullptr, &size), win::kErrorFileNotFound);
}

TEST_F(RegApiOnValuesMachine, QueryValueAConvertsTextKeepingNulsAndAMissingTerminator) {
  const auto key = open(kSettings);
  uint32_t size = 0;
  ASSERT_EQ(api::query_value_a(key, "Text", nullptr, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 11u);
  ASSERT_EQ(api::query_value_a(key, "NoTerminator", nullptr, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 2u);
  ASSERT_EQ(api::query_value_a(key, "OddLength", nullptr, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, 2u);
  char data[8];
  std::memset(data, 0x55, sizeof(data));
  size = sizeof(data);
  ASSERT_EQ(
      api::query_value_a(key, "EmbeddedNul", nullptr, reinterpret_cast<uint8_t*>(data), &size),
      win::kErrorSuccess);
  EXPECT_EQ(std::string(data, size), std::string("A\0B\0", 4));
  const std::string unicode =
      util::to_multibyte(u"Gr\u00fc\u00dfe, \u03a9mega, \u0416\u0443\u043a");
  ASSERT_EQ(api::query_value_a(key, "Unicode", nullptr, nullptr, &size), win::kErrorSuccess);
  EXPECT_EQ(size, unicode.size() + 1);
}

TEST_F(RegApiOnValuesMachine, QueryValueAGivesOtherTypesAsStored) {
  const auto key = open(kSettings);
  uint8_t data[16] = {};
  uint32_t type = 0;
  uint32_t size = sizeof(data);
  ASSERT_EQ(api::query_value_a(key, "Binary", &type, data, &size), win::kErrorSuccess);
  EXPECT_EQ(type, win::kRegBinary);
  EXPECT_EQ(std::vector<uint8_t>(data, data + size), (std::vector<uint8_t>{1, 2, 3}));
  size = sizeof(data);
  ASSERT_EQ(api::query_value_a(key, "Number", &type, data, &size), win::kErrorSuccess);
  EXPECT_EQ(type, win::kRegDword);
  EXPECT_EQ(std::vector<uint8_t>(data, data + size), (std::vector<uint8_t>{42, 0, 0, 0}));
}

TEST_F(RegApiOnValuesMachine, QueryValueNeedsTheRightToQueryValues) {
  const auto key = open(kSettings, win::kKeyEnumerateSubKeys);
  uint32_t size = 0;
  EXPECT_EQ(api::query_value_w(key, u"Text", nullptr, nullptr, &size), win::kErrorAccessDenied);
}

TEST_F(RegApiOnValuesMachine, EnumKeyListsByIndexAndEndsWithNoMoreItems) {
  const auto key = open(kSorted);
  uint32_t count = 0;
  ASSERT_EQ(api::query_subkey_count(key, count), win::kErrorSuccess);
  EXPECT_EQ(count, 10u);
  char16_t name[256];
  uint32_t length = 256;
  ASSERT_EQ(api::enum_key(key, 1, name, length), win::kErrorSuccess);
  EXPECT_EQ(std::u16string(name, length), u"Alpha");
  EXPECT_EQ(name[length], u'\0');
  length = 256;
  EXPECT_EQ(api::enum_key(key, count, name, length), win::kErrorNoMoreItems);
}

TEST_F(RegApiOnValuesMachine, EnumKeyOfANameThatDoesNotFitGivesMoreData) {
  const auto key = open(kSorted);
  char16_t name[6];
  uint32_t length = 6;  // "_under" needs seven with its terminator
  EXPECT_EQ(api::enum_key(key, 0, name, length), win::kErrorMoreData);
  length = 7;
  char16_t fits[7];
  ASSERT_EQ(api::enum_key(key, 0, fits, length), win::kErrorSuccess);
  EXPECT_EQ(length, 6u);
}

TEST_F(RegApiOnValuesMachine, EnumKeyNeedsTheRightToEnumerate) {
  const auto key = open(kSorted, win::kKeyQueryValue);
  char16_t name[256];
  uint32_t length = 256;
  EXPECT_EQ(api::enum_key(key, 0, name, length), win::kErrorAccessDenied);
}

}  // namespace
