// The Windows logon: the real LogonUserW, and the token's life in the caller's owner.
// Wine's LogonUserW accepts every account and hands out a placeholder token; Windows refuses
// an account that does not exist. The test for the real call accepts either answer, and checks
// each fully.
#include <windows.h>

#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "common/security/logon_user.h"

namespace {

TEST(LogonUserOnWindows, RealCallGivesATokenOrTheSystemsRefusal) {
  win::win_handle_t token;
  try {
    // "d3Jvbmc=" is "wrong".
    security::logon_user(u"DSL-NO-SUCH-HOST\\dsl_no_such_user", u"d3Jvbmc=", token);
    EXPECT_TRUE(token.valid());
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_FALSE(token.valid());
    EXPECT_NE(e.code(), 0u);
    ASSERT_EQ(e.messages().size(), 3u);
    EXPECT_EQ(e.messages()[1].text, "Failed to logon user [DSL-NO-SUCH-HOST\\dsl_no_such_user]");
  }
}

TEST(LogonUserOnWindows, RealCallOfAUpnGivesATokenOrTheSystemsRefusal) {
  win::win_handle_t token;
  try {
    security::logon_user(u"dsl_no_such_user@no-such-domain.invalid", u"", token);
    EXPECT_TRUE(token.valid());
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_NE(e.code(), 0u);
    ASSERT_EQ(e.messages().size(), 3u);
    EXPECT_EQ(e.messages()[1].text,
              "Failed to logon UPN user [dsl_no_such_user@no-such-domain.invalid]");
  }
}

TEST(LogonUserOnWindows, TokenIsClosedWithItsOwner) {
  // A real kernel handle stands in for the token, so that its closing can be observed.
  HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ASSERT_NE(event, nullptr);
  const security::logon_call_t call = [event](const std::u16string&, const std::u16string*,
                                              const std::u16string&, void*& token, uint32_t&) {
    token = event;
    return true;
  };
  {
    win::win_handle_t token;
    security::logon_user_with(call, u"CORP\\alice", u"", token);
    EXPECT_EQ(token.get(), event);
    DWORD flags = 0;
    EXPECT_TRUE(GetHandleInformation(event, &flags));
  }
  DWORD flags = 0;
  EXPECT_FALSE(GetHandleInformation(event, &flags));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

}  // namespace
