// What the exported frame keeps for the life of the process: the initialised flag and the
// gather list that OracleGatherVssInfo reads and OracleVssStopLib drops. Not locked: the agent
// calls the exports from one thread at a time.
#pragma once
#include <memory>

namespace specific::oracle::frame {

class CLibraryState {
 public:
  static CLibraryState& instance();

  bool initialised() const { return initialised_; }
  void set_initialised() { initialised_ = true; }

  // Process-wide and empty at load; nothing in the library assigns it yet.
  std::shared_ptr<void> gather_list() const { return gather_list_; }
  void reset_gather_list() { gather_list_.reset(); }

 private:
  bool initialised_ = false;
  std::shared_ptr<void> gather_list_;
};

}  // namespace specific::oracle::frame
