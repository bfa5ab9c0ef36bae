// The calendar value of the time rule: conversion and its check, the comparison with its
// half-second equality, the parsers of the two time forms and the limit text.
#include <gtest/gtest.h>

#include "oracle/logs/log_calendar.h"

namespace specific::oracle::logs {
namespace {

calendar_value_t value_of(int y, int mo, int d, int h, int mi, int s) {
  calendar_value_t v;
  EXPECT_TRUE(valid_calendar_value({y, mo, d, h, mi, s}, v)) << y << "-" << mo << "-" << d;
  return v;
}

TEST(LogCalendarTest, EpochDayIsZeroAndNoonIsHalfADay) {
  EXPECT_DOUBLE_EQ(value_of(1899, 12, 30, 0, 0, 0).days, 0.0);
  EXPECT_DOUBLE_EQ(value_of(1899, 12, 31, 12, 0, 0).days, 1.5);
  EXPECT_DOUBLE_EQ(value_of(2000, 1, 1, 0, 0, 0).days, 36526.0);
}

TEST(LogCalendarTest, DaysBeforeTheEpochKeepTheirTimeAsAForwardFraction) {
  EXPECT_DOUBLE_EQ(value_of(1899, 12, 29, 6, 0, 0).days, -1.25);
  EXPECT_DOUBLE_EQ(linear_days(value_of(1899, 12, 29, 6, 0, 0)), -0.75);
  EXPECT_TRUE(calendar_later(value_of(1899, 12, 29, 18, 0, 0), value_of(1899, 12, 29, 6, 0, 0)));
  EXPECT_TRUE(calendar_later(value_of(1899, 12, 30, 0, 0, 0), value_of(1899, 12, 29, 23, 59, 59)));
}

TEST(LogCalendarTest, ThirtyFirstOfFebruaryIsRejectedByTheRoundTrip) {
  calendar_value_t converted;
  // The conversion alone rolls over into March, as the platform's does.
  ASSERT_TRUE(fields_to_calendar_value({2024, 2, 31, 0, 0, 0}, converted));
  const calendar_fields_t back = calendar_value_to_fields(converted);
  EXPECT_EQ(back.month, 3);
  EXPECT_EQ(back.day, 2);
  calendar_value_t v;
  EXPECT_FALSE(valid_calendar_value({2024, 2, 31, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2023, 2, 29, 0, 0, 0}, v));
  EXPECT_TRUE(valid_calendar_value({2024, 2, 29, 0, 0, 0}, v));
}

TEST(LogCalendarTest, FieldsOutOfRangeAreInvalid) {
  calendar_value_t v;
  EXPECT_FALSE(valid_calendar_value({2024, 13, 1, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, 0, 1, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, 1, 32, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, 1, 1, 24, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, 1, 1, 0, 60, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, 1, 1, 0, 0, 60}, v));
  EXPECT_FALSE(valid_calendar_value({10000, 1, 1, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({-2057, 1, 1, 0, 0, 0}, v));
  EXPECT_FALSE(valid_calendar_value({2024, -1, 1, 0, 0, 0}, v));
}

TEST(LogCalendarTest, TwoDigitYearsConvertButFailTheRoundTrip) {
  calendar_value_t converted;
  ASSERT_TRUE(fields_to_calendar_value({24, 1, 1, 0, 0, 0}, converted));
  EXPECT_EQ(calendar_value_to_fields(converted).year, 2024);
  ASSERT_TRUE(fields_to_calendar_value({50, 1, 1, 0, 0, 0}, converted));
  EXPECT_EQ(calendar_value_to_fields(converted).year, 1950);
  calendar_value_t v;
  EXPECT_FALSE(valid_calendar_value({24, 1, 1, 0, 0, 0}, v));
  EXPECT_TRUE(valid_calendar_value({100, 1, 1, 0, 0, 0}, v));
  EXPECT_TRUE(valid_calendar_value({9999, 12, 31, 23, 59, 59}, v));
}

TEST(LogCalendarTest, ValuesWithinHalfASecondAreEqualAndNeitherIsLater) {
  const calendar_value_t a = value_of(2024, 3, 5, 10, 0, 0);
  calendar_value_t b = a;
  b.days += kHalfSecondInDays * 0.9;
  EXPECT_TRUE(calendar_equal(a, b));
  EXPECT_FALSE(calendar_later(b, a));
  EXPECT_FALSE(calendar_later(a, b));
  calendar_value_t c = a;
  c.days -= kHalfSecondInDays;  // exactly half a second before: still equal
  EXPECT_TRUE(calendar_equal(a, c));
  EXPECT_FALSE(calendar_later(a, c));
  calendar_value_t d = a;
  d.days += 2 * kHalfSecondInDays;  // a whole second
  EXPECT_FALSE(calendar_equal(a, d));
  EXPECT_TRUE(calendar_later(d, a));
}

TEST(LogCalendarTest, OneSecondApartIsLater) {
  EXPECT_TRUE(calendar_later(value_of(2024, 3, 5, 10, 0, 1), value_of(2024, 3, 5, 10, 0, 0)));
  EXPECT_FALSE(calendar_later(value_of(2024, 3, 5, 10, 0, 0), value_of(2024, 3, 5, 10, 0, 1)));
}

TEST(LogCalendarTest, ParsersReadTheirOrderAndNeedAllSixNumbers) {
  calendar_fields_t f;
  ASSERT_TRUE(parse_day_first(u"05/03/2024 10:07:09", f));
  EXPECT_EQ(f.day, 5);
  EXPECT_EQ(f.month, 3);
  EXPECT_EQ(f.year, 2024);
  EXPECT_EQ(f.seconds, 9);
  ASSERT_TRUE(parse_year_first(u"2024/03/05 10:07:09", f));
  EXPECT_EQ(f.year, 2024);
  EXPECT_EQ(f.day, 5);
  EXPECT_EQ(f.minutes, 7);
  EXPECT_TRUE(parse_year_first(u" 2024/3/5  1:2:3 trailing", f));
  EXPECT_FALSE(parse_year_first(u"2024-03-05 10:07:09", f));
  EXPECT_FALSE(parse_year_first(u"2024/03/05 10:07", f));
  EXPECT_FALSE(parse_year_first(u"", f));
  EXPECT_FALSE(parse_day_first(u"garbage", f));
  ASSERT_TRUE(parse_day_first(u"01/01/-2057 00:00:00", f));
  EXPECT_EQ(f.year, -2057);
}

TEST(LogCalendarTest, LimitTextIsNowMinusTheMinutesInUtc) {
  // 2024-03-05 10:00:00 UTC.
  const int64_t now = 1709632800LL * 1000000;
  EXPECT_EQ(time_limit_text(now, 0), "05/03/2024 10:00:00");
  EXPECT_EQ(time_limit_text(now, 60), "05/03/2024 09:00:00");
  EXPECT_EQ(time_limit_text(now, -1440), "06/03/2024 10:00:00");
  EXPECT_EQ(time_limit_text(now + 999999, 0), "05/03/2024 10:00:00");
}

TEST(LogCalendarTest, LimitOfIntMinMinutesLiesThousandsOfYearsAheadAndIsValid) {
  const int64_t now = 1709632800LL * 1000000;
  const std::string text = time_limit_text(now, INT32_MIN);
  calendar_fields_t f;
  ASSERT_TRUE(parse_day_first(std::u16string(text.begin(), text.end()), f)) << text;
  EXPECT_GT(f.year, 6000);
  calendar_value_t v;
  EXPECT_TRUE(valid_calendar_value(f, v)) << text;
}

TEST(LogCalendarTest, LimitOfIntMaxMinutesLiesBeforeYearOneAndIsInvalid) {
  const int64_t now = 1709632800LL * 1000000;
  const std::string text = time_limit_text(now, INT32_MAX);
  calendar_fields_t f;
  ASSERT_TRUE(parse_day_first(std::u16string(text.begin(), text.end()), f)) << text;
  EXPECT_LT(f.year, 0);
  calendar_value_t v;
  EXPECT_FALSE(valid_calendar_value(f, v)) << text;
}

TEST(LogCalendarTest, TimeStampHasTheRunsForm) {
  EXPECT_EQ(utc_time_stamp(1709632800LL * 1000000 + 5), "2024-03-05T10:00:00");
  EXPECT_EQ(utc_time_stamp(0), "1970-01-01T00:00:00");
}

}  // namespace
}  // namespace specific::oracle::logs
