// Logon through a stand-in for the system call: which call is made with which parts of the
// name, how the password is decoded, and what a refusal reports.
#include "common/security/logon_user.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/text/base64.h"
#include "common/text/convert.h"

namespace {

struct call_t {
  std::u16string user;
  bool has_domain = false;
  std::u16string domain;
  std::u16string password;
};

// Records each call; answers with `token` or fails with `error`.
struct fake_logon_t {
  std::vector<call_t> calls;
  bool succeed = true;
  uint32_t error = 0;
  void* token = reinterpret_cast<void*>(static_cast<intptr_t>(0x1234));

  security::logon_call_t call() {
    return [this](const std::u16string& user, const std::u16string* domain,
                  const std::u16string& password, void*& out_token, uint32_t& out_error) {
      calls.push_back({user, domain != nullptr, domain ? *domain : u"", password});
      if (!succeed) {
        out_error = error;
        return false;
      }
      out_token = token;
      return true;
    };
  }
};

// A password as callers pass it: base64 of its system code page form, as wide text.
std::u16string encoded(const std::u16string& password) {
  const std::string b64 = util::base64_encode(util::to_multibyte(password));
  return std::u16string(b64.begin(), b64.end());
}

// The fake's token values are not handles: the owner must let go of them unclosed.
void forget(win::win_handle_t& token) { (void)token.release(); }

TEST(LogonUser, DomainFormPassesUserAndDomain) {
  fake_logon_t fake;
  win::win_handle_t token;
  security::logon_user_with(fake.call(), u"CORP\\alice", encoded(u"s3cret"), token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].user, u"alice");
  EXPECT_TRUE(fake.calls[0].has_domain);
  EXPECT_EQ(fake.calls[0].domain, u"CORP");
  EXPECT_EQ(fake.calls[0].password, u"s3cret");
  EXPECT_EQ(token.get(), fake.token);
  forget(token);
}

TEST(LogonUser, PlainNameLogsOnToTheLocalMachine) {
  fake_logon_t fake;
  win::win_handle_t token;
  security::logon_user_with(fake.call(), u"a", encoded(u"pw"), token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].user, u"a");
  EXPECT_EQ(fake.calls[0].domain, u".");
  forget(token);
}

TEST(LogonUser, UpnGoesWholeWithoutADomain) {
  fake_logon_t fake;
  win::win_handle_t token;
  security::logon_user_with(fake.call(), u"alice@corp.example", encoded(u"pw"), token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].user, u"alice@corp.example");
  EXPECT_FALSE(fake.calls[0].has_domain);
  forget(token);
}

TEST(LogonUser, NameWithBackslashAndAtSignTakesTheDomainForm) {
  fake_logon_t fake;
  win::win_handle_t token;
  security::logon_user_with(fake.call(), u"CORP\\alice@x", encoded(u"pw"), token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_TRUE(fake.calls[0].has_domain);
  EXPECT_EQ(fake.calls[0].domain, u"CORP");
  EXPECT_EQ(fake.calls[0].user, u"alice@x");
  forget(token);
}

TEST(LogonUser, EmptyPasswordDecodesToAnEmptyText) {
  fake_logon_t fake;
  win::win_handle_t token;
  security::logon_user_with(fake.call(), u"a", u"", token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].password, u"");
  forget(token);
}

TEST(LogonUser, PasswordInTheSystemCodePageIsWidenedBack) {
  fake_logon_t fake;
  win::win_handle_t token;
  const std::u16string password = u"p\u00e4ss w\u00f6rd&<>";
  security::logon_user_with(fake.call(), u"a", encoded(password), token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].password, password);
  forget(token);
}

TEST(LogonUser, PasswordThatIsNotBase64DecodesAsFarAsItGoes) {
  fake_logon_t fake;
  win::win_handle_t token;
  // "cHc=" is "pw"; decoding stops at the first character outside the alphabet.
  security::logon_user_with(fake.call(), u"a", u"cHc=!garbage", token);
  ASSERT_EQ(fake.calls.size(), 1u);
  EXPECT_EQ(fake.calls[0].password, u"pw");
  forget(token);
}

exc::win_sys_exc_t refused(const std::u16string& name, const std::u16string& password_base64,
                           uint32_t error, win::win_handle_t& token) {
  fake_logon_t fake;
  fake.succeed = false;
  fake.error = error;
  try {
    security::logon_user_with(fake.call(), name, password_base64, token);
  } catch (const exc::win_sys_exc_t& e) {
    return e;
  }
  ADD_FAILURE() << "no failure";
  return exc::win_sys_exc_t(0);
}

TEST(LogonUser, RefusalReportsTheWholeNameAndTheSystemCode) {
  win::win_handle_t token;
  const exc::win_sys_exc_t e = refused(u"CORP\\alice", encoded(u"s3cret"), 1326, token);
  EXPECT_EQ(e.code(), 1326u);
  ASSERT_EQ(e.messages().size(), 3u);
  EXPECT_EQ(e.messages()[1].text, "Failed to logon user [CORP\\alice]");
  EXPECT_EQ(e.messages()[2].text, "Error code: 0x0000052e");
  EXPECT_TRUE(e.messages()[2].is_trace);
}

TEST(LogonUser, RefusalOfAUpnSaysSo) {
  win::win_handle_t token;
  const exc::win_sys_exc_t e = refused(u"alice@corp.example", encoded(u"s3cret"), 1326, token);
  ASSERT_EQ(e.messages().size(), 3u);
  EXPECT_EQ(e.messages()[1].text, "Failed to logon UPN user [alice@corp.example]");
}

TEST(LogonUser, RefusalNeverShowsThePassword) {
  win::win_handle_t token;
  const std::u16string password_base64 = encoded(u"s3cret-Pa55");
  const exc::win_sys_exc_t e = refused(u"CORP\\alice", password_base64, 1326, token);
  const std::string what = e.what();
  EXPECT_EQ(what.find("s3cret-Pa55"), std::string::npos);
  EXPECT_EQ(what.find(util::to_multibyte(password_base64)), std::string::npos);
}

TEST(LogonUser, RefusalLeavesTheTokenUntouched) {
  win::win_handle_t token(reinterpret_cast<void*>(static_cast<intptr_t>(0x77)));
  refused(u"a", encoded(u"pw"), 5, token);
  EXPECT_EQ(token.get(), reinterpret_cast<void*>(static_cast<intptr_t>(0x77)));
  forget(token);
}

TEST(LogonUser, NonAsciiNameAppearsInTheMessageInTheSystemCodePage) {
  win::win_handle_t token;
  const std::u16string name = u"D\u00d6M\\j\u00fcrgen";
  const exc::win_sys_exc_t e = refused(name, encoded(u"pw"), 1326, token);
  ASSERT_EQ(e.messages().size(), 3u);
  EXPECT_EQ(e.messages()[1].text, "Failed to logon user [" + util::to_multibyte(name) + "]");
}

}  // namespace
