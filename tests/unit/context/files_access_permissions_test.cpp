#include "common/security/files_access_permissions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/common_lib_ctx.h"
#include "common/exc/exc_base.h"

namespace {

// A policy that writes down every path it is asked about and refuses those under "\\deny".
class recording_policy_t : public security::IFilesAccessPermissions {
 public:
  void check_access(const win::path_holder_t& path) override {
    {
      std::lock_guard<std::mutex> guard(lock);
      asked.push_back(path.narrow());
    }
    if (path.narrow().rfind("\\\\deny", 0) == 0) {
      throw exc::runtime_exc_t("Access to [%1] is not allowed.", path.narrow());
    }
  }
  std::mutex lock;  // policies are asked from any thread
  std::vector<std::string> asked;
};

// Puts the unrestricted policy back whatever the test did.
struct restore_policy_t {
  ~restore_policy_t() { ctx()->set_files_permissions(nullptr); }
};

TEST(FilesAccessPermissions, LibraryPolicyGrantsEverything) {
  const auto policy = ctx()->files_permissions();
  ASSERT_NE(policy, nullptr);
  EXPECT_NE(dynamic_cast<security::CUnrestrictedFilesAccessPermissions*>(policy.get()), nullptr);
  EXPECT_NO_THROW(policy->check_access(win::path_holder_t("C:\\Windows\\system32\\config\\SAM")));
  EXPECT_NO_THROW(policy->check_access(win::path_holder_t(u"\\\\srv\\share\\x")));
  EXPECT_NO_THROW(policy->check_access(win::path_holder_t()));
}

TEST(FilesAccessPermissions, InstalledPolicyIsAskedWithThePath) {
  restore_policy_t restore;
  auto policy = std::make_shared<recording_policy_t>();
  ctx()->set_files_permissions(policy);
  ctx()->files_permissions()->check_access(win::path_holder_t("C:\\data\\a.txt"));
  ctx()->files_permissions()->check_access(win::path_holder_t(u"\\\\srv\\share\\b.txt"));
  EXPECT_EQ(policy->asked, (std::vector<std::string>{"C:\\data\\a.txt", "\\\\srv\\share\\b.txt"}));
}

TEST(FilesAccessPermissions, RefusalReachesTheCaller) {
  restore_policy_t restore;
  ctx()->set_files_permissions(std::make_shared<recording_policy_t>());
  try {
    ctx()->files_permissions()->check_access(win::path_holder_t("\\\\deny\\x"));
    FAIL() << "access granted";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(e.messages().front().text, "Access to [\\\\deny\\x] is not allowed.");
  }
}

TEST(FilesAccessPermissions, EmptyPolicyBringsBackTheUnrestrictedOne) {
  restore_policy_t restore;
  ctx()->set_files_permissions(std::make_shared<recording_policy_t>());
  ctx()->set_files_permissions(nullptr);
  EXPECT_NE(dynamic_cast<security::CUnrestrictedFilesAccessPermissions*>(
                ctx()->files_permissions().get()),
            nullptr);
}

TEST(FilesAccessPermissions, PolicyHeldByACallerSurvivesItsReplacement) {
  restore_policy_t restore;
  auto first = std::make_shared<recording_policy_t>();
  ctx()->set_files_permissions(first);
  const auto held = ctx()->files_permissions();
  first.reset();
  ctx()->set_files_permissions(std::make_shared<recording_policy_t>());
  held->check_access(win::path_holder_t("C:\\still\\here"));
  EXPECT_EQ(static_cast<recording_policy_t*>(held.get())->asked.size(), 1u);
}

TEST(FilesAccessPermissions, ReadAndReplacedFromManyThreadsAtOnce) {
  restore_policy_t restore;
  std::atomic<bool> stop{false};
  std::atomic<int> checks{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 4; ++t) {
    readers.emplace_back([&] {
      while (!stop) {
        ctx()->files_permissions()->check_access(win::path_holder_t("C:\\ok"));
        ++checks;
      }
    });
  }
  // Replace at least 200 times, and go on until the readers have really run alongside: on a
  // busy machine they may not be scheduled before the first 200 are done.
  for (int i = 0; i < 200 || checks.load() < 100; ++i) {
    ctx()->set_files_permissions(i % 2 == 0 ? std::make_shared<recording_policy_t>() : nullptr);
  }
  stop = true;
  for (auto& th : readers) th.join();
  EXPECT_GT(checks, 0);
}

}  // namespace
