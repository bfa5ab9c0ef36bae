#include "common/monitoring/clock.h"

#include <sys/times.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace monitoring {

namespace {

bool monotonic(timespec& ts) { return clock_gettime(CLOCK_MONOTONIC, &ts) == 0; }

// Clock ticks (USER_HZ) to units of 100 ns.
uint64_t ticks_to_filetime(unsigned long long ticks, long hz) {
  const auto per_second = static_cast<unsigned long long>(hz);
  return (ticks / per_second) * 10000000ULL + (ticks % per_second) * 10000000ULL / per_second;
}

// The first line of /proc/stat: "cpu  user nice system idle iowait irq softirq ...".
bool from_proc_stat(system_times_t& times, long hz) {
  FILE* f = std::fopen("/proc/stat", "r");
  if (f == nullptr) return false;
  unsigned long long v[7] = {};
  const int got = std::fscanf(f, "cpu %llu %llu %llu %llu %llu %llu %llu", &v[0], &v[1], &v[2],
                              &v[3], &v[4], &v[5], &v[6]);
  std::fclose(f);
  if (got < 4) return false;
  const unsigned long long user = v[0] + v[1];
  const unsigned long long idle = v[3] + v[4];
  // Windows counts idle time as kernel time; so is it counted here.
  const unsigned long long kernel = v[2] + v[5] + v[6] + idle;
  times.idle = ticks_to_filetime(idle, hz);
  times.kernel = ticks_to_filetime(kernel, hz);
  times.user = ticks_to_filetime(user, hz);
  return true;
}

}  // namespace

uint32_t tick_count() {
  timespec ts;
  if (!monotonic(ts)) return 0;
  const uint64_t ms = static_cast<uint64_t>(ts.tv_sec) * 1000u +
                      static_cast<uint64_t>(ts.tv_nsec) / 1000000u;
  return static_cast<uint32_t>(ms);
}

bool performance_counter(int64_t& value) {
  timespec ts;
  if (!monotonic(ts)) return false;
  value = static_cast<int64_t>(ts.tv_sec) * 1000000000LL + ts.tv_nsec;
  return true;
}

bool performance_frequency(int64_t& value) {
  value = 1000000000LL;
  return true;
}

bool system_times(system_times_t& times) {
  const long hz = sysconf(_SC_CLK_TCK);
  if (hz <= 0) return false;
  if (from_proc_stat(times, hz)) return true;
  tms own;
  if (::times(&own) == static_cast<clock_t>(-1)) return false;
  times.idle = 0;
  times.kernel = ticks_to_filetime(static_cast<unsigned long long>(own.tms_stime), hz);
  times.user = ticks_to_filetime(static_cast<unsigned long long>(own.tms_utime), hz);
  return true;
}

}  // namespace monitoring
