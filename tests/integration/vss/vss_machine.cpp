#include "vss_machine.h"

#include <fstream>
#include <sstream>

#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace vss_test {

namespace {

std::string read_all(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::string join_path(const std::string& folder, const std::string& name) {
  const char separator = folder.find('\\') != std::string::npos ? '\\' : '/';
  return folder + separator + name;
}

}  // namespace

void vss_console_t::SetUp() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = std::string(info->test_suite_name()) + "-" + info->name();
  folder_ = dsl_test::scratch_folder("vss-" + name);
  log_name_ = "vss-" + name + ".log";
  std::remove(log_file(log_name_).c_str());
}

void vss_console_t::TearDown() {
  std::remove(log_file(log_name_).c_str());
  dsl_test::remove_folder(folder_);
}

process_result_t vss_console_t::host(const std::vector<std::string>& args,
                                     const std::string& scenario) {
  std::vector<std::string> all = {"--log-name", log_name_};
  all.insert(all.end(), args.begin(), args.end());
  console_test::environment_t environment = {
      {"OCISIM_JOURNAL", join_path(folder_, "journal.txt")},
      {"OCISIM_STATE", join_path(folder_, "state.xml")},
      {"DSL_OCI_LIBRARY", client_library()}};
  if (!scenario.empty()) environment.push_back({"OCISIM_SCENARIO", scenario_path(scenario)});
  return console_test::run_process(host_program(), all, "", environment, /*timeout_seconds=*/120);
}

process_result_t vss_console_t::script(const std::string& lines, const std::string& scenario) {
  return host({"--script", write("script.txt", lines)}, scenario);
}

std::vector<std::string> vss_console_t::log_lines() const {
  const std::string text = read_all(log_file(log_name_));
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(dsl_test::plain_body(dsl_test::strip_stamp_and_thread(line)));
  }
  return lines;
}

bool vss_console_t::logged(const std::string& text) const { return count_logged(text) > 0; }

size_t vss_console_t::count_logged(const std::string& text) const {
  size_t count = 0;
  for (const auto& line : log_lines()) {
    if (line == text) ++count;
  }
  return count;
}

bool vss_console_t::logged_containing(const std::string& part) const {
  for (const auto& line : log_lines()) {
    if (line.find(part) != std::string::npos) return true;
  }
  return false;
}

std::string vss_console_t::journal() const { return read_all(join_path(folder_, "journal.txt")); }

std::string vss_console_t::write(const std::string& name, const std::string& bytes) const {
  const std::string path = join_path(folder_, name);
  dsl_test::write_file(path, bytes);
  return path;
}

}  // namespace vss_test
