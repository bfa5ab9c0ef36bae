#include "support/svc_machine.h"

namespace dsl_test {

// The host's service stand-in reads the services from the registry store, so putting them in
// place is putting the registry file in place.
struct svc_machine_t::state_t {
  explicit state_t(const std::string& reg_file_path) : machine(reg_file_path) {}
  reg_machine_t machine;
};

svc_machine_t::svc_machine_t(const std::string& reg_file_path)
    : state_(new state_t(reg_file_path)) {}

svc_machine_t::~svc_machine_t() { delete state_; }

}  // namespace dsl_test
