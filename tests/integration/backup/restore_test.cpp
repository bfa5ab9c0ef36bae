// The restore against the simulated client: the driver with its wait and the meta file, the
// recovery of a database with its attempts and waits (recorded, not slept), the last attempt,
// and the plugged databases.
#include <gtest/gtest.h>

#include <cstdint>

#include <algorithm>

#include "backup_fixture.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/restore/db_startup.h"
#include "oracle/restore/restore_driver.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupFinish;
using specific::oracle::CDbsBackupXml;
using specific::oracle::CDbStartup;
using specific::oracle::COracleManager;
using specific::oracle::CRestoreDriver;
using specific::oracle::SPdbInfo;

class RestoreTest : public backup_test_t {
 protected:
  void restore(const std::vector<specific::oracle::SDbPrepareInfo>& records) {
    CDbsBackupFinish::finish_all(document_of(records), {}, /*restore=*/true);
  }
  size_t count_sent(const std::string& sid, const std::string& sql) const {
    const auto all = statements_of(sid);
    return static_cast<size_t>(std::count(all.begin(), all.end(), sql));
  }
  void write_meta(const std::vector<specific::oracle::SDbPrepareInfo>& records) {
    CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), document_of(records), {}, u"", u"");
    ASSERT_TRUE(meta_exists());
  }
};

db_t db(const std::string& sid) {
  db_t d;
  d.sid = sid;
  return d;
}

db_t mounted_in_backup(const std::string& sid) {
  db_t d = db(sid);
  d.state = "mounted";
  d.backup = "ACTIVE";
  return d;
}

TEST_F(RestoreTest, MountedDatabaseInBackupStateIsEndedOpenedAndSwitched) {
  use_machine({mounted_in_backup("ORCL")});
  restore({record("ORCL", 2)});
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
  EXPECT_FALSE(in_backup("ORCL"));
  EXPECT_EQ(statements_of("ORCL"),
            (std::vector<std::string>{"SELECT STATUS FROM V$INSTANCE", "ALTER DATABASE END BACKUP",
                                      "ALTER DATABASE OPEN", "ALTER SYSTEM ARCHIVE LOG CURRENT"}));
  EXPECT_TRUE(sleeps_.empty());
}

TEST_F(RestoreTest, OpenDatabaseAtTheFirstAttemptGetsNoStatementButItsPdbsAreLookedAt) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.pdbs = {{"P1", "MOUNTED"}};
  use_machine({d});
  restore({record("CDB1", 2, {SPdbInfo{u"P1", u"READ WRITE"}})});
  EXPECT_EQ(count_sent("CDB1", "ALTER DATABASE END BACKUP"), 0u);
  EXPECT_EQ(count_sent("CDB1", "ALTER PLUGGABLE DATABASE \"P1\" OPEN READ WRITE"), 1u);
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "READ WRITE");
}

TEST_F(RestoreTest, OpenMigrateCountsAsOpen) {
  db_t d = db("ORCL");
  d.state = "open migrate";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_EQ(count_sent("ORCL", "ALTER DATABASE END BACKUP"), 0u);
  EXPECT_TRUE(sleeps_.empty());
}

TEST_F(RestoreTest, PdbAlreadyInItsModeGetsNoStatement) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.pdbs = {{"P1", "READ ONLY"}};
  use_machine({d});
  restore({record("CDB1", 2, {SPdbInfo{u"P1", u"READ ONLY"}})});
  for (const auto& s : statements_of("CDB1")) EXPECT_EQ(s.find("ALTER PLUGGABLE"), std::string::npos);
}

TEST_F(RestoreTest, PdbRecordedAsMigrateAndFoundMountedIsOpenedUpgrade) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.pdbs = {{"P1", "MOUNTED"}};
  use_machine({d});
  restore({record("CDB1", 2, {SPdbInfo{u"P1", u"MIGRATE"}})});
  EXPECT_EQ(count_sent("CDB1", "ALTER PLUGGABLE DATABASE \"P1\" OPEN UPGRADE"), 1u);
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "MIGRATE");
}

TEST_F(RestoreTest, PdbRecordedAsMigrateAndFoundMigrateGetsNoStatement) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.pdbs = {{"P1", "MIGRATE"}};
  use_machine({d});
  restore({record("CDB1", 2, {SPdbInfo{u"P1", u"MIGRATE"}})});
  EXPECT_EQ(count_sent("CDB1", "ALTER PLUGGABLE DATABASE \"P1\" OPEN UPGRADE"), 0u);
}

TEST_F(RestoreTest, FailingPdbIsAWarningAndTheNextFollows) {
  db_t d = db("CDB1");
  d.cdb = "YES";
  d.pdbs = {{"P2", "MOUNTED"}};
  use_machine({d});
  restore({record("CDB1", 2, {SPdbInfo{u"GONE", u"READ WRITE"}, SPdbInfo{u"P2", u"READ ONLY"}})});
  EXPECT_TRUE(log_has("WARN|Failed to restore pdb: GONE"));
  EXPECT_EQ(pdb_mode("CDB1", "P2"), "READ ONLY");
}

TEST_F(RestoreTest, PdbNameIsQuotedInBothStatements) {
  EXPECT_EQ(specific::oracle::pdb_mode_query(u"A'B"),
            "SELECT OPEN_MODE FROM V$PDBS WHERE NAME = 'A''B'");
  EXPECT_EQ(specific::oracle::pdb_open_statement(u"X\" OPEN; --", u"READ WRITE"),
            "ALTER PLUGGABLE DATABASE \"X\"\" OPEN; --\" OPEN READ WRITE");
}

TEST_F(RestoreTest, PdbModeOtherThanTheThreeRecordedFormsNeverReachesTheStatement) {
  EXPECT_EQ(specific::oracle::pdb_open_statement(u"P1", u"UPGRADE"),
            "ALTER PLUGGABLE DATABASE \"P1\" OPEN UPGRADE");
  for (const std::u16string mode : {u"MIGRATE", u"MOUNTED", u"READ WRITE; DROP USER X", u""}) {
    EXPECT_THROW(specific::oracle::pdb_open_statement(u"P1", mode), std::exception);
  }
}

TEST_F(RestoreTest, EmptyPdbListOpensNeitherStepNorSession) {
  use_machine({db("ORCL")});
  CDbStartup::restore_plugged_dbs(sid_of("ORCL"), {}, {});
  EXPECT_TRUE(calls_of("OCIServerAttach").empty());
  EXPECT_FALSE(log_contains("Restoring plugged dbs"));
}

TEST_F(RestoreTest, VssDatabaseThatIsMountedFailsEndBackupThroughAllAttempts) {
  db_t d = db("VSS1");
  d.state = "mounted";
  use_machine({d});
  restore({record("VSS1", 4)});
  EXPECT_GE(count_sent("VSS1", "ALTER DATABASE END BACKUP"), 3u);
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{15000, 15000, 15000}));
  EXPECT_TRUE(log_has("WARN|Failed to end backup"));
  EXPECT_TRUE(log_has("Unable to perform db restore. Wait for db initialization, attempt 3 of 3"));
  EXPECT_EQ(instance_attr("VSS1", "state"), "mounted");
}

TEST_F(RestoreTest, OpenFailingAfterEndBackupLeavesTheDatabaseMountedAtTheNextAttempts) {
  db_t d = mounted_in_backup("ORCL");
  d.extra = "<fault on=\"execute\" sql=\"ALTER DATABASE OPEN\" error=\"600\" times=\"1\"/>";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_EQ(instance_attr("ORCL", "state"), "mounted");
  EXPECT_EQ(count_sent("ORCL", "ALTER DATABASE OPEN"), 1u);
  EXPECT_TRUE(log_contains("ORA-01142"));
}

TEST_F(RestoreTest, InstanceStartedButNotMountedIsWaitedForThenMountedByTheLastAttempt) {
  db_t d = db("ORCL");
  d.state = "started";
  d.backup = "ACTIVE";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_EQ(sleeps_.size(), 3u);
  // The last attempt finds the instance there (a logon to a started instance works): nothing
  // more is tried.
  EXPECT_EQ(instance_attr("ORCL", "state"), "started");
}

TEST_F(RestoreTest, ZeroAttemptsRunTheLastAttemptAtOnce) {
  config().waitDbStartedAttemptCount = 0;
  apply_config();
  db_t d = mounted_in_backup("ORCL");
  d.state = "down";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_TRUE(sleeps_.empty());
  EXPECT_EQ(calls_of("OCIDBStartup").size(), 1u);
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
  EXPECT_FALSE(in_backup("ORCL"));
  EXPECT_TRUE(log_has("Startup mount, sid: ORCL ok."));
}

TEST_F(RestoreTest, DatabaseDownThroughAllAttemptsIsStartedByTheLastAttempt) {
  db_t d = mounted_in_backup("ORCL");
  d.state = "down";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{15000, 15000, 15000}));
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(RestoreTest, ServiceThatAnswersAfterTwoPollsIsRecoveredAtTheThirdAttempt) {
  db_t d = mounted_in_backup("ORCL");
  d.extra = "<fault on=\"attach\" error=\"12560\" times=\"2\"/>";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{15000, 15000}));
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(RestoreTest, FailingQueryLeavesTheProcedureWithoutFurtherAttempts) {
  db_t d = mounted_in_backup("ORCL");
  d.extra = "<fault on=\"execute\" sql=\"SELECT STATUS FROM V$INSTANCE\" error=\"600\"/>";
  use_machine({d});
  restore({record("ORCL", 2)});
  EXPECT_TRUE(sleeps_.empty());
  EXPECT_TRUE(log_contains("Failed to finish db backup. Sid: ORCL"));
}

TEST_F(RestoreTest, ShutdownRecordIsStartedUp) {
  db_t d = db("ORCL");
  d.state = "down";
  use_machine({d});
  restore({record("ORCL", 3)});
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(RestoreTest, NothingToDoActionsSendNothing) {
  use_machine({db("ORCL")});
  restore({record("ORCL", 0), record("ORCL", 1), record("ORCL", 5), record("ORCL", 6)});
  EXPECT_TRUE(statements().empty());
  EXPECT_TRUE(calls_of("OCIServerAttach").empty());
}

// --- the driver ----------------------------------------------------------------------------------

TEST_F(RestoreTest, RestoreRequiredIsTrueWhileTheMetaFileExists) {
  use_machine({db("ORCL")});
  EXPECT_FALSE(CRestoreDriver::restore_required());
  EXPECT_TRUE(log_has("Oracle restore is required: false"));
  write_meta({record("ORCL", 1)});
  EXPECT_TRUE(CRestoreDriver::restore_required());
}

TEST_F(RestoreTest, RestoreRequiredCreatesTheTempFolder) {
  ASSERT_FALSE(folder_->raw_exists(u"OracleLogBackup"));
  CRestoreDriver::restore_required();
  EXPECT_TRUE(folder_->raw_is_directory(u"OracleLogBackup"));
}

TEST_F(RestoreTest, DoRestoreWaitsFirstRemovesTheFileAndWalksTheDocument) {
  config().restoreWaitInSec = 45;
  apply_config();
  use_machine({mounted_in_backup("ORCL")});
  write_meta({record("ORCL", 2)});
  COracleManager::instance().do_restore();
  ASSERT_FALSE(sleeps_.empty());
  EXPECT_EQ(sleeps_.front(), 45000u);
  EXPECT_TRUE(log_has("Waiting for 45 sec"));
  EXPECT_FALSE(meta_exists());
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
  EXPECT_TRUE(log_has("Performing oracle db restore ok."));
}

TEST_F(RestoreTest, DoRestoreWithoutMetaFileStillWaitsAndSucceeds) {
  config().restoreWaitInSec = 2;
  apply_config();
  EXPECT_NO_THROW(COracleManager::instance().do_restore());
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{2000}));
}

TEST_F(RestoreTest, AWaitTooLongForThirtyTwoBitsOfMillisecondsIsCutRatherThanWrapped) {
  config().restoreWaitInSec = 5000000;  // 5e9 ms: wrapped, it would be about 0.7e9 ms
  apply_config();
  COracleManager::instance().do_restore();
  EXPECT_EQ(sleeps_, (std::vector<uint32_t>{UINT32_MAX}));
}

TEST_F(RestoreTest, ZeroWaitSleepsNothing) {
  COracleManager::instance().do_restore();
  EXPECT_TRUE(log_has("Waiting for 0 sec"));
  EXPECT_TRUE(sleeps_.empty());
}

TEST_F(RestoreTest, SecondRestoreFindsNoFileAndDoesNothing) {
  use_machine({mounted_in_backup("ORCL")});
  write_meta({record("ORCL", 2)});
  COracleManager::instance().do_restore();
  const size_t before = statements().size();
  COracleManager::instance().do_restore();
  EXPECT_EQ(statements().size(), before);
  EXPECT_FALSE(COracleManager::instance().restore_required());
}

TEST_F(RestoreTest, UnreadableMetaFileIsAWarningAndTheFileIsRemoved) {
  folder_->raw_mkdir(u"OracleLogBackup");
  folder_->raw_write(u"OracleLogBackup\\OracleMeta.xml", "<restore dbPrepareXml=");
  EXPECT_NO_THROW(COracleManager::instance().do_restore());
  EXPECT_TRUE(log_contains("Failed to get restore meta content: "));
  EXPECT_FALSE(meta_exists());
}

TEST_F(RestoreTest, MetaFileWithCredentialBlocksConnectsWithAnEmptyLogin) {
  use_machine({mounted_in_backup("ORCL")});
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), document_of({record("ORCL", 2)}),
                           {"BACKUP", "s3cret-Pw"}, u"DOM\\admin", u"c2VjcmV0");
  COracleManager::instance().do_restore();
  for (const auto& call : calls_of("OCISessionBegin")) {
    EXPECT_NE(call.find("cred=EXT"), std::string::npos) << call;
  }
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

}  // namespace
}  // namespace backup_test
