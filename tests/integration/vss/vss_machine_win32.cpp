#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "../../unit/win_services/svc_machine.h"
#include "support/bin_dir.h"
#include "support/reg_machine.h"
#include "vss_machine.h"

namespace vss_test {

namespace {

// The source folder as a path of this platform: ctest hands over a host path, which Wine shows
// below drive Z:.
std::string source_dir() {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  std::string path = root != nullptr ? root : ".";
  if (!path.empty() && path[0] == '/') path.insert(0, "Z:");
  for (auto& c : path) c = (c == '/') ? '\\' : c;
  return path;
}

// The same as the Unix side names it, for the programs of that side.
std::string raw_source_dir() {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  return root != nullptr ? root : ".";
}

int g_checks = 0;

}  // namespace

struct vss_machine_t::state_t {
  std::unique_ptr<dsl_test::reg_machine_t> machine;
  std::unique_ptr<dsl_test::svc_machine_t> services;
};

vss_machine_t::vss_machine_t(const std::string& instances_fixture,
                             const std::string& writer_fixture)
    : state_(std::make_unique<state_t>()) {
  state_->machine =
      std::make_unique<dsl_test::reg_machine_t>(dsl_test::fixture_path(instances_fixture));
  if (!writer_fixture.empty()) {
    state_->services =
        std::make_unique<dsl_test::svc_machine_t>(dsl_test::fixture_path(writer_fixture));
  }
}

vss_machine_t::~vss_machine_t() {
  state_->services.reset();
  state_->machine.reset();
}

std::string host_program() { return dsl_test::bin_dir() + "\\dbshadowlink.exe"; }
std::string client_library() { return dsl_test::bin_dir() + "\\ocisim\\OCI.dll"; }
std::string scenario_path(const std::string& name) {
  return source_dir() + "\\tests\\scenarios\\" + name;
}
std::string log_file(const std::string& name) { return "C:\\ProgramData\\Trelo\\Backup\\" + name; }

// xmllint is a program of the Unix side. Wine starts such a program when it is named by its
// path below drive Z:, but hands back neither its exit status nor its output, so a small shell
// script runs it and writes both into a file that the test then waits for. The files lie in
// the folder of this test program's machine, which both sides reach (DBSHADOWLINK_ROOT holds
// its Unix path; Wine shows it below Z:).
std::string schema_errors(const std::string& name, const std::string& document) {
  const char* root = std::getenv("DBSHADOWLINK_ROOT");
  if (root == nullptr || root[0] != '/') return "DBSHADOWLINK_ROOT names no Unix folder";
  const std::string unix_folder = std::string(root) + "/schema-check";
  std::string folder = "Z:" + unix_folder;
  for (auto& c : folder) c = (c == '/') ? '\\' : c;
  std::filesystem::create_directories(std::filesystem::u8path(folder));
  const std::string stem = std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++g_checks);
  dsl_test::write_file(folder + "\\" + stem + ".xml", document);
  const std::string result = folder + "\\" + stem + ".out";
  std::remove(result.c_str());
  dsl_test::write_file(folder + "\\" + stem + ".sh",
                       "xmllint --noout --schema '" + raw_source_dir() + "/docs/schemas/" + name +
                           "' '" + unix_folder + "/" + stem + ".xml' >'" + unix_folder + "/" +
                           stem + ".part' 2>&1\necho \"exit $?\" >>'" + unix_folder + "/" + stem +
                           ".part'\nmv '" + unix_folder + "/" + stem + ".part' '" + unix_folder +
                           "/" + stem + ".out'\n");
  const auto run = console_test::run_process("Z:\\bin\\sh", {unix_folder + "/" + stem + ".sh"});
  std::string text;
  for (int waited = 0; waited < 600; ++waited) {
    std::ifstream in(result, std::ios::binary);
    if (in) {
      text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
      break;
    }
    Sleep(100);
  }
  for (const char* ending : {".xml", ".sh", ".out"}) std::remove((folder + "\\" + stem + ending).c_str());
  if (text.empty()) return "xmllint gave no answer (" + run.err + ")";
  if (text.find("exit 0\n") != std::string::npos) return std::string();
  return text;
}

}  // namespace vss_test
