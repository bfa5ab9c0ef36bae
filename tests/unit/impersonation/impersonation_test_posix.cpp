// On the host build taking on an identity succeeds and changes nothing; the sessions, counts
// and lines are those of Windows.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/common_lib_ctx.h"
#include "common/win/impersonation.h"
#include "common/win/impersonation_api.h"
#include "common/win/net_use.h"
#include "common/win/net_use_api.h"
#include "common/win/thread_id.h"
#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;

TEST(ImpersonationPosix, TokenSessionEntersAsANoOp) {
  auto e = std::make_shared<win::impersonation_entry_t>();
  e->kind = win::kImpersonateToken;
  e->share = u"\\\\host\\share";
  e->token = std::make_shared<win::win_handle_t>(reinterpret_cast<void*>(uintptr_t{42}));
  {
    win::win_impersonation_session_t session(e);
    EXPECT_TRUE(session.entered());
    ASSERT_NE(session.duplicate_token(), nullptr);
    EXPECT_EQ(session.duplicate_token()->get(), e->token->get());
    EXPECT_EQ(e->counter->count(win::current_thread_id()), 1);
  }
  EXPECT_EQ(e->counter->threads(), 0u);
}

TEST(ImpersonationPosix, PlatformCallsSucceedWithoutEffect) {
  const auto api = win::platform_impersonation_api();
  win::win_handle_t copy;
  EXPECT_TRUE(api->duplicate_token(reinterpret_cast<void*>(uintptr_t{9}), copy));
  EXPECT_EQ(copy.get(), reinterpret_cast<void*>(uintptr_t{9}));
  uint32_t error = 0;
  EXPECT_TRUE(api->impersonate_logged_on_user(copy.get(), error));
  EXPECT_EQ(error, 0u);
  EXPECT_EQ(api->impersonate_security_context(win::security_context_t{}), 0);
  EXPECT_EQ(api->revert_security_context(win::security_context_t{}), 0);
}

TEST(NetUseApiPosix, ConnectionsLiveFromAddToDeleteWithoutRegardToCase) {
  const auto api = win::platform_net_use_api();
  const std::u16string share = u"\\\\posix-test\\share";
  win::net_use_info_t info;
  EXPECT_EQ(api->get_info(share, info), win::kNerrUseNotFound);
  EXPECT_EQ(api->add(share, u".", u"u", u"p"), 0u);
  ASSERT_EQ(api->get_info(u"\\\\POSIX-TEST\\SHARE", info), 0u);
  EXPECT_EQ(info.remote, share);
  EXPECT_EQ(info.use_count, 1u);
  EXPECT_EQ(api->del(share), 0u);
  EXPECT_EQ(api->get_info(share, info), win::kNerrUseNotFound);
  EXPECT_EQ(api->del(share), win::kNerrUseNotFound);
}

TEST(NetUseApiPosix, NetUseSessionCreatesAndDeletesInTheHostTable) {
  dsl_test::capture_log_t log;
  auto e = std::make_shared<win::impersonation_entry_t>();
  e->kind = win::kImpersonateNetUse;
  e->share = u"\\\\posix-nas\\data";
  e->credentials = std::make_shared<win::net_credentials_t>();
  e->credentials->user = u"CORP\\svc";
  {
    win::win_impersonation_session_t session(e);
    EXPECT_TRUE(session.entered());
    win::net_use_info_t info;
    EXPECT_EQ(win::platform_net_use_api()->get_info(e->share, info), 0u);
  }
  win::net_use_info_t info;
  EXPECT_EQ(win::platform_net_use_api()->get_info(e->share, info), win::kNerrUseNotFound);
  const std::string report = "Share: '\\\\posix-nas\\data', Status: '0', RefCount: '0', UseCount: '1'.";
  EXPECT_EQ(log.bodies(),
            (strings{"Connection to share '\\\\posix-nas\\data' not found.",
                     "Checking that NetUse connection to share '\\\\posix-nas\\data' is exist.",
                     "Checking that NetUse connection to share '\\\\posix-nas\\data' is exist. ok.",
                     "Creating NetUse connection to share '\\\\posix-nas\\data'",
                     "Creating NetUse connection to share '\\\\posix-nas\\data' ok.", report,
                     "Deleting NetUse connection to share '\\\\posix-nas\\data'.",
                     "Deleting NetUse connection to share '\\\\posix-nas\\data'. ok."}));
}

}  // namespace
