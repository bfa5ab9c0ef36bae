// The host build's drive mapping keeps "\\server\share" as the root of a share path, as Windows
// does, so that what the mapping reaches is the share the impersonation entry was chosen for.
#include <gtest/gtest.h>

#include "common/win/impersonation_tables.h"
#include "common/win/path_map_posix.h"
#include "support/wide.h"

namespace {

using win::host::map_windows_path;

TEST(ShareRootMapping, DotDotAtTheShareRootStaysOnTheShare) {
  EXPECT_EQ(map_windows_path(u"\\\\srv\\share\\..\\other\\x", "/r"), "/r/unc/srv/share/other/x");
  EXPECT_EQ(map_windows_path(u"\\\\srv\\share\\..\\..\\..\\etc\\passwd", "/r"),
            "/r/unc/srv/share/etc/passwd");
  EXPECT_EQ(map_windows_path(u"\\\\?\\UNC\\srv\\share\\..\\other", "/r"), "/r/unc/srv/share/other");
  EXPECT_EQ(map_windows_path(u"//srv/share/../other/x", "/r"), "/r/unc/srv/share/other/x");
}

TEST(ShareRootMapping, DotDotBelowTheShareStillFolds) {
  EXPECT_EQ(map_windows_path(u"\\\\srv\\share\\a\\..\\b", "/r"), "/r/unc/srv/share/b");
}

TEST(ShareRootMapping, TheShareReachedIsTheShareOfTheKey) {
  const std::u16string path = u"\\\\srv\\share\\..\\other\\x";
  EXPECT_EQ(dsl_test::utf8(win::share_key(path)), "\\\\srv\\share");
  EXPECT_EQ(map_windows_path(path, "/r").rfind("/r/unc/srv/share/", 0), 0u);
}

}  // namespace
