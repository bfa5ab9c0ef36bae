// The preparation against the simulated client: each row of the decision, the writer state and
// its skip set, plugged databases, backup state, and the failures of one database.
#include <gtest/gtest.h>

#include <algorithm>

#include "backup_fixture.h"
#include "common/text/convert.h"
#include "oracle/backup/backup_prepare.h"
#include "oracle/discovery/vss_state.h"
#include "prepare_support.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupPrepare;
using specific::oracle::CVssState;

const specific::oracle::conn_t kConn{"BACKUP", "s3cret-Pw"};

class PrepareTest : public backup_test_t {
 protected:
  prepared_doc_t prepare(const std::vector<db_t>& dbs, const std::string& configXml = "") {
    use_machine(dbs);
    document_ = CDbsBackupPrepare::prepare_instances(
        sids_of(dbs), CDbsBackupPrepare::parse_writer_sids(util::from_utf8(configXml)), kConn);
    return read_prepared(document_);
  }
  bool sent(const std::string& sid, const std::string& sql) const {
    const auto all = statements_of(sid);
    return std::find(all.begin(), all.end(), sql) != all.end();
  }
  static std::string writer(const std::string& sid) {
    return "<databases><database sid=\"" + sid + "\"/></databases>";
  }
  std::u16string document_;
};

db_t db(const std::string& sid) {
  db_t d;
  d.sid = sid;
  return d;
}

// --- the decision, one row each --------------------------------------------------------------

TEST_F(PrepareTest, DisabledProcessingWithArchiveLogIsOracleNoActionAndTouchesNothing) {
  config().disableOracleProcessing = true;
  apply_config();
  const auto doc = prepare({db("ORCL")});
  EXPECT_EQ(doc["ORCL"]["action"], "6");
  EXPECT_FALSE(sent("ORCL", "ALTER DATABASE BEGIN BACKUP"));
  EXPECT_TRUE(calls_of("OCIDBShutdown").empty());
  EXPECT_EQ(doc["ORCL"]["scn"], "");
}

TEST_F(PrepareTest, DisabledProcessingWithoutArchiveLogIsOracleSkipVssAndTouchesNothing) {
  config().disableOracleProcessing = true;
  apply_config();
  db_t d = db("ORCL");
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["ORCL"]["action"], "5");
  EXPECT_TRUE(calls_of("OCIDBShutdown").empty());
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(PrepareTest, VersionTenWithoutSupportAndArchiveLogIsOracleNoAction) {
  db_t d = db("ORCL");
  d.version = "10.2.0.4.0";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["ORCL"]["action"], "6");
  EXPECT_FALSE(sent("ORCL", "ALTER DATABASE BEGIN BACKUP"));
}

TEST_F(PrepareTest, VersionTenWithoutSupportAndNoArchiveLogIsOracleSkipVssAndStaysOpen) {
  db_t d = db("ORCL");
  d.version = "10.2.0.4.0";
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["ORCL"]["action"], "5");
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(PrepareTest, NoArchiveLogWithSkipSettingIsOracleSkipVssAndStaysOpen) {
  config().skipNoArchiveLogDb = true;
  apply_config();
  db_t d = db("ORCL");
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["ORCL"]["action"], "5");
  EXPECT_TRUE(calls_of("OCIDBShutdown").empty());
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(PrepareTest, NoArchiveLogIsShutDown) {
  db_t d = db("ORCL");
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["ORCL"]["action"], "3");
  EXPECT_EQ(instance_attr("ORCL", "state"), "down");
  EXPECT_EQ(doc["ORCL"]["scn"], "");
}

TEST_F(PrepareTest, ArchiveLogWithUsableWriterIsVssWithItsScnAndNoBackupState) {
  const auto doc = prepare({db("ORCL")}, writer("ORCL"));
  EXPECT_EQ(doc["ORCL"]["action"], "4");
  EXPECT_EQ(doc["ORCL"]["scn"], "2741980");
  EXPECT_FALSE(sent("ORCL", "ALTER DATABASE BEGIN BACKUP"));
  EXPECT_FALSE(in_backup("ORCL"));
  EXPECT_TRUE(log_has("Database is in correct state for VSS backup. Nothing to do."));
  EXPECT_FALSE(CVssState::instance().should_skip(u"ORCL"));
}

TEST_F(PrepareTest, ArchiveLogWithoutWriterIsBackupStateWithItsScn) {
  const auto doc = prepare({db("ORCL")});
  EXPECT_EQ(doc["ORCL"]["action"], "2");
  EXPECT_EQ(doc["ORCL"]["BackupWithBackupState"], "true");
  EXPECT_EQ(doc["ORCL"]["scn"], "2741980");
  EXPECT_TRUE(sent("ORCL", "ALTER DATABASE BEGIN BACKUP"));
  EXPECT_TRUE(in_backup("ORCL"));
}

// --- writer state and the skip set ------------------------------------------------------------

TEST_F(PrepareTest, WriterSidInLowerCaseMatchesTheInstanceInUpperCase) {
  const auto doc = prepare({db("ORCLW1")}, "<databases><database sid=\"orclw1\"/></databases>");
  EXPECT_EQ(doc["ORCLW1"]["action"], "4");
  EXPECT_TRUE(log_has("VSS writer for SID ORCLW1 is enabled"));
}

TEST_F(PrepareTest, InstanceInLowerCaseMatchesWriterSidInUpperCase) {
  const auto doc = prepare({db("orclw2")}, "<databases><x sid=\"ORCLW2\"/></databases>");
  EXPECT_EQ(doc["orclw2"]["action"], "4");
}

TEST_F(PrepareTest, DatabaseOnAsmWithWriterEnabledIsSkippedAndPutInBackupState) {
  db_t d = db("ASMDB1");
  d.on_asm = true;
  const auto doc = prepare({d}, writer("ASMDB1"));
  EXPECT_EQ(doc["ASMDB1"]["action"], "2");
  EXPECT_TRUE(CVssState::instance().should_skip(u"ASMDB1"));
  EXPECT_TRUE(log_has("Located on ASM: true"));
  EXPECT_TRUE(log_has("Skip from VSS: true"));
}

TEST_F(PrepareTest, ContainerDatabaseOfVersion12WithWriterIsSkippedBackedUpAndKeepsItsPdbs) {
  db_t d = db("CDBW1");
  d.version = "12.1.0.2.0";
  d.cdb = "YES";
  d.pdbs = {{"PDB1", "READ WRITE"}, {"PDB2", "READ ONLY"}};
  const auto doc = prepare({d}, writer("CDBW1"));
  EXPECT_EQ(doc["CDBW1"]["action"], "2");
  EXPECT_TRUE(CVssState::instance().should_skip(u"CDBW1"));
  EXPECT_EQ(doc["CDBW1"].pdbs, (std::vector<std::pair<std::string, std::string>>{
                                   {"PDB1", "READ WRITE"}, {"PDB2", "READ ONLY"}}));
  EXPECT_TRUE(log_has("Pluggable: true"));
}

TEST_F(PrepareTest, ContainerDatabaseWithoutWriterStillKeepsItsPdbsModes) {
  db_t d = db("CDBNW");
  d.cdb = "YES";
  d.pdbs = {{"SALES", "READ WRITE"}, {"HR", "MIGRATE"}, {"OLD", "MOUNTED"}};
  const auto doc = prepare({d});
  EXPECT_EQ(doc["CDBNW"]["action"], "2");
  EXPECT_EQ(doc["CDBNW"].pdbs, (std::vector<std::pair<std::string, std::string>>{
                                   {"SALES", "READ WRITE"}, {"HR", "MIGRATE"}}));
  EXPECT_FALSE(CVssState::instance().should_skip(u"CDBNW"));
}

TEST_F(PrepareTest, PluggedDatabaseThatIsMountedIsLeftOut) {
  db_t d = db("CDBM");
  d.cdb = "YES";
  d.pdbs = {{"P1", "MOUNTED"}};
  const auto doc = prepare({d});
  EXPECT_TRUE(doc["CDBM"].pdbs.empty());
}

TEST_F(PrepareTest, NonContainerOfVersion12OnFilesWithWriterIsVssAndNotSkipped) {
  db_t d = db("NCDB12");
  d.version = "12.2.0.1.0";
  const auto doc = prepare({d}, writer("NCDB12"));
  EXPECT_EQ(doc["NCDB12"]["action"], "4");
  EXPECT_FALSE(CVssState::instance().should_skip(u"NCDB12"));
  EXPECT_TRUE(doc["NCDB12"].pdbs.empty());
}

TEST_F(PrepareTest, WriterEnabledWithoutArchiveLogIsSkippedThenShutDown) {
  db_t d = db("NOARCW");
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d}, writer("NOARCW"));
  EXPECT_EQ(doc["NOARCW"]["action"], "3");
  EXPECT_TRUE(CVssState::instance().should_skip(u"NOARCW"));
}

TEST_F(PrepareTest, WriterEnabledWithoutArchiveLogAndSkipSettingIsSkippedAndOracleSkipVss) {
  config().skipNoArchiveLogDb = true;
  apply_config();
  db_t d = db("NOARCS");
  d.log_mode = "NOARCHIVELOG";
  const auto doc = prepare({d}, writer("NOARCS"));
  EXPECT_EQ(doc["NOARCS"]["action"], "5");
  EXPECT_TRUE(CVssState::instance().should_skip(u"NOARCS"));
}

TEST_F(PrepareTest, VersionTenWithWriterMayStandInTheSkipSetThoughNothingWasDone) {
  db_t d = db("V10W");
  d.version = "10.2.0.4.0";
  d.on_asm = true;
  const auto doc = prepare({d}, writer("V10W"));
  EXPECT_EQ(doc["V10W"]["action"], "6");
  EXPECT_TRUE(CVssState::instance().should_skip(u"V10W"));
}

TEST_F(PrepareTest, VersionElevenIsSupportedWhateverSupportOracle10Says) {
  db_t d = db("V11");
  d.version = "11.2.0.4.0";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["V11"]["action"], "2");
}

TEST_F(PrepareTest, VersionTenWithSupportSettingIsPutInBackupState) {
  config().supportOracle10 = true;
  apply_config();
  db_t d = db("V10S");
  d.version = "10.2.0.4.0";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["V10S"]["action"], "2");
}

TEST_F(PrepareTest, EmptyConfigTakesTheBackupPathForEveryArchiveLogDatabase) {
  const auto doc = prepare({db("A1"), db("A2")});
  EXPECT_EQ(doc["A1"]["action"], "2");
  EXPECT_EQ(doc["A2"]["action"], "2");
  EXPECT_TRUE(log_has("VSS writer for SID A1 is disabled"));
}

// --- which instances get a record ----------------------------------------------------------------

TEST_F(PrepareTest, TemporarySidGetsNoRecordButOneHoldingTheLettersFurtherOnDoes) {
  const auto doc = prepare({db("TreloTmp1"), db("XTreloTmp")});
  EXPECT_EQ(doc.order, (std::vector<std::string>{"XTreloTmp"}));
}

TEST_F(PrepareTest, AsmInstanceGetsNoRecord) {
  use_machine({db("ORCL")});
  auto asm_sid = sid_of("+ASM");
  asm_sid.isAsm = true;
  const auto doc = read_prepared(
      CDbsBackupPrepare::prepare_instances({asm_sid, sid_of("ORCL")}, {}, kConn));
  EXPECT_EQ(doc.order, (std::vector<std::string>{"ORCL"}));
}

TEST_F(PrepareTest, NoInstanceGivesAnEmptyDocument) {
  use_machine({});
  EXPECT_EQ(CDbsBackupPrepare::prepare_instances({}, {}, kConn), u"<databases />");
}

// --- states found -------------------------------------------------------------------------------

TEST_F(PrepareTest, MountedInstanceIsInactiveWithoutPdbs) {
  db_t d = db("MNT");
  d.state = "mounted";
  d.cdb = "YES";
  d.pdbs = {{"P1", "READ WRITE"}};
  const auto doc = prepare({d});
  EXPECT_EQ(doc["MNT"]["action"], "1");
  EXPECT_TRUE(doc["MNT"].pdbs.empty());
  EXPECT_EQ(doc["MNT"]["scn"], "");
}

TEST_F(PrepareTest, SuspendedDatabaseIsInactive) {
  db_t d = db("SUSP");
  d.database_status = "SUSPENDED";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["SUSP"]["action"], "1");
}

TEST_F(PrepareTest, OneActiveFileAmongOthersCountsAsBackupStateWithoutBeginBackup) {
  db_t d = db("HALF");
  d.extra = "<data_file number=\"9\" name=\"C:\\oradata\\HALF\\X.DBF\" backup=\"ACTIVE\"/>";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["HALF"]["action"], "2");
  EXPECT_FALSE(sent("HALF", "ALTER DATABASE BEGIN BACKUP"));
  EXPECT_TRUE(log_has("Database already in backup state"));
}

// --- failures of one database -------------------------------------------------------------------

TEST_F(PrepareTest, RefusedSessionIsFailureWithoutTextAndTheNextDatabaseGoesOn) {
  db_t refusing = db("NOLOGON");
  refusing.os_logon = "none";
  const auto doc = read_prepared([&] {
    use_machine({refusing, db("ORCL")});
    return CDbsBackupPrepare::prepare_instances(sids_of({refusing, db("ORCL")}), {},
                                                {"BACKUP", "wrong"});
  }());
  EXPECT_EQ(doc["NOLOGON"]["action"], "0");
  EXPECT_EQ(doc["NOLOGON"]["errMsg"], "");
  EXPECT_EQ(doc["NOLOGON"]["BackupWithBackupState"], "false");
  EXPECT_TRUE(log_contains("Failed to create session holder for SID: NOLOGON"));
}

TEST_F(PrepareTest, FailingBeginBackupIsFailureWithItsTextAndOtherDatabasesAreUnharmed) {
  db_t bad = db("BAD");
  bad.extra = "<fault on=\"execute\" sql=\"ALTER DATABASE BEGIN BACKUP\" error=\"1123\"/>";
  const auto doc = prepare({bad, db("GOOD")});
  EXPECT_EQ(doc["BAD"]["action"], "0");
  EXPECT_NE(doc["BAD"]["errMsg"].find("ORA-01123"), std::string::npos) << doc["BAD"]["errMsg"];
  EXPECT_EQ(doc["GOOD"]["action"], "2");
  EXPECT_TRUE(log_contains("Failed to prepare db for backup. Sid: BAD"));
  EXPECT_TRUE(log_contains("Prepare db for backup. Sid: BAD Failed."));
}

TEST_F(PrepareTest, FailingScnKeepsTheBackupActionWithAnEmptyScnAndTheText) {
  db_t d = db("NOSCN");
  d.extra = "<fault on=\"execute\" sql=\"SELECT CURRENT_SCN FROM V$DATABASE\" error=\"600\"/>";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["NOSCN"]["action"], "2");
  EXPECT_EQ(doc["NOSCN"]["scn"], "");
  EXPECT_NE(doc["NOSCN"]["errMsg"].find("ORA-00600"), std::string::npos);
  EXPECT_TRUE(in_backup("NOSCN"));
}

TEST_F(PrepareTest, FailingShutdownLeavesFailure) {
  db_t d = db("NOSHUT");
  d.log_mode = "NOARCHIVELOG";
  d.extra = "<fault on=\"execute\" sql=\"ALTER DATABASE CLOSE NORMAL\" error=\"1154\"/>";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["NOSHUT"]["action"], "0");
  EXPECT_NE(doc["NOSHUT"]["errMsg"].find("ORA-01154"), std::string::npos);
}

TEST_F(PrepareTest, FailingPdbListIsAWarningAndThePreparationGoesOn) {
  db_t d = db("CDBF");
  d.cdb = "YES";
  d.pdbs = {{"P1", "READ WRITE"}};
  d.extra = "<fault on=\"execute\" sql=\"SELECT NAME, OPEN_MODE FROM V$PDBS\" error=\"600\"/>";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["CDBF"]["action"], "2");
  EXPECT_TRUE(doc["CDBF"].pdbs.empty());
  EXPECT_TRUE(log_has("WARN|Failed to gather plugged dbs info"));
  EXPECT_EQ(doc["CDBF"]["errMsg"], "");
}

TEST_F(PrepareTest, FailingStateCheckIsFailureBeforeAnythingChanged) {
  db_t d = db("NOSTATE");
  d.extra = "<fault on=\"execute\" sql=\"SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE\" error=\"600\"/>";
  const auto doc = prepare({d});
  EXPECT_EQ(doc["NOSTATE"]["action"], "0");
  EXPECT_FALSE(in_backup("NOSTATE"));
}

TEST_F(PrepareTest, PasswordAppearsNowhere) {
  const auto doc = prepare({db("ORCL")});
  EXPECT_EQ(util::to_utf8(document_).find("s3cret-Pw"), std::string::npos);
  EXPECT_EQ(journal_text().find("s3cret-Pw"), std::string::npos);
  for (const auto& line : log_lines()) EXPECT_EQ(line.find("s3cret-Pw"), std::string::npos) << line;
}

}  // namespace
}  // namespace backup_test
