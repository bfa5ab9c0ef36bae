#include "common/logging/log.h"

#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <cstdio>
#include <future>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "common/win/local_time.h"
#include "common/win/thread_id.h"
#include "private_log.h"
#include "support/capture_receiver.h"

namespace {

using dsl_test::private_log_t;
using logging::log_t;
using strings = std::vector<std::string>;

// A receiver whose write fails, either with a standard exception or with something else.
class failing_receiver_t : public dsl_test::capture_receiver_t {
 public:
  enum class how { none, standard, other };
  void write(const std::string& text) override {
    if (fail == how::standard) throw std::runtime_error("disk full");
    if (fail == how::other) throw 7;
    capture_receiver_t::write(text);
  }
  how fail = how::none;
};

class crlf_receiver_t : public dsl_test::capture_receiver_t {
 public:
  std::string eol() const override { return "\r\n"; }
};

class upper_translator_t : public exc::text_translator_t {
 public:
  std::string translate(const std::string& text) override {
    std::string out = text;
    for (auto& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return "[" + out + "]";
  }
};

std::string thread_column(uint32_t id) {
  std::string digits = std::to_string(id);
  if (digits.size() < 6) digits.insert(0, 6 - digits.size(), ' ');
  return "<" + digits + "> ";
}

TEST(Log, InstanceIsOneObjectForTheProcess) {
  EXPECT_NE(log_t::instance(), nullptr);
  EXPECT_EQ(log_t::instance().get(), log_t::instance().get());
}

TEST(Log, NewLogHasNoReceiverAndIsNotOpened) {
  log_t log;
  EXPECT_EQ(log.file(), nullptr);
  EXPECT_FALSE(log.opened());
  log.mark_opened();
  EXPECT_TRUE(log.opened());
}

TEST(Log, LinesWrittenBeforeTheReceiverIsSetVanishWithoutFailing) {
  auto log = std::make_shared<log_t>();
  logging::log_channel_t channel(log, "oralib");
  EXPECT_NO_THROW(channel.info("lost"));
  EXPECT_NO_THROW(channel.error("lost too"));
  auto receiver = std::make_shared<dsl_test::capture_receiver_t>();
  log->set_file(receiver);
  channel.info("kept");
  EXPECT_EQ(receiver->bodies(), (strings{"oralib| kept"}));
}

TEST(Log, LineStartsWithLocalStampAndRightAlignedThreadId) {
  private_log_t p;
  win::local_time_t before, after;
  ASSERT_TRUE(win::current_local_time(before));
  p.channel.info("x");
  ASSERT_TRUE(win::current_local_time(after));
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 1u);
  const std::string tail = thread_column(win::current_thread_id()) + "x";
  const std::string at_before = logging::format::stamp_text(&before) + tail;
  const std::string at_after = logging::format::stamp_text(&after) + tail;
  EXPECT_TRUE(lines[0] == at_before || lines[0] == at_after) << lines[0];
}

TEST(Log, InformationOfTwoLinesGivesTwoLinesWithoutMark) {
  private_log_t p;
  p.channel.info("first\nsecond");
  EXPECT_EQ(p.bodies(), (strings{"first", "second"}));
}

TEST(Log, EveryPhysicalLineCarriesStampAndThread) {
  private_log_t p;
  p.channel.warn("a\nb\nc");
  const std::regex head(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] < *\d+> )");
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 3u);
  for (const auto& l : lines) EXPECT_TRUE(std::regex_search(l, head)) << l;
}

TEST(Log, WarningOfTwoLinesIsMarkedWarnThenContinuation) {
  private_log_t p;
  p.channel.warn("first\nsecond");
  EXPECT_EQ(p.bodies(), (strings{"WARN|first", ">>  |second"}));
}

TEST(Log, ErrorOfThreeLinesIsMarkedErrThenContinuation) {
  private_log_t p("oralib");
  p.channel.error("a\nb\nc");
  EXPECT_EQ(p.bodies(), (strings{"oralib| ERR |a", "oralib| >>  |b", "oralib| >>  |c"}));
}

TEST(Log, EmptyTextGivesOneLineWithStampThreadAndPrefixOnly) {
  private_log_t p("oralib");
  p.channel.info("");
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(p.bodies(), (strings{"oralib| "}));
  EXPECT_EQ(p.writes().at(0).back(), '\n');
}

TEST(Log, TextEndingInLineFeedGivesNoEmptyLastLine) {
  private_log_t p;
  p.channel.warn("one\ntwo\n");
  EXPECT_EQ(p.bodies(), (strings{"WARN|one", ">>  |two"}));
}

TEST(Log, LoneLineFeedGivesOneEmptyLine) {
  private_log_t p;
  p.channel.info("\n");
  EXPECT_EQ(p.bodies(), (strings{""}));
}

TEST(Log, EmptyLinesInsideTheTextAreKept) {
  private_log_t p;
  p.channel.info("a\n\nb");
  EXPECT_EQ(p.bodies(), (strings{"a", "", "b"}));
}

TEST(Log, WholeMessageGoesToTheReceiverInOneWrite) {
  private_log_t p;
  p.channel.error("a\nb\nc");
  p.channel.info("d");
  ASSERT_EQ(p.writes().size(), 2u);
}

TEST(Log, LinesEndWithTheReceiversLineEnd) {
  auto receiver = std::make_shared<crlf_receiver_t>();
  auto log = std::make_shared<log_t>(receiver);
  logging::log_channel_t channel(log, "");
  channel.info("a\nb");
  const auto writes = receiver->writes();
  ASSERT_EQ(writes.size(), 1u);
  const auto& w = writes[0];
  EXPECT_EQ(w.substr(w.size() - 3), "b\r\n");
  EXPECT_NE(w.find("a\r\n"), std::string::npos);
}

TEST(Log, DisabledLogDropsEveryLine) {
  private_log_t p;
  p.log->set_disabled(true);
  p.channel.info("dropped");
  p.channel.error("dropped");
  EXPECT_TRUE(p.writes().empty());
  p.log->set_disabled(false);
  p.channel.info("kept");
  EXPECT_EQ(p.bodies(), (strings{"kept"}));
}

TEST(Log, WriteWithoutFormatIsDropped) {
  private_log_t p;
  p.log->write(logging::kLevelInfo, 0, nullptr, "no format");
  EXPECT_TRUE(p.writes().empty());
}

TEST(Log, StandardFailureOfTheReceiverIsSwallowed) {
  auto receiver = std::make_shared<failing_receiver_t>();
  auto log = std::make_shared<log_t>(receiver);
  logging::log_channel_t channel(log, "");
  receiver->fail = failing_receiver_t::how::standard;
  EXPECT_NO_THROW(channel.error("lost"));
  receiver->fail = failing_receiver_t::how::none;
  channel.info("after");
  EXPECT_EQ(receiver->bodies(), (strings{"after"}));
}

TEST(Log, LockIsReleasedAfterASwallowedFailure) {
  auto receiver = std::make_shared<failing_receiver_t>();
  auto log = std::make_shared<log_t>(receiver);
  logging::log_channel_t channel(log, "");
  receiver->fail = failing_receiver_t::how::standard;
  channel.info("lost");
  receiver->fail = failing_receiver_t::how::none;
  auto other = std::async(std::launch::async, [&] { channel.info("from another thread"); });
  ASSERT_EQ(other.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(receiver->bodies(), (strings{"from another thread"}));
}

TEST(Log, NonStandardFailureOfTheReceiverPassesOn) {
  auto receiver = std::make_shared<failing_receiver_t>();
  auto log = std::make_shared<log_t>(receiver);
  logging::log_channel_t channel(log, "");
  receiver->fail = failing_receiver_t::how::other;
  EXPECT_THROW(channel.info("x"), int);
  // The lock was released on the way out.
  receiver->fail = failing_receiver_t::how::none;
  auto other = std::async(std::launch::async, [&] { channel.info("later"); });
  ASSERT_EQ(other.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(receiver->bodies(), (strings{"later"}));
}

TEST(Log, TranslatorIsAppliedToEachPiece) {
  private_log_t p("cli");
  p.log->set_translator(std::make_shared<upper_translator_t>());
  p.channel.warn("ab\ncd");
  EXPECT_EQ(p.bodies(), (strings{"cli| WARN|[AB]", "cli| >>  |[CD]"}));
}

TEST(Log, StyleOneWritesShortThreadAndLevelWord) {
  private_log_t p("oralib");
  p.log->set_style(1);
  p.channel.warn("a\nb");
  const auto lines = p.lines();
  ASSERT_EQ(lines.size(), 2u);
  const std::regex layout(R"(^\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] <[ \d]\d> Warning  [ab]$)");
  for (const auto& l : lines) EXPECT_TRUE(std::regex_search(l, layout)) << l;
  char thread[8];
  std::snprintf(thread, sizeof thread, "<%2u> ", win::current_thread_id() % 100);
  EXPECT_NE(lines[0].find(thread), std::string::npos) << lines[0];
}

// --- rotation -------------------------------------------------------------------------------

struct rotation_counter_t {
  explicit rotation_counter_t(log_t& log) {
    log.set_rotate_handler([this](log_t&) { ++calls; });
  }
  int calls = 0;
};

TEST(Log, RotationIsCheckedOnceEveryThousandWrites) {
  private_log_t p;
  rotation_counter_t counter(*p.log);
  p.log->set_rotate_enabled(true);
  for (int i = 0; i < 999; ++i) p.channel.info("x");
  EXPECT_EQ(counter.calls, 0);
  p.channel.info("x");
  EXPECT_EQ(counter.calls, 1);
  for (int i = 0; i < 1000; ++i) p.channel.info("x");
  EXPECT_EQ(counter.calls, 2);
}

TEST(Log, RotationCounterCountsWritesNotLines) {
  private_log_t p;
  rotation_counter_t counter(*p.log);
  p.log->set_rotate_enabled(true);
  for (int i = 0; i < 999; ++i) p.channel.info("two\nlines");
  EXPECT_EQ(counter.calls, 0);
  p.channel.info("x");
  EXPECT_EQ(counter.calls, 1);
}

TEST(Log, RotationIsNotCheckedWhenNotEnabled) {
  private_log_t p;
  rotation_counter_t counter(*p.log);
  for (int i = 0; i < 2500; ++i) p.channel.info("x");
  EXPECT_EQ(counter.calls, 0);
}

TEST(Log, FailedRotationIsDroppedAndTriedAgainAThousandWritesLater) {
  private_log_t p;
  int calls = 0;
  p.log->set_rotate_handler([&](log_t&) {
    ++calls;
    throw std::runtime_error("cannot rotate");
  });
  p.log->set_rotate_enabled(true);
  for (int i = 0; i < 1000; ++i) ASSERT_NO_THROW(p.channel.info("x"));
  EXPECT_EQ(calls, 1);
  for (int i = 0; i < 999; ++i) p.channel.info("x");
  EXPECT_EQ(calls, 1);
  p.channel.info("x");
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(p.writes().size(), 2000u);
}

TEST(Log, RotationHandlerMayWriteToTheSameLog) {
  private_log_t p;
  logging::log_channel_t& channel = p.channel;
  p.log->set_rotate_handler([&](log_t&) { channel.info("rotated"); });
  p.log->set_rotate_enabled(true);
  for (int i = 0; i < 1000; ++i) channel.info("x");
  const auto bodies = p.bodies();
  ASSERT_EQ(bodies.size(), 1001u);
  EXPECT_EQ(bodies.back(), "rotated");
}

TEST(Log, RotateCheckCallsTheHandlerWithTheLog) {
  private_log_t p;
  log_t* seen = nullptr;
  p.log->set_rotate_handler([&](log_t& l) { seen = &l; });
  p.log->rotate_check();
  EXPECT_EQ(seen, p.log.get());
}

TEST(Log, RotateCheckWithoutReceiverOrHandlerDoesNothing) {
  log_t log;
  int calls = 0;
  log.set_rotate_handler([&](log_t&) { ++calls; });
  EXPECT_NO_THROW(log.rotate_check());
  EXPECT_EQ(calls, 0);
  private_log_t p;
  EXPECT_NO_THROW(p.log->rotate_check());
}

// --- indent ---------------------------------------------------------------------------------

TEST(Log, IndentStartsAtZeroAndFollowsMoreAndLess) {
  log_t log;
  EXPECT_EQ(log.current_indent(), 0);
  log.indent_more();
  log.indent_more();
  EXPECT_EQ(log.current_indent(), 2);
  log.indent_less();
  EXPECT_EQ(log.current_indent(), 1);
  log.indent_less();
  EXPECT_EQ(log.current_indent(), 0);
}

TEST(Log, IndentLessAtZeroStaysAtZero) {
  log_t log;
  log.indent_less();
  log.indent_less();
  EXPECT_EQ(log.current_indent(), 0);
  log.indent_more();
  EXPECT_EQ(log.current_indent(), 1);
  log.indent_less();
}

TEST(Log, IndentIsKeptPerThread) {
  log_t log;
  log.indent_more();
  int seen_there = -1;
  std::thread other([&] {
    seen_there = log.current_indent();
    log.indent_more();
    log.indent_more();
  });
  other.join();
  EXPECT_EQ(seen_there, 0);
  EXPECT_EQ(log.current_indent(), 1);
  log.indent_less();
}

TEST(Log, IndentIsKeptPerLog) {
  log_t first;
  log_t second;
  first.indent_more();
  EXPECT_EQ(second.current_indent(), 0);
  second.indent_more();
  second.indent_more();
  EXPECT_EQ(first.current_indent(), 1);
  EXPECT_EQ(second.current_indent(), 2);
  first.indent_less();
  second.indent_less();
  second.indent_less();
}

TEST(Log, ManyShortLivedLogsDoNotDisturbTheNestingOfALivingOne) {
  log_t kept;
  kept.indent_more();
  for (int i = 0; i < 50; ++i) {
    log_t passing;
    passing.indent_more();
    passing.indent_less();
  }
  EXPECT_EQ(kept.current_indent(), 1);
  kept.indent_less();
}

TEST(Log, NewLogDoesNotInheritTheNestingOfOneThatIsGone) {
  {
    auto gone = std::make_unique<log_t>();
    gone->indent_more();  // left nested on purpose
  }
  log_t fresh;
  EXPECT_EQ(fresh.current_indent(), 0);
}

TEST(Log, LogsBeyondTheIndentStorageWriteUnindentedAndFreeItWhenGone) {
  std::vector<std::unique_ptr<private_log_t>> logs;
  for (int i = 0; i < 40; ++i) logs.push_back(std::make_unique<private_log_t>());
  int unindented = 0;
  for (auto& p : logs) {
    p->log->indent_more();
    p->channel.info("x");
    const auto bodies = p->bodies();
    ASSERT_EQ(bodies.size(), 1u);
    if (p->log->current_indent() == 0) {
      ++unindented;
      EXPECT_EQ(bodies[0], "x");
    } else {
      EXPECT_EQ(bodies[0], "  x");
    }
    p->log->indent_less();
  }
  EXPECT_GT(unindented, 0);
  EXPECT_LT(unindented, 40);
  logs.clear();
  log_t later;
  later.indent_more();
  EXPECT_EQ(later.current_indent(), 1);
  later.indent_less();
}

// --- threads --------------------------------------------------------------------------------

TEST(Log, ConcurrentWritersInterleaveWholeMessagesOnly) {
  private_log_t p;
  constexpr int kMessages = 400;
  auto writer = [&](char who) {
    for (int i = 0; i < kMessages; ++i) {
      const std::string id = std::string(1, who) + std::to_string(i);
      p.channel.warn(id + " part0\n" + id + " part1\n" + id + " part2");
    }
  };
  std::thread a(writer, 'A');
  std::thread b(writer, 'B');
  a.join();
  b.join();

  const auto bodies = p.bodies();
  ASSERT_EQ(bodies.size(), 2u * kMessages * 3);
  int seen_a = 0, seen_b = 0;
  for (size_t k = 0; k < bodies.size(); k += 3) {
    const std::string first = bodies[k];
    ASSERT_EQ(first.rfind("WARN|", 0), 0u) << first;
    const std::string id = first.substr(5, first.find(' ') - 5);
    EXPECT_EQ(bodies[k], "WARN|" + id + " part0");
    EXPECT_EQ(bodies[k + 1], ">>  |" + id + " part1");
    EXPECT_EQ(bodies[k + 2], ">>  |" + id + " part2");
    (id[0] == 'A' ? seen_a : seen_b)++;
  }
  EXPECT_EQ(seen_a, kMessages);
  EXPECT_EQ(seen_b, kMessages);
}

}  // namespace
