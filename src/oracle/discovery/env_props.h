// The facts of this machine that the explored document carries on its root element: the fully
// qualified computer name, the operating system's name and the time zone's current offset.
// The pure rules are here for both builds; the lookups are the platform's (env_props_sys.h).
// On the operation's thread.
#pragma once
#include <cstdint>
#include <memory>

#include "oracle/discovery/oracle_props.h"

namespace specific::oracle {

// The answer of GetTimeZoneInformation and the three biases it fills, in minutes west of UTC.
struct STimeZoneBias {
  uint32_t result = 0;  // TIME_ZONE_ID_UNKNOWN 0, STANDARD 1, DAYLIGHT 2, INVALID all ones
  int32_t bias = 0;
  int32_t standardBias = 0;
  int32_t daylightBias = 0;
};

constexpr uint32_t kTimeZoneIdUnknown = 0;
constexpr uint32_t kTimeZoneIdStandard = 1;
constexpr uint32_t kTimeZoneIdDaylight = 2;

// The bias in effect: the plain bias when the daylight state is unknown, plus the standard
// bias in standard time, plus the daylight bias in daylight time; 0 for any other answer.
int32_t current_bias_minutes(const STimeZoneBias& zone);

// The offset from UTC in quarter hours, positive east: the bias negated and divided by 15,
// truncated toward zero (-180 gives 12, 60 gives -4, 50 gives -3).
int32_t time_zone_quarters(int32_t biasMinutes);

// Step "Collecting environment properties": all three facts, from the platform. Any failure
// rises as "Failed to collect environment properties" over its cause.
std::shared_ptr<CEnvProps> collect_env_props();

}  // namespace specific::oracle
