// The pure parts of the log backup: the selection statement, the bookmark check and the form
// in which the logs folder is created.
#include <gtest/gtest.h>

#include "oracle/logs/log_backup.h"
#include "support/thrown.h"

namespace specific::oracle::logs {
namespace {

const std::string kColumns =
    "SELECT FIRST_CHANGE#, TO_CHAR(SYS_EXTRACT_UTC(CAST(FIRST_TIME AS TIMESTAMP)), "
    "'yyyy/mm/dd hh24:mi:ss'), NEXT_CHANGE#, TO_CHAR(SYS_EXTRACT_UTC(CAST(NEXT_TIME AS "
    "TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), NAME, SEQUENCE#, RECID, STAMP FROM V$ARCHIVED_LOG ";

TEST(LogBackupRulesTest, EmptyBookmarkLeavesABlankAtTheStatementsEnd) {
  EXPECT_EQ(select_logs_statement(u""), kColumns);
}

TEST(LogBackupRulesTest, BookmarkBecomesARecidBound) {
  EXPECT_EQ(select_logs_statement(u"120"), kColumns + "WHERE RECID > 120");
}

TEST(LogBackupRulesTest, BookmarkOfDigitsOrNothingPassesTheCheck) {
  check_bookmark(u"");
  check_bookmark(u"0");
  check_bookmark(u"18446744073709551616000");
}

TEST(LogBackupRulesTest, BookmarkThatIsNoNumberFailsWithAClearText) {
  for (const std::u16string bad : {u"12 OR 1=1", u"-5", u"+5", u" 5", u"5 ", u"0x10", u"1.5", u"\u0661"}) {
    const std::string text = dsl_test::thrown_text([&] { check_bookmark(bad); });
    EXPECT_NE(text.find("is not a decimal number"), std::string::npos) << text;
  }
}

TEST(LogBackupRulesTest, FolderIsCreatedWithItsLastPart) {
  EXPECT_EQ(folder_with_separator(u"C:\\logs"), u"C:\\logs\\");
  EXPECT_EQ(folder_with_separator(u"C:\\logs\\"), u"C:\\logs\\");
  EXPECT_EQ(folder_with_separator(u"C:/logs/"), u"C:/logs/");
}

}  // namespace
}  // namespace specific::oracle::logs
