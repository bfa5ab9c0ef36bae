// Helpers the parts of the simulated server share: finding a session's instance in the
// machine, the checks every statement passes first, the start-up count, and the clock.
#pragma once
#include <cstdint>
#include <string>

#include "machine.h"
#include "server.h"

namespace ocisim {

// The session's instance, to read or to change; ORA-03113 when the machine no longer has it.
const node_t& session_instance(const machine_t& machine, const session_info_t& session);
node_t& edit_session_instance(machine_t& machine, const session_info_t& session);

// Raises what Oracle raises for a statement on this session: ORA-01012 for a preliminary
// session, ORA-01034 for one logged on to a stopped instance, ORA-03113 when the instance it
// was connected to has stopped or restarted since.
void require_connected(const node_t& instance, const session_info_t& session);

// ORA-01031 unless the session is SYSDBA or SYSOPER.
void require_administrator(const session_info_t& session);

std::int64_t startup_count(const node_t& instance);

// The machine's clock: its `now` attribute when the scenario fixes one, else the real time,
// both as the database's wall-clock time (`time_zone` of the machine, "+HH:MM").
std::int64_t machine_now(const node_t& machine);
int machine_time_zone_minutes(const node_t& machine);
// "YYYY-MM-DD HH:MI:SS", the scenario's form of a date.
std::string date_text(std::int64_t seconds);

}  // namespace ocisim
