// The file layer is joined to the common library before anything is initialised: an export
// that the agent calls before OracleVssInitLib works under the context's access policy. This
// program is a process of its own, so nothing but static initialisers has run when it starts.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "common/common_file_hooks.h"
#include "common/common_lib_ctx.h"
#include "common/security/files_access_permissions.h"
#include "common/win/path_holder.h"
#include "common/win/path_ops.h"

namespace {

// Refuses every path and counts what it was asked.
class refusing_policy_t : public security::IFilesAccessPermissions {
 public:
  void check_access(const win::path_holder_t& path) override {
    ++asked;
    last = path.narrow();
    throw std::runtime_error("refused by the test policy");
  }
  int asked = 0;
  std::string last;
};

TEST(FileLayerJoin, AFileOperationWithNoInitFirstRunsUnderTheContextsPolicy) {
  // Nothing has initialised the library: the first file operation of the process already
  // goes through the common library's hooks, which make the context they need.
  EXPECT_FALSE(win::file_exists(win::path_holder_t(u"C:\\dsl-join\\missing.txt")));
  EXPECT_TRUE(common::file_hooks_installed());

  // A stricter policy put into the context is asked by the next operation, and its refusal
  // stops it.
  auto policy = std::make_shared<refusing_policy_t>();
  ctx()->set_files_permissions(policy);
  EXPECT_THROW(win::file_exists(win::path_holder_t(u"C:\\dsl-join\\refused.txt")),
               std::runtime_error);
  EXPECT_EQ(policy->asked, 1);
  EXPECT_NE(policy->last.find("refused.txt"), std::string::npos) << policy->last;

  // Joining again changes nothing, and the unrestricted policy comes back on request.
  common::install_file_hooks();
  ctx()->set_files_permissions(nullptr);
  EXPECT_FALSE(win::file_exists(win::path_holder_t(u"C:\\dsl-join\\missing.txt")));
  EXPECT_EQ(policy->asked, 1);
}

}  // namespace
