// Injected faults: hangs that really sleep on the calling thread, errors for a statement,
// a fetch that fails after some rows, faults that fire a number of times.
#include <atomic>
#include <chrono>
#include <thread>

#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

using clock_type = std::chrono::steady_clock;

class FaultsTest : public OcisimTest {
 protected:
  static double seconds_since(clock_type::time_point start) {
    return std::chrono::duration<double>(clock_type::now() - start).count();
  }
};

TEST_F(FaultsTest, AnAttachThatHangsSleepsOnTheCallingThreadForItsSeconds) {
  write_scenario(single_instance("<fault on=\"attach\" hang=\"1\"/>"));
  client_t client(api());
  const auto start = clock_type::now();
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  EXPECT_GE(seconds_since(start), 0.95);
  EXPECT_TRUE(contains(journal("HANG"), "OCIServerAttach 1"));
}

TEST_F(FaultsTest, ALogonThatHangsThenFailsGivesItsError) {
  write_scenario(single_instance("<fault on=\"logon\" hang=\"0.5\" error=\"12547\" message=\"TNS:lost contact\"/>"));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  const auto start = clock_type::now();
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_ERROR);
  EXPECT_GE(seconds_since(start), 0.45);
  EXPECT_EQ(client.error_text(), "ORA-12547: TNS:lost contact\n");
}

TEST_F(FaultsTest, AHangForEverNeverReturnsAndTheNextConnectionStillWorks) {
  write_scenario(single_instance("<fault on=\"attach\" hang=\"forever\" times=\"1\"/>"));
  std::atomic<bool> returned{false};
  // The worker is abandoned as the library abandons its session worker; the client stays
  // loaded for the life of the process.
  std::thread([&returned] {
    client_t client(api());
    client.attach("ORCL", kHome);
    returned = true;
  }).detach();
  for (int i = 0; i < 100 && journal("HANG").empty(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  ASSERT_EQ(journal("HANG"), std::vector<std::string>{"OCIServerAttach forever"});
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_FALSE(returned);
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS) << client.error_text();
  EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS) << client.error_text();
  EXPECT_FALSE(returned);
}

TEST_F(FaultsTest, AStatementMatchedByItsTextFailsWithTheErrorOfTheFault) {
  write_scenario(single_instance("<fault on=\"execute\" sql=\"select  name from v$database\" error=\"1219\"/>"));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT NAME FROM V$DATABASE", 1, rows), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1219);
  EXPECT_EQ(client.query("SELECT DBID FROM V$DATABASE", 1, rows), OCI_NO_DATA);
}

TEST_F(FaultsTest, AFaultCanMatchThePrefixOrAPartOfAStatement) {
  write_scenario(single_instance("<fault on=\"sql\" sql=\"FROM V$ARCHIVED_LOG\" match=\"contains\" error=\"942\"/>"
                                 "<fault on=\"sql\" sql=\"ALTER DATABASE\" match=\"prefix\" error=\"1154\"/>"));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG", 2, rows), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 942);
  EXPECT_EQ(client.run("ALTER DATABASE CLOSE NORMAL"), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 1154);
}

TEST_F(FaultsTest, AFetchFailsAfterTheGivenNumberOfRows) {
  write_scenario(single_instance("<fault on=\"fetch\" sql=\"SELECT SEQUENCE# FROM V$ARCHIVED_LOG\" after_rows=\"2\"/>"));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
  std::vector<row_t> rows;
  EXPECT_EQ(client.query("SELECT SEQUENCE# FROM V$ARCHIVED_LOG", 1, rows), OCI_ERROR);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0][0].text, "9");
  EXPECT_EQ(rows[1][0].text, "10");
  EXPECT_EQ(client.error_text(), "ORA-03113: end-of-file on communication channel\n");
  EXPECT_TRUE(contains(journal("CALL"), "OCIStmtFetch2 stmt=stmt#"));
  EXPECT_TRUE(contains(journal("CALL"), "row=3 => ERROR ORA-03113"));
}

TEST_F(FaultsTest, AFaultWithACountFiresThatManyTimesAcrossSessions) {
  write_scenario(single_instance("<fault on=\"logon\" error=\"1017\" times=\"2\"/>"));
  for (int attempt = 0; attempt < 3; ++attempt) {
    client_t client(api());
    ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_SYSDBA), attempt < 2 ? OCI_ERROR : OCI_SUCCESS) << attempt;
  }
  EXPECT_NE(state_text().find("times=\"0\""), std::string::npos);
}

TEST_F(FaultsTest, AnUnknownErrorCodeReadsAsOracleWordsAMissingMessage) {
  write_scenario(single_instance("<fault on=\"startup\" error=\"99999\"/>", "state=\"down\""));
  client_t client(api());
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  ASSERT_EQ(client.logon(OCI_SYSDBA | OCI_PRELIM_AUTH), OCI_SUCCESS);
  EXPECT_EQ(api().OCIDBStartup(client.svc(), client.err(), nullptr, OCI_DEFAULT, 0), OCI_ERROR);
  EXPECT_EQ(client.error_text(), "ORA-99999: Message 99999 not found;  product=RDBMS; facility=ORA\n");
}

TEST_F(FaultsTest, FaultsOfAnotherInstanceDoNotFireHere) {
  std::string scenario = single_instance();
  scenario.replace(scenario.find("</machine>"), 0,
                   std::string("<instance sid=\"SALES\" home=\"") + kHome +
                       "\" state=\"open\"><fault on=\"attach\" error=\"12560\"/></instance>\n");
  write_scenario(scenario);
  client_t client(api());
  EXPECT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  client_t sales(api());
  EXPECT_EQ(sales.attach("SALES", kHome), OCI_ERROR);
}

}  // namespace
}  // namespace ocisim_test
