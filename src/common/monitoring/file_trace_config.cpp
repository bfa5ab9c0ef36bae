#include "common/monitoring/file_trace_config.h"

#include <mutex>

#include "common/synch/global_lock.h"

namespace monitoring {

const file_trace_config_t& file_trace_config_t::instance() {
  static const file_trace_config_t* const config = [] {
    std::lock_guard<std::recursive_mutex> guard(synch::global_lock());
    return new file_trace_config_t();
  }();
  return *config;
}

bool file_trace_config_t::flag(size_t word, unsigned bit) const {
  if (word >= flags_.size() || bit >= 32) return false;
  return ((flags_[word] >> bit) & 1u) != 0;
}

}  // namespace monitoring
