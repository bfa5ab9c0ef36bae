#include "common/win/path_holder.h"

#include <gtest/gtest.h>

#include "common/exc/exc_base.h"

namespace {

TEST(PathHolder, NarrowPathGivesItsWideFormOnRequestAndKeepsIt) {
  win::path_holder_t p(std::string("C:\\Ablage\\\xc3\xa9t\xc3\xa9.log"));
  EXPECT_TRUE(p.has_narrow());
  EXPECT_FALSE(p.has_wide());
  EXPECT_EQ(p.wide(), u"C:\\Ablage\\\u00e9t\u00e9.log");
  EXPECT_TRUE(p.has_wide());
  // The same stored object answers the second time.
  EXPECT_EQ(&p.wide(), &p.wide());
}

TEST(PathHolder, WidePathGivesItsUtf8FormOnRequest) {
  win::path_holder_t p(u"C:\\\u65e5\u672c\\x");
  EXPECT_FALSE(p.has_narrow());
  EXPECT_EQ(p.narrow(), "C:\\\xe6\x97\xa5\xe6\x9c\xac\\x");
  EXPECT_TRUE(p.has_narrow());
}

TEST(PathHolder, WithNeitherFormTheRequestFails) {
  win::path_holder_t p;
  try {
    (void)p.narrow();
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Parameter is not available.");
  }
  EXPECT_THROW((void)p.wide(), exc::runtime_exc_t);
  EXPECT_EQ(p.narrow_or_empty(), "");
}

TEST(PathHolder, NullPointerSetsNoForm) {
  const char* none = nullptr;
  win::path_holder_t p(none);
  EXPECT_FALSE(p.has_narrow());
  EXPECT_THROW((void)p.wide(), exc::runtime_exc_t);
}

TEST(PathHolder, EmptyTextIsAFormAllTheSame) {
  win::path_holder_t p(std::string(""));
  EXPECT_TRUE(p.has_narrow());
  EXPECT_EQ(p.wide(), u"");
}

}  // namespace
