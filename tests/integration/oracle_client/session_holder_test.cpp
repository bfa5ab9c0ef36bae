// The session holder and the state operations against the simulated client.
#include "oracle/client/session_holder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "ocisim_fixture.h"
#include "ocisim_platform.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"

namespace {

using namespace specific::oracle;
using ocisim_test::machine_with;
using clock_type = std::chrono::steady_clock;

const std::u16string kHome = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

std::string instance(const std::string& sid, const std::string& attributes,
                     const std::string& inner = std::string()) {
  return "<instance sid=\"" + sid + "\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" " +
         attributes + ">\n" + inner + "</instance>\n";
}

const std::string kOpenDatabase =
    "<database name=\"ORCL\" dbid=\"1559187620\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\" "
    "cdb=\"NO\"/>\n"
    "<account user=\"SCOTT\" password=\"tiger\"/>\n"
    "<control_file name=\"C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL\"/>\n";

bool has(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

using SessionHolderOcisim = ocisim_test::ocisim_test_t;

TEST_F(SessionHolderOcisim, OpenInstanceAnswersEveryStateQuestion) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\" version=\"19.0.0.0.0\"", kOpenDatabase)));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  auto session = holder.get_session();
  EXPECT_FALSE(session->instance_down());
  EXPECT_TRUE(session->is_instance_open(false));
  EXPECT_TRUE(session->is_database_active());
  bool readOnly = true, archiveLog = false;
  session->get_database_options(readOnly, archiveLog);
  EXPECT_FALSE(readOnly);
  EXPECT_TRUE(archiveLog);
  EXPECT_EQ(session->get_database_name(), u"ORCL");
  EXPECT_FALSE(session->is_control_file_on_asm());
  session->read_version();
  EXPECT_TRUE(*session->is_version_12_or_higher());
  EXPECT_FALSE(*session->is_version_below_11());

  const auto sessions = calls_of("OCISessionBegin");
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_TRUE(contains(sessions[0], "cred=EXT")) << sessions[0];
  EXPECT_TRUE(contains(sessions[0], "=> OK")) << sessions[0];
  std::vector<std::string> statements;
  for (const auto& l : journal_of("SQL")) statements.push_back(l.rest);
  EXPECT_EQ(statements, (std::vector<std::string>{
                            "SELECT STATUS FROM V$INSTANCE", "SELECT DATABASE_STATUS FROM V$INSTANCE",
                            "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE", "SELECT NAME FROM V$DATABASE",
                            "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1",
                            "SELECT VERSION FROM V$INSTANCE"}));
}

TEST_F(SessionHolderOcisim, ControlFileInADiskGroupIsOnAsm) {
  use_scenario(machine_with(instance(
      "SALES", "state=\"open\"",
      "<database name=\"SALES\" dbid=\"1\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\"/>\n"
      "<control_file name=\"+DATA/SALES/CONTROLFILE/current.261.1108051263\"/>\n")));
  COracleSessionHolder holder(u"SALES", kHome, conn_t{}, false);
  EXPECT_TRUE(holder.get_session()->is_control_file_on_asm());
}

TEST_F(SessionHolderOcisim, StoppedInstanceGivesInstanceDownWithoutAnException) {
  use_scenario(machine_with(instance("ORCL", "state=\"down\"", kOpenDatabase)));
  std::unique_ptr<COracleSessionHolder> holder;
  ASSERT_NO_THROW(holder = std::make_unique<COracleSessionHolder>(u"ORCL", kHome, conn_t{}, false));
  auto session = holder->get_session();
  EXPECT_TRUE(session->instance_down());
  EXPECT_TRUE(session->initialised());
  // ORA-01034 was the allowed code: nothing was recorded as a failure.
  EXPECT_TRUE(session->env()->error_text().empty());
  EXPECT_FALSE(session->is_instance_open(false));
  EXPECT_TRUE(journal_of("SQL").empty());
  const auto sessions = calls_of("OCISessionBegin");
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_TRUE(contains(sessions[0], "ORA-01034")) << sessions[0];
  session.reset();
  holder.reset();
  EXPECT_EQ(calls_of("OCISessionEnd").size(), 1u) << journal_text();
}

TEST_F(SessionHolderOcisim, MountedInstanceIsNotOpen) {
  use_scenario(machine_with(instance("ORCL", "state=\"mounted\"", kOpenDatabase)));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  EXPECT_FALSE(holder.get_session()->is_instance_open(false));
}

TEST_F(SessionHolderOcisim, StartUpMountOpenAndShutDownTakeTheInstanceRoundTheCycle) {
  use_scenario(machine_with(instance("ORCL", "state=\"down\"", kOpenDatabase)));
  {
    COracleSessionHolder prelim(u"ORCL", kHome, conn_t{}, true);
    prelim.get_session()->startup();
  }
  {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    EXPECT_FALSE(holder.get_session()->instance_down());
    EXPECT_FALSE(holder.get_session()->is_instance_open(false));
    holder.get_session()->mount_and_open();
  }
  {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    EXPECT_TRUE(holder.get_session()->is_instance_open(false));
    holder.get_session()->shutdown();
  }
  {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    EXPECT_TRUE(holder.get_session()->instance_down());
    // Shutting down what is already down fails at the close statement.
    try {
      holder.get_session()->shutdown();
      FAIL() << "no exception";
    } catch (const COracleExc& e) {
      EXPECT_EQ(e.messages().back().text, "Failed to shutdown database");
    }
  }
  const auto logons = calls_of("OCISessionBegin");
  ASSERT_GE(logons.size(), 1u);
  EXPECT_TRUE(contains(logons[0], "mode=10")) << logons[0];
  EXPECT_EQ(calls_of("OCIDBStartup").size(), 1u);
}

TEST_F(SessionHolderOcisim, StoppedServiceIsRefusedAtAttach) {
  use_scenario(machine_with(instance("ORCL", "state=\"down\" service=\"stopped\"", kOpenDatabase)));
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 12560u);
    EXPECT_EQ(e.messages().front().text,
              "Oracle error has occurred. ORA-12560: TNS:protocol adapter error\n");
    EXPECT_EQ(e.messages().back().text, "Failed to create oracle session holder. SID: ORCL.");
  }
}

TEST_F(SessionHolderOcisim, UnknownSidIsRefusedAtAttach) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\"", kOpenDatabase)));
  EXPECT_THROW(COracleSessionHolder(u"NOSUCH", kHome, conn_t{}, false), COracleExc);
}

TEST_F(SessionHolderOcisim, WrongPasswordWithAUserTriesSysdbaThenDefaultAndReportsTheSecond) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\" os_logon=\"none\"", kOpenDatabase)));
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{"scott", "wrong"}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1017u);
    EXPECT_TRUE(contains(e.what(), "ORA-01017: invalid username/password; logon denied")) << e.what();
  }
  const auto logons = calls_of("OCISessionBegin");
  ASSERT_EQ(logons.size(), 2u);
  EXPECT_TRUE(contains(logons[0], "mode=2 ")) << logons[0];
  EXPECT_TRUE(contains(logons[1], "mode=0 ")) << logons[1];
  EXPECT_TRUE(has(log_lines(), "Failed to connect as SYSDBA: insufficient privileges or channel error. "
                               "Connecting by default..."));
}

TEST_F(SessionHolderOcisim, AccountWithoutSysdbaGetsInByDefault) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\" os_logon=\"none\"", kOpenDatabase)));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{"scott", "tiger"}, false);
  EXPECT_TRUE(holder.get_session()->initialised());
  EXPECT_EQ(calls_of("OCISessionBegin").size(), 2u);
}

TEST_F(SessionHolderOcisim, LogonWithAPasswordAboutToExpireGivesASessionThatRunsACommandAtOnce) {
  use_scenario(machine_with(instance(
      "ORCL", "state=\"open\" os_logon=\"none\"",
      kOpenDatabase + "<account user=\"AGING\" password=\"old\" password_expires_in=\"7\"/>\n")));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{"aging", "old"}, false);
  ASSERT_TRUE(holder.get_session()->initialised());
  EXPECT_FALSE(holder.get_session()->instance_down());
  const auto logons = calls_of("OCISessionBegin");
  ASSERT_EQ(logons.size(), 2u);
  EXPECT_TRUE(contains(logons[1], "mode=0 => SUCCESS_WITH_INFO ORA-28002")) << logons[1];
  // A command is the first statement: it runs on the session the logon made.
  auto cmd = holder.get_session()->make_command("BEGIN\n :v := 'ran';\n END;");
  char out[16] = "";
  cmd->bind(":v", out, SQLT_STR, sizeof out);
  ASSERT_NO_THROW(cmd->execute());
  EXPECT_STREQ(out, "ran");
  const auto executes = calls_of("OCIStmtExecute");
  ASSERT_EQ(executes.size(), 1u);
  EXPECT_NE(executes[0].find("=> OK"), std::string::npos) << executes[0];
}

TEST_F(SessionHolderOcisim, AccountWithoutSysdbaOnAMountedDatabaseFallsBackAndReportsInitializationInProgress) {
  use_scenario(machine_with(instance("ORCL", "state=\"mounted\" os_logon=\"none\"", kOpenDatabase)));
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{"scott", "tiger"}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    // The second try's failure is the one reported.
    EXPECT_EQ(e.code(), 1033u);
    EXPECT_TRUE(contains(e.what(), "ORA-01033: ORACLE initialization or shutdown in progress")) << e.what();
  }
  const auto logons = calls_of("OCISessionBegin");
  ASSERT_EQ(logons.size(), 2u);
  EXPECT_TRUE(contains(logons[0], "mode=2 => ERROR ORA-01031")) << logons[0];
  EXPECT_TRUE(contains(logons[1], "mode=0 => ERROR ORA-01033")) << logons[1];
  EXPECT_TRUE(has(log_lines(), "Failed to connect as SYSDBA: insufficient privileges or channel error. "
                               "Connecting by default..."));
}

TEST_F(SessionHolderOcisim, AccountWithSysdbaOnAMountedDatabaseGetsInWithoutAFallback) {
  use_scenario(machine_with(instance("ORCL", "state=\"mounted\" os_logon=\"none\"",
                                     kOpenDatabase + "<account user=\"BACKUP\" password=\"secret\" sysdba=\"yes\"/>\n")));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{"backup", "secret"}, false);
  EXPECT_TRUE(holder.get_session()->initialised());
  EXPECT_FALSE(holder.get_session()->is_instance_open(false));
  EXPECT_EQ(calls_of("OCISessionBegin").size(), 1u);
}

TEST_F(SessionHolderOcisim, OperatingSystemAuthenticationIsNotRetried) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\" os_logon=\"none\"", kOpenDatabase)));
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1031u);
  }
  EXPECT_EQ(calls_of("OCISessionBegin").size(), 1u);
}

TEST_F(SessionHolderOcisim, HangInAttachIsCutOffAtTheTimeOutAndNoCallReachesTheAbandonedHandles) {
  use_scenario(machine_with(
      instance("ORCL", "state=\"open\"", kOpenDatabase + "<fault on=\"attach\" hang=\"4\" times=\"1\"/>\n") +
      instance("SALES", "state=\"open\"", kOpenDatabase)));
  set_timeout(2);
  const auto start = clock_type::now();
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleInitTimeoutExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Failed to wait oracle session initialization\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  const auto waited = clock_type::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(1950));
  EXPECT_LT(waited, std::chrono::milliseconds(3500));

  // The next holder works while the first attach still hangs.
  set_timeout(20);
  {
    COracleSessionHolder next(u"SALES", kHome, conn_t{}, false);
    EXPECT_TRUE(next.get_session()->is_instance_open(false));
  }

  // Wait until the hung attach has returned, then look at what its thread did.
  std::this_thread::sleep_for(std::chrono::milliseconds(4500) - (clock_type::now() - start));
  const auto lines = journal();
  auto hang = std::find_if(lines.begin(), lines.end(),
                           [](const auto& l) { return l.kind == "HANG"; });
  ASSERT_NE(hang, lines.end());
  const std::string worker = hang->thread;
  std::vector<std::string> after;
  for (auto it = hang + 1; it != lines.end(); ++it) {
    if (it->thread == worker) after.push_back(it->kind + " " + it->rest);
  }
  // The hung call itself completes; after it, nothing: the abandoned worker never passes the
  // gate again, neither to log on nor to free its handles.
  ASSERT_EQ(after.size(), 1u) << (after.size() > 1 ? after[1] : std::string());
  EXPECT_EQ(after[0].rfind("CALL OCIServerAttach", 0), 0u) << after[0];
  EXPECT_FALSE(has(log_lines(), "ERR |Oracle session init thread failed"));
}

TEST_F(SessionHolderOcisim, HangForeverIsCutOffToo) {
  use_scenario(machine_with(
      instance("ORCL", "state=\"open\"", kOpenDatabase + "<fault on=\"logon\" hang=\"forever\"/>\n")));
  set_timeout(1);
  EXPECT_THROW(COracleSessionHolder(u"ORCL", kHome, conn_t{}, false), COracleInitTimeoutExc);
  EXPECT_EQ(journal_of("HANG").size(), 1u);
  EXPECT_TRUE(calls_of("OCISessionBegin").empty());
}

TEST_F(SessionHolderOcisim, TimeOutOfZeroSecondsGivesUpAtOnce) {
  use_scenario(machine_with(
      instance("ORCL", "state=\"open\"", kOpenDatabase + "<fault on=\"attach\" hang=\"2\" times=\"1\"/>\n")));
  set_timeout(0);
  const auto start = clock_type::now();
  EXPECT_THROW(COracleSessionHolder(u"ORCL", kHome, conn_t{}, false), COracleInitTimeoutExc);
  EXPECT_LT(clock_type::now() - start, std::chrono::milliseconds(1500));
  // Let the abandoned attach finish before the test's folder goes.
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));
}

// The client library removed ---------------------------------------------------------------

class ClientLibraryRemoved : public ocisim_test::ocisim_test_t {
 protected:
  void SetUp() override {
    ocisim_test_t::SetUp();
    set_env(kOciLibraryVariable, ocisim_test::missing_library());
    CWinOraInterface::replace_table_for_tests(nullptr);
  }
  void TearDown() override {
    set_env(kOciLibraryVariable, ocisim_test::ocisim_library());
    CWinOraInterface::replace_table_for_tests(nullptr);
    ocisim_test_t::TearDown();
  }
};

TEST_F(ClientLibraryRemoved, LogSaysFailedToLoadAndTheCallerHearsSessionIsInvalid) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\"", kOpenDatabase)));
  try {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleExc&) {
    FAIL() << "not an Oracle refusal";
  } catch (const COracleSessionCreateExc& e) {
    EXPECT_EQ(e.messages().front().text, "Failed to create oracle session holder. Session is invalid.");
  }
  EXPECT_TRUE(has(log_lines(), "ERR |Failed to load OCI library"));
  EXPECT_TRUE(journal().empty());
  // The soft way in says the same and returns nothing.
  EXPECT_FALSE(COracleSessionHolder::create(u"ORCL", kHome, conn_t{}));
  EXPECT_TRUE(has(log_lines(), "ERR |Failed to create session holder for SID: ORCL"));
}

TEST_F(ClientLibraryRemoved, ClientInstalledLaterIsFoundWithoutARestart) {
  use_scenario(machine_with(instance("ORCL", "state=\"open\"", kOpenDatabase)));
  EXPECT_THROW(COracleSessionHolder(u"ORCL", kHome, conn_t{}, false), COracleSessionCreateExc);
  set_env(kOciLibraryVariable, ocisim_test::ocisim_library());
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  EXPECT_TRUE(holder.get_session()->initialised());
}

}  // namespace
