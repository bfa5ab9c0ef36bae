#include "oracle/client/oracle_query.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "client_test_support.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/unique_object_name.h"

namespace {

using dsl_test::fake_row_t;
using dsl_test::has_line;
using dsl_test::null_cell;
using dsl_test::row_of;
using namespace specific::oracle;
using rows_t = std::vector<oracle_row_t>;

class OracleQuery : public dsl_test::client_test_t {
 protected:
  void SetUp() override {
    session_ = std::make_shared<COracleSession>(conn_t{});
    session_->init(kLogonSysdba);
    oci_->clear_calls();
  }
  std::shared_ptr<COracleSession> session_;
};

const char kSql[] = "SELECT A, B FROM T";

TEST_F(OracleQuery, RowsComeBackInFetchOrderAsWideText) {
  oci_->set_rows(kSql, {row_of({"a1", "b1"}), row_of({"a2", "b2"})});
  auto result = session_->make_query()->exec(kSql, 2, false);
  EXPECT_EQ(result->rows(), (rows_t{{u"a1", u"b1"}, {u"a2", u"b2"}}));
}

TEST_F(OracleQuery, EachStatementSetsTheSessionPreparesDefinesExecutesAndFetches) {
  oci_->set_rows(kSql, {row_of({"a", "b"})});
  session_->make_query()->exec(kSql, 2, false);
  EXPECT_EQ(oci_->lines(),
            (std::vector<std::string>{
                "OCIAttrSet svcctx#3 type=3 attr=7 value=session#5 size=0 err=error#2",
                "OCIHandleAlloc parent=env#1 type=4 extra=0 user=null",
                "OCIStmtPrepare stmt#6 err=error#2 sql=\"SELECT A, B FROM T\" length=18 language=1 mode=0",
                "OCIDefineByPos stmt#6 err=error#2 position=1 size=1024 type=5 indicator=set length=null code=null mode=0",
                "OCIDefineByPos stmt#6 err=error#2 position=2 size=1024 type=5 indicator=set length=null code=null mode=0",
                "OCIStmtExecute svcctx#3 stmt#6 err=error#2 iters=0 offset=0 in=null out=null mode=0",
                "OCIStmtFetch2 stmt#6 err=error#2 rows=1 orientation=2 offset=0 mode=0",
                "OCIStmtFetch2 stmt#6 err=error#2 rows=1 orientation=2 offset=0 mode=0",
                // The defines go before the statement.
                "OCIHandleFree define#7 type=6",
                "OCIHandleFree define#8 type=6",
                "OCIHandleFree stmt#6 type=4",
            }));
}

TEST_F(OracleQuery, EmptyResultGivesNoRowsEmptyValueAndEmptyFirstRow) {
  auto query = session_->make_query();
  EXPECT_TRUE(query->exec(kSql, 2, false)->rows().empty());
  EXPECT_EQ(query->single_value("SELECT X FROM T", true), u"");
  EXPECT_TRUE(query->first_row(kSql, 2, true).empty());
}

TEST_F(OracleQuery, ColumnOf1024BytesOrMoreDropsItsRow) {
  oci_->set_rows(kSql, {row_of({std::string(1023, 'k'), "kept"}),
                        row_of({std::string(1024, 'x'), "dropped"}),
                        row_of({std::string(5000, 'y'), "dropped too"}), row_of({"z", "last"})});
  auto result = session_->make_query()->exec(kSql, 2, false);
  ASSERT_EQ(result->rows().size(), 2u);
  EXPECT_EQ(result->rows()[0][0], std::u16string(1023, u'k'));
  EXPECT_EQ(result->rows()[1], (oracle_row_t{u"z", u"last"}));
}

TEST_F(OracleQuery, NullInOneColumnDropsThatRowOnly) {
  fake_row_t withNull = row_of({"a2"});
  withNull.cells.push_back(null_cell());
  oci_->set_rows(kSql, {row_of({"a1", "b1"}), withNull, row_of({"a3", "b3"})});
  auto result = session_->make_query()->exec(kSql, 2, false);
  EXPECT_EQ(result->rows(), (rows_t{{u"a1", u"b1"}, {u"a3", u"b3"}}));
}

TEST_F(OracleQuery, SingleValueOfANullIsEmpty) {
  fake_row_t row;
  row.cells.push_back(null_cell());
  oci_->set_rows("SELECT N FROM T", {row});
  EXPECT_EQ(session_->make_query()->single_value("SELECT N FROM T", true), u"");
}

TEST_F(OracleQuery, SuccessWithInfoFromAFetchCountsAsARow) {
  fake_row_t info = row_of({"info", "row"});
  info.fetchResult = OCI_SUCCESS_WITH_INFO;
  oci_->set_rows(kSql, {info, row_of({"next", "row"})});
  auto result = session_->make_query()->exec(kSql, 2, false);
  EXPECT_EQ(result->rows(), (rows_t{{u"info", u"row"}, {u"next", u"row"}}));
}

TEST_F(OracleQuery, FailingFetchGivesTheRowsBeforeItAndNoException) {
  oci_->set_rows(kSql, {row_of({"1", "a"}), row_of({"2", "b"}), row_of({"3", "c"})});
  oci_->fail_fetch_after(kSql, 2, 3113, "ORA-03113: end-of-file on communication channel\n");
  std::shared_ptr<COracleQueryResult> result;
  ASSERT_NO_THROW(result = session_->make_query()->exec(kSql, 2, false));
  EXPECT_EQ(result->rows(), (rows_t{{u"1", u"a"}, {u"2", u"b"}}));
}

TEST_F(OracleQuery, AnyFetchAnswerOtherThanSuccessEndsTheLoop) {
  oci_->set_rows(kSql, {row_of({"1", "a"}), row_of({"2", "b"})});
  oci_->fail("OCIStmtFetch2", OCI_INVALID_HANDLE);
  EXPECT_TRUE(session_->make_query()->exec(kSql, 2, false)->rows().empty());
}

TEST_F(OracleQuery, UpperCaseTurnsReadWriteIntoREADWRITE) {
  oci_->set_rows("SELECT OPEN_MODE FROM V$DATABASE", {row_of({"read write"})});
  EXPECT_EQ(session_->make_query()->single_value("SELECT OPEN_MODE FROM V$DATABASE", true),
            u"READ WRITE");
  EXPECT_EQ(session_->make_query()->single_value("SELECT OPEN_MODE FROM V$DATABASE", false),
            u"read write");
}

TEST_F(OracleQuery, ByteAbove0x7FIsSignExtendedWithOrWithoutUpperCase) {
  oci_->set_rows("SELECT P FROM T", {row_of({std::string("a\x80\xff" "b")})});
  EXPECT_EQ(session_->make_query()->single_value("SELECT P FROM T", false),
            (std::u16string{u'a', char16_t(0xFF80), char16_t(0xFFFF), u'b'}));
  EXPECT_EQ(session_->make_query()->single_value("SELECT P FROM T", true),
            (std::u16string{u'A', char16_t(0xFF80), char16_t(0xFFFF), u'B'}));
}

TEST_F(OracleQuery, StatementWithoutColumnsRunsOnceAndItsFailedFetchIsQuiet) {
  ASSERT_NO_THROW(session_->make_query()->run("ALTER DATABASE MOUNT"));
  EXPECT_EQ(oci_->lines_of("OCIStmtExecute"),
            (std::vector<std::string>{
                "OCIStmtExecute svcctx#3 stmt#6 err=error#2 iters=1 offset=0 in=null out=null mode=0"}));
  EXPECT_EQ(oci_->count("OCIDefineByPos"), 0u);
  EXPECT_EQ(oci_->count("OCIStmtFetch2"), 1u);
}

TEST_F(OracleQuery, PrepareFailureCarriesBothTraceLines) {
  oci_->fail("OCIStmtPrepare", OCI_ERROR, 900, "ORA-00900: invalid SQL statement\n");
  try {
    session_->make_query()->exec("BOGUS", 1, true);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 900u);
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-00900: invalid SQL statement\n\n"
              "--tr:OracleSession: failed to create OCI Stmt.\n"
              "--tr:Failed to exec query [BOGUS].");
  }
}

TEST_F(OracleQuery, SessionAttributeFailureCountsAsAPrepareFailure) {
  oci_->fail("OCIAttrSet", OCI_ERROR, 1012, "ORA-01012: not logged on\n");
  try {
    session_->make_query()->exec(kSql, 2, true);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_NE(std::string(e.what()).find("--tr:OracleSession: failed to create OCI Stmt."),
              std::string::npos);
  }
}

TEST_F(OracleQuery, DefineFailureCarriesTheQueryTraceLine) {
  oci_->fail("OCIDefineByPos", OCI_ERROR, 1007, "ORA-01007: variable not in select list\n");
  try {
    session_->make_query()->exec(kSql, 2, true);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-01007: variable not in select list\n\n"
              "--tr:Failed to exec query [SELECT A, B FROM T].");
  }
  EXPECT_EQ(oci_->live_handles().size(), 5u) << "statement left behind";
}

TEST_F(OracleQuery, ExecuteFailureThrows) {
  oci_->fail("OCIStmtExecute", OCI_ERROR, 942, "ORA-00942: table or view does not exist\n");
  try {
    session_->make_query()->exec("SELECT X FROM NOWHERE", 1, true);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 942u);
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-00942: table or view does not exist\n\n"
              "--tr:Failed to exec query [SELECT X FROM NOWHERE].");
  }
}

TEST_F(OracleQuery, QueryAndResultAreLogged) {
  oci_->set_rows(kSql, {row_of({"a1", "b1"}), row_of({"a2", "b2"})});
  session_->make_query()->exec(kSql, 2, false);
  const auto lines = log_lines();
  const long start = dsl_test::index_of(lines, "Exec oracle query: SELECT A, B FROM T");
  ASSERT_GE(start, 0);
  const long result = dsl_test::index_of(lines, "Oracle query result", start);
  ASSERT_GE(result, 0);
  ASSERT_GE(lines.size(), static_cast<size_t>(result + 3));
  EXPECT_EQ(lines[result + 1], "a1 b1 ");
  EXPECT_EQ(lines[result + 2], "a2 b2 ");
}

TEST_F(OracleQuery, QueryKeepsTheSessionHandlesAlive) {
  auto query = session_->make_query();
  session_.reset();  // ends the session, but the handles the query holds stay allocated
  EXPECT_TRUE(has_line(oci_->live_handles(), "env#1"));
  EXPECT_TRUE(has_line(oci_->live_handles(), "svcctx#3"));
  EXPECT_TRUE(has_line(oci_->live_handles(), "session#5"));
  query.reset();
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST(QueryResult, NextRowWalksTheRowsThenHandsOutNothing) {
  COracleQueryResult result({{u"1"}, {u"2"}});
  EXPECT_EQ(result.next_row(), (oracle_row_t{u"1"}));
  EXPECT_EQ(result.cursor(), 1u);
  EXPECT_EQ(result.next_row(), (oracle_row_t{u"2"}));
  EXPECT_EQ(result.next_row(), std::nullopt);
  COracleQueryResult empty({});
  EXPECT_EQ(empty.next_row(), std::nullopt);
}

TEST(WidenColumn, StopsAtTheFirstNulOrAtTheEndOfTheBuffer) {
  const char bytes[] = {'a', 'b', '\0', 'c'};
  EXPECT_EQ(widen_column(bytes, 4, false), u"ab");
  const char full[] = {'x', 'y', 'z'};
  EXPECT_EQ(widen_column(full, 3, false), u"xyz");
}

TEST(WidenColumn, Byte0x80BecomesFF80) {
  const char bytes[] = {static_cast<char>(0x80), static_cast<char>(0xC3), static_cast<char>(0xA9)};
  EXPECT_EQ(widen_column(bytes, 3, false),
            (std::u16string{char16_t(0xFF80), char16_t(0xFFC3), char16_t(0xFFA9)}));
}

TEST(WidenColumn, UpperCaseTouchesAsciiLettersOnly) {
  const std::string text = "open migrate 1-_z";
  EXPECT_EQ(widen_column(text.data(), text.size(), true), u"OPEN MIGRATE 1-_Z");
}

// Commands ----------------------------------------------------------------------------------

using OracleCmdExec = OracleQuery;

TEST_F(OracleCmdExec, PreparesWithoutSettingTheSessionAttribute) {
  auto cmd = session_->make_command("BEGIN NULL; END;");
  EXPECT_EQ(oci_->lines(),
            (std::vector<std::string>{
                "OCIHandleAlloc parent=env#1 type=4 extra=0 user=null",
                "OCIStmtPrepare stmt#6 err=error#2 sql=\"BEGIN NULL; END;\" length=16 language=1 mode=0"}));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Creating oracle cmd executor: BEGIN NULL; END;"));
  EXPECT_TRUE(has_line(lines, "Creating oracle cmd executor: BEGIN NULL; END; ok."));
}

TEST_F(OracleCmdExec, BindsByNameAndExecutesOnceWithOutParametersArriving) {
  auto cmd = session_->make_command("BEGIN :n := :n * 2; END;");
  char name[] = "DIR_1";
  int32_t number = 21;
  cmd->bind(":name", name, SQLT_STR, sizeof name);
  cmd->bind(":n", &number, SQLT_INT, 4);
  cmd->execute();
  EXPECT_EQ(number, 42);
  EXPECT_EQ(oci_->lines_of("OCIBindByName"),
            (std::vector<std::string>{
                "OCIBindByName stmt#6 err=error#2 name=:name nameLength=-1 size=6 type=5 indicator=null "
                "length=null code=null maxArray=0 current=null mode=0",
                "OCIBindByName stmt#6 err=error#2 name=:n nameLength=-1 size=4 type=3 indicator=null "
                "length=null code=null maxArray=0 current=null mode=0"}));
  EXPECT_EQ(oci_->lines_of("OCIStmtExecute"),
            (std::vector<std::string>{
                "OCIStmtExecute svcctx#3 stmt#6 err=error#2 iters=1 offset=0 in=null out=null mode=0"}));
  const std::string handle =
      std::to_string(reinterpret_cast<uintptr_t>(cmd->statement()->handle()));
  EXPECT_TRUE(has_line(log_lines(), "Executing oracle cmd: " + handle + " ok."));
}

TEST_F(OracleCmdExec, PrepareFailureCarriesTheExecutorTraceLine) {
  oci_->fail("OCIStmtPrepare", OCI_ERROR, 900, "ORA-00900: invalid SQL statement\n");
  try {
    session_->make_command("NOT SQL");
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-00900: invalid SQL statement\n\n"
              "--tr:Failed to create oracle cmd executor.");
  }
}

TEST_F(OracleCmdExec, BindFailureNamesTheParameterAndTheHandle) {
  auto cmd = session_->make_command("BEGIN NULL; END;");
  oci_->fail("OCIBindByName", OCI_ERROR, 1036, "ORA-01036: illegal variable name/number\n");
  int32_t v = 0;
  const std::string handle =
      std::to_string(reinterpret_cast<uintptr_t>(cmd->statement()->handle()));
  try {
    cmd->bind(":missing", &v, SQLT_INT, 4);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-01036: illegal variable name/number\n\n"
              "--tr:Failed to bind param [:missing] to cmd executor, handle: " + handle);
  }
}

TEST_F(OracleCmdExec, ExecuteFailureNamesTheHandle) {
  auto cmd = session_->make_command("BEGIN RAISE_IT; END;");
  oci_->fail("OCIStmtExecute", OCI_ERROR, 6550, "ORA-06550: line 1, column 7\n");
  const std::string handle =
      std::to_string(reinterpret_cast<uintptr_t>(cmd->statement()->handle()));
  try {
    cmd->execute();
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-06550: line 1, column 7\n\n"
              "--tr:Failed to execute oracle command, handle: " + handle);
  }
}

// Unique object names -----------------------------------------------------------------------

TEST(UniqueObjectName, IsALetterAnd25CharactersOfAGuidWithinOraclesLimit) {
  const std::string name = make_unique_object_name();
  EXPECT_EQ(name.size(), 26u);
  EXPECT_TRUE(std::regex_match(name, std::regex("^[A-Z]_[0-9A-F]{8}_[0-9A-F]{4}_[0-9A-F]{4}_[0-9A-F]{4}_$")))
      << name;
  EXPECT_NE(make_unique_object_name(), name);
}

TEST(UniqueObjectName, ReplacesBracesAndDashesAndUpperCasesTheRest) {
  EXPECT_EQ(unique_object_name_from("{1b4e28ba-2fa1-11d2-883f-0016d3cca427}"),
            "T_1B4E28BA_2FA1_11D2_883F_");
  EXPECT_EQ(unique_object_name_from("{ab}"), "T_AB_");
}

}  // namespace
