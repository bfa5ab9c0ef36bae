// The collector's rules that need no server: its statements, how rows become records, and the
// guard on the values the `reverted` check puts into its statement.
#include <gtest/gtest.h>

#include "oracle/discovery/db_info_collector_rules.h"
#include "oracle/discovery/explore_db_config.h"

namespace {

using namespace specific::oracle;

TEST(CollectRules, ArchivedLogQueryHasThreeTabsAndBothTimesInUtc) {
  EXPECT_EQ(archived_logs_sql(),
            "SELECT NAME, FIRST_CHANGE#, NEXT_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\t"
            "TO_CHAR(SYS_EXTRACT_UTC(CAST(FIRST_TIME AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), "
            "TO_CHAR(SYS_EXTRACT_UTC(CAST(NEXT_TIME AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), "
            "SEQUENCE# FROM V$ARCHIVED_LOG WHERE STATUS != 'D'");
}

TEST(CollectRules, ASevenColumnRowFillsTheRecordInColumnOrder) {
  const auto log = arch_log_from_row(
      {u"C:\\arch\\1.ARC", u"100", u"200", u"1024", u"2024/03/05 08:00:00", u"2024/03/05 09:00:00", u"7"});
  ASSERT_TRUE(log);
  EXPECT_EQ(log->logPath, u"C:\\arch\\1.ARC");
  EXPECT_EQ(log->firstChange, u"100");
  EXPECT_EQ(log->nextChange, u"200");
  EXPECT_EQ(log->size, u"1024");
  EXPECT_EQ(log->firstTimeUtc, u"2024/03/05 08:00:00");
  EXPECT_EQ(log->nextTimeUtc, u"2024/03/05 09:00:00");
  EXPECT_EQ(log->seqNum, u"7");
  EXPECT_TRUE(log->recId.empty());
  EXPECT_FALSE(log->isLogCopied);
}

TEST(CollectRules, RowsOfAnotherWidthMakeNoRecord) {
  EXPECT_FALSE(arch_log_from_row({u"a", u"b", u"c", u"d", u"e", u"f"}));
  EXPECT_FALSE(arch_log_from_row({u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h"}));
  EXPECT_FALSE(arch_log_from_row({}));
}

TEST(CollectRules, OnlyALeadingPlusMeansAsm) {
  EXPECT_TRUE(is_asm_path(u"+DATA/ORCL/ARCHIVELOG/x"));
  EXPECT_FALSE(is_asm_path(u"C:\\arch\\a+b.arc"));
  EXPECT_FALSE(is_asm_path(u""));
}

TEST(CollectRules, ListenerRowsSetLocalAndRemoteAndTheLaterOneWins) {
  std::u16string local, remote;
  apply_listener_row({u"local_listener", u"L1"}, local, remote);
  apply_listener_row({u"remote_listener", u"R1"}, local, remote);
  apply_listener_row({u"local_listener", u"L2"}, local, remote);
  apply_listener_row({u"listener_networks", u"N"}, local, remote);
  apply_listener_row({u"remote_listener"}, local, remote);
  EXPECT_EQ(local, u"L2");
  EXPECT_EQ(remote, u"R1");
}

TEST(CollectRules, ListenerNamesAreComparedAsTheViewSpellsThem) {
  std::u16string local, remote;
  apply_listener_row({u"LOCAL_LISTENER", u"L"}, local, remote);
  EXPECT_TRUE(local.empty());
}

TEST(CollectRules, GlobalNameJoinsUniqueNameAndDomain) {
  EXPECT_EQ(global_name_of(u"ORCL", u"corp.example"), u"ORCL.corp.example");
  EXPECT_EQ(global_name_of(u"ORCL", u""), u"ORCL");
}

TEST(CollectRules, RevertedStatementCarriesTheDigitsAsTheyStand) {
  SDbLogRecInfo record{u"17", u"0099"};
  std::string sql;
  ASSERT_TRUE(reverted_check_sql(&record, sql));
  EXPECT_EQ(sql, "SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=17 AND STAMP=0099");
}

TEST(CollectRules, NoRecordOrAnEmptyValueMakesNoStatement) {
  std::string sql = "old";
  EXPECT_FALSE(reverted_check_sql(nullptr, sql));
  EXPECT_TRUE(sql.empty());
  SDbLogRecInfo noId{u"", u"99"};
  SDbLogRecInfo noStamp{u"17", u""};
  EXPECT_FALSE(reverted_check_sql(&noId, sql));
  EXPECT_FALSE(reverted_check_sql(&noStamp, sql));
}

TEST(CollectRules, ValuesThatAreNoDecimalNumberNeverReachTheStatement) {
  for (const char16_t* bad : {u"17 OR 1=1", u"-17", u"1e3", u"17;", u" 17", u"0x11", u"99'--"}) {
    SDbLogRecInfo asId{bad, u"99"};
    SDbLogRecInfo asStamp{u"17", bad};
    std::string sql;
    EXPECT_FALSE(reverted_check_sql(&asId, sql));
    EXPECT_TRUE(sql.empty());
    EXPECT_FALSE(reverted_check_sql(&asStamp, sql));
    EXPECT_TRUE(sql.empty());
  }
}

}  // namespace
