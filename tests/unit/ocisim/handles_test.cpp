// Handles and errors of the simulated client: allocation, freeing, attributes and OCIErrorGet.
#include <cstring>

#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class HandlesTest : public OcisimTest {};

TEST_F(HandlesTest, ExportsExactlyTheSixteenEntryPointsByName) {
  std::string error;
  auto library = oci_library_t::load(oci_library_t::built_path(), /*keep_loaded=*/true, error);
  ASSERT_TRUE(library) << error;
  for (const char* name : {"OCIEnvCreate", "OCIErrorGet", "OCIHandleAlloc", "OCIHandleFree", "OCIAttrSet",
                           "OCIServerAttach", "OCIServerDetach", "OCISessionBegin", "OCISessionEnd",
                           "OCIStmtPrepare", "OCIDefineByPos", "OCIBindByName", "OCIStmtExecute",
                           "OCIStmtFetch2", "OCIDBStartup", "OCIDBShutdown"}) {
    EXPECT_NE(library->symbol(name), nullptr) << name;
  }
  EXPECT_EQ(library->symbol("OCILogon"), nullptr);
  EXPECT_EQ(library->symbol("OCIStmtFetch"), nullptr);
}

TEST_F(HandlesTest, AllocatesEveryHandleTypeTheLibraryUsesUnderAnEnvironment) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(api().OCIEnvCreate(&env, OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0, nullptr), OCI_SUCCESS);
  ASSERT_NE(env, nullptr);
  for (ub4 type : {OCI_HTYPE_ERROR, OCI_HTYPE_SVCCTX, OCI_HTYPE_STMT, OCI_HTYPE_SERVER, OCI_HTYPE_SESSION,
                   OCI_HTYPE_ADMIN}) {
    void* handle = nullptr;
    EXPECT_EQ(api().OCIHandleAlloc(env, &handle, type, 0, nullptr), OCI_SUCCESS) << type;
    EXPECT_NE(handle, nullptr);
    EXPECT_EQ(api().OCIHandleFree(handle, type), OCI_SUCCESS) << type;
  }
  EXPECT_EQ(api().OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
}

TEST_F(HandlesTest, RefusesDefineAndBindHandlesFromHandleAllocAndAParentThatIsNoEnvironment) {
  client_t client(api());
  void* handle = nullptr;
  EXPECT_EQ(api().OCIHandleAlloc(client.env(), &handle, OCI_HTYPE_DEFINE, 0, nullptr), OCI_INVALID_HANDLE);
  EXPECT_EQ(api().OCIHandleAlloc(client.env(), &handle, OCI_HTYPE_BIND, 0, nullptr), OCI_INVALID_HANDLE);
  EXPECT_EQ(api().OCIHandleAlloc(client.err(), &handle, OCI_HTYPE_STMT, 0, nullptr), OCI_INVALID_HANDLE);
  EXPECT_EQ(handle, nullptr);
}

TEST_F(HandlesTest, FreeingAnUnknownOrAlreadyFreedHandleAnswersInvalidHandle) {
  int not_a_handle = 0;
  EXPECT_EQ(api().OCIHandleFree(&not_a_handle, OCI_HTYPE_STMT), OCI_INVALID_HANDLE);
  EXPECT_EQ(api().OCIHandleFree(nullptr, OCI_HTYPE_ENV), OCI_INVALID_HANDLE);
  client_t client(api());
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(api().OCIHandleAlloc(client.env(), reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr), OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(stmt, OCI_HTYPE_SERVER), OCI_INVALID_HANDLE);  // wrong type
  EXPECT_EQ(api().OCIHandleFree(stmt, OCI_HTYPE_STMT), OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(stmt, OCI_HTYPE_STMT), OCI_INVALID_HANDLE);
}

TEST_F(HandlesTest, FreeingTheEnvironmentFreesTheHandlesAllocatedUnderIt) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(api().OCIEnvCreate(&env, OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0, nullptr), OCI_SUCCESS);
  OCIError* err = nullptr;
  ASSERT_EQ(api().OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr), OCI_SUCCESS);
  ASSERT_EQ(api().OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
  EXPECT_EQ(api().OCIHandleFree(err, OCI_HTYPE_ERROR), OCI_INVALID_HANDLE);
}

TEST_F(HandlesTest, GivesExtraUserMemoryWithAHandle) {
  OCIEnv* env = nullptr;
  void* memory = nullptr;
  ASSERT_EQ(api().OCIEnvCreate(&env, OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 64, &memory), OCI_SUCCESS);
  ASSERT_NE(memory, nullptr);
  std::memset(memory, 0xAB, 64);
  EXPECT_EQ(api().OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
}

TEST_F(HandlesTest, ErrorGetWithoutAnErrorAnswersNoData) {
  client_t client(api());
  char buffer[64] = "untouched";
  sb4 code = 7;
  EXPECT_EQ(api().OCIErrorGet(client.err(), 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer,
                              OCI_HTYPE_ERROR),
            OCI_NO_DATA);
  EXPECT_EQ(code, 7);
  EXPECT_STREQ(buffer, "untouched");
}

TEST_F(HandlesTest, ErrorGetOnSomethingThatIsNoErrorHandleAnswersInvalidHandle) {
  client_t client(api());
  char buffer[64];
  sb4 code = 0;
  EXPECT_EQ(api().OCIErrorGet(client.svc(), 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer,
                              OCI_HTYPE_ERROR),
            OCI_INVALID_HANDLE);
}

TEST_F(HandlesTest, AnAttributeTheClientDoesNotKnowFailsWithOra24315) {
  client_t client(api());
  ub4 value = 5;
  EXPECT_EQ(api().OCIAttrSet(client.svc(), OCI_HTYPE_SVCCTX, &value, 0, /*attrtype=*/9999, client.err()), OCI_ERROR);
  EXPECT_EQ(client.error_code(), 24315);
  EXPECT_EQ(client.error_text(), "ORA-24315: illegal attribute type\n");
}

TEST_F(HandlesTest, AServerAttributeThatIsNoServerHandleAnswersInvalidHandle) {
  client_t client(api());
  EXPECT_EQ(api().OCIAttrSet(client.svc(), OCI_HTYPE_SVCCTX, client.ses(), 0, OCI_ATTR_SERVER, client.err()),
            OCI_INVALID_HANDLE);
}

TEST_F(HandlesTest, ErrorGetCutsAMessageAtTheBufferSizeAndTerminatesIt) {
  write_scenario("<machine/>");
  client_t client(api());
  ASSERT_EQ(client.attach("NOSUCH", kHome), OCI_ERROR);
  char buffer[10];
  sb4 code = 0;
  ASSERT_EQ(api().OCIErrorGet(client.err(), 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer,
                              OCI_HTYPE_ERROR),
            OCI_SUCCESS);
  EXPECT_EQ(code, 12560);
  EXPECT_STREQ(buffer, "ORA-12560");
  EXPECT_EQ(api().OCIErrorGet(client.err(), 2, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer,
                              OCI_HTYPE_ERROR),
            OCI_NO_DATA);
}

TEST_F(HandlesTest, ASuccessfulCallClearsTheErrorOfAnEarlierOne) {
  write_scenario(single_instance());
  client_t client(api());
  ASSERT_EQ(client.attach("NOSUCH", kHome), OCI_ERROR);
  ASSERT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
  char buffer[64];
  sb4 code = 0;
  EXPECT_EQ(api().OCIErrorGet(client.err(), 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer,
                              OCI_HTYPE_ERROR),
            OCI_NO_DATA);
}

}  // namespace
}  // namespace ocisim_test
