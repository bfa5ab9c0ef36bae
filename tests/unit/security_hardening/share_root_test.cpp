// Paths on a share: "\\server\share" is the root, so ".." never reaches another share than the
// one whose impersonation entry is chosen, and a path whose root is not a server and a share is
// refused by the file layer before anything is asked of the system.
#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/win/impersonation_tables.h"
#include "common/win/path_ops.h"
#include "common/win/share_root.h"
#include "support/wide.h"

namespace {

TEST(ShareRoot, ServerAndShareMakeAValidRoot) {
  EXPECT_TRUE(win::share_root_is_valid(u"\\\\srv\\share\\a\\b.txt"));
  EXPECT_TRUE(win::share_root_is_valid(u"\\\\srv\\share\\..\\other\\x"));
  EXPECT_TRUE(win::share_root_is_valid(u"\\\\?\\UNC\\srv\\share\\x"));
  EXPECT_TRUE(win::share_root_is_valid(u"C:\\a\\..\\b"));
  EXPECT_TRUE(win::share_root_is_valid(u"\\\\?\\C:\\a"));
}

TEST(ShareRoot, DotsInPlaceOfServerOrShareAreNoRoot) {
  EXPECT_FALSE(win::share_root_is_valid(u"\\\\srv\\..\\other\\x"));
  EXPECT_FALSE(win::share_root_is_valid(u"\\\\srv\\.\\x"));
  EXPECT_FALSE(win::share_root_is_valid(u"\\\\..\\share\\x"));
  EXPECT_FALSE(win::share_root_is_valid(u"\\\\?\\UNC\\srv\\..\\x"));
  EXPECT_FALSE(win::share_root_is_valid(u"\\\\srv"));
}

TEST(ShareRoot, TheKeyOfAPathWithDotsAtTheShareRootIsItsOwnShare) {
  EXPECT_EQ(dsl_test::utf8(win::share_key(u"\\\\srv\\share\\..\\other\\x")), "\\\\srv\\share");
  EXPECT_EQ(dsl_test::utf8(win::share_key(u"\\\\srv\\share\\..\\..\\..\\x")), "\\\\srv\\share");
}

TEST(ShareRoot, TheFileLayerRefusesAShareRootOfDots) {
  try {
    win::file_exists(win::path_holder_t(std::u16string(u"\\\\srv\\..\\other\\x")));
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "The share path [\\\\srv\\..\\other\\x] names no valid server and share.");
  }
}

}  // namespace
