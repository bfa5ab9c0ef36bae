#include <windows.h>

#include <cstdlib>
#include <string>

#include "support/bin_dir.h"
#include "support/reg_machine.h"
#include "support/svc_machine.h"
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

}  // namespace vss_test
