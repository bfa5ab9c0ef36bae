#include "logs_fixture.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/session_holder.h"

namespace logs_test {

namespace {

void set_env(const std::string& name, const std::string& value) {
  specific::oracle::put_env_assignment(name + "=" + value);
}

}  // namespace

void logs_test_t::SetUpTestSuite() {
  set_env(specific::oracle::kOciLibraryVariable, ocisim_library());
  specific::oracle::CWinOraInterface::replace_table_for_tests(nullptr);
}

void logs_test_t::SetUp() {
  folder_ = std::make_unique<dsl_test::test_folder_t>();
  folder_->raw_mkdir(u"sim");
  scenarioDir_ = native_path(*folder_, base() + "sim");
  set_env("OCISIM_JOURNAL", scenarioDir_ + (scenarioDir_.find('\\') != std::string::npos ? "\\" : "/") + "journal.txt");
  set_env("OCISIM_STATE", "");
  configure(folder_->path(u"logs\\"), false);
  log_ = std::make_unique<dsl_test::capture_log_t>();
}

void logs_test_t::TearDown() {
  log_.reset();
  specific::oracle::COracleConfig::replace_for_tests(specific::oracle::COracleConfig());
  set_env("OCISIM_SCENARIO", "");
  set_env("OCISIM_JOURNAL", "");
  folder_.reset();
}

void logs_test_t::use_scenario(const std::string& xml) {
  folder_->raw_write(u"sim\\machine.xml", xml);
  set_env("OCISIM_SCENARIO", native_path(*folder_, base() + "sim\\machine.xml"));
}

void logs_test_t::configure(const std::u16string& logsFolder, bool stage) {
  specific::oracle::COracleConfig config;
  config.connectionTimeoutSec = 30;
  config.tempLogPath = logsFolder;
  config.stageLogsBeforeBackup = stage;
  specific::oracle::COracleConfig::replace_for_tests(config);
}

std::string logs_test_t::journal_text() const {
  const std::u16string name = u"sim\\journal.txt";
  return folder_->raw_exists(name) ? folder_->raw_read(name) : std::string();
}

std::vector<std::string> logs_test_t::sql_lines() const {
  std::vector<std::string> result;
  std::istringstream in(journal_text());
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t at = line.find(" SQL ");
    if (at != std::string::npos) result.push_back(line.substr(at + 5));
  }
  return result;
}

std::vector<std::string> logs_test_t::log_lines() const { return dsl_test::plain_log(*log_); }

bool logs_test_t::log_has(const std::string& text) const {
  for (const auto& l : log_lines()) {
    if (l.find(text) != std::string::npos) return true;
  }
  return false;
}

std::string logs_test_t::base() const { return util::to_utf8(folder_->base()); }

std::vector<std::string> logs_test_t::files_in(const std::string& relative) const {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& e : std::filesystem::directory_iterator(
           std::filesystem::u8path(native_path(*folder_, base() + relative)), ec)) {
    names.push_back(e.path().filename().u8string());
  }
  return names;
}

std::vector<std::string> logs_test_t::archived_log_states(const std::string& sid,
                                                          const std::string& home) {
  specific::oracle::COracleSessionHolder holder(util::from_utf8(sid), util::from_utf8(home),
                                                specific::oracle::conn_t(), false);
  std::vector<std::string> states;
  const auto rows = holder.make_query()->exec(
      "SELECT RECID, STATUS FROM V$ARCHIVED_LOG ORDER BY RECID", 2, false);
  for (const auto& row : rows->rows()) {
    states.push_back(util::to_utf8(row[0]) + " " + util::to_utf8(row[1]));
  }
  return states;
}

}  // namespace logs_test
