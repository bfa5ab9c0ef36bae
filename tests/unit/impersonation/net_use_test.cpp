#include "common/win/net_use.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/impersonation.h"
#include "common/win/thread_id.h"
#include "impersonation_fakes.h"
#include "support/capture_receiver.h"
#include "support/wide.h"

namespace {

using strings = std::vector<std::string>;
using win::impersonation_entry_t;

const std::u16string kShare = u"\\\\nas\\backup";

std::shared_ptr<impersonation_entry_t> net_use_entry(const std::u16string& user) {
  auto e = std::make_shared<impersonation_entry_t>();
  e->kind = win::kImpersonateNetUse;
  e->share = kShare;
  e->credentials = std::make_shared<win::net_credentials_t>();
  e->credentials->user = user;
  e->credentials->password = u"secret";
  return e;
}

void split(const std::u16string& user, std::string& domain, std::string& name) {
  std::u16string d;
  std::u16string n;
  win::split_net_user(user, d, n);
  domain = dsl_test::utf8(d);
  name = dsl_test::utf8(n);
}

class NetUse : public ::testing::Test {
 protected:
  void connect_existing() {
    win::net_use_info_t info;
    info.remote = kShare;
    info.status = 0;
    info.ref_count = 2;
    info.use_count = 3;
    platform.net->connections[kShare] = info;
  }

  dsl_test::capture_log_t log;
  dsl_test::fake_platform_t platform;
};

TEST(NetUser, DomainAndNameAreSplitAtTheBackslash) {
  std::string domain;
  std::string name;
  split(u"CORP\\backup", domain, name);
  EXPECT_EQ(domain, "CORP");
  EXPECT_EQ(name, "backup");
}

TEST(NetUser, UserWithoutBackslashIsALocalUser) {
  std::string domain;
  std::string name;
  split(u"backup", domain, name);
  EXPECT_EQ(domain, ".");
  EXPECT_EQ(name, "backup");
}

TEST(NetUser, BackslashAsTheLastCharacterIsNotASplit) {
  std::string domain;
  std::string name;
  split(u"backup\\", domain, name);
  EXPECT_EQ(domain, ".");
  EXPECT_EQ(name, "backup\\");
}

TEST(NetUser, LeadingBackslashGivesAnEmptyDomain) {
  std::string domain;
  std::string name;
  split(u"\\backup", domain, name);
  EXPECT_EQ(domain, "");
  EXPECT_EQ(name, "backup");
}

TEST_F(NetUse, ReportOfAConnectionGivesItsCounts) {
  connect_existing();
  win::net_use_report(kShare);
  EXPECT_EQ(log.bodies(),
            (strings{"Share: '\\\\nas\\backup', Status: '0', RefCount: '2', UseCount: '3'."}));
}

TEST_F(NetUse, ReportOfAMissingConnectionSaysSo) {
  win::net_use_report(kShare);
  EXPECT_EQ(log.bodies(), (strings{"Connection to share '\\\\nas\\backup' not found."}));
}

TEST_F(NetUse, ReportOfAnyOtherFailureIsAnErrorAndDoesNotThrow) {
  platform.net->get_info_error = 53;
  EXPECT_NO_THROW(win::net_use_report(kShare));
  const strings lines = log.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(),
            "ERR |Failed to get information about connection to share '\\\\nas\\backup'");
}

TEST_F(NetUse, ExistsAnswersFromTheSystemInsideAStep) {
  EXPECT_FALSE(win::net_use_exists(kShare));
  connect_existing();
  EXPECT_TRUE(win::net_use_exists(kShare));
  const std::string step = "Checking that NetUse connection to share '\\\\nas\\backup' is exist.";
  EXPECT_EQ(log.bodies(), (strings{step, step + " ok.", step, step + " ok."}));
}

TEST_F(NetUse, ExistsFailsOnAnyOtherError) {
  platform.net->get_info_error = 53;
  try {
    win::net_use_exists(kShare);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& failure) {
    EXPECT_EQ(failure.code(), 53u);
    bool sentence = false;
    for (const auto& m : failure.messages()) {
      if (m.text == "Failed to get information about connection to share '\\\\nas\\backup'") {
        sentence = true;
      }
    }
    EXPECT_TRUE(sentence) << failure.what();
  }
}

TEST_F(NetUse, CreateAndDeleteFailuresCarryTheirTexts) {
  platform.net->add_error = 1326;
  platform.net->del_error = 2401;
  win::net_credentials_t credentials{u"CORP\\u", u"p"};
  try {
    win::net_use_create(kShare, credentials);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& failure) {
    EXPECT_EQ(failure.code(), 1326u);
    EXPECT_NE(std::string(failure.what()).find(
                  "Failed to create NetUse connection to share '\\\\nas\\backup'"),
              std::string::npos);
  }
  try {
    win::net_use_delete(kShare);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& failure) {
    EXPECT_EQ(failure.code(), 2401u);
    EXPECT_NE(std::string(failure.what()).find("Failed to delete connection to share '\\\\nas\\backup'"),
              std::string::npos);
  }
  EXPECT_EQ(log.bodies(), (strings{"Creating NetUse connection to share '\\\\nas\\backup'",
                                   "Creating NetUse connection to share '\\\\nas\\backup' Failed.",
                                   "Deleting NetUse connection to share '\\\\nas\\backup'.",
                                   "Deleting NetUse connection to share '\\\\nas\\backup'. Failed."}));
}

TEST_F(NetUse, EntryWithAnExistingConnectionCreatesNoneAndDeletesItAtTheLastEnd) {
  connect_existing();
  const auto e = net_use_entry(u"CORP\\backup");
  {
    win::win_impersonation_session_t outer(e);
    EXPECT_TRUE(outer.entered());
    { win::win_impersonation_session_t inner(e); }
    EXPECT_EQ(platform.net->connections.count(kShare), 1u);
  }
  EXPECT_EQ(platform.net->connections.count(kShare), 0u);
  EXPECT_EQ(platform.net->taken_calls(),
            (strings{"get_info", "get_info", "get_info", "get_info", "get_info", "del"}));
  const std::string report = "Share: '\\\\nas\\backup', Status: '0', RefCount: '2', UseCount: '3'.";
  const std::string check = "Checking that NetUse connection to share '\\\\nas\\backup' is exist.";
  const std::string del = "Deleting NetUse connection to share '\\\\nas\\backup'.";
  EXPECT_EQ(log.bodies(), (strings{report, check, check + " ok.",
                                   report, check, check + " ok.",
                                   report, del, del + " ok."}));
}

TEST_F(NetUse, EntryWithoutAConnectionCreatesOneWithTheSplitUser) {
  const auto e = net_use_entry(u"CORP\\backup");
  {
    win::win_impersonation_session_t session(e);
    EXPECT_TRUE(session.entered());
    EXPECT_EQ(platform.net->connections.count(kShare), 1u);
    EXPECT_EQ(dsl_test::utf8(platform.net->added_domain), "CORP");
    EXPECT_EQ(dsl_test::utf8(platform.net->added_user), "backup");
    EXPECT_EQ(dsl_test::utf8(platform.net->added_password), "secret");
  }
  EXPECT_EQ(platform.net->taken_calls(),
            (strings{"get_info", "get_info", "add", "get_info", "del"}));
  EXPECT_EQ(platform.net->connections.count(kShare), 0u);
  const strings lines = log.bodies();
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], "Connection to share '\\\\nas\\backup' not found.");
  EXPECT_EQ(lines[3], "Creating NetUse connection to share '\\\\nas\\backup'");
  EXPECT_EQ(lines[4], "Creating NetUse connection to share '\\\\nas\\backup' ok.");
}

TEST_F(NetUse, EntryWithoutCredentialsIsNotEntered) {
  auto e = net_use_entry(u"u");
  e->credentials.reset();
  {
    win::win_impersonation_session_t session(e);
    EXPECT_FALSE(session.entered());
  }
  EXPECT_TRUE(platform.net->taken_calls().empty());
  EXPECT_TRUE(log.bodies().empty());
}

TEST_F(NetUse, FailedCreationLeavesTheSessionNotEntered) {
  platform.net->add_error = 1326;
  const auto e = net_use_entry(u"u");
  EXPECT_THROW({ win::win_impersonation_session_t session(e); }, exc::win_sys_exc_t);
  EXPECT_EQ(e->counter->threads(), 0u);
  EXPECT_EQ(platform.net->taken_calls(), (strings{"get_info", "get_info", "add"}));
}

}  // namespace
