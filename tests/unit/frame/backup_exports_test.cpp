// The preparation, finish and restore exports through their frame on a machine without Oracle:
// what the caller gets back and when the frame reports a failure.
#include <gtest/gtest.h>

#include "DbShadowLink.h"
#include "config/oracle_config.h"
#include "support/capture_receiver.h"
#include "support/test_folder.h"
#include "support/wide.h"

using dsl_test::take_text;
using dsl_test::W;

namespace {

DSL_WCHAR* const kUntouched = reinterpret_cast<DSL_WCHAR*>(0x1234);

class BackupExports : public ::testing::Test {
 protected:
  void SetUp() override {
    saved_ = specific::oracle::COracleConfig::get();
    specific::oracle::COracleConfig config;
    config.tempLogPath = folder_.path(u"logs\\");
    config.restoreWaitInSec = 0;
    specific::oracle::COracleConfig::replace_for_tests(config);
  }
  // The process's own record comes back, so that later tests see the registry's settings.
  void TearDown() override { specific::oracle::COracleConfig::replace_for_tests(saved_); }
  specific::oracle::COracleConfig saved_;
  dsl_test::test_folder_t folder_;
};

TEST_F(BackupExports, PrepareOnAMachineWithoutOracleGivesAnEmptyDocumentAndWritesTheMeta) {
  DSL_WCHAR* out = kUntouched;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OraclePrepareDbsForBackup(W(u""), W(u""), W(u""), W(u""), W(u""), &out, &error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  EXPECT_EQ(take_text(out), u"<databases />");
  EXPECT_TRUE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
}

TEST_F(BackupExports, PrepareWithAConfigWithoutDatabasesFailsAndWritesNoMeta) {
  DSL_WCHAR* out = kUntouched;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OraclePrepareDbsForBackup(W(u"<dbs/>"), W(u""), W(u""), W(u""), W(u""), &out, &error),
            DSL_E_FAIL);
  EXPECT_EQ(out, kUntouched);
  EXPECT_EQ(take_text(error),
            u"There is no node with the specified name: [databases].\n"
            u"--tr:Failed to prepare dbs for backup\n"
            u"--tr:Oracle manager failed to prepare dbs for backup");
  EXPECT_FALSE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
}

TEST_F(BackupExports, FinishOfAnEmptyDocumentSucceedsAndRemovesTheMeta) {
  DSL_WCHAR* out = nullptr;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OraclePrepareDbsForBackup(W(u""), W(u""), W(u""), W(u""), W(u""), &out, &error), DSL_S_OK);
  take_text(out);
  ASSERT_EQ(OracleFinishDbsBackup(W(u"<databases/>"), W(u""), W(u""), &error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  EXPECT_FALSE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
}

TEST_F(BackupExports, FinishOfAnUnreadableDocumentFailsWithBothTraceLines) {
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OracleFinishDbsBackup(W(u"<databases>"), W(u""), W(u""), &error), DSL_E_FAIL);
  const std::u16string text = take_text(error);
  EXPECT_NE(text.find(u"--tr:Failed to finish dbs backup\n--tr:Oracle manager failed to finish dbs backup"),
            std::u16string::npos);
}

TEST_F(BackupExports, RestoreIsRequiredOnlyWhileTheMetaFileExists) {
  uint8_t required = 7;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OracleIsRestoreRequired(&required, &error), DSL_S_OK);
  EXPECT_EQ(required, 0);
  DSL_WCHAR* out = nullptr;
  ASSERT_EQ(OraclePrepareDbsForBackup(W(u""), W(u""), W(u""), W(u""), W(u""), &out, &error), DSL_S_OK);
  take_text(out);
  ASSERT_EQ(OracleIsRestoreRequired(&required, &error), DSL_S_OK);
  EXPECT_EQ(required, 1);
  ASSERT_EQ(OracleDoRestore(&error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  ASSERT_EQ(OracleIsRestoreRequired(&required, &error), DSL_S_OK);
  EXPECT_EQ(required, 0);
}

}  // namespace
