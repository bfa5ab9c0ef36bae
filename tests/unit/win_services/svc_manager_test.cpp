// win_scm_t and win_svc_t against the services of a fixture machine, on both targets: the host
// build reads them from its store, Windows asks the real service control manager about test
// services installed for the test.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"
#include "common/win/svc_api.h"
#include "common/win/svc_manager.h"
#include "support/svc_machine.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::plain;
using dsl_test::thrown;
using dsl_test::trace;

// Runs `action` and gives the bare text it throws, or an empty text and a test failure.
template <typename F>
std::string thrown_text(F&& action) {
  try {
    action();
  } catch (const char* text) {
    return text;
  } catch (...) {
    ADD_FAILURE() << "something other than a bare text was thrown";
    return std::string();
  }
  ADD_FAILURE() << "nothing was thrown";
  return std::string();
}

// One machine for all tests of the suite: on Windows installing the services costs seconds.
class SvcOnServicesMachine : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    machine_ = new dsl_test::svc_machine_t(dsl_test::fixture_path("services_machine.reg"));
  }
  static void TearDownTestSuite() {
    delete machine_;
    machine_ = nullptr;
  }

  uint32_t state_of(const std::u16string& name) {
    win::win_svc_t service(std::make_shared<win::win_scm_t>());
    service.open(name);
    return service.state();
  }

  static dsl_test::svc_machine_t* machine_;
};

dsl_test::svc_machine_t* SvcOnServicesMachine::machine_ = nullptr;

TEST_F(SvcOnServicesMachine, TheManagerIsTheLocalOneAndHasNoHostText) {
  const win::win_scm_t scm;
  EXPECT_NE(scm.handle(), nullptr);
  EXPECT_EQ(scm.host(), u"localhost");
  EXPECT_TRUE(scm.is_local());
  EXPECT_EQ(scm.host_text(), "");
}

TEST_F(SvcOnServicesMachine, AServiceNeverStartedReadsStopped) {
  EXPECT_EQ(state_of(u"DslTestSvcStopped"), win::kServiceStopped);
}

TEST_F(SvcOnServicesMachine, ARunningServiceReadsRunning) {
  EXPECT_EQ(state_of(u"DslTestSvcRunning"), win::kServiceRunning);
}

TEST_F(SvcOnServicesMachine, APausedServiceReadsPaused) {
  EXPECT_EQ(state_of(u"DslTestSvcPaused"), win::kServicePaused);
}

TEST_F(SvcOnServicesMachine, ServiceNamesCompareWithoutRegardToCase) {
  EXPECT_EQ(state_of(u"dsltestsvcrunning"), win::kServiceRunning);
  EXPECT_EQ(state_of(u"DSLTESTSVCPAUSED"), win::kServicePaused);
}

TEST_F(SvcOnServicesMachine, OpeningAMissingServiceIsTheSystemError1060EndingInABlank) {
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  const auto e = thrown<exc::win_sys_exc_t>([&] { service.open(u"DslTestSvcMissing"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorServiceDoesNotExist);
  EXPECT_EQ(lines_of(*e),
            (std::vector<dsl_test::line_t>{plain(exc::system_error_text(1060)),
                                           plain("Failed to open service 'DslTestSvcMissing'. "),
                                           trace("Error code: 0x00000424")}));
  EXPECT_EQ(service.handle(), nullptr);
  EXPECT_EQ(service.name(), u"");
}

TEST_F(SvcOnServicesMachine, OpeningAnEmptyNameIsTheSystemErrorForAnInvalidName) {
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  const auto e = thrown<exc::win_sys_exc_t>([&] { service.open(u""); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorInvalidName);
  EXPECT_EQ(e->messages()[1].text, "Failed to open service ''. ");
  const auto slash = thrown<exc::win_sys_exc_t>([&] { service.open(u"Dsl\\TestSvcRunning"); });
  ASSERT_TRUE(slash);
  EXPECT_EQ(slash->code(), win::kErrorInvalidName);
}

TEST_F(SvcOnServicesMachine, ANullNameThrowsThePlainTextOfABadArgument) {
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  EXPECT_EQ(thrown_text([&] { service.open(static_cast<const char16_t*>(nullptr)); }),
            "Bad argument: pszServiceName");
}

TEST_F(SvcOnServicesMachine, AStateWithoutAnOpenServiceThrowsThePlainTextOfABadState) {
  const win::win_svc_t service(std::make_shared<win::win_scm_t>());
  EXPECT_EQ(thrown_text([&] { (void)service.state(); }),
            "Bad state: service not opened or created");
}

TEST_F(SvcOnServicesMachine, TheServiceKeepsTheManagerAlive) {
  auto scm = std::make_shared<win::win_scm_t>();
  win::win_svc_t service(scm);
  scm.reset();
  EXPECT_EQ(service.scm().use_count(), 1);
  service.open(u"DslTestSvcRunning");
  EXPECT_EQ(service.name(), u"DslTestSvcRunning");
  EXPECT_EQ(service.state(), win::kServiceRunning);
}

TEST_F(SvcOnServicesMachine, OpeningAgainReplacesTheServiceAndAFailedOpenKeepsIt) {
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  service.open(u"DslTestSvcStopped");
  EXPECT_EQ(service.state(), win::kServiceStopped);
  service.open(u"DslTestSvcPaused");
  EXPECT_EQ(service.name(), u"DslTestSvcPaused");
  EXPECT_EQ(service.state(), win::kServicePaused);
  EXPECT_TRUE(thrown<exc::win_sys_exc_t>([&] { service.open(u"DslTestSvcMissing"); }));
  EXPECT_EQ(service.name(), u"DslTestSvcPaused");
  EXPECT_EQ(service.state(), win::kServicePaused);
}

TEST(SvcManager, ANullManagerIsRefused) {
  const auto e = thrown<exc::runtime_exc_t>([] { win::win_svc_t service(nullptr); });
  ASSERT_TRUE(e);
  EXPECT_EQ(std::string(e->what()), "Service control manager object is not initialized.");
}

}  // namespace
