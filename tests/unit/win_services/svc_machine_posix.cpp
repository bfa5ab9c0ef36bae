#include <cstdlib>
#include <optional>

#include "common/win/reg_store_posix.h"
#include "svc_machine.h"

namespace dsl_test {

std::string fixture_path(const std::string& name) {
  const char* source = std::getenv("DSL_SOURCE_DIR");
  const std::string root = (source != nullptr && *source != '\0') ? source : ".";
  return root + "/tests/fixtures/" + name;
}

struct svc_machine_t::state_t {
  std::optional<std::string> previous;
};

svc_machine_t::svc_machine_t(const std::string& reg_file_path) : state_(new state_t) {
  if (const char* value = std::getenv(win::reg_store::kRegistryVariable)) state_->previous = value;
  ::setenv(win::reg_store::kRegistryVariable, reg_file_path.c_str(), 1);
  win::reg_store::reload();
}

svc_machine_t::~svc_machine_t() {
  if (state_->previous) {
    ::setenv(win::reg_store::kRegistryVariable, state_->previous->c_str(), 1);
  } else {
    ::unsetenv(win::reg_store::kRegistryVariable);
  }
  win::reg_store::reload();
  delete state_;
}

}  // namespace dsl_test
