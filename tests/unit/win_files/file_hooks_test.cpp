#include "common/win/file_hooks.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/text/convert.h"
#include "common/win/file.h"
#include "common/win/path_ops.h"
#include "support/test_folder.h"

namespace {

using dsl_test::test_folder_t;
using strings = std::vector<std::string>;

// Writes down every call, in order, with the base folder of the test cut from paths.
class recording_hooks_t : public win::file_hooks_t {
 public:
  explicit recording_hooks_t(std::string base) : base_(std::move(base)) {}

  void check_access(const win::path_holder_t& path) override {
    events.push_back("check " + shorten(path));
    if (!refuse.empty() && path.narrow().find(refuse) != std::string::npos) {
      throw std::runtime_error("refused by policy");
    }
  }
  std::shared_ptr<void> scope_for_path(const win::path_holder_t& path) override {
    events.push_back("scope " + shorten(path));
    auto* events_ptr = &events;
    return std::shared_ptr<void>(new int(0), [events_ptr](void* p) {
      events_ptr->push_back("scope end");
      delete static_cast<int*>(p);
    });
  }
  void file_op_enter() override { events.push_back("enter"); }
  void file_op_leave() noexcept override { events.push_back("leave"); }
  void counter_enter(win::io_counter_t c) override {
    events.push_back(std::string("count in ") + (c == win::io_counter_t::read ? "read" : "write"));
  }
  void counter_leave(win::io_counter_t c, int64_t amount) override {
    events.push_back(std::string("count out ") +
                     (c == win::io_counter_t::read ? "read " : "write ") +
                     std::to_string(amount));
  }
  win::file_trace_flags_t trace_flags() override {
    win::file_trace_flags_t flags;
    flags.write = true;
    flags.close = true;
    return flags;
  }

  strings events;
  std::string refuse;

 private:
  std::string shorten(const win::path_holder_t& path) const {
    std::string text = path.narrow();
    if (text.compare(0, base_.size(), base_) == 0) text = "~" + text.substr(base_.size());
    return text;
  }
  std::string base_;
};

class FileHooks : public ::testing::Test {
 protected:
  void SetUp() override {
    hooks_ = std::make_shared<recording_hooks_t>(util::to_utf8(dir_.base()));
    win::set_file_hooks(hooks_);
  }
  void TearDown() override { win::set_file_hooks(nullptr); }
  strings& events() { return hooks_->events; }

  test_folder_t dir_;
  std::shared_ptr<recording_hooks_t> hooks_;
};

TEST_F(FileHooks, FactoryChecksAccessThenTakesTheScopeAndHoldsItOverTheOpen) {
  auto file = win::win_file_t::create_or_open(dir_.path(u"a.txt"));
  EXPECT_EQ(events(), (strings{"check ~a.txt", "scope ~a.txt", "enter", "leave", "scope end"}));
}

TEST_F(FileHooks, RefusedAccessStopsTheOperationBeforeTheSystemCall) {
  hooks_->refuse = "secret";
  EXPECT_THROW(win::win_file_t::create_or_open(dir_.path(u"secret.txt")), std::runtime_error);
  EXPECT_FALSE(dir_.raw_exists(u"secret.txt"));
  EXPECT_EQ(events(), (strings{"check ~secret.txt"}));
  EXPECT_THROW(win::create_directories(dir_.path(u"secret\\x\\")), std::runtime_error);
  EXPECT_FALSE(dir_.raw_exists(u"secret"));
  EXPECT_THROW(win::file_exists(dir_.path(u"secret")), std::runtime_error);
}

TEST_F(FileHooks, WriteAndReadFeedTheirCountersWithTheByteCounts) {
  auto file = win::win_file_t::create(dir_.path(u"a.txt"));
  events().clear();
  file->write(5, "hello");
  file->seek_set(1);
  char buffer[10];
  file->read(buffer, sizeof buffer);
  EXPECT_EQ(events(), (strings{"enter", "count in write", "count out write 5", "leave",
                               "enter", "leave",
                               "enter", "count in read", "count out read 4", "leave"}));
}

TEST_F(FileHooks, EveryOperationOfAnOpenFileCountsTheThreadInAndOut) {
  auto file = win::win_file_t::create(dir_.path(u"a.txt"));
  events().clear();
  file->size();
  file->flush();
  file->reset_size(3);
  EXPECT_EQ(events(), (strings{"enter", "leave", "enter", "leave", "enter", "leave"}));
}

TEST_F(FileHooks, FailingOperationStillCountsTheThreadOut) {
  auto file = win::win_file_t::create(dir_.path(u"a.txt"));
  events().clear();
  EXPECT_ANY_THROW(file->seek(0, 7));
  EXPECT_EQ(events(), (strings{"enter", "leave"}));
}

TEST_F(FileHooks, TraceFlagsAreTakenWhenTheFileIsMade) {
  auto file = win::win_file_t::create(dir_.path(u"a.txt"));
  EXPECT_TRUE(file->trace_flags().write);
  EXPECT_TRUE(file->trace_flags().close);
  EXPECT_FALSE(file->trace_flags().read);
  EXPECT_FALSE(file->trace_flags().seek);
}

TEST_F(FileHooks, RemoveAndRenameActInTheScopeOfTheFolder) {
  dir_.raw_write(u"sub\\a.txt", "x");
  events().clear();
  win::rename_file(dir_.path(u"sub\\a.txt"), dir_.path(u"sub\\b.txt"));
  EXPECT_EQ(events(),
            (strings{"check ~sub\\a.txt", "scope ~sub", "check ~sub\\b.txt", "scope end"}));
  events().clear();
  win::remove_file(dir_.path8("sub\\b.txt"));
  EXPECT_EQ(events(), (strings{"check ~sub\\b.txt", "scope ~sub", "scope end"}));
}

TEST_F(FileHooks, PathOperationsAskFirst) {
  dir_.raw_write(u"a.txt", "xy");
  events().clear();
  win::file_exists(dir_.path(u"a.txt"));
  win::create_directories(dir_.path(u"d\\"));
  win::list_directory(dir_.path(u"d"));
  EXPECT_EQ(events(), (strings{"check ~a.txt", "scope ~a.txt", "scope end",
                               "check ~d\\", "scope ~d\\", "scope end",
                               "check ~d", "scope ~d", "scope end"}));
}

TEST_F(FileHooks, FileSizeOpensAndAsksWithBalancedCounts) {
  dir_.raw_write(u"a.txt", "xy");
  events().clear();
  EXPECT_EQ(win::file_size(dir_.path(u"a.txt")), 2u);
  EXPECT_EQ(events(),
            (strings{"check ~a.txt", "scope ~a.txt", "enter", "leave", "scope end", "enter",
                     "leave"}));
}

TEST(FileHooksDefault, WithNothingInstalledEverythingIsGranted) {
  win::set_file_hooks(nullptr);
  test_folder_t dir;
  win::win_file_t::create(dir.path(u"a.txt"))->write(1, "x");
  EXPECT_EQ(dir.raw_read(u"a.txt"), "x");
}

}  // namespace
