#include "console_fixture.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include "test_platform.h"
#include "support/test_text.h"

namespace fs = std::filesystem;

namespace console_test {

namespace {

fs::path from_utf8(const std::string& utf8) { return fs::u8path(utf8); }
std::string to_utf8(const fs::path& path) { return path.u8string(); }

// The folder of this test run. Made, and named in the environment, before the first test
// starts, so that the library in the test process and every host child see the same machine.
class run_folder_t : public ::testing::Environment {
 public:
  void SetUp() override {
    folder_ = make_unique_folder();
    fs::create_directories(folder_ / "machine");
    set_environment("DBSHADOWLINK_ROOT", to_utf8(folder_ / "machine"));
    // Absent file: an empty registry, so every setting of the library has its default.
    set_environment("DBSHADOWLINK_REGISTRY", to_utf8(folder_ / "registry.reg"));
    current_ = this;
  }
  void TearDown() override {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  static const fs::path& folder() {
    if (current_ == nullptr) throw std::logic_error("the run folder is not made yet");
    return current_->folder_;
  }

 private:
  static fs::path make_unique_folder() {
    const fs::path base = fs::temp_directory_path();
    std::random_device random;
    for (int attempt = 0; attempt < 1000; ++attempt) {
      const fs::path candidate = base / ("dsl-console-" + std::to_string(random()));
      if (fs::create_directory(candidate)) return candidate;
    }
    throw std::runtime_error("cannot make the test run's folder");
  }

  fs::path folder_;
  static inline run_folder_t* current_ = nullptr;
};

[[maybe_unused]] ::testing::Environment* const run_folder =
    ::testing::AddGlobalTestEnvironment(new run_folder_t);

std::string hex(DSL_RESULT result) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
  return text;
}

std::string with_line_end(const std::string& text) {
  return !text.empty() && text.back() == '\n' ? text : text + "\n";
}

std::string where(const std::string& command, const std::string& origin) {
  return "dbshadowlink: " + (origin.empty() ? std::string() : origin + ": ") + command + ": ";
}

expected_run_t failure_run(const std::string& command, const std::string& export_name,
                           const outcome_t& outcome, const std::string& origin) {
  return {1, "",
          where(command, origin) + export_name + " failed with " + hex(outcome.result) + ":\n" +
              with_line_end(outcome.error)};
}

}  // namespace

reference_t& reference_t::instance() {
  static reference_t reference;
  return reference;
}

reference_t::reference_t() {
  std::string error;
  library_ = load_library(console_test_t::library_path(), error);
  if (library_ == nullptr) throw std::runtime_error("cannot load the library: " + error);
  free_ = reinterpret_cast<void (*)(void*)>(symbol("OracleLibStrFree"));
  const auto init = reinterpret_cast<decltype(&OracleVssInitLib)>(symbol("OracleVssInitLib"));
  DSL_WCHAR* init_error = nullptr;
  const dsl_string_t name = to_dsl("dbshadowlink-console-test.log");
  if (init(name.c_str(), &init_error) != DSL_S_OK) {
    const std::string text = init_error != nullptr ? from_dsl(init_error) : "";
    free_(init_error);
    throw std::runtime_error("OracleVssInitLib failed: " + text);
  }
}

void* reference_t::symbol(const char* name) {
  void* address = library_symbol(library_, name);
  if (address == nullptr) throw std::runtime_error(std::string("no export ") + name);
  return address;
}

void reference_t::take(outcome_t& outcome, DSL_WCHAR* text, DSL_WCHAR* error) {
  if (outcome.result == DSL_S_OK && text != nullptr) {
    outcome.has_text = true;
    outcome.text = from_dsl(text);
  }
  if (outcome.result != DSL_S_OK && error != nullptr) outcome.error = from_dsl(error);
  free_(text);
  free_(error);
}

#define REFERENCE_EXPORT(name) reinterpret_cast<decltype(&name)>(symbol(#name))

outcome_t reference_t::logs_folder() {
  outcome_t outcome;
  DSL_WCHAR* text = nullptr;
  DSL_WCHAR* error = nullptr;
  outcome.result = REFERENCE_EXPORT(OracleGetLogsFolder)(&text, &error);
  take(outcome, text, error);
  return outcome;
}

outcome_t reference_t::enum_logs() {
  outcome_t outcome;
  DSL_WCHAR* text = nullptr;
  DSL_WCHAR* error = nullptr;
  outcome.result = REFERENCE_EXPORT(OracleEnumLogs)(&text, &error);
  take(outcome, text, error);
  return outcome;
}

outcome_t reference_t::gather_vss_info() {
  outcome_t outcome;
  DSL_WCHAR* text = nullptr;
  DSL_WCHAR* error = nullptr;
  outcome.result = REFERENCE_EXPORT(OracleGatherVssInfo)(nullptr, nullptr, &text, &error);
  take(outcome, text, error);
  return outcome;
}

outcome_t reference_t::check_vss() {
  outcome_t outcome;
  DSL_WCHAR* error = nullptr;
  outcome.result = REFERENCE_EXPORT(OracleCheckVssFunctionality)(&outcome.boolean, &error);
  take(outcome, nullptr, error);
  return outcome;
}

outcome_t reference_t::restore_required() {
  outcome_t outcome;
  DSL_WCHAR* error = nullptr;
  outcome.result = REFERENCE_EXPORT(OracleIsRestoreRequired)(&outcome.boolean, &error);
  take(outcome, nullptr, error);
  return outcome;
}

outcome_t reference_t::should_skip_writer(const std::string& sid) {
  outcome_t outcome;
  DSL_WCHAR* error = nullptr;
  const dsl_string_t wide_sid = to_dsl(sid);
  outcome.result =
      REFERENCE_EXPORT(OracleShouldSkipVssWriter)(wide_sid.c_str(), &outcome.boolean, &error);
  take(outcome, nullptr, error);
  return outcome;
}

outcome_t reference_t::finish(const std::string& document, const std::string& user,
                              const std::string& password) {
  outcome_t outcome;
  DSL_WCHAR* error = nullptr;
  const dsl_string_t d = to_dsl(document), u = to_dsl(user), p = to_dsl(password);
  outcome.result = REFERENCE_EXPORT(OracleFinishDbsBackup)(d.c_str(), u.c_str(), p.c_str(), &error);
  take(outcome, nullptr, error);
  return outcome;
}

outcome_t reference_t::remove_logs(const std::string& list) {
  outcome_t outcome;
  DSL_WCHAR* error = nullptr;
  const dsl_string_t l = to_dsl(list);
  outcome.result = REFERENCE_EXPORT(OracleRemoveLogsInTemp)(l.c_str(), &error);
  take(outcome, nullptr, error);
  return outcome;
}

outcome_t reference_t::explore(bool collect, const std::string& user, const std::string& password,
                               const std::string& config) {
  outcome_t outcome;
  DSL_WCHAR* text = nullptr;
  DSL_WCHAR* error = nullptr;
  const dsl_string_t u = to_dsl(user), p = to_dsl(password), c = to_dsl(config);
  outcome.result = REFERENCE_EXPORT(OracleExploreInstances)(collect ? 1 : 0, u.c_str(), p.c_str(),
                                                            c.c_str(), &text, &error);
  take(outcome, text, error);
  return outcome;
}

expected_run_t expected_text_run(const std::string& command, const std::string& export_name,
                                 const outcome_t& outcome, const std::string& origin) {
  if (outcome.result != DSL_S_OK) return failure_run(command, export_name, outcome, origin);
  return {0, with_line_end(outcome.text), ""};
}

expected_run_t expected_boolean_run(const std::string& command, const std::string& export_name,
                                    const outcome_t& outcome, const std::string& origin) {
  if (outcome.result != DSL_S_OK) return failure_run(command, export_name, outcome, origin);
  return {0, outcome.boolean != 0 ? "true\n" : "false\n", ""};
}

expected_run_t expected_plain_run(const std::string& command, const std::string& export_name,
                                  const outcome_t& outcome, const std::string& origin) {
  if (outcome.result != DSL_S_OK) return failure_run(command, export_name, outcome, origin);
  return {0, "", ""};
}

expected_run_t expected_script_run(const std::vector<expected_run_t>& lines, bool keep_going) {
  expected_run_t total;
  for (const auto& line : lines) {
    total.out += line.out;
    total.err += line.err;
    if (line.exit_code != 0 && total.exit_code == 0) total.exit_code = line.exit_code;
    if (line.exit_code != 0 && !keep_going) break;
  }
  return total;
}

void expect_run(const process_result_t& actual, const expected_run_t& expected) {
  EXPECT_FALSE(actual.timed_out);
  EXPECT_EQ(actual.exit_code, expected.exit_code) << "stderr: " << actual.err;
  EXPECT_EQ(actual.out, expected.out);
  EXPECT_EQ(actual.err, expected.err);
}

void console_test_t::SetUp() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  const fs::path folder =
      run_folder_t::folder() / "tests" / (std::string(info->test_suite_name()) + "." + info->name());
  fs::create_directories(folder);
  folder_ = to_utf8(folder);
}

void console_test_t::TearDown() {
  std::error_code ignored;
  fs::remove_all(from_utf8(folder_), ignored);
}

process_result_t console_test_t::host(const std::vector<std::string>& args,
                                      const std::string& input,
                                      const environment_t& environment) {
  return run_process(host_path(), args, input, environment);
}

std::string console_test_t::path_in_test_folder(const std::string& name) const {
  return to_utf8(from_utf8(folder_) / from_utf8(name));
}

std::string console_test_t::write_file(const std::string& name, const std::string& bytes) const {
  const std::string path = path_in_test_folder(name);
  std::ofstream file(from_utf8(path), std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + path);
  return path;
}

std::string console_test_t::host_path() {
  return to_utf8(from_utf8(bin_dir()) / host_file_name());
}

std::string console_test_t::library_path() {
  return to_utf8(from_utf8(bin_dir()) / library_file_name());
}

std::string console_test_t::machine_root() { return to_utf8(run_folder_t::folder() / "machine"); }

}  // namespace console_test
