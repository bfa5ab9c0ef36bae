// Tests of the preparation, finish and restore against the simulated client: each test gets a
// machine of its own (scenario, state file, journal), a private folder that holds the temp log
// folder with the meta file, the library's log captured, and sleeps that are recorded instead
// of slept. Machines are built from small descriptions of databases (db_t).
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "config/oracle_config.h"
#include "oracle/backup/dbs_backup_xml.h"
#include "oracle/discovery/oracle_sid.h"
#include "support/capture_receiver.h"
#include "support/test_folder.h"

namespace backup_test {

constexpr char kHome[] = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

// One database instance of a scenario.
struct db_t {
  std::string sid;
  std::string state = "open";
  std::string version = "19.0.0.0.0";
  std::string database_status = "ACTIVE";
  std::string log_mode = "ARCHIVELOG";
  std::string cdb = "NO";
  bool on_asm = false;                   // control file in a disk group
  std::string backup = "NOT ACTIVE";     // every data file's V$BACKUP status
  std::vector<std::pair<std::string, std::string>> pdbs;  // name, open mode
  std::string os_logon = "sysdba";
  std::string extra;                     // more children: faults, accounts
  std::string attributes;                // more attributes of <instance>
};

std::string instance_xml(const db_t& db, const std::string& archive_folder);

// A record of the preparation document.
specific::oracle::SDbPrepareInfo record(const std::string& sid, uint32_t action,
                                        std::vector<specific::oracle::SPdbInfo> pdbs = {});
std::u16string document_of(const std::vector<specific::oracle::SDbPrepareInfo>& records);

class backup_test_t : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  void SetUp() override;
  void TearDown() override;

  void use_machine(const std::vector<db_t>& dbs);
  // Writes the config the library reads (temp log path in the private folder, 20 s session
  // time-out, no restore wait, three attempts) after `change` had its say.
  specific::oracle::COracleConfig& config() { return config_; }
  void apply_config();

  static specific::oracle::SOracleSid sid_of(const std::string& sid);
  std::vector<specific::oracle::SOracleSid> sids_of(const std::vector<db_t>& dbs) const;

  // The statements sent, in order, each with the SID of the session that sent it.
  std::vector<std::pair<std::string, std::string>> statements() const;
  std::vector<std::string> statements_of(const std::string& sid) const;
  std::vector<std::string> calls_of(const std::string& function) const;
  std::string journal_text() const;
  std::vector<std::string> log_lines() const;
  bool log_has(const std::string& line) const;
  bool log_contains(const std::string& text) const;

  // The machine as it stands now (the state file, or the scenario before any change).
  std::string instance_attr(const std::string& sid, const std::string& attribute) const;
  std::string pdb_mode(const std::string& sid, const std::string& pdb) const;
  bool in_backup(const std::string& sid) const;

  std::u16string meta_path() const;
  bool meta_exists() const;

  std::vector<uint32_t> sleeps_;
  std::filesystem::path dir_;
  std::unique_ptr<dsl_test::test_folder_t> folder_;
  std::unique_ptr<dsl_test::capture_log_t> log_;
  specific::oracle::COracleConfig config_;
  std::string archive_folder_;
};

}  // namespace backup_test
