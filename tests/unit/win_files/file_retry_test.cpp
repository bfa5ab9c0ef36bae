#include "common/win/file_retry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/file_codes.h"
#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;

// A stand-in for the system write: answers the scripted errors in turn, then success.
struct scripted_write_t {
  std::vector<uint32_t> errors;
  uint32_t written_on_success = 0;
  uint32_t written_on_failure = 0;
  int calls = 0;

  uint32_t operator()(uint32_t& written) {
    const size_t i = static_cast<size_t>(calls++);
    if (i < errors.size()) {
      written = written_on_failure;
      return errors[i];
    }
    written = written_on_success;
    return 0;
  }
};

struct pauses_t {
  uint32_t total = 0;
  int count = 0;
  void operator()(uint32_t ms) {
    total += ms;
    ++count;
  }
};

long count_of(const strings& lines, const std::string& line) {
  return std::count(lines.begin(), lines.end(), line);
}

TEST(WriteRetry, ThreeLockViolationsThenSuccessEndsWithSuccessAfterThreeRetries) {
  dsl_test::capture_log_t log;
  scripted_write_t write{{33, 33, 33}, 10};
  pauses_t pauses;
  win::write_with_retry(std::string("C:\\x.log"), 10, std::ref(write), std::ref(pauses));
  EXPECT_EQ(write.calls, 4);
  EXPECT_EQ(pauses.count, 3);
  EXPECT_EQ(pauses.total, 300u);
  const strings bodies = log.bodies();
  EXPECT_EQ(count_of(bodies, "WARN|Retry."), 3);
  EXPECT_EQ(count_of(bodies, ">>  |Failed to write data to the file [C:\\x.log]."), 3);
  EXPECT_EQ(count_of(bodies, ">>  |--tr:Error code: 0x00000021"), 3);
  // Each warning of the failure comes before its "Retry.".
  ASSERT_FALSE(bodies.empty());
  EXPECT_EQ(bodies.back(), "WARN|Retry.");
}

TEST(WriteRetry, LockThatNeverGoesGivesFiftyAttemptsAndTheByteCountText) {
  dsl_test::capture_log_t log;
  scripted_write_t write{std::vector<uint32_t>(1000, 33), 10};
  pauses_t pauses;
  try {
    win::write_with_retry(std::string("C:\\x.log"), 10, std::ref(write), std::ref(pauses));
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(),
                 "Failed to write 10 bytes to the file 'C:\\x.log': 0 bytes were written instead");
  }
  EXPECT_EQ(write.calls, 50);
  EXPECT_EQ(pauses.total, 5000u);
  EXPECT_EQ(count_of(log.bodies(), "WARN|Retry."), 50);
}

TEST(WriteRetry, AccessDeniedFailsAtOnceWithoutRetry) {
  dsl_test::capture_log_t log;
  scripted_write_t write{{5}, 10};
  pauses_t pauses;
  try {
    win::write_with_retry(std::string("C:\\x.log"), 10, std::ref(write), std::ref(pauses));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 5u);
    ASSERT_EQ(e.messages().size(), 3u);
    EXPECT_EQ(e.messages()[1].text, "Failed to write data to the file [C:\\x.log].");
    EXPECT_EQ(e.messages()[2].text, "Error code: 0x00000005");
  }
  EXPECT_EQ(write.calls, 1);
  EXPECT_EQ(pauses.count, 0);
  EXPECT_EQ(count_of(log.bodies(), "WARN|Retry."), 0);
}

TEST(WriteRetry, ShortWriteWithoutErrorFailsWithTheByteCountText) {
  scripted_write_t write{{}, 3};
  pauses_t pauses;
  try {
    win::write_with_retry(std::u16string(u"C:\\x.log"), 10, std::ref(write), std::ref(pauses));
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(),
                 "Failed to write 10 bytes to the file 'C:\\x.log': 3 bytes were written instead");
  }
  EXPECT_EQ(pauses.count, 0);
}

TEST(WriteRetry, OtherErrorAfterALockViolationFailsWithThatError) {
  scripted_write_t write{{33, 112}, 10};
  pauses_t pauses;
  try {
    win::write_with_retry(std::string("C:\\x.log"), 10, std::ref(write), std::ref(pauses));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 112u);
  }
  EXPECT_EQ(write.calls, 2);
  EXPECT_EQ(pauses.total, 100u);
}

TEST(WriteRetry, LastAttemptThatSucceedsIsStillASuccess) {
  scripted_write_t write{std::vector<uint32_t>(49, 33), 10};
  pauses_t pauses;
  win::write_with_retry(std::string("C:\\x.log"), 10, std::ref(write), std::ref(pauses));
  EXPECT_EQ(write.calls, 50);
  EXPECT_EQ(pauses.total, 4900u);
}

TEST(WriteRetry, ZeroBytesIsASuccessWithNothingWritten) {
  scripted_write_t write{{}, 0};
  pauses_t pauses;
  win::write_with_retry(std::string("C:\\x.log"), 0, std::ref(write), std::ref(pauses));
  EXPECT_EQ(write.calls, 1);
}

}  // namespace
