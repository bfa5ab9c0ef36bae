// What the collector does at the edges: log modes, the `option` switch, the `reverted` check,
// versions and container databases, empty values, archived logs that are gone, and which
// failures end the collection.
#include <gtest/gtest.h>

#include "collect_fixture.h"
#include "common/text/convert.h"

namespace collect_test {
namespace {

using namespace specific::oracle;

const char kRevertedSql[] = "SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=17 AND STAMP=99";
const char kNewestSql[] =
    "SELECT RECID, STAMP FROM V$ARCHIVED_LOG WHERE RECID=(SELECT MAX(RECID) FROM V$ARCHIVED_LOG)";

std::shared_ptr<SDbLogRecInfo> record(const std::u16string& recId, const std::u16string& stamp) {
  return std::make_shared<SDbLogRecInfo>(SDbLogRecInfo{recId, stamp});
}

std::string fault(const std::string& sql, const std::string& error = "1219",
                  const std::string& match = "exact") {
  return "<fault on=\"execute\" sql=\"" + sql + "\" match=\"" + match + "\" error=\"" + error + "\"/>";
}

bool has_log(const arch_log_list_t& logs, const std::u16string& path) {
  for (const auto& log : logs) {
    if (log->logPath == path) return true;
  }
  return false;
}

class CollectEdges : public collect_test_t {
 protected:
  std::u16string asm_log() const {
    return u"+DATA/ORCL/ARCHIVELOG/2024_03_05/thread_1_seq_13.300.1162540900";
  }
  std::u16string asm_log_file() const {
    return u"asm\\DATA\\ORCL\\ARCHIVELOG\\2024_03_05\\thread_1_seq_13.300.1162540900";
  }
};

TEST_F(CollectEdges, NoArchivelogLeavesOutLogsRevertedAndNewestRecordButKeepsThePfile) {
  use_scenario_file("collect_database.xml", {{"$LOG_MODE$", "NOARCHIVELOG"}});
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(true, record(u"17", u"0"));
  EXPECT_FALSE(props->archiveLogsOn);
  EXPECT_TRUE(props->archivedLogs.empty());
  EXPECT_FALSE(props->reverted);
  EXPECT_TRUE(props->maxLogRecId.empty());
  EXPECT_TRUE(props->maxLogStamp.empty());
  EXPECT_FALSE(props->pfile.empty());
  EXPECT_FALSE(saw_statement_starting("ALTER SYSTEM"));
  EXPECT_FALSE(saw_statement_starting("SELECT RECID"));
  EXPECT_TRUE(saw_statement_starting("create pfile="));
}

TEST_F(CollectEdges, OptionOffWithArchivelogTakesNoLogsAndNoPfileButStillChecksRevertedAndNewest) {
  use_scenario_file("collect_database.xml");
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(false, record(u"17", u"99"));
  EXPECT_TRUE(props->archiveLogsOn);
  EXPECT_TRUE(props->archivedLogs.empty());
  EXPECT_TRUE(props->pfile.empty());
  EXPECT_FALSE(props->reverted);
  EXPECT_EQ(props->maxLogRecId, u"18");
  EXPECT_EQ(props->maxLogStamp, u"1162540900");
  EXPECT_FALSE(saw_statement_starting("ALTER SYSTEM"));
  EXPECT_FALSE(saw_statement_starting("create pfile"));
  EXPECT_TRUE(saw_statement_starting(kRevertedSql));
  EXPECT_TRUE(saw_statement_starting(kNewestSql));
}

TEST_F(CollectEdges, RememberedLogStillListedIsNotReverted) {
  use_scenario_file("collect_database.xml");
  EXPECT_FALSE(collect(false, record(u"17", u"99"))->reverted);
}

TEST_F(CollectEdges, RememberedLogThatIsGoneMeansReverted) {
  use_scenario_file("collect_database.xml");
  EXPECT_TRUE(collect(false, record(u"17", u"98"))->reverted);
  EXPECT_TRUE(saw_statement_starting("SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=17 AND STAMP=98"));
}

TEST_F(CollectEdges, FailingRevertedCheckIsLoggedAnswersFalseAndTheCollectionGoesOn) {
  use_scenario_file("collect_database.xml", {}, fault(kRevertedSql));
  auto props = collect(false, record(u"17", u"99"));
  EXPECT_FALSE(props->reverted);
  EXPECT_EQ(props->maxLogRecId, u"18");
  EXPECT_EQ(log_with("Failed to check if db was reverted").size(), 1u);
}

TEST_F(CollectEdges, WithoutARememberedLogThereIsNoRevertedQuery) {
  use_scenario_file("collect_database.xml");
  EXPECT_FALSE(collect(false)->reverted);
  EXPECT_FALSE(collect(false, record(u"", u"99"))->reverted);
  EXPECT_FALSE(collect(false, record(u"17", u""))->reverted);
  EXPECT_FALSE(saw_statement_starting("SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID="));
}

TEST_F(CollectEdges, ARecordIdThatIsNoNumberNeverReachesTheStatement) {
  use_scenario_file("collect_database.xml");
  auto props = collect(false, record(u"17 OR 1=1", u"99"));
  EXPECT_FALSE(props->reverted);
  EXPECT_FALSE(saw_statement_starting("SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID="));
  EXPECT_EQ(log_with("Failed to check if db was reverted").size(), 1u);
  props = collect(false, record(u"17", u"99'--"));
  EXPECT_FALSE(props->reverted);
  EXPECT_FALSE(saw_statement_starting("SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID="));
}

TEST_F(CollectEdges, Version11AsksNoContainerQuestion) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "11.2.0.4.0"}});
  auto props = collect(false);
  EXPECT_TRUE(props->pdbs.empty());
  EXPECT_FALSE(saw_statement_starting("SELECT CDB"));
  EXPECT_FALSE(saw_statement_starting("SELECT NAME, GUID FROM V$PDBS"));
}

TEST_F(CollectEdges, Version12NonContainerAsksTheQuestionButListsNoPdbs) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "12.1.0.2.0"}, {"$CDB$", "NO"}});
  auto props = collect(false);
  EXPECT_TRUE(props->pdbs.empty());
  EXPECT_TRUE(saw_statement_starting("SELECT CDB FROM V$DATABASE"));
  EXPECT_FALSE(saw_statement_starting("SELECT NAME, GUID FROM V$PDBS"));
}

TEST_F(CollectEdges, Version19ContainerListsItsPdbs) {
  use_scenario_file("collect_database.xml", {{"$CDB$", "YES"}},
                    "<pdb con_id=\"2\" name=\"PDB$SEED\" guid=\"9C4E0E2A3B1C4D5E8F00112233445566\" "
                    "open_mode=\"READ ONLY\"/>\n"
                    "<pdb con_id=\"3\" name=\"ORCLPDB1\" guid=\"A1B2C3D4E5F60718293A4B5C6D7E8F90\" "
                    "open_mode=\"READ WRITE\"/>");
  auto props = collect(false);
  ASSERT_EQ(props->pdbs.size(), 2u);
  EXPECT_EQ(props->pdbs[0].name, u"PDB$SEED");
  EXPECT_EQ(props->pdbs[0].guid, u"9C4E0E2A3B1C4D5E8F00112233445566");
  EXPECT_EQ(props->pdbs[1].name, u"ORCLPDB1");
  EXPECT_EQ(props->pdbs[1].guid, u"A1B2C3D4E5F60718293A4B5C6D7E8F90");
}

TEST_F(CollectEdges, FailingPdbListIsLoggedAndTheCollectionGoesOn) {
  use_scenario_file("collect_database.xml", {{"$CDB$", "YES"}},
                    "<pdb con_id=\"3\" name=\"ORCLPDB1\" guid=\"A1\"/>" +
                        fault("SELECT NAME, GUID FROM V$PDBS"));
  auto props = collect(false);
  EXPECT_TRUE(props->pdbs.empty());
  EXPECT_EQ(log_with("Unable to gather plugged databases").size(), 1u);
  EXPECT_EQ(props->id, u"1559187620");
}

TEST_F(CollectEdges, FailingContainerQuestionCountsAsNo) {
  use_scenario_file("collect_database.xml", {{"$CDB$", "YES"}},
                    "<pdb con_id=\"3\" name=\"ORCLPDB1\" guid=\"A1\"/>" +
                        fault("SELECT CDB FROM V$DATABASE"));
  auto props = collect(false);
  EXPECT_TRUE(props->pdbs.empty());
  EXPECT_EQ(log_with("Failed to check if database is pluggable").size(), 1u);
  EXPECT_FALSE(saw_statement_starting("SELECT NAME, GUID FROM V$PDBS"));
}

TEST_F(CollectEdges, EmptyDomainGivesTheUniqueNameWithoutATrailingPoint) {
  use_scenario_file("collect_database.xml", {{"$DOMAIN$", ""}});
  EXPECT_EQ(collect(false)->globalName, u"ORCL");
}

TEST_F(CollectEdges, NoRecoveryAreaLeavesItEmpty) {
  use_scenario_file("collect_database.xml", {{"$RECOVERY_AREA_PARAMETER$", ""}});
  EXPECT_EQ(collect(false)->recoveryFileDest, u"");
}

TEST_F(CollectEdges, OpenModeBeginningWithReadOnlyCountsAsReadOnly) {
  use_scenario_file("collect_database.xml", {{"$OPEN_MODE$", "READ ONLY WITH APPLY"}});
  EXPECT_TRUE(collect(false)->isReadonly);
}

TEST_F(CollectEdges, ArchivedLogDeletedFromDiskIsLeftOut) {
  use_scenario_file("collect_database.xml");
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(true);
  EXPECT_TRUE(has_log(props->archivedLogs, folder_->base() + u"arch\\ORCL_1_11.ARC"));
  EXPECT_FALSE(has_log(props->archivedLogs, folder_->base() + u"arch\\ORCL_1_12.ARC"));
}

TEST_F(CollectEdges, RecordsMarkedDeletedAreNotAskedFor) {
  use_scenario_file("collect_database.xml");
  auto props = collect(true);
  for (const auto& log : props->archivedLogs) EXPECT_NE(log->seqNum, u"10");
}

TEST_F(CollectEdges, AsmLogIsListedWithoutAQueryWhenTheCheckIsOff) {
  use_registry("collect_no_check_asm.reg");
  use_scenario_file("collect_database.xml");
  auto props = collect(true);
  EXPECT_TRUE(has_log(props->archivedLogs, asm_log()));
  EXPECT_FALSE(saw_statement_starting("BEGIN"));
}

TEST_F(CollectEdges, AsmLogPresentIsListedWhenTheCheckIsOn) {
  use_registry("collect_check_asm.reg");
  use_scenario_file("collect_database.xml");
  put_file(asm_log_file());
  auto props = collect(true);
  EXPECT_TRUE(has_log(props->archivedLogs, asm_log()));
  EXPECT_TRUE(saw_statement_starting("BEGIN   DBMS_DISKGROUP.GETFILEATTR(:fname,:ftype,:fsize,:blksize);"))
      << journal_text();
  EXPECT_EQ(log_with("ASM file: " + util::to_utf8(asm_log()) + ", type: 4").size(), 1u);
}

TEST_F(CollectEdges, AsmLogMissingIsLeftOutWhenTheCheckIsOn) {
  use_registry("collect_check_asm.reg");
  use_scenario_file("collect_database.xml");
  auto props = collect(true);
  EXPECT_FALSE(has_log(props->archivedLogs, asm_log()));
  EXPECT_EQ(log_with("Failed to check if ASM file exists: [" + util::to_utf8(asm_log()) + "]").size(), 1u);
}

TEST_F(CollectEdges, FailingArchiveCurrentEndsTheCollection) {
  use_scenario_file("collect_database.xml", {}, fault("ALTER SYSTEM ARCHIVE LOG CURRENT", "1031"));
  try {
    collect(true);
    FAIL() << "no failure";
  } catch (const std::exception& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("ORA-01031"), std::string::npos) << what;
    EXPECT_NE(what.find("Failed to archive logs current"), std::string::npos) << what;
    EXPECT_NE(what.find("Failed to gather archived logs"), std::string::npos) << what;
    EXPECT_NE(what.find("Failed to gather database properties."), std::string::npos) << what;
  }
  EXPECT_FALSE(saw_statement_starting("ALTER SYSTEM ARCHIVE LOG ALL"));
  EXPECT_EQ(log_with("Gathering database properties for SID: [ORCL] Failed.").size(), 1u);
}

TEST_F(CollectEdges, FailingArchiveAllIsOnlyLogged) {
  use_scenario_file("collect_database.xml", {}, fault("ALTER SYSTEM ARCHIVE LOG ALL", "271"));
  put_file(u"arch\\ORCL_1_11.ARC");
  auto props = collect(true);
  EXPECT_FALSE(props->archivedLogs.empty());
  EXPECT_EQ(log_with("Failed to archive logs all").size(), 1u);
  EXPECT_EQ(log_with("Gathering database properties for SID: [ORCL] ok.").size(), 1u);
}

TEST_F(CollectEdges, RedoMemberMissingFromTheGroupMapIsNoFailure) {
  use_scenario_file("collect_database.xml", {},
                    "<fault on=\"fetch\" sql=\"SELECT MEMBER, GROUP# FROM V$LOGFILE\" after_rows=\"2\"/>");
  auto props = collect(false);
  EXPECT_EQ(props->logFiles.size(), 3u);
  EXPECT_EQ(props->logGroups.size(), 2u);
  EXPECT_EQ(props->logGroups.count(folder_->base() + u"oradata\\ORCL\\REDO02B.LOG"), 0u);
}

TEST_F(CollectEdges, AValueOf1024BytesDropsOnlyItsOwnRow) {
  const std::string prefix = "$BASE$oradata\\";
  const std::string base = util::to_utf8(folder_->base()) + "oradata\\";
  const std::string fits(1023 - base.size(), 'F');   // 1023 bytes: the buffer's limit
  const std::string too_long(1024 - base.size(), 'L');
  use_scenario_file("collect_database.xml", {},
                    "<data_file number=\"3\" name=\"" + prefix + fits + "\" bytes=\"8192\"/>"
                    "<data_file number=\"4\" name=\"" + prefix + too_long + "\" bytes=\"8192\"/>");
  auto props = collect(false);
  ASSERT_EQ(props->dataFiles.size(), 3u);
  EXPECT_EQ(util::to_utf8(props->dataFiles[2]->path), base + fits);
}

TEST_F(CollectEdges, FailingFileListEndsTheCollection) {
  use_scenario_file("collect_database.xml", {}, fault("SELECT NAME, BYTES FROM V$TEMPFILE"));
  try {
    collect(false);
    FAIL() << "no failure";
  } catch (const std::exception& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("Failed to gather database properties."), std::string::npos) << what;
  }
  EXPECT_EQ(log_with("Gathering database files Failed.").size(), 1u);
  EXPECT_FALSE(saw_statement_starting("SELECT NAME, BLOCK_SIZE*FILE_SIZE_BLKS"));
}

TEST_F(CollectEdges, FailingLogGroupsEndTheCollection) {
  use_scenario_file("collect_database.xml", {}, fault("SELECT MEMBER, GROUP# FROM V$LOGFILE"));
  try {
    collect(false);
    FAIL() << "no failure";
  } catch (const std::exception& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("Failed to gather log files groups"), std::string::npos) << what;
    EXPECT_NE(what.find("Failed to gather database properties."), std::string::npos) << what;
  }
}

TEST_F(CollectEdges, FailingSingleValueEndsTheCollection) {
  use_scenario_file("collect_database.xml", {}, fault("SELECT CURRENT_SCN FROM V$DATABASE"));
  EXPECT_THROW(collect(false), std::exception);
  EXPECT_FALSE(saw_statement_starting("SELECT MAX(SEQUENCE#)"));
}

}  // namespace
}  // namespace collect_test
