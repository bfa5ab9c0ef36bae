// SVssInfoEntry: what OracleGatherVssInfo reports of one database instance, and the gather
// list that holds these entries for the process (see vss_gather.h). Plain values; the thread
// of the export.
#pragma once
#include <memory>
#include <string>
#include <vector>

namespace specific::oracle {

struct SVssInfoEntry {
  std::u16string sid;
  // Where the instance lives (ORACLE_HOME and the home's name); kept with the entry for the
  // log and for callers in the library, not part of the document.
  std::u16string home;
  std::u16string homeName;
  std::u16string dbName;
  std::u16string error;  // why no state could be read; only when not valid
  bool instanceOpen = false;
  bool dbActive = false;
  bool dbOpenReadonly = false;
  bool dbArchiveLogsOn = false;
  bool valid = false;  // the five fields above hold a result; otherwise `error` does
};

using vss_info_list_t = std::vector<SVssInfoEntry>;
// The process-wide gather list: empty (null) until the first OracleGatherVssInfo fills it,
// dropped by OracleVssStopLib.
using vss_info_list_ptr_t = std::shared_ptr<vss_info_list_t>;

}  // namespace specific::oracle
