#include "common/monitoring/thread_aware_counter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "common/monitoring/workload_monitor.h"
#include "common/synch/thread_context.h"
#include "common/win/thread_id.h"

namespace {

using workload::CThreadAwareCounter;
using workload::CTimeRatioCounter;

TEST(ThreadAwareCounter, OneThreadGetsTheSameCounterEachTime) {
  CThreadAwareCounter counters;
  const auto a = counters.get();
  const auto b = counters.get();
  EXPECT_EQ(a, b);
  EXPECT_EQ(counters.size(), 1u);
  EXPECT_EQ(counters.find(win::current_thread_id()), a);
}

TEST(ThreadAwareCounter, EachThreadGetsACounterOfItsOwnThatOutlivesIt) {
  CThreadAwareCounter counters;
  constexpr int kThreads = 8;
  std::vector<std::shared_ptr<CTimeRatioCounter>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      got[t] = counters.get();
      got[t]->enter();
      got[t]->leave();
    });
  }
  for (auto& th : threads) th.join();
  std::set<CTimeRatioCounter*> distinct;
  for (const auto& c : got) distinct.insert(c.get());
  EXPECT_EQ(distinct.size(), static_cast<size_t>(kThreads));
  // Nothing removes the counter of an ended thread.
  EXPECT_EQ(counters.size(), static_cast<size_t>(kThreads));
}

TEST(ThreadAwareCounter, NewCounterCarriesWhatTheThreadContextResolvesTo) {
  CThreadAwareCounter counters;
  auto parent_value = std::make_shared<int>(7);
  std::shared_ptr<void> seen;
  std::thread worker([&] {
    auto parent = std::make_shared<synch::CThreadContext>(nullptr, parent_value);
    synch::set_current_context(std::make_shared<synch::CThreadContext>(parent));
    seen = counters.get()->context();
  });
  worker.join();
  EXPECT_EQ(seen, parent_value);
}

TEST(WorkloadMonitor, ReadsAndWritesHaveCountersOfTheirOwn) {
  auto& monitor = workload::workload_monitor_t::instance();
  EXPECT_EQ(&workload::read_counter(), &monitor.counter(2));
  EXPECT_EQ(&workload::write_counter(), &monitor.counter(3));
  EXPECT_NE(&workload::read_counter(), &workload::write_counter());
}

TEST(WorkloadMonitor, CounterEnterAndLeaveFeedTheThreadsCounter) {
  std::shared_ptr<CTimeRatioCounter> read;
  std::shared_ptr<CTimeRatioCounter> write;
  std::thread worker([&] {
    workload::counter_enter(workload::read_counter());
    workload::counter_leave(workload::read_counter(), 4096);
    workload::counter_enter(workload::read_counter());
    workload::counter_leave(workload::read_counter(), -1);
    workload::counter_enter(workload::write_counter());
    workload::counter_leave(workload::write_counter(), 10);
    read = workload::read_counter().find(win::current_thread_id());
    write = workload::write_counter().find(win::current_thread_id());
  });
  worker.join();
  ASSERT_NE(read, nullptr);
  ASSERT_NE(write, nullptr);
  EXPECT_NE(read, write);
  EXPECT_EQ(read->total_amount(), 4096u);
  EXPECT_EQ(read->last_amount(), 0);
  EXPECT_EQ(read->state(), CTimeRatioCounter::kOutside);
  EXPECT_EQ(write->last_amount(), 10);
  EXPECT_EQ(write->total_amount(), 0u);
}

TEST(WorkloadMonitor, SystemTimesAreTakenAtCreation) {
  const auto& monitor = workload::workload_monitor_t::instance();
  EXPECT_TRUE(monitor.system_times_known());
  EXPECT_GT(monitor.system_times().kernel + monitor.system_times().user, 0u);
}

}  // namespace
