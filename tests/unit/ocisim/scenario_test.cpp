// The sample scenarios of tests/scenarios load and answer what the test operation and the
// state operations ask of each of their instances.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class ScenarioTest : public OcisimTest {
 protected:
  // Uses a copy of a sample scenario, so the state file lands in the test's folder.
  void use_sample(const std::string& name) {
    std::string text;
    const std::string source = env_value("DSL_SOURCE_DIR") + "/tests/scenarios/" + name;
    ASSERT_TRUE(read_file(source, text)) << source;
    write_scenario(text);
  }

  std::vector<std::string> rows_of(client_t& client, const std::string& sql, int columns) {
    std::vector<row_t> rows;
    std::vector<std::string> result;
    if (client.query(sql, columns, rows) != OCI_NO_DATA) return {"<error " + client.error_text() + ">"};
    for (const row_t& row : rows) {
      std::string line;
      for (size_t i = 0; i < row.size(); ++i) line += (i ? "|" : "") + row[i].text;
      result.push_back(line);
    }
    return result;
  }
};

TEST_F(ScenarioTest, TheDemoMachineHasTwoDatabasesInOneHomeAndAnAsmInstanceInTheGridHome) {
  use_sample("demo-machine.xml");
  const std::string home = kHome;
  for (const char* sid : {"ORCL", "SALES"}) {
    client_t client(api());
    ASSERT_EQ(client.attach(sid, home), OCI_SUCCESS) << sid;
    ASSERT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS) << client.error_text();
    EXPECT_EQ(rows_of(client, "SELECT STATUS FROM V$INSTANCE", 1), std::vector<std::string>{"OPEN"});
    EXPECT_EQ(rows_of(client, "SELECT OPEN_MODE, LOG_MODE FROM V$DATABASE", 2),
              std::vector<std::string>{"READ WRITE|ARCHIVELOG"});
    EXPECT_EQ(rows_of(client, "SELECT NAME FROM V$DATABASE", 1), std::vector<std::string>{sid});
    EXPECT_FALSE(rows_of(client, "SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG", 2).empty());
  }
  client_t orcl(api());
  ASSERT_EQ(orcl.attach("ORCL", home), OCI_SUCCESS);
  ASSERT_EQ(orcl.logon(OCI_SYSDBA), OCI_SUCCESS);
  EXPECT_EQ(rows_of(orcl, "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1", 1),
            std::vector<std::string>{"C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL"});
  client_t sales(api());
  ASSERT_EQ(sales.attach("SALES", home), OCI_SUCCESS);
  ASSERT_EQ(sales.logon(OCI_SYSDBA), OCI_SUCCESS);
  EXPECT_EQ(rows_of(sales, "SELECT NAME FROM V$CONTROLFILE WHERE ROWNUM=1", 1),
            std::vector<std::string>{"+DATA/SALES/CONTROLFILE/current.261.1108051263"});
  EXPECT_EQ(rows_of(sales, "SELECT NAME, GUID FROM V$PDBS", 2).size(), 2u);

  client_t asm_instance(api());
  ASSERT_EQ(asm_instance.attach("+ASM", kGridHome), OCI_SUCCESS);
  ASSERT_EQ(asm_instance.logon(OCI_SYSDBA), OCI_SUCCESS);
  EXPECT_EQ(rows_of(asm_instance, "SELECT STATUS FROM V$INSTANCE", 1), std::vector<std::string>{"STARTED"});
  EXPECT_EQ(rows_of(asm_instance,
                    "SELECT D.PATH,DG.NAME,D.MODE_STATUS FROM V$ASM_DISK D, V$ASM_DISKGROUP DG "
                    "WHERE DG.GROUP_NUMBER=D.GROUP_NUMBER",
                    3),
            (std::vector<std::string>{"\\\\.\\ORCLDISKDATA0|DATA|ONLINE", "\\\\.\\ORCLDISKFRA0|FRA|ONLINE"}));
  EXPECT_EQ(rows_of(asm_instance, "SELECT NAME FROM V$DATABASE", 1),
            std::vector<std::string>{"<error ORA-01507: database not mounted\n>"});
}

TEST_F(ScenarioTest, EverySampleScenarioParses) {
  for (const char* name : {"demo-machine.xml", "stopped-instance.xml", "hung-instance.xml", "legacy-11g.xml"}) {
    use_sample(name);
    client_t client(api());
    set_env("ORACLE_SID", "NO_SUCH_SID");
    set_env("ORACLE_HOME", "");
    EXPECT_EQ(api().OCIServerAttach(client.srv(), client.err(), nullptr, 0, OCI_DEFAULT), OCI_ERROR) << name;
    EXPECT_EQ(client.error_code(), 12560) << name << ": " << client.error_text();
  }
}

}  // namespace
}  // namespace ocisim_test
