#include "common/monitoring/thread_trace.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "common/logging/log_step.h"
#include "common/win/thread_id.h"
#include "support/capture_receiver.h"

namespace {

using monitoring::CThreadStatesCollection;
using strings = std::vector<std::string>;

// Registers the calling thread for the span of a test.
class registered_t {
 public:
  registered_t()
      : state(CThreadStatesCollection::instance().register_thread(win::current_thread_id())) {}
  ~registered_t() { CThreadStatesCollection::instance().unregister_thread(win::current_thread_id()); }
  std::shared_ptr<monitoring::thread_state_t> state;
};

TEST(ThreadTrace, WithoutARegisteredStatePushAndPopDoNothing) {
  ASSERT_EQ(CThreadStatesCollection::instance().find(win::current_thread_id()), nullptr);
  monitoring::push_step("Work.");
  monitoring::pop_step();
  monitoring::pop_step();
  EXPECT_EQ(CThreadStatesCollection::instance().find(win::current_thread_id()), nullptr);
}

TEST(ThreadTrace, RegisteredThreadKeepsItsStepsAsAStack) {
  registered_t me;
  monitoring::push_step("Outer.");
  monitoring::push_step("Inner.");
  EXPECT_EQ(me.state->steps(), (strings{"Outer.", "Inner."}));
  monitoring::pop_step();
  EXPECT_EQ(me.state->steps(), (strings{"Outer."}));
  monitoring::pop_step();
  EXPECT_TRUE(me.state->steps().empty());
  // A pop with nothing left leaves the stack empty.
  monitoring::pop_step();
  EXPECT_TRUE(me.state->steps().empty());
}

TEST(ThreadTrace, OnlyTheRegisteredThreadIsTraced) {
  registered_t me;
  std::thread other([] {
    monitoring::push_step("Elsewhere.");
    monitoring::pop_step();
  });
  other.join();
  EXPECT_TRUE(me.state->steps().empty());
}

TEST(ThreadTrace, LogStepsPushAndPopTheirText) {
  dsl_test::capture_log_t log;
  registered_t me;
  {
    logging::log_step_t outer(logging::default_channel(), "Backup [%1].", "ORCL");
    EXPECT_EQ(me.state->steps(), (strings{"Backup [ORCL]."}));
    {
      logging::log_step_t inner(logging::default_channel(), "Copy.");
      EXPECT_EQ(me.state->steps(), (strings{"Backup [ORCL].", "Copy."}));
      inner.ok();
      // ok() ends the step in the log; the trace keeps it until the step object ends.
      EXPECT_EQ(me.state->steps().size(), 2u);
    }
    EXPECT_EQ(me.state->steps(), (strings{"Backup [ORCL]."}));
  }
  EXPECT_TRUE(me.state->steps().empty());
}

TEST(ThreadTrace, LogStepsOfAnUnregisteredThreadLeaveNoState) {
  dsl_test::capture_log_t log;
  { logging::log_step_t step(logging::default_channel(), "Work."); }
  EXPECT_EQ(CThreadStatesCollection::instance().find(win::current_thread_id()), nullptr);
  EXPECT_EQ(log.bodies(), (strings{"Work.", "Work. Failed."}));
}

TEST(ThreadTrace, StepLeftByAnExceptionIsPopped) {
  dsl_test::capture_log_t log;
  registered_t me;
  try {
    logging::log_step_t step(logging::default_channel(), "Open.");
    throw std::runtime_error("no");
  } catch (const std::runtime_error&) {
  }
  EXPECT_TRUE(me.state->steps().empty());
}

TEST(ThreadTrace, CollectionIsEnabledAndRegistrationIsKeptPerThread) {
  auto& collection = CThreadStatesCollection::instance();
  EXPECT_TRUE(collection.enabled());
  const uint32_t id = win::current_thread_id();
  const auto first = collection.register_thread(id);
  EXPECT_EQ(collection.register_thread(id), first);
  collection.unregister_thread(id);
  EXPECT_EQ(collection.find(id), nullptr);
}

}  // namespace
