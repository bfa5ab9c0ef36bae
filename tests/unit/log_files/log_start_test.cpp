// Starting the log: the arguments, the directory choice, the receiver and the header block,
// and a start-up that fails without failing its caller.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/logging/log_path.h"
#include "common/logging/log_start.h"
#include "common/logging/receiver_stdout.h"
#include "common/text/convert.h"
#include "log_files_env.h"
#include "support/capture_receiver.h"

namespace {

using dsl_test::console_capture_t;
using dsl_test::machine_settings_t;
using dsl_test::test_folder_t;
using logging::log_start;

// A log and a channel of the test's own, so that the process-wide log is not disturbed.
struct own_log_t {
  std::shared_ptr<logging::log_t> log = std::make_shared<logging::log_t>();
  logging::log_channel_t channel{log, ""};
};

std::vector<std::string> bodies_of(const std::string& text) {
  std::vector<std::string> bodies;
  for (const auto& line : dsl_test::crlf_lines(text)) {
    bodies.push_back(dsl_test::strip_stamp_and_thread(line));
  }
  return bodies;
}

size_t find_body(const std::vector<std::string>& bodies, const std::string& start) {
  for (size_t i = 0; i < bodies.size(); ++i) {
    if (bodies[i].rfind(start, 0) == 0) return i;
  }
  return std::string::npos;
}

TEST(LogStart, TheLogArgumentNamesTheFileAndTheHeaderOpensIt) {
  test_folder_t folder;
  machine_settings_t machine({});
  own_log_t own;
  const std::u16string path = folder.path(u"logs\\run.log");
  EXPECT_EQ(log_start(own.channel, u"agent.log", {u"-log", path}), path);
  ASSERT_NE(own.log->file(), nullptr);
  EXPECT_TRUE(own.log->opened());
  EXPECT_EQ(own.log->file()->path(), util::to_utf8(path));
  own.channel.info("after the header");

  const auto bodies = bodies_of(folder.raw_read(u"logs\\run.log"));
  ASSERT_GE(bodies.size(), 6u);
  EXPECT_EQ(bodies[0], "");
  EXPECT_EQ(bodies[1], std::string(77, '='));
  EXPECT_EQ(bodies[2], "{");
  EXPECT_EQ(bodies[3].rfind("  Path to the executable module: ", 0), 0u) << bodies[3];
  const size_t os = find_body(bodies, "  OS version: ");
  const size_t pid = find_body(bodies, "  Process Id: ");
  ASSERT_NE(os, std::string::npos);
  ASSERT_NE(pid, std::string::npos);
  EXPECT_EQ(pid, os + 1);
  EXPECT_EQ(bodies[pid + 1], "}");
  EXPECT_EQ(bodies[pid + 2], "after the header");
  EXPECT_EQ(pid + 3, bodies.size());
}

TEST(LogStart, TheLogArgumentIsFoundWithoutRegardToCase) {
  test_folder_t folder;
  machine_settings_t machine({});
  own_log_t own;
  const std::u16string path = folder.path(u"cased.log");
  EXPECT_EQ(log_start(own.channel, u"agent.log", {u"-other", u"-LoG", path}), path);
  EXPECT_TRUE(folder.raw_exists(u"cased.log"));
}

TEST(LogStart, ALogArgumentWithoutAPathIsIgnored) {
  test_folder_t folder;
  machine_settings_t machine({dsl_test::log_directory_key(folder.path8("configured"))});
  own_log_t own;
  EXPECT_EQ(log_start(own.channel, u"agent.log", {u"-verbose", u"-log"}),
            folder.path(u"configured\\agent.log"));
  EXPECT_TRUE(folder.raw_exists(u"configured\\agent.log"));
}

TEST(LogStart, VerboseIsSetInAnyLetterCaseAndClearedWithout) {
  test_folder_t folder;
  machine_settings_t machine({});
  {
    own_log_t own;
    log_start(own.channel, u"v.log", {u"-log", folder.path(u"v1.log"), u"-VeRbOsE"});
    EXPECT_TRUE(logging::verbose());
  }
  {
    own_log_t own;
    log_start(own.channel, u"v.log", {u"-log", folder.path(u"v2.log")});
    EXPECT_FALSE(logging::verbose());
  }
}

TEST(LogStart, WithoutArgumentsTheLogGoesToLogDirectory) {
  test_folder_t folder;
  machine_settings_t machine({dsl_test::log_directory_key(folder.path8("Agent Logs"))});
  own_log_t own;
  EXPECT_EQ(log_start(own.channel, u"agent.log", {}), folder.path(u"Agent Logs\\agent.log"));
  EXPECT_NE(folder.raw_read(u"Agent Logs\\agent.log").find("Process Id: "), std::string::npos);
}

TEST(LogStart, WithoutArgumentsOrSettingTheLogGoesToTheStandardFolder) {
  test_folder_t folder;
  machine_settings_t machine({});
  dsl_test::standard_folder_file_t standard(u"dsl-log-start-standard.log");
  own_log_t own;
  EXPECT_EQ(log_start(own.channel, u"dsl-log-start-standard.log", {}), standard.path());
  ASSERT_NE(own.log->file(), nullptr);
  EXPECT_EQ(own.log->file()->path(), util::to_utf8(standard.path()));
  own.log->set_file(nullptr);
}

TEST(LogStart, ALogDirectoryThatIsAFileSendsTheLogToTheStandardFolder) {
  test_folder_t folder;
  folder.raw_write(u"a-file", "not a folder");
  machine_settings_t machine({dsl_test::log_directory_key(folder.path8("a-file"))});
  dsl_test::standard_folder_file_t standard(u"dsl-log-dir-is-file.log");
  own_log_t own;
  console_capture_t console(console_capture_t::standard_output);
  EXPECT_EQ(log_start(own.channel, u"dsl-log-dir-is-file.log", {}),
            folder.path(u"a-file\\dsl-log-dir-is-file.log"));
  EXPECT_EQ(console.take(), "");
  ASSERT_NE(own.log->file(), nullptr);
  EXPECT_EQ(own.log->file()->path(), util::to_utf8(standard.path()));
  own.channel.info("still logging");
  own.log->set_file(nullptr);
  EXPECT_EQ(folder.raw_read(u"a-file"), "not a folder");
}

TEST(LogStart, AFileThatCannotBeOpenedIsToldOnTheConsoleAndTheCallerGoesOn) {
  test_folder_t folder;
  machine_settings_t machine({});
  folder.raw_mkdir(u"taken.log");
  own_log_t own;
  console_capture_t console(console_capture_t::standard_output);
  const std::u16string path = folder.path(u"taken.log");
  EXPECT_EQ(log_start(own.channel, u"agent.log", {u"-log", path}), path);
  const std::string told = console.take();
  EXPECT_EQ(told.rfind("Failed to initialize log [" + util::to_utf8(path) + "].\n", 0), 0u)
      << told;
  EXPECT_NE(told.find("Failed to create or open file [" + util::to_utf8(path) + "]."),
            std::string::npos)
      << told;
  EXPECT_EQ(own.log->file(), nullptr);
  EXPECT_FALSE(own.log->opened());
  own.channel.info("dropped without a trace");
}

TEST(LogStart, AFileLeftTooLargeIsRotatedAtStart) {
  test_folder_t folder;
  machine_settings_t machine({});
  folder.raw_write(u"big.log", std::string(logging::kLogSizeLimit, 'x'));
  own_log_t own;
  log_start(own.channel, u"agent.log", {u"-log", folder.path(u"big.log")});
  EXPECT_EQ(dsl_test::read_gz(folder.path(u"big.log.gz")),
            std::string(logging::kLogSizeLimit, 'x'));
  const auto bodies = bodies_of(folder.raw_read(u"big.log"));
  ASSERT_GE(bodies.size(), 3u);
  EXPECT_EQ(bodies[0], "");
  EXPECT_EQ(bodies[2], "{");
}

TEST(LogStart, RotationIsEnabledAfterStart) {
  test_folder_t folder;
  machine_settings_t machine({});
  folder.raw_write(u"r.log", std::string(logging::kLogSizeLimit - 10, 'y'));
  own_log_t own;
  log_start(own.channel, u"agent.log", {u"-log", folder.path(u"r.log")});
  EXPECT_FALSE(folder.raw_exists(u"r.log.gz"));
  for (int i = 0; i < 1000; ++i) own.channel.info("line");
  EXPECT_TRUE(folder.raw_exists(u"r.log.gz"));
}

TEST(AttachReceiver, WithoutPathsTheConsoleReceivesTheLog) {
  own_log_t own;
  console_capture_t console(console_capture_t::standard_output);
  EXPECT_TRUE(logging::attach_receiver(*own.log, {}, /*rotate_enabled=*/true));
  ASSERT_NE(dynamic_cast<logging::receiver::stdout_log_file_t*>(own.log->file().get()), nullptr);
  EXPECT_TRUE(own.log->opened());
  own.channel.info("to the console");
  own.log->set_file(nullptr);
  const std::string text = console.take();
  EXPECT_EQ(text.rfind(std::string(74, '/') + "\n", 0), 0u) << text;
  EXPECT_NE(text.find("> to the console\n"), std::string::npos) << text;
}

TEST(AttachReceiver, TheFirstPathThatWorksIsUsed) {
  test_folder_t folder;
  machine_settings_t machine({});
  folder.raw_write(u"blocker", "x");
  own_log_t own;
  EXPECT_TRUE(logging::attach_receiver(
      *own.log, {folder.path8("blocker\\a.log"), folder.path8("fine\\b.log")}, false));
  EXPECT_EQ(own.log->file()->path(), folder.path8("fine\\b.log"));
}

TEST(AttachReceiver, AFailureNamesTheFirstPath) {
  test_folder_t folder;
  machine_settings_t machine({});
  folder.raw_write(u"blocker", "x");
  own_log_t own;
  console_capture_t console(console_capture_t::standard_output);
  EXPECT_FALSE(logging::attach_receiver(
      *own.log, {folder.path8("blocker\\a.log"), folder.path8("blocker\\b.log")}, true));
  const std::string told = console.take();
  EXPECT_EQ(told.rfind("Failed to initialize log [" + folder.path8("blocker\\a.log") + "].\n", 0),
            0u)
      << told;
  EXPECT_NE(told.find("Failed to create directory ["), std::string::npos) << told;
  EXPECT_EQ(own.log->file(), nullptr);
}

TEST(LogStart, TheProcessWideStartUpUsesTheDefaultChannelAndRemembersTheName) {
  test_folder_t folder;
  machine_settings_t machine({});
  const auto previous = logging::log_t::instance()->file();
  const std::u16string path = folder.path(u"process.log");
  EXPECT_EQ(log_start(u"process.log", {u"-log", path}), path);
  EXPECT_EQ(logging::started_log_name(), u"process.log");
  ASSERT_NE(logging::log_t::instance()->file(), nullptr);
  EXPECT_EQ(logging::log_t::instance()->file()->path(), util::to_utf8(path));
  logging::oralib().info("on the oralib channel");
  logging::log_t::instance()->set_file(previous);
  const auto bodies = bodies_of(folder.raw_read(u"process.log"));
  ASSERT_GE(bodies.size(), 4u);
  EXPECT_EQ(bodies[2], "{");
  EXPECT_EQ(bodies.back(), "oralib| on the oralib channel");
}

}  // namespace
