// A test helper that puts the services of a .reg fixture in place for the span of a test. The
// fixture describes each service as a key below HKLM\SYSTEM\CurrentControlSet\Services with an
// optional DWORD CurrentState.
// Host build: DBSHADOWLINK_REGISTRY names the file and the store is reloaded, so the services
// are the keys of the file. Windows: each service is created with "sc create" around the test
// service program (dsl_test_service.exe beside the test), started when its CurrentState is
// running (4) and also paused when it is paused (7); afterwards each is stopped and deleted with
// "sc". A service of the same name left by a broken earlier run is deleted first.
#pragma once
#include <string>

#include "support/reg_machine.h"  // fixture_path

namespace dsl_test {

class svc_machine_t {
 public:
  explicit svc_machine_t(const std::string& reg_file_path);
  ~svc_machine_t();
  svc_machine_t(const svc_machine_t&) = delete;
  svc_machine_t& operator=(const svc_machine_t&) = delete;

 private:
  struct state_t;
  state_t* state_;
};

}  // namespace dsl_test
