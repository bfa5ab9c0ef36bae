#include "common/win/impersonation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/thread_id.h"
#include "impersonation_fakes.h"
#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;
using win::impersonation_entry_t;
using win::scope_for_path;

// Values far above any real handle, so that closing them can never hit a handle of the test.
void* fake_token_value() { return reinterpret_cast<void*>(uintptr_t{0x5EC000000000}); }

std::shared_ptr<impersonation_entry_t> token_entry(const std::u16string& share) {
  auto e = std::make_shared<impersonation_entry_t>();
  e->kind = win::kImpersonateToken;
  e->share = share;
  e->token = std::make_shared<win::win_handle_t>(fake_token_value());
  return e;
}

bool has_trace(const exc::exc_base_t& e, const std::string& text) {
  for (const auto& m : e.messages()) {
    if (m.is_trace && m.text == text) return true;
  }
  return false;
}

class Impersonation : public ::testing::Test {
 protected:
  dsl_test::capture_log_t log;
  dsl_test::fake_platform_t platform;
};

TEST_F(Impersonation, LocalPathWritesNoLineAndGivesAnEmptySession) {
  platform.add_entry(token_entry(u"\\\\srv\\share"));
  {
    auto session = scope_for_path(std::u16string(u"C:\\data\\file.txt"));
    EXPECT_EQ(session.entry(), nullptr);
    EXPECT_FALSE(session.entered());
    auto narrow = scope_for_path(std::string("C:\\data\\file.txt"));
    EXPECT_EQ(narrow.entry(), nullptr);
  }
  EXPECT_TRUE(log.bodies().empty());
  EXPECT_EQ(platform.api->impersonations, 0);
}

TEST_F(Impersonation, LocalPathTakesNoLock) {
  // The table's lock is held here; a local path must not wait for it.
  std::unique_lock<std::mutex> held(ctx()->impersonation_tokens().lock());
  auto done = std::async(std::launch::async, [] {
    scope_for_path(std::u16string(u"C:\\data\\file.txt"));
    scope_for_path(std::string("D:/x/y"));
    // "\\?\C:\..." is a long local path, not a share.
    scope_for_path(std::u16string(u"\\\\?\\C:\\data\\file.txt"));
  });
  const bool finished = done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  held.unlock();
  done.wait();
  EXPECT_TRUE(finished);
}

TEST_F(Impersonation, UncAndLongUncPathsFindTheEntryWhateverTheCase) {
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  EXPECT_EQ(win::find_entry(u"\\\\srv\\share\\a\\b.txt"), e);
  EXPECT_EQ(win::find_entry(u"\\\\?\\UNC\\SRV\\share\\a"), e);
  EXPECT_EQ(log.bodies(), (strings{"Found impersonation context for share [\\\\srv\\share].",
                                   "Found impersonation context for share [\\\\SRV\\share]."}));
}

TEST_F(Impersonation, ServerAloneHasNoKeyAndWritesNoLine) {
  platform.add_entry(token_entry(u"\\\\srv\\share"));
  EXPECT_EQ(win::find_entry(u"\\\\srv"), nullptr);
  auto session = scope_for_path(std::u16string(u"\\\\srv"));
  EXPECT_EQ(session.entry(), nullptr);
  EXPECT_TRUE(log.bodies().empty());
}

TEST_F(Impersonation, ShareWithoutEntryRunsUnderTheProcessIdentity) {
  {
    auto session = scope_for_path(std::u16string(u"\\\\srv\\share\\a.txt"));
    EXPECT_EQ(session.entry(), nullptr);
    EXPECT_FALSE(session.entered());
  }
  EXPECT_EQ(log.bodies(), (strings{"No impersonation context found for path [\\\\srv\\share]."}));
  EXPECT_EQ(platform.api->impersonations, 0);
  EXPECT_EQ(platform.api->reverts, 0);
}

TEST_F(Impersonation, NarrowPathWithoutEntryIsLookedUpInTheCodePageAndAgainInUtf8) {
  auto session = scope_for_path(std::string("\\\\srv\\share\\a.txt"));
  EXPECT_EQ(session.entry(), nullptr);
  EXPECT_EQ(log.bodies(), (strings{"No impersonation context found for path [\\\\srv\\share].",
                                   "No impersonation context found for path [\\\\srv\\share]."}));
}

TEST_F(Impersonation, NarrowUtf8PathFindsItsShare) {
  // "\\srvé\share": found by the code-page lookup where that is UTF-8, else by the UTF-8 one.
  auto e = token_entry(u"\\\\srv\u00e9\\share");
  platform.add_entry(e);
  auto session = scope_for_path(std::string("\\\\srv\xc3\xa9\\share\\f"));
  EXPECT_EQ(session.entry(), e);
  EXPECT_TRUE(session.entered());
  const strings lines = log.bodies();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(),
            "File operations for path '\\\\srv\xc3\xa9\\share\\f' will be performed under "
            "impersonation context.");
}

TEST_F(Impersonation, TokenEntryIsEnteredAndLeftAroundTheOperation) {
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  {
    auto session = scope_for_path(std::u16string(u"\\\\srv\\share\\dir\\f.txt"));
    EXPECT_EQ(session.entry(), e);
    EXPECT_TRUE(session.entered());
    ASSERT_NE(session.duplicate_token(), nullptr);
    // The thread runs as the duplicate, not as the token of the entry.
    EXPECT_EQ(platform.api->last_impersonated.load(), session.duplicate_token()->get());
    EXPECT_NE(session.duplicate_token()->get(), e->token->get());
    EXPECT_EQ(e->counter->count(win::current_thread_id()), 1);
    EXPECT_EQ(platform.api->reverts, 0);
  }
  EXPECT_EQ(platform.api->duplicates, 1);
  EXPECT_EQ(platform.api->impersonations, 1);
  EXPECT_EQ(platform.api->reverts, 1);
  EXPECT_EQ(e->counter->threads(), 0u);
  EXPECT_EQ(log.bodies(),
            (strings{"Found impersonation context for share [\\\\srv\\share].",
                     "File operations for path '\\\\srv\\share\\dir\\f.txt' will be performed "
                     "under impersonation context."}));
}

TEST_F(Impersonation, NestedSessionsOnOneThreadRevertOnlyWhenTheOuterEnds) {
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  {
    auto outer = scope_for_path(std::u16string(u"\\\\srv\\share\\a"));
    {
      auto inner = scope_for_path(std::u16string(u"\\\\srv\\share\\b"));
      EXPECT_EQ(e->counter->count(win::current_thread_id()), 2);
    }
    EXPECT_EQ(platform.api->reverts, 0);
    EXPECT_EQ(e->counter->count(win::current_thread_id()), 1);
  }
  EXPECT_EQ(platform.api->impersonations, 2);
  EXPECT_EQ(platform.api->reverts, 1);
}

TEST_F(Impersonation, SessionsOnOtherThreadsCountApart) {
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  std::atomic<bool> entered{false};
  std::atomic<bool> release{false};
  std::thread holder([&] {
    auto session = scope_for_path(std::u16string(u"\\\\srv\\share\\held"));
    entered = true;
    while (!release) std::this_thread::yield();
  });
  while (!entered) std::this_thread::yield();
  {
    auto mine = scope_for_path(std::u16string(u"\\\\srv\\share\\mine"));
    EXPECT_EQ(e->counter->threads(), 2u);
  }
  // This thread's last session ended: its identity is reverted, the other thread keeps its own.
  EXPECT_EQ(platform.api->reverts, 1);
  EXPECT_EQ(e->counter->threads(), 1u);
  release = true;
  holder.join();
  EXPECT_EQ(platform.api->reverts, 2);
  EXPECT_EQ(e->counter->threads(), 0u);
}

TEST_F(Impersonation, TokenWithoutAValueIsNotEntered) {
  for (void* value : {static_cast<void*>(nullptr), win::win_handle_t::invalid_value()}) {
    auto e = token_entry(u"\\\\srv\\share");
    e->token->reset(value);
    win::win_impersonation_session_t session(e);
    EXPECT_FALSE(session.entered());
    EXPECT_EQ(e->counter->threads(), 0u);
  }
  auto absent = token_entry(u"\\\\srv\\share");
  absent->token.reset();
  win::win_impersonation_session_t session(absent);
  EXPECT_FALSE(session.entered());
  EXPECT_EQ(platform.api->duplicates, 0);
  EXPECT_EQ(platform.api->impersonations, 0);
}

TEST_F(Impersonation, TokenThatCannotBeDuplicatedIsSilentlyNotEntered) {
  platform.api->duplicate_fails = true;
  const auto e = token_entry(u"\\\\srv\\share");
  {
    win::win_impersonation_session_t session(e);
    EXPECT_FALSE(session.entered());
    EXPECT_EQ(session.duplicate_token(), nullptr);
  }
  EXPECT_EQ(platform.api->duplicates, 1);
  EXPECT_EQ(platform.api->impersonations, 0);
  EXPECT_EQ(platform.api->reverts, 0);
  EXPECT_TRUE(log.bodies().empty());
}

TEST_F(Impersonation, FailedImpersonationIsLoggedAndStopsTheOperation) {
  platform.api->impersonate_error = 5;
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  try {
    scope_for_path(std::u16string(u"\\\\srv\\share\\f"));
    FAIL() << "the session was made";
  } catch (const exc::win_sys_exc_t& failure) {
    EXPECT_EQ(failure.code(), 5u);
    EXPECT_TRUE(has_trace(failure, "Failed to impersonate user."));
  }
  EXPECT_EQ(e->counter->threads(), 0u);
  EXPECT_EQ(platform.api->reverts, 0);
  bool error_line = false;
  for (const auto& line : log.bodies()) {
    if (line == "ERR |Failed to impersonate thread.") error_line = true;
  }
  EXPECT_TRUE(error_line);
}

TEST_F(Impersonation, MovedSessionLeavesOnce) {
  const auto e = token_entry(u"\\\\srv\\share");
  platform.add_entry(e);
  {
    auto first = scope_for_path(std::u16string(u"\\\\srv\\share\\f"));
    win::win_impersonation_session_t second(std::move(first));
    EXPECT_TRUE(second.entered());
    EXPECT_FALSE(first.entered());  // NOLINT: the moved-from state is specified
  }
  EXPECT_EQ(platform.api->reverts, 1);
}

TEST_F(Impersonation, UnknownKindIsNotEntered) {
  auto e = token_entry(u"\\\\srv\\share");
  e->kind = 7;
  win::win_impersonation_session_t session(e);
  EXPECT_FALSE(session.entered());
  EXPECT_EQ(platform.api->duplicates, 0);
}

}  // namespace
