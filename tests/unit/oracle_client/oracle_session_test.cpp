#include "oracle/client/oracle_session.h"

#include <gtest/gtest.h>

#include <string>

#include "client_test_support.h"
#include "oracle/client/oracle_exc.h"

namespace {

using dsl_test::has_line;
using namespace specific::oracle;
using lines_t = std::vector<std::string>;

using OracleSession = dsl_test::client_test_t;

TEST_F(OracleSession, InitAttachesSetsTheServerLogsOnAndSetsTheSession) {
  COracleSession session(conn_t{"scott", "tiger"});
  session.init(kLogonSysdba);
  EXPECT_TRUE(session.initialised());
  EXPECT_TRUE(session.server_attached());
  EXPECT_FALSE(session.instance_down());
  EXPECT_EQ(oci_->lines(),
            (lines_t{
                "OCIEnvCreate mode=1 ctx=null callbacks=null extra=0 user=null",
                "OCIHandleAlloc parent=env#1 type=2 extra=0 user=null",
                "OCIHandleAlloc parent=env#1 type=3 extra=0 user=null",
                "OCIHandleAlloc parent=env#1 type=8 extra=0 user=null",
                "OCIServerAttach server#4 err=error#2 link=null length=0 mode=0",
                "OCIAttrSet svcctx#3 type=3 attr=6 value=server#4 size=0 err=error#2",
                "OCIHandleAlloc parent=env#1 type=9 extra=0 user=null",
                "OCIAttrSet session#5 type=9 attr=22 value=\"scott\" size=5 err=error#2",
                "OCIAttrSet session#5 type=9 attr=23 value=\"tiger\" size=5 err=error#2",
                "OCISessionBegin svcctx#3 err=error#2 session=session#5 cred=1 mode=2",
                "OCIAttrSet svcctx#3 type=3 attr=7 value=session#5 size=0 err=error#2",
            }));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Initializing oracle session"));
  EXPECT_TRUE(has_line(lines, "Initializing oracle session ok."));
}

TEST_F(OracleSession, OperatingSystemAuthenticationSetsNoCredentials) {
  COracleSession session(conn_t{});
  session.init(kLogonSysdbaPrelim);
  EXPECT_EQ(oci_->count("OCIAttrSet"), 2u);  // server and session attributes only
  EXPECT_EQ(oci_->lines_of("OCISessionBegin"),
            (lines_t{"OCISessionBegin svcctx#3 err=error#2 session=session#5 cred=2 mode=10"}));
}

TEST_F(OracleSession, InstanceDownIsASuccessfulLogon) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  COracleSession session(conn_t{});
  ASSERT_NO_THROW(session.init(kLogonSysdba));
  EXPECT_TRUE(session.initialised());
  EXPECT_TRUE(session.instance_down());
  EXPECT_TRUE(session.env()->error_text().empty());
  // The logon answered with an error code: the session attribute is not set.
  EXPECT_EQ(oci_->lines_of("OCIAttrSet").size(), 1u);
}

TEST_F(OracleSession, SuccessWithInfoAtLogonSetsTheSessionAttributeAtOnce) {
  oci_->fail("OCISessionBegin", OCI_SUCCESS_WITH_INFO);
  COracleSession session(conn_t{});
  session.init(kLogonSysdba);
  EXPECT_TRUE(session.initialised());
  EXPECT_FALSE(session.instance_down());
  // The server attribute, then the session attribute right after the logon.
  EXPECT_EQ(oci_->lines_of("OCIAttrSet"),
            (lines_t{"OCIAttrSet svcctx#3 type=3 attr=6 value=server#4 size=0 err=error#2",
                     "OCIAttrSet svcctx#3 type=3 attr=7 value=session#5 size=0 err=error#2"}));
  // The information is dropped: nothing was asked of the error handle.
  EXPECT_EQ(oci_->count("OCIErrorGet"), 0u);
  EXPECT_TRUE(session.env()->error_text().empty());
}

TEST_F(OracleSession, AttachFailureCarriesTheServerAndSessionTraceLines) {
  oci_->fail("OCIServerAttach", OCI_ERROR, 12560, "ORA-12560: TNS:protocol adapter error\n");
  COracleSession session(conn_t{});
  try {
    session.init(kLogonSysdba);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 12560u);
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-12560: TNS:protocol adapter error\n\n"
              "--tr:OracleSession: failed to init server.\n"
              "--tr:Failed to create oracle session.");
  }
  EXPECT_FALSE(session.initialised());
  EXPECT_FALSE(session.server_attached());
  EXPECT_TRUE(has_line(log_lines(), "Initializing oracle session Failed."));
}

TEST_F(OracleSession, CredentialFailureCarriesTheSessionHandleTraceLine) {
  oci_->fail("OCIAttrSet", OCI_SUCCESS);  // the server attribute
  oci_->fail("OCIAttrSet", OCI_INVALID_HANDLE);
  COracleSession session(conn_t{"scott", "tiger"});
  try {
    session.init(kLogonSysdba);
    FAIL() << "no exception";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(std::string(e.what()),
              "Unexpected Oracle error has occurred. Code: -2\n"
              "--tr:OracleSession: failed to init session.\n"
              "--tr:Failed to create oracle session.");
  }
  EXPECT_TRUE(session.server_attached());
  EXPECT_FALSE(session.initialised());
}

TEST_F(OracleSession, LogonFailureLeavesTheSessionUninitialised) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1017, "ORA-01017: invalid username/password; logon denied\n");
  COracleSession session(conn_t{"scott", "wrong"});
  try {
    session.init(kLogonSysdba);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-01017: invalid username/password; logon denied\n\n"
              "--tr:Failed to create oracle session.");
  }
  EXPECT_FALSE(session.initialised());
}

TEST_F(OracleSession, DestructorEndsDetachesAndFreesInOrder) {
  auto session = std::make_shared<COracleSession>(conn_t{});
  session->init(kLogonSysdba);
  oci_->clear_calls();
  session.reset();
  EXPECT_EQ(oci_->lines(),
            (lines_t{
                "OCISessionEnd svcctx#3 err=error#2 session=session#5 mode=0",
                "OCIServerDetach server#4 err=error#2 mode=0",
                "OCIHandleFree session#5 type=9",
                "OCIHandleFree server#4 type=8",
                "OCIHandleFree svcctx#3 type=3",
                "OCIHandleFree error#2 type=2",
                "OCIHandleFree env#1 type=1",
            }));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Destroying oracle session"));
  EXPECT_TRUE(has_line(lines, "Destroying oracle session ok."));
}

TEST_F(OracleSession, DestructorOfAStoppedInstancesSessionStillEndsIt) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  auto session = std::make_shared<COracleSession>(conn_t{});
  session->init(kLogonSysdba);
  session.reset();
  EXPECT_EQ(oci_->count("OCISessionEnd"), 1u);
}

TEST_F(OracleSession, DestructorOfAFailedLogonDetachesWithoutEnding) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1017, "ORA-01017: invalid username/password; logon denied\n");
  auto session = std::make_shared<COracleSession>(conn_t{});
  EXPECT_THROW(session->init(kLogonSysdba), COracleExc);
  session.reset();
  EXPECT_EQ(oci_->count("OCISessionEnd"), 0u);
  EXPECT_EQ(oci_->count("OCIServerDetach"), 1u);
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(OracleSession, DestructorLogsFailuresToEndAndDetachAndGoesOn) {
  auto session = std::make_shared<COracleSession>(conn_t{});
  session->init(kLogonSysdba);
  oci_->fail("OCISessionEnd", OCI_ERROR, 3113, "ORA-03113: end-of-file on communication channel\n");
  oci_->fail("OCIServerDetach", OCI_INVALID_HANDLE);
  session.reset();
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "WARN|Failed to end OCI session, error: -1"));
  EXPECT_TRUE(has_line(lines, "WARN|Failed to detach OCI server, error: -2"));
  EXPECT_TRUE(has_line(lines, "Destroying oracle session ok."));
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(OracleSession, DestructorAfterTerminationCallsNothingAndSaysNothing) {
  auto session = std::make_shared<COracleSession>(conn_t{"scott", "tiger"});
  session->init(kLogonSysdba);
  session->set_terminated();
  oci_->clear_calls();
  log_->receiver().clear();
  session.reset();
  EXPECT_TRUE(oci_->lines().empty());
  EXPECT_TRUE(log_lines().empty());
  EXPECT_EQ(oci_->live_handles().size(), 5u);
}

TEST_F(OracleSession, DestructorOfAnUninitialisedSessionFreesWhatItHas) {
  oci_->fail("OCIHandleAlloc", OCI_SUCCESS);  // the error handle
  oci_->fail("OCIHandleAlloc", OCI_INVALID_HANDLE);  // the service context
  auto session = std::make_shared<COracleSession>(conn_t{});
  EXPECT_THROW(session->init(kLogonSysdba), exc::runtime_exc_t);
  session.reset();
  EXPECT_EQ(oci_->count("OCISessionEnd"), 0u);
  EXPECT_EQ(oci_->count("OCIServerDetach"), 0u);
  EXPECT_EQ(oci_->lines_of("OCIHandleFree"), (lines_t{"OCIHandleFree env#1 type=1"}));
}

}  // namespace
