#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "common/win/impersonation_tables.h"
#include "common/win/thread_id.h"

namespace {

using win::impersonation_entry_t;
using win::share_less_t;

std::shared_ptr<impersonation_entry_t> entry(const std::u16string& share) {
  auto e = std::make_shared<impersonation_entry_t>();
  e->share = share;
  return e;
}

TEST(ShareLess, IgnoresTheCaseOfAsciiLetters) {
  share_less_t less;
  EXPECT_FALSE(less(u"\\\\SRV\\Share", u"\\\\srv\\share"));
  EXPECT_FALSE(less(u"\\\\srv\\share", u"\\\\SRV\\Share"));
  EXPECT_TRUE(less(u"\\\\a\\x", u"\\\\B\\x"));
  EXPECT_TRUE(less(u"\\\\srv", u"\\\\SRV\\share"));
}

TEST(ShareLess, OrdersAsLowerCaseLetters) {
  // Folded to lower case, "_" (0x5F) comes before the letters, as _wcsicmp orders it.
  share_less_t less;
  EXPECT_TRUE(less(u"_", u"A"));
  EXPECT_FALSE(less(u"A", u"_"));
}

TEST(WinImpersonationTokensMap, FindsAnEntryWhateverTheCaseOfTheKey) {
  win::WinImpersonationTokensMap map;
  const auto e = entry(u"\\\\srv\\share");
  map.insert(e);
  EXPECT_EQ(map.find(u"\\\\SRV\\SHARE"), e);
  EXPECT_EQ(map.find(u"\\\\srv\\share"), e);
  EXPECT_EQ(map.find(u"\\\\srv\\other"), nullptr);
  EXPECT_EQ(map.size(), 1u);
}

TEST(WinImpersonationTokensMap, AnEqualKeyReplacesTheEntry) {
  win::WinImpersonationTokensMap map;
  map.insert(entry(u"\\\\srv\\share"));
  const auto second = entry(u"\\\\SRV\\share");
  map.insert(second);
  EXPECT_EQ(map.size(), 1u);
  EXPECT_EQ(map.find(u"\\\\srv\\share"), second);
  EXPECT_TRUE(map.erase(u"\\\\Srv\\Share"));
  EXPECT_EQ(map.size(), 0u);
  EXPECT_FALSE(map.erase(u"\\\\srv\\share"));
}

TEST(ImpersonationCounter, LeaveAnswersTrueOnlyForTheLastEntryOfTheThread) {
  win::impersonation_counter_t counter;
  counter.enter();
  counter.enter();
  EXPECT_EQ(counter.count(win::current_thread_id()), 2);
  EXPECT_FALSE(counter.leave());
  EXPECT_EQ(counter.count(win::current_thread_id()), 1);
  EXPECT_TRUE(counter.leave());
  EXPECT_EQ(counter.threads(), 0u);
}

TEST(ImpersonationCounter, AThreadWithoutACountIsLeftAlone) {
  win::impersonation_counter_t counter;
  EXPECT_FALSE(counter.leave());
  EXPECT_EQ(counter.threads(), 0u);
  EXPECT_EQ(counter.count(win::current_thread_id()), 0);
}

TEST(ImpersonationCounter, EachThreadCountsForItself) {
  win::impersonation_counter_t counter;
  constexpr int kThreads = 6;
  constexpr int kDepth = 3;
  std::atomic<int> inside{0};
  std::atomic<bool> go_out{false};
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kDepth; ++i) counter.enter();
      if (counter.count(win::current_thread_id()) != kDepth) ++wrong;
      ++inside;
      while (!go_out) std::this_thread::yield();
      for (int i = 0; i < kDepth - 1; ++i) {
        if (counter.leave()) ++wrong;
      }
      if (!counter.leave()) ++wrong;
    });
  }
  while (inside < kThreads) std::this_thread::yield();
  EXPECT_EQ(counter.threads(), static_cast<size_t>(kThreads));
  go_out = true;
  for (auto& t : threads) t.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(counter.threads(), 0u);
}

TEST(GuidLess, OrdersByTheBytesOfTheBinaryForm) {
  util::guid_t a;
  util::guid_t b;
  // data1 is little-endian in memory: its lowest byte comes first.
  a.data1 = 0x00000100;
  b.data1 = 0x00000001;
  win::guid_less_t less;
  EXPECT_FALSE(less(b, a));
  EXPECT_TRUE(less(a, b));
  EXPECT_FALSE(less(a, a));
}

TEST(GuidLess, NullGuidIsAllZero) {
  util::guid_t g;
  EXPECT_TRUE(win::is_null_guid(g));
  g.data4[7] = 1;
  EXPECT_FALSE(win::is_null_guid(g));
}

TEST(ImpersonationContexts, UnknownIdsFindNothing) {
  win::impersonation_contexts_t table;
  util::guid_t id;
  id.data1 = 7;
  const auto context = std::make_shared<win::security_context_t>();
  table.insert(id, context);
  EXPECT_EQ(table.find(id), context);
  util::guid_t other;
  other.data1 = 8;
  EXPECT_EQ(table.find(other), nullptr);
  EXPECT_TRUE(table.erase(id));
  EXPECT_EQ(table.size(), 0u);
}

}  // namespace
