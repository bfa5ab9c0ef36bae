// Technical companion of every exception: named values and numbered events. Nothing in the
// library fills it by itself; it is carried so that the binary form of an exception round-trips.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace exc {

struct trace_event_t {
  uint32_t event = 0;  // valid numbers are 1 to 6
  std::string info;
  bool operator==(const trace_event_t& o) const { return event == o.event && info == o.info; }
};

struct trace_info_t {
  std::map<std::string, std::string> values;
  std::vector<trace_event_t> events;

  // Map entries overwrite, events are appended.
  void merge(const trace_info_t& other);
  bool empty() const { return values.empty() && events.empty(); }
};

}  // namespace exc
