// Statements that touch files on disk: log switches that archive, directory objects, and the
// PL/SQL packages that read, copy and delete files, on drives and in ASM disk groups.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

// Replaces the first `from` in `text`.
void replace_text(std::string& text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  text.replace(at, from.size(), to);
}

class FilesTest : public OcisimTest {
 protected:
  // ORCL archives to `destination` (a log_archive_dest_1 value); a +ASM instance maps the disk
  // group FRA to the test's asm folder.
  void write_machine(const std::string& parameters, const std::string& extra = "") {
    asm_folder_ = scenario_folder(folder_, "asm");
    std::string scenario = single_instance(parameters + extra);
    scenario.replace(scenario.find("</machine>"), 0,
                     std::string("<instance sid=\"+ASM\" home=\"") + kGridHome +
                         "\" state=\"started\" version=\"19.0.0.0.0\">"
                         "<disk_group name=\"FRA\" folder=\"" + asm_folder_ + "\\FRA\"/></instance>\n");
    write_scenario(scenario);
  }

  std::unique_ptr<client_t> connect(const std::string& sid = "ORCL") {
    auto client = std::make_unique<client_t>(api());
    EXPECT_EQ(client->attach(sid, sid == "+ASM" ? kGridHome : kHome), OCI_SUCCESS) << client->error_text();
    EXPECT_EQ(client->logon(OCI_SYSDBA), OCI_SUCCESS) << client->error_text();
    return client;
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

  std::string asm_folder_;
};

TEST_F(FilesTest, ArchiveLogCurrentArchivesTheCurrentLogIntoTheDestinationAndSwitches) {
  const std::string destination = scenario_folder(folder_, "arch");
  write_machine("<parameter name=\"log_archive_dest_1\" value=\"LOCATION=" + destination + "\"/>");
  auto client = connect();
  ASSERT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_SUCCESS) << client->error_text();
  const std::string name = destination + "\\ARC0000000012_1040000000.0001";
  EXPECT_EQ(rows_of(*client, "SELECT RECID, SEQUENCE#, NAME, FIRST_CHANGE#, NEXT_CHANGE# FROM V$ARCHIVED_LOG WHERE RECID > 3", 5),
            std::vector<std::string>{"4|12|" + name + "||2741980"});
  EXPECT_EQ(file_size(native_of(folder_, name)), 2048 * 512);
  EXPECT_EQ(rows_of(*client, "SELECT GROUP#, SEQUENCE#, STATUS, ARCHIVED FROM V$LOG", 4),
            (std::vector<std::string>{"1|13|CURRENT|NO", "2|12|INACTIVE|YES"}));
  EXPECT_EQ(rows_of(*client, "SELECT CURRENT_SCN FROM V$DATABASE", 1), std::vector<std::string>{"2741981"});
}

TEST_F(FilesTest, TheRecoveryAreaInADiskGroupGetsOracleManagedNamesInTheGroupsFolder) {
  std::string scenario;
  write_machine("<parameter name=\"log_archive_dest_1\" value=\"LOCATION=USE_DB_RECOVERY_FILE_DEST\"/>");
  read_file(scenario_, scenario);
  replace_text(scenario, "value=\"C:\\app\\oracle\\fast_recovery_area\"", "value=\"+FRA\"");
  write_scenario(scenario);
  auto client = connect();
  ASSERT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_SUCCESS) << client->error_text();
  const auto names = rows_of(*client, "SELECT NAME FROM V$ARCHIVED_LOG WHERE RECID = 4", 1);
  ASSERT_EQ(names.size(), 1u);
  const std::string prefix = "+FRA/ORCL/ARCHIVELOG/2024_03_05/thread_1_seq_12.260.";
  EXPECT_EQ(names[0].compare(0, prefix.size(), prefix), 0) << names[0];
  std::string relative = names[0].substr(5);
  for (char& c : relative) {
    if (c == '/') c = '\\';
  }
  EXPECT_TRUE(file_exists(native_of(folder_, asm_folder_ + "\\FRA\\" + relative))) << relative;
}

TEST_F(FilesTest, ArchiveLogAllArchivesTheFullGroupsThatAreNotYet) {
  write_machine("<parameter name=\"log_archive_dest_1\" value=\"LOCATION=" + scenario_folder(folder_, "arch") + "\"/>");
  std::string scenario;
  read_file(scenario_, scenario);
  replace_text(scenario, "status=\"INACTIVE\">", "status=\"ACTIVE\" archived=\"NO\" first_change=\"2730000\">");
  write_scenario(scenario);
  auto client = connect();
  ASSERT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG ALL"), OCI_SUCCESS) << client->error_text();
  EXPECT_EQ(rows_of(*client, "SELECT SEQUENCE#, FIRST_CHANGE#, NEXT_CHANGE# FROM V$ARCHIVED_LOG WHERE RECID = 4", 3),
            std::vector<std::string>{"11|2730000|2741980"});  // the next group has no first change
  EXPECT_EQ(rows_of(*client, "SELECT ARCHIVED FROM V$LOG WHERE GROUP# = 1", 1), std::vector<std::string>{"YES"});
}

TEST_F(FilesTest, ArchivingNeedsArchiveLogModeAndAnOpenDatabase) {
  std::string scenario = single_instance();
  scenario.replace(scenario.find("log_mode=\"ARCHIVELOG\""), 21, "log_mode=\"NOARCHIVELOG\"");
  write_scenario(scenario);
  auto client = connect();
  EXPECT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-00258: manual archiving in NOARCHIVELOG mode must identify log\n");
  write_scenario(single_instance("", "state=\"mounted\""));
  auto mounted = connect();
  EXPECT_EQ(mounted->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_ERROR);
  EXPECT_EQ(mounted->error_code(), 1109);
}

TEST_F(FilesTest, ADestinationThatCannotBeWrittenFailsTheArchiveAndKeepsTheRecords) {
  std::string scenario = single_instance();
  replace_text(scenario, "value=\"C:\\app\\oracle\\fast_recovery_area\"", "value=\"+NOSUCH\"");
  write_scenario(scenario);
  auto client = connect();
  EXPECT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 16038);
  EXPECT_NE(client->error_text().find("ORA-19504: failed to create file \"+NOSUCH/ORCL/ARCHIVELOG/"), std::string::npos)
      << client->error_text();
  EXPECT_EQ(rows_of(*client, "SELECT COUNT(*) FROM V$ARCHIVED_LOG", 1), std::vector<std::string>{"3"});
}

TEST_F(FilesTest, DirectoryObjectsAreCreatedReplacedAndDropped) {
  write_scenario(single_instance());
  auto client = connect();
  ASSERT_EQ(client->run("CREATE DIRECTORY D1 AS 'C:\\temp'"), OCI_SUCCESS) << client->error_text();
  EXPECT_EQ(client->run("CREATE DIRECTORY D1 AS 'C:\\other'"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-00955: name is already used by an existing object\n");
  ASSERT_EQ(client->run("CREATE OR REPLACE DIRECTORY D1 AS 'C:\\other'"), OCI_SUCCESS);
  EXPECT_EQ(rows_of(*client, "SELECT DIRECTORY_NAME, DIRECTORY_PATH FROM DBA_DIRECTORIES", 2),
            std::vector<std::string>{"D1|C:\\other"});
  ASSERT_EQ(client->run("DROP DIRECTORY D1"), OCI_SUCCESS);
  EXPECT_EQ(client->run("DROP DIRECTORY D1"), OCI_ERROR);
  EXPECT_EQ(client->error_text(), "ORA-04043: object D1 does not exist\n");
}

TEST_F(FilesTest, FileRemoveDeletesThroughADirectoryObjectAndFailsForAMissingFile) {
  write_scenario(single_instance());
  const std::string folder = scenario_folder(folder_, "work");
  auto client = connect();
  ASSERT_EQ(client->run("CREATE DIRECTORY DX AS '" + folder + "'"), OCI_SUCCESS);
  ASSERT_EQ(client->run("BEGIN\n UTL_FILE.FREMOVE('DX', 'init.ora');\n END;"), OCI_ERROR);
  EXPECT_EQ(client->error_text(),
            "ORA-29291: file remove operation failed\nORA-06512: at \"SYS.UTL_FILE\", line 1\n"
            "ORA-06512: at line 2\n");
  EXPECT_EQ(client->run("BEGIN\n UTL_FILE.FREMOVE('NODIR', 'init.ora');\n END;"), OCI_ERROR);
  EXPECT_EQ(client->error_code(), 29280);
}

TEST_F(FilesTest, AnUnknownProcedureIsAnUndeclaredIdentifier) {
  write_scenario(single_instance());
  auto client = connect();
  EXPECT_EQ(client->run("BEGIN\n DBMS_NOTHING.RUN('x');\n END;"), OCI_ERROR);
  EXPECT_EQ(client->error_text(),
            "ORA-06550: line 2, column 2:\nPLS-00201: identifier 'DBMS_NOTHING.RUN' must be declared\n"
            "ORA-06550: line 2, column 2:\nPL/SQL: Statement ignored\n");
}

TEST_F(FilesTest, ArchivedLogFilesAreCopiedDeletedAndDescribedThroughThePackages) {
  write_machine("<parameter name=\"log_archive_dest_1\" value=\"LOCATION=USE_DB_RECOVERY_FILE_DEST\"/>");
  std::string scenario;
  read_file(scenario_, scenario);
  replace_text(scenario, "value=\"C:\\app\\oracle\\fast_recovery_area\"", "value=\"+FRA\"");
  write_scenario(scenario);
  auto client = connect();
  ASSERT_EQ(client->run("ALTER SYSTEM ARCHIVE LOG CURRENT"), OCI_SUCCESS) << client->error_text();
  const auto record = rows_of(*client, "SELECT NAME, RECID, STAMP FROM V$ARCHIVED_LOG WHERE RECID = 4", 3);
  ASSERT_EQ(record.size(), 1u);
  const std::string name = record[0].substr(0, record[0].find('|'));
  const std::string recid_stamp = record[0].substr(record[0].find('|') + 1);
  const std::string stamp = recid_stamp.substr(recid_stamp.find('|') + 1);

  // The ASM instance describes the file through bind variables.
  auto asm_client = connect("+ASM");
  OCIStmt* stmt = nullptr;
  api().OCIHandleAlloc(asm_client->env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  const std::string block = "BEGIN \n DBMS_DISKGROUP.GETFILEATTR(:fname,:ftype,:fsize,:blksize); \n END;";
  api().OCIStmtPrepare(stmt, asm_client->err(), reinterpret_cast<const OraText*>(block.c_str()),
                       static_cast<ub4>(block.size()), OCI_NTV_SYNTAX, OCI_DEFAULT);
  std::string fname = name;
  fname.resize(513, '\0');
  sb4 type = -1;
  sb4 size = -1;
  sb4 block_size = -1;
  OCIBind* binds[4] = {};
  api().OCIBindByName(stmt, &binds[0], asm_client->err(), reinterpret_cast<const OraText*>(":fname"), -1, &fname[0],
                      513, SQLT_STR, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT);
  api().OCIBindByName(stmt, &binds[1], asm_client->err(), reinterpret_cast<const OraText*>(":ftype"), -1, &type, 4,
                      SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT);
  api().OCIBindByName(stmt, &binds[2], asm_client->err(), reinterpret_cast<const OraText*>(":fsize"), -1, &size, 4,
                      SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT);
  api().OCIBindByName(stmt, &binds[3], asm_client->err(), reinterpret_cast<const OraText*>(":blksize"), -1,
                      &block_size, 4, SQLT_INT, nullptr, nullptr, nullptr, 0, nullptr, OCI_DEFAULT);
  ASSERT_EQ(api().OCIStmtExecute(asm_client->svc(), stmt, asm_client->err(), 1, 0, nullptr, nullptr, OCI_DEFAULT),
            OCI_SUCCESS)
      << asm_client->error_text();
  EXPECT_EQ(type, 4);
  EXPECT_EQ(size, 2048);
  EXPECT_EQ(block_size, 512);

  // Copy it out of the disk group into a folder, then delete it with its record.
  const std::string folder = name.substr(0, name.find_last_of('/'));
  const std::string file = name.substr(name.find_last_of('/') + 1);
  const std::string target = scenario_folder(folder_, "copies");
  ASSERT_EQ(client->run("CREATE DIRECTORY SRC AS '" + folder + "'"), OCI_SUCCESS);
  ASSERT_EQ(client->run("CREATE DIRECTORY DST AS '" + target + "'"), OCI_SUCCESS);
  ASSERT_EQ(client->run("BEGIN\n DBMS_FILE_TRANSFER.COPY_FILE('SRC', '" + file + "', 'DST', 'copy.arc');\n END;"),
            OCI_SUCCESS)
      << client->error_text();
  EXPECT_EQ(file_size(native_of(folder_, target + "\\copy.arc")), 2048 * 512);
  EXPECT_EQ(client->run("BEGIN\n DBMS_FILE_TRANSFER.COPY_FILE('SRC', 'missing.arc', 'DST', 'x.arc');\n END;"),
            OCI_ERROR);
  EXPECT_EQ(client->error_code(), 19505);
  ASSERT_EQ(client->run("BEGIN\n DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG('4', '" + stamp + "', '" + name +
                        "', '1', '12', '1920977', '', 512);\n END;"),
            OCI_SUCCESS)
      << client->error_text();
  EXPECT_EQ(rows_of(*client, "SELECT STATUS, DELETED, NVL(NAME, 'none') FROM V$ARCHIVED_LOG WHERE RECID = 4", 3),
            std::vector<std::string>{"D|YES|none"});
  ASSERT_EQ(client->run("BEGIN\n UTL_FILE.FREMOVE('DST', 'copy.arc');\n END;"), OCI_SUCCESS) << client->error_text();
  EXPECT_FALSE(file_exists(native_of(folder_, target + "\\copy.arc")));
  // The file in the disk group is gone, so the same attribute query fails now.
  EXPECT_EQ(api().OCIStmtExecute(asm_client->svc(), stmt, asm_client->err(), 1, 0, nullptr, nullptr, OCI_DEFAULT),
            OCI_ERROR);
  EXPECT_EQ(asm_client->error_code(), 15056);
  EXPECT_NE(asm_client->error_text().find("ORA-15173: entry '"), std::string::npos) << asm_client->error_text();
  api().OCIHandleFree(stmt, OCI_HTYPE_STMT);
}

}  // namespace
}  // namespace ocisim_test
