// The exports through their frame: what the caller gets and what the log shows. Operations
// whose subsystem is not in this build fail with a text that names them.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "DbShadowLink.h"
#include "config/oracle_config.h"
#include "support/capture_receiver.h"
#include "support/wide.h"

using dsl_test::take_text;
using dsl_test::W;

namespace {

DSL_WCHAR* const kUntouched = reinterpret_cast<DSL_WCHAR*>(0x1234);

struct export_case_t {
  const char* name;
  const char* context;
  const char* failure_line;  // the manager's trace line, or "" when the export has none
  std::function<DSL_RESULT(DSL_WCHAR** out, DSL_WCHAR** error)> call;
};

std::vector<export_case_t> failing_exports() {
  const DSL_WCHAR* e = W(u"");
  return {
      {"OracleGatherVssInfo", "Failed to gather oracle info.", "",
       [](DSL_WCHAR** out, DSL_WCHAR** err) {
         return OracleGatherVssInfo(reinterpret_cast<void*>(0x1), reinterpret_cast<void*>(0x2), out, err);
       }},
      {"OracleShouldSkipVssWriter", "Failed to check if should skip VSS writer", "",
       [](DSL_WCHAR**, DSL_WCHAR** err) {
         uint8_t skip = 7;
         const DSL_RESULT rc = OracleShouldSkipVssWriter(W(u"ORCL"), &skip, err);
         EXPECT_EQ(skip, 7) << "the boolean out is written only on success";
         return rc;
       }},
      {"OracleCheckVssFunctionality", "Failed to check VSS functionality.", "",
       [](DSL_WCHAR**, DSL_WCHAR** err) {
         uint8_t ok = 7;
         const DSL_RESULT rc = OracleCheckVssFunctionality(&ok, err);
         EXPECT_EQ(ok, 7);
         return rc;
       }},
      {"OracleExploreInstances", "Failed to explore oracle instances.",
       "Oracle manager failed to explore Oracle instances",
       [e](DSL_WCHAR** out, DSL_WCHAR** err) { return OracleExploreInstances(1, e, e, e, out, err); }},
      {"OracleBackupLogs", "Failed to backup oracle logs.", "Oracle manager failed to backup archived logs",
       [e](DSL_WCHAR** out, DSL_WCHAR** err) {
         return OracleBackupLogs(W(u"C:\\h"), W(u"ORCL"), W(u"1"), W(u"2"), e, e, out, err);
       }},
      {"OracleEnumLogs", "Failed to enum oracle logs.", "Oracle manager failed to enum logs",
       [](DSL_WCHAR** out, DSL_WCHAR** err) { return OracleEnumLogs(out, err); }},
      {"OraclePrepareDbsForBackup", "Failed to prepare dbs for backup",
       "Oracle manager failed to prepare dbs for backup",
       [e](DSL_WCHAR** out, DSL_WCHAR** err) { return OraclePrepareDbsForBackup(e, e, e, e, e, out, err); }},
      {"OracleFinishDbsBackup", "Failed to finish dbs backup", "Oracle manager failed to finish dbs backup",
       [e](DSL_WCHAR**, DSL_WCHAR** err) { return OracleFinishDbsBackup(e, e, e, err); }},
      {"OracleDeleteLogsByTime", "Failed to delete oracle logs by time",
       "Oracle manager failed to delete archived logs by time",
       [e](DSL_WCHAR**, DSL_WCHAR** err) { return OracleDeleteLogsByTime(e, W(u"ORCL"), 60, e, e, err); }},
      {"OracleDeleteLogsBySize", "Failed to delete oracle logs by size",
       "Oracle manager failed to delete archived logs by time",
       [e](DSL_WCHAR**, DSL_WCHAR** err) { return OracleDeleteLogsBySize(e, W(u"ORCL"), 1u << 20, e, e, err); }},
      {"OracleRemoveLogsInTemp", "Failed to remove oracle logs.", "Oracle manager failed to remove logs in temp",
       [](DSL_WCHAR**, DSL_WCHAR** err) { return OracleRemoveLogsInTemp(W(u"<archived_logs/>"), err); }},
      {"OracleIsRestoreRequired", "Failed to check if restore required",
       "Oracle manager failed to check if restore required",
       [](DSL_WCHAR**, DSL_WCHAR** err) {
         uint8_t required = 7;
         const DSL_RESULT rc = OracleIsRestoreRequired(&required, err);
         EXPECT_EQ(required, 7);
         return rc;
       }},
      {"OracleDoRestore", "Failed to do oracle restore", "Oracle manager failed to do db restore",
       [](DSL_WCHAR**, DSL_WCHAR** err) { return OracleDoRestore(err); }},
  };
}

TEST(Exports, EachFailingExportLogsItsContextAndLeavesItsOutUnwritten) {
  for (const auto& c : failing_exports()) {
    SCOPED_TRACE(c.name);
    dsl_test::capture_log_t capture;
    DSL_WCHAR* out = kUntouched;
    DSL_WCHAR* error = kUntouched;
    EXPECT_EQ(c.call(&out, &error), 0x80004005u);
    EXPECT_EQ(out, kUntouched);
    ASSERT_NE(error, kUntouched);
    const std::string text = dsl_test::utf8(take_text(error));
    EXPECT_NE(text.find("is not available in this build of the library."), std::string::npos) << text;
    if (*c.failure_line != '\0') {
      const std::string last = text.substr(text.rfind('\n') + 1);
      EXPECT_EQ(last, std::string("--tr:") + c.failure_line);
    }
    bool context_logged = false;
    for (const auto& line : capture.bodies()) {
      if (line == std::string("oralib| ERR |") + c.context) context_logged = true;
    }
    EXPECT_TRUE(context_logged);
  }
}

TEST(Exports, MissingOperationIsNamedInTheErrorText) {
  DSL_WCHAR* xml = kUntouched;
  DSL_WCHAR* error = nullptr;
  ASSERT_EQ(OracleEnumLogs(&xml, &error), DSL_E_FAIL);
  EXPECT_EQ(xml, kUntouched);
  EXPECT_EQ(take_text(error),
            u"The operation [enumerate logs] is not available in this build of the library.\n"
            u"--tr:Oracle manager failed to enum logs");
}

TEST(Exports, LogsFolderAnswersTheConfiguredPathAndLeavesTheErrorUnwritten) {
  DSL_WCHAR* folder = kUntouched;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OracleGetLogsFolder(&folder, &error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  ASSERT_NE(folder, kUntouched);
  EXPECT_EQ(take_text(folder), specific::oracle::COracleConfig::get().tempLogPath);
}

TEST(Exports, ManagerStepsEndFailedInTheLog) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = nullptr;
  ASSERT_EQ(OracleDeleteLogsBySize(W(u"C:\\h"), W(u"ORCL"), 5, W(u""), W(u""), &error), DSL_E_FAIL);
  OracleLibStrFree(error);
  const auto lines = capture.bodies();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "oralib| Deleting oracle logs by size. Sid: ORCL");
  EXPECT_EQ(lines[1], "oralib| Deleting oracle logs by size. Sid: ORCL Failed.");
}

TEST(Exports, LibStrFreeOfNullIsANoOp) {
  // Nothing is freed, nothing is written to the log, and the heap is as usable as before.
  dsl_test::capture_log_t capture;
  EXPECT_NO_THROW(OracleLibStrFree(nullptr));
  EXPECT_NO_THROW(OracleLibStrFree(nullptr));
  EXPECT_TRUE(capture.bodies().empty());
  // An out text made afterwards is handed out and freed as usual.
  DSL_WCHAR* folder = nullptr;
  DSL_WCHAR* error = kUntouched;
  ASSERT_EQ(OracleGetLogsFolder(&folder, &error), DSL_S_OK);
  ASSERT_NE(folder, nullptr);
  EXPECT_EQ(error, kUntouched);
  EXPECT_FALSE(dsl_test::take_text(folder).empty());
}

TEST(Exports, StopSucceedsAndLeavesTheErrorUnwritten) {
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
}

TEST(Exports, OracleTestOnAMachineWithoutInstancesPrintsNothingAndSucceeds) {
  // No registry here: no home, no instance. Standard input is no terminal, so no pause.
  DSL_WCHAR* error = kUntouched;
  testing::internal::CaptureStdout();
  const DSL_RESULT rc = OracleTest(reinterpret_cast<void*>(0x1), nullptr, W(u"test.log"), &error);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(rc, DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  EXPECT_EQ(printed, "");
}

}  // namespace
