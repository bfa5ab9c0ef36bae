// The process-wide VSS state: `vssSkipSids`, the SIDs whose Oracle VSS writer the agent is to
// leave out of a snapshot, and `vssMustBeEnabled`, the cached answer of the VSS check. Built at
// first use and kept for the life of the process: nothing removes a SID and the cache is never
// reset. Not locked: concurrent calls into the library are not provided for.
#pragma once
#include <memory>
#include <set>
#include <string>

namespace specific::oracle {

class CVssState {
 public:
  static CVssState& instance();

  // Exact, case-sensitive SIDs. The explore flow adds a skipped database without ARCHIVELOG,
  // the preparation a database whose decision is to skip the writer.
  void add_skip_sid(const std::u16string& sid) { vssSkipSids_.insert(sid); }
  bool should_skip(const std::u16string& sid) const { return vssSkipSids_.count(sid) != 0; }
  const std::set<std::u16string>& skip_sids() const { return vssSkipSids_; }

  // Empty until the VSS check has run once to the end.
  const std::shared_ptr<bool>& vss_must_be_enabled() const { return vssMustBeEnabled_; }
  void set_vss_must_be_enabled(bool value) { vssMustBeEnabled_ = std::make_shared<bool>(value); }

 private:
  std::set<std::u16string> vssSkipSids_;
  std::shared_ptr<bool> vssMustBeEnabled_;
};

}  // namespace specific::oracle
