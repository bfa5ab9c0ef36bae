// How the simulated server reads quotes, as Oracle does: a doubled apostrophe inside a '...'
// literal is one apostrophe of the value, and a double quote is never part of an identifier
// (doubled or not), so a value built to end its quotes early cannot become a second token.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class QuotingTest : public OcisimTest {
 protected:
  void SetUp() override {
    OcisimTest::SetUp();
    write_scenario(single_instance());
    client_ = std::make_unique<client_t>(api());
    EXPECT_EQ(client_->attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client_->logon(OCI_SYSDBA), OCI_SUCCESS) << client_->error_text();
  }

  std::string run(const std::string& sql) {
    if (client_->run(sql) != OCI_SUCCESS) return client_->error_text();
    return "ok";
  }

  std::vector<std::string> directories() {
    std::vector<row_t> rows;
    std::vector<std::string> out;
    if (client_->query("SELECT DIRECTORY_NAME, DIRECTORY_PATH FROM DBA_DIRECTORIES", 2, rows) !=
        OCI_NO_DATA) {
      out.push_back("<error " + client_->error_text() + ">");
      return out;
    }
    for (const row_t& row : rows) out.push_back(row[0].text + "|" + row[1].text);
    return out;
  }

  std::unique_ptr<client_t> client_;
};

TEST_F(QuotingTest, ADoubledApostropheIsOneApostropheOfTheLiteral) {
  EXPECT_EQ(run("CREATE DIRECTORY D1 AS 'C:\\O''Brien\\arch'"), "ok");
  EXPECT_EQ(directories(), (std::vector<std::string>{"D1|C:\\O'Brien\\arch"}));
}

TEST_F(QuotingTest, ALiteralBuiltToEndEarlyStaysOneLiteral) {
  EXPECT_EQ(run("CREATE DIRECTORY D2 AS 'C:\\x'' OR ''1''=''1'"), "ok");
  EXPECT_EQ(run("CREATE DIRECTORY D3 AS '''; DROP DIRECTORY D2; --'"), "ok");
  EXPECT_EQ(directories(),
            (std::vector<std::string>{"D2|C:\\x' OR '1'='1", "D3|'; DROP DIRECTORY D2; --"}));
}

TEST_F(QuotingTest, AnApostropheThatIsNotDoubledEndsTheLiteral) {
  EXPECT_EQ(run("CREATE DIRECTORY D4 AS 'C:\\O'Brien'"),
            "ORA-01756: quoted string not properly terminated\n");
  EXPECT_EQ(directories(), (std::vector<std::string>{}));
}

TEST_F(QuotingTest, AQuotedIdentifierKeepsItsCase) {
  EXPECT_EQ(run("CREATE DIRECTORY \"my dir\" AS 'C:\\a'"), "ok");
  EXPECT_EQ(directories(), (std::vector<std::string>{"my dir|C:\\a"}));
}

TEST_F(QuotingTest, ADoubledDoubleQuoteInAnIdentifierIsRefusedAsOracleRefusesIt) {
  EXPECT_EQ(run("CREATE DIRECTORY \"a\"\"b\" AS 'C:\\a'"),
            "ORA-25716: The identifier contains a double quotation mark (\") character\n");
  EXPECT_EQ(run("CREATE DIRECTORY \"\"\"; DROP DIRECTORY x; --\" AS 'C:\\a'"),
            "ORA-25716: The identifier contains a double quotation mark (\") character\n");
  EXPECT_EQ(directories(), (std::vector<std::string>{}));
}

TEST_F(QuotingTest, AnEmptyQuotedIdentifierIsRefused) {
  EXPECT_EQ(run("CREATE DIRECTORY \"\" AS 'C:\\a'"), "ORA-01741: illegal zero-length identifier\n");
}

TEST_F(QuotingTest, AnUnclosedQuotedIdentifierIsRefused) {
  EXPECT_EQ(run("CREATE DIRECTORY \"abc AS 'C:\\a'"), "ORA-01740: missing double quote in identifier\n");
}

}  // namespace
}  // namespace ocisim_test
