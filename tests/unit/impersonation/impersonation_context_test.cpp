// Sessions on entries of the security-context kind.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/impersonation.h"
#include "common/win/thread_id.h"
#include "impersonation_fakes.h"
#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;
using win::impersonation_entry_t;

util::guid_t test_guid() {
  util::guid_t g;
  g.data1 = 0x01234567;
  g.data2 = 0x89ab;
  g.data3 = 0xcdef;
  g.data4 = {0x10, 0x32, 0x54, 0x76, 0x98, 0xba, 0xdc, 0xfe};
  return g;
}

std::shared_ptr<impersonation_entry_t> context_entry(const util::guid_t& id) {
  auto e = std::make_shared<impersonation_entry_t>();
  e->kind = win::kImpersonateSecurityContext;
  e->share = u"\\\\ctx\\share";
  e->context_id = id;
  return e;
}

std::shared_ptr<win::security_context_t> context(uintptr_t lower) {
  auto c = std::make_shared<win::security_context_t>();
  c->lower = lower;
  c->upper = lower + 1;
  return c;
}

class ImpersonationContext : public ::testing::Test {
 protected:
  dsl_test::capture_log_t log;
  dsl_test::fake_platform_t platform;
};

TEST_F(ImpersonationContext, NullIdIsNotEntered) {
  const auto e = context_entry(util::guid_t{});
  {
    win::win_impersonation_session_t session(e);
    EXPECT_FALSE(session.entered());
  }
  EXPECT_EQ(platform.api->context_impersonations, 0);
  EXPECT_EQ(platform.api->context_reverts, 0);
  EXPECT_TRUE(log.bodies().empty());
}

TEST_F(ImpersonationContext, KnownContextIsImpersonatedInsideAStepAndRevertedAtTheEnd) {
  platform.add_context(test_guid(), context(0x77));
  const auto e = context_entry(test_guid());
  {
    win::win_impersonation_session_t session(e);
    EXPECT_TRUE(session.entered());
    EXPECT_EQ(platform.api->last_context_lower, 0x77u);
    EXPECT_EQ(e->counter->count(win::current_thread_id()), 1);
  }
  EXPECT_EQ(platform.api->context_impersonations, 1);
  EXPECT_EQ(platform.api->context_reverts, 1);
  EXPECT_EQ(log.bodies(), (strings{"Impersonating security context.",
                                   "Impersonating security context. ok.",
                                   "Reverting security context.",
                                   "Reverting security context. ok."}));
}

TEST_F(ImpersonationContext, UnknownContextFailsWithItsIdInBraces) {
  const auto e = context_entry(test_guid());
  try {
    win::win_impersonation_session_t session(e);
    FAIL() << "entered an unknown context";
  } catch (const exc::runtime_exc_t& failure) {
    ASSERT_FALSE(failure.messages().empty());
    EXPECT_EQ(failure.messages().front().text,
              "Context '{01234567-89ab-cdef-1032-547698badcfe}' not found.");
    EXPECT_EQ(failure.messages().back().text, "Failed to impersonate user.");
    EXPECT_TRUE(failure.messages().back().is_trace);
  }
  EXPECT_EQ(platform.api->context_impersonations, 0);
  EXPECT_EQ(e->counter->threads(), 0u);
}

TEST_F(ImpersonationContext, RefusedImpersonationFailsWithTheStatusInHexadecimal) {
  platform.add_context(test_guid(), context(1));
  platform.api->context_impersonate_status = static_cast<int32_t>(0x80090301);
  const auto e = context_entry(test_guid());
  try {
    win::win_impersonation_session_t session(e);
    FAIL() << "entered a refused context";
  } catch (const exc::runtime_exc_t& failure) {
    EXPECT_EQ(failure.messages().front().text,
              "Security context failed to impersonate: 0x80090301.");
  }
  EXPECT_EQ(e->counter->threads(), 0u);
  EXPECT_EQ(platform.api->context_reverts, 0);
  EXPECT_EQ(log.bodies(), (strings{"Impersonating security context.",
                                   "Impersonating security context. Failed."}));
}

TEST_F(ImpersonationContext, NestedSessionsRevertOnceAtTheOuterEnd) {
  platform.add_context(test_guid(), context(2));
  const auto e = context_entry(test_guid());
  {
    win::win_impersonation_session_t outer(e);
    { win::win_impersonation_session_t inner(e); }
    EXPECT_EQ(platform.api->context_reverts, 0);
  }
  EXPECT_EQ(platform.api->context_impersonations, 2);
  EXPECT_EQ(platform.api->context_reverts, 1);
}

TEST_F(ImpersonationContext, FailedRevertIsLoggedAndDoesNotEscape) {
  platform.add_context(test_guid(), context(3));
  platform.api->context_revert_status = 5;
  const auto e = context_entry(test_guid());
  EXPECT_NO_THROW({ win::win_impersonation_session_t session(e); });
  EXPECT_EQ(platform.api->context_reverts, 1);
  EXPECT_EQ(e->counter->threads(), 0u);
  const strings lines = log.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back().rfind("WARN|Security context failed to revert to self: 0x00000005.", 0),
            0u)
      << lines.back();
}

TEST_F(ImpersonationContext, ContextGoneBeforeTheEndIsReportedAsNull) {
  platform.add_context(test_guid(), context(4));
  const auto e = context_entry(test_guid());
  {
    win::win_impersonation_session_t session(e);
    ctx()->impersonation_contexts().erase(test_guid());
  }
  EXPECT_EQ(platform.api->context_reverts, 0);
  const strings lines = log.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back().rfind("WARN|Security context is null.", 0), 0u) << lines.back();
}

}  // namespace
