// The writer services of a .reg fixture for the span of one test: on the host build the
// fixture is the registry; on Windows each service is created around the test service program
// and brought into its state (the service tests' helper, svc_machine.h).
#pragma once
#include <memory>
#include <string>

namespace dsl_test {

class svc_machine_t;

class vss_services_t {
 public:
  explicit vss_services_t(const std::string& fixture);
  ~vss_services_t();

 private:
  std::unique_ptr<svc_machine_t> machine_;
};

}  // namespace dsl_test
