#include "common/synch/thread_context.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "common/common_lib_ctx.h"

namespace {

using synch::CThreadContext;

TEST(ThreadContext, ValueOfItsOwnIsResolved) {
  auto value = std::make_shared<int>(1);
  CThreadContext c(nullptr, value);
  EXPECT_EQ(c.resolve(), value);
}

TEST(ThreadContext, EmptyValueWithAParentGivesTheParentsValue) {
  auto value = std::make_shared<int>(2);
  auto parent = std::make_shared<CThreadContext>(nullptr, value);
  CThreadContext child(parent);
  EXPECT_EQ(child.resolve(), value);
}

TEST(ThreadContext, NearestValueInTheChainWins) {
  auto top_value = std::make_shared<int>(3);
  auto middle_value = std::make_shared<int>(4);
  auto top = std::make_shared<CThreadContext>(nullptr, top_value);
  auto middle = std::make_shared<CThreadContext>(top, middle_value);
  auto bottom = std::make_shared<CThreadContext>(middle);
  EXPECT_EQ(bottom->resolve(), middle_value);
  middle->set_value(nullptr);
  EXPECT_EQ(bottom->resolve(), top_value);
  bottom->set_value(std::make_shared<int>(5));
  EXPECT_EQ(*std::static_pointer_cast<int>(bottom->resolve()), 5);
}

TEST(ThreadContext, EndOfTheChainGivesNothing) {
  auto root = std::make_shared<CThreadContext>();
  CThreadContext child(root);
  EXPECT_EQ(child.resolve(), nullptr);
  EXPECT_EQ(root->resolve(), nullptr);
}

TEST(ThreadContext, EachThreadGetsAnEmptyContextOnFirstUse) {
  std::shared_ptr<CThreadContext> mine = synch::current_context();
  ASSERT_NE(mine, nullptr);
  EXPECT_EQ(synch::current_context(), mine);
  std::shared_ptr<CThreadContext> other;
  size_t live_while_running = 0;
  std::thread worker([&] {
    other = synch::current_context();
    live_while_running = ctx()->thread_contexts().live_count();
  });
  worker.join();
  ASSERT_NE(other, nullptr);
  EXPECT_NE(other, mine);
  EXPECT_EQ(other->parent(), nullptr);
  EXPECT_EQ(other->resolve(), nullptr);
  EXPECT_GE(live_while_running, 2u);
}

TEST(ThreadContext, ContextEndsWithItsThread) {
  std::weak_ptr<CThreadContext> seen;
  std::thread worker([&] { seen = synch::current_context(); });
  worker.join();
  EXPECT_TRUE(seen.expired());
}

TEST(ThreadContextList, CountsOnlyContextsThatAreAlive) {
  synch::thread_context_list_t list;
  auto a = std::make_shared<CThreadContext>();
  {
    auto b = std::make_shared<CThreadContext>();
    list.add(a);
    list.add(b);
    EXPECT_EQ(list.live_count(), 2u);
  }
  EXPECT_EQ(list.live_count(), 1u);
}

}  // namespace
