#include <gtest/gtest.h>

#include <string>

#include "client_test_support.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"

namespace {

using dsl_test::has_line;
using dsl_test::null_cell;
using dsl_test::row_of;
using namespace specific::oracle;

const char kStatus[] = "SELECT STATUS FROM V$INSTANCE";
const char kDbStatus[] = "SELECT DATABASE_STATUS FROM V$INSTANCE";
const char kOptions[] = "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE";
const char kName[] = "SELECT NAME FROM V$DATABASE";
const char kControlFile[] = "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1";
const char kVersion[] = "SELECT VERSION FROM V$INSTANCE";

class SessionState : public dsl_test::client_test_t {
 protected:
  void log_on(bool instanceDown = false) {
    if (instanceDown) oci_->fail("OCISessionBegin", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
    session_ = std::make_shared<COracleSession>(conn_t{});
    session_->init(kLogonSysdba);
    oci_->clear_calls();
  }
  void SetUp() override { log_on(); }
  size_t queries() const { return oci_->count("OCIStmtPrepare"); }

  std::shared_ptr<COracleSession> session_;
};

TEST_F(SessionState, InstanceOpenWhenStatusIsOpen) {
  oci_->set_rows(kStatus, {row_of({"open"})});
  EXPECT_TRUE(session_->is_instance_open(false));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Checking oracle instance state"));
  EXPECT_TRUE(has_line(lines, "Oracle instance status: OPEN"));
  EXPECT_TRUE(has_line(lines, "Checking oracle instance state ok."));
}

TEST_F(SessionState, InstanceOpenMigrateIsOpen) {
  oci_->set_rows(kStatus, {row_of({"OPEN MIGRATE"})});
  EXPECT_TRUE(session_->is_instance_open(false));
}

TEST_F(SessionState, InstanceMountedOrStartedIsNotOpen) {
  oci_->set_rows(kStatus, {row_of({"MOUNTED"})});
  EXPECT_FALSE(session_->is_instance_open(false));
  oci_->set_rows(kStatus, {row_of({"STARTED"})});
  EXPECT_FALSE(session_->is_instance_open(false));
}

TEST_F(SessionState, InstanceWithoutAStatusRowIsNotOpen) {
  EXPECT_FALSE(session_->is_instance_open(false));
}

TEST_F(SessionState, AssumedOpenAsksNothing) {
  EXPECT_TRUE(session_->is_instance_open(true));
  EXPECT_EQ(queries(), 0u);
}

TEST_F(SessionState, InstanceFoundDownAtLogonIsNotOpenAndNothingIsAsked) {
  log_on(/*instanceDown=*/true);
  ASSERT_TRUE(session_->instance_down());
  EXPECT_FALSE(session_->is_instance_open(true));
  EXPECT_FALSE(session_->is_instance_open(false));
  EXPECT_EQ(queries(), 0u);
  EXPECT_TRUE(has_line(log_lines(), "Oracle instance is shutdown"));
}

TEST_F(SessionState, FailedStatusQueryCarriesItsTraceLine) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  try {
    session_->is_instance_open(false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.messages().back().text, "OracleSession: failed to check if instance is open.");
  }
}

TEST_F(SessionState, DatabaseActiveOnlyWhenActive) {
  oci_->set_rows(kDbStatus, {row_of({"ACTIVE"})});
  EXPECT_TRUE(session_->is_database_active());
  EXPECT_TRUE(has_line(log_lines(), "Oracle db status: ACTIVE"));
  oci_->set_rows(kDbStatus, {row_of({"SUSPENDED"})});
  EXPECT_FALSE(session_->is_database_active());
  oci_->set_rows(kDbStatus, {row_of({"INSTANCE RECOVERY"})});
  EXPECT_FALSE(session_->is_database_active());
  oci_->set_rows(kDbStatus, {});
  EXPECT_FALSE(session_->is_database_active());
}

TEST_F(SessionState, DatabaseActiveFailureCarriesItsTraceLine) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  try {
    session_->is_database_active();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.messages().back().text, "Failed to check if oracle db is active.");
  }
}

TEST_F(SessionState, OptionsOfAReadWriteArchivelogDatabase) {
  oci_->set_rows(kOptions, {row_of({"read write", "archivelog"})});
  bool readOnly = true, archiveLog = false;
  session_->get_database_options(readOnly, archiveLog);
  EXPECT_FALSE(readOnly);
  EXPECT_TRUE(archiveLog);
}

TEST_F(SessionState, NoarchivelogIsNotArchivelogAndReadOnlyWithApplyIsReadOnly) {
  oci_->set_rows(kOptions, {row_of({"READ ONLY WITH APPLY", "NOARCHIVELOG"})});
  bool readOnly = false, archiveLog = true;
  session_->get_database_options(readOnly, archiveLog);
  EXPECT_TRUE(readOnly);
  EXPECT_FALSE(archiveLog);
}

TEST_F(SessionState, EitherColumnMayCarryEitherWord) {
  oci_->set_rows(kOptions, {row_of({"ARCHIVELOG", "READ ONLY"})});
  bool readOnly = false, archiveLog = false;
  session_->get_database_options(readOnly, archiveLog);
  EXPECT_TRUE(readOnly);
  EXPECT_TRUE(archiveLog);
}

TEST_F(SessionState, OptionsRowDroppedForANullLeavesBothFalse) {
  auto row = row_of({"READ ONLY"});
  row.cells.push_back(null_cell());
  oci_->set_rows(kOptions, {row});
  bool readOnly = true, archiveLog = true;
  session_->get_database_options(readOnly, archiveLog);
  EXPECT_FALSE(readOnly);
  EXPECT_FALSE(archiveLog);
}

TEST_F(SessionState, OptionsFailureCarriesItsTraceLine) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1507, "ORA-01507: database not mounted\n");
  bool readOnly = false, archiveLog = false;
  try {
    session_->get_database_options(readOnly, archiveLog);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.messages().back().text, "OracleSession: failed to get database options.");
  }
}

TEST_F(SessionState, DatabaseNameKeepsItsCaseAndIsAskedOnce) {
  oci_->set_rows(kName, {row_of({"orcl"})});
  EXPECT_EQ(session_->get_database_name(), u"orcl");
  EXPECT_EQ(session_->get_database_name(), u"orcl");
  EXPECT_EQ(queries(), 1u);
}

TEST_F(SessionState, EmptyDatabaseNameIsAskedAgain) {
  EXPECT_EQ(session_->get_database_name(), u"");
  oci_->set_rows(kName, {row_of({"ORCL"})});
  EXPECT_EQ(session_->get_database_name(), u"ORCL");
  EXPECT_EQ(queries(), 2u);
}

TEST_F(SessionState, DatabaseNameFailureCarriesItsTraceLine) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1507, "ORA-01507: database not mounted\n");
  try {
    session_->get_database_name();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.messages().back().text, "OracleSession: failed to get database name.");
  }
}

TEST_F(SessionState, ControlFileInADiskGroupIsOnAsm) {
  oci_->set_rows(kControlFile, {row_of({"+DATA/ORCL/CONTROLFILE/current.261.1031050791"})});
  EXPECT_TRUE(session_->is_control_file_on_asm());
}

TEST_F(SessionState, ControlFileOnADriveIsNotOnAsm) {
  oci_->set_rows(kControlFile, {row_of({"D:\\APP\\ORADATA\\ORCL\\CONTROL01.CTL"})});
  EXPECT_FALSE(session_->is_control_file_on_asm());
  oci_->set_rows(kControlFile, {row_of({"D:\\A+B\\CONTROL01.CTL"})});
  EXPECT_FALSE(session_->is_control_file_on_asm());
}

TEST_F(SessionState, ControlFileOfAStoppedInstanceIsNotOnAsmAndNothingIsAsked) {
  log_on(/*instanceDown=*/true);
  EXPECT_FALSE(session_->is_control_file_on_asm());
  EXPECT_EQ(queries(), 0u);
}

TEST_F(SessionState, UninitialisedSessionAsksNothing) {
  COracleSession fresh(conn_t{});
  EXPECT_FALSE(fresh.is_control_file_on_asm());
  fresh.read_version();
  EXPECT_FALSE(*fresh.is_version_12_or_higher());
  EXPECT_FALSE(*fresh.is_version_below_11());
  EXPECT_EQ(oci_->lines().size(), 0u);
}

struct version_case_t {
  const char* text;
  bool below11;
  bool atLeast12;
};

class SessionVersion : public SessionState,
                       public ::testing::WithParamInterface<version_case_t> {};

TEST_P(SessionVersion, FlagsFollowTheMajorVersion) {
  oci_->set_rows(kVersion, {row_of({GetParam().text})});
  EXPECT_FALSE(session_->is_version_12_or_higher());
  EXPECT_FALSE(session_->is_version_below_11());
  session_->read_version();
  ASSERT_TRUE(session_->is_version_12_or_higher());
  ASSERT_TRUE(session_->is_version_below_11());
  EXPECT_EQ(*session_->is_version_below_11(), GetParam().below11);
  EXPECT_EQ(*session_->is_version_12_or_higher(), GetParam().atLeast12);
}

INSTANTIATE_TEST_SUITE_P(Versions, SessionVersion,
                         ::testing::Values(version_case_t{"10.2.0.4.0", true, false},
                                           version_case_t{"11.2.0.4.0", false, false},
                                           version_case_t{"12.1.0.2.0", false, true},
                                           version_case_t{"19.0.0.0.0", false, true},
                                           version_case_t{"12", false, false}));

TEST_F(SessionState, VersionThatIsNoNumberThrows) {
  oci_->set_rows(kVersion, {row_of({"abc.1"})});
  EXPECT_THROW(session_->read_version(), exc::runtime_exc_t);
}

TEST_F(SessionState, VersionOfAStoppedInstanceIsNeitherAndNothingIsAsked) {
  log_on(/*instanceDown=*/true);
  session_->read_version();
  EXPECT_FALSE(*session_->is_version_12_or_higher());
  EXPECT_FALSE(*session_->is_version_below_11());
  EXPECT_EQ(queries(), 0u);
}

TEST_F(SessionState, StartupCallsTheClientInNomountMode) {
  session_->startup();
  EXPECT_EQ(oci_->lines_of("OCIDBStartup"),
            (std::vector<std::string>{"OCIDBStartup svcctx#3 err=error#2 admin=null mode=0 flags=0"}));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Starting up database"));
  EXPECT_TRUE(has_line(lines, "Startup in NOMOUNT mode"));
  EXPECT_TRUE(has_line(lines, "Starting up database ok."));
}

TEST_F(SessionState, StartupFailureCarriesItsTraceLine) {
  oci_->fail("OCIDBStartup", OCI_ERROR, 1031, "ORA-01031: insufficient privileges\n");
  try {
    session_->startup();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1031u);
    EXPECT_EQ(e.messages().back().text, "Failed to startup database");
  }
}

TEST_F(SessionState, MountAndOpenRunsTwoStatementsInOrder) {
  session_->mount_and_open();
  const auto prepares = oci_->lines_of("OCIStmtPrepare");
  ASSERT_EQ(prepares.size(), 2u);
  EXPECT_NE(prepares[0].find("sql=\"ALTER DATABASE MOUNT\""), std::string::npos);
  EXPECT_NE(prepares[1].find("sql=\"ALTER DATABASE OPEN\""), std::string::npos);
}

TEST_F(SessionState, MountFailureStopsBeforeOpen) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1100, "ORA-01100: database already mounted\n");
  EXPECT_THROW(session_->mount_and_open(), COracleExc);
  EXPECT_EQ(oci_->count("OCIStmtPrepare"), 1u);
}

TEST_F(SessionState, ShutdownIsImmediateThenCloseThenDismountThenFinal) {
  // The answers of the two shut-down calls do not matter.
  oci_->fail("OCIDBShutdown", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n", 2);
  session_->shutdown();
  std::vector<std::string> order;
  for (const auto& call : oci_->calls()) {
    if (call.function == "OCIDBShutdown") order.push_back(call.line());
    if (call.function == "OCIStmtPrepare") order.push_back(call.line().substr(call.line().find("sql=")));
  }
  EXPECT_EQ(order,
            (std::vector<std::string>{
                "OCIDBShutdown svcctx#3 err=error#2 admin=null mode=3",
                "sql=\"ALTER DATABASE CLOSE NORMAL\" length=27 language=1 mode=0",
                "sql=\"ALTER DATABASE DISMOUNT\" length=23 language=1 mode=0",
                "OCIDBShutdown svcctx#3 err=error#2 admin=null mode=5"}));
  EXPECT_TRUE(has_line(log_lines(), "Shutting down database ok."));
}

TEST_F(SessionState, ShutdownOfAClosedDatabaseFailsAtTheCloseStatement) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 1109, "ORA-01109: database not open\n");
  try {
    session_->shutdown();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1109u);
    EXPECT_EQ(e.messages().back().text, "Failed to shutdown database");
    EXPECT_EQ(e.messages()[e.messages().size() - 2].text,
              "Failed to exec query [ALTER DATABASE CLOSE NORMAL].");
  }
  EXPECT_EQ(oci_->count("OCIDBShutdown"), 1u);
}

}  // namespace
