// Time stamps in microseconds from the high-resolution counter, for the time-ratio counters.
// The counter's frequency is read once and kept, and asked again only while it is unknown (0).
// Safe from any thread.
#pragma once
#include <cstdint>

namespace workload {

// The counter scaled to microseconds; 0 when the counter or its frequency cannot be read.
uint64_t time_stamp_us();

// `counter` ticks at `frequency` per second, as microseconds, without overflow for any
// counter a machine reaches.
uint64_t ticks_to_us(int64_t counter, int64_t frequency);

}  // namespace workload
