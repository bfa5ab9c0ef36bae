// The clocks the thread observers read: a millisecond tick, a high-resolution counter with its
// frequency, and the machine's idle, kernel and user times. Windows asks GetTickCount,
// QueryPerformanceCounter/-Frequency and GetSystemTimes. The host build reads CLOCK_MONOTONIC
// (ticks in milliseconds, the counter in nanoseconds at a frequency of 10^9) and /proc/stat for
// the machine's times; without /proc it falls back to times(), which knows only this process
// (its kernel and user time, and no idle time). Safe from any thread.
#pragma once
#include <cstdint>

namespace monitoring {

// Milliseconds since an arbitrary start, wrapping at 2^32 as GetTickCount does.
uint32_t tick_count();

// False when the system cannot answer.
bool performance_counter(int64_t& value);
bool performance_frequency(int64_t& value);

// In units of 100 ns, as FILETIME counts. `kernel` includes `idle`, as on Windows.
struct system_times_t {
  uint64_t idle = 0;
  uint64_t kernel = 0;
  uint64_t user = 0;
};
bool system_times(system_times_t& times);

}  // namespace monitoring
