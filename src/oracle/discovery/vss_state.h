// The process-wide VSS state: `vssSkipSids`, the SIDs whose Oracle VSS writer the agent is to
// leave out of a snapshot, and `vssMustBeEnabled`, the cached answer of the VSS check. Built at
// first use and kept for the life of the process: nothing removes a SID and the cache is never
// reset. Not locked: concurrent calls into the library are not provided for.
#pragma once
#include <memory>
#include <set>
#include <string>

#include "oracle/discovery/vss_probes.h"

namespace specific::oracle {

class CVssState {
 public:
  // The one object of the process. Tests may make objects of their own.
  static CVssState& instance();

  // Exact, case-sensitive SIDs. The explore flow adds a skipped database without ARCHIVELOG,
  // the preparation a database whose decision is to skip the writer. Lookups open no session
  // and read no registry.
  void add_skip_sid(const std::u16string& sid) { vssSkipSids_.insert(sid); }
  bool should_skip(const std::u16string& sid) const { return vssSkipSids_.count(sid) != 0; }
  const std::set<std::u16string>& skip_sids() const { return vssSkipSids_; }

  // Empty until the VSS check has run once to the end.
  const std::shared_ptr<bool>& vss_must_be_enabled() const { return vssMustBeEnabled_; }
  void set_vss_must_be_enabled(bool value) { vssMustBeEnabled_ = std::make_shared<bool>(value); }

  // Whether a VSS snapshot may count on Oracle's writer on this machine. The first call that
  // ends normally fixes the answer for the life of the process; later calls return it and write
  // nothing to the log. The probing, in the log step "Checking if oracle VSS must be disabled":
  // every database instance in discovery order (ASM instances are passed over) gets the
  // database probe; one that is not in order gets the writer probe, and a writer that is
  // neither stopped nor paused ends the loop with the answer false. The step ends with
  // "VSS must be enabled" or "VSS must be disabled".
  // The probes swallow their own failures. Only discovery can fail the check: its failure goes
  // up, the step closes " Failed." and the cache stays empty, so the next call probes again.
  bool check_vss_functionality();
  bool check_vss_functionality(const SVssCheckProbes& probes);

 private:
  std::set<std::u16string> vssSkipSids_;
  std::shared_ptr<bool> vssMustBeEnabled_;
};

}  // namespace specific::oracle
