// The journal: one line per call and statement, written at once, in the documented form.
#include <thread>

#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class JournalTest : public OcisimTest {};

TEST_F(JournalTest, EachLineStartsWithTheProcessAndThreadOfTheCaller) {
  write_scenario(single_instance());
  unsigned long worker = 0;
  std::thread([&worker] {
    worker = current_thread_id();
    client_t client(api());
    client.attach("ORCL", kHome);
  }).join();
  const auto lines = journal_lines();
  ASSERT_FALSE(lines.empty());
  const std::string prefix = std::to_string(current_process_id()) + " " + std::to_string(worker) + " CALL ";
  for (const std::string& line : lines) EXPECT_EQ(line.compare(0, prefix.size(), prefix), 0) << line;
}

TEST_F(JournalTest, AStatementIsJournalledWithItsTextBeforeItsCall) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
  std::vector<row_t> rows;
  ASSERT_EQ(client.query("SELECT STATUS\n FROM V$INSTANCE", 1, rows), OCI_NO_DATA);
  const auto lines = journal_lines();
  size_t sql = lines.size();
  size_t execute = lines.size();
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find(" SQL SELECT STATUS  FROM V$INSTANCE") != std::string::npos) sql = i;
    if (lines[i].find(" CALL OCIStmtExecute ") != std::string::npos) execute = i;
  }
  ASSERT_LT(sql, lines.size());
  ASSERT_LT(execute, lines.size());
  EXPECT_EQ(execute, sql + 1);
  EXPECT_NE(lines[execute].find("iters=0 rows=1 => OK"), std::string::npos) << lines[execute];
}

TEST_F(JournalTest, PasswordsNeverReachTheJournalAndBlanksAreQuoted) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_DEFAULT, "SCOTT", "tiger"), OCI_SUCCESS);
  for (const std::string& line : journal_lines()) EXPECT_EQ(line.find("tiger"), std::string::npos) << line;
  set_env("ORACLE_HOME", "C:\\Program Files\\Oracle \"x\"");
  client_t other(api());
  api().OCIServerAttach(other.srv(), other.err(), nullptr, 0, OCI_DEFAULT);
  EXPECT_TRUE(contains(journal("CALL"), "home=\"C:\\Program Files\\Oracle \"\"x\"\"\""));
}

TEST_F(JournalTest, WithoutAJournalVariableNothingIsWritten) {
  write_scenario(single_instance());
  set_env("OCISIM_JOURNAL", "");
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_FALSE(file_exists(journal_path_));
}

TEST_F(JournalTest, CallsOnHandlesAreNamedByKindAndNumber) {
  write_scenario(single_instance());
  {
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
    ASSERT_EQ(client.logoff(), OCI_SUCCESS);
    ASSERT_EQ(client.detach(), OCI_SUCCESS);
  }
  const auto calls = journal("CALL");
  EXPECT_TRUE(contains(calls, "OCISessionEnd svc=svc#"));
  EXPECT_TRUE(contains(calls, "OCIServerDetach srv=srv#"));
  EXPECT_TRUE(contains(calls, "OCIHandleFree handle=env#"));
}

}  // namespace
}  // namespace ocisim_test
