#include "ocisim_fixture.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <sstream>

#include "config/oracle_config.h"
#include "ocisim_platform.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/ora_interface.h"

namespace ocisim_test {

namespace {

std::atomic<int> g_folder_count{0};

}  // namespace

void ocisim_test_t::set_env(const std::string& name, const std::string& value) {
  // The library's own way, so that the C runtime and the process block agree on Windows.
  specific::oracle::put_env_assignment(name + "=" + value);
}

void ocisim_test_t::SetUpTestSuite() {
  set_env(specific::oracle::kOciLibraryVariable, ocisim_library());
  // Forget whatever an earlier suite bound: the next use binds the library named now.
  specific::oracle::CWinOraInterface::replace_table_for_tests(nullptr);
}

void ocisim_test_t::SetUp() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  dir_ = std::filesystem::temp_directory_path() /
         ("dsl-oci-" + std::string(info->name()) + "-" + std::to_string(g_folder_count++) + "-" +
          std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
  std::filesystem::create_directories(dir_);
  set_env("OCISIM_JOURNAL", (dir_ / "journal.txt").string());
  set_env("OCISIM_STATE", "");
  set_timeout(20);
  log_ = std::make_unique<dsl_test::capture_log_t>();
}

void ocisim_test_t::TearDown() {
  log_.reset();
  specific::oracle::COracleConfig::replace_for_tests(specific::oracle::COracleConfig());
  set_env("OCISIM_SCENARIO", "");
  set_env("OCISIM_JOURNAL", "");
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void ocisim_test_t::use_scenario(const std::string& xml) {
  const auto path = dir_ / "machine.xml";
  std::ofstream(path, std::ios::binary) << xml;
  set_env("OCISIM_SCENARIO", path.string());
}

void ocisim_test_t::set_timeout(uint32_t seconds) {
  specific::oracle::COracleConfig config;
  config.connectionTimeoutSec = seconds;
  specific::oracle::COracleConfig::replace_for_tests(config);
}

std::vector<journal_line_t> ocisim_test_t::journal() const {
  std::vector<journal_line_t> lines;
  std::ifstream in(dir_ / "journal.txt", std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream parts(line);
    journal_line_t entry;
    std::string pid;
    parts >> pid >> entry.thread >> entry.kind;
    std::getline(parts, entry.rest);
    if (!entry.rest.empty() && entry.rest.front() == ' ') entry.rest.erase(0, 1);
    lines.push_back(entry);
  }
  return lines;
}

std::vector<journal_line_t> ocisim_test_t::journal_of(const std::string& kind) const {
  std::vector<journal_line_t> result;
  for (const auto& l : journal()) {
    if (l.kind == kind) result.push_back(l);
  }
  return result;
}

std::vector<std::string> ocisim_test_t::calls_of(const std::string& function) const {
  std::vector<std::string> result;
  for (const auto& l : journal_of("CALL")) {
    if (l.function() == function) result.push_back(l.rest.substr(function.size() + 1));
  }
  return result;
}

std::string ocisim_test_t::journal_text() const {
  std::string text;
  for (const auto& l : journal()) text += l.thread + " " + l.kind + " " + l.rest + "\n";
  return text;
}

std::vector<std::string> ocisim_test_t::log_lines() const { return dsl_test::plain_log(*log_); }

std::string machine_with(const std::string& instances) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<machine host=\"DBSERVER01\" time_zone=\"+00:00\" now=\"2024-03-05 10:00:00\">\n" +
         instances + "</machine>\n";
}

}  // namespace ocisim_test
