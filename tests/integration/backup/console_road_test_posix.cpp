// The road through the console host, as an administrator or the demo walks it: prepare,
// snapshot, finish, and the restore on the copy, each command its own process (host build:
// the machine's registry is a file, its drives a folder).
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "backup_fixture.h"
#include "backup_platform.h"
#include "prepare_support.h"
#include "support/bin_dir.h"
#include "support/reg_machine.h"

namespace backup_test {
namespace {

class ConsoleRoadTest : public backup_test_t {
 protected:
  void TearDown() override {
    ::unsetenv("DBSHADOWLINK_REGISTRY");
    backup_test_t::TearDown();
  }
  // Runs the host with `arguments`; its standard output in `out`.
  int host(const std::string& arguments, std::string& out) {
    const auto file = dir_ / "out.txt";
    const int rc = run_command("\"" + dsl_test::bin_dir() + "/dbshadowlink\" " + arguments + " >\"" +
                               file.string() + "\" 2>&1");
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    out = text.str();
    return rc;
  }
  void write_registry(const std::string& extra) {
    std::ifstream in(dsl_test::fixture_path("backup_road_machine.reg"), std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    std::ofstream(dir_ / "machine.reg", std::ios::binary) << text.str() << "\r\n" << extra;
    ::setenv("DBSHADOWLINK_REGISTRY", (dir_ / "machine.reg").c_str(), 1);
  }
};

TEST_F(ConsoleRoadTest, PrepareFinishAndRestoreOnTheCopyThroughTheConsoleHost) {
  db_t bk;
  bk.sid = "BK";
  db_t noarc;
  noarc.sid = "NOARC";
  noarc.log_mode = "NOARCHIVELOG";
  use_machine({bk, noarc});
  // The library in the host's process reads the registry file; the temp log folder is the
  // default one below the machine's drive C.
  write_registry(
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Trelo\\Trelo Safekeep]\r\n"
      "\"OracleRestoreWaitInSec\"=dword:00000000\r\n"
      "\"OracleWaitDbStartedAttemptCount\"=dword:00000002\r\n");
  ::setenv("DSL_OCI_LIBRARY", ocisim_library().c_str(), 1);

  std::string out;
  ASSERT_EQ(host("prepare", out), 0) << out;
  const auto doc = read_prepared(std::u16string(out.begin(), out.end() - (out.back() == '\n')));
  EXPECT_EQ(doc["BK"]["action"], "2");
  EXPECT_EQ(doc["NOARC"]["action"], "3");
  std::ofstream(dir_ / "prepared.xml", std::ios::binary) << out;

  const std::u16string temp = u"C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup";
  const std::string command = "\"" + image_tool() + "\" \"" + (dir_ / "machine.xml").string() +
                              "\" \"" + (dir_ / "copy.xml").string() + "\" --state \"" +
                              (dir_ / "machine.state").string() + "\" --copy \"" +
                              native_path(temp) + "\" \"" + (dir_ / "image-files").string() + "\"";
  ASSERT_EQ(run_command(command), 0);
  ASSERT_EQ(host("restore-required", out), 0);
  EXPECT_EQ(out, "true\n");

  ASSERT_EQ(host("finish --document \"" + (dir_ / "prepared.xml").string() + "\"", out), 0) << out;
  EXPECT_EQ(instance_attr("BK", "state"), "open");
  EXPECT_FALSE(in_backup("BK"));
  EXPECT_EQ(instance_attr("NOARC", "state"), "open");
  ASSERT_EQ(host("restore-required", out), 0);
  EXPECT_EQ(out, "false\n");

  // The machine restored from the image: its disk holds the meta file again.
  ::setenv("OCISIM_SCENARIO", (dir_ / "copy.xml").c_str(), 1);
  ::setenv("OCISIM_STATE", (dir_ / "copy.xml.state").c_str(), 1);
  std::filesystem::copy_file(dir_ / "image-files" / "OracleMeta.xml",
                             native_path(temp + u"\\OracleMeta.xml"));
  ASSERT_EQ(host("restore-required", out), 0);
  EXPECT_EQ(out, "true\n");
  ASSERT_EQ(host("restore", out), 0) << out;
  ASSERT_EQ(host("restore-required", out), 0);
  EXPECT_EQ(out, "false\n");
  std::ifstream state(dir_ / "copy.xml.state");
  std::stringstream text;
  text << state.rdbuf();
  EXPECT_EQ(text.str().find("backup=\"ACTIVE\""), std::string::npos) << text.str();
  EXPECT_EQ(text.str().find("state=\"mounted\""), std::string::npos);
}

}  // namespace
}  // namespace backup_test
