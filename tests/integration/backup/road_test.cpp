// The whole road against the simulated client: prepare five databases through the manager
// (hot-backup state, no archive log, a container with plugged databases in several modes, files
// in a disk group with the writer enabled, one that refuses the session), a snapshot with
// ocisim-image, the finish on the live machine, and the restore on the booted copy.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "backup_fixture.h"
#include "backup_platform.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/client/env_variable.h"
#include "prepare_support.h"
#include "support/reg_machine.h"

namespace backup_test {
namespace {

using specific::oracle::COracleManager;

class RoadTest : public backup_test_t {
 protected:
  std::vector<db_t> road_machine() {
    db_t bk;
    bk.sid = "BK";
    db_t noarc;
    noarc.sid = "NOARC";
    noarc.log_mode = "NOARCHIVELOG";
    db_t cdb;
    cdb.sid = "CDB1";
    cdb.cdb = "YES";
    cdb.pdbs = {{"PDB$SEED", "READ ONLY"}, {"P_RW", "READ WRITE"}, {"P_RO", "READ ONLY"},
                {"P_UP", "MIGRATE"}, {"P_MNT", "MOUNTED"}};
    db_t asmw;
    asmw.sid = "ASMW";
    asmw.on_asm = true;
    db_t refuse;
    refuse.sid = "REFUSE";
    refuse.os_logon = "none";
    return {bk, noarc, cdb, asmw, refuse};
  }

  // Snapshot: the machine and the temp folder copied; the copy's scenario beside the live one.
  void snapshot(long long polls) {
    const auto from = native_path(folder_->path(u"OracleLogBackup"));
    copy_base_ = folder_->path(u"image\\");
    const auto to = native_path(copy_base_ + u"OracleLogBackup");
    const std::string command = "\"" + image_tool() + "\" \"" + (dir_ / "machine.xml").string() +
                                "\" \"" + (dir_ / "copy.xml").string() + "\" --state \"" +
                                (dir_ / "machine.state").string() + "\" --copy \"" + from +
                                "\" \"" + to + "\" --polls " + std::to_string(polls);
    ASSERT_EQ(run_command(command), 0) << command;
  }

  // From here on the library and the client see the restored copy.
  void boot_copy() {
    specific::oracle::put_env_assignment("OCISIM_SCENARIO=" + (dir_ / "copy.xml").string());
    specific::oracle::put_env_assignment("OCISIM_STATE=" + (dir_ / "copy.xml.state").string());
    config().tempLogPath = copy_base_ + u"OracleLogBackup\\";
    apply_config();
    live_ = false;
  }

  std::string state_of(const std::string& sid) const { return instance_attr(sid, "state"); }

  std::u16string copy_base_;
  bool live_ = true;
};

TEST_F(RoadTest, PrepareSnapshotFinishAndRestoreOnTheCopy) {
  dsl_test::reg_machine_t registry(dsl_test::fixture_path("backup_road_machine.reg"));
  use_machine(road_machine());

  // Prepare through the manager: the document and the meta file.
  const std::u16string document = COracleManager::instance().prepare(
      u"<databases><database sid=\"asmw\"/></databases>", {}, u"", u"");
  const auto doc = read_prepared(document);
  ASSERT_EQ(doc.order.size(), 5u) << util::to_utf8(document);
  EXPECT_EQ(doc["BK"]["action"], "2");
  EXPECT_EQ(doc["NOARC"]["action"], "3");
  EXPECT_EQ(doc["CDB1"]["action"], "2");
  EXPECT_EQ(doc["CDB1"].pdbs, (std::vector<std::pair<std::string, std::string>>{
                                  {"PDB$SEED", "READ ONLY"}, {"P_RW", "READ WRITE"},
                                  {"P_RO", "READ ONLY"}, {"P_UP", "MIGRATE"}}));
  EXPECT_EQ(doc["ASMW"]["action"], "2");
  EXPECT_EQ(doc["REFUSE"]["action"], "0");
  ASSERT_TRUE(meta_exists());
  EXPECT_TRUE(in_backup("BK"));
  EXPECT_EQ(state_of("NOARC"), "down");

  snapshot(/*polls=*/2);

  // Finish on the live machine: everything as it was, the meta file gone.
  COracleManager::instance().finish(document, {});
  for (const char* sid : {"BK", "NOARC", "CDB1", "ASMW", "REFUSE"}) {
    EXPECT_EQ(state_of(sid), "open") << sid;
    EXPECT_FALSE(in_backup(sid)) << sid;
  }
  EXPECT_EQ(pdb_mode("CDB1", "P_RW"), "READ WRITE");
  EXPECT_EQ(pdb_mode("CDB1", "P_UP"), "MIGRATE");
  EXPECT_EQ(pdb_mode("CDB1", "P_MNT"), "MOUNTED");
  EXPECT_FALSE(meta_exists());

  // The copy boots as a restored server: the databases in backup state stay mounted.
  boot_copy();
  specific::oracle::put_env_assignment("OCISIM_JOURNAL=" + (dir_ / "restore-journal.txt").string());
  EXPECT_TRUE(COracleManager::instance().restore_required());
  COracleManager::instance().do_restore();
  const std::filesystem::path state = dir_ / "copy.xml.state";
  ASSERT_TRUE(std::filesystem::exists(state));
  // Removed first: MinGW's copy_file refuses to overwrite even when told to.
  std::filesystem::remove(dir_ / "machine.state");
  std::filesystem::copy_file(state, dir_ / "machine.state");
  for (const char* sid : {"BK", "NOARC", "CDB1", "ASMW", "REFUSE"}) {
    EXPECT_EQ(state_of(sid), "open") << sid;
    EXPECT_FALSE(in_backup(sid)) << sid;
  }
  EXPECT_EQ(pdb_mode("CDB1", "P_RW"), "READ WRITE");
  EXPECT_EQ(pdb_mode("CDB1", "P_RO"), "READ ONLY");
  EXPECT_EQ(pdb_mode("CDB1", "P_UP"), "MIGRATE");
  EXPECT_EQ(pdb_mode("CDB1", "P_MNT"), "MOUNTED");
  EXPECT_EQ(pdb_mode("CDB1", "PDB$SEED"), "READ ONLY");
  EXPECT_FALSE(COracleManager::instance().restore_required());
  {
    std::ifstream in(dir_ / "restore-journal.txt");
    std::string line;
    int ends = 0;
    while (std::getline(in, line)) ends += line.find(" SQL ALTER DATABASE END BACKUP") != std::string::npos;
    EXPECT_EQ(ends, 3) << "BK, CDB1 and ASMW came up mounted in backup state";
  }
  // The services answered after two polls: the recovery waited for them.
  EXPECT_FALSE(sleeps_.empty());

  // A second restore finds no meta file and does nothing.
  const auto before = std::filesystem::file_size(dir_ / "restore-journal.txt");
  COracleManager::instance().do_restore();
  EXPECT_EQ(std::filesystem::file_size(dir_ / "restore-journal.txt"), before);
}

}  // namespace
}  // namespace backup_test
