// The owner of a real Win32 handle closes it and keeps the last error across the close.
#include <windows.h>

#include <gtest/gtest.h>

#include "common/win/handle.h"

namespace {

bool is_open(HANDLE h) {
  DWORD flags = 0;
  return GetHandleInformation(h, &flags) != FALSE;
}

TEST(WinHandleWin32, DestructorClosesTheHandle) {
  HANDLE raw = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ASSERT_NE(raw, nullptr);
  {
    win::win_handle_t h(raw);
    EXPECT_TRUE(is_open(raw));
  }
  EXPECT_FALSE(is_open(raw));
}

TEST(WinHandleWin32, ClosingKeepsTheLastError) {
  HANDLE raw = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ASSERT_NE(raw, nullptr);
  {
    win::win_handle_t h(raw);
    SetLastError(1234);
  }
  EXPECT_EQ(GetLastError(), 1234u);
  EXPECT_FALSE(is_open(raw));
}

TEST(WinHandleWin32, ResetClosesThePreviousHandle) {
  HANDLE first = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE second = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  win::win_handle_t h(first);
  h.reset(second);
  EXPECT_FALSE(is_open(first));
  EXPECT_TRUE(is_open(second));
}

}  // namespace
