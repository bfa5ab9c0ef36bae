// The system's own words for an error code: a fallback that never fails, one trailing line
// end removed. The texts of particular codes differ by platform and stand in the paired files.
#include "common/exc/sys_text.h"

#include <gtest/gtest.h>

#include <system_error>
#include <vector>

namespace {

bool ends_with_crlf(const std::string& s) {
  return s.size() >= 2 && s.compare(s.size() - 2, 2, "\r\n") == 0;
}

std::string without_one_crlf(std::string s) {
  if (ends_with_crlf(s)) s.resize(s.size() - 2);
  return s;
}

TEST(SystemErrorText, FallsBackToTheStandardCategoryForACodeTheSystemDoesNotKnow) {
  const uint32_t unknown = 0x2000ABCDu;  // customer bit set: no system owns this code
  std::string text;
  ASSERT_NO_THROW(text = exc::system_error_text(unknown));
  EXPECT_EQ(text, without_one_crlf(std::system_category().message(static_cast<int>(unknown))));
  EXPECT_FALSE(text.empty());
}

TEST(SystemErrorText, NeverThrowsAndNeverEndsWithALineEnd) {
  std::vector<uint32_t> codes;
  for (uint32_t c = 0; c <= 300; ++c) codes.push_back(c);
  for (uint32_t c = 11990; c <= 12180; ++c) codes.push_back(c);
  for (uint32_t c : {1326u, 1722u, 8007u, 0x7FFFFFFFu, 0x80004005u, 0x80070005u, 0xC0000005u,
                     0xFFFFFFFFu})
    codes.push_back(c);
  for (uint32_t code : codes) {
    std::string text;
    ASSERT_NO_THROW(text = exc::system_error_text(code)) << "code " << code;
    EXPECT_FALSE(ends_with_crlf(text)) << "code " << code << ": " << text;
  }
}

TEST(SystemErrorText, HasWordsForTheCommonFileErrors) {
  for (uint32_t code : {2u, 3u, 5u, 32u, 33u}) {
    EXPECT_FALSE(exc::system_error_text(code).empty()) << "code " << code;
  }
}

TEST(SystemErrorText, AnswersForTheFirstInternetCodeWithoutFailing) {
  std::string text;
  ASSERT_NO_THROW(text = exc::system_error_text(12007));
  EXPECT_FALSE(text.empty());
  EXPECT_FALSE(ends_with_crlf(text));
}

TEST(ComErrorDescription, IsEmptyWhenNoErrorObjectIsSet) {
  EXPECT_EQ(exc::com_error_description(), "");
}

}  // namespace
