#include "common/exc/exc_log.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/thread_id.h"
#include "private_log.h"

namespace {

using dsl_test::private_log_t;
using strings = std::vector<std::string>;

// An exception whose what() has no text at all.
class null_what_t : public std::exception {
 public:
  const char* what() const noexcept override { return nullptr; }
};

std::string this_thread() { return std::to_string(win::current_thread_id()); }

TEST(ExcLog, WarningOfAnExceptionIsItsText) {
  private_log_t p;
  exc::log_warn(p.channel, exc::runtime_exc_t("Inner."));
  EXPECT_EQ(p.bodies(), (strings{"WARN|Inner."}));
}

TEST(ExcLog, WarningWithTextGivesTwoLinesMarkedWarnThenContinuation) {
  private_log_t p("oralib");
  exc::log_warn(p.channel, "Could not close.", exc::runtime_exc_t("Handle is gone."));
  EXPECT_EQ(p.bodies(), (strings{"oralib| WARN|Could not close.", "oralib| >>  |Handle is gone."}));
}

TEST(ExcLog, WarningShowsEveryLineOfTheChainWithTraceMarks) {
  private_log_t p;
  exc::runtime_exc_t e("Inner.");
  e.add_trace("step");
  e.add_message("Outer.");
  exc::log_warn(p.channel, e);
  EXPECT_EQ(p.bodies(), (strings{"WARN|Inner.", ">>  |--tr:step", ">>  |Outer."}));
}

TEST(ExcLog, WarningTemplatesTakeOneOrTwoArguments) {
  private_log_t p;
  exc::log_warn(p.channel, "File [%1].", "a.log", std::runtime_error("busy"));
  exc::log_warn(p.channel, "[%1] to [%2].", "a", "b", std::runtime_error("no"));
  EXPECT_EQ(p.bodies(), (strings{"WARN|File [a.log].", ">>  |busy", "WARN|[a] to [b].", ">>  |no"}));
}

TEST(ExcLog, WarningsDoNotNameTheThread) {
  private_log_t p;
  exc::log_warn(p.channel, "Context.", exc::runtime_exc_t("Inner."));
  for (const auto& b : p.bodies()) EXPECT_EQ(b.find("An exception was thrown"), std::string::npos);
}

TEST(ExcLog, ErrorPutsTheThreadSentenceOnAContinuationLine) {
  private_log_t p;
  exc::log_error(p.channel, exc::runtime_exc_t("Boom."));
  EXPECT_EQ(p.bodies(), (strings{"ERR |Boom.",
                                 ">>  |An exception was thrown from thread [" + this_thread() + "]."}));
}

TEST(ExcLog, ErrorWithTextGivesTextExceptionAndThreadLines) {
  private_log_t p("oralib");
  exc::log_error(p.channel, "Backup failed.", exc::runtime_exc_t("Disk full."));
  EXPECT_EQ(p.bodies(),
            (strings{"oralib| ERR |Backup failed.", "oralib| >>  |Disk full.",
                     "oralib| >>  |An exception was thrown from thread [" + this_thread() + "]."}));
}

TEST(ExcLog, ErrorTemplateTakesOneArgument) {
  private_log_t p;
  exc::log_error(p.channel, "Instance [%1].", "ORCL", exc::runtime_exc_t("Down."));
  EXPECT_EQ(p.bodies(), (strings{"ERR |Instance [ORCL].", ">>  |Down.",
                                 ">>  |An exception was thrown from thread [" + this_thread() + "]."}));
}

TEST(ExcLog, ErrorNamesTheThreadWhereTheExceptionAroseNotTheLoggingOne) {
  private_log_t p;
  exc::exc_ptr_t captured;
  uint32_t origin = 0;
  std::thread worker([&] {
    origin = win::current_thread_id();
    captured = exc::runtime_exc_t("Worker failed.").clone();
  });
  worker.join();
  ASSERT_NE(origin, win::current_thread_id());
  exc::log_error(p.channel, *captured);
  EXPECT_EQ(p.bodies(), (strings{"ERR |Worker failed.",
                                 ">>  |An exception was thrown from thread [" +
                                     std::to_string(origin) + "]."}));
}

TEST(ExcLog, ForeignExceptionHasNoKnownThread) {
  private_log_t p;
  exc::log_error(p.channel, std::runtime_error("foreign"));
  EXPECT_EQ(p.bodies(), (strings{"ERR |foreign", ">>  |An exception was thrown from thread [n/a]."}));
}

TEST(ExcLog, ThreadIdZeroGivesNotAvailable) {
  EXPECT_EQ(exc::thread_line(0u), "\nAn exception was thrown from thread [n/a].");
  EXPECT_EQ(exc::thread_line(1234u), "\nAn exception was thrown from thread [1234].");
}

TEST(ExcLog, ThreadLineOfAFamilyMemberNamesItsThread) {
  EXPECT_EQ(exc::thread_line(exc::runtime_exc_t("x")),
            "\nAn exception was thrown from thread [" + this_thread() + "].");
  EXPECT_EQ(exc::thread_line(std::logic_error("x")),
            "\nAn exception was thrown from thread [n/a].");
}

TEST(ExcLog, WarningWithoutMessageBecomesAnErrorSayingSo) {
  private_log_t p;
  exc::log_warn(p.channel, null_what_t());
  EXPECT_EQ(p.bodies(), (strings{"ERR |Exception message is not available."}));
}

TEST(ExcLog, ErrorWithoutMessageSaysSoAndNamesNoThread) {
  private_log_t p;
  exc::log_error(p.channel, null_what_t());
  EXPECT_EQ(p.bodies(), (strings{"ERR |Exception message is not available.",
                                 ">>  |An exception was thrown from thread [n/a]."}));
}

TEST(ExcLog, TextWithoutExceptionMessageStandsAlone) {
  private_log_t p;
  exc::log_warn(p.channel, "Context.", null_what_t());
  exc::log_error(p.channel, "Context.", null_what_t());
  EXPECT_EQ(p.bodies(), (strings{"WARN|Context.", "ERR |Context.",
                                 ">>  |An exception was thrown from thread [n/a]."}));
}

TEST(ExcLog, ExceptionWithEmptyChainAddsNoEmptyLastLine) {
  // Its empty what() leaves the message ending in a line feed, which makes no further line.
  private_log_t p;
  exc::log_warn(p.channel, "Context.", exc::exc_base_t());
  EXPECT_EQ(p.bodies(), (strings{"WARN|Context."}));
}

TEST(ExcLog, ErrorsAreNotIndentedInsideNesting) {
  private_log_t p;
  p.log->indent_more();
  exc::log_error(p.channel, std::runtime_error("x"));
  p.log->indent_less();
  EXPECT_EQ(p.bodies().at(0), "ERR |x");
}

}  // namespace
