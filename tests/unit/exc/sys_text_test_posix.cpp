// On the host build the Win32 codes of the platform layer read as Windows words them; other
// codes are the standard library's system category.
#include <gtest/gtest.h>

#include <system_error>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"

namespace {

TEST(SystemErrorTextOnHost, PlatformCodesReadAsWindowsWordsThem) {
  EXPECT_EQ(exc::system_error_text(2), "The system cannot find the file specified.");
  EXPECT_EQ(exc::system_error_text(5), "Access is denied.");
  EXPECT_EQ(exc::system_error_text(32),
            "The process cannot access the file because it is being used by another process.");
  EXPECT_EQ(exc::system_error_text(33),
            "The process cannot access the file because another process has locked a portion of "
            "the file.");
  EXPECT_EQ(exc::system_error_text(1060),
            "The specified service does not exist as an installed service.");
}

TEST(SystemErrorTextOnHost, OtherCodesAreTheStandardCategoryText) {
  for (int code : {4, 7, 9999}) {
    EXPECT_EQ(exc::system_error_text(static_cast<uint32_t>(code)),
              std::system_category().message(code))
        << "code " << code;
  }
}

TEST(SystemErrorTextOnHost, ShowsTheWindowsTextInASystemException) {
  exc::win_sys_exc_t e("Failed.", 5);
  EXPECT_EQ(std::string(e.what()), "Access is denied.\nFailed.\n--tr:Error code: 0x00000005");
}

}  // namespace
