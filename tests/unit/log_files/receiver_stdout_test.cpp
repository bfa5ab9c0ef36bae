// The console receiver: framed by slashes, lines as they come.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/receiver_stdout.h"
#include "log_files_env.h"

namespace {

using logging::receiver::stdout_log_file_t;

const std::string kFrame = std::string(74, '/') + "\n";

TEST(StdoutLogFile, FramesARunWithSlashesAndPassesTextUnchanged) {
  dsl_test::console_capture_t console(dsl_test::console_capture_t::standard_output);
  {
    stdout_log_file_t file;
    file.write("one\n");
    file.write("two\nthree\n");
  }
  EXPECT_EQ(console.take(), kFrame + "one\ntwo\nthree\n" + kFrame);
}

TEST(StdoutLogFile, HasNoPathNoSizeAndNothingToRotate) {
  dsl_test::console_capture_t console(dsl_test::console_capture_t::standard_output);
  stdout_log_file_t file;
  EXPECT_EQ(file.path(), "");
  EXPECT_EQ(file.eol(), "\n");
  EXPECT_EQ(file.size(), 0u);
  EXPECT_FALSE(file.flush_each_write);
}

TEST(StdoutLogFile, CarriesTheLinesOfALog) {
  dsl_test::console_capture_t console(dsl_test::console_capture_t::standard_output);
  {
    auto log = std::make_shared<logging::log_t>(std::make_shared<stdout_log_file_t>());
    logging::log_channel_t channel(log, "cli");
    channel.warn("two\nlines");
  }
  const std::string text = console.take();
  ASSERT_EQ(text.substr(0, kFrame.size()), kFrame);
  EXPECT_NE(text.find("> cli| WARN|two\n"), std::string::npos) << text;
  EXPECT_NE(text.find("> cli| >>  |lines\n"), std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - kFrame.size()), kFrame);
}

}  // namespace
