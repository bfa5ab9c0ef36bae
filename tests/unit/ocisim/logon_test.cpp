// Attach and logon: which instance a local connection reaches and who may log on to it.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class LogonTest : public OcisimTest {};

TEST_F(LogonTest, AnUnknownSidFailsAttachWithTheProtocolAdapterError) {
  write_scenario(single_instance());
  client_t client(api());
  EXPECT_EQ(client.attach("SALES", kHome), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12560);
  EXPECT_EQ(client.error_text(), "ORA-12560: TNS:protocol adapter error\n");
}

TEST_F(LogonTest, AnEmptySidFailsAttachAsAnUnknownOneDoes) {
  write_scenario(single_instance());
  client_t client(api());
  EXPECT_EQ(client.attach("", kHome), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12560);
}

TEST_F(LogonTest, TheSidIsMatchedWithoutRegardToCaseAndTheHomeWithoutItsTrailingSeparator) {
  write_scenario(single_instance());
  client_t client(api());
  EXPECT_EQ(client.attach("orcl", std::string("c:/APP/oracle/product/19.0.0/dbhome_1\\")), OCI_SUCCESS);
}

TEST_F(LogonTest, TheRightSidInAnotherHomeIsNoInstance) {
  write_scenario(single_instance());
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", "C:\\app\\oracle\\product\\12.2.0\\dbhome_1"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12560);
}

TEST_F(LogonTest, AStoppedServiceFailsAttachWithTheProtocolAdapterError) {
  write_scenario(single_instance("", "service=\"stopped\""));
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12560);
}

TEST_F(LogonTest, AnUnsetScenarioIsAMachineWithoutInstances) {
  set_env("OCISIM_SCENARIO", "");
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12560);
}

TEST_F(LogonTest, AScenarioThatIsNoXmlIsReportedAsAnInternalErrorNamingTheFile) {
  write_scenario("<machine><instance sid=\"ORCL\"></machine>");
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 600);
  EXPECT_NE(client.error_text().find("machine.xml"), std::string::npos) << client.error_text();
}

TEST_F(LogonTest, OperatingSystemAuthenticationAsSysdbaIsLetInByDefault) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS) << client.error_text();
  std::vector<row_t> rows;
  ASSERT_EQ(client.query("SELECT USER FROM DUAL", 1, rows), OCI_NO_DATA);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][0].text, "SYS");
}

TEST_F(LogonTest, OperatingSystemAuthenticationWithoutSysdbaIsRefusedUnlessTheScenarioAllowsIt) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT), OCI_ERROR);
  EXPECT_EQ(client.error_text(), "ORA-01017: invalid username/password; logon denied\n");
}

TEST_F(LogonTest, AnOperatingSystemUserOutsideTheDbaGroupGetsInsufficientPrivilegesAsSysdba) {
  write_scenario(single_instance("", "os_logon=\"none\""));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_ERROR);
  EXPECT_EQ(client.error_text(), "ORA-01031: insufficient privileges\n");
}

TEST_F(LogonTest, AnOrdinaryAccountLogsOnWithItsPassword) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT, "scott", "tiger"), OCI_SUCCESS) << client.error_text();
  std::vector<row_t> rows;
  ASSERT_EQ(client.query("SELECT USER FROM DUAL", 1, rows), OCI_NO_DATA);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][0].text, "SCOTT");
}

TEST_F(LogonTest, AWrongPasswordIsRefusedWithInvalidUsernamePassword) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT, "SCOTT", "Tiger"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1017);
}

TEST_F(LogonTest, AMemberOfTheDbaGroupIsLetInAsSysdbaWhateverPasswordItGives) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_SYSDBA, "SCOTT", "wrong"), OCI_SUCCESS) << client.error_text();
}

TEST_F(LogonTest, WithoutTheDbaGroupSysdbaNeedsAnAccountWithThePrivilege) {
  write_scenario(single_instance("", "os_logon=\"none\""));
  {
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_SYSDBA, "BACKUP", "secret"), OCI_SUCCESS) << client.error_text();
  }
  {
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_SYSDBA, "SCOTT", "tiger"), OCI_ERROR);
    EXPECT_EQ(client.error_code(), 1031);
  }
  {
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_SYSDBA, "BACKUP", "wrong"), OCI_ERROR);
    EXPECT_EQ(client.error_code(), 1017);
  }
}

TEST_F(LogonTest, SysdbaThenDefaultWithAWrongPasswordFailsBothTimes) {
  write_scenario(single_instance("", "os_logon=\"none\""));
  client_t first(api());
  ASSERT_EQ(first.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(first.logon(OCI_SYSDBA, "SYSTEM", "nope"), OCI_ERROR);
  EXPECT_EQ(first.error_code(), 1017);
  client_t second(api());
  ASSERT_EQ(second.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(second.logon(OCI_DEFAULT, "SYSTEM", "nope"), OCI_ERROR);
  EXPECT_EQ(second.error_code(), 1017);
  const auto calls = journal("CALL");
  EXPECT_TRUE(contains(calls, "OCISessionBegin svc=svc#")) << ::testing::PrintToString(calls);
  EXPECT_TRUE(contains(calls, "cred=RDBMS user=SYSTEM mode=2 => ERROR ORA-01017"));
  EXPECT_TRUE(contains(calls, "cred=RDBMS user=SYSTEM mode=0 => ERROR ORA-01017"));
}

TEST_F(LogonTest, ALockedAccountAndSysWithoutSysdbaAreRefusedAsOracleRefusesThem) {
  write_scenario(single_instance("<account user=\"OLD\" password=\"x\" locked=\"yes\"/>"
                                 "<account user=\"SYS\" password=\"sys\" sysdba=\"yes\"/>"));
  client_t locked(api());
  ASSERT_EQ(locked.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(locked.logon(OCI_DEFAULT, "OLD", "x"), OCI_ERROR);
  EXPECT_EQ(locked.error_code(), 28000);
  client_t sys(api());
  ASSERT_EQ(sys.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(sys.logon(OCI_DEFAULT, "SYS", "sys"), OCI_ERROR);
  EXPECT_EQ(sys.error_code(), 28009);
}

TEST_F(LogonTest, ASysdbaLogonToAStoppedInstanceAnswersOracleNotAvailableAndLeavesAnIdleSession) {
  write_scenario(single_instance("", "state=\"down\""));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1034);
  EXPECT_EQ(client.error_text(),
            "ORA-01034: ORACLE not available\nORA-27101: shared memory realm does not exist\n");
  // The session stands: queries answer ORA-01034 and it ends normally.
  ASSERT_EQ(api().OCIAttrSet(client.svc(), OCI_HTYPE_SVCCTX, client.ses(), 0, OCI_ATTR_SESSION, client.err()),
            OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT STATUS FROM V$INSTANCE", 1, rows), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1034);
  EXPECT_EQ(client.logoff(), OCI_SUCCESS);
  EXPECT_EQ(client.detach(), OCI_SUCCESS);
}

TEST_F(LogonTest, AnOrdinaryLogonToAStoppedInstanceIsRefusedAndBeginsNoSession) {
  write_scenario(single_instance("", "state=\"down\""));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT, "SCOTT", "tiger"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1034);
  EXPECT_EQ(client.logoff(), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1012);
}

TEST_F(LogonTest, APasswordInItsGracePeriodLogsOnWithAWarningAndTheSessionWorks) {
  write_scenario(single_instance("<account user=\"AGING\" password=\"old\" password_expires_in=\"7\"/>"));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT, "aging", "old"), OCI_SUCCESS_WITH_INFO);
  EXPECT_EQ(client.error_code(), 28002);
  EXPECT_EQ(client.error_text(), "ORA-28002: the password will expire within 7 days\n");
  std::vector<row_t> rows;
  ASSERT_EQ(client.query("SELECT USER FROM DUAL", 1, rows), OCI_NO_DATA) << client.error_text();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][0].text, "AGING");
  EXPECT_TRUE(contains(journal("CALL"), "mode=0 => SUCCESS_WITH_INFO ORA-28002"))
      << ::testing::PrintToString(journal("CALL"));
}

TEST_F(LogonTest, AnOrdinaryLogonToAStartedOrMountedInstanceIsRefusedWithInitializationInProgress) {
  for (const char* state : {"started", "mounted"}) {
    write_scenario(single_instance("", std::string("state=\"") + state + "\""));
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_DEFAULT, "SCOTT", "tiger"), OCI_ERROR) << state;
    EXPECT_EQ(client.error_code(), 1033) << state;
    EXPECT_EQ(client.error_text(), "ORA-01033: ORACLE initialization or shutdown in progress\n");
    // The dictionary is not open: a wrong password is not even looked at.
    client_t wrong(api());
    ASSERT_EQ(wrong.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(wrong.logon(OCI_DEFAULT, "SCOTT", "wrong"), OCI_ERROR);
    EXPECT_EQ(wrong.error_code(), 1033) << state;
    // An administrator gets in.
    client_t admin(api());
    ASSERT_EQ(admin.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(admin.logon(OCI_SYSDBA, "SCOTT", "tiger"), OCI_SUCCESS) << admin.error_text();
  }
}

TEST_F(LogonTest, APreliminaryLogonNeedsSysdbaOrSysoper) {
  write_scenario(single_instance("", "state=\"down\""));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_PRELIM_AUTH, "SCOTT", "tiger"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1031);
}

TEST_F(LogonTest, APreliminarySessionRunsNoStatement) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA | OCI_PRELIM_AUTH), OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT STATUS FROM V$INSTANCE", 1, rows), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1012);
}

TEST_F(LogonTest, AStatementWithoutASessionAttributeIsNotLoggedOn) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT STATUS FROM V$INSTANCE", 1, rows), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1012);
}

TEST_F(LogonTest, ASecondBeginOnTheSameSessionHandleIsRefused) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
  EXPECT_EQ(api().OCISessionBegin(client.svc(), client.err(), client.ses(), OCI_CRED_EXT, OCI_SYSDBA), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 24313);
}

TEST_F(LogonTest, AttachReadsTheEnvironmentAtTheMomentOfTheCall) {
  write_scenario(single_instance());
  client_t client(api());
  set_env("ORACLE_SID", "ORCL");
  set_env("ORACLE_HOME", kHome);
  ASSERT_EQ(api().OCIServerAttach(client.srv(), client.err(), nullptr, 0, OCI_DEFAULT), OCI_SUCCESS);
  set_env("ORACLE_SID", "OTHER");
  client_t second(api());
  EXPECT_EQ(api().OCIServerAttach(second.srv(), second.err(), nullptr, 0, OCI_DEFAULT), OCI_ERROR);
  const auto calls = journal("CALL");
  EXPECT_TRUE(contains(calls, "sid=ORCL home=C:\\app\\oracle\\product\\19.0.0\\dbhome_1 => OK"));
  EXPECT_TRUE(contains(calls, "sid=OTHER home=C:\\app\\oracle\\product\\19.0.0\\dbhome_1 => ERROR ORA-12560"));
}

TEST_F(LogonTest, ARemoteConnectIdentifierCannotBeResolved) {
  write_scenario(single_instance());
  client_t client(api());
  const char link[] = "REMOTEDB";
  EXPECT_EQ(api().OCIServerAttach(client.srv(), client.err(), reinterpret_cast<const OraText*>(link), 8, OCI_DEFAULT),
            OCI_ERROR);
  EXPECT_EQ(client.error_code(), 12154);
}

}  // namespace
}  // namespace ocisim_test
