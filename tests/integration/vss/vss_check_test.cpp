// OracleCheckVssFunctionality end to end: the console host's check-vss on machines made of a
// registry fixture, the VSS writer service of ORCL in a chosen state and simulated instances.
// What the library looked at is read from its log and from the simulated client's journal.
#include <gtest/gtest.h>

#include "vss_machine.h"

namespace vss_test {
namespace {

class CheckVss : public vss_console_t {
 protected:
  // The answer of check-vss, "true" or "false", or the failure.
  std::string check(const std::string& scenario) {
    const auto run = host({"check-vss"}, scenario);
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_FALSE(run.timed_out);
    return run.out;
  }
  bool any_service_looked_at() const {
    return logged_containing("Found service:") ||
           logged_containing("Failed to check if VSS oracle writer service enabled");
  }
};

TEST_F(CheckVss, NoInstancesGiveTrueAndNothingElseHappens) {
  vss_machine_t machine("vss_no_instances.reg");
  EXPECT_EQ(check("vss_open_active.xml"), "true\n");
  EXPECT_TRUE(logged("VSS must be enabled"));
  EXPECT_TRUE(logged("Checking if oracle VSS must be disabled ok."));
  EXPECT_FALSE(logged_containing("Creating oracle session holder"));
  EXPECT_FALSE(any_service_looked_at());
  EXPECT_EQ(journal(), "");
}

TEST_F(CheckVss, OnlyAsmInstancesGiveTrueAndNothingElseHappens) {
  vss_machine_t machine("vss_asm_only.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_gather.xml"), "true\n");
  EXPECT_TRUE(logged("Found oracle instance: +ASM. Is ASM: true"));
  EXPECT_TRUE(logged("VSS must be enabled"));
  EXPECT_FALSE(logged_containing("Creating oracle session holder"));
  EXPECT_FALSE(any_service_looked_at());
  EXPECT_EQ(journal(), "");
}

TEST_F(CheckVss, OpenAndActiveDatabaseGivesTrueWithoutLookingAtAService) {
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_open_active.xml"), "true\n");
  EXPECT_TRUE(logged("Oracle instance status: OPEN"));
  EXPECT_TRUE(logged("Oracle db status: ACTIVE"));
  EXPECT_TRUE(logged("VSS must be enabled"));
  EXPECT_FALSE(any_service_looked_at());
  EXPECT_NE(journal().find("SQL SELECT DATABASE_STATUS FROM V$INSTANCE"), std::string::npos);
}

TEST_F(CheckVss, ClosedDatabaseGivesTrueWithoutLookingAtAService) {
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_closed.xml"), "true\n");
  EXPECT_TRUE(logged("Oracle instance status: MOUNTED"));
  EXPECT_TRUE(logged("VSS must be enabled"));
  EXPECT_FALSE(any_service_looked_at());
  EXPECT_EQ(journal().find("DATABASE_STATUS"), std::string::npos) << "not asked when closed";
}

TEST_F(CheckVss, OpenDatabaseNotActiveWithoutAWriterServiceLogsTheFailureAndGivesTrue) {
  vss_machine_t machine("vss_one_database.reg");
  EXPECT_EQ(check("vss_open_not_active.xml"), "true\n");
  EXPECT_TRUE(logged("Oracle db status: SUSPENDED"));
  EXPECT_TRUE(logged("ERR |Failed to check if VSS oracle writer service enabled, sid: ORCL"));
  EXPECT_TRUE(logged_containing("Failed to open service 'OracleVssWriterORCL'."));
  EXPECT_FALSE(logged_containing("Found service:"));
  EXPECT_TRUE(logged("VSS must be enabled"));
}

TEST_F(CheckVss, OpenDatabaseNotActiveWithItsWriterRunningGivesFalse) {
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_open_not_active.xml"), "false\n");
  EXPECT_TRUE(logged("Found service: OracleVssWriterORCL, status: 4"));
  EXPECT_TRUE(logged("VSS must be disabled"));
}

TEST_F(CheckVss, OpenDatabaseNotActiveWithItsWriterStoppedGivesTrue) {
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_stopped.reg");
  EXPECT_EQ(check("vss_open_not_active.xml"), "true\n");
  EXPECT_TRUE(logged("Found service: OracleVssWriterORCL, status: 1"));
  EXPECT_TRUE(logged("VSS must be enabled"));
}

TEST_F(CheckVss, OpenDatabaseNotActiveWithItsWriterPausedGivesTrue) {
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_paused.reg");
  EXPECT_EQ(check("vss_open_not_active.xml"), "true\n");
  EXPECT_TRUE(logged("Found service: OracleVssWriterORCL, status: 7"));
  EXPECT_TRUE(logged("VSS must be enabled"));
}

TEST_F(CheckVss, SessionTimeOutWithItsWriterRunningGivesFalse) {
  // The fixture sets OracleConnectionTimeout to two seconds; the attach never returns.
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_hang.xml"), "false\n");
  EXPECT_TRUE(logged("ERR |Failed create oracle session: timeout. Sid: ORCL"));
  EXPECT_TRUE(logged_containing("Failed to wait oracle session initialization"));
  EXPECT_TRUE(logged("Found service: OracleVssWriterORCL, status: 4"));
  EXPECT_TRUE(logged("VSS must be disabled"));
  EXPECT_NE(journal().find("HANG OCIServerAttach forever"), std::string::npos) << journal();
}

TEST_F(CheckVss, DatabaseThatRefusesTheSessionIsLoggedAndCountsAsInOrder) {
  // Not a time-out: Oracle's own refusal leaves the snapshot alone, so no service is looked at.
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_service_down.xml"), "true\n");
  EXPECT_TRUE(logged("ERR |Failed to check if oracle db is active, sid: ORCL"));
  EXPECT_TRUE(logged_containing("ORA-12560: TNS:protocol adapter error"));
  EXPECT_FALSE(any_service_looked_at());
  EXPECT_TRUE(logged("VSS must be enabled"));
}

TEST_F(CheckVss, SecondBadDatabaseIsNotVisitedOnceTheFirstGaveFalse) {
  vss_machine_t machine("vss_two_databases.reg", "vss_writer_orcl_running.reg");
  EXPECT_EQ(check("vss_two_not_active.xml"), "false\n");
  EXPECT_TRUE(logged("Found oracle instance: SALES. Is ASM: false"));
  EXPECT_TRUE(logged("Found service: OracleVssWriterORCL, status: 4"));
  EXPECT_FALSE(logged_containing("Creating oracle session holder: SALES"));
  EXPECT_FALSE(logged_containing("OracleVssWriterSALES"));
  EXPECT_EQ(journal().find("sid=SALES"), std::string::npos) << journal();
}

TEST_F(CheckVss, SecondCallWithChangedConditionsGivesTheSameAnswerAndNoLogLine) {
  // The attach hangs the first time only: a second probing would find ORCL open and ACTIVE.
  vss_machine_t machine("vss_one_database.reg", "vss_writer_orcl_running.reg");
  const auto run = script("check-vss\ncheck-vss\n", "vss_hang_once.xml");
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "false\nfalse\n");
  EXPECT_EQ(count_logged("Checking if oracle VSS must be disabled"), 1u);
  EXPECT_EQ(count_logged("VSS must be disabled"), 1u);
  EXPECT_EQ(count_logged("Found service: OracleVssWriterORCL, status: 4"), 1u);
  // One attach only, the one that hung; and the log ends with the first check's last line.
  const std::string calls = journal();
  EXPECT_EQ(calls.find("CALL OCIServerAttach"), std::string::npos) << calls;
  const auto lines = log_lines();
  size_t last_step = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] == "Checking if oracle VSS must be disabled ok.") last_step = i;
  }
  for (size_t i = last_step + 1; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].find("VSS"), std::string::npos) << lines[i];
    EXPECT_EQ(lines[i].find("oracle session"), std::string::npos) << lines[i];
  }
}

}  // namespace
}  // namespace vss_test
