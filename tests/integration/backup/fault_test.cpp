// A fault at every statement in turn. The statements come from the journal of a clean run of
// each stage (preparation, finish on the live machine, restore on the booted copy); each is then
// made to fail once (ORA-00600) for its database on a fresh machine. The other databases must
// come out as in the clean run, the failing one must be reported as the design says, and no
// database may be left in backup state by a finish that ran, but for the one whose end of the
// backup state was itself made to fail.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "backup_fixture.h"
#include "backup_platform.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/backup/backup_prepare.h"
#include "oracle/client/env_variable.h"
#include "prepare_support.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupFinish;
using specific::oracle::CDbsBackupPrepare;

const char kWriters[] = "<databases><database sid=\"ASMW\"/><database sid=\"VSSW\"/></databases>";
const std::vector<std::string> kSids = {"BK", "NOARC", "CDB1", "ASMW", "VSSW"};

std::string read_text(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// Puts a one-time fault for `sql` first into the instance `sid` of the machine file.
void add_fault(const std::filesystem::path& file, const std::string& sid, const std::string& sql) {
  std::string text = read_text(file);
  const size_t at = text.find("<instance sid=\"" + sid + "\"");
  ASSERT_NE(at, std::string::npos) << sid;
  const size_t end = text.find('>', at);
  std::string escaped;
  for (char c : sql) escaped += c == '"' ? std::string("&quot;") : std::string(1, c);
  text.insert(end + 1, "\n<fault on=\"execute\" sql=\"" + escaped + "\" error=\"600\" times=\"1\"/>");
  std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
}

class FaultTest : public backup_test_t {
 protected:
  std::vector<db_t> machine() {
    db_t bk;
    bk.sid = "BK";
    db_t noarc;
    noarc.sid = "NOARC";
    noarc.log_mode = "NOARCHIVELOG";
    noarc.cdb = "YES";
    noarc.pdbs = {{"N_RW", "READ WRITE"}};
    db_t cdb;
    cdb.sid = "CDB1";
    cdb.cdb = "YES";
    cdb.pdbs = {{"P_RW", "READ WRITE"}, {"P_RO", "READ ONLY"}, {"P_UP", "MIGRATE"}};
    db_t asmw;
    asmw.sid = "ASMW";
    asmw.on_asm = true;
    db_t vssw;
    vssw.sid = "VSSW";
    return {bk, noarc, cdb, asmw, vssw};
  }

  void fresh() {
    log_.reset();
    log_ = std::make_unique<dsl_test::capture_log_t>();
    sleeps_.clear();
    std::error_code ignored;
    std::filesystem::remove(dir_ / "journal.txt", ignored);
    folder_.reset();  // its end gives the machine's root back: first the old, then the new
    folder_ = std::make_unique<dsl_test::test_folder_t>();
    config().tempLogPath = folder_->path(u"OracleLogBackup\\");
    apply_config();
    use_machine(machine());
  }

  prepared_doc_t prepare() {
    document_ = CDbsBackupPrepare::prepare_instances(
        sids_of(machine()), CDbsBackupPrepare::parse_writer_sids(util::from_utf8(kWriters)), {});
    // The manager saves the meta file after the preparation; so does this stand-in for it.
    specific::oracle::CDbsBackupXml::save_meta(specific::oracle::CDbsBackupXml::meta_path(),
                                               document_, {}, u"", u"");
    return read_prepared(document_);
  }

  // Each database's statements of the journal so far, each text once, in order.
  std::vector<std::pair<std::string, std::string>> distinct_statements(size_t from = 0) const {
    std::vector<std::pair<std::string, std::string>> result;
    std::set<std::pair<std::string, std::string>> seen;
    const auto all = statements();
    for (size_t i = from; i < all.size(); ++i) {
      if (seen.insert(all[i]).second) result.push_back(all[i]);
    }
    return result;
  }

  void snapshot_and_boot(const std::string& fault_sid = "", const std::string& fault_sql = "") {
    const auto from = native_path(folder_->path(u"OracleLogBackup"));
    const auto to = native_path(folder_->path(u"image\\OracleLogBackup"));
    const std::string command = "\"" + image_tool() + "\" \"" + (dir_ / "machine.xml").string() +
                                "\" \"" + (dir_ / "copy.xml").string() + "\" --state \"" +
                                (dir_ / "machine.state").string() + "\" --copy \"" + from +
                                "\" \"" + to + "\"";
    ASSERT_EQ(run_command(command), 0) << command;
    if (!fault_sid.empty()) add_fault(dir_ / "copy.xml", fault_sid, fault_sql);
    // The copy becomes the test's machine: the helpers read machine.state.
    // Removed first: MinGW's copy_file refuses to overwrite even when told to.
    std::error_code ignored;
    std::filesystem::remove(dir_ / "machine.xml", ignored);
    std::filesystem::copy_file(dir_ / "copy.xml", dir_ / "machine.xml");
    std::filesystem::remove(dir_ / "machine.state", ignored);
    config().tempLogPath = folder_->path(u"image\\OracleLogBackup\\");
    apply_config();
  }

  std::u16string document_;
};

TEST_F(FaultTest, FaultAtEveryStatementOfThePreparation) {
  fresh();
  const prepared_doc_t clean = prepare();
  const auto sent = distinct_statements();
  ASSERT_GT(sent.size(), 20u) << journal_text();
  for (const auto& [sid, sql] : sent) {
    SCOPED_TRACE(sid + ": " + sql);
    fresh();
    add_fault(dir_ / "machine.xml", sid, sql);
    const prepared_doc_t doc = prepare();
    for (const auto& other : kSids) {
      if (other != sid) {
        EXPECT_EQ(doc[other]["action"], clean[other]["action"]) << other;
      }
    }
    const prepared_t& failed = doc[sid];
    const bool writer = sid == "ASMW" || sid == "VSSW";
    // Without the writer the pluggable check belongs to the collection of plugged databases,
    // whose failures are warnings.
    const bool collection = sql == "SELECT NAME, OPEN_MODE FROM V$PDBS" ||
                            (!writer && (sql == "SELECT CDB FROM V$DATABASE" ||
                                         sql == "SELECT VERSION FROM V$INSTANCE"));
    if (collection) {
      EXPECT_EQ(failed["action"], clean[sid]["action"]);
      EXPECT_EQ(failed["errMsg"], "");
      EXPECT_TRUE(failed.pdbs.empty());
      EXPECT_TRUE(log_has("WARN|Failed to gather plugged dbs info"));
    } else if (sql == "SELECT CURRENT_SCN FROM V$DATABASE") {
      EXPECT_EQ(failed["action"], clean[sid]["action"]);
      EXPECT_EQ(failed["scn"], "");
      EXPECT_NE(failed["errMsg"].find("ORA-00600"), std::string::npos);
    } else {
      EXPECT_EQ(failed["action"], "0");
      EXPECT_NE(failed["errMsg"].find("ORA-00600"), std::string::npos) << failed["errMsg"];
      EXPECT_TRUE(log_contains("Failed to prepare db for backup. Sid: " + sid));
    }
    // The finish that follows leaves nothing in backup state.
    CDbsBackupFinish::finish_all(document_, {}, false);
    for (const auto& any : kSids) EXPECT_FALSE(in_backup(any)) << any;
    for (const auto& other : kSids) {
      if (other != sid) {
        EXPECT_EQ(instance_attr(other, "state"), "open") << other;
      }
    }
  }
}

TEST_F(FaultTest, FaultAtEveryStatementOfTheFinish) {
  fresh();
  const prepared_doc_t clean = prepare();
  const size_t mark = statements().size();
  CDbsBackupFinish::finish_all(document_, {}, false);
  const auto sent = distinct_statements(mark);
  ASSERT_GT(sent.size(), 8u) << journal_text();
  for (const auto& [sid, sql] : sent) {
    SCOPED_TRACE(sid + ": " + sql);
    fresh();
    prepare();
    add_fault(dir_ / "machine.state", sid, sql);
    EXPECT_NO_THROW(CDbsBackupFinish::finish_all(document_, {}, false));
    for (const auto& other : kSids) {
      if (other == sid) continue;
      EXPECT_EQ(instance_attr(other, "state"), "open") << other;
      EXPECT_FALSE(in_backup(other)) << other;
    }
    EXPECT_EQ(pdb_mode("NOARC", "N_RW"), sid == "NOARC" ? pdb_mode("NOARC", "N_RW") : "READ WRITE");
    const bool reported = log_contains("Failed to finish db backup. Sid: " + sid) ||
                          log_contains("Failed to startup db: " + sid) ||
                          log_contains("Failed to restore pdb: ");
    EXPECT_TRUE(reported);
    if (clean[sid]["action"] == "2") {
      // Only a failed end of the backup state, or a failed check before it, leaves it.
      EXPECT_EQ(in_backup(sid), sql != "ALTER SYSTEM ARCHIVE LOG CURRENT");
    } else {
      EXPECT_FALSE(in_backup(sid));
    }
  }
}

TEST_F(FaultTest, FaultAtEveryStatementOfTheRestore) {
  fresh();
  prepare();
  snapshot_and_boot();
  const size_t mark = statements().size();
  specific::oracle::COracleManager::instance().do_restore();
  const auto sent = distinct_statements(mark);
  ASSERT_GT(sent.size(), 8u) << journal_text();
  for (const auto& other : kSids) ASSERT_EQ(instance_attr(other, "state"), "open") << other;
  for (const auto& [sid, sql] : sent) {
    SCOPED_TRACE(sid + ": " + sql);
    fresh();
    prepare();
    snapshot_and_boot(sid, sql);
    ASSERT_TRUE(folder_->raw_exists(u"image\\OracleLogBackup\\OracleMeta.xml"));
    EXPECT_NO_THROW(specific::oracle::COracleManager::instance().do_restore());
    EXPECT_FALSE(folder_->raw_exists(u"image\\OracleLogBackup\\OracleMeta.xml"));
    for (const auto& other : kSids) {
      if (other == sid) continue;
      EXPECT_EQ(instance_attr(other, "state"), "open") << other;
      EXPECT_FALSE(in_backup(other)) << other;
    }
    if (sid != "CDB1") {
      EXPECT_EQ(pdb_mode("CDB1", "P_UP"), "MIGRATE");
    }
    const bool reported = log_contains("Failed to finish db backup. Sid: " + sid) ||
                          log_contains("Failed to end backup") ||
                          log_contains("Failed to startup db: " + sid) ||
                          log_contains("Failed to restore pdb: ");
    EXPECT_TRUE(reported);
  }
}

}  // namespace
}  // namespace backup_test
