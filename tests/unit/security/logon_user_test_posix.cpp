// The host build's logon: no Windows accounts exist, so every logon succeeds with no token.
#include <gtest/gtest.h>

#include "common/security/logon_user.h"
#include "common/text/base64.h"

namespace {

TEST(LogonUserOnHost, SucceedsForAnyAccountWithAnEmptyToken) {
  win::win_handle_t token;
  security::logon_user(u"CORP\\nobody", u"d3Jvbmc=", token);
  EXPECT_EQ(token.get(), nullptr);
  EXPECT_FALSE(token.valid());
  security::logon_user(u"nobody@nowhere.example", u"", token);
  EXPECT_EQ(token.get(), nullptr);
}

TEST(LogonUserOnHost, SystemCallAnswersTrueAndNoToken) {
  void* token = reinterpret_cast<void*>(static_cast<intptr_t>(0x55));
  uint32_t error = 77;
  const std::u16string domain = u".";
  EXPECT_TRUE(security::system_logon(u"x", &domain, u"y", token, error));
  EXPECT_EQ(token, nullptr);
  EXPECT_EQ(error, 77u);
}

}  // namespace
