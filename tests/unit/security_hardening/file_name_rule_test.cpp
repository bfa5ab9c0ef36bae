// The rule for names that become one file name in a folder of the library (the agent's log name,
// SIDs and GUIDs in temporary names, names from Oracle's views), tried with hostile values.
#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/win/file_name_rule.h"

namespace {

using win::check_file_name;
using win::file_name_problem;
using win::is_safe_file_name;

TEST(FileNameRule, PlainNamesPass) {
  EXPECT_TRUE(is_safe_file_name(u"OracleVssInitLib"));
  EXPECT_TRUE(is_safe_file_name(u"OracleTest.log"));
  EXPECT_TRUE(is_safe_file_name(u"ORCL_1_42_1103.arc"));
  EXPECT_TRUE(is_safe_file_name(u"{6B29FC40-CA47-1067-B31D-00DD010662DA}"));
  EXPECT_TRUE(is_safe_file_name(u".hidden"));
  EXPECT_TRUE(is_safe_file_name(u"O'Brien"));
  EXPECT_TRUE(is_safe_file_name(u"Журнал"));
  EXPECT_TRUE(is_safe_file_name(u"CONSOLE"));  // only the device names themselves are refused
  EXPECT_TRUE(is_safe_file_name(u"COM10"));
  EXPECT_TRUE(is_safe_file_name(u"NULL.txt"));
}

TEST(FileNameRule, AParentFolderStepIsRefused) {
  EXPECT_EQ(file_name_problem(u"..\\x"), "it contains a path separator");
  EXPECT_EQ(file_name_problem(u"../x"), "it contains a path separator");
  EXPECT_EQ(file_name_problem(u".."), "it names a folder");
  EXPECT_EQ(file_name_problem(u"."), "it names a folder");
}

TEST(FileNameRule, APathWithAFolderIsRefused) {
  EXPECT_EQ(file_name_problem(u"a/b"), "it contains a path separator");
  EXPECT_EQ(file_name_problem(u"a\\b"), "it contains a path separator");
  EXPECT_EQ(file_name_problem(u"\\\\srv\\share\\x"), "it contains a path separator");
}

TEST(FileNameRule, ADriveOrAStreamIsRefused) {
  EXPECT_EQ(file_name_problem(u"C:\\x"), "it names a drive or a stream");
  EXPECT_EQ(file_name_problem(u"C:x"), "it names a drive or a stream");
  EXPECT_EQ(file_name_problem(u"x:y"), "it names a drive or a stream");
  EXPECT_EQ(file_name_problem(u"log.txt::$DATA"), "it names a drive or a stream");
}

TEST(FileNameRule, DeviceNamesAreRefusedInAnyCaseAndWithAnExtension) {
  for (const char16_t* name : {u"NUL", u"nul", u"CON", u"PRN", u"AUX", u"COM1", u"com9", u"LPT1",
                               u"lpt0", u"NUL.txt", u"con.log", u"NUL .txt", u"COM1.tar.gz",
                               u"CONIN$", u"conout$", u"COM\u00B9", u"LPT\u00B3.log"}) {
    EXPECT_EQ(file_name_problem(name), "it names a device") << std::u16string(name).size();
  }
}

TEST(FileNameRule, CharactersWindowsRefusesAreRefused) {
  for (const char16_t* name : {u"a<b", u"a>b", u"a\"b", u"a|b", u"a?b", u"a*b"}) {
    EXPECT_EQ(file_name_problem(name),
              "it contains a character that Windows does not allow in a file name");
  }
}

TEST(FileNameRule, ControlCharactersAreRefused) {
  EXPECT_EQ(file_name_problem(std::u16string(u"a\nb")), "it contains a control character");
  EXPECT_EQ(file_name_problem(std::u16string(u"a\tb")), "it contains a control character");
  EXPECT_EQ(file_name_problem(std::u16string(u"a\x01")), "it contains a control character");
  EXPECT_EQ(file_name_problem(std::u16string(u"ab\0c", 4)), "it contains a control character");
}

TEST(FileNameRule, ANameWindowsWouldShortenIsRefused) {
  EXPECT_EQ(file_name_problem(u"x."), "it ends in a dot or a blank, which Windows drops");
  EXPECT_EQ(file_name_problem(u"x "), "it ends in a dot or a blank, which Windows drops");
  EXPECT_EQ(file_name_problem(u"..."), "it ends in a dot or a blank, which Windows drops");
}

TEST(FileNameRule, EmptyAndOverlongNamesAreRefused) {
  EXPECT_EQ(file_name_problem(u""), "it is empty");
  EXPECT_TRUE(is_safe_file_name(std::u16string(255, u'a')));
  EXPECT_EQ(file_name_problem(std::u16string(256, u'a')), "it is longer than 255 characters");
  EXPECT_EQ(file_name_problem(std::u16string(300, u'a')), "it is longer than 255 characters");
}

TEST(FileNameRule, TheNarrowFormReadsUtf8AndRefusesWhatIsNot) {
  EXPECT_TRUE(is_safe_file_name(std::string("ORCL.log")));
  EXPECT_TRUE(is_safe_file_name(std::string("\xD0\x96.log")));
  EXPECT_FALSE(is_safe_file_name(std::string("..\\x")));
  EXPECT_FALSE(is_safe_file_name(std::string("\xFF\xFE")));
}

TEST(FileNameRule, CheckThrowsOneClearSentence) {
  try {
    check_file_name(u"..\\x", "Log name");
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Log name [..\\x] is not a valid file name: it contains a path separator.");
  }
  EXPECT_NO_THROW(check_file_name(u"OracleVssInitLib", "Log name"));
  EXPECT_THROW(check_file_name(std::string("NUL"), "SID"), exc::runtime_exc_t);
}

}  // namespace
