// Queries against an instance's views, and how their values reach the caller's defines.
#include <cstring>

#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class QueryTest : public OcisimTest {
 protected:
  void SetUp() override {
    OcisimTest::SetUp();
    write_scenario(single_instance());
  }

  // A SYSDBA session on ORCL.
  std::unique_ptr<client_t> connect() {
    auto client = std::make_unique<client_t>(api());
    EXPECT_EQ(client->attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client->logon(OCI_SYSDBA), OCI_SUCCESS) << client->error_text();
    return client;
  }

  // The single text of a one-column query, "<error ORA-...>" when it fails.
  std::string single(client_t& client, const std::string& sql) {
    std::vector<row_t> rows;
    const sword code = client.query(sql, 1, rows);
    if (code != OCI_NO_DATA) return "<error " + client.error_text() + ">";
    if (rows.empty()) return "<no row>";
    return rows[0][0].text;
  }

  // Every row as "a|b|c".
  std::vector<std::string> table(client_t& client, const std::string& sql, int columns) {
    std::vector<row_t> rows;
    const sword code = client.query(sql, columns, rows);
    std::vector<std::string> result;
    if (code != OCI_NO_DATA) {
      result.push_back("<error " + client.error_text() + ">");
      return result;
    }
    for (const row_t& row : rows) {
      std::string line;
      for (size_t i = 0; i < row.size(); ++i) {
        line += (i == 0 ? "" : "|") + (row[i].indicator == -1 ? std::string("<null>") : row[i].text);
      }
      result.push_back(line);
    }
    return result;
  }
};

TEST_F(QueryTest, AnswersTheStateQueriesOfAnOpenDatabase) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT STATUS FROM V$INSTANCE"), "OPEN");
  EXPECT_EQ(single(*client, "SELECT DATABASE_STATUS FROM V$INSTANCE"), "ACTIVE");
  EXPECT_EQ(single(*client, "SELECT VERSION FROM V$INSTANCE"), "19.0.0.0.0");
  EXPECT_EQ(single(*client, "SELECT NAME FROM V$DATABASE"), "ORCL");
  EXPECT_EQ(single(*client, "SELECT DBID FROM V$DATABASE"), "1559187620");
  EXPECT_EQ(single(*client, "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1"),
            "C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL");
  EXPECT_EQ(table(*client, "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE", 2),
            std::vector<std::string>{"READ WRITE|ARCHIVELOG"});
}

TEST_F(QueryTest, TheTestOperationsArchivedLogQueryListsEveryRecordWithItsNullNames) {
  auto client = connect();
  EXPECT_EQ(table(*client, "SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG", 2),
            (std::vector<std::string>{"9|C:\\arch\\ORCL_1_9.ARC", "10|<null>", "11|C:\\arch\\ORCL_1_11.ARC"}));
}

TEST_F(QueryTest, ANullLeavesTheBufferUntouchedAndSetsTheIndicatorToMinusOne) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr), OCI_SUCCESS);
  const std::string sql = "SELECT NAME FROM V$ARCHIVED_LOG WHERE SEQUENCE# = 10";
  ASSERT_EQ(api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()),
                                 static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT),
            OCI_SUCCESS);
  char buffer[16];
  std::memcpy(buffer, "sentinel", 9);
  sb2 indicator = 99;
  ub2 code = 77;
  OCIDefine* define = nullptr;
  ASSERT_EQ(api().OCIDefineByPos(stmt, &define, client->err(), 1, buffer, sizeof buffer, SQLT_STR, &indicator,
                                 nullptr, &code, OCI_DEFAULT),
            OCI_SUCCESS);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(indicator, -1);
  EXPECT_EQ(code, 1405);
  EXPECT_STREQ(buffer, "sentinel");
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_NO_DATA);
  EXPECT_EQ(api().OCIHandleFree(stmt, OCI_HTYPE_STMT), OCI_SUCCESS);
}

TEST_F(QueryTest, ANullWithoutAnIndicatorFailsTheFetchWithOra01405) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME FROM V$ARCHIVED_LOG WHERE SEQUENCE# = 10";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  char buffer[16];
  OCIDefine* define = nullptr;
  api().OCIDefineByPos(stmt, &define, client->err(), 1, buffer, sizeof buffer, SQLT_STR, nullptr, nullptr, nullptr,
                       OCI_DEFAULT);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01405: fetched column value is NULL\n");
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, ATruncatedValueKeepsWhatFitsAndReportsTheOriginalLengthWithInfo) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME FROM V$DATABASE";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  char buffer[4];
  sb2 indicator = 0;
  ub2 length = 0;
  ub2 code = 0;
  OCIDefine* define = nullptr;
  api().OCIDefineByPos(stmt, &define, client->err(), 1, buffer, sizeof buffer, SQLT_STR, &indicator, &length, &code,
                       OCI_DEFAULT);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_SUCCESS_WITH_INFO);
  EXPECT_STREQ(buffer, "ORC");
  EXPECT_EQ(indicator, 4);
  EXPECT_EQ(length, 3);
  EXPECT_EQ(code, 1406);
  EXPECT_EQ(client->error_text(), "ORA-01406: fetched column value was truncated\n");
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, AValueOfExactlyTheBufferSizeIsTruncatedBecauseTheTerminatorNeedsAByte) {
  const std::string long_name(1024, 'X');
  write_scenario(single_instance("<archived_log recid=\"9\" stamp=\"9\" sequence=\"20\" name=\"" + long_name + "\"/>"));
  auto client = connect();
  std::vector<row_t> rows;
  ASSERT_EQ(client->query("SELECT NAME FROM V$ARCHIVED_LOG WHERE SEQUENCE# = 20", 1, rows), OCI_NO_DATA);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][0].indicator, 1024);
  EXPECT_EQ(rows[0][0].text, std::string(1023, 'X'));
}

TEST_F(QueryTest, CharacterAndIntegerDefinesReceiveTheirOwnForms) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME, DBID FROM V$DATABASE";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  char name[8];
  std::memset(name, '#', sizeof name);
  ub2 name_length = 0;
  sb4 dbid = 0;
  sb2 indicators[2] = {5, 5};
  OCIDefine* first = nullptr;
  OCIDefine* second = nullptr;
  api().OCIDefineByPos(stmt, &first, client->err(), 1, name, sizeof name, SQLT_CHR, &indicators[0], &name_length,
                       nullptr, OCI_DEFAULT);
  api().OCIDefineByPos(stmt, &second, client->err(), 2, &dbid, sizeof dbid, SQLT_INT, &indicators[1], nullptr, nullptr,
                       OCI_DEFAULT);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  ASSERT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(std::string(name, name_length), "ORCL");
  EXPECT_EQ(name[4], '#');  // no terminator for SQLT_CHR
  EXPECT_EQ(dbid, 1559187620);
  EXPECT_EQ(indicators[0], 0);
  EXPECT_EQ(indicators[1], 0);
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, AnUnknownViewIsTableOrViewDoesNotExist) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT NAME FROM V$NO_SUCH_VIEW"), "<error ORA-00942: table or view does not exist\n>");
}

TEST_F(QueryTest, AStatementTheLibraryNeverSendsIsAnInvalidSqlStatement) {
  auto client = connect();
  EXPECT_EQ(client->run("INSERT INTO T VALUES (1)"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-00900: invalid SQL statement\n");
  EXPECT_EQ(client->run("ALTER DATABASE RENAME GLOBAL_NAME TO X"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 900);
}

TEST_F(QueryTest, AnUnknownColumnIsAnInvalidIdentifier) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT NO_SUCH FROM V$DATABASE"), "<error ORA-00904: \"NO_SUCH\": invalid identifier\n>");
  EXPECT_EQ(single(*client, "SELECT D.NO_SUCH FROM V$DATABASE D"),
            "<error ORA-00904: \"D\".\"NO_SUCH\": invalid identifier\n>");
}

TEST_F(QueryTest, ATrailingSemicolonIsAnInvalidCharacter) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT NAME FROM V$DATABASE;"), "<error ORA-00911: invalid character\n>");
}

TEST_F(QueryTest, AStatementThatIsNoQueryNeedsAnIterationAndHasNothingToFetch) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "ALTER DATABASE BEGIN BACKUP";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  EXPECT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-24333: zero iteration count\n");
  EXPECT_FALSE(contains(journal("SQL"), "BEGIN BACKUP"));  // it never reached the server
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 1, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-24374: define not done before fetch or execute and fetch\n");
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, AQueryExecutedWithOneIterationFetchesItsFirstRowAtOnce) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT SEQUENCE# FROM V$ARCHIVED_LOG";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  char buffer[16];
  sb2 indicator = 0;
  OCIDefine* define = nullptr;
  api().OCIDefineByPos(stmt, &define, client->err(), 1, buffer, sizeof buffer, SQLT_STR, &indicator, nullptr, nullptr,
                       OCI_DEFAULT);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 1, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_STREQ(buffer, "9");
  ASSERT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_STREQ(buffer, "10");
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, ADefineBeyondTheSelectListFailsTheExecute) {
  auto client = connect();
  std::vector<row_t> rows;
  EXPECT_EQ(client->query("SELECT NAME FROM V$DATABASE", 2, rows), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-01007: variable not in select list\n");
}

TEST_F(QueryTest, FetchingBeforeExecutingIsRefused) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME FROM V$DATABASE";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  EXPECT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 24338);
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

TEST_F(QueryTest, ADefineHandleCanBeFreedOnItsOwnAndGoesWithItsStatement) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME FROM V$DATABASE";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  char buffer[16];
  OCIDefine* first = nullptr;
  OCIDefine* second = nullptr;
  ASSERT_EQ(api().OCIDefineByPos(stmt, &first, client->err(), 1, buffer, 16, SQLT_STR, nullptr, nullptr, nullptr, 0),
            OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(first, OCI_HTYPE_DEFINE), OCI_SUCCESS);
  ASSERT_EQ(api().OCIDefineByPos(stmt, &second, client->err(), 1, buffer, 16, SQLT_STR, nullptr, nullptr, nullptr, 0),
            OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(stmt, OCI_HTYPE_STMT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(second, OCI_HTYPE_DEFINE), OCI_INVALID_HANDLE);
}

TEST_F(QueryTest, AVersionOrBannerQueryOfTheExploreFlowIsAnswered) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT version FROM V$INSTANCE"), "19.0.0.0.0");
  EXPECT_EQ(single(*client, "SELECT * FROM V$VERSION WHERE BANNER LIKE 'Oracle%'"),
            "Oracle Database 19c Enterprise Edition Release 19.0.0.0.0 - Production");
}

TEST_F(QueryTest, ContextFunctionsGiveTheDatabaseNames) {
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT SYS_CONTEXT('USERENV','DB_NAME') FROM DUAL"), "ORCL");
  EXPECT_EQ(single(*client, "SELECT SYS_CONTEXT('USERENV','DB_UNIQUE_NAME') FROM DUAL"), "ORCL");
  EXPECT_EQ(single(*client, "SELECT SYS_CONTEXT('USERENV','DB_DOMAIN') FROM DUAL"), "");
}

TEST_F(QueryTest, JoinsAggregatesAndSubqueriesOfTheCollectorsWork) {
  auto client = connect();
  EXPECT_EQ(table(*client, "SELECT F.MEMBER, L.BYTES FROM V$LOG L, V$LOGFILE F WHERE L.GROUP# = F.GROUP#", 2),
            (std::vector<std::string>{"C:\\app\\oracle\\oradata\\ORCL\\REDO01.LOG|209715200",
                                      "C:\\app\\oracle\\oradata\\ORCL\\REDO02.LOG|209715200",
                                      "D:\\mirror\\ORCL\\REDO02B.LOG|209715200"}));
  EXPECT_EQ(single(*client, "SELECT MAX(SEQUENCE#) FROM V$ARCHIVED_LOG WHERE STATUS != 'D'"), "11");
  EXPECT_EQ(table(*client, "SELECT RECID, STAMP FROM V$ARCHIVED_LOG WHERE RECID=(SELECT MAX(RECID) FROM V$ARCHIVED_LOG)", 2),
            std::vector<std::string>{"3|1162000003"});
  EXPECT_EQ(table(*client, "SELECT NAME, BLOCK_SIZE*FILE_SIZE_BLKS FROM V$CONTROLFILE", 2),
            (std::vector<std::string>{"C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL|10584064",
                                      "C:\\app\\oracle\\fast_recovery_area\\ORCL\\CONTROL02.CTL|10584064"}));
  EXPECT_EQ(table(*client, "SELECT NAME, VALUE FROM V$PARAMETER WHERE NAME LIKE '%_listener'", 2),
            std::vector<std::string>{"local_listener|LISTENER_ORCL"});
  EXPECT_EQ(single(*client, "SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=1 AND STAMP=1162000001"), "1");
  EXPECT_EQ(single(*client, "SELECT RECID FROM V$ARCHIVED_LOG WHERE RECID=1 AND STAMP=5"), "<no row>");
  EXPECT_EQ(single(*client, "SELECT COUNT(*) FROM V$DATAFILE"), "2");
}

TEST_F(QueryTest, TimesAreTurnedToUniversalTimeWithTheMachinesZone) {
  auto client = connect();
  const std::string utc = "TO_CHAR(SYS_EXTRACT_UTC(CAST(%1 AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss')";
  auto fill = [&](const std::string& column) {
    std::string text = utc;
    text.replace(text.find("%1"), 2, column);
    return text;
  };
  EXPECT_EQ(table(*client,
                  "SELECT NAME, FIRST_CHANGE#, NEXT_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\t" + fill("FIRST_TIME") + ", " +
                      fill("NEXT_TIME") + ", SEQUENCE# FROM V$ARCHIVED_LOG WHERE STATUS != 'D'",
                  7),
            (std::vector<std::string>{
                "C:\\arch\\ORCL_1_9.ARC|2700000|2710000|51200|2024/03/04 06:00:00|2024/03/04 10:30:00|9",
                "C:\\arch\\ORCL_1_11.ARC|2720000|2730000|153600|2024/03/04 23:00:00|2024/03/05 07:15:00|11"}));
}

TEST_F(QueryTest, RownumKeepsTheFirstRowsThatPassAsOracleCountsThem) {
  auto client = connect();
  EXPECT_EQ(table(*client, "SELECT SEQUENCE# FROM V$ARCHIVED_LOG WHERE ROWNUM <= 2", 1),
            (std::vector<std::string>{"9", "10"}));
  EXPECT_EQ(table(*client, "SELECT SEQUENCE# FROM V$ARCHIVED_LOG WHERE ROWNUM = 2", 1), std::vector<std::string>{});
  EXPECT_EQ(table(*client, "SELECT SEQUENCE# FROM V$ARCHIVED_LOG ORDER BY SEQUENCE# DESC", 1),
            (std::vector<std::string>{"11", "10", "9"}));
}

TEST_F(QueryTest, AMountedDatabaseAnswersFixedViewsButNoDictionaryView) {
  write_scenario(single_instance("", "state=\"mounted\""));
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT STATUS FROM V$INSTANCE"), "MOUNTED");
  EXPECT_EQ(single(*client, "SELECT OPEN_MODE FROM V$DATABASE"), "MOUNTED");
  EXPECT_EQ(single(*client, "SELECT DIRECTORY_NAME FROM DBA_DIRECTORIES"),
            "<error ORA-01219: database or pluggable database not open: queries allowed on fixed tables or views only\n>");
}

TEST_F(QueryTest, AStartedInstanceAnswersItsOwnViewsAndRefusesTheDatabasesWithNotMounted) {
  write_scenario(single_instance("", "state=\"started\""));
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT STATUS FROM V$INSTANCE"), "STARTED");
  EXPECT_EQ(single(*client, "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE"), "<error ORA-01507: database not mounted\n>");
  EXPECT_EQ(single(*client, "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1"), "<error ORA-01507: database not mounted\n>");
}

TEST_F(QueryTest, AnInstanceInUpgradeModeReportsOpenMigrate) {
  write_scenario(single_instance("", "state=\"open migrate\""));
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT STATUS FROM V$INSTANCE"), "OPEN MIGRATE");
}

TEST_F(QueryTest, AnOlderVersionHasTheOlderViewsAndBanners) {
  std::string scenario = single_instance();
  scenario.replace(scenario.find("version=\"19.0.0.0.0\""), 20, "version=\"11.2.0.4.0\"");
  write_scenario(scenario);
  auto client = connect();
  EXPECT_EQ(single(*client, "SELECT CDB FROM V$DATABASE"), "<error ORA-00904: \"CDB\": invalid identifier\n>");
  EXPECT_EQ(table(*client, "SELECT BANNER FROM V$VERSION", 1).size(), 5u);
}

// Runs `block` with one SQLT_STR bind :v of `size` bytes holding "seed"; the execute's code.
sword run_with_text_bind(client_t& client, const std::string& block, std::vector<char>& buffer) {
  OCIStmt* stmt = nullptr;
  client.api().OCIHandleAlloc(client.env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  client.api().OCIStmtPrepare(stmt, client.err(), reinterpret_cast<const OraText*>(block.c_str()),
                              static_cast<ub4>(block.size()), OCI_NTV_SYNTAX, OCI_DEFAULT);
  std::memcpy(buffer.data(), "seed", 5);
  OCIBind* bind = nullptr;
  client.api().OCIBindByName(stmt, &bind, client.err(), reinterpret_cast<const OraText*>(":v"), -1, buffer.data(),
                             static_cast<sb4>(buffer.size()), SQLT_STR, nullptr, nullptr, nullptr, 0, nullptr,
                             OCI_DEFAULT);
  const sword rc = client.api().OCIStmtExecute(client.svc(), stmt, client.err(), 1, 0, nullptr, nullptr, OCI_DEFAULT);
  client.api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
  return rc;
}

TEST_F(QueryTest, AnOutTextThatFitsItsBufferIsHandedOutWhole) {
  auto client = connect();
  std::vector<char> buffer(11);
  ASSERT_EQ(run_with_text_bind(*client, "BEGIN\n :v := 'ten chars!';\n END;", buffer), OCI_SUCCESS)
      << client->error_text();
  EXPECT_STREQ(buffer.data(), "ten chars!");
}

TEST_F(QueryTest, AnOutTextLongerThanItsBufferFailsWithBufferTooSmallAndIsNotCut) {
  auto client = connect();
  std::vector<char> buffer(10);  // nine characters and the terminator
  ASSERT_EQ(run_with_text_bind(*client, "BEGIN\n :v := 'ten chars!';\n END;", buffer), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 6502);
  EXPECT_EQ(client->error_text(),
            "ORA-06502: PL/SQL: numeric or value error: character string buffer too small\n"
            "ORA-06512: at line 2\n");
  // Nothing reached the buffer.
  EXPECT_STREQ(buffer.data(), "seed");
}

TEST_F(QueryTest, BindVariablesOfAQueryAreReadFromTheirBuffers) {
  auto client = connect();
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string sql = "SELECT NAME FROM V$ARCHIVED_LOG WHERE SEQUENCE# = :seq";
  api().OCIStmtPrepare(stmt, client->err(), reinterpret_cast<const OraText*>(sql.c_str()), static_cast<ub4>(sql.size()),
                       OCI_NTV_SYNTAX, OCI_DEFAULT);
  sb4 sequence = 11;
  OCIBind* bind = nullptr;
  ASSERT_EQ(api().OCIBindByName(stmt, &bind, client->err(), reinterpret_cast<const OraText*>(":seq"), -1, &sequence,
                                sizeof sequence, SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT),
            OCI_SUCCESS);
  OCIBind* wrong = nullptr;
  EXPECT_EQ(api().OCIBindByName(stmt, &wrong, client->err(), reinterpret_cast<const OraText*>(":other"), -1, &sequence,
                                sizeof sequence, SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT),
            OCI_ERROR);
  EXPECT_EQ(client->error_code(), 1036);
  char buffer[64];
  sb2 indicator = 0;
  OCIDefine* define = nullptr;
  api().OCIDefineByPos(stmt, &define, client->err(), 1, buffer, sizeof buffer, SQLT_STR, &indicator, nullptr, nullptr, 0);
  ASSERT_EQ(api().OCIStmtExecute(client->svc(), stmt, client->err(), 0, 0, nullptr, nullptr, OCI_DEFAULT), OCI_SUCCESS)
      << client->error_text();
  ASSERT_EQ(api().OCIStmtFetch2(stmt, client->err(), 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT), OCI_SUCCESS);
  EXPECT_STREQ(buffer, "C:\\arch\\ORCL_1_11.ARC");
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

}  // namespace
}  // namespace ocisim_test
