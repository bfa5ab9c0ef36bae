#include "common/monitoring/file_trace_config.h"

namespace monitoring {

const file_trace_config_t& file_trace_config_t::instance() {
  static const file_trace_config_t* const config = new file_trace_config_t();
  return *config;
}

bool file_trace_config_t::flag(size_t word, unsigned bit) const {
  if (word >= flags_.size() || bit >= 32) return false;
  return ((flags_[word] >> bit) & 1u) != 0;
}

}  // namespace monitoring
