#include "common/logging/line_format.h"

#include <gtest/gtest.h>

#include "common/logging/log.h"

namespace {

using logging::format::line_format_t;
using logging::format::line_head_t;

win::local_time_t a_moment() {
  win::local_time_t t;
  t.year = 2024;
  t.month = 3;
  t.day = 5;
  t.hour = 7;
  t.minute = 8;
  t.second = 9;
  return t;
}

std::string line_of(const line_format_t& format, const line_head_t& head,
                    const std::string& text, const std::string& eol = "\n") {
  std::string out;
  format.append_line(out, head, text, eol);
  return out;
}

line_head_t head_at(const win::local_time_t* time, int level, size_t piece = 0,
                    int indent = 0, uint32_t thread_id = 42, uint32_t style = 0) {
  line_head_t h;
  h.style = style;
  h.level = level;
  h.piece = piece;
  h.indent = indent;
  h.time = time;
  h.thread_id = thread_id;
  return h;
}

TEST(LineFormat, EmptyChannelNameGivesEmptyPrefix) {
  EXPECT_EQ(line_format_t("").prefix(), "");
}

TEST(LineFormat, ChannelNameIsFollowedByBarAndBlank) {
  EXPECT_EQ(line_format_t("oralib").prefix(), "oralib| ");
  EXPECT_EQ(line_format_t("dt ").prefix(), "dt | ");
}

TEST(LineFormat, BlankFormatHasFiveBlanks) {
  EXPECT_EQ(line_format_t::blank().prefix(), "     ");
}

TEST(LineFormat, StampFieldsAreZeroFilledDayFirst) {
  const auto t = a_moment();
  EXPECT_EQ(logging::format::stamp_text(&t), "[05.03.2024 07:08:09] ");
}

TEST(LineFormat, StampYearHasFourDigits) {
  auto t = a_moment();
  t.year = 987;
  EXPECT_EQ(logging::format::stamp_text(&t), "[05.03.0987 07:08:09] ");
}

TEST(LineFormat, MissingLocalTimeGivesTimeDashesWithoutBracketsOrBlank) {
  EXPECT_EQ(logging::format::stamp_text(nullptr), "TIME ---");
  EXPECT_EQ(line_of(line_format_t(""), head_at(nullptr, logging::kLevelInfo), "x"),
            "TIME ---<    42> x\n");
}

TEST(LineFormat, InformationLineHasStampThreadPrefixAndText) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t("oralib"), head_at(&t, logging::kLevelInfo), "Hello"),
            "[05.03.2024 07:08:09] <    42> oralib| Hello\n");
}

TEST(LineFormat, ThreadIdIsRightAlignedInSixColumns) {
  const auto t = a_moment();
  line_format_t f("");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelInfo, 0, 0, 7), ""),
            "[05.03.2024 07:08:09] <     7> \n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelInfo, 0, 0, 123456), ""),
            "[05.03.2024 07:08:09] <123456> \n");
  // A longer id is shown whole rather than cut.
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelInfo, 0, 0, 1234567), ""),
            "[05.03.2024 07:08:09] <1234567> \n");
}

TEST(LineFormat, IndentIsTwoBlanksPerLevelAfterPrefix) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t("cli"), head_at(&t, logging::kLevelStep, 0, 3), "deep"),
            "[05.03.2024 07:08:09] <    42> cli|       deep\n");
}

TEST(LineFormat, NegativeIndentCountsAsNone) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t(""), head_at(&t, logging::kLevelInfo, 0, -2), "x"),
            "[05.03.2024 07:08:09] <    42> x\n");
}

TEST(LineFormat, WarningFirstLineIsMarkedWarn) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t("oralib"), head_at(&t, logging::kLevelWarning), "w"),
            "[05.03.2024 07:08:09] <    42> oralib| WARN|w\n");
}

TEST(LineFormat, ErrorFirstLineIsMarkedErr) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t(""), head_at(&t, logging::kLevelError), "e"),
            "[05.03.2024 07:08:09] <    42> ERR |e\n");
}

TEST(LineFormat, LaterLinesOfWarningsAndErrorsAreMarkedAsContinuation) {
  const auto t = a_moment();
  line_format_t f("");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelWarning, 1), "more"),
            "[05.03.2024 07:08:09] <    42> >>  |more\n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelError, 2), "more"),
            "[05.03.2024 07:08:09] <    42> >>  |more\n");
}

TEST(LineFormat, StepAndInformationLinesHaveNoMarkOnAnyPiece) {
  const auto t = a_moment();
  line_format_t f("");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelStep, 1), "s"),
            "[05.03.2024 07:08:09] <    42> s\n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelInfo, 1), "i"),
            "[05.03.2024 07:08:09] <    42> i\n");
}

TEST(LineFormat, WarningMarkComesBeforeTheIndent) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t(""), head_at(&t, logging::kLevelWarning, 0, 1), "w"),
            "[05.03.2024 07:08:09] <    42> WARN|  w\n");
}

TEST(LineFormat, LineEndIsTheOneGiven) {
  const auto t = a_moment();
  EXPECT_EQ(line_of(line_format_t(""), head_at(&t, logging::kLevelInfo), "x", "\r\n"),
            "[05.03.2024 07:08:09] <    42> x\r\n");
}

TEST(LineFormat, AppendLineKeepsWhatIsAlreadyThere) {
  const auto t = a_moment();
  std::string out = "before|";
  line_format_t("").append_line(out, head_at(&t, logging::kLevelInfo), "x", "\n");
  EXPECT_EQ(out, "before|[05.03.2024 07:08:09] <    42> x\n");
}

TEST(LineFormat, StyleOneShowsShortThreadAndLevelWordWithoutPrefixOrMark) {
  const auto t = a_moment();
  line_format_t f("oralib");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelStep, 0, 0, 1234, 1), "s"),
            "[05.03.2024 07:08:09] <34> Info     s\n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelInfo, 0, 1, 5, 1), "i"),
            "[05.03.2024 07:08:09] < 5> Info       i\n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelWarning, 0, 0, 100, 1), "w"),
            "[05.03.2024 07:08:09] < 0> Warning  w\n");
  EXPECT_EQ(line_of(f, head_at(&t, logging::kLevelError, 1, 0, 99, 1), "e"),
            "[05.03.2024 07:08:09] <99> Error    e\n");
}

}  // namespace
