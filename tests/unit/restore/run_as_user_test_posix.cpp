// On the host build there is no identity to take: the logon succeeds and the body runs.
#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "oracle/restore/restore_driver.h"
#include "oracle/restore/run_as_user.h"

namespace {

TEST(RunAsUser, BodyRunsOnTheProcessIdentity) {
  bool ran = false;
  specific::oracle::run_as_user(u"DOMAIN\\admin", u"cGFzcw==", [&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST(RunAsUser, FailureOfTheBodyGoesOn) {
  EXPECT_THROW(specific::oracle::run_as_user(u"admin", u"", [] { throw exc::runtime_exc_t("x"); }),
               exc::runtime_exc_t);
}

TEST(RunAsUser, RestoreUnderAnAccountWalksTheDocument) {
  EXPECT_NO_THROW(specific::oracle::CRestoreDriver::restore_databases(u"<databases/>", {},
                                                                      u"admin", u"cGFzcw=="));
}

}  // namespace
