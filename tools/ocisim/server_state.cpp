#include "server_state.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "views.h"

namespace ocisim {

const node_t& session_instance(const machine_t& machine, const session_info_t& session) {
  const node_t* instance = machine.find_instance(session.sid, session.home);
  if (instance == nullptr) throw ora(3113);
  return *instance;
}

node_t& edit_session_instance(machine_t& machine, const session_info_t& session) {
  node_t* instance = machine.edit_instance(session.sid, session.home);
  if (instance == nullptr) throw ora(3113);
  return *instance;
}

void require_connected(const node_t& instance, const session_info_t& session) {
  if (session.prelim) throw ora(1012);
  if (session.idle) throw ora(1034);
  if (instance_level(instance) == level_t::down || startup_count(instance) != session.incarnation) {
    throw ora(3113);
  }
}

void require_administrator(const session_info_t& session) {
  if (!session.sysdba && !session.sysoper) throw ora(1031);
}

std::int64_t startup_count(const node_t& instance) {
  return std::strtoll(instance.get("startups", "1").c_str(), nullptr, 10);
}

int machine_time_zone_minutes(const node_t& machine) {
  const std::string zone = machine.get("time_zone", "+00:00");
  int hours = 0;
  int minutes = 0;
  char sign = '+';
  if (std::sscanf(zone.c_str(), "%c%d:%d", &sign, &hours, &minutes) < 2) return 0;
  const int total = hours * 60 + minutes;
  return sign == '-' ? -total : total;
}

std::int64_t machine_now(const node_t& machine) {
  std::int64_t seconds = 0;
  if (machine.has("now") && parse_date(machine.get("now"), seconds)) return seconds;
  return static_cast<std::int64_t>(std::time(nullptr)) + machine_time_zone_minutes(machine) * 60LL;
}

std::string date_text(std::int64_t seconds) {
  return format_date(seconds, "YYYY-MM-DD HH24:MI:SS");
}

}  // namespace ocisim
