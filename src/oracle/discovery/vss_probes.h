// The two probes of the VSS check and the discovery it starts from. The check (vss_state.h)
// takes them as functions so that its order and its cache can be shown with stand-ins; the
// library always uses the ones below. Called on the thread of the export.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

struct SVssCheckProbes {
  // The instances of the machine in discovery order; may throw.
  std::function<std::vector<SOracleSid>()> instances;
  // True when the database of this instance is in order; never throws.
  std::function<bool(const SOracleSid&)> database;
  // True when the VSS writer service of this SID is neither stopped nor paused; never throws.
  std::function<bool(const std::u16string&)> writer;
};

// COracleHomes, probe_database and probe_writer.
SVssCheckProbes default_vss_check_probes();

// The instances that COracleHomes finds, in its order.
std::vector<SOracleSid> discover_instances();

// The database probe: a session with operating-system authentication; an instance that is not
// open is in order, an open one is when its database is ACTIVE. A session that does not come
// within the connection time-out is not in order ("Failed create oracle session: timeout. Sid:
// %1" and the failure in the log); any other failure is logged ("Failed to check if oracle db
// is active, sid: %1") and counts as in order, so that it does not stand in the snapshot's way.
bool probe_database(const SOracleSid& instance);

// The writer probe: the state of the service OracleVssWriter<SID>, logged as "Found service:
// %1, status: %2". Stopped (1) and paused (7) give false, every other state true. Any failure,
// a missing service included, is logged ("Failed to check if VSS oracle writer service enabled,
// sid: %1") and gives false.
bool probe_writer(const std::u16string& sid);

// "OracleVssWriter" followed by the SID as given.
std::u16string vss_writer_service_name(const std::u16string& sid);

}  // namespace specific::oracle
