// trace_info_t: the named values and numbered events every exception carries.
#include "common/exc/trace_info.h"

#include <gtest/gtest.h>

namespace {

using exc::trace_event_t;
using exc::trace_info_t;

TEST(TraceInfo, StartsEmpty) {
  trace_info_t info;
  EXPECT_TRUE(info.empty());
  EXPECT_TRUE(info.values.empty());
  EXPECT_TRUE(info.events.empty());
}

TEST(TraceInfo, IsNotEmptyWithAValueOrAnEvent) {
  trace_info_t with_value;
  with_value.values["k"] = "v";
  EXPECT_FALSE(with_value.empty());

  trace_info_t with_event;
  with_event.events.push_back({3, "info"});
  EXPECT_FALSE(with_event.empty());
}

TEST(TraceInfo, MergeOverwritesExistingValuesAndKeepsTheOthers) {
  trace_info_t info;
  info.values = {{"a", "1"}, {"b", "2"}};
  trace_info_t other;
  other.values = {{"b", "3"}, {"c", "4"}};

  info.merge(other);

  const std::map<std::string, std::string> expected = {{"a", "1"}, {"b", "3"}, {"c", "4"}};
  EXPECT_EQ(info.values, expected);
}

TEST(TraceInfo, MergeAppendsEventsAtTheEndInTheirOrder) {
  trace_info_t info;
  info.events = {{1, "first"}, {2, "second"}};
  trace_info_t other;
  other.events = {{6, "third"}, {1, "fourth"}};

  info.merge(other);

  const std::vector<trace_event_t> expected = {
      {1, "first"}, {2, "second"}, {6, "third"}, {1, "fourth"}};
  EXPECT_EQ(info.events, expected);
}

TEST(TraceInfo, MergeKeepsEqualEventsTwice) {
  trace_info_t info;
  info.events = {{4, "same"}};
  trace_info_t other;
  other.events = {{4, "same"}};
  info.merge(other);  // nothing is deduplicated
  const std::vector<trace_event_t> expected = {{4, "same"}, {4, "same"}};
  EXPECT_EQ(info.events, expected);
}

TEST(TraceInfo, MergeOfAnEmptyRecordChangesNothing) {
  trace_info_t info;
  info.values = {{"k", "v"}};
  info.events = {{5, "e"}};
  const trace_info_t before = info;

  info.merge(trace_info_t{});

  EXPECT_EQ(info.values, before.values);
  EXPECT_EQ(info.events, before.events);
}

TEST(TraceEvent, EqualityComparesNumberAndInfo) {
  EXPECT_TRUE((trace_event_t{2, "x"} == trace_event_t{2, "x"}));
  EXPECT_FALSE((trace_event_t{2, "x"} == trace_event_t{3, "x"}));
  EXPECT_FALSE((trace_event_t{2, "x"} == trace_event_t{2, "y"}));
}

}  // namespace
