#include "common/common_lib_ctx.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;

TEST(CommonLibCtx, FirstUseFromManyThreadsMakesOneContext) {
  constexpr int kThreads = 8;
  std::vector<CCommonLibCtx*> seen(kThreads);
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go) std::this_thread::yield();
      seen[t] = ctx().get();
    });
  }
  go = true;
  for (auto& th : threads) th.join();
  const std::set<CCommonLibCtx*> distinct(seen.begin(), seen.end());
  EXPECT_EQ(distinct.size(), 1u);
  EXPECT_EQ(*distinct.begin(), ctx().get());
  EXPECT_NE(ctx(), nullptr);
}

TEST(CommonLibCtx, StartsWithPoolZeroAndEmptyMembers) {
  CCommonLibCtx context;
  ASSERT_NE(context.io_pool(0), nullptr);
  EXPECT_EQ(context.io_pool(0)->size(), 0u);
  EXPECT_EQ(context.io_pool(1), nullptr);
  EXPECT_EQ(context.io_pool_count(), 1u);
  ASSERT_NE(context.cout_multiplexor(), nullptr);
  EXPECT_EQ(context.cout_multiplexor()->size(), 0u);
  ASSERT_NE(context.key_store(), nullptr);
  EXPECT_TRUE(context.key_store()->empty());
  EXPECT_EQ(context.impersonation_tokens().size(), 0u);
  EXPECT_EQ(context.impersonation_contexts().size(), 0u);
}

TEST(CommonLibCtx, EndingWithMultiplexorsClearsThemWithALineOnCli) {
  dsl_test::capture_log_t log;
  auto multiplexor = std::make_shared<int>(1);
  std::weak_ptr<int> watch = multiplexor;
  {
    CCommonLibCtx context;
    context.cout_multiplexor()->add(std::move(multiplexor));
    EXPECT_EQ(context.cout_multiplexor()->size(), 1u);
  }
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(log.bodies(), (strings{"cli| Clearing collection of cout multiplexors."}));
}

TEST(CommonLibCtx, EndingWithoutMultiplexorsWritesNothing) {
  dsl_test::capture_log_t log;
  { CCommonLibCtx context; }
  EXPECT_TRUE(log.bodies().empty());
}

TEST(CommonLibCtx, ImpersonationTablesAreTheSameFromAnyThread) {
  win::WinImpersonationTokensMap* here = &ctx()->impersonation_tokens();
  win::WinImpersonationTokensMap* there = nullptr;
  std::thread worker([&] { there = &ctx()->impersonation_tokens(); });
  worker.join();
  EXPECT_EQ(here, there);
}

}  // namespace
