// The operation behind OracleGatherVssInfo. The gather list is filled by its first call: one
// entry per database instance (ASM instances are left out) in discovery order, each read over a
// session with operating-system authentication. The list is then kept, and later calls render
// it again without a session, until OracleVssStopLib drops it; the next call after that fills
// it anew. A failure of one instance becomes an entry with its error text; only a failure of
// discovery fails the call, and then the list stays empty. The thread of the export.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "oracle/discovery/oracle_sid.h"
#include "oracle/discovery/vss_info.h"

namespace specific::oracle {

using vss_info_probe_t = std::function<SVssInfoEntry(const SOracleSid&)>;

// The state of one instance. Not open: valid, with every flag false and no database name.
// Open: database name, ACTIVE, READ ONLY and ARCHIVELOG as the session reads them. Any
// failure: not valid, `error` is the failure's text. Never throws.
SVssInfoEntry probe_vss_info(const SOracleSid& instance);

// One entry per instance that is no ASM instance, in the order given.
vss_info_list_t collect_vss_info(const std::vector<SOracleSid>& instances,
                                 const vss_info_probe_t& probe);

// Fills `list` when it is empty (from discovery and probe_vss_info, or the stand-ins given),
// then renders it as the OracleEntries document (vss_entries_doc.h).
std::u16string gather_vss_info(vss_info_list_ptr_t& list);
std::u16string gather_vss_info(vss_info_list_ptr_t& list,
                               const std::function<std::vector<SOracleSid>()>& instances,
                               const vss_info_probe_t& probe);

}  // namespace specific::oracle
