#include "frame/error_frame.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <thread>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/win/thread_id.h"
#include "support/capture_receiver.h"
#include "support/wide.h"

namespace frame = specific::oracle::frame;

namespace {

class null_what_exc : public std::exception {
 public:
  const char* what() const noexcept override { return nullptr; }
};

DSL_WCHAR* const kUntouched = reinterpret_cast<DSL_WCHAR*>(0x1234);

TEST(ErrorFrame, OutStringIsAMallocCopyWithItsTerminator) {
  DSL_WCHAR* out = frame::make_out_string(u"C:\\x");
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(std::memcmp(out, u"C:\\x", 5 * 2), 0);
  EXPECT_EQ(dsl_test::take_text(out), u"C:\\x");
}

TEST(ErrorFrame, EmptyOutStringHoldsOneNul) {
  DSL_WCHAR* out = frame::make_out_string(u"");
  EXPECT_EQ(out[0], 0);
  OracleLibStrFree(out);
}

TEST(ErrorFrame, CopyArgReadsUpToTheFirstNul) {
  const char16_t text[] = {u'a', u'b', 0, u'c', 0};
  EXPECT_EQ(frame::copy_arg(reinterpret_cast<const DSL_WCHAR*>(text)), u"ab");
}

TEST(ErrorFrame, SuccessLeavesTheErrorUnwritten) {
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(frame::guarded("ctx", &error, [] {}), DSL_S_OK);
  EXPECT_EQ(error, kUntouched);
}

TEST(ErrorFrame, FailureGivesTheMessageChainAndLogsTheContext) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = kUntouched;
  uint32_t thrower = 0;
  const DSL_RESULT rc = frame::guarded("Failed to do it.", &error, [&] {
    exc::runtime_exc_t e("inner cause");
    e.add_trace("Step failed");
    thrower = e.thread_id();
    throw e;
  });
  EXPECT_EQ(rc, 0x80004005u);
  ASSERT_NE(error, kUntouched);
  EXPECT_EQ(dsl_test::take_text(error), u"inner cause\n--tr:Step failed");

  const auto lines = capture.bodies();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "oralib| ERR |Failed to do it.");
  EXPECT_EQ(lines[1], "oralib| >>  |inner cause");
  EXPECT_EQ(lines[2], "oralib| >>  |--tr:Step failed");
  EXPECT_EQ(lines[3], "oralib| >>  |An exception was thrown from thread [" + std::to_string(thrower) + "].");
}

TEST(ErrorFrame, NullWhatGivesAnEmptyTextAndStillFails) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = kUntouched;
  EXPECT_EQ(frame::guarded("Failed to test oracle.", &error, [] { throw null_what_exc(); }),
            DSL_E_FAIL);
  ASSERT_NE(error, kUntouched);
  EXPECT_EQ(error[0], 0);
  OracleLibStrFree(error);
  const auto lines = capture.bodies();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "oralib| ERR |Failed to test oracle.");
  EXPECT_EQ(lines[1], "oralib| >>  |An exception was thrown from thread [n/a].");
}

TEST(ErrorFrame, ForeignExceptionShowsThreadNotAvailable) {
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = nullptr;
  frame::guarded("ctx", &error, [] { throw std::runtime_error("plain"); });
  EXPECT_EQ(dsl_test::take_text(error), u"plain");
  const auto lines = capture.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "oralib| >>  |An exception was thrown from thread [n/a].");
}

TEST(ErrorFrame, ThreadLineNamesTheThreadWhereTheExceptionArose) {
  exc::exc_ptr_t captured;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    captured = exc::runtime_exc_t("from the worker").clone();
  });
  worker.join();
  dsl_test::capture_log_t capture;
  DSL_WCHAR* error = nullptr;
  frame::guarded("ctx", &error, [&] { captured->throw_copy(); });
  OracleLibStrFree(error);
  const auto lines = capture.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_NE(worker_id, win::current_thread_id());
  EXPECT_EQ(lines.back(),
            "oralib| >>  |An exception was thrown from thread [" + std::to_string(worker_id) + "].");
}

TEST(ErrorFrame, NonAsciiMessageArrivesWidened) {
  DSL_WCHAR* error = nullptr;
  frame::guarded("ctx", &error, [] { throw exc::runtime_exc_t("caf\xc3\xa9"); });
  const std::u16string text = dsl_test::take_text(error);
  // The system code page reads every byte, the two of the last letter too: the whole text is
  // what that code page makes of the message, nothing cut, nothing added.
  EXPECT_EQ(text, util::to_unicode("caf\xc3\xa9"));
  EXPECT_GT(text.size(), 3u);
  // Where the code page is UTF-8 (the host build), that is the word itself.
  if (util::to_unicode("\xc3\xa9") == u"\u00e9") {
    EXPECT_EQ(text, u"caf\u00e9");
  }
}

TEST(ErrorFrame, OtherExceptionTypesAreNotCaught) {
  DSL_WCHAR* error = kUntouched;
  EXPECT_THROW(frame::guarded("ctx", &error, [] { throw 42; }), int);
  EXPECT_EQ(error, kUntouched);
}

}  // namespace
