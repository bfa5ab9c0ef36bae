// The header block at the top of each run: its layout, and that each group of lines stands by
// itself when another fails.
#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/logging/header_block.h"
#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "support/capture_receiver.h"

namespace {

using logging::header_source_t;

struct fake_source_t : header_source_t {
  std::string path = "C:\\Agent\\agent.exe";
  std::string version = "7.1.2.3";
  std::string comments = "Backup agent";
  bool path_fails = false;
  bool version_fails = false;
  bool os_fails = false;

  std::string module_path() const override {
    if (path_fails) {
      throw exc::win_sys_exc_t(
          "Fully-qualified path for the executable file cannot be retrieved.", 122);
    }
    return path;
  }
  std::string module_version(const std::string& module_path,
                             std::string& out_comments) const override {
    if (version_fails) throw exc::runtime_exc_t("Size of the version resource is unknown.");
    out_comments = comments;
    return version;
  }
  std::string os_version() const override {
    if (os_fails) throw exc::win_sys_exc_t("Failed to determine operating system version", 5);
    return "Windows 8.1 (6.3.9600)";
  }
  uint32_t process_id() const override { return 4711; }
};

struct header_log_t {
  std::shared_ptr<dsl_test::capture_receiver_t> receiver =
      std::make_shared<dsl_test::capture_receiver_t>();
  std::shared_ptr<logging::log_t> log = std::make_shared<logging::log_t>(receiver);
  logging::log_channel_t channel{log, ""};
};

const std::string kRule(77, '=');

TEST(HeaderBlock, BracesStandAtTheCallersIndentAndTheLinesTwoBlanksDeeper) {
  header_log_t out;
  fake_source_t source;
  logging::write_header_block(out.channel, source);
  const std::vector<std::string> expected = {
      "",
      kRule,
      "{",
      "  Path to the executable module: C:\\Agent\\agent.exe",
      "  Module version: 7.1.2.3",
      "  Comments: Backup agent",
      "  OS version: Windows 8.1 (6.3.9600)",
      "  Process Id: 4711",
      "}",
  };
  EXPECT_EQ(out.receiver->bodies(), expected);
}

TEST(HeaderBlock, IsWrittenOnTheChannelsPrefixAtTheCurrentIndent) {
  header_log_t out;
  logging::log_channel_t channel(out.log, "oralib");
  out.log->indent_more();
  fake_source_t source;
  logging::write_header_block(channel, source);
  out.log->indent_less();
  const auto bodies = out.receiver->bodies();
  ASSERT_EQ(bodies.size(), 9u);
  EXPECT_EQ(bodies[2], "oralib|   {");
  EXPECT_EQ(bodies[3], "oralib|     Path to the executable module: C:\\Agent\\agent.exe");
  EXPECT_EQ(bodies[8], "oralib|   }");
}

TEST(HeaderBlock, AnEmptyCommentGivesNoCommentsLine) {
  header_log_t out;
  fake_source_t source;
  source.comments = "";
  logging::write_header_block(out.channel, source);
  for (const auto& body : out.receiver->bodies()) {
    EXPECT_EQ(body.find("Comments:"), std::string::npos) << body;
  }
  EXPECT_EQ(out.receiver->bodies().size(), 8u);
}

TEST(HeaderBlock, AModulePathThatCannotBeHadReplacesTheModuleLinesByAnError) {
  header_log_t out;
  fake_source_t source;
  source.path_fails = true;
  logging::write_header_block(out.channel, source);
  const auto bodies = out.receiver->bodies();
  ASSERT_GE(bodies.size(), 8u);
  EXPECT_EQ(bodies[2], "{");
  // The error stands on the blank format, unindented, with the system text first.
  size_t at = 3;
  ASSERT_EQ(bodies[at].substr(0, 10), "     ERR |") << bodies[at];
  std::string error;
  while (at < bodies.size() && bodies[at].substr(0, 5) == "     ") error += bodies[at++] + "\n";
  EXPECT_NE(error.find(">>  |Fully-qualified path for the executable file cannot be retrieved."),
            std::string::npos)
      << error;
  EXPECT_NE(error.find(">>  |An exception was thrown from thread ["), std::string::npos) << error;
  for (const auto& body : bodies) {
    EXPECT_EQ(body.find("Module version"), std::string::npos);
    EXPECT_EQ(body.find("Path to the executable"), std::string::npos);
  }
  ASSERT_EQ(bodies.size() - at, 3u);
  EXPECT_EQ(bodies[at], "  OS version: Windows 8.1 (6.3.9600)");
  EXPECT_EQ(bodies[at + 1], "  Process Id: 4711");
  EXPECT_EQ(bodies[at + 2], "}");
}

TEST(HeaderBlock, AVersionThatCannotBeHadKeepsThePathLineAndDropsTheRestOfTheGroup) {
  header_log_t out;
  fake_source_t source;
  source.version_fails = true;
  logging::write_header_block(out.channel, source);
  const auto bodies = out.receiver->bodies();
  ASSERT_GE(bodies.size(), 5u);
  EXPECT_EQ(bodies[3], "  Path to the executable module: C:\\Agent\\agent.exe");
  EXPECT_EQ(bodies[4], "     ERR |Size of the version resource is unknown.");
  for (const auto& body : bodies) EXPECT_EQ(body.find("Comments"), std::string::npos);
  EXPECT_EQ(bodies[bodies.size() - 3], "  OS version: Windows 8.1 (6.3.9600)");
}

TEST(HeaderBlock, AnOperatingSystemThatCannotBeNamedStillLeavesTheProcessLine) {
  header_log_t out;
  fake_source_t source;
  source.os_fails = true;
  logging::write_header_block(out.channel, source);
  const auto bodies = out.receiver->bodies();
  EXPECT_EQ(bodies[5], "  Comments: Backup agent");
  EXPECT_EQ(bodies[6].substr(0, 10), "     ERR |");
  EXPECT_EQ(bodies[bodies.size() - 2], "  Process Id: 4711");
  EXPECT_EQ(bodies.back(), "}");
}

TEST(PlatformHeaderSource, NamesThisProcess) {
  const header_source_t& source = logging::platform_header_source();
  const std::string path = source.module_path();
  EXPECT_NE(path.find("unit_log_files"), std::string::npos) << path;
  EXPECT_GT(source.process_id(), 0u);
  const std::string os = source.os_version();
  const std::regex shape(R"(.+ \(\d+\.\d+\.\d+\)( Service Pack \d+(\.\d+)?)?)");
  EXPECT_TRUE(std::regex_match(os, shape)) << os;
}

}  // namespace
