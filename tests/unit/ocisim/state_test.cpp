// Start-up, shut-down and ALTER DATABASE, and the state file that carries them from one
// session, one load of the client, to the next.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class StateTest : public OcisimTest {
 protected:
  std::unique_ptr<client_t> sysdba(ub4 extra_mode = 0, sword expected = OCI_SUCCESS) {
    auto client = std::make_unique<client_t>(api());
    EXPECT_EQ(client->attach("ORCL", kHome), OCI_SUCCESS) << client->error_text();
    EXPECT_EQ(client->logon(OCI_SYSDBA | extra_mode), expected) << client->error_text();
    return client;
  }

  // V$INSTANCE.STATUS as a new SYSDBA session sees it, or the error it gets.
  std::string status() {
    auto client = std::make_unique<client_t>(api());
    if (client->attach("ORCL", kHome) != OCI_SUCCESS || client->logon(OCI_SYSDBA) != OCI_SUCCESS) {
      return client->error_text();
    }
    std::vector<row_t> rows;
    if (client->query("SELECT STATUS FROM V$INSTANCE", 1, rows) != OCI_NO_DATA) return client->error_text();
    return rows.empty() ? "" : rows[0][0].text;
  }

  // The library's shut-down: immediate, close, dismount, final.
  void shut_down(client_t& client) {
    EXPECT_EQ(client.api().OCIDBShutdown(client.svc(), client.err(), nullptr, OCI_DBSHUTDOWN_IMMEDIATE), OCI_SUCCESS)
        << client.error_text();
    EXPECT_EQ(client.run("ALTER DATABASE CLOSE NORMAL"), OCI_SUCCESS) << client.error_text();
    EXPECT_EQ(client.run("ALTER DATABASE DISMOUNT"), OCI_SUCCESS) << client.error_text();
    EXPECT_EQ(client.api().OCIDBShutdown(client.svc(), client.err(), nullptr, OCI_DBSHUTDOWN_FINAL), OCI_SUCCESS)
        << client.error_text();
  }
};

TEST_F(StateTest, StartsAStoppedInstanceWithAPreliminarySessionThenMountsAndOpensIt) {
  write_scenario(single_instance("", "state=\"down\""));
  {
    auto prelim = sysdba(OCI_PRELIM_AUTH);
    ASSERT_EQ(api().OCIDBStartup(prelim->svc(), prelim->err(), nullptr, OCI_DEFAULT, 0), OCI_SUCCESS)
        << prelim->error_text();
    EXPECT_EQ(prelim->logoff(), OCI_SUCCESS);
  }
  EXPECT_EQ(status(), "STARTED");
  auto client = sysdba();
  EXPECT_EQ(client->run("ALTER DATABASE MOUNT"), OCI_SUCCESS) << client->error_text();
  EXPECT_EQ(status(), "MOUNTED");
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_SUCCESS) << client->error_text();
  EXPECT_EQ(status(), "OPEN");
  const auto calls = journal("CALL");
  EXPECT_TRUE(contains(calls, "OCISessionBegin")) << ::testing::PrintToString(calls);
  EXPECT_TRUE(contains(calls, "cred=EXT mode=10 => OK"));
  EXPECT_TRUE(contains(calls, "OCIDBStartup svc=svc#"));
  EXPECT_TRUE(contains(journal("SQL"), "ALTER DATABASE MOUNT"));
}

TEST_F(StateTest, StartingARunningInstanceIsRefused) {
  write_scenario(single_instance());
  auto prelim = sysdba(OCI_PRELIM_AUTH);
  EXPECT_EQ(api().OCIDBStartup(prelim->svc(), prelim->err(), nullptr, OCI_DEFAULT, 0), OCI_ERROR);
  EXPECT_EQ(prelim->error_text(), "ORA-01081: cannot start already-running ORACLE - shut it down first\n");
}

TEST_F(StateTest, AForcedStartUpRestartsARunningInstance) {
  write_scenario(single_instance());
  auto prelim = sysdba(OCI_PRELIM_AUTH);
  EXPECT_EQ(api().OCIDBStartup(prelim->svc(), prelim->err(), nullptr, OCI_DEFAULT, OCI_DBSTARTUPFLAG_FORCE),
            OCI_SUCCESS);
  EXPECT_EQ(status(), "STARTED");
}

TEST_F(StateTest, ShutsDownInTheFourStepsOfOracleAndTheStateReachesOtherSessions) {
  write_scenario(single_instance());
  auto client = sysdba();
  shut_down(*client);
  std::vector<row_t> rows;
  EXPECT_EQ(client->query("SELECT STATUS FROM V$INSTANCE", 1, rows), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1034);
  auto later = std::make_unique<client_t>(api());
  ASSERT_EQ(later->attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(later->logon(OCI_SYSDBA), OCI_ERROR);
  EXPECT_EQ(later->error_code(), 1034);
  EXPECT_EQ(journal("SQL"), (std::vector<std::string>{"ALTER DATABASE CLOSE NORMAL", "ALTER DATABASE DISMOUNT",
                                                       "SELECT STATUS FROM V$INSTANCE"}));
}

TEST_F(StateTest, ClosingAnAlreadyClosedDatabaseFailsWithDatabaseNotOpen) {
  write_scenario(single_instance("", "state=\"mounted\""));
  auto client = sysdba();
  EXPECT_EQ(api().OCIDBShutdown(client->svc(), client->err(), nullptr, OCI_DBSHUTDOWN_IMMEDIATE), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE CLOSE NORMAL"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01109: database not open\n");
}

TEST_F(StateTest, TheInstanceRefusesTheWrongStepsOfItsLifeWithOraclesErrors) {
  write_scenario(single_instance("", "state=\"started\""));
  auto client = sysdba();
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1507);
  EXPECT_EQ(client->run("ALTER DATABASE DISMOUNT"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1507);
  EXPECT_EQ(client->run("ALTER DATABASE CLOSE NORMAL"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1507);
  ASSERT_EQ(client->run("ALTER DATABASE MOUNT"), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE MOUNT"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01100: database already mounted\n");
  ASSERT_EQ(client->run("ALTER DATABASE OPEN"), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01531: a database already open by the instance\n");
  EXPECT_EQ(client->run("ALTER DATABASE DISMOUNT"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1106);
  ASSERT_EQ(client->run("ALTER DATABASE CLOSE NORMAL"), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-16196: database has been previously opened and closed\n");
}

TEST_F(StateTest, OnlyAnAdministratorMountsAndOpens) {
  write_scenario(single_instance("", "state=\"mounted\""));
  // An ordinary account, even one with system privileges, does not get into a mounted
  // database at all.
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_DEFAULT, "SYSTEM", "manager"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1033);
  auto admin = sysdba();
  EXPECT_EQ(admin->run("ALTER DATABASE OPEN"), OCI_SUCCESS) << admin->error_text();
}

TEST_F(StateTest, OpenReadOnlyShowsInTheOpenMode) {
  write_scenario(single_instance("", "state=\"mounted\""));
  auto client = sysdba();
  ASSERT_EQ(client->run("ALTER DATABASE OPEN READ ONLY"), OCI_SUCCESS);
  std::vector<row_t> rows;
  ASSERT_EQ(client->query("SELECT OPEN_MODE FROM V$DATABASE", 1, rows), OCI_NO_DATA);
  EXPECT_EQ(rows.at(0)[0].text, "READ ONLY");
}

TEST_F(StateTest, TheStateOutlivesTheClientAndIsSeenByASecondCopyOfIt) {
  write_scenario(single_instance());
  {
    // A copy of the client under another name is a second, independent load of its code. The
    // copies stay loaded: the client never frees its handle registry.
    const std::string copy = join(folder_, std::string("first-") + oci_library_t::file_name());
    ASSERT_TRUE(copy_file(oci_library_t::built_path(), copy));
    std::string error;
    auto first = oci_library_t::load(copy, /*keep_loaded=*/true, error);
    ASSERT_TRUE(first) << error;
    client_t client(first->api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
    shut_down(client);
  }
  EXPECT_NE(state_text().find("state=\"down\""), std::string::npos) << state_text();
  const std::string copy = join(folder_, std::string("second-") + oci_library_t::file_name());
  ASSERT_TRUE(copy_file(oci_library_t::built_path(), copy));
  std::string error;
  auto second = oci_library_t::load(copy, /*keep_loaded=*/true, error);
  ASSERT_TRUE(second) << error;
  client_t client(second->api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1034);
}

TEST_F(StateTest, AnEditedScenarioStartsOverFromItsOwnState) {
  write_scenario(single_instance());
  {
    auto client = sysdba();
    shut_down(*client);
  }
  EXPECT_EQ(status(), "ORA-01034: ORACLE not available\nORA-27101: shared memory realm does not exist\n");
  write_scenario(single_instance("<!-- edited -->"));
  EXPECT_EQ(status(), "OPEN");
}

TEST_F(StateTest, AnExplicitStateFileIsUsedInsteadOfTheOneBesideTheScenario) {
  write_scenario(single_instance());
  const std::string state = join(folder_, "elsewhere.state");
  set_env("OCISIM_STATE", state);
  {
    auto client = sysdba();
    shut_down(*client);
  }
  EXPECT_TRUE(file_exists(state));
  EXPECT_EQ(state_text(), "");
}

TEST_F(StateTest, BackupModeFollowsOraclesRules) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_DEFAULT, "SYSTEM", "manager"), OCI_SUCCESS);
  EXPECT_EQ(client.run("ALTER DATABASE END BACKUP"), OCI_ERROR);
  EXPECT_EQ(client.error_text(), "ORA-01142: cannot end online backup - none of the files are in backup\n");
  ASSERT_EQ(client.run("ALTER DATABASE BEGIN BACKUP"), OCI_SUCCESS) << client.error_text();
  std::vector<row_t> rows;
  ASSERT_EQ(client.query("SELECT FILE#, STATUS FROM V$BACKUP", 2, rows), OCI_NO_DATA);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0][1].text, "ACTIVE");
  EXPECT_EQ(rows[1][1].text, "ACTIVE");
  EXPECT_EQ(client.run("ALTER DATABASE BEGIN BACKUP"), OCI_ERROR);
  EXPECT_EQ(client.error_text(),
            "ORA-01146: cannot start online backup - file 1 is already in backup\n"
            "ORA-01110: data file 1: 'C:\\app\\oracle\\oradata\\ORCL\\SYSTEM01.DBF'\n");
  auto admin = sysdba();
  EXPECT_EQ(api().OCIDBShutdown(admin->svc(), admin->err(), nullptr, OCI_DBSHUTDOWN_IMMEDIATE), OCI_ERROR);
  EXPECT_EQ(admin->error_code(), 1149);
  ASSERT_EQ(client.run("ALTER DATABASE END BACKUP"), OCI_SUCCESS);
  ASSERT_EQ(client.query("SELECT STATUS FROM V$BACKUP WHERE STATUS = 'ACTIVE'", 1, rows), OCI_NO_DATA);
  EXPECT_TRUE(rows.empty());
}

TEST_F(StateTest, BackupModeNeedsArchiveLogMode) {
  std::string scenario = single_instance();
  scenario.replace(scenario.find("log_mode=\"ARCHIVELOG\""), 21, "log_mode=\"NOARCHIVELOG\"");
  write_scenario(scenario);
  auto client = sysdba();
  EXPECT_EQ(client->run("ALTER DATABASE BEGIN BACKUP"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01123: cannot start online backup; media recovery not enabled\n");
}

TEST_F(StateTest, AnInstanceAbortedInBackupModeMountsButRefusesToOpenUntilEndBackup) {
  write_scenario(single_instance());
  {
    auto client = sysdba();
    ASSERT_EQ(client->run("ALTER DATABASE BEGIN BACKUP"), OCI_SUCCESS);
    ASSERT_EQ(api().OCIDBShutdown(client->svc(), client->err(), nullptr, OCI_DBSHUTDOWN_ABORT), OCI_SUCCESS);
  }
  {
    auto prelim = sysdba(OCI_PRELIM_AUTH);
    ASSERT_EQ(api().OCIDBStartup(prelim->svc(), prelim->err(), nullptr, OCI_DEFAULT, 0), OCI_SUCCESS);
  }
  auto client = sysdba();
  ASSERT_EQ(client->run("ALTER DATABASE MOUNT"), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_ERROR);
  EXPECT_EQ(client->error_text(),
            "ORA-10873: file 1 needs to be either taken out of backup mode or media recovered\n"
            "ORA-01110: data file 1: 'C:\\app\\oracle\\oradata\\ORCL\\SYSTEM01.DBF'\n");
  ASSERT_EQ(client->run("ALTER DATABASE END BACKUP"), OCI_SUCCESS);
  EXPECT_EQ(client->run("ALTER DATABASE OPEN"), OCI_SUCCESS) << client->error_text();
}

TEST_F(StateTest, ASessionOfAnEarlierIncarnationLostItsConnection) {
  write_scenario(single_instance());
  auto old = sysdba();
  {
    auto prelim = sysdba(OCI_PRELIM_AUTH);
    ASSERT_EQ(api().OCIDBStartup(prelim->svc(), prelim->err(), nullptr, OCI_DEFAULT, OCI_DBSTARTUPFLAG_FORCE),
              OCI_SUCCESS);
  }
  std::vector<row_t> rows;
  EXPECT_EQ(old->query("SELECT STATUS FROM V$INSTANCE", 1, rows), OCI_ERROR);
  EXPECT_EQ(old->error_text(), "ORA-03113: end-of-file on communication channel\n");
}

TEST_F(StateTest, TheFinalShutDownCallWaitsForADismountedDatabase) {
  write_scenario(single_instance());
  auto client = sysdba();
  EXPECT_EQ(api().OCIDBShutdown(client->svc(), client->err(), nullptr, OCI_DBSHUTDOWN_FINAL), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1154);
  EXPECT_EQ(status(), "OPEN");
}

TEST_F(StateTest, ArchiveLogModeChangesOnlyWhileMounted) {
  write_scenario(single_instance());
  auto client = sysdba();
  EXPECT_EQ(client->run("ALTER DATABASE NOARCHIVELOG"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1126);
}

}  // namespace
}  // namespace ocisim_test
