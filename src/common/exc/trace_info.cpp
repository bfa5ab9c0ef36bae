#include "common/exc/trace_info.h"

namespace exc {

void trace_info_t::merge(const trace_info_t& other) {
  for (const auto& [key, value] : other.values) values[key] = value;
  events.insert(events.end(), other.events.begin(), other.events.end());
}

}  // namespace exc
