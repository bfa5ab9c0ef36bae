#include "common/monitoring/clock.h"

#include <windows.h>

namespace monitoring {

namespace {

uint64_t to_u64(const FILETIME& t) {
  return (static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
}

}  // namespace

uint32_t tick_count() { return GetTickCount(); }

bool performance_counter(int64_t& value) {
  LARGE_INTEGER v;
  if (!QueryPerformanceCounter(&v)) return false;
  value = v.QuadPart;
  return true;
}

bool performance_frequency(int64_t& value) {
  LARGE_INTEGER v;
  if (!QueryPerformanceFrequency(&v)) return false;
  value = v.QuadPart;
  return true;
}

bool system_times(system_times_t& times) {
  FILETIME idle;
  FILETIME kernel;
  FILETIME user;
  if (!GetSystemTimes(&idle, &kernel, &user)) return false;
  times.idle = to_u64(idle);
  times.kernel = to_u64(kernel);
  times.user = to_u64(user);
  return true;
}

}  // namespace monitoring
