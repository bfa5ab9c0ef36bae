#include "common/logging/log_step.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "private_log.h"
#include "support/capture_receiver.h"

namespace {

using dsl_test::private_log_t;
using logging::log_step_t;
using strings = std::vector<std::string>;

TEST(LogStep, OkAfterInnerStepsNestsInnerLinesAndEndsAtStartDepth) {
  private_log_t p("oralib");
  {
    log_step_t outer(p.channel, "Backup.");
    {
      log_step_t inner(p.channel, "Copy.");
      p.channel.info("copying");
      inner.ok();
    }
    p.channel.info("between");
    outer.ok();
  }
  EXPECT_EQ(p.bodies(), (strings{"oralib| Backup.",
                                 "oralib|   Copy.",
                                 "oralib|     copying",
                                 "oralib|   Copy. ok.",
                                 "oralib|   between",
                                 "oralib| Backup. ok."}));
  EXPECT_EQ(p.log->current_indent(), 0);
}

TEST(LogStep, CallingOkTwiceWritesOneEndLine) {
  private_log_t p;
  {
    log_step_t step(p.channel, "Work.");
    step.ok();
    step.ok();
  }
  EXPECT_EQ(p.bodies(), (strings{"Work.", "Work. ok."}));
  EXPECT_EQ(p.log->current_indent(), 0);
}

TEST(LogStep, StepLeftWithoutOkReportsFailed) {
  private_log_t p;
  auto work = [&](bool early) {
    log_step_t step(p.channel, "Work.");
    if (early) return;
    step.ok();
  };
  work(true);
  EXPECT_EQ(p.bodies(), (strings{"Work.", "Work. Failed."}));
  EXPECT_EQ(p.log->current_indent(), 0);
}

TEST(LogStep, StepLeftByAnExceptionReportsFailedAtStartDepth) {
  private_log_t p;
  p.log->indent_more();
  try {
    log_step_t step(p.channel, "Open.");
    p.channel.info("inside");
    throw std::runtime_error("no");
  } catch (const std::runtime_error&) {
  }
  p.log->indent_less();
  EXPECT_EQ(p.bodies(), (strings{"  Open.", "    inside", "  Open. Failed."}));
  EXPECT_EQ(p.log->current_indent(), 0);
}

TEST(LogStep, FailureEndIsAnInformationLineNotAWarning) {
  private_log_t p;
  p.log->set_style(1);  // the only layout that tells steps from information and warnings
  { log_step_t step(p.channel, "Work."); }
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[1].find("> Info     Work. Failed."), std::string::npos) << lines[1];
}

TEST(LogStep, WarningInsideAStepStaysAtTheLeftEdge) {
  private_log_t p;
  {
    log_step_t step(p.channel, "Work.");
    p.channel.warn("careful");
    step.ok();
  }
  EXPECT_EQ(p.bodies(), (strings{"Work.", "WARN|careful", "Work. ok."}));
}

TEST(LogStep, TemplateWithOneArgumentOnAGivenChannel) {
  private_log_t p("cli");
  {
    log_step_t step(p.channel, "Closing [%1].", "out");
    step.ok();
  }
  EXPECT_EQ(p.bodies(), (strings{"cli| Closing [out].", "cli| Closing [out]. ok."}));
}

TEST(LogStep, TemplatesWithTwoOrThreeArgumentsGoToOralib) {
  dsl_test::capture_log_t capture;
  {
    log_step_t two("Start [%1] in [%2].", "ORCL", "C:\\ora");
    two.ok();
  }
  {
    log_step_t three("%1 %2 %3", "a", "b", "c");
    three.ok();
  }
  EXPECT_EQ(capture.bodies(), (strings{"oralib| Start [ORCL] in [C:\\ora].",
                                       "oralib| Start [ORCL] in [C:\\ora]. ok.",
                                       "oralib| a b c",
                                       "oralib| a b c ok."}));
  EXPECT_EQ(logging::log_t::instance()->current_indent(), 0);
}

TEST(LogStep, StepsOfTwoThreadsKeepTheirOwnNesting) {
  private_log_t p;
  log_step_t mine(p.channel, "Mine.");
  std::thread other([&] {
    log_step_t theirs(p.channel, "Theirs.");
    p.channel.info("their inner");
    theirs.ok();
  });
  other.join();
  p.channel.info("my inner");
  mine.ok();
  EXPECT_EQ(p.bodies(), (strings{"Mine.", "Theirs.", "  their inner", "Theirs. ok.",
                                 "  my inner", "Mine. ok."}));
}

// A receiver that starts throwing a non-standard exception on request.
class throwing_receiver_t : public dsl_test::capture_receiver_t {
 public:
  void write(const std::string& text) override {
    if (armed) throw 42;
    capture_receiver_t::write(text);
  }
  bool armed = false;
};

TEST(LogStep, DestructorLetsNoExceptionEscape) {
  auto receiver = std::make_shared<throwing_receiver_t>();
  auto log = std::make_shared<logging::log_t>(receiver);
  logging::log_channel_t channel(log, "");
  EXPECT_NO_THROW({
    log_step_t step(channel, "Work.");
    receiver->armed = true;
  });
  EXPECT_EQ(receiver->bodies(), (strings{"Work."}));
  EXPECT_EQ(log->current_indent(), 0);
}

TEST(LogStep, StepBeforeAnyReceiverVanishesAndStillBalancesTheIndent) {
  auto log = std::make_shared<logging::log_t>();
  logging::log_channel_t channel(log, "");
  {
    log_step_t step(channel, "Early.");
    EXPECT_EQ(log->current_indent(), 1);
  }
  EXPECT_EQ(log->current_indent(), 0);
}

}  // namespace
