// On Windows the system's words come from FormatMessageW in English and, for the Internet
// range, from wininet.dll once that module is loaded.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"

namespace {

std::string utf8(const wchar_t* w, size_t n) {
  if (n == 0) return {};
  int size = WideCharToMultiByte(CP_UTF8, 0, w, static_cast<int>(n), nullptr, 0, nullptr, nullptr);
  std::string r(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, w, static_cast<int>(n), &r[0], size, nullptr, nullptr);
  return r;
}

std::string without_one_crlf(std::string s) {
  if (s.size() >= 2 && s.compare(s.size() - 2, 2, "\r\n") == 0) s.resize(s.size() - 2);
  return s;
}

// The system's own answer, asked directly; empty when it has none.
std::string format_message(DWORD flags, HMODULE module, DWORD code, DWORD language) {
  wchar_t* buffer = nullptr;
  DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | flags, module, code, language,
                           reinterpret_cast<LPWSTR>(&buffer), /*nSize=*/0, /*Arguments=*/nullptr);
  std::string r = n ? utf8(buffer, n) : std::string();
  if (buffer) LocalFree(buffer);
  return r;
}

std::string system_table_text(DWORD code) {
  return format_message(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                        code, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
}

TEST(SystemErrorTextOnWindows, IsTheSystemTablesEnglishTextWithoutItsLineEnd) {
  for (DWORD code : {2ul, 3ul, 5ul, 32ul, 33ul, 1326ul}) {
    const std::string expected = system_table_text(code);
    ASSERT_FALSE(expected.empty()) << "code " << code;
    EXPECT_EQ(exc::system_error_text(code), without_one_crlf(expected)) << "code " << code;
  }
}

TEST(SystemErrorTextOnWindows, SaysAccessIsDeniedForCodeFive) {
  // Windows words it "Access is denied."; Wine, which runs these tests, "Access denied.".
  const std::string text = exc::system_error_text(5);
  EXPECT_TRUE(text == "Access is denied." || text == "Access denied.") << text;
}

TEST(SystemErrorTextOnWindows, ShowsTheSystemTextFirstInASystemException) {
  exc::win_sys_exc_t e("Failed to open the key.", 5);
  EXPECT_EQ(std::string(e.what()), without_one_crlf(system_table_text(5)) +
                                       "\nFailed to open the key.\n--tr:Error code: 0x00000005");
}

TEST(SystemErrorTextOnWindows, TakesAnInternetCodeFromWininetOnceItIsLoaded) {
  const DWORD code = 12007;
  if (system_table_text(code).empty() && GetModuleHandleW(L"wininet.dll") == nullptr) {
    // Neither the system table nor a loaded wininet.dll has words: the standard category answers.
    EXPECT_EQ(exc::system_error_text(code),
              without_one_crlf(std::system_category().message(static_cast<int>(code))));
  }
  HMODULE wininet = LoadLibraryW(L"wininet.dll");
  ASSERT_NE(wininet, nullptr);
  const std::string from_system = system_table_text(code);
  const std::string from_wininet =
      format_message(FORMAT_MESSAGE_FROM_HMODULE, wininet, code, /*language=*/0);
  ASSERT_FALSE(from_wininet.empty());
  const std::string expected = from_system.empty() ? from_wininet : from_system;
  EXPECT_EQ(exc::system_error_text(code), without_one_crlf(expected));
}

TEST(SystemErrorTextOnWindows, DoesNotAskWininetOutsideTheInternetRange) {
  HMODULE wininet = LoadLibraryW(L"wininet.dll");
  ASSERT_NE(wininet, nullptr);
  for (DWORD code : {11999ul, 12176ul}) {
    if (!system_table_text(code).empty()) continue;
    EXPECT_EQ(exc::system_error_text(code),
              without_one_crlf(std::system_category().message(static_cast<int>(code))))
        << "code " << code;
  }
}

}  // namespace
