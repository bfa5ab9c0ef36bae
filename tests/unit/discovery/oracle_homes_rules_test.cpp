// The text rules of discovery, without any registry.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "oracle/discovery/oracle_homes_rules.h"

namespace {

using specific::oracle::EOracleServiceKind;
using specific::oracle::SOracleServiceRegInfo;
namespace rules = specific::oracle::homes_rules;

std::string u8(const std::u16string& text) {
  std::string out;
  for (char16_t c : text) out += c < 0x80 ? static_cast<char>(c) : '?';
  return out;
}

// --- upper-casing ---------------------------------------------------------------------------

TEST(OracleHomesRules, UpperCasingFoldsAsciiAndLatin1LettersAndNothingElse) {
  EXPECT_EQ(rules::upper_case(u"c:\\app\\oracle\\dbhome_1"), u"C:\\APP\\ORACLE\\DBHOME_1");
  EXPECT_EQ(rules::upper_case(u"jos\u00e9"), u"JOS\u00c9");
  // Letters outside that range, and signs, stay as they are.
  EXPECT_EQ(rules::upper_case(u"\u00ff\u03b1\u0436"), u"\u00ff\u03b1\u0436");
  EXPECT_EQ(rules::upper_case(u"%var% 1_2\\ \u00f7"), u"%VAR% 1_2\\ \u00f7");
  EXPECT_EQ(rules::upper_case(u""), u"");
}

// --- home keys ------------------------------------------------------------------------------

TEST(OracleHomesRules, AHomeKeyNameBeginsWithKeyUnderscoreInAnyCase) {
  EXPECT_TRUE(rules::is_home_key_name(u"KEY_OraDB19Home1"));
  EXPECT_TRUE(rules::is_home_key_name(u"key_oradb19home1"));
  EXPECT_TRUE(rules::is_home_key_name(u"kEy_OraClient19Home1_32bit"));
  EXPECT_TRUE(rules::is_home_key_name(u"KEY_"));
}

TEST(OracleHomesRules, KeyUnderscoreLaterInTheNameDoesNotMakeAHomeKey) {
  EXPECT_FALSE(rules::is_home_key_name(u"ORA_KEY_OraDB19Home1"));
  EXPECT_FALSE(rules::is_home_key_name(u" KEY_OraDB19Home1"));
  EXPECT_FALSE(rules::is_home_key_name(u"Backup KEY_OraDB19Home1"));
  EXPECT_FALSE(rules::is_home_key_name(u"KEY"));
  EXPECT_FALSE(rules::is_home_key_name(u"KEYS_OraDB19Home1"));
  EXPECT_FALSE(rules::is_home_key_name(u"ODP.NET"));
  EXPECT_FALSE(rules::is_home_key_name(u""));
}

// --- service keys ---------------------------------------------------------------------------

TEST(OracleHomesRules, DatabaseServiceKeysBeginWithOracleServiceInAnyCase) {
  EXPECT_EQ(rules::service_key_kind(u"OracleServiceORCL"), EOracleServiceKind::database);
  EXPECT_EQ(rules::service_key_kind(u"oracleserviceorcl"), EOracleServiceKind::database);
  EXPECT_EQ(rules::service_key_kind(u"ORACLESERVICE"), EOracleServiceKind::database);
  // The part behind the prefix is not looked at.
  EXPECT_EQ(rules::service_key_kind(u"OracleService with anything"), EOracleServiceKind::database);
}

TEST(OracleHomesRules, AsmServiceKeysBeginWithOracleAsmServiceAndAreNoDatabaseServices) {
  EXPECT_EQ(rules::service_key_kind(u"OracleASMService+ASM"), EOracleServiceKind::asm_instance);
  EXPECT_EQ(rules::service_key_kind(u"oracleasmservice+asm1"), EOracleServiceKind::asm_instance);
  EXPECT_EQ(rules::service_key_kind(u"ORACLEASMSERVICE"), EOracleServiceKind::asm_instance);
}

TEST(OracleHomesRules, OtherOracleServicesAreNoInstances) {
  for (const char16_t* name :
       {u"OracleVssWriterORCL", u"OracleOraDB19Home1TNSListener", u"OracleJobSchedulerORCL",
        u"OracleOraDB19Home1MTSRecoveryService", u"OracleRemExecServiceV2",
        u"XOracleServiceORCL", u" OracleServiceORCL", u"OracleServic", u"OracleASMServic",
        u"Oracle Service ORCL", u""}) {
    EXPECT_EQ(rules::service_key_kind(name), EOracleServiceKind::none) << u8(name);
  }
}

// --- command lines --------------------------------------------------------------------------

TEST(OracleHomesRules, TheFirstBlankSplitsServerPathAndSid) {
  const auto s = rules::service_from_image_path(
      u"c:\\app\\oracle\\product\\12.1.0\\dbhome_1\\bin\\ORACLE.EXE ORCL", false);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->exePath, u"c:\\app\\oracle\\product\\12.1.0\\dbhome_1\\bin\\ORACLE.EXE");
  EXPECT_EQ(s->sid, u"ORCL");
  EXPECT_FALSE(s->isAsm);
}

TEST(OracleHomesRules, TheSidKeepsItsCaseAndTheAsmFlagComesFromTheCaller) {
  const auto s = rules::service_from_image_path(u"C:\\grid\\bin\\oracle.exe +asm", true);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->sid, u"+asm");
  EXPECT_EQ(s->exePath, u"C:\\grid\\bin\\oracle.exe");
  EXPECT_TRUE(s->isAsm);
}

TEST(OracleHomesRules, ASecondBlankStaysInsideTheSid) {
  const auto s = rules::service_from_image_path(u"X\\BIN\\ORACLE.EXE ORCL EXTRA", false);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->exePath, u"X\\BIN\\ORACLE.EXE");
  EXPECT_EQ(s->sid, u"ORCL EXTRA");
}

TEST(OracleHomesRules, NothingIsTrimmed) {
  const auto doubled = rules::service_from_image_path(u"X\\ORACLE.EXE  ORCL", false);
  ASSERT_TRUE(doubled.has_value());
  EXPECT_EQ(doubled->exePath, u"X\\ORACLE.EXE");
  EXPECT_EQ(doubled->sid, u" ORCL");

  const auto trailing = rules::service_from_image_path(u"X\\ORACLE.EXE ORCL ", false);
  ASSERT_TRUE(trailing.has_value());
  EXPECT_EQ(trailing->sid, u"ORCL ");

  const auto blank_last = rules::service_from_image_path(u"X\\ORACLE.EXE ", false);
  ASSERT_TRUE(blank_last.has_value());
  EXPECT_EQ(blank_last->exePath, u"X\\ORACLE.EXE");
  EXPECT_EQ(blank_last->sid, u"");
}

TEST(OracleHomesRules, ABlankAtPositionZeroDropsTheService) {
  EXPECT_FALSE(rules::service_from_image_path(u" X\\BIN\\ORACLE.EXE ORCL", false).has_value());
  EXPECT_FALSE(rules::service_from_image_path(u" ", true).has_value());
  EXPECT_FALSE(rules::service_from_image_path(u"  ORCL", false).has_value());
}

TEST(OracleHomesRules, WithoutABlankServerPathAndSidAreBothTheWholeLine) {
  const auto s = rules::service_from_image_path(u"C:\\db\\bin\\ORACLE.EXE", false);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->exePath, u"C:\\db\\bin\\ORACLE.EXE");
  EXPECT_EQ(s->sid, u"C:\\db\\bin\\ORACLE.EXE");

  const auto empty = rules::service_from_image_path(u"", true);
  ASSERT_TRUE(empty.has_value());
  EXPECT_EQ(empty->exePath, u"");
  EXPECT_EQ(empty->sid, u"");
  EXPECT_TRUE(empty->isAsm);
}

TEST(OracleHomesRules, OnlyCharacter32IsABlankAndQuotesMeanNothing) {
  const auto tab = rules::service_from_image_path(u"X\\ORACLE.EXE\tORCL", false);
  ASSERT_TRUE(tab.has_value());
  EXPECT_EQ(tab->exePath, u"X\\ORACLE.EXE\tORCL");
  EXPECT_EQ(tab->sid, u"X\\ORACLE.EXE\tORCL");

  const auto quoted = rules::service_from_image_path(
      u"\"C:\\Program Files\\Oracle\\bin\\ORACLE.EXE\" ORCL", false);
  ASSERT_TRUE(quoted.has_value());
  EXPECT_EQ(quoted->exePath, u"\"C:\\Program");
  EXPECT_EQ(quoted->sid, u"Files\\Oracle\\bin\\ORACLE.EXE\" ORCL");
}

// --- server path of a home ------------------------------------------------------------------

TEST(OracleHomesRules, TheServerPathIsTheHomeABackslashAndBinOracleExeUpperCased) {
  EXPECT_EQ(rules::expected_server_path(u"C:\\app\\oracle\\product\\12.1.0\\dbhome_1"),
            u"C:\\APP\\ORACLE\\PRODUCT\\12.1.0\\DBHOME_1\\BIN\\ORACLE.EXE");
}

TEST(OracleHomesRules, TheBackslashIsAlwaysAppended) {
  EXPECT_EQ(rules::expected_server_path(u"C:\\db\\"), u"C:\\DB\\\\BIN\\ORACLE.EXE");
  EXPECT_EQ(rules::expected_server_path(u""), u"\\BIN\\ORACLE.EXE");
}

TEST(OracleHomesRules, TheHomeIsNotNormalised) {
  EXPECT_EQ(rules::expected_server_path(u"%ORACLE_BASE%\\db"),
            u"%ORACLE_BASE%\\DB\\BIN\\ORACLE.EXE");
  EXPECT_EQ(rules::expected_server_path(u"C:/app/db"), u"C:/APP/DB\\BIN\\ORACLE.EXE");
  EXPECT_EQ(rules::expected_server_path(u" C:\\db "), u" C:\\DB \\BIN\\ORACLE.EXE");
}

// --- matching -------------------------------------------------------------------------------

SOracleServiceRegInfo service_at(const std::u16string& exePath) {
  SOracleServiceRegInfo s;
  s.exePath = exePath;
  s.sid = u"ORCL";
  return s;
}

TEST(OracleHomesRules, AServiceRunsFromAHomeWhenTheWholePathIsEqualWithoutRegardToCase) {
  const std::u16string expected = rules::expected_server_path(u"C:\\app\\db");
  EXPECT_TRUE(rules::runs_from(service_at(u"C:\\APP\\DB\\BIN\\ORACLE.EXE"), expected));
  EXPECT_TRUE(rules::runs_from(service_at(u"c:\\app\\db\\bin\\oracle.exe"), expected));
  EXPECT_TRUE(rules::runs_from(service_at(u"c:\\App\\Db\\Bin\\Oracle.Exe"), expected));
}

TEST(OracleHomesRules, APartOfThePathOrALongerPathIsNoMatch) {
  const std::u16string expected = rules::expected_server_path(u"C:\\app\\db");
  EXPECT_FALSE(rules::runs_from(service_at(u"C:\\APP\\DB\\BIN\\ORACLE.EX"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u"C:\\APP\\DB\\BIN\\ORACLE.EXEX"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u"D:\\C:\\APP\\DB\\BIN\\ORACLE.EXE"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u""), expected));
}

TEST(OracleHomesRules, PathsAreComparedAsTheyStand) {
  const std::u16string expected = rules::expected_server_path(u"C:\\app\\db");
  EXPECT_FALSE(rules::runs_from(service_at(u"C:/app/db/bin/ORACLE.EXE"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u"C:\\app\\db\\\\bin\\ORACLE.EXE"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u"C:\\app\\db\\.\\bin\\ORACLE.EXE"), expected));
  EXPECT_FALSE(rules::runs_from(service_at(u"C:\\PROGRA~1\\db\\bin\\ORACLE.EXE"),
                                rules::expected_server_path(u"C:\\Program Files\\db")));
  EXPECT_FALSE(rules::runs_from(service_at(u"\"C:\\app\\db\\bin\\ORACLE.EXE\""), expected));
  // A home with a trailing backslash matches only a line that has the two backslashes.
  EXPECT_TRUE(rules::runs_from(service_at(u"C:\\app\\db\\\\bin\\ORACLE.EXE"),
                               rules::expected_server_path(u"C:\\app\\db\\")));
}

TEST(OracleHomesRules, AnEmptyHomeMatchesAServerPathOfBinOracleExe) {
  EXPECT_TRUE(rules::runs_from(service_at(u"\\bin\\oracle.exe"), rules::expected_server_path(u"")));
}

}  // namespace
