// The life of the library in one process: the initialised flag is never set back, so these
// steps run in one test, in the order an agent could call them.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "DbShadowLink.h"
#include "common/logging/log_start.h"
#include "common/win/file.h"
#include "common/win/path_holder.h"
#include "frame/library_state.h"
#include "support/capture_receiver.h"
#include "support/wide.h"

using dsl_test::W;

namespace {

// The lines of a log file, without their stamp and thread columns.
std::vector<std::string> log_lines(const std::u16string& path) {
  const auto file = win::win_file_t::open_read(win::path_holder_t(path));
  std::string text(static_cast<size_t>(file->size()), '\0');
  if (!text.empty()) file->read(text.data(), static_cast<uint32_t>(text.size()));
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(dsl_test::strip_stamp_and_thread(line));
    start = end + 1;
  }
  return lines;
}

DSL_WCHAR* const kUntouched = reinterpret_cast<DSL_WCHAR*>(0x1234);

TEST(LibraryLife, InitStopAndInitAgainFollowTheAgentsOrder) {
  using specific::oracle::frame::CLibraryState;
  ASSERT_FALSE(CLibraryState::instance().initialised()) << "this executable must start fresh";

  // Stop without init: 0, nothing written.
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
  EXPECT_FALSE(CLibraryState::instance().initialised());

  // The first init starts the log file under its name in the standard folder and dumps the
  // configuration there (no registry key here: the defaults).
  EXPECT_EQ(OracleVssInitLib(W(u"first.log"), &error), DSL_S_OK);
  const std::vector<std::string> expected = {
      "oralib| Oracle agent config:",
      "oralib| ConnectionTimeoutSec: 300",
      "oralib| OracleRestoreWaitInSec: 45",
      "oralib| OracleAgentTtlSec: 600",
      "oralib| WaitDbStartedAttemptCount: 30",
      "oralib| CheckAsmLogFileExistence: false",
      "oralib| SupportOracle10: false",
      "oralib| OracleStageLogsBeforeBackup: false",
      "oralib| DisableOracleProcessing: false",
      "oralib| OracleSkipNoArchiveLogDB: false",
      "oralib| OracleTempLogPath: C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup\\",
      "oralib| =======================",
  };
  const std::vector<std::string> logged = log_lines(u"C:\\ProgramData\\Trelo\\Backup\\first.log");
  auto dump = std::search(logged.begin(), logged.end(), expected.begin(), expected.end());
  EXPECT_NE(dump, logged.end()) << "the twelve dump lines, in order, in the log file";
  EXPECT_EQ(error, kUntouched);
  EXPECT_TRUE(CLibraryState::instance().initialised());
  EXPECT_EQ(logging::started_log_name(), u"first.log");

  // A second init returns at once: no line, no new log, error untouched.
  {
    dsl_test::capture_log_t capture;
    EXPECT_EQ(OracleVssInitLib(W(u"second.log"), &error), DSL_S_OK);
    EXPECT_TRUE(capture.receiver().writes().empty());
  }
  EXPECT_EQ(error, kUntouched);
  EXPECT_EQ(logging::started_log_name(), u"first.log");

  // Stop keeps the flag; a later init does no work and keeps the first log.
  EXPECT_EQ(OracleVssStopLib(&error), DSL_S_OK);
  EXPECT_TRUE(CLibraryState::instance().initialised());
  EXPECT_EQ(OracleVssInitLib(W(u"third.log"), &error), DSL_S_OK);
  EXPECT_EQ(logging::started_log_name(), u"first.log");
  EXPECT_EQ(error, kUntouched);
}

}  // namespace
