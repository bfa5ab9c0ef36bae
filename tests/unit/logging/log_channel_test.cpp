#include "common/logging/log_channel.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "private_log.h"
#include "support/capture_receiver.h"

namespace {

using dsl_test::private_log_t;
using strings = std::vector<std::string>;

TEST(LogChannel, OralibInformationAtIndentOneReadsStampThreadNameAndTwoBlanks) {
  private_log_t p("oralib");
  p.channel.info_at(1, "Connecting.");
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 1u);
  const std::regex layout(
      R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] < *\d+> oralib\|   Connecting\.$)");
  EXPECT_TRUE(std::regex_search(lines[0], layout)) << lines[0];
}

TEST(LogChannel, InformationUsesTheThreadsCurrentIndent) {
  private_log_t p;
  p.log->indent_more();
  p.log->indent_more();
  p.channel.info("deep");
  p.log->indent_less();
  p.log->indent_less();
  p.channel.info("flat");
  EXPECT_EQ(p.bodies(), (strings{"    deep", "flat"}));
}

TEST(LogChannel, InfoAtUsesTheGivenIndentWhateverTheNesting) {
  private_log_t p;
  p.log->indent_more();
  p.channel.info_at(3, "x");
  p.channel.info_at(0, "y");
  p.log->indent_less();
  EXPECT_EQ(p.bodies(), (strings{"      x", "y"}));
}

TEST(LogChannel, StepLineUsesCurrentIndentAndNoMark) {
  private_log_t p("oralib");
  p.log->indent_more();
  p.channel.step_line("Step.");
  p.log->indent_less();
  EXPECT_EQ(p.bodies(), (strings{"oralib|   Step."}));
}

TEST(LogChannel, WarningsAndErrorsAreNeverIndented) {
  private_log_t p;
  p.log->indent_more();
  p.log->indent_more();
  p.channel.warn("w");
  p.channel.error("e");
  p.log->indent_less();
  p.log->indent_less();
  EXPECT_EQ(p.bodies(), (strings{"WARN|w", "ERR |e"}));
}

TEST(LogChannel, InformationTemplatesTakeOneToFourArguments) {
  private_log_t p;
  p.channel.info("[%1]", "a");
  p.channel.info("[%1] [%2]", "a", "b");
  p.channel.info("[%3] [%2] [%1]", "a", "b", "c");
  p.channel.info("%1%2%3%4", "a", "b", "c", "d");
  EXPECT_EQ(p.bodies(), (strings{"[a]", "[a] [b]", "[c] [b] [a]", "abcd"}));
}

TEST(LogChannel, InformationWithoutArgumentsIsNotFormatted) {
  private_log_t p;
  // Formatting would shorten "%007" to "%7"; a plain text goes out untouched.
  p.channel.info("Code %007 as is.");
  EXPECT_EQ(p.bodies(), (strings{"Code %007 as is."}));
}

TEST(LogChannel, WarningTemplatesTakeOneOrTwoArguments) {
  private_log_t p("oralib");
  p.channel.warn("Instance [%1] is down.", "ORCL");
  p.channel.warn("Instance [%1] in [%2].", "ORCL", "C:\\ora");
  EXPECT_EQ(p.bodies(),
            (strings{"oralib| WARN|Instance [ORCL] is down.",
                     "oralib| WARN|Instance [ORCL] in [C:\\ora]."}));
}

TEST(LogChannel, WriteTakesLevelAndIndentAsGiven) {
  private_log_t p;
  p.channel.write(logging::kLevelWarning, 2, "a\nb");
  EXPECT_EQ(p.bodies(), (strings{"WARN|    a", ">>  |    b"}));
}

TEST(LogChannel, ChannelWithoutLogWritesNothingAndDoesNotFail) {
  logging::log_channel_t nowhere(nullptr, "oralib");
  EXPECT_NO_THROW(nowhere.info("x"));
  EXPECT_NO_THROW(nowhere.warn("x"));
  EXPECT_NO_THROW(nowhere.error("x"));
  EXPECT_NO_THROW(nowhere.step_line("x"));
}

TEST(LogChannel, ProgramChannelsShareTheSingletonLog) {
  EXPECT_EQ(logging::default_channel().log(), logging::log_t::instance());
  EXPECT_EQ(logging::oralib().log(), logging::log_t::instance());
  EXPECT_EQ(logging::cli().log(), logging::log_t::instance());
  EXPECT_EQ(&logging::oralib(), &logging::oralib());
}

TEST(LogChannel, ProgramChannelsCarryTheirPrefixes) {
  EXPECT_EQ(logging::default_channel().format()->prefix(), "");
  EXPECT_EQ(logging::oralib().format()->prefix(), "oralib| ");
  EXPECT_EQ(logging::cli().format()->prefix(), "cli| ");
}

TEST(LogChannel, ProgramChannelsWriteToTheReceiverOfTheSingleton) {
  dsl_test::capture_log_t capture;
  logging::default_channel().info("d");
  logging::oralib().warn("o");
  logging::cli().error("c");
  EXPECT_EQ(capture.bodies(), (strings{"d", "oralib| WARN|o", "cli| ERR |c"}));
}

}  // namespace
