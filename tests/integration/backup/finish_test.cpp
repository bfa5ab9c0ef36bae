// The finish on the live machine against the simulated client: the action table, end of the
// backup state with its log switch, start-up of a database that was shut down, and failures.
#include <gtest/gtest.h>

#include <algorithm>

#include "backup_fixture.h"
#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/backup/backup_prepare.h"
#include "prepare_support.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupFinish;
using specific::oracle::CDbsBackupPrepare;
using specific::oracle::COracleManager;
using specific::oracle::SPdbInfo;

class FinishTest : public backup_test_t {
 protected:
  void finish(const std::vector<specific::oracle::SDbPrepareInfo>& records) {
    CDbsBackupFinish::finish_all(document_of(records), {}, /*restore=*/false);
  }
};

db_t db(const std::string& sid) {
  db_t d;
  d.sid = sid;
  return d;
}

TEST_F(FinishTest, BackupActionEndsTheBackupStateAndSwitchesTheLog) {
  db_t d = db("ORCL");
  d.backup = "ACTIVE";
  use_machine({d});
  finish({record("ORCL", 2)});
  EXPECT_EQ(statements_of("ORCL"),
            (std::vector<std::string>{"SELECT STATUS FROM V$INSTANCE",
                                      "SELECT DATABASE_STATUS FROM V$INSTANCE",
                                      "ALTER DATABASE END BACKUP",
                                      "ALTER SYSTEM ARCHIVE LOG CURRENT"}));
  EXPECT_FALSE(in_backup("ORCL"));
}

TEST_F(FinishTest, FailingEndBackupSendsNoLogSwitchAndIsOnlyLogged) {
  use_machine({db("ORCL")});  // not in backup state: END BACKUP answers ORA-01142
  finish({record("ORCL", 2)});
  const auto sent = statements_of("ORCL");
  EXPECT_EQ(std::count(sent.begin(), sent.end(), "ALTER SYSTEM ARCHIVE LOG CURRENT"), 0);
  EXPECT_TRUE(log_contains("Failed to finish db backup. Sid: ORCL"));
  EXPECT_TRUE(log_contains("ORA-01142"));
}

TEST_F(FinishTest, BackupRecordWhoseDatabaseWasShutDownMeanwhileSendsNothing) {
  db_t d = db("ORCL");
  d.state = "down";
  use_machine({d});
  finish({record("ORCL", 2)});
  EXPECT_TRUE(statements_of("ORCL").empty()) << journal_text();
  EXPECT_FALSE(log_contains("Failed to finish db backup"));
}

TEST_F(FinishTest, BackupRecordWithoutSessionLeavesTheBackupState) {
  db_t d = db("ORCL");
  d.backup = "ACTIVE";
  d.attributes = "service=\"stopped\"";
  use_machine({d});
  finish({record("ORCL", 2)});
  EXPECT_TRUE(in_backup("ORCL"));
  EXPECT_TRUE(log_contains("Failed to create session holder for SID: ORCL"));
}

TEST_F(FinishTest, ShutdownActionStartsMountsAndOpensAndReopensThePdbs) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.log_mode = "NOARCHIVELOG";
  d.pdbs = {{"P1", "READ WRITE"}, {"P2", "READ ONLY"}, {"P3", "MIGRATE"}};
  use_machine({d});
  const auto doc = read_prepared(CDbsBackupPrepare::prepare_instances({sid_of("CDB1")}, {}, {}));
  ASSERT_EQ(doc["CDB1"]["action"], "3");
  ASSERT_EQ(instance_attr("CDB1", "state"), "down");
  CDbsBackupFinish::finish_all(
      util::from_utf8("<databases><database sid=\"CDB1\" home=\"" + std::string(kHome) +
                      "\" timeUtc=\"t\" scn=\"\" action=\"3\"><pdbs>"
                      "<database name=\"P1\" mode=\"READ WRITE\"/>"
                      "<database name=\"P2\" mode=\"READ ONLY\"/>"
                      "<database name=\"P3\" mode=\"MIGRATE\"/></pdbs></database></databases>"),
      {}, false);
  EXPECT_EQ(instance_attr("CDB1", "state"), "open");
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "READ WRITE");
  EXPECT_EQ(pdb_mode("CDB1", "P2"), "READ ONLY");
  EXPECT_EQ(pdb_mode("CDB1", "P3"), "MIGRATE");
  const auto sent = statements_of("CDB1");
  EXPECT_NE(std::find(sent.begin(), sent.end(), "ALTER PLUGGABLE DATABASE \"P3\" OPEN UPGRADE"),
            sent.end());
}

TEST_F(FinishTest, ShutdownActionOnAnOpenDatabaseDoesNothing) {
  use_machine({db("ORCL")});
  finish({record("ORCL", 3, {SPdbInfo{u"P1", u"READ WRITE"}})});
  EXPECT_TRUE(log_has("No need to startup database: instance is open"));
  EXPECT_TRUE(calls_of("OCIDBStartup").empty());
  EXPECT_FALSE(log_contains("Restoring plugged dbs"));
}

TEST_F(FinishTest, FailingStartIsAWarningWithOneAttemptAndTenSecondsWait) {
  db_t d = db("ORCL");
  d.state = "down";
  d.extra = "<fault on=\"startup\" error=\"600\"/>";
  use_machine({d});
  finish({record("ORCL", 3)});
  EXPECT_TRUE(log_has("WARN|Unable to start database, attempt 1 of 1"));
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{10000}));
  EXPECT_TRUE(log_has("WARN|Failed to startup db: ORCL"));
  EXPECT_FALSE(log_contains("Failed to finish db backup"));
}

TEST_F(FinishTest, EachNothingToDoActionLogsItsMessage) {
  use_machine({db("A"), db("B")});
  finish({record("A", 0), record("A", 1), record("A", 4), record("A", 5), record("B", 6)});
  EXPECT_TRUE(log_has("Database backup prepare finished with error"));
  EXPECT_TRUE(log_has("Database is inactive. Nothing to do."));
  EXPECT_TRUE(log_has("Database backup performed by VSS. Nothing to do."));
  const auto lines = log_lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Oracle version is not supported. Nothing to do."), 2);
  EXPECT_TRUE(statements().empty());
  EXPECT_TRUE(log_has("Finish db backup. Sid: A, action: oracleSkipVss ok."));
}

TEST_F(FinishTest, ActionSevenIsAnErrorInTheLogAndNoFailure) {
  use_machine({db("ORCL")});
  EXPECT_NO_THROW(finish({record("ORCL", 7), record("ORCL", 1)}));
  EXPECT_TRUE(log_contains("Unexpected backup action: 7"));
  EXPECT_TRUE(log_contains("Failed to finish db backup. Sid: ORCL"));
  EXPECT_TRUE(log_has("Finish db backup. Sid: ORCL, action: unknown Failed."));
  EXPECT_TRUE(log_has("Database is inactive. Nothing to do."));
}

TEST_F(FinishTest, EmptyDatabasesElementOpensAndClosesTheStep) {
  EXPECT_NO_THROW(CDbsBackupFinish::finish_all(u"<databases/>", {}, false));
  EXPECT_TRUE(log_has("Finish dbs backup ok."));
}

TEST_F(FinishTest, UnreadableDocumentFailsBeforeAnyDatabase) {
  use_machine({db("ORCL")});
  try {
    CDbsBackupFinish::finish_all(u"<databases><database sid=\"ORCL\"/>", {}, false);
    FAIL() << "no failure";
  } catch (const exc::exc_base_t& e) {
    EXPECT_NE(std::string(e.what()).find("--tr:Failed to finish dbs backup"), std::string::npos)
        << e.what();
  }
  EXPECT_TRUE(statements().empty());
  EXPECT_TRUE(log_has("Finish dbs backup Failed."));
}

TEST_F(FinishTest, ManagerFinishRemovesTheMetaFile) {
  use_machine({db("ORCL")});
  COracleManager::instance().prepare(u"", {}, u"", u"");
  ASSERT_TRUE(meta_exists());
  COracleManager::instance().finish(u"<databases/>", {});
  EXPECT_FALSE(meta_exists());
}

TEST_F(FinishTest, ManagerFinishWithUnreadableDocumentKeepsTheMetaFile) {
  use_machine({db("ORCL")});
  COracleManager::instance().prepare(u"", {}, u"", u"");
  ASSERT_TRUE(meta_exists());
  try {
    COracleManager::instance().finish(u"not xml", {});
    FAIL() << "no failure";
  } catch (const exc::exc_base_t& e) {
    const std::string text = e.what();
    EXPECT_NE(text.find("--tr:Failed to finish dbs backup\n--tr:Oracle manager failed to finish dbs backup"),
              std::string::npos) << text;
  }
  EXPECT_TRUE(meta_exists());
}

TEST_F(FinishTest, ManagerFinishWithoutMetaFileEndsNormally) {
  EXPECT_NO_THROW(COracleManager::instance().finish(u"<databases/>", {}));
  EXPECT_FALSE(meta_exists());
}

}  // namespace
}  // namespace backup_test

namespace backup_test {
namespace {

class MetaFolderTest : public backup_test_t {};

TEST_F(MetaFolderTest, PrepareWhoseTempFolderCannotBeMadeStillReturnsItsDocument) {
  // A file where the temp folder should be: the folder cannot be made, the meta not written.
  folder_->raw_write(u"blocked", "x");
  config().tempLogPath = folder_->path(u"blocked\\logs\\");
  apply_config();
  db_t d;
  d.sid = "ORCL";
  use_machine({d});
  std::u16string document;
  EXPECT_NO_THROW(document = specific::oracle::COracleManager::instance().prepare(u"", {}, u"", u""));
  EXPECT_EQ(document, u"<databases />");  // no registry here: no instance found
  EXPECT_TRUE(log_has("WARN|Failed to save oracle backup meta"));
  EXPECT_NO_THROW(specific::oracle::COracleManager::instance().finish(document, {}));
  EXPECT_TRUE(log_contains("Failed to remove restore meta file: "));
}

}  // namespace
}  // namespace backup_test
