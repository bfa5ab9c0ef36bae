#include "common/win/local_time.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

bool same_as_library(const win::local_time_t& t, const std::tm& c) {
  return t.year == c.tm_year + 1900 && t.month == c.tm_mon + 1 && t.day == c.tm_mday &&
         t.hour == c.tm_hour && t.minute == c.tm_min && t.second == c.tm_sec;
}

TEST(LocalTime, FieldsAreInTheirRanges) {
  win::local_time_t t;
  ASSERT_TRUE(win::current_local_time(t));
  EXPECT_GE(t.year, 2020);
  EXPECT_LE(t.year, 9999);
  EXPECT_GE(t.month, 1);
  EXPECT_LE(t.month, 12);
  EXPECT_GE(t.day, 1);
  EXPECT_LE(t.day, 31);
  EXPECT_LE(t.hour, 23);
  EXPECT_LE(t.minute, 59);
  EXPECT_LE(t.second, 60);
}

TEST(LocalTime, AgreesWithTheLocalTimeOfTheRuntimeLibrary) {
  // A second may turn between the two readings; three tries make that harmless.
  bool agreed = false;
  for (int attempt = 0; attempt < 3 && !agreed; ++attempt) {
    win::local_time_t t;
    ASSERT_TRUE(win::current_local_time(t));
    const std::time_t now = std::time(nullptr);
    const std::tm* c = std::localtime(&now);
    ASSERT_NE(c, nullptr);
    agreed = same_as_library(t, *c);
  }
  EXPECT_TRUE(agreed);
}

}  // namespace
