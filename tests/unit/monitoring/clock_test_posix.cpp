// On the host build the machine's times come from /proc/stat, in units of 100 ns.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>

#include "common/monitoring/clock.h"

namespace {

TEST(ClockPosix, SystemTimesMatchTheFirstLineOfProcStat) {
  std::FILE* f = std::fopen("/proc/stat", "r");
  if (f == nullptr) GTEST_SKIP() << "no /proc/stat on this machine";
  unsigned long long user = 0, nice = 0, system = 0, idle = 0, iowait = 0;
  const int got = std::fscanf(f, "cpu %llu %llu %llu %llu %llu", &user, &nice, &system, &idle,
                              &iowait);
  std::fclose(f);
  ASSERT_EQ(got, 5);
  monitoring::system_times_t times;
  ASSERT_TRUE(monitoring::system_times(times));
  const long hz = sysconf(_SC_CLK_TCK);
  const double unit = 10000000.0 / static_cast<double>(hz);
  // Read a moment later, so the figures may only have grown, and by little.
  const double idle_before = static_cast<double>(idle + iowait) * unit;
  const double user_before = static_cast<double>(user + nice) * unit;
  EXPECT_GE(static_cast<double>(times.idle), idle_before);
  EXPECT_LT(static_cast<double>(times.idle), idle_before + 600 * 10000000.0);
  EXPECT_GE(static_cast<double>(times.user), user_before);
  EXPECT_LT(static_cast<double>(times.user), user_before + 600 * 10000000.0);
  EXPECT_GE(times.kernel, times.idle + static_cast<unsigned long long>(system * unit));
}

}  // namespace
