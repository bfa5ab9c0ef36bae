#include "common/monitoring/file_op_activity.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "common/monitoring/clock.h"
#include "common/win/thread_id.h"

namespace {

using monitoring::file_op_activity_t;

std::optional<file_op_activity_t::entry_t> mine() {
  return file_op_activity_t::instance().find(win::current_thread_id());
}

TEST(FileOpActivity, NestedOperationsKeepOneEntryThatVanishesAtTheOutermostLeave) {
  const uint32_t before = monitoring::tick_count();
  monitoring::file_op_enter();
  const auto first = mine();
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->depth, 1);
  monitoring::file_op_enter();
  monitoring::file_op_enter();
  const auto nested = mine();
  ASSERT_TRUE(nested.has_value());
  EXPECT_EQ(nested->depth, 3);
  // The entry keeps the tick of the outermost entry.
  EXPECT_EQ(nested->start_tick, first->start_tick);
  EXPECT_LE(static_cast<uint32_t>(first->start_tick - before), 5000u);
  monitoring::file_op_leave();
  monitoring::file_op_leave();
  ASSERT_TRUE(mine().has_value());
  EXPECT_EQ(mine()->depth, 1);
  monitoring::file_op_leave();
  EXPECT_FALSE(mine().has_value());
}

TEST(FileOpActivity, LeaveOfAThreadNotInTheMapIsLeftAlone) {
  ASSERT_FALSE(mine().has_value());
  monitoring::file_op_leave();
  EXPECT_FALSE(mine().has_value());
  monitoring::file_op_enter();
  EXPECT_EQ(mine()->depth, 1);
  monitoring::file_op_leave();
  EXPECT_FALSE(mine().has_value());
}

TEST(FileOpActivity, ScopeCountsTheThreadInForItsSpan) {
  {
    monitoring::file_op_scope_t outer;
    {
      monitoring::file_op_scope_t inner;
      EXPECT_EQ(mine()->depth, 2);
    }
    EXPECT_EQ(mine()->depth, 1);
  }
  EXPECT_FALSE(mine().has_value());
}

TEST(FileOpActivity, ThreadsHaveEntriesOfTheirOwn) {
  constexpr int kThreads = 8;
  std::atomic<int> ready{0};
  std::atomic<bool> go_out{false};
  std::atomic<int> wrong{0};
  std::vector<uint32_t> ids(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ids[t] = win::current_thread_id();
      for (int i = 0; i <= t; ++i) monitoring::file_op_enter();
      ++ready;
      while (!go_out) std::this_thread::yield();
      for (int i = 0; i <= t; ++i) monitoring::file_op_leave();
      if (mine().has_value()) ++wrong;
    });
  }
  while (ready < kThreads) std::this_thread::yield();
  for (int t = 0; t < kThreads; ++t) {
    const auto entry = file_op_activity_t::instance().find(ids[t]);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->depth, t + 1);
  }
  go_out = true;
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong, 0);
  for (uint32_t id : ids) EXPECT_FALSE(file_op_activity_t::instance().find(id).has_value());
}

TEST(FileOpActivity, TimeoutIsOneHour) {
  EXPECT_EQ(file_op_activity_t::instance().timeout_ms(), 3600000u);
}

}  // namespace
