// The collector's statements, their order and what each fills, on a 19c database in ARCHIVELOG
// mode with everything asked for.
#include <gtest/gtest.h>

#include "collect_fixture.h"
#include "common/text/base64.h"
#include "common/text/convert.h"
#include "oracle/discovery/single_values.h"

namespace collect_test {
namespace {

using namespace specific::oracle;

const char kUtcTo[] = "TO_CHAR(SYS_EXTRACT_UTC(CAST(";

std::string archived_logs_statement() {
  return "SELECT NAME, FIRST_CHANGE#, NEXT_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\t"
         "TO_CHAR(SYS_EXTRACT_UTC(CAST(FIRST_TIME AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), "
         "TO_CHAR(SYS_EXTRACT_UTC(CAST(NEXT_TIME AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), "
         "SEQUENCE# FROM V$ARCHIVED_LOG WHERE STATUS != 'D'";
}

using CollectOrder = collect_test_t;

TEST_F(CollectOrder, EveryStatementRunsOnceInTheFixedOrder) {
  use_scenario_file("collect_database.xml");
  put_file(u"arch\\ORCL_1_11.ARC");
  auto record = std::make_shared<SDbLogRecInfo>(SDbLogRecInfo{u"17", u"99"});
  collect(true, record);
  const std::vector<std::string> expected = {
      kSqlDatabaseName,
      "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE",
      "SELECT VERSION FROM V$INSTANCE",
      "SELECT F.MEMBER, L.BYTES FROM V$LOG L, V$LOGFILE F WHERE L.GROUP# = F.GROUP#",
      "SELECT NAME, BYTES FROM V$DATAFILE",
      "SELECT NAME, BYTES FROM V$TEMPFILE",
      "SELECT NAME, BLOCK_SIZE*FILE_SIZE_BLKS FROM V$CONTROLFILE",
      "SELECT MEMBER, GROUP# FROM V$LOGFILE",
      "SELECT CDB FROM V$DATABASE",
      "ALTER SYSTEM ARCHIVE LOG CURRENT",
      "ALTER SYSTEM ARCHIVE LOG ALL",
      archived_logs_statement(),
      "STARTS create pfile='",
      kSqlDatabaseId,
      kSqlCurrentScn,
      kSqlLastLogSequence,
      kSqlUniqueName,
      kSqlDomain,
      kSqlRecoveryArea,
      "SELECT NAME, VALUE FROM V$PARAMETER WHERE NAME LIKE '%_listener'",
      "SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=17 AND STAMP=99",
      "SELECT RECID, STAMP FROM V$ARCHIVED_LOG WHERE RECID=(SELECT MAX(RECID) FROM V$ARCHIVED_LOG)",
  };
  const std::vector<std::string> seen = statements_from(kSqlDatabaseName);
  ASSERT_EQ(seen.size(), expected.size()) << journal_text();
  for (size_t i = 0; i < expected.size(); ++i) {
    if (expected[i].rfind("STARTS ", 0) == 0) {
      EXPECT_EQ(seen[i].rfind(expected[i].substr(7), 0), 0u) << i << ": " << seen[i];
    } else {
      EXPECT_EQ(seen[i], expected[i]) << i;
    }
  }
}

TEST_F(CollectOrder, TheFieldsHoldWhatTheServerReturned) {
  use_scenario_file("collect_database.xml");
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(true, std::make_shared<SDbLogRecInfo>(SDbLogRecInfo{u"17", u"99"}));
  const std::u16string base = folder_->base();
  EXPECT_FALSE(props->isError);
  EXPECT_EQ(props->name, u"ORCL");
  EXPECT_EQ(props->sid, u"ORCL");
  EXPECT_EQ(props->id, u"1559187620");
  EXPECT_TRUE(props->archiveLogsOn);
  EXPECT_FALSE(props->isReadonly);
  EXPECT_FALSE(props->reverted);
  EXPECT_EQ(props->globalName, u"ORCL.corp.example");
  EXPECT_EQ(props->recoveryFileDest, base + u"fast_recovery_area");
  EXPECT_EQ(props->localListener, u"LISTENER_ORCL");
  EXPECT_EQ(props->remoteListener, u"dbscan.corp.example:1521");
  ASSERT_EQ(props->controlFiles.size(), 2u);
  EXPECT_EQ(props->controlFiles[0]->path, base + u"oradata\\ORCL\\CONTROL01.CTL");
  EXPECT_EQ(props->controlFiles[0]->size, u"10584064");  // 16384 * 646
  ASSERT_EQ(props->dataFiles.size(), 2u);
  EXPECT_EQ(props->dataFiles[1]->size, u"5242880");
  ASSERT_EQ(props->tempFiles.size(), 1u);
  ASSERT_EQ(props->logFiles.size(), 3u);
  EXPECT_EQ(props->logFiles[0]->size, u"209715200");
  ASSERT_EQ(props->logGroups.size(), 3u);
  EXPECT_EQ(props->logGroups.at(base + u"oradata\\ORCL\\REDO02B.LOG"), "2");
  EXPECT_TRUE(props->pdbs.empty());
  // The switch made the current log (sequence 14) the newest record.
  EXPECT_EQ(props->lastLogNum, u"14");
  EXPECT_EQ(props->maxLogRecId, u"19");
  EXPECT_FALSE(props->maxLogStamp.empty());
  EXPECT_NE(props->lastScn, u"");
  EXPECT_FALSE(props->pfile.empty());
  EXPECT_TRUE(props->config.empty());
}

TEST_F(CollectOrder, ArchivedLogsCarryTheirColumnsWithTimesInUtc) {
  use_scenario_file("collect_database.xml");
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(true);
  ASSERT_GE(props->archivedLogs.size(), 1u);
  const auto& first = *props->archivedLogs[0];
  EXPECT_EQ(first.logPath, folder_->base() + u"arch\\ORCL_1_11.ARC");
  EXPECT_EQ(first.firstChange, u"2700000");
  EXPECT_EQ(first.nextChange, u"2710000");
  EXPECT_EQ(first.size, u"2048");
  EXPECT_EQ(first.firstTimeUtc, u"2024/03/05 07:50:00");  // the machine runs at +01:00
  EXPECT_EQ(first.nextTimeUtc, u"2024/03/05 08:00:00");
  EXPECT_EQ(first.seqNum, u"11");
}

}  // namespace
}  // namespace collect_test
