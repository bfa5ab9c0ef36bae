// The exports through their frame: what the caller gets and what the log shows. Operations
// whose subsystem is not in this build fail with a text that names them. The VSS exports at
// the end answer from the process-wide VSS state and gather list.
#include <gtest/gtest.h>

#include <algorithm>

#include <functional>
#include <string>
#include <vector>

#include "DbShadowLink.h"
#include "config/oracle_config.h"
#include "frame/library_state.h"
#include "oracle/client/env_variable.h"
#include "oracle/discovery/vss_state.h"
#include "support/capture_receiver.h"
#include "support/reg_machine.h"
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
      {"OracleBackupLogs", "Failed to backup oracle logs.", "Oracle manager failed to backup archived logs",
       [e](DSL_WCHAR** out, DSL_WCHAR** err) {
         return OracleBackupLogs(W(u"C:\\h"), W(u"ORCL"), W(u"1"), W(u"2"), e, e, out, err);
       }},
      {"OracleDeleteLogsByTime", "Failed to delete oracle logs by time",
       "Oracle manager failed to delete archived logs by time",
       [e](DSL_WCHAR**, DSL_WCHAR** err) { return OracleDeleteLogsByTime(e, W(u"ORCL"), 60, e, e, err); }},
      {"OracleDeleteLogsBySize", "Failed to delete oracle logs by size",
       "Oracle manager failed to delete archived logs by time",
       [e](DSL_WCHAR**, DSL_WCHAR** err) { return OracleDeleteLogsBySize(e, W(u"ORCL"), 1u << 20, e, e, err); }},
      {"OracleRemoveLogsInTemp", "Failed to remove oracle logs.", "Oracle manager failed to remove logs in temp",
       [](DSL_WCHAR**, DSL_WCHAR** err) { return OracleRemoveLogsInTemp(W(u"<archived_logs"), err); }},
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
    EXPECT_FALSE(text.empty());
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

TEST(Exports, ExploreWithAnInputThatIsNoXmlLogsItsContextAndLeavesItsOutUnwritten) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* out = kUntouched;
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(OracleExploreInstances(0, W(u""), W(u""), W(u"<unclosed"), &out, &error), 0x80004005u);
  EXPECT_EQ(out, kUntouched);
  ASSERT_NE(error, kUntouched);
  const std::string text = dsl_test::utf8(take_text(error));
  EXPECT_EQ(text.rfind("XML error: [", 0), 0u) << text;
  EXPECT_EQ(text.substr(text.find("\nFailed to parse explore db config\n")),
            "\nFailed to parse explore db config\n--tr:Failed to explore oracle instances.\n"
            "--tr:Oracle manager failed to explore Oracle instances");
  bool context_logged = false;
  for (const auto& line : capture.bodies()) {
    if (line == "oralib| ERR |Failed to explore oracle instances.") context_logged = true;
  }
  EXPECT_TRUE(context_logged);
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
  // This program's machine has no client library: the session fails inside the step.
  const auto lines = capture.bodies();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines.front(), "oralib| Deleting oracle logs by size. Sid: ORCL");
  EXPECT_NE(std::find(lines.begin(), lines.end(),
                      "oralib| Deleting oracle logs by size. Sid: ORCL Failed."),
            lines.end());
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

// The VSS exports. The machine of this program has no registry unless a test installs one.

TEST(VssExports, ShouldSkipWriterAnswersByExactComparisonAndLeavesTheErrorUnwritten) {
  specific::oracle::CVssState::instance().add_skip_sid(u"SKIPPEDSID");
  DSL_WCHAR* error = kUntouched;
  uint8_t skip = 7;
  ASSERT_EQ(OracleShouldSkipVssWriter(W(u"SKIPPEDSID"), &skip, &error), DSL_S_OK);
  EXPECT_EQ(skip, 1);
  ASSERT_EQ(OracleShouldSkipVssWriter(W(u"skippedsid"), &skip, &error), DSL_S_OK);
  EXPECT_EQ(skip, 0);
  ASSERT_EQ(OracleShouldSkipVssWriter(W(u"ORCL"), &skip, &error), DSL_S_OK);
  EXPECT_EQ(skip, 0);
  EXPECT_EQ(error, kUntouched);
}

TEST(VssExports, CheckOnAMachineWithoutInstancesAnswersEnabled) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = kUntouched;
  uint8_t ok = 7;
  ASSERT_EQ(OracleCheckVssFunctionality(&ok, &error), DSL_S_OK);
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(error, kUntouched);
  const auto lines = dsl_test::plain_log(capture);
  EXPECT_EQ(lines, (std::vector<std::string>{"Checking if oracle VSS must be disabled",
                                             "VSS must be enabled",
                                             "Checking if oracle VSS must be disabled ok."}));
  ASSERT_TRUE(specific::oracle::CVssState::instance().vss_must_be_enabled());
}

TEST(VssExports, GatherFillsTheListOnceKeepsItAndStopDropsIt) {
  using specific::oracle::frame::CLibraryState;
  // A machine with the database ORCL whose client library cannot be loaded: the entry is the
  // failure of its session.
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("vss_one_database.reg"));
  specific::oracle::set_env_variable(u"DSL_OCI_LIBRARY", u"dsl-no-such-client-library");
  CLibraryState::instance().reset_gather_list();

  DSL_WCHAR* xml = kUntouched;
  DSL_WCHAR* error = kUntouched;
  // The first two arguments are ignored, whatever they hold.
  ASSERT_EQ(OracleGatherVssInfo(reinterpret_cast<void*>(0x1), reinterpret_cast<void*>(0x2), &xml,
                                &error),
            DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  const std::string first = dsl_test::utf8(take_text(xml));
  EXPECT_EQ(first.rfind("<OracleEntries><OracleEntry sid=\"ORCL\" error=\"", 0), 0u) << first;
  EXPECT_NE(first.find("Session is invalid."), std::string::npos) << first;
  const auto kept = CLibraryState::instance().gather_list();
  ASSERT_TRUE(kept);
  ASSERT_EQ(kept->size(), 1u);
  EXPECT_FALSE((*kept)[0].valid);

  // Kept: the second call renders the same list and opens no session.
  {
    dsl_test::capture_log_t capture;
    xml = kUntouched;
    ASSERT_EQ(OracleGatherVssInfo(nullptr, nullptr, &xml, &error), DSL_S_OK);
    EXPECT_EQ(dsl_test::utf8(take_text(xml)), first);
    EXPECT_TRUE(capture.receiver().writes().empty());
    EXPECT_EQ(CLibraryState::instance().gather_list(), kept);
  }

  // Stop drops it; the next call reads the machine anew.
  ASSERT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_FALSE(CLibraryState::instance().gather_list());
  {
    dsl_test::capture_log_t capture;
    xml = kUntouched;
    ASSERT_EQ(OracleGatherVssInfo(nullptr, nullptr, &xml, &error), DSL_S_OK);
    EXPECT_EQ(dsl_test::utf8(take_text(xml)), first);
    EXPECT_FALSE(capture.receiver().writes().empty());
    ASSERT_TRUE(CLibraryState::instance().gather_list());
    EXPECT_NE(CLibraryState::instance().gather_list(), kept);
  }
  EXPECT_EQ(error, kUntouched);
  CLibraryState::instance().reset_gather_list();
}

}  // namespace
