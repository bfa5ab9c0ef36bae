// Injected faults of a scenario: <fault on="attach|logon|execute|fetch|startup|shutdown|
// logoff|detach" [sql="..." match="exact|prefix|contains"] [hang="seconds|forever"]
// [error="NNNNN" [message="..."]] [after_rows="N"] [times="N"]/> inside an <instance>.
// A fault is taken under the machine lock (its `times` counts down in the state file) and
// carried out after the lock is let go. Any thread.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "errors.h"

namespace ocisim {

struct fault_t {
  bool found = false;
  bool hang_forever = false;
  std::int64_t hang_ms = 0;
  std::shared_ptr<ora_error_t> error;
  std::int64_t after_rows = -1;
};

// The first fault of the instance that applies to `on` (and to the statement text for
// execute and fetch). Statement texts compare without regard to case or runs of blanks.
fault_t take_fault(const std::string& sid, const std::string& home, const std::string& on,
                   const std::string& sql = std::string());

// Sleeps for the fault's hang, if any (journalled as HANG first), then raises its error, if any.
void carry_out(const fault_t& fault, const std::string& function);

}  // namespace ocisim
