// The share-mode rule, checked over every pairing of access and share mode: a second open of a
// file succeeds only when each open shares every right the other one asks for. On Windows the
// system decides; on the host build the advisory-lock stand-in must decide the same.
#include <gtest/gtest.h>

#include <string>

#include "common/win/file.h"
#include "common/win/file_codes.h"
#include "support/test_folder.h"

namespace {

using win::win_file_t;

const uint32_t kAccesses[] = {win::kGenericRead, win::kGenericWrite,
                              win::kGenericRead | win::kGenericWrite};
const uint32_t kShares[] = {0, win::kFileShareRead, win::kFileShareWrite,
                            win::kFileShareRead | win::kFileShareWrite};

// The share rights an access needs from the other open.
uint32_t needs(uint32_t access) {
  uint32_t out = 0;
  if (access & win::kGenericRead) out |= win::kFileShareRead;
  if (access & win::kGenericWrite) out |= win::kFileShareWrite;
  return out;
}

TEST(ShareModes, SecondOpenSucceedsOnlyWhenEachSharesWhatTheOtherAsks) {
  dsl_test::test_folder_t dir;
  dir.raw_write(u"s.bin", "x");
  int checked = 0;
  for (uint32_t a1 : kAccesses) {
    for (uint32_t s1 : kShares) {
      for (uint32_t a2 : kAccesses) {
        for (uint32_t s2 : kShares) {
          win::open_mode_t m1{a1, s1, win::kOpenExisting, 0};
          win::open_mode_t m2{a2, s2, win::kOpenExisting, 0};
          uint32_t error = 0;
          auto first = win_file_t::try_open(dir.path(u"s.bin"), m1, error);
          ASSERT_TRUE(first) << error;
          auto second = win_file_t::try_open(dir.path(u"s.bin"), m2, error);
          const bool expected = (needs(a2) & ~s1) == 0 && (needs(a1) & ~s2) == 0;
          EXPECT_EQ(static_cast<bool>(second), expected)
              << "first access " << std::hex << a1 << " share " << s1 << ", second access " << a2
              << " share " << s2;
          if (!second) {
            EXPECT_EQ(error, win::kErrorSharingViolation);
          }
          ++checked;
        }
      }
    }
  }
  EXPECT_EQ(checked, 144);
}

TEST(ShareModes, RefusedOpenLeavesTheFirstOpenAsItWas) {
  dsl_test::test_folder_t dir;
  auto writer = win_file_t::create_or_open(dir.path(u"s.log"));
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(win_file_t::create_or_open(dir.path(u"s.log")), std::exception);
  }
  // The writer still keeps other writers out, and readers still come in.
  uint32_t error = 0;
  win::open_mode_t write_mode{win::kGenericWrite, win::kFileShareRead | win::kFileShareWrite,
                              win::kOpenExisting, 0};
  EXPECT_FALSE(win_file_t::try_open(dir.path(u"s.log"), write_mode, error));
  EXPECT_TRUE(win_file_t::open_read(dir.path(u"s.log")));
  writer->write(2, "ok");
  writer.reset();
  EXPECT_EQ(dir.raw_read(u"s.log"), "ok");
}

TEST(ShareModes, CreateAlwaysRefusedBySharingDoesNotEmptyTheFile) {
  dsl_test::test_folder_t dir;
  dir.raw_write(u"s.log", "keep me");
  auto reader = win_file_t::open_read(dir.path(u"s.log"));
  EXPECT_THROW(win_file_t::create(dir.path(u"s.log")), std::exception);
  EXPECT_EQ(dir.raw_read(u"s.log"), "keep me");
}

}  // namespace
