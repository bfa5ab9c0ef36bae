#include "common/logging/log_start.h"

namespace logging {

namespace {

std::u16string& last_name() {
  static std::u16string name;
  return name;
}

}  // namespace

void log_start(const std::u16string& log_name, const std::vector<std::u16string>& /*args*/) {
  last_name() = log_name;
}

std::u16string started_log_name() { return last_name(); }

}  // namespace logging
