// Discovery's own registry reading: the value reader with room for 260 characters and the
// subkey listing with room for 255, on the same fixture on both targets.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "discovery_machine.h"

namespace {

using specific::oracle::COracleRegKey;
using specific::oracle::machine_registry_root;

constexpr char16_t kValuesKey[] = u"SOFTWARE\\DbShadowLink Tests\\Discovery Values";

class OracleHomesRegistry : public ::testing::Test {
 protected:
  void SetUp() override {
    machine_ = std::make_unique<dsl_test::reg_machine_t>(
        dsl_test::fixture_path("discovery_value_shapes.reg"));
    root_ = machine_registry_root();
    key_ = root_->open(kValuesKey);
    ASSERT_NE(key_.get(), nullptr);
  }
  void TearDown() override {
    key_.reset();
    machine_.reset();
  }

  std::u16string read(const std::u16string& name) const { return key_->read_string(name); }

  std::unique_ptr<dsl_test::reg_machine_t> machine_;
  std::unique_ptr<COracleRegKey> root_;
  std::unique_ptr<COracleRegKey> key_;
};

TEST_F(OracleHomesRegistry, AStringValueIsReadUpToItsTerminator) {
  EXPECT_EQ(read(u"Plain"), u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1");
  EXPECT_EQ(read(u"EmbeddedNul"), u"A");
}

TEST_F(OracleHomesRegistry, ValueNamesAreNotCaseSensitive) {
  EXPECT_EQ(read(u"PLAIN"), u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1");
}

TEST_F(OracleHomesRegistry, ExpandableTextIsTakenAsStored) {
  EXPECT_EQ(read(u"Expand"), u"%ORACLE_BASE%\\product");
}

TEST_F(OracleHomesRegistry, TwoHundredFiftyNineCharactersFitAndTwoHundredSixtyDoNot) {
  EXPECT_EQ(read(u"Chars259"), std::u16string(259, u'v'));
  EXPECT_EQ(read(u"Chars260"), u"");
}

TEST_F(OracleHomesRegistry, AValueThatFillsTheBufferWithoutTerminatorIsEmpty) {
  EXPECT_EQ(read(u"Chars260NoTerminator"), u"");
}

TEST_F(OracleHomesRegistry, AValueWithoutTerminatorOrWithAnOddSizeIsEmpty) {
  EXPECT_EQ(read(u"NoTerminator"), u"");
  EXPECT_EQ(read(u"OddLength"), u"");
}

TEST_F(OracleHomesRegistry, EmptyAndZeroLengthValuesAreEmpty) {
  EXPECT_EQ(read(u"Empty"), u"");
  EXPECT_EQ(read(u"ZeroLength"), u"");
}

TEST_F(OracleHomesRegistry, ValuesOfOtherTypesAreEmpty) {
  EXPECT_EQ(read(u"Multi"), u"");
  EXPECT_EQ(read(u"Number"), u"");
  EXPECT_EQ(read(u"Binary"), u"");
}

TEST_F(OracleHomesRegistry, AnAbsentValueIsEmpty) {
  EXPECT_EQ(read(u"NoSuchValue"), u"");
}

TEST_F(OracleHomesRegistry, SubkeysAreListedByNameWithoutRegardToCase) {
  const auto names = root_->open(std::u16string(kValuesKey) + u"\\Names");
  ASSERT_NE(names.get(), nullptr);
  // A name of 254 characters still fits the buffer of 255 with its terminator.
  EXPECT_EQ(names->subkey_names(),
            (std::vector<std::u16string>{u"alpha", u"Beta", std::u16string(254, u'N')}));
}

TEST_F(OracleHomesRegistry, AKeyWithoutSubkeysListsNothing) {
  const auto leaf = root_->open(std::u16string(kValuesKey) + u"\\Names\\Beta");
  ASSERT_NE(leaf.get(), nullptr);
  EXPECT_TRUE(leaf->subkey_names().empty());
}

TEST_F(OracleHomesRegistry, KeysThatDoNotExistDoNotOpen) {
  EXPECT_EQ(root_->open(u"SOFTWARE\\DbShadowLink Tests\\No Such Key").get(), nullptr);
  EXPECT_EQ(key_->open(u"NoSuchChild").get(), nullptr);
  EXPECT_NE(key_->open(u"NAMES\\beta").get(), nullptr);
}

TEST_F(OracleHomesRegistry, TheRootIsOnlyOpenedFrom) {
  EXPECT_THROW(root_->subkey_names(), exc::runtime_exc_t);
  EXPECT_THROW(root_->read_string(u"Plain"), exc::runtime_exc_t);
}

TEST(OracleHomesRegistryListing, AFailedCountIsReportedWithItsCode) {
  // A handle that was never given out: the count is refused with ERROR_INVALID_HANDLE.
  const auto bogus = reinterpret_cast<win::reg_handle_t>(static_cast<uintptr_t>(0x7ffff0));
  try {
    specific::oracle::list_oracle_subkeys(bogus);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorInvalidHandle);
    EXPECT_EQ(dsl_test::chain_after_system_text(e),
              (std::vector<std::string>{"Failed to query info from oracle reg key",
                                        "--tr:Error code: 0x00000006"}));
  }
}

}  // namespace
