// Queries and commands against the simulated client: what a real server's answers do to rows.
#include "oracle/client/oracle_query.h"

#include <gtest/gtest.h>

#include "ocisim_fixture.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"

namespace {

using namespace specific::oracle;
using ocisim_test::machine_with;
using rows_t = std::vector<oracle_row_t>;

const std::u16string kHome = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

std::string parameters_instance(const std::string& extra = std::string()) {
  return "<instance sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" state=\"open\">\n"
         "<database name=\"orcl\" dbid=\"1\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\"/>\n"
         "<parameter name=\"a_short\" value=\"x\"/>\n"
         "<parameter name=\"b_null\"/>\n"
         "<parameter name=\"c_long\" value=\"" + std::string(1024, 'y') + "\"/>\n"
         "<parameter name=\"d_exact\" value=\"" + std::string(1023, 'z') + "\"/>\n"
         // U+0400 is 0xD0 0x80 in UTF-8: two bytes the layer widens one by one.
         "<parameter name=\"e_wide\" value=\"a\xD0\x80" "b\"/>\n" +
         extra + "</instance>\n";
}

const char kParameters[] = "SELECT NAME, VALUE FROM V$PARAMETER";

using QueryOcisim = ocisim_test::ocisim_test_t;

TEST_F(QueryOcisim, NullAndOverlongValuesDropTheirRowsAndBytesAreWidenedOneByOne) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  auto result = holder.make_query()->exec(kParameters, 2, false);
  EXPECT_EQ(result->rows(),
            (rows_t{{u"a_short", u"x"},
                    {u"d_exact", std::u16string(1023, u'z')},
                    {u"e_wide", std::u16string{u'a', char16_t(0xFFD0), char16_t(0xFF80), u'b'}}}));
}

TEST_F(QueryOcisim, UpperCaseIsForComparingAndTheNameKeepsItsCase) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  EXPECT_EQ(holder.make_query()->single_value("SELECT OPEN_MODE FROM V$DATABASE", true), u"READ WRITE");
  EXPECT_EQ(holder.get_session()->get_database_name(), u"orcl");
}

TEST_F(QueryOcisim, FailingFetchGivesTheRowsBeforeIt) {
  use_scenario(machine_with(parameters_instance(
      "<fault on=\"fetch\" sql=\"SELECT NAME, VALUE FROM V$PARAMETER\" after_rows=\"1\" error=\"3113\"/>\n")));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  std::shared_ptr<COracleQueryResult> result;
  ASSERT_NO_THROW(result = holder.make_query()->exec(kParameters, 2, false));
  EXPECT_EQ(result->rows(), (rows_t{{u"a_short", u"x"}}));
}

TEST_F(QueryOcisim, StatementWithoutColumnsEndsQuietlyAtItsFetch) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  const char statement[] = "CREATE DIRECTORY DSL_QUIET AS 'C:\\tmp'";
  std::shared_ptr<COracleQueryResult> result;
  ASSERT_NO_THROW(result = holder.make_query()->exec(statement, 0, true));
  EXPECT_TRUE(result->rows().empty());
  // The statement ran once, and the one fetch after it was refused (no query, nothing to
  // fetch): that refusal ends the result without an exception.
  const auto executes = calls_of("OCIStmtExecute");
  ASSERT_EQ(executes.size(), 1u);
  EXPECT_NE(executes[0].find("iters=1"), std::string::npos) << executes[0];
  EXPECT_NE(executes[0].find("=> OK"), std::string::npos) << executes[0];
  const auto fetches = calls_of("OCIStmtFetch2");
  ASSERT_EQ(fetches.size(), 1u);
  EXPECT_NE(fetches[0].find("=> ERROR ORA-24374"), std::string::npos) << fetches[0];
  // run() is the same without a result, and the statement took effect the first time.
  EXPECT_THROW(holder.make_query()->run(statement), COracleExc);  // ORA-00955: it exists now
}

TEST_F(QueryOcisim, UnknownViewAndInvalidStatementAreRefusedAsOracleWould) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  try {
    holder.make_query()->exec("SELECT X FROM V$NOSUCHVIEW", 1, true);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 942u);
    EXPECT_EQ(e.messages().back().text, "Failed to exec query [SELECT X FROM V$NOSUCHVIEW].");
  }
  EXPECT_THROW(holder.make_query()->exec("FROBNICATE", 1, true), COracleExc);
}

TEST_F(QueryOcisim, CommandBindsByNameAndReportsTheServersRefusal) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  auto cmd = holder.get_session()->make_command(
      "BEGIN DBMS_DISKGROUP.GETFILEATTR(:name, :type, :size, :block); END;");
  char name[] = "+DATA/ORCL/DATAFILE/missing.256.1";
  int32_t type = 0, size = 0, block = 0;
  cmd->bind(":name", name, SQLT_STR, sizeof name);
  cmd->bind(":type", &type, SQLT_INT, 4);
  cmd->bind(":size", &size, SQLT_INT, 4);
  cmd->bind(":block", &block, SQLT_INT, 4);
  try {
    cmd->execute();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.messages().back().text.rfind("Failed to execute oracle command, handle: ", 0), 0u);
  }
  EXPECT_EQ(calls_of("OCIBindByName").size(), 4u);
}

TEST_F(QueryOcisim, CommandWithAnOutTextTooLongForItsBufferFailsWithBufferTooSmall) {
  use_scenario(machine_with(parameters_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  auto cmd = holder.get_session()->make_command("BEGIN\n :v := 'twelve chars';\n END;");
  char text[8] = "seed";
  cmd->bind(":v", text, SQLT_STR, sizeof text);
  try {
    cmd->execute();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 6502u);
    EXPECT_NE(std::string(e.what()).find(
                  "ORA-06502: PL/SQL: numeric or value error: character string buffer too small"),
              std::string::npos)
        << e.what();
  }
  EXPECT_STREQ(text, "seed");
}

}  // namespace
