// Impersonation with a real token: the process's own, duplicated for the thread. Under it the
// thread holds a token of its own, and loses it when the last session on the thread ends.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>

#include "common/win/handle.h"
#include "common/win/impersonation.h"
#include "common/win/net_use_api.h"
#include "common/win/thread_id.h"

namespace {

// True when the calling thread holds an impersonation token; false with ERROR_NO_TOKEN.
bool thread_has_token(DWORD& error) {
  HANDLE token = nullptr;
  if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, /*OpenAsSelf=*/TRUE, &token)) {
    CloseHandle(token);
    return true;
  }
  error = GetLastError();
  return false;
}

std::shared_ptr<win::impersonation_entry_t> process_token_entry() {
  auto e = std::make_shared<win::impersonation_entry_t>();
  e->kind = win::kImpersonateToken;
  e->share = u"\\\\srv\\share";
  e->token = std::make_shared<win::win_handle_t>();
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY | TOKEN_IMPERSONATE,
                        &token)) {
    return nullptr;
  }
  e->token->reset(token);
  return e;
}

TEST(ImpersonationWin32, ThreadRunsUnderTheDuplicatedTokenUntilTheSessionEnds) {
  const auto e = process_token_entry();
  ASSERT_NE(e, nullptr) << "OpenProcessToken: " << GetLastError();
  DWORD error = 0;
  ASSERT_FALSE(thread_has_token(error));
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_NO_TOKEN));
  {
    win::win_impersonation_session_t session(e);
    ASSERT_TRUE(session.entered());
    ASSERT_NE(session.duplicate_token(), nullptr);
    EXPECT_TRUE(session.duplicate_token()->valid());
    EXPECT_NE(session.duplicate_token()->get(), e->token->get());
    EXPECT_TRUE(thread_has_token(error)) << error;
  }
  error = 0;
  EXPECT_FALSE(thread_has_token(error));
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_NO_TOKEN));
}

TEST(ImpersonationWin32, InnerSessionEndLeavesTheThreadImpersonating) {
  const auto e = process_token_entry();
  ASSERT_NE(e, nullptr);
  DWORD error = 0;
  {
    win::win_impersonation_session_t outer(e);
    { win::win_impersonation_session_t inner(e); }
    EXPECT_TRUE(thread_has_token(error)) << error;
    EXPECT_EQ(e->counter->count(win::current_thread_id()), 1);
  }
  EXPECT_FALSE(thread_has_token(error));
}

}  // namespace
