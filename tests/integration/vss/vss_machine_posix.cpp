#include <cstdlib>
#include <fstream>
#include <sstream>

#include "support/bin_dir.h"
#include "support/reg_machine.h"
#include "vss_machine.h"

namespace vss_test {

namespace {

std::string source_dir() {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  return root != nullptr ? root : ".";
}

std::string read_all(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

}  // namespace

// The host's service manager reads the registry file, so the writer's key joins the instances'
// file (without the second file's header line).
struct vss_machine_t::state_t {
  std::string folder;
  std::unique_ptr<dsl_test::reg_machine_t> machine;
};

vss_machine_t::vss_machine_t(const std::string& instances_fixture,
                             const std::string& writer_fixture)
    : state_(std::make_unique<state_t>()) {
  std::string text = read_all(dsl_test::fixture_path(instances_fixture));
  if (!writer_fixture.empty()) {
    const std::string writer = read_all(dsl_test::fixture_path(writer_fixture));
    text += "\n" + writer.substr(writer.find('\n') + 1);
  }
  state_->folder = dsl_test::scratch_folder("vss-registry");
  const std::string path = state_->folder + "/machine.reg";
  dsl_test::write_file(path, text);
  state_->machine = std::make_unique<dsl_test::reg_machine_t>(path);
}

vss_machine_t::~vss_machine_t() {
  state_->machine.reset();
  dsl_test::remove_folder(state_->folder);
}

std::string host_program() { return dsl_test::bin_dir() + "/dbshadowlink"; }
std::string client_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }
std::string scenario_path(const std::string& name) {
  return source_dir() + "/tests/scenarios/" + name;
}

std::string log_file(const std::string& name) {
  const char* root = std::getenv("DBSHADOWLINK_ROOT");
  return std::string(root != nullptr ? root : ".") + "/c/ProgramData/Trelo/Backup/" + name;
}

}  // namespace vss_test
