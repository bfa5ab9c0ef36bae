// What the agent remembers of earlier backups, per SID: the newest archived log it saw. Parsed
// from the explore input text; the `reverted` check of the collector looks a SID up here.
#pragma once
#include <map>
#include <memory>
#include <string>

namespace specific::oracle {

struct SDbLogRecInfo {
  std::u16string recId;  // RECID of that archived log
  std::u16string stamp;  // its STAMP
};

class CExploreDbConfig {
 public:
  // Parses the explore input (an empty text gives an empty map): any root element, one child
  // element per SID with the attributes sid, recId and stamp, all three required. A record is
  // kept only when recId and stamp are both decimal digits; an empty value, or one with
  // anything else in it (logged as a warning), leaves the SID without a record, because the
  // two values are later filled into a SQL condition. The first record of a SID stays. The
  // text is read as UTF-8. Throws "Failed to parse explore db config" over the cause.
  static CExploreDbConfig parse(const std::u16string& text);

  // The record for `sid`, matched exactly, case included; empty when none was stored.
  std::shared_ptr<SDbLogRecInfo> find(const std::u16string& sid) const;

  std::map<std::u16string, std::shared_ptr<SDbLogRecInfo>> records;
};

}  // namespace specific::oracle
