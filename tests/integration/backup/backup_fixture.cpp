#include "backup_fixture.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <sstream>

#include <tinyxml.h>

#include "backup_platform.h"
#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/ora_interface.h"
#include "oracle/restore/restore_wait.h"

namespace backup_test {

using specific::oracle::COracleConfig;
using specific::oracle::SDbPrepareInfo;
using specific::oracle::SOracleSid;

namespace {

std::atomic<int> g_count{0};

void set_env(const std::string& name, const std::string& value) {
  specific::oracle::put_env_assignment(name + "=" + value);
}

std::string read_all(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

std::string instance_xml(const db_t& db, const std::string& archive_folder) {
  const std::string& s = db.sid;
  std::string xml = "<instance sid=\"" + s + "\" home=\"" + kHome + "\" state=\"" + db.state +
                    "\" database_status=\"" + db.database_status + "\" version=\"" + db.version +
                    "\" os_logon=\"" + db.os_logon + "\" " + db.attributes + ">\n";
  xml += "<database name=\"" + s + "\" dbid=\"1000\" open_mode=\"READ WRITE\" log_mode=\"" +
         db.log_mode + "\" cdb=\"" + db.cdb + "\" current_scn=\"2741980\"/>\n";
  xml += "<account user=\"BACKUP\" password=\"s3cret-Pw\" sysdba=\"yes\" dba=\"yes\"/>\n";
  xml += db.on_asm ? "<control_file name=\"+DATA/" + s + "/CONTROLFILE/current.261.1\"/>\n"
                   : "<control_file name=\"C:\\oradata\\" + s + "\\CONTROL01.CTL\"/>\n";
  xml += "<data_file number=\"1\" name=\"C:\\oradata\\" + s + "\\SYSTEM01.DBF\" bytes=\"8192\" backup=\"" +
         db.backup + "\"/>\n";
  xml += "<data_file number=\"4\" name=\"C:\\oradata\\" + s + "\\USERS01.DBF\" bytes=\"8192\" backup=\"" +
         db.backup + "\"/>\n";
  xml += "<log_group number=\"1\" sequence=\"13\" status=\"INACTIVE\" archived=\"YES\" redo_blocks=\"1\">"
         "<member name=\"C:\\oradata\\" + s + "\\REDO01.LOG\"/></log_group>\n";
  xml += "<log_group number=\"2\" sequence=\"14\" status=\"CURRENT\" archived=\"NO\" redo_blocks=\"1\">"
         "<member name=\"C:\\oradata\\" + s + "\\REDO02.LOG\"/></log_group>\n";
  xml += "<parameter name=\"log_archive_dest_1\" value=\"LOCATION=" + archive_folder + s + "\"/>\n";
  int con = 3;
  for (const auto& pdb : db.pdbs) {
    xml += "<pdb con_id=\"" + std::to_string(con++) + "\" name=\"" + pdb.first +
           "\" open_mode=\"" + pdb.second + "\"/>\n";
  }
  xml += db.extra;
  xml += "</instance>\n";
  return xml;
}

SDbPrepareInfo record(const std::string& sid, uint32_t action,
                      std::vector<specific::oracle::SPdbInfo> pdbs) {
  SDbPrepareInfo info;
  info.sid = util::from_utf8(sid);
  info.home = util::from_utf8(kHome);
  info.action = action;
  info.pdbs = std::move(pdbs);
  info.timeUtc = u"2024-03-05T10:00:00";
  info.scn = u"2741980";
  return info;
}

std::u16string document_of(const std::vector<SDbPrepareInfo>& records) {
  specific::oracle::CDbsBackupXml::info_list_t infos;
  for (const auto& r : records) infos.push_back(std::make_shared<SDbPrepareInfo>(r));
  return specific::oracle::CDbsBackupXml::write_document(infos);
}

void backup_test_t::SetUpTestSuite() {
  set_env(specific::oracle::kOciLibraryVariable, ocisim_library());
  specific::oracle::CWinOraInterface::replace_table_for_tests(nullptr);
}

void backup_test_t::SetUp() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  dir_ = std::filesystem::temp_directory_path() /
         ("dsl-bk-" + std::string(info->name()).substr(0, 40) + "-" + std::to_string(g_count++) +
          "-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count() % 1000000));
  std::filesystem::create_directories(dir_);
  folder_ = std::make_unique<dsl_test::test_folder_t>();
  archive_folder_ = util::to_utf8(folder_->path(u"arch\\"));
  set_env("OCISIM_JOURNAL", (dir_ / "journal.txt").string());
  set_env("OCISIM_STATE", (dir_ / "machine.state").string());
  config_ = COracleConfig();
  config_.tempLogPath = folder_->path(u"OracleLogBackup\\");
  config_.connectionTimeoutSec = 20;
  config_.restoreWaitInSec = 0;
  config_.waitDbStartedAttemptCount = 3;
  apply_config();
  specific::oracle::replace_restore_sleep_for_tests([this](uint32_t ms) { sleeps_.push_back(ms); });
  log_ = std::make_unique<dsl_test::capture_log_t>();
}

void backup_test_t::apply_config() { COracleConfig::replace_for_tests(config_); }

void backup_test_t::TearDown() {
  log_.reset();
  specific::oracle::replace_restore_sleep_for_tests(nullptr);
  COracleConfig::replace_for_tests(COracleConfig());
  set_env("OCISIM_SCENARIO", "");
  set_env("OCISIM_JOURNAL", "");
  set_env("OCISIM_STATE", "");
  folder_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void backup_test_t::use_machine(const std::vector<db_t>& dbs) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<machine host=\"DBSERVER01\" time_zone=\"+00:00\" now=\"2024-03-05 10:00:00\">\n";
  for (const auto& db : dbs) xml += instance_xml(db, archive_folder_);
  xml += "</machine>\n";
  const auto path = dir_ / "machine.xml";
  std::ofstream(path, std::ios::binary) << xml;
  std::error_code ignored;
  std::filesystem::remove(dir_ / "machine.state", ignored);
  set_env("OCISIM_SCENARIO", path.string());
}

SOracleSid backup_test_t::sid_of(const std::string& sid) {
  SOracleSid s;
  s.sid = util::from_utf8(sid);
  s.home = util::from_utf8(kHome);
  s.homeName = u"OraDB19Home1";
  return s;
}

std::vector<SOracleSid> backup_test_t::sids_of(const std::vector<db_t>& dbs) const {
  std::vector<SOracleSid> result;
  for (const auto& db : dbs) result.push_back(sid_of(db.sid));
  return result;
}

std::vector<std::pair<std::string, std::string>> backup_test_t::statements() const {
  std::vector<std::pair<std::string, std::string>> result;
  std::istringstream in(read_all(dir_ / "journal.txt"));
  std::string line;
  std::string sid;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream parts(line);
    std::string pid, thread, kind;
    parts >> pid >> thread >> kind;
    std::string rest;
    std::getline(parts, rest);
    if (!rest.empty() && rest.front() == ' ') rest.erase(0, 1);
    if (kind == "CALL" && rest.rfind("OCIServerAttach ", 0) == 0) {
      const size_t at = rest.find(" sid=");
      if (at != std::string::npos) sid = rest.substr(at + 5, rest.find(' ', at + 5) - at - 5);
    } else if (kind == "SQL") {
      result.emplace_back(sid, rest);
    }
  }
  return result;
}

std::vector<std::string> backup_test_t::statements_of(const std::string& sid) const {
  std::vector<std::string> result;
  for (const auto& s : statements()) {
    if (s.first == sid) result.push_back(s.second);
  }
  return result;
}

std::vector<std::string> backup_test_t::calls_of(const std::string& function) const {
  std::vector<std::string> result;
  std::istringstream in(read_all(dir_ / "journal.txt"));
  std::string line;
  while (std::getline(in, line)) {
    const size_t at = line.find(" CALL " + function + " ");
    if (at != std::string::npos) result.push_back(line.substr(at + 7 + function.size()));
  }
  return result;
}

std::string backup_test_t::journal_text() const { return read_all(dir_ / "journal.txt"); }

std::vector<std::string> backup_test_t::log_lines() const { return dsl_test::plain_log(*log_); }

bool backup_test_t::log_has(const std::string& line) const {
  for (const auto& l : log_lines()) {
    if (l == line) return true;
  }
  return false;
}

bool backup_test_t::log_contains(const std::string& text) const {
  for (const auto& l : log_->receiver().lines()) {
    if (l.find(text) != std::string::npos) return true;
  }
  return false;
}

namespace {

xml::xml_node_ref_t find_instance(const xml::xml_doc_ptr_t& doc, const std::string& sid) {
  const auto machine = xml::child(xml::root_ref(doc), "machine");
  for (auto i = xml::first_child(machine); i; i = xml::next_sibling(i)) {
    std::string value;
    if (xml::query_attr(i, "sid", value) && value == sid) return i;
  }
  return {};
}

}  // namespace

std::string backup_test_t::instance_attr(const std::string& sid, const std::string& attribute) const {
  std::string text = read_all(dir_ / "machine.state");
  if (text.empty()) text = read_all(dir_ / "machine.xml");
  const auto doc = xml::parse(text);
  std::string value;
  xml::query_attr(find_instance(doc, sid), attribute, value);
  return value;
}

std::string backup_test_t::pdb_mode(const std::string& sid, const std::string& pdb) const {
  std::string text = read_all(dir_ / "machine.state");
  if (text.empty()) text = read_all(dir_ / "machine.xml");
  const auto doc = xml::parse(text);
  const auto instance = find_instance(doc, sid);
  for (auto c = xml::first_child(instance); c; c = xml::next_sibling(c)) {
    std::string name;
    if (c.node->Value() != std::string("pdb") || !xml::query_attr(c, "name", name) || name != pdb) {
      continue;
    }
    std::string mode = "MOUNTED";
    xml::query_attr(c, "open_mode", mode);
    return mode;
  }
  return "";
}

bool backup_test_t::in_backup(const std::string& sid) const {
  std::string text = read_all(dir_ / "machine.state");
  if (text.empty()) text = read_all(dir_ / "machine.xml");
  const auto doc = xml::parse(text);
  const auto instance = find_instance(doc, sid);
  for (auto c = xml::first_child(instance); c; c = xml::next_sibling(c)) {
    std::string status;
    if (xml::query_attr(c, "backup", status) && status == "ACTIVE") return true;
  }
  return false;
}

std::u16string backup_test_t::meta_path() const {
  return folder_->path(u"OracleLogBackup\\OracleMeta.xml");
}

bool backup_test_t::meta_exists() const { return folder_->raw_exists(u"OracleLogBackup\\OracleMeta.xml"); }

}  // namespace backup_test
