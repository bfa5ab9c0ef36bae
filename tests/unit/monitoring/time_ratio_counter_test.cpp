#include "common/monitoring/time_ratio_counter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

namespace {

using workload::CTimeRatioCounter;

TEST(TimeRatioCounter, FirstEnterTakesTheTimeAndGoesInside) {
  CTimeRatioCounter c;
  EXPECT_EQ(c.state(), CTimeRatioCounter::kNew);
  c.enter(1000);
  EXPECT_EQ(c.state(), CTimeRatioCounter::kInside);
  EXPECT_EQ(c.enter_time(), 1000u);
}

TEST(TimeRatioCounter, TwoEntersInARowHaveTheEffectOfOne) {
  CTimeRatioCounter c;
  c.enter(1000);
  c.enter(1500);
  EXPECT_EQ(c.enter_time(), 1000u);
  c.leave(2000);
  c.enter(3000);
  c.enter(3500);
  EXPECT_EQ(c.enter_time(), 3000u);
  EXPECT_EQ(c.busy_time(), 1000u);
  EXPECT_EQ(c.total_time(), 2000u);
  // Also with the real clock: the second enter changes nothing.
  CTimeRatioCounter r;
  r.enter();
  const uint64_t first = r.enter_time();
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  r.enter();
  EXPECT_EQ(r.enter_time(), first);
  EXPECT_EQ(r.state(), CTimeRatioCounter::kInside);
}

TEST(TimeRatioCounter, BusyPercentIsTheBusyShareOfTheWholeSpan) {
  CTimeRatioCounter c;
  c.enter(1000);
  c.leave(1250);  // busy 250
  c.enter(2000);  // idle 750
  EXPECT_EQ(c.busy_time(), 250u);
  EXPECT_EQ(c.total_time(), 1000u);
  EXPECT_FLOAT_EQ(c.busy_percent(), 25.0f);
  c.leave(2500);  // busy 500
  c.enter(3000);  // idle 500
  EXPECT_EQ(c.busy_time(), 750u);
  EXPECT_EQ(c.total_time(), 2000u);
  EXPECT_FLOAT_EQ(c.busy_percent(), 37.5f);
  EXPECT_EQ(c.enter_time(), 3000u);
}

TEST(TimeRatioCounter, AmountIsAddedAtTheNextEnter) {
  CTimeRatioCounter c;
  c.enter(10);
  c.set_last_amount(4096);
  c.leave(20);
  EXPECT_EQ(c.total_amount(), 0u);
  c.enter(30);
  EXPECT_EQ(c.total_amount(), 4096u);
  c.set_last_amount(100);
  c.leave(40);
  c.enter(50);
  EXPECT_EQ(c.total_amount(), 4196u);
}

TEST(TimeRatioCounter, NegativeAmountIsStoredAsZero) {
  CTimeRatioCounter c;
  c.set_last_amount(-1);
  EXPECT_EQ(c.last_amount(), 0);
  c.enter(1);
  c.leave(2);
  c.enter(3);
  EXPECT_EQ(c.total_amount(), 0u);
}

TEST(TimeRatioCounter, LeaveOfANewCounterSetsBothTimes) {
  CTimeRatioCounter c;
  c.leave(700);
  EXPECT_EQ(c.state(), CTimeRatioCounter::kOutside);
  EXPECT_EQ(c.enter_time(), 700u);
  EXPECT_EQ(c.leave_time(), 700u);
  // Busy 0 and idle 300: the whole span is idle.
  c.enter(1000);
  EXPECT_EQ(c.busy_time(), 0u);
  EXPECT_EQ(c.total_time(), 300u);
  EXPECT_FLOAT_EQ(c.busy_percent(), 0.0f);
}

TEST(TimeRatioCounter, SecondLeaveChangesNothing) {
  CTimeRatioCounter c;
  c.enter(100);
  c.leave(200);
  c.leave(300);
  EXPECT_EQ(c.leave_time(), 200u);
  EXPECT_EQ(c.state(), CTimeRatioCounter::kOutside);
}

TEST(TimeRatioCounter, EmptySpanLeavesTheFiguresAlone) {
  CTimeRatioCounter c;
  c.enter(500);
  c.leave(500);
  c.enter(500);
  EXPECT_EQ(c.total_time(), 0u);
  EXPECT_EQ(c.busy_time(), 0u);
  EXPECT_FLOAT_EQ(c.busy_percent(), 0.0f);
  EXPECT_EQ(c.state(), CTimeRatioCounter::kInside);
}

TEST(TimeRatioCounter, RealClockMeasuresABusySpan) {
  CTimeRatioCounter c;
  c.enter();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  c.leave();
  c.enter();
  EXPECT_GE(c.busy_time(), 25000u);
  EXPECT_LT(c.busy_time(), 5000000u);
  EXPECT_GE(c.total_time(), c.busy_time());
  EXPECT_GT(c.busy_percent(), 50.0f);
}

TEST(TimeRatioCounter, KeepsTheContextItWasMadeWith) {
  auto value = std::make_shared<int>(5);
  CTimeRatioCounter c(value);
  EXPECT_EQ(c.context(), value);
}

}  // namespace
