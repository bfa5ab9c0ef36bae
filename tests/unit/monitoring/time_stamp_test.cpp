#include "common/monitoring/time_stamp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "common/monitoring/clock.h"

namespace {

TEST(TimeStamp, TicksBecomeMicroseconds) {
  EXPECT_EQ(workload::ticks_to_us(10000000, 10000000), 1000000u);
  EXPECT_EQ(workload::ticks_to_us(15, 10), 1500000u);
  EXPECT_EQ(workload::ticks_to_us(1, 3), 333333u);
  EXPECT_EQ(workload::ticks_to_us(123456789, 1000000), 123456789u);
}

TEST(TimeStamp, UnknownFrequencyOrCounterGivesZero) {
  EXPECT_EQ(workload::ticks_to_us(100, 0), 0u);
  EXPECT_EQ(workload::ticks_to_us(0, 1000), 0u);
  EXPECT_EQ(workload::ticks_to_us(-5, 1000), 0u);
}

TEST(TimeStamp, LargeCountersDoNotOverflow) {
  // A nanosecond counter after 200 days of uptime.
  const int64_t ns = int64_t{200} * 86400 * 1000000000;
  EXPECT_EQ(workload::ticks_to_us(ns, 1000000000), static_cast<uint64_t>(ns / 1000));
}

TEST(TimeStamp, FollowsTheClockInMicroseconds) {
  const uint64_t a = workload::time_stamp_us();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const uint64_t b = workload::time_stamp_us();
  ASSERT_GT(a, 0u);
  EXPECT_GE(b - a, 45000u);
  EXPECT_LT(b - a, 5000000u);
}

TEST(Clock, FrequencyIsKnownAndTheCounterMoves) {
  int64_t frequency = 0;
  ASSERT_TRUE(monitoring::performance_frequency(frequency));
  EXPECT_GT(frequency, 0);
  int64_t first = 0;
  int64_t second = 0;
  ASSERT_TRUE(monitoring::performance_counter(first));
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_TRUE(monitoring::performance_counter(second));
  EXPECT_GT(second, first);
}

TEST(Clock, TickCountIsInMilliseconds) {
  const uint32_t a = monitoring::tick_count();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const uint32_t b = monitoring::tick_count();
  EXPECT_GE(static_cast<uint32_t>(b - a), 80u);
  EXPECT_LT(static_cast<uint32_t>(b - a), 5000u);
}

TEST(Clock, SystemTimesAreKnownAndKernelIncludesIdle) {
  monitoring::system_times_t times;
  ASSERT_TRUE(monitoring::system_times(times));
  EXPECT_GT(times.kernel + times.user, 0u);
  EXPECT_GE(times.kernel, times.idle);
}

}  // namespace
