// The restore's sleeps and the walk after the meta file was read, without any instance.
#include <gtest/gtest.h>

#include <chrono>

#include "oracle/restore/restore_driver.h"
#include "oracle/restore/restore_wait.h"
#include "support/capture_receiver.h"

namespace {

using specific::oracle::CRestoreDriver;

TEST(RestoreWait, ReplacementReceivesTheMilliseconds) {
  std::vector<uint32_t> slept;
  specific::oracle::replace_restore_sleep_for_tests([&](uint32_t ms) { slept.push_back(ms); });
  specific::oracle::restore_sleep(15000);
  specific::oracle::restore_sleep(10000);
  specific::oracle::replace_restore_sleep_for_tests(nullptr);
  EXPECT_EQ(slept, (std::vector<uint32_t>{15000, 10000}));
}

TEST(RestoreWait, RealSleepOfZeroReturnsAtOnce) {
  const auto start = std::chrono::steady_clock::now();
  specific::oracle::restore_sleep(0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(RestoreWait, RealSleepSleepsAtLeastTheTime) {
  const auto start = std::chrono::steady_clock::now();
  specific::oracle::restore_sleep(5);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
}

TEST(RestoreWait, TheWaitsBetweenAttemptsAndAfterAFailedStartAreFixed) {
  EXPECT_EQ(specific::oracle::kWaitBetweenAttemptsMs, 15000u);
  EXPECT_EQ(specific::oracle::kWaitAfterFailedStartMs, 10000u);
}

TEST(RestoreDatabases, EmptyDocumentIsAnEmptyListAndEndsAtOnce) {
  dsl_test::capture_log_t log;
  EXPECT_NO_THROW(CRestoreDriver::restore_databases(u"", {}, u"", u""));
  for (const auto& line : dsl_test::plain_log(log)) EXPECT_EQ(line.find("Finish dbs backup"), std::string::npos);
}

TEST(RestoreDatabases, DocumentWithoutDatabasesFailsTheWalk) {
  EXPECT_ANY_THROW(CRestoreDriver::restore_databases(u"<x/>", {}, u"", u""));
}

}  // namespace
