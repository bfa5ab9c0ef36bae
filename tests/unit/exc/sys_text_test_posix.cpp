// On the host build the system's words are the standard library's system category.
#include <gtest/gtest.h>

#include <system_error>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"

namespace {

TEST(SystemErrorTextOnHost, IsTheStandardCategoryText) {
  for (int code : {2, 3, 5, 13, 32}) {
    EXPECT_EQ(exc::system_error_text(static_cast<uint32_t>(code)),
              std::system_category().message(code))
        << "code " << code;
  }
}

TEST(SystemErrorTextOnHost, ShowsTheStandardTextInASystemException) {
  exc::win_sys_exc_t e("Failed.", 5);
  EXPECT_EQ(std::string(e.what()),
            std::system_category().message(5) + "\nFailed.\n--tr:Error code: 0x00000005");
}

}  // namespace
