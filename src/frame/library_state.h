// What the exported frame keeps for the life of the process: the initialised flag and the
// gather list that OracleGatherVssInfo fills on its first call and OracleVssStopLib drops. Not
// locked: the agent calls the exports from one thread at a time.
#pragma once
#include <memory>

#include "oracle/discovery/vss_info.h"

namespace specific::oracle::frame {

class CLibraryState {
 public:
  static CLibraryState& instance();

  bool initialised() const { return initialised_; }
  void set_initialised() { initialised_ = true; }

  // Process-wide and empty at load. OracleGatherVssInfo fills it when it is empty and keeps it
  // (vss_gather.h); OracleVssStopLib resets it, so the next gathering reads the machine anew.
  vss_info_list_ptr_t& gather_list() { return gather_list_; }
  const vss_info_list_ptr_t& gather_list() const { return gather_list_; }
  void reset_gather_list() { gather_list_.reset(); }

 private:
  bool initialised_ = false;
  vss_info_list_ptr_t gather_list_;
};

}  // namespace specific::oracle::frame
