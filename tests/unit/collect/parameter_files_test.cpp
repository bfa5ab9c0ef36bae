// Reading srvctl's output and mapping a command line onto the host's folder: pure text rules.
#include <gtest/gtest.h>

#include "oracle/discovery/command_line.h"
#include "oracle/discovery/parameter_files.h"
#include "common/text/convert.h"

namespace {

using namespace specific::oracle;

TEST(PasswordFileLine, TheTextAfterTheMarkIsTheLocationWithoutBlanks) {
  bool hit = false;
  EXPECT_EQ(password_file_from_line("Password file: +DATA/ORCL/PASSWORD/pwdorcl\r", hit),
            u"+DATA/ORCL/PASSWORD/pwdorcl");
  EXPECT_TRUE(hit);
}

TEST(PasswordFileLine, AMarkWithNothingBehindIsAHitWithAnEmptyLocation) {
  bool hit = false;
  EXPECT_EQ(password_file_from_line("Password file: \r", hit), u"");
  EXPECT_TRUE(hit);
  EXPECT_EQ(password_file_from_line("Password file:", hit), u"");
  EXPECT_TRUE(hit);
}

TEST(PasswordFileLine, OtherLinesAreNoHit) {
  bool hit = true;
  EXPECT_EQ(password_file_from_line("Spfile: +DATA/ORCL/spfile.ora", hit), u"");
  EXPECT_FALSE(hit);
  EXPECT_EQ(password_file_from_line("password file: x", hit), u"");
  EXPECT_FALSE(hit);
}

TEST(PasswordFileLine, AMarkInsideTheLineIsCutAtTheMarksLengthFromTheStart) {
  // The tool starts its line with the mark; elsewhere the cut still falls at character 14.
  bool hit = false;
  EXPECT_EQ(password_file_from_line("  Password file: X", hit), u"e: X");
  EXPECT_TRUE(hit);
}

std::string fake_map(const std::string& path) { return "<" + path + ">"; }

TEST(CommandLineMapping, DrivePathsAndSharesAreMappedWordByWord) {
  EXPECT_EQ(map_command_line_paths(
                "C:\\app\\bin\\srvctl.bat config database -db ORCL > C:\\ProgramData\\Tmp\\{x}", fake_map),
            "<C:\\app\\bin\\srvctl.bat> config database -db ORCL > <C:\\ProgramData\\Tmp\\{x}>");
  EXPECT_EQ(map_command_line_paths("\\\\srv\\share\\t.bat  d:/x", fake_map),
            "<\\\\srv\\share\\t.bat>  <d:/x>");
}

TEST(CommandLineMapping, OtherWordsStayAsWritten) {
  EXPECT_EQ(map_command_line_paths("echo C: x:y -db", fake_map), "echo C: x:y -db");
  EXPECT_EQ(map_command_line_paths("", fake_map), "");
}

}  // namespace

namespace {

using namespace specific::oracle;

TEST(CommandText, HomesSidsAndTemporaryPathsArePlain) {
  EXPECT_TRUE(is_plain_command_text(u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\\bin\\srvctl.bat"));
  EXPECT_TRUE(is_plain_command_text(u"ORCL"));
  EXPECT_TRUE(is_plain_command_text(u"C:\\ProgramData\\Trelo\\Backup\\Tmp\\{0a1b2c3d-0000-4000-8000-000000000000}"));
  EXPECT_TRUE(is_plain_command_text(u"C:\\Program Files\\O'Brien (x86)\\db_1"));
}

TEST(CommandText, InterpreterCharactersAndControlCharactersAreNot) {
  for (const char16_t* text : {u"ORCL&calc", u"a|b", u"a>b", u"a<b", u"a^b", u"a\"b", u"%PATH%",
                               u"a!b", u"a;b", u"$(id)", u"`id`", u"a\nb", u"a\rb", u"a\tb"}) {
    EXPECT_FALSE(is_plain_command_text(text)) << util::to_utf8(text);
  }
}

}  // namespace
