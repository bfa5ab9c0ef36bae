// The local date and time of this moment, as the log stamps its lines. Callable from any thread.
#pragma once
#include <cstdint>

namespace win {

struct local_time_t {
  uint16_t year = 0;
  uint16_t month = 0;  // 1 to 12
  uint16_t day = 0;    // 1 to 31
  uint16_t hour = 0;
  uint16_t minute = 0;
  uint16_t second = 0;
};

// Fills `out` and answers true; answers false, leaving `out` untouched, when the local time
// cannot be had.
[[nodiscard]] bool current_local_time(local_time_t& out);

}  // namespace win
