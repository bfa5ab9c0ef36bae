#include "oracle/client/oracle_handle.h"

#include <gtest/gtest.h>

#include <string>

#include "client_test_support.h"
#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "oracle/client/oracle_exc.h"

namespace {

using dsl_test::client_test_t;
using namespace specific::oracle;

using OracleHandle = client_test_t;

TEST_F(OracleHandle, EnvironmentIsThreadedWithoutContextCallbacksOrExtraMemory) {
  auto env = COracleEnv::create();
  ASSERT_TRUE(env->handle());
  ASSERT_TRUE(env->error_handle());
  EXPECT_EQ(oci_->lines_of("OCIEnvCreate"),
            (std::vector<std::string>{"OCIEnvCreate mode=1 ctx=null callbacks=null extra=0 user=null"}));
  EXPECT_EQ(oci_->lines_of("OCIHandleAlloc"),
            (std::vector<std::string>{"OCIHandleAlloc parent=env#1 type=2 extra=0 user=null"}));
}

TEST_F(OracleHandle, EnvironmentThatCannotBeCreatedThrowsWithTheCode) {
  oci_->fail("OCIEnvCreate", OCI_ERROR);
  try {
    COracleEnv::create();
    FAIL() << "no exception";
  } catch (const COracleExc&) {
    FAIL() << "must be a plain runtime_exc_t";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Failed to create OCI env. Code: -1");
  }
}

TEST_F(OracleHandle, ErrorHandleThatCannotBeAllocatedThrowsAndTheEnvironmentIsFreed) {
  oci_->fail("OCIHandleAlloc", OCI_INVALID_HANDLE);
  try {
    COracleEnv::create();
    FAIL() << "no exception";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Failed to create OCI error. Code: -2");
  }
  EXPECT_EQ(oci_->lines_of("OCIHandleFree"), (std::vector<std::string>{"OCIHandleFree env#1 type=1"}));
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(OracleHandle, EnvironmentReleasesItsErrorHandleFirstThenItself) {
  COracleEnv::create().reset();
  EXPECT_EQ(oci_->lines_of("OCIHandleFree"),
            (std::vector<std::string>{"OCIHandleFree error#2 type=2", "OCIHandleFree env#1 type=1"}));
}

TEST_F(OracleHandle, AbandonedEnvironmentMakesNoCallOnTheEnvironment) {
  auto env = COracleEnv::create();
  env->abandon();
  oci_->clear_calls();
  env.reset();
  // The error handle is a member released as such; only the environment is left alone.
  EXPECT_EQ(oci_->lines_of("OCIHandleFree"), (std::vector<std::string>{"OCIHandleFree error#2 type=2"}));
}

TEST_F(OracleHandle, AbandonedEnvironmentWhoseErrorHandleIsSharedMakesNoCallAtAll) {
  auto env = COracleEnv::create();
  auto error = env->error();
  env->abandon();
  oci_->clear_calls();
  env.reset();
  EXPECT_TRUE(oci_->lines().empty());
  error.reset();
  EXPECT_EQ(oci_->lines(), (std::vector<std::string>{"OCIHandleFree error#2 type=2"}));
}

TEST_F(OracleHandle, HandleIsAllocatedUnderTheEnvironmentAndFreedWithItsType) {
  auto env = COracleEnv::create();
  auto server = COracleHandle::create(env, OCI_HTYPE_SERVER);
  EXPECT_EQ(server->type(), OCI_HTYPE_SERVER);
  EXPECT_EQ(oci_->label(server->handle()), "server#3");
  EXPECT_EQ(oci_->lines_of("OCIHandleAlloc").back(), "OCIHandleAlloc parent=env#1 type=8 extra=0 user=null");
  oci_->clear_calls();
  server.reset();
  EXPECT_EQ(oci_->lines(), (std::vector<std::string>{"OCIHandleFree server#3 type=8"}));
}

TEST_F(OracleHandle, HandleKeepsItsEnvironmentAlive) {
  auto env = COracleEnv::create();
  auto handle = COracleHandle::create(env, OCI_HTYPE_STMT);
  env.reset();
  EXPECT_EQ(oci_->count("OCIHandleFree"), 0u);
  handle.reset();
  EXPECT_EQ(oci_->lines_of("OCIHandleFree"),
            (std::vector<std::string>{"OCIHandleFree stmt#3 type=4", "OCIHandleFree error#2 type=2",
                                      "OCIHandleFree env#1 type=1"}));
}

TEST_F(OracleHandle, AbandonedHandleIsNotFreed) {
  auto env = COracleEnv::create();
  auto handle = COracleHandle::create(env, OCI_HTYPE_SESSION);
  handle->abandon();
  oci_->clear_calls();
  handle.reset();
  EXPECT_EQ(oci_->count("OCIHandleFree"), 0u);
}

TEST_F(OracleHandle, AdoptedDefineHandleIsNotAllocatedButFreedAsType6) {
  auto env = COracleEnv::create();
  int token = 0;
  oci_->clear_calls();
  auto define = COracleHandle::adopt(env, &token, OCI_HTYPE_DEFINE);
  EXPECT_EQ(oci_->count("OCIHandleAlloc"), 0u);
  define.reset();
  EXPECT_EQ(oci_->lines(), (std::vector<std::string>{"OCIHandleFree unknown type=6"}));
}

TEST_F(OracleHandle, FailedAllocationGoesThroughTheErrorCheck) {
  auto env = COracleEnv::create();
  oci_->fail("OCIHandleAlloc", OCI_INVALID_HANDLE);
  try {
    COracleHandle::create(env, OCI_HTYPE_STMT);
    FAIL() << "no exception";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Unexpected Oracle error has occurred. Code: -2");
  }
}

// The error check ---------------------------------------------------------------------------

using ErrorCheck = client_test_t;

TEST_F(ErrorCheck, SuccessGivesZero) {
  auto env = COracleEnv::create();
  EXPECT_EQ(check_oci_result(*env, OCI_SUCCESS), 0);
}

TEST_F(ErrorCheck, SuccessWithInfoPassesAndNoErrorTextIsFetched) {
  auto env = COracleEnv::create();
  oci_->clear_calls();
  EXPECT_EQ(check_oci_result(*env, OCI_SUCCESS_WITH_INFO), 0);
  EXPECT_TRUE(oci_->lines().empty());
  EXPECT_TRUE(env->error_text().empty());
}

TEST_F(ErrorCheck, NoDataPassesAsSuccess) {
  auto env = COracleEnv::create();
  oci_->clear_calls();
  EXPECT_EQ(check_oci_result(*env, OCI_NO_DATA), 0);
  EXPECT_TRUE(oci_->lines().empty());
}

TEST_F(ErrorCheck, InvalidHandleThrowsAPlainRuntimeExceptionWithoutReadingTheErrorHandle) {
  auto env = COracleEnv::create();
  oci_->clear_calls();
  try {
    check_oci_result(*env, OCI_INVALID_HANDLE);
    FAIL() << "no exception";
  } catch (const COracleExc&) {
    FAIL() << "must not be a COracleExc";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Unexpected Oracle error has occurred. Code: -2");
    EXPECT_EQ(e.code(), 0u);
  }
  EXPECT_EQ(env->error_text(), u"Unexpected Oracle error has occurred. Code: -2");
  EXPECT_EQ(oci_->count("OCIErrorGet"), 0u);
}

TEST_F(ErrorCheck, NeedDataIsUnexpectedToo) {
  auto env = COracleEnv::create();
  EXPECT_THROW(check_oci_result(*env, OCI_NEED_DATA), exc::runtime_exc_t);
  EXPECT_EQ(env->error_text(), u"Unexpected Oracle error has occurred. Code: 99");
}

TEST_F(ErrorCheck, OciErrorThrowsCOracleExcWithTheClientsMessageAndCode) {
  auto env = COracleEnv::create();
  const std::string message = "ORA-01017: invalid username/password; logon denied\n";
  oci_->fail("OCIServerAttach", OCI_ERROR, 1017, message);
  const sword rc = oci_->server_attach(nullptr, env->error_handle(), nullptr, 0, 0);
  try {
    check_oci_result(*env, rc);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(std::string(e.what()), "Oracle error has occurred. " + message);
    EXPECT_EQ(e.code(), 1017u);
  }
  EXPECT_EQ(env->error_text(), u"ORA-01017: invalid username/password; logon denied\n");
  EXPECT_EQ(oci_->lines_of("OCIErrorGet"),
            (std::vector<std::string>{"OCIErrorGet handle=error#2 record=1 state=null size=2048 type=2"}));
}

TEST_F(ErrorCheck, EmptyMessageBecomesUndefinedOracleError) {
  auto env = COracleEnv::create();
  oci_->fail("OCIServerAttach", OCI_ERROR, 600, "");
  const sword rc = oci_->server_attach(nullptr, env->error_handle(), nullptr, 0, 0);
  try {
    check_oci_result(*env, rc);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_STREQ(e.what(), "Oracle error has occurred. Undefined Oracle error has occurred");
    EXPECT_EQ(e.code(), 600u);
  }
  EXPECT_EQ(env->error_text(), u"Undefined Oracle error has occurred");
}

TEST_F(ErrorCheck, AllowedCodeIsReturnedAndErrorTextStaysAsItWas) {
  auto env = COracleEnv::create();
  env->set_error_text(u"earlier failure");
  oci_->fail("OCISessionBegin", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  const sword rc = oci_->session_begin(nullptr, env->error_handle(), nullptr, 2, 2);
  EXPECT_EQ(check_oci_result(*env, rc, 1034), 1034);
  EXPECT_EQ(env->error_text(), u"earlier failure");
}

TEST_F(ErrorCheck, AllowedCodeDoesNotCoverAnotherError) {
  auto env = COracleEnv::create();
  oci_->fail("OCISessionBegin", OCI_ERROR, 1017, "ORA-01017: invalid username/password; logon denied\n");
  const sword rc = oci_->session_begin(nullptr, env->error_handle(), nullptr, 2, 2);
  EXPECT_THROW(check_oci_result(*env, rc, 1034), COracleExc);
}

TEST_F(ErrorCheck, OciErrorWithoutAnyRecordIsStillAFailure) {
  auto env = COracleEnv::create();
  // No record behind the error handle: the code stays 0 and the buffer empty.
  try {
    check_oci_result(*env, OCI_ERROR);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_STREQ(e.what(), "Oracle error has occurred. Undefined Oracle error has occurred");
    EXPECT_EQ(e.code(), 0u);
  }
}

TEST_F(ErrorCheck, MessageLongerThanTheBufferIsCutByTheClientAtTheBuffersSize) {
  auto env = COracleEnv::create();
  const std::string message = "ORA-20000: " + std::string(3000, 'x');
  oci_->fail("OCIServerAttach", OCI_ERROR, 20000, message);
  const sword rc = oci_->server_attach(nullptr, env->error_handle(), nullptr, 0, 0);
  EXPECT_THROW(check_oci_result(*env, rc), COracleExc);
  EXPECT_EQ(env->error_text().size(), 2047u);
  EXPECT_EQ(env->error_text().substr(0, 11), u"ORA-20000: ");
}

// The exception family ----------------------------------------------------------------------

TEST(OracleExceptions, InitTimeoutIsAnOracleExceptionAndKeepsItsTypeAcrossThreads) {
  COracleInitTimeoutExc e("Failed to wait oracle session initialization");
  const exc::exc_ptr_t copy = exc::capture(e);
  try {
    copy->throw_copy();
  } catch (const COracleInitTimeoutExc& caught) {
    EXPECT_STREQ(caught.what(), "Failed to wait oracle session initialization");
    return;
  } catch (...) {
  }
  FAIL() << "the type did not survive";
}

TEST(OracleExceptions, OracleExceptionKeepsItsTypeAndCodeAcrossThreads) {
  COracleExc e("Oracle error has occurred. ORA-01031: insufficient privileges\n", 1031);
  const exc::exc_ptr_t copy = exc::capture(e);
  EXPECT_NE(dynamic_cast<COracleExc*>(copy.get()), nullptr);
  try {
    copy->throw_copy();
  } catch (const COracleInitTimeoutExc&) {
    FAIL() << "became a time-out";
  } catch (const COracleExc& caught) {
    EXPECT_EQ(caught.code(), 1031u);
    return;
  }
  FAIL() << "the type did not survive";
}

TEST(OracleExceptions, SessionCreateFailureIsNoOracleException) {
  try {
    throw COracleSessionCreateExc("Failed to create oracle session holder.");
  } catch (const COracleExc&) {
    FAIL() << "a handler for COracleExc must not see it";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Failed to create oracle session holder.");
  }
}

TEST(OracleExceptions, SessionCreateFailureArrivesAsAPlainRuntimeExceptionAcrossThreads) {
  COracleSessionCreateExc e("Failed to create oracle session holder. Session is invalid.");
  const exc::exc_ptr_t copy = exc::capture(e);
  EXPECT_EQ(dynamic_cast<COracleSessionCreateExc*>(copy.get()), nullptr);
  EXPECT_NE(dynamic_cast<exc::runtime_exc_t*>(copy.get()), nullptr);
  try {
    copy->throw_copy();
  } catch (const COracleSessionCreateExc&) {
    FAIL() << "it must lose its type";
  } catch (const exc::runtime_exc_t& caught) {
    EXPECT_STREQ(caught.what(), "Failed to create oracle session holder. Session is invalid.");
  }
}

}  // namespace
