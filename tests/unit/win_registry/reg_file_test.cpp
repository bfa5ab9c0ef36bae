// The .reg reader on its own: every form of the file it accepts, and a clear failure, naming the
// file and the line, for every form it does not.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/reg_api.h"
#include "common/win/reg_file.h"
#include "support/reg_machine.h"
#include "support/thrown.h"

namespace {

using win::reg_file::key_t;
using win::reg_file::root_t;
using win::reg_file::tree_t;
using win::reg_file::value_t;

constexpr char kV5[] = "Windows Registry Editor Version 5.00\n";

tree_t parse(const std::string& text) { return win::reg_file::parse(text, "machine.reg"); }

std::string error_of(const std::string& text) {
  const auto e = dsl_test::thrown<exc::runtime_exc_t>([&] { parse(text); });
  return e ? e->what() : std::string();
}

std::vector<uint8_t> bytes(std::initializer_list<int> list) {
  std::vector<uint8_t> result;
  for (int b : list) result.push_back(static_cast<uint8_t>(b));
  return result;
}

std::vector<uint8_t> utf16z(const std::u16string& text) {
  std::vector<uint8_t> result;
  for (char16_t c : text) {
    result.push_back(static_cast<uint8_t>(c & 0xFF));
    result.push_back(static_cast<uint8_t>(c >> 8));
  }
  result.push_back(0);
  result.push_back(0);
  return result;
}

const value_t& value_at(const tree_t& tree, const std::u16string& path,
                        const std::u16string& name) {
  const key_t* key = tree.find(root_t::local_machine, path);
  EXPECT_NE(key, nullptr);
  static const value_t none{};
  if (key == nullptr) return none;
  const value_t* value = key->find_value(name);
  EXPECT_NE(value, nullptr);
  return value ? *value : none;
}

std::vector<std::u16string> subkeys_of(const key_t& key) {
  std::vector<std::u16string> names;
  for (const auto& [folded, child] : key.subkeys) names.push_back(child->name);
  return names;
}

TEST(RegFileParse, AcceptsTheVersion5HeaderAndReadsAText) {
  const tree_t tree = parse(std::string(kV5) + "\n[HKEY_LOCAL_MACHINE\\A]\n\"Name\"=\"text\"\n");
  const value_t& v = value_at(tree, u"A", u"Name");
  EXPECT_EQ(v.name, u"Name");
  EXPECT_EQ(v.type, win::kRegSz);
  EXPECT_EQ(v.data, utf16z(u"text"));
}

TEST(RegFileParse, AcceptsTheRegedit4HeaderAndBlankLinesBeforeIt) {
  const tree_t tree = parse("\n  \nREGEDIT4\n[HKLM\\A]\n\"N\"=dword:1\n");
  EXPECT_EQ(value_at(tree, u"A", u"N").data, bytes({1, 0, 0, 0}));
}

TEST(RegFileParse, RefusesAFileWithoutAHeaderNamingItsFirstLine) {
  EXPECT_EQ(error_of("\n[HKLM\\A]\n"),
            "Failed to parse registry file [machine.reg], line 2: the file must begin with "
            "\"Windows Registry Editor Version 5.00\" or \"REGEDIT4\".");
}

TEST(RegFileParse, RefusesAnEmptyFile) {
  EXPECT_EQ(error_of(""),
            "Failed to parse registry file [machine.reg], line 1: the file must begin with "
            "\"Windows Registry Editor Version 5.00\" or \"REGEDIT4\".");
}

TEST(RegFileParse, ReadsTheDefaultValueUnderAnEmptyName) {
  const tree_t tree = parse(std::string(kV5) + "[HKLM\\A]\n@=\"default\"\n");
  const value_t& v = value_at(tree, u"A", u"");
  EXPECT_EQ(v.name, u"");
  EXPECT_EQ(v.data, utf16z(u"default"));
}

TEST(RegFileParse, UnescapesBackslashesAndQuotesInNamesAndTexts) {
  const tree_t tree =
      parse(std::string(kV5) + "[HKLM\\A]\n\"say \\\"hi\\\"\"=\"C:\\\\dir\\\\\\\"x\\\"\"\n");
  const value_t& v = value_at(tree, u"A", u"say \"hi\"");
  EXPECT_EQ(v.data, utf16z(u"C:\\dir\\\"x\""));
}

TEST(RegFileParse, ReadsDwordsOfOneToEightDigitsInEitherCase) {
  const tree_t tree = parse(
      std::string(kV5) + "[HKLM\\A]\n\"a\"=dword:0000002a\n\"b\"=DWORD:FFFFFFFF\n\"c\"=dword:7\n");
  EXPECT_EQ(value_at(tree, u"A", u"a").data, bytes({0x2a, 0, 0, 0}));
  EXPECT_EQ(value_at(tree, u"A", u"b").data, bytes({0xff, 0xff, 0xff, 0xff}));
  EXPECT_EQ(value_at(tree, u"A", u"b").type, win::kRegDword);
  EXPECT_EQ(value_at(tree, u"A", u"c").data, bytes({7, 0, 0, 0}));
}

TEST(RegFileParse, ReadsHexListsAsTheirTypes) {
  const tree_t tree = parse(std::string(kV5) +
                            "[HKLM\\A]\n"
                            "\"bin\"=hex:01,ff,0A\n"
                            "\"exp\"=hex(2):25,00,41,00,25,00,00,00\n"
                            "\"multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\n"
                            "\"q\"=hex(b):01,00,00,00,00,00,00,00\n"
                            "\"none\"=hex(0):\n"
                            "\"empty\"=hex:\n");
  EXPECT_EQ(value_at(tree, u"A", u"bin").type, win::kRegBinary);
  EXPECT_EQ(value_at(tree, u"A", u"bin").data, bytes({1, 0xff, 0x0a}));
  EXPECT_EQ(value_at(tree, u"A", u"exp").type, win::kRegExpandSz);
  EXPECT_EQ(value_at(tree, u"A", u"exp").data, utf16z(u"%A%"));
  EXPECT_EQ(value_at(tree, u"A", u"multi").type, win::kRegMultiSz);
  EXPECT_EQ(value_at(tree, u"A", u"multi").data, bytes({0x61, 0, 0, 0, 0x62, 0, 0, 0, 0, 0}));
  EXPECT_EQ(value_at(tree, u"A", u"q").type, win::kRegQword);
  EXPECT_EQ(value_at(tree, u"A", u"none").type, win::kRegNone);
  EXPECT_TRUE(value_at(tree, u"A", u"none").data.empty());
  EXPECT_TRUE(value_at(tree, u"A", u"empty").data.empty());
}

TEST(RegFileParse, WidensTheNarrowTextOfHexListsInRegedit4Files) {
  const tree_t tree = parse(
      "REGEDIT4\n[HKLM\\A]\n\"exp\"=hex(2):25,41,25,00\n\"multi\"=hex(7):61,00,62,00,00\n"
      "\"sz\"=hex(1):c3,a4,00\n\"bin\"=hex:c3,a4\n");
  EXPECT_EQ(value_at(tree, u"A", u"exp").data, utf16z(u"%A%"));
  EXPECT_EQ(value_at(tree, u"A", u"multi").data, bytes({0x61, 0, 0, 0, 0x62, 0, 0, 0, 0, 0}));
  EXPECT_EQ(value_at(tree, u"A", u"sz").data, utf16z(u"\u00e4"));
  EXPECT_EQ(value_at(tree, u"A", u"bin").data, bytes({0xc3, 0xa4}));
}

TEST(RegFileParse, JoinsHexListsContinuedByATrailingBackslash) {
  const tree_t tree = parse(
      std::string(kV5) + "[HKLM\\A]\n\"bin\"=hex:01,02,\\\n  03,04,\\\n\t05\n\"after\"=dword:1\n");
  EXPECT_EQ(value_at(tree, u"A", u"bin").data, bytes({1, 2, 3, 4, 5}));
  EXPECT_EQ(value_at(tree, u"A", u"after").type, win::kRegDword);
}

TEST(RegFileParse, SkipsCommentLinesAndCommentsAfterData) {
  const tree_t tree = parse(std::string(kV5) +
                            "; first\n[HKLM\\A]\n  ; indented\n\"n\"=dword:2 ; two\n"
                            "\"t\"=\"x;y\" ; a text may hold a semicolon\n\"h\"=hex:01 ; one\n");
  EXPECT_EQ(value_at(tree, u"A", u"n").data, bytes({2, 0, 0, 0}));
  EXPECT_EQ(value_at(tree, u"A", u"t").data, utf16z(u"x;y"));
  EXPECT_EQ(value_at(tree, u"A", u"h").data, bytes({1}));
}

TEST(RegFileParse, ToleratesBlanksAroundTheEqualsSign) {
  const tree_t tree = parse(std::string(kV5) + "[HKLM\\A]\n\"n\" =  \"v\"\n@ = dword:3\n");
  EXPECT_EQ(value_at(tree, u"A", u"n").data, utf16z(u"v"));
  EXPECT_EQ(value_at(tree, u"A", u"").data, bytes({3, 0, 0, 0}));
}

TEST(RegFileParse, ReadsLinesEndedByCrLfOrCrAlone) {
  const tree_t tree =
      parse("Windows Registry Editor Version 5.00\r\n\r\n[HKLM\\A]\r\"n\"=\"v\"\r\n");
  EXPECT_EQ(value_at(tree, u"A", u"n").data, utf16z(u"v"));
}

TEST(RegFileParse, SkipsAUtf8ByteOrderMark) {
  const tree_t tree = parse(
      "\xEF\xBB\xBFREGEDIT4\n[HKLM\\A]\n\"n\"=\"Gr\xC3\xBC\xC3\x9F"
      "e\"\n");
  EXPECT_EQ(value_at(tree, u"A", u"n").data, utf16z(u"Gr\u00fc\u00dfe"));
}

TEST(RegFileParse, ReadsUtf16LittleEndianWithByteOrderMark) {
  const std::u16string text =
      u"Windows Registry Editor Version 5.00\r\n\r\n[HKLM\\\u0416]\r\n"
      u"\"\u03a9\"=\"\u00e4\U0001F600\"\r\n";
  std::string file = "\xFF\xFE";
  for (char16_t c : text) {
    file.push_back(static_cast<char>(c & 0xFF));
    file.push_back(static_cast<char>(c >> 8));
  }
  const tree_t tree = parse(file);
  EXPECT_EQ(value_at(tree, u"\u0416", u"\u03a9").data, utf16z(u"\u00e4\U0001F600"));
}

TEST(RegFileParse, RefusesUtf16BigEndian) {
  EXPECT_EQ(error_of(std::string("\xFE\xFF\0W", 4)),
            "Failed to parse registry file [machine.reg], line 1: UTF-16 big-endian text is not "
            "supported.");
}

TEST(RegFileParse, RefusesUtf16TextThatEndsInHalfACharacter) {
  std::string file = "\xFF\xFE";
  for (char c : std::string("REGEDIT4\r\n\r\n")) {
    file.push_back(c);
    file.push_back('\0');
  }
  file.push_back('[');
  EXPECT_EQ(error_of(file),
            "Failed to parse registry file [machine.reg], line 3: the UTF-16 text ends in half a "
            "character.");
}

TEST(RegFileParse, RefusesInvalidUtf8NamingTheLine) {
  EXPECT_EQ(error_of("REGEDIT4\n[HKLM\\A]\n\"n\"=\"Gr\xFC"
                     "e\"\n"),
            "Failed to parse registry file [machine.reg], line 3: the text is not valid UTF-8.");
}

TEST(RegFileParse, MergesKeysAndValuesWrittenInAnotherCaseKeepingTheFirstSpelling) {
  const tree_t tree =
      parse(std::string(kV5) +
            "[HKLM\\Soft\\Key]\n\"Value\"=\"1\"\n[hklm\\SOFT\\key]\n\"VALUE\"=\"2\"\n");
  const key_t* soft = tree.find(root_t::local_machine, u"soft");
  ASSERT_NE(soft, nullptr);
  EXPECT_EQ(subkeys_of(*soft), std::vector<std::u16string>{u"Key"});
  const key_t* key = tree.find(root_t::local_machine, u"SOFT\\KEY");
  ASSERT_NE(key, nullptr);
  ASSERT_EQ(key->values.size(), 1u);
  EXPECT_EQ(key->values[0].name, u"Value");
  EXPECT_EQ(key->values[0].data, utf16z(u"2"));
}

TEST(RegFileParse, OrdersSubkeysByNameWithoutRegardToCaseNotByFileOrder) {
  const tree_t tree = parse(std::string(kV5) +
                            "[HKLM\\P\\beta]\n[HKLM\\P\\Alpha]\n[HKLM\\P\\KEYa]\n[HKLM\\P\\KEY_b]\n"
                            "[HKLM\\P\\_u]\n[HKLM\\P\\Zeta]\n[HKLM\\P\\\xC3\xA4]\n");
  const key_t* p = tree.find(root_t::local_machine, u"P");
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(subkeys_of(*p), (std::vector<std::u16string>{u"_u", u"Alpha", u"beta", u"KEY_b",
                                                         u"KEYa", u"Zeta", u"\u00e4"}));
}

TEST(RegFileParse, DeletesAKeyWithItsSubkeysAndDropsValuesWrittenUnderTheDeletion) {
  const tree_t tree = parse(std::string(kV5) +
                            "[HKLM\\A\\B\\C]\n\"x\"=\"1\"\n[HKLM\\A\\Stay]\n"
                            "[-HKLM\\a\\b]\n\"dropped\"=\"2\"\n[-HKLM\\A\\Never\\There]\n");
  EXPECT_EQ(tree.find(root_t::local_machine, u"A\\B"), nullptr);
  const key_t* a = tree.find(root_t::local_machine, u"A");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(subkeys_of(*a), std::vector<std::u16string>{u"Stay"});
  EXPECT_TRUE(a->values.empty());
}

TEST(RegFileParse, AKeyDeletedAndWrittenAgainHoldsOnlyItsNewValues) {
  const tree_t tree =
      parse(std::string(kV5) + "[HKLM\\K]\n\"old\"=\"1\"\n[-HKLM\\K]\n[HKLM\\K]\n\"new\"=\"2\"\n");
  const key_t* k = tree.find(root_t::local_machine, u"K");
  ASSERT_NE(k, nullptr);
  ASSERT_EQ(k->values.size(), 1u);
  EXPECT_EQ(k->values[0].name, u"new");
}

TEST(RegFileParse, DeletesAValueWrittenAsMinusAndIgnoresDeletingAMissingOne) {
  const tree_t tree = parse(std::string(kV5) +
                            "[HKLM\\K]\n\"a\"=\"1\"\n\"b\"=\"2\"\n\"A\"=-\n\"missing\"=-\n@=-\n");
  const key_t* k = tree.find(root_t::local_machine, u"K");
  ASSERT_NE(k, nullptr);
  ASSERT_EQ(k->values.size(), 1u);
  EXPECT_EQ(k->values[0].name, u"b");
}

TEST(RegFileParse, KnowsTheRootsByLongAndShortNameWithoutRegardToCase) {
  const tree_t tree = parse(std::string(kV5) +
                            "[hkey_local_machine\\a]\n[HKCU\\b]\n[HKEY_CLASSES_ROOT\\c]\n"
                            "[HKU\\d]\n[HKCC\\e]\n[HKEY_CURRENT_USER\\f]\n");
  EXPECT_NE(tree.find(root_t::local_machine, u"a"), nullptr);
  EXPECT_NE(tree.find(root_t::current_user, u"b"), nullptr);
  EXPECT_NE(tree.find(root_t::current_user, u"f"), nullptr);
  EXPECT_NE(tree.find(root_t::classes_root, u"c"), nullptr);
  EXPECT_NE(tree.find(root_t::users, u"d"), nullptr);
  EXPECT_NE(tree.find(root_t::current_config, u"e"), nullptr);
  EXPECT_EQ(tree.find(root_t::local_machine, u"b"), nullptr);
}

struct bad_case_t {
  const char* text;
  const char* error;
};

class RegFileParseRefuses : public ::testing::TestWithParam<bad_case_t> {};

TEST_P(RegFileParseRefuses, WithAnErrorNamingTheFileAndTheLine) {
  EXPECT_EQ(error_of(std::string(kV5) + GetParam().text),
            std::string("Failed to parse registry file [machine.reg], ") + GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    MalformedFiles, RegFileParseRefuses,
    ::testing::Values(
        bad_case_t{"\"n\"=\"v\"\n", "line 2: a value needs a key line above it."},
        bad_case_t{"[HKEY_NOWHERE\\A]\n", "line 2: unknown root key [HKEY_NOWHERE]."},
        bad_case_t{"[HKLM\\A\n", "line 2: a key line must end with \"]\"."},
        bad_case_t{"[HKLM\\A\\\\B]\n",
                   "line 2: the key path [HKLM\\A\\\\B] has an empty name in it."},
        bad_case_t{"[HKLM\\A\\]\n", "line 2: the key path [HKLM\\A\\] has an empty name in it."},
        bad_case_t{"[-HKLM]\n", "line 2: a root key cannot be deleted."},
        bad_case_t{"[HKLM\\A]\n\"n=\"v\"\n", "line 3: expected \"=\" after the value name."},
        bad_case_t{"[HKLM\\A]\n\"n\n", "line 3: the value name is not closed by a quote."},
        bad_case_t{"[HKLM\\A]\n\"n\"=\"v\n", "line 3: the text value is not closed by a quote."},
        bad_case_t{"[HKLM\\A]\n\"n\"=\"a\\tb\"\n",
                   "line 3: unknown escape \"\\t\" in the text value (only \\\\ and \\\" are "
                   "known)."},
        bad_case_t{"[HKLM\\A]\n\"n\"\"v\"\n", "line 3: expected \"=\" after the value name."},
        bad_case_t{"[HKLM\\A]\n\"n\"=\"v\" x\n",
                   "line 3: unexpected text after the value data: [x]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=dword:123456789\n",
                   "line 3: a dword value needs 1 to 8 hexadecimal digits."},
        bad_case_t{"[HKLM\\A]\n\"n\"=dword:\n",
                   "line 3: a dword value needs 1 to 8 hexadecimal digits."},
        bad_case_t{"[HKLM\\A]\n\"n\"=dword:12g\n",
                   "line 3: unexpected text after the value data: [g]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex:01,1g\n", "line 3: bad hexadecimal byte [1g]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex:01,,02\n", "line 3: bad hexadecimal byte []."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex:123\n", "line 3: bad hexadecimal byte [123]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex:01,\\\n  02,zz\n", "line 4: bad hexadecimal byte [zz]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex:01,\\",
                   "line 3: the file ends inside a value continued by a backslash."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex(x):01\n",
                   "line 3: a typed hex value is written hex(N): with N in hexadecimal."},
        bad_case_t{"[HKLM\\A]\n\"n\"=hex(2)01\n",
                   "line 3: a typed hex value is written hex(N): with N in hexadecimal."},
        bad_case_t{"[HKLM\\A]\n\"n\"=text\n", "line 3: unknown value data [text]."},
        bad_case_t{"[HKLM\\A]\n\"n\"=\n", "line 3: unknown value data []."},
        bad_case_t{"[HKLM\\A]\nn=\"v\"\n",
                   "line 3: expected a key in brackets, a value, a comment or an empty line, "
                   "found [n=\"v\"]."}));

TEST(RegFileParse, RefusesAKeyNameLongerThan255Characters) {
  EXPECT_EQ(error_of(std::string(kV5) + "[HKLM\\" + std::string(256, 'k') + "]\n"),
            "Failed to parse registry file [machine.reg], line 2: a key name is longer than 255 "
            "characters.");
  EXPECT_NO_THROW(parse(std::string(kV5) + "[HKLM\\" + std::string(255, 'k') + "]\n"));
}

TEST(RegFileParse, RefusesANarrowHexTextThatIsNotUtf8InRegedit4Files) {
  EXPECT_EQ(error_of("REGEDIT4\n[HKLM\\A]\n\"n\"=hex(2):fc,00\n"),
            "Failed to parse registry file [machine.reg], line 3: the text of the hex value is "
            "not valid UTF-8.");
}

TEST(RegFileNames, FoldLettersOfTheScriptsInUse) {
  EXPECT_EQ(win::reg_file::fold_name(u"KEY_Ab"), u"key_ab");
  EXPECT_EQ(win::reg_file::fold_name(u"\u00c4\u00d6\u00dc\u00d7"), u"\u00e4\u00f6\u00fc\u00d7");
  EXPECT_EQ(win::reg_file::fold_name(u"\u0416\u0401"), u"\u0436\u0451");
  EXPECT_EQ(win::reg_file::fold_name(u"\u03a3\u0391"), u"\u03c3\u03b1");
  EXPECT_EQ(win::reg_file::fold_name(u"\u0141\u0100\u0178"), u"\u0142\u0101\u00ff");
  EXPECT_EQ(win::reg_file::fold_name(u"\u0142\u0101\u00ff"), u"\u0142\u0101\u00ff");
}

TEST(RegFileNames, KnowsOnlyTheFiveRoots) {
  win::reg_file::root_t root;
  EXPECT_TRUE(win::reg_file::root_from_name(u"hklm", root));
  EXPECT_EQ(root, root_t::local_machine);
  EXPECT_FALSE(win::reg_file::root_from_name(u"HKEY_PERFORMANCE_DATA", root));
}

TEST(RegFileLoad, AMissingFileIsAnEmptyTree) {
  const std::string folder = dsl_test::scratch_folder("reg-file-load");
  const tree_t tree = win::reg_file::load(folder + "/absent.reg");
  EXPECT_TRUE(tree.roots.empty());
  dsl_test::remove_folder(folder);
}

TEST(RegFileLoad, AFolderInPlaceOfTheFileIsAFailure) {
  const std::string folder = dsl_test::scratch_folder("reg-file-folder");
  const auto e = dsl_test::thrown<exc::runtime_exc_t>([&] { win::reg_file::load(folder); });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()),
            "Failed to read registry file [" + folder + "]: it is a folder.");
  dsl_test::remove_folder(folder);
}

TEST(RegFileLoad, NamesTheFileItCannotParse) {
  const std::string path = dsl_test::fixture_path("registry_broken_machine.reg");
  const auto e = dsl_test::thrown<exc::runtime_exc_t>([&] { win::reg_file::load(path); });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()), "Failed to parse registry file [" + path +
                                        "], line 6: a dword value needs 1 to 8 hexadecimal "
                                        "digits.");
}

TEST(RegFileLoad, ReadsTheFixturesOfBothEncodings) {
  const tree_t wide = win::reg_file::load(dsl_test::fixture_path("registry_wide_machine.reg"));
  EXPECT_EQ(
      value_at(wide, u"SOFTWARE\\DbShadowLink Tests\\Wide Machine\\Settings", u"Unicode").data,
      utf16z(u"Gr\u00fc\u00dfe, \u03a9mega, \u0416\u0443\u043a"));
  const tree_t old = win::reg_file::load(dsl_test::fixture_path("registry_regedit4_machine.reg"));
  EXPECT_EQ(value_at(old, u"SOFTWARE\\DbShadowLink Tests\\Old Machine\\Settings", u"Expand").data,
            utf16z(u"%TEMP%\\x"));
}

}  // namespace
