#include "common/win/local_time.h"

#include <ctime>

namespace win {

bool current_local_time(local_time_t& out) {
  std::time_t now = std::time(nullptr);
  if (now == static_cast<std::time_t>(-1)) return false;
  std::tm fields{};
  if (localtime_r(&now, &fields) == nullptr) return false;
  out.year = static_cast<uint16_t>(fields.tm_year + 1900);
  out.month = static_cast<uint16_t>(fields.tm_mon + 1);
  out.day = static_cast<uint16_t>(fields.tm_mday);
  out.hour = static_cast<uint16_t>(fields.tm_hour);
  out.minute = static_cast<uint16_t>(fields.tm_min);
  // A leap second (60) is kept as the system reports it.
  out.second = static_cast<uint16_t>(fields.tm_sec);
  return true;
}

}  // namespace win
