// win_reg_key_t and open_subkey against the machines of the fixtures, on both targets: the host
// build reads them from its store, Windows from the real registry they were written into.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"
#include "common/text/convert.h"
#include "common/win/reg_api.h"
#include "common/win/reg_key.h"
#include "support/reg_machine.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::plain;
using dsl_test::thrown;
using dsl_test::trace;

constexpr char16_t kMachine[] = u"SOFTWARE\\DbShadowLink Tests\\Values Machine";
constexpr char16_t kSettings[] = u"SOFTWARE\\DbShadowLink Tests\\Values Machine\\Settings";

std::string context_for(const std::string& name) {
  return "Cannot retrieve a registry value. Value name: [" + name + "].";
}

class RegKeyOnValuesMachine : public ::testing::Test {
 protected:
  win::win_reg_key_ptr_t open(const std::u16string& path, uint32_t access = win::kKeyRead64) {
    auto key = win::open_subkey(nullptr, path, access);
    EXPECT_TRUE(key) << util::to_utf8(path);
    return key;
  }
  win::win_reg_key_ptr_t settings() { return open(kSettings); }

  dsl_test::reg_machine_t machine_{dsl_test::fixture_path("registry_values_machine.reg")};
};

// Opening ------------------------------------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, OpenSubkeyOfAMissingKeyGivesAnEmptyPointerAndNoException) {
  win::win_reg_key_ptr_t key;
  EXPECT_NO_THROW(key = win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\No Such Key"));
  EXPECT_FALSE(key);
  EXPECT_NO_THROW(key = win::open_subkey(nullptr, u"SOFTWARE\\No Such\\Deeper\\Key"));
  EXPECT_FALSE(key);
}

TEST_F(RegKeyOnValuesMachine, OpenSubkeyRefusedThrowsWithTheTextThePathAndTheCode) {
  machine_.make_read_only(kSettings);
  const auto e = thrown<exc::win_sys_exc_t>(
      [&] { (void)win::open_subkey(nullptr, kSettings, win::kKeyRead | win::kKeySetValue); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorAccessDenied);
  EXPECT_EQ(lines_of(*e),
            (std::vector<dsl_test::line_t>{
                plain(exc::system_error_text(5)),
                plain("Failed to open subkey. Path: [SOFTWARE\\DbShadowLink Tests\\Values "
                      "Machine\\Settings]."),
                trace("Error code: 0x00000005")}));
}

TEST_F(RegKeyOnValuesMachine, OpenSubkeyReadsBelowAnOpenKey) {
  const auto machine = open(kMachine);
  ASSERT_TRUE(machine);
  const auto settings = win::open_subkey(*machine, u"Settings");
  ASSERT_TRUE(settings);
  std::u16string text;
  ASSERT_TRUE(settings->query_string(u"Text", text));
  EXPECT_EQ(text, u"plain text");
  EXPECT_FALSE(win::open_subkey(*machine, u"Nothing"));
}

TEST_F(RegKeyOnValuesMachine, OpenSubkeyBelowAKeyThatIsNotOpenFailsRatherThanReadTheRoot) {
  const win::win_reg_key_t closed;
  const auto e = thrown<exc::runtime_exc_t>([&] { (void)win::open_subkey(closed, u"SOFTWARE"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()), "Registry key object is not initialized.");
}

TEST_F(RegKeyOnValuesMachine, KeyAndValueNamesCompareWithoutRegardToCase) {
  const auto key = open(u"software\\DBSHADOWLINK TESTS\\values machine\\SETTINGS");
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"tExT", text));
  EXPECT_EQ(text, u"plain text");
  uint32_t number = 0;
  ASSERT_TRUE(key->query_dword("NUMBER", number));
  EXPECT_EQ(number, 42u);
  EXPECT_TRUE(open(std::u16string(kMachine) + u"\\Sorted\\\u00c4PFEL"));
  EXPECT_TRUE(open(std::u16string(kMachine) + u"\\Sorted\\\u0416UK"));
  EXPECT_TRUE(open(std::u16string(kMachine) + u"\\Sorted\\\u0436A"));
}

// Text ---------------------------------------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, QueryStringReadsATextAndTheDefaultValue) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"Text", text));
  EXPECT_EQ(text, u"plain text");
  ASSERT_TRUE(key->query_string(u"", text));
  EXPECT_EQ(text, u"the default value");
  ASSERT_TRUE(key->query_string(u"Escaped", text));
  EXPECT_EQ(text, u"C:\\app\\\"quoted\"");
  ASSERT_TRUE(key->query_string(u"Unicode", text));
  EXPECT_EQ(text, u"Gr\u00fc\u00dfe, \u03a9mega, \u0416\u0443\u043a");
}

TEST_F(RegKeyOnValuesMachine, QueryStringGivesAnExpandableTextAsStoredWithoutExpandingIt) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"Expand", text));
  EXPECT_EQ(text, u"%SystemRoot%\\ora");
  ASSERT_TRUE(key->query_string(u"LongExpand", text));
  std::u16string expected = u"%ProgramFiles%\\DbShadowLink\\";
  for (int i = 0; i < 12; ++i) expected += u"segment\\";
  EXPECT_EQ(text, expected + u"end");
}

TEST_F(RegKeyOnValuesMachine, QueryStringOfAnEmptyOrZeroLengthValueGivesAnEmptyText) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text = u"before";
  ASSERT_TRUE(key->query_string(u"Empty", text));
  EXPECT_EQ(text, u"");
  text = u"before";
  ASSERT_TRUE(key->query_string(u"ZeroLength", text));
  EXPECT_EQ(text, u"");
}

TEST_F(RegKeyOnValuesMachine, QueryStringEndsAValueStoredWithoutItsTerminator) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"NoTerminator", text));
  EXPECT_EQ(text, u"AB");
}

TEST_F(RegKeyOnValuesMachine, QueryStringLeavesOutTheHalfCharacterOfAnOddLength) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"OddLength", text));
  EXPECT_EQ(text, u"AB");
}

TEST_F(RegKeyOnValuesMachine, QueryStringStopsAtTheFirstTerminator) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text;
  ASSERT_TRUE(key->query_string(u"EmbeddedNul", text));
  EXPECT_EQ(text, u"A");
}

TEST_F(RegKeyOnValuesMachine, QueryStringOfAMissingValueIsFalseAndLeavesTheTextAlone) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::u16string text = u"untouched";
  EXPECT_FALSE(key->query_string(u"Missing", text));
  EXPECT_EQ(text, u"untouched");
}

TEST_F(RegKeyOnValuesMachine, QueryStringOfAnotherTypeThrowsUnexpectedTypeNamingTheValue) {
  const auto key = settings();
  ASSERT_TRUE(key);
  const struct {
    const char16_t* name;
    const char* narrow;
    const char* type;
  } cases[] = {{u"Number", "Number", "4"},
               {u"Binary", "Binary", "3"},
               {u"Multi", "Multi", "7"},
               {u"Qword", "Qword", "11"}};
  for (const auto& c : cases) {
    std::u16string text = u"untouched";
    const auto e = thrown<exc::runtime_exc_t>([&] { (void)key->query_string(c.name, text); });
    ASSERT_TRUE(e) << c.narrow;
    EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{
                                plain(std::string("Unexpected registry type: [") + c.type + "]."),
                                plain(context_for(c.narrow))}));
    EXPECT_EQ(text, u"untouched");
  }
}

TEST_F(RegKeyOnValuesMachine, GetStringReadsNarrowTextInTheSystemCodePage) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::string text;
  key->get_string("Text", text);
  EXPECT_EQ(text, "plain text");
  key->get_string("Expand", text);
  EXPECT_EQ(text, "%SystemRoot%\\ora");
  key->get_string("Unicode", text);
  EXPECT_EQ(text, util::to_multibyte(u"Gr\u00fc\u00dfe, \u03a9mega, \u0416\u0443\u043a"));
  key->get_string("NoTerminator", text);
  EXPECT_EQ(text, "AB");
  key->get_string("EmbeddedNul", text);
  EXPECT_EQ(text, "A");
  key->get_string("ZeroLength", text);
  EXPECT_EQ(text, "");
  key->get_string("", text);
  EXPECT_EQ(text, "the default value");
}

TEST_F(RegKeyOnValuesMachine, GetStringOfAMissingValueThrowsTheSystemErrorNamingTheValue) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::string text = "untouched";
  const auto e = thrown<exc::win_sys_exc_t>([&] { key->get_string("Missing", text); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorFileNotFound);
  EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{plain(exc::system_error_text(2)),
                                                         trace("Error code: 0x00000002"),
                                                         plain(context_for("Missing"))}));
  EXPECT_EQ(text, "untouched");
}

TEST_F(RegKeyOnValuesMachine, GetStringOfADwordThrowsUnexpectedType) {
  const auto key = settings();
  ASSERT_TRUE(key);
  std::string text;
  const auto e = thrown<exc::runtime_exc_t>([&] { key->get_string("Number", text); });
  ASSERT_TRUE(e);
  EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{plain("Unexpected registry type: [4]."),
                                                         plain(context_for("Number"))}));
}

// Numbers ------------------------------------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, QueryDwordReadsTheNumber) {
  const auto key = settings();
  ASSERT_TRUE(key);
  uint32_t number = 1;
  ASSERT_TRUE(key->query_dword("Number", number));
  EXPECT_EQ(number, 42u);
  ASSERT_TRUE(key->query_dword("Zero", number));
  EXPECT_EQ(number, 0u);
  ASSERT_TRUE(key->query_dword("Max", number));
  EXPECT_EQ(number, 0xFFFFFFFFu);
  ASSERT_TRUE(key->query_dword("Spaced", number));
  EXPECT_EQ(number, 7u);
}

TEST_F(RegKeyOnValuesMachine, QueryDwordOfAMissingValueIsFalseAndLeavesTheNumberAlone) {
  const auto key = settings();
  ASSERT_TRUE(key);
  uint32_t number = 99;
  EXPECT_FALSE(key->query_dword("Missing", number));
  EXPECT_EQ(number, 99u);
}

TEST_F(RegKeyOnValuesMachine, QueryDwordOfATextThrowsUnexpectedTypeNamingTheValue) {
  const auto key = settings();
  ASSERT_TRUE(key);
  uint32_t number = 99;
  const auto e =
      thrown<exc::runtime_exc_t>([&] { (void)key->query_dword("NumberAsText", number); });
  ASSERT_TRUE(e);
  EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{plain("Unexpected registry type: [1]."),
                                                         plain(context_for("NumberAsText"))}));
  EXPECT_EQ(number, 99u);
  const auto q = thrown<exc::runtime_exc_t>([&] { (void)key->query_dword("Qword", number); });
  ASSERT_TRUE(q);
  EXPECT_EQ(q->messages().front().text, "Unexpected registry type: [11].");
}

TEST_F(RegKeyOnValuesMachine, QueryDwordReadsAShortValueZeroExtended) {
  const auto key = settings();
  ASSERT_TRUE(key);
  uint32_t number = 0;
  ASSERT_TRUE(key->query_dword("ShortDword", number));
  EXPECT_EQ(number, 0x0107u);
}

TEST_F(RegKeyOnValuesMachine, QueryDwordOfAValueLongerThanFourBytesFailsWithMoreData) {
  const auto key = settings();
  ASSERT_TRUE(key);
  uint32_t number = 99;
  const auto e = thrown<exc::win_sys_exc_t>([&] { (void)key->query_dword("LongDword", number); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorMoreData);
  EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{plain(exc::system_error_text(234)),
                                                         trace("Error code: 0x000000ea"),
                                                         plain(context_for("LongDword"))}));
  EXPECT_EQ(number, 99u);
}

TEST_F(RegKeyOnValuesMachine, GetDwordReadsTheNumber) {
  const auto key = settings();
  ASSERT_TRUE(key);
  EXPECT_EQ(key->get_dword("Number"), 42u);
  EXPECT_EQ(key->get_dword("number"), 42u);
}

TEST_F(RegKeyOnValuesMachine, GetDwordOfAMissingValueThrowsWithTheContextLineNamingIt) {
  const auto key = settings();
  ASSERT_TRUE(key);
  const auto e =
      thrown<exc::win_sys_exc_t>([&] { (void)key->get_dword("OracleConnectionTimeout"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorFileNotFound);
  EXPECT_EQ(e->messages().back().text, context_for("OracleConnectionTimeout"));
  EXPECT_FALSE(e->messages().back().is_trace);
}

// Forms with a default -----------------------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, ValueOrGivesTheValueWhenPresentAndTheDefaultWhenAbsent) {
  const auto key = settings();
  ASSERT_TRUE(key);
  EXPECT_EQ(key->value_or(u"Text", u"default"), u"plain text");
  EXPECT_EQ(key->value_or(u"Missing", u"default"), u"default");
  EXPECT_EQ(key->value_or(u"Expand", u"default"), u"%SystemRoot%\\ora");
  EXPECT_EQ(key->value_or("Number", 300u), 42u);
  EXPECT_EQ(key->value_or("Missing", 300u), 300u);
  EXPECT_EQ(key->value_or("Zero", 300), 0u);
}

TEST_F(RegKeyOnValuesMachine, ValueOrReadsABooleanAsNonZeroAndTwoIsTrue) {
  const auto key = settings();
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->value_or("Two", false));
  EXPECT_TRUE(key->value_or("Number", false));
  EXPECT_FALSE(key->value_or("Zero", true));
  EXPECT_TRUE(key->value_or("Missing", true));
  EXPECT_FALSE(key->value_or("Missing", false));
}

TEST_F(RegKeyOnValuesMachine, ValueOrOfAWrongTypeThrowsUnexpectedTypeRatherThanTheDefault) {
  const auto key = settings();
  ASSERT_TRUE(key);
  const auto text = thrown<exc::runtime_exc_t>([&] { (void)key->value_or(u"Number", u"d"); });
  ASSERT_TRUE(text);
  EXPECT_EQ(text->messages().front().text, "Unexpected registry type: [4].");
  const auto number = thrown<exc::runtime_exc_t>([&] { (void)key->value_or("NumberAsText", 5u); });
  ASSERT_TRUE(number);
  EXPECT_EQ(lines_of(*number),
            (std::vector<dsl_test::line_t>{plain("Unexpected registry type: [1]."),
                                           plain(context_for("NumberAsText"))}));
  const auto flag = thrown<exc::runtime_exc_t>([&] { (void)key->value_or("Binary", true); });
  ASSERT_TRUE(flag);
  EXPECT_EQ(flag->messages().front().text, "Unexpected registry type: [3].");
}

// The owner ----------------------------------------------------------------------------------

TEST(RegKeyOwner, ReadersOfAKeyThatIsNotOpenFailWithNotInitialized) {
  const win::win_reg_key_t key;
  std::u16string wide;
  std::string narrow;
  uint32_t number = 0;
  const std::vector<std::function<void()>> readers = {
      [&] { (void)key.query_string(u"Name", wide); },
      [&] { (void)key.query_dword("Name", number); },
      [&] { key.get_string("Name", narrow); },
      [&] { (void)key.get_dword("Name"); },
      [&] { (void)key.value_or(u"Name", u"d"); },
      [&] { (void)key.value_or("Name", 1u); },
      [&] { (void)key.value_or("Name", true); },
  };
  for (const auto& read : readers) {
    const auto e = thrown<exc::runtime_exc_t>(read);
    ASSERT_TRUE(e);
    EXPECT_EQ(lines_of(*e),
              (std::vector<dsl_test::line_t>{plain("Registry key object is not initialized."),
                                             plain(context_for("Name"))}));
  }
  const auto e = thrown<exc::runtime_exc_t>([&] { (void)key.subkey_names(); });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()), "Registry key object is not initialized.");
}

TEST_F(RegKeyOnValuesMachine, AddressOperatorFillsAnEmptyKeyAndRefusesAnOpenOne) {
  win::win_reg_key_t key;
  ASSERT_EQ(win::reg_api::open_key(nullptr, kSettings, win::kKeyRead64, *&key), 0u);
  ASSERT_TRUE(key.is_open());
  EXPECT_EQ(key.get_dword("Number"), 42u);
  const win::reg_handle_t held = key.handle();
  const auto e = thrown<exc::runtime_exc_t>([&] { (void)&key; });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()),
            "operator& cannot be called because registry key already initialized.");
  EXPECT_EQ(key.handle(), held);
}

TEST_F(RegKeyOnValuesMachine, MovingAKeyHandsOverItsHandle) {
  auto opened = settings();
  ASSERT_TRUE(opened);
  win::win_reg_key_t first(std::move(*opened));
  EXPECT_FALSE(opened->is_open());
  EXPECT_EQ(first.get_dword("Number"), 42u);
  win::win_reg_key_t second;
  second = std::move(first);
  EXPECT_FALSE(first.is_open());
  EXPECT_EQ(second.get_dword("Number"), 42u);
}

// Subkey listing -----------------------------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, SubkeyNamesListInNameOrderWithoutRegardToCaseNotInFileOrder) {
  const auto key = open(std::u16string(kMachine) + u"\\Sorted");
  ASSERT_TRUE(key);
  EXPECT_EQ(key->subkey_names(),
            (std::vector<std::u16string>{u"_under", u"Alpha", u"beta", u"gamma", u"KEY_b", u"KEYa",
                                         u"Zeta", u"\u00e4pfel", u"\u0416a", u"\u0436uk"}));
}

TEST_F(RegKeyOnValuesMachine, SubkeyNamesOfAKeyWithoutSubkeysIsEmpty) {
  const auto key = settings();
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->subkey_names().empty());
}

TEST_F(RegKeyOnValuesMachine, SubkeyNamesWithoutTheRightToEnumerateFailsWithTheCallersText) {
  const auto key = open(std::u16string(kMachine) + u"\\Sorted", win::kKeyQueryValue);
  ASSERT_TRUE(key);
  const auto e = thrown<exc::win_sys_exc_t>(
      [&] { (void)key->subkey_names("Failed to query info", "Failed to enum reg key"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorAccessDenied);
  EXPECT_EQ(lines_of(*e), (std::vector<dsl_test::line_t>{plain(exc::system_error_text(5)),
                                                         plain("Failed to enum reg key"),
                                                         trace("Error code: 0x00000005")}));
}

TEST_F(RegKeyOnValuesMachine, SubkeyNamesFailsOnANameLongerThanItsBuffer) {
  const auto key = open(std::u16string(kMachine) + u"\\Sorted");
  ASSERT_TRUE(key);
  const auto e = thrown<exc::win_sys_exc_t>(
      [&] { (void)key->subkey_names("info", "Failed to enum reg key", /*name_capacity=*/6); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorMoreData);
  EXPECT_EQ(e->messages()[1].text, "Failed to enum reg key");
}

// Deletions and merging in the file ----------------------------------------------------------

TEST_F(RegKeyOnValuesMachine, KeysWrittenInAnotherCaseAreOneKeyWithTheLaterValue) {
  const auto machine = open(kMachine);
  ASSERT_TRUE(machine);
  EXPECT_EQ(machine->subkey_names(),
            (std::vector<std::u16string>{u"Mixed", u"Reborn", u"Settings", u"Sorted"}));
  const auto mixed = win::open_subkey(*machine, u"Mixed");
  ASSERT_TRUE(mixed);
  EXPECT_EQ(mixed->value_or(u"Setting", u"none"), u"second");
  EXPECT_EQ(mixed->value_or(u"Kept", u"none"), u"kept");
}

TEST_F(RegKeyOnValuesMachine, DeletedKeysAndValuesAreAbsent) {
  EXPECT_FALSE(win::open_subkey(nullptr, std::u16string(kMachine) + u"\\Doomed"));
  EXPECT_FALSE(win::open_subkey(nullptr, std::u16string(kMachine) + u"\\Doomed\\Child"));
  const auto reborn = open(std::u16string(kMachine) + u"\\Reborn");
  ASSERT_TRUE(reborn);
  EXPECT_EQ(reborn->value_or(u"New", u"none"), u"after");
  EXPECT_EQ(reborn->value_or(u"Old", u"none"), u"none");
  EXPECT_EQ(reborn->value_or(u"Ignored", u"none"), u"none");
  const auto key = settings();
  ASSERT_TRUE(key);
  EXPECT_EQ(key->value_or(u"Removed", u"none"), u"none");
  EXPECT_EQ(key->value_or(u"Never", u"none"), u"none");
}

// The other encodings ------------------------------------------------------------------------

TEST(RegKeyOnWideMachine, ReadsAUtf16FileWithByteOrderMark) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("registry_wide_machine.reg"));
  const auto key =
      win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Wide Machine\\Settings");
  ASSERT_TRUE(key);
  EXPECT_EQ(key->value_or(u"Unicode", u""), u"Gr\u00fc\u00dfe, \u03a9mega, \u0416\u0443\u043a");
  EXPECT_EQ(key->value_or(u"Expand", u""), u"%TEMP%\\Gr\u00fc\u00dfe");
  EXPECT_EQ(key->value_or(u"Escaped", u""), u"a\\b");
  EXPECT_EQ(key->get_dword("Number"), 16u);
  const auto sorted =
      win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Wide Machine\\Sorted");
  ASSERT_TRUE(sorted);
  EXPECT_EQ(sorted->subkey_names(), (std::vector<std::u16string>{u"A", u"b"}));
}

TEST(RegKeyOnRegedit4Machine, ReadsNarrowHexTextAsText) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("registry_regedit4_machine.reg"));
  const auto key =
      win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Old Machine\\Settings");
  ASSERT_TRUE(key);
  EXPECT_EQ(key->value_or(u"Path", u""), u"C:\\app");
  EXPECT_EQ(key->value_or(u"Expand", u""), u"%TEMP%\\x");
  EXPECT_EQ(key->get_dword("Number"), 16u);
  uint8_t data[16] = {};
  uint32_t type = 0;
  uint32_t size = sizeof(data);
  ASSERT_EQ(win::reg_api::query_value_w(key->handle(), u"Multi", &type, data, &size), 0u);
  EXPECT_EQ(type, win::kRegMultiSz);
  EXPECT_EQ(std::vector<uint8_t>(data, data + size),
            (std::vector<uint8_t>{0x61, 0, 0, 0, 0x62, 0, 0x63, 0, 0, 0, 0, 0}));
}

// A value longer than any buffer ---------------------------------------------------------------

TEST(RegKeyOnLongValueMachine, ReadsAValueLongerThanAnyFixedBufferWhole) {
  const std::string folder = dsl_test::scratch_folder("reg-long-value");
  std::string long_text;
  for (int i = 0; long_text.size() < 100000; ++i) long_text += "part" + std::to_string(i) + ";";
  dsl_test::write_file(folder + "/long.reg",
                       "Windows Registry Editor Version 5.00\n\n"
                       "[HKEY_LOCAL_MACHINE\\SOFTWARE\\DbShadowLink Tests\\Long Value Machine]\n"
                       "\"Long\"=\"" +
                           long_text + "\"\n");
  {
    dsl_test::reg_machine_t machine(folder + "/long.reg");
    const auto key = win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Long Value Machine");
    ASSERT_TRUE(key);
    std::u16string wide;
    ASSERT_TRUE(key->query_string(u"Long", wide));
    EXPECT_EQ(wide.size(), long_text.size());
    EXPECT_EQ(util::to_utf8(wide), long_text);
    std::string narrow;
    key->get_string("Long", narrow);
    EXPECT_EQ(narrow, long_text);
  }
  dsl_test::remove_folder(folder);
}

}  // namespace
