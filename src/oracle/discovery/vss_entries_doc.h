// The OracleEntries document that OracleGatherVssInfo returns: the root OracleEntries with one
// OracleEntry per entry of the gather list, in list order. Each carries "sid"; an entry that is
// not valid then carries "error" and nothing else, a valid one "db_name", "instance_open",
// "db_open_readonly", "db_archive_logs_on" and "db_active", in this order, the flags as "true"
// or "false". Printed compact (one line, no declaration) and widened from the system code
// page. Schema: docs/schemas/oracle-entries.xsd. Any thread.
#pragma once
#include <string>

#include "oracle/discovery/vss_info.h"

namespace specific::oracle {

std::u16string render_vss_entries(const vss_info_list_t& list);

}  // namespace specific::oracle
