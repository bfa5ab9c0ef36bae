// The simulated machine as one process sees it for the span of one server call: the scenario
// (OCISIM_SCENARIO), or the state file beside it once a statement has changed something, read
// under the machine's lock file and written back before the lock is let go. So separate
// processes that load the client see one machine. A process keeps the last machine it read
// and reads the files again only when one of them has changed. Construct on the calling
// thread; never hold one across a sleep.
#pragma once
#include <memory>
#include <string>

#include "node.h"
#include "platform.h"

namespace ocisim {

class machine_t {
 public:
  // Takes the lock and reads the machine. An unset OCISIM_SCENARIO is a machine without
  // instances; a scenario that cannot be read or parsed raises ORA-00600 with the reason.
  machine_t();
  machine_t(const machine_t&) = delete;
  machine_t& operator=(const machine_t&) = delete;

  // The machine as read.
  const node_t& root() const;
  // The <instance> whose SID and home match (see instance_matches); null when none does.
  const node_t* find_instance(const std::string& sid, const std::string& home) const;

  // The machine to change: a private copy made at the first call; save() writes it.
  node_t& edit_root();
  node_t* edit_instance(const std::string& sid, const std::string& home);

  // Writes the whole machine to the state file at once (still under the lock).
  void save();

  // The paths in use, for messages and tests.
  static std::string scenario_path();
  static std::string state_path();

 private:
  std::unique_ptr<file_lock_t> lock_;
  std::shared_ptr<const node_t> read_;
  std::shared_ptr<const node_t> first_read_;
  std::unique_ptr<node_t> edited_;
  std::string hash_;
};

// SIDs compare without regard to case, as Windows treats them; homes likewise, with either
// slash and without trailing separators. An empty home matches any.
bool instance_matches(const node_t& instance, const std::string& sid, const std::string& home);

// Upper-cases ASCII letters.
std::string upper(std::string text);
// Lower-cases ASCII letters.
std::string lower(std::string text);

}  // namespace ocisim
