// The rules behind the machine's facts on the explored document, and what this build answers.
#include <gtest/gtest.h>

#include "oracle/discovery/env_props.h"
#include "oracle/discovery/env_props_sys.h"

using namespace specific::oracle;

namespace {

TEST(TimeZone, BiasIsNegatedAndCountedInQuarterHoursTruncatedTowardZero) {
  EXPECT_EQ(time_zone_quarters(-180), 12);
  EXPECT_EQ(time_zone_quarters(60), -4);
  EXPECT_EQ(time_zone_quarters(0), 0);
  EXPECT_EQ(time_zone_quarters(-330), 22);   // +05:30
  EXPECT_EQ(time_zone_quarters(-345), 23);   // +05:45
  EXPECT_EQ(time_zone_quarters(50), -3);     // truncated, not rounded
  EXPECT_EQ(time_zone_quarters(-50), 3);
}

TEST(TimeZone, CurrentBiasAddsTheStandardOrDaylightPartByTheState) {
  EXPECT_EQ(current_bias_minutes({kTimeZoneIdUnknown, -60, 5, -60}), -60);
  EXPECT_EQ(current_bias_minutes({kTimeZoneIdStandard, -60, 5, -60}), -55);
  EXPECT_EQ(current_bias_minutes({kTimeZoneIdDaylight, -60, 5, -60}), -120);
  EXPECT_EQ(current_bias_minutes({0xFFFFFFFFu, -60, 5, -60}), 0);
  EXPECT_EQ(current_bias_minutes({7, -60, 5, -60}), 0);
}

TEST(EnvProps, ThisBuildAnswersANonEmptyNameAndOsAndAPlausibleZone) {
  const auto env = collect_env_props();
  ASSERT_TRUE(env);
  EXPECT_FALSE(env->serverName.empty());
  EXPECT_FALSE(env->osName.empty());
  EXPECT_GE(env->timeZone, -12 * 4);
  EXPECT_LE(env->timeZone, 14 * 4);
}

}  // namespace
