// The simulated client's plugged databases and its restored-image tool, through the library's
// own client layer: Oracle's refusals of ALTER PLUGGABLE DATABASE, and how a copy boots.
#include <gtest/gtest.h>

#include <fstream>

#include "backup_fixture.h"
#include "backup_platform.h"
#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/env_variable.h"

namespace backup_test {
namespace {

using specific::oracle::COracleSessionHolder;

class OcisimPdbTest : public backup_test_t {
 protected:
  void SetUp() override {
    backup_test_t::SetUp();
    db_t cdb;
    cdb.sid = "CDB1";
    cdb.cdb = "YES";
    cdb.pdbs = {{"PDB$SEED", "READ ONLY"}, {"P1", "MOUNTED"}, {"P2", "READ WRITE"}};
    cdb.extra = "<pdb con_id=\"9\" name=\"KEEP\" open_mode=\"READ ONLY\" saved_state=\"READ WRITE\"/>";
    db_t plain;
    plain.sid = "PLAIN";
    use_machine({cdb, plain});
  }
  // The ORA- code of the statement's failure, or 0.
  int run(const std::string& sid, const std::string& sql) {
    COracleSessionHolder holder(util::from_utf8(sid), util::from_utf8(kHome), {}, false);
    try {
      holder.make_query()->run(sql);
    } catch (const exc::exc_base_t& e) {
      const std::string text = e.what();
      const size_t at = text.find("ORA-");
      return at == std::string::npos ? -1 : std::stoi(text.substr(at + 4, 5));
    }
    return 0;
  }
};

TEST_F(OcisimPdbTest, OpenGivesTheModeAndViewFollows) {
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE \"P1\" OPEN READ ONLY"), 0);
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "READ ONLY");
  COracleSessionHolder holder(u"CDB1", util::from_utf8(kHome), {}, false);
  EXPECT_EQ(holder.make_query()->single_value("SELECT OPEN_MODE FROM V$PDBS WHERE NAME = 'P1'", true),
            u"READ ONLY");
}

TEST_F(OcisimPdbTest, PlainOpenIsReadWriteAndUpgradeIsMigrate) {
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE p1 OPEN"), 0);
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "READ WRITE");
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 CLOSE IMMEDIATE"), 0);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 OPEN UPGRADE"), 0);
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "MIGRATE");
}

TEST_F(OcisimPdbTest, OraclesRefusals) {
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P2 OPEN READ WRITE"), 65019);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 CLOSE"), 65020);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE NOPE OPEN"), 65011);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE \"p2\" OPEN"), 65011);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE PDB$SEED OPEN"), 65017);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 OPEN READ ONLY UPGRADE"), 65103);
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P2 OPEN UPGRADE FORCE"), 65148);
  EXPECT_EQ(run("PLAIN", "ALTER PLUGGABLE DATABASE P1 OPEN"), 65090);
}

TEST_F(OcisimPdbTest, ForceChangesTheModeOfAnOpenPdb) {
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P2 OPEN READ ONLY FORCE"), 0);
  EXPECT_EQ(pdb_mode("CDB1", "P2"), "READ ONLY");
}

TEST_F(OcisimPdbTest, RootNotOpenRefusesWithDatabaseNotOpen) {
  db_t cdb;
  cdb.sid = "CDB1";
  cdb.cdb = "YES";
  cdb.state = "mounted";
  cdb.pdbs = {{"P1", "MOUNTED"}};
  use_machine({cdb});
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 OPEN"), 1109);
}

TEST_F(OcisimPdbTest, StartLeavesPdbsMountedButTheSeedAndSavedStates) {
  EXPECT_EQ(run("CDB1", "ALTER PLUGGABLE DATABASE P1 OPEN"), 0);
  {
    COracleSessionHolder holder(u"CDB1", util::from_utf8(kHome), {}, false);
    holder.get_session()->shutdown();
  }
  {
    COracleSessionHolder prelim(u"CDB1", util::from_utf8(kHome), {}, true);
    prelim.get_session()->startup();
  }
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "MOUNTED");
  EXPECT_EQ(pdb_mode("CDB1", "P2"), "MOUNTED");
  EXPECT_EQ(pdb_mode("CDB1", "PDB$SEED"), "READ ONLY");
  EXPECT_EQ(pdb_mode("CDB1", "KEEP"), "READ WRITE");
}

class OcisimImageTest : public backup_test_t {
 protected:
  // Boots a copy of the current machine and makes it the test's machine.
  int image(const std::string& options = "") {
    const std::string command = "\"" + image_tool() + "\" \"" + (dir_ / "machine.xml").string() +
                                "\" \"" + (dir_ / "copy.xml").string() + "\" --state \"" +
                                (dir_ / "machine.state").string() + "\" " + options;
    const int rc = run_command(command);
    std::error_code ignored;
    std::filesystem::remove(dir_ / "machine.xml", ignored);
    std::filesystem::copy_file(dir_ / "copy.xml", dir_ / "machine.xml", ignored);
    std::filesystem::remove(dir_ / "machine.state", ignored);
    return rc;
  }
  int open(const std::string& sid) {
    COracleSessionHolder holder(util::from_utf8(sid), util::from_utf8(kHome), {}, false);
    try {
      holder.make_query()->run("ALTER DATABASE OPEN");
    } catch (const exc::exc_base_t& e) {
      const std::string text = e.what();
      const size_t at = text.find("ORA-");
      return at == std::string::npos ? -1 : std::stoi(text.substr(at + 4, 5));
    }
    return 0;
  }
};

TEST_F(OcisimImageTest, DatabaseInBackupStateComesUpMountedAndOpensOnlyAfterEndBackup) {
  db_t d;
  d.sid = "ORCL";
  d.backup = "ACTIVE";
  use_machine({d});
  ASSERT_EQ(image(), 0);
  EXPECT_EQ(instance_attr("ORCL", "state"), "mounted");
  EXPECT_EQ(open("ORCL"), 10873);
  {
    COracleSessionHolder holder(u"ORCL", util::from_utf8(kHome), {}, false);
    holder.make_query()->run("ALTER DATABASE END BACKUP");
  }
  EXPECT_EQ(open("ORCL"), 0);
  EXPECT_EQ(instance_attr("ORCL", "state"), "open");
}

TEST_F(OcisimImageTest, ShutDownOrCleanDatabasesComeUpOpenByTheirServiceAndPdbsMounted) {
  db_t down;
  down.sid = "DOWN";
  down.state = "down";
  db_t cdb;
  cdb.sid = "CDB1";
  cdb.cdb = "YES";
  cdb.pdbs = {{"P1", "READ WRITE"}};
  use_machine({down, cdb});
  ASSERT_EQ(image(), 0);
  EXPECT_EQ(instance_attr("DOWN", "state"), "open");
  EXPECT_EQ(instance_attr("CDB1", "state"), "open");
  EXPECT_EQ(instance_attr("CDB1", "startups"), "2");
  EXPECT_EQ(pdb_mode("CDB1", "P1"), "MOUNTED");
}

TEST_F(OcisimImageTest, ManualServiceStaysStoppedAndAutostartFalseLeavesTheInstanceIdle) {
  db_t manual;
  manual.sid = "MAN";
  manual.attributes = "service_start=\"manual\"";
  db_t idle;
  idle.sid = "IDLE";
  idle.attributes = "autostart=\"false\"";
  use_machine({manual, idle});
  ASSERT_EQ(image(), 0);
  EXPECT_EQ(instance_attr("MAN", "service"), "stopped");
  EXPECT_EQ(instance_attr("MAN", "state"), "down");
  EXPECT_EQ(instance_attr("IDLE", "service"), "running");
  EXPECT_EQ(instance_attr("IDLE", "state"), "down");
  EXPECT_FALSE(COracleSessionHolder::create(u"MAN", util::from_utf8(kHome), {}));
  const auto idle_holder = COracleSessionHolder::create(u"IDLE", util::from_utf8(kHome), {});
  ASSERT_TRUE(idle_holder);
  EXPECT_TRUE(idle_holder->get_session()->instance_down());
}

TEST_F(OcisimImageTest, PollsRefuseTheFirstAttaches) {
  db_t d;
  d.sid = "ORCL";
  use_machine({d});
  ASSERT_EQ(image("--polls 2"), 0);
  EXPECT_FALSE(COracleSessionHolder::create(u"ORCL", util::from_utf8(kHome), {}));
  EXPECT_FALSE(COracleSessionHolder::create(u"ORCL", util::from_utf8(kHome), {}));
  EXPECT_TRUE(COracleSessionHolder::create(u"ORCL", util::from_utf8(kHome), {}));
}

TEST_F(OcisimImageTest, TheLiveMachineIsNotTouchedAndAWrongCommandLineIsRefused) {
  db_t d;
  d.sid = "ORCL";
  d.backup = "ACTIVE";
  use_machine({d});
  const std::string before = [&] {
    std::ifstream in(dir_ / "machine.xml", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }();
  EXPECT_EQ(run_command("\"" + image_tool() + "\" \"" + (dir_ / "machine.xml").string() + "\" \"" +
                        (dir_ / "other.xml").string() + "\""), 0);
  std::ifstream in(dir_ / "machine.xml", std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), before);
  EXPECT_EQ(run_command("\"" + image_tool() + "\" only-one-argument"), 2);
}

}  // namespace
}  // namespace backup_test
