// Hostile conditions under Windows: a log file another program tries to delete while it is
// open, and a log name the system code page cannot hold.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_start.h"
#include "common/text/convert.h"
#include "log_files_env.h"

namespace {

using dsl_test::test_folder_t;

TEST(DeletedLogFile, TheOpenLogCannotBeDeletedAndKeepsReceivingLines) {
  test_folder_t folder;
  auto file = std::make_shared<logging::receiver::win_log_file_t>(folder.path8("D.log"));
  auto log = std::make_shared<logging::log_t>(file);
  logging::log_channel_t channel(log, "");
  channel.info("before");
  const std::u16string path = folder.path(u"D.log");
  EXPECT_FALSE(::DeleteFileW(reinterpret_cast<const wchar_t*>(path.c_str())));
  EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
  channel.info("after");
  const std::string text = folder.raw_read(u"D.log");
  EXPECT_NE(text.find("> before\r\n"), std::string::npos);
  EXPECT_NE(text.find("> after\r\n"), std::string::npos);
}

// Cyrillic letters have no place in a Western code page: the narrowed name carries "?" where
// they stood, which no Windows file name may hold, so the log cannot be opened. That is said on
// the console, and the start-up returns to its caller.
TEST(UnrepresentableLogName, IsToldOnTheConsoleAndTheCallerGoesOn) {
  test_folder_t folder;
  dsl_test::machine_settings_t machine({dsl_test::log_directory_key(folder.path8("logs"))});
  const std::u16string name = u"\u0436\u0443\u0440\u043d\u0430\u043b.log";
  const std::string narrowed = util::to_multibyte(folder.path(u"logs\\") + name);
  if (narrowed.find('?') == std::string::npos) {
    GTEST_SKIP() << "this system's code page holds the name: " << ::GetACP();
  }
  auto log = std::make_shared<logging::log_t>();
  logging::log_channel_t channel(log, "");
  dsl_test::console_capture_t console(dsl_test::console_capture_t::standard_output);
  EXPECT_EQ(logging::log_start(channel, name, {}), folder.path(u"logs\\") + name);
  const std::string told = console.take();
  EXPECT_EQ(told.rfind("Failed to initialize log [" + narrowed + "].\n", 0), 0u) << told;
  EXPECT_NE(told.find("Failed to create or open file [" + narrowed + "]."), std::string::npos)
      << told;
  EXPECT_EQ(log->file(), nullptr);
  channel.info("the library runs on without a log");
}

}  // namespace
