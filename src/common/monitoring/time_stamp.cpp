#include "common/monitoring/time_stamp.h"

#include <atomic>

#include "common/monitoring/clock.h"

namespace workload {

namespace {

std::atomic<int64_t> g_frequency{0};

}  // namespace

uint64_t ticks_to_us(int64_t counter, int64_t frequency) {
  if (counter <= 0 || frequency <= 0) return 0;
  // Whole seconds and the remainder apart: counter * 10^6 alone would overflow after a few
  // days of uptime at a nanosecond frequency.
  const auto c = static_cast<uint64_t>(counter);
  const auto f = static_cast<uint64_t>(frequency);
  return (c / f) * 1000000u + (c % f) * 1000000u / f;
}

uint64_t time_stamp_us() {
  int64_t frequency = g_frequency.load(std::memory_order_relaxed);
  if (frequency == 0) {
    if (!monitoring::performance_frequency(frequency)) frequency = 0;
    g_frequency.store(frequency, std::memory_order_relaxed);
  }
  int64_t counter = 0;
  if (!monitoring::performance_counter(counter)) return 0;
  return ticks_to_us(counter, frequency);
}

}  // namespace workload
