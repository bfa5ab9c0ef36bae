// On Windows the system code page is CP_ACP; the system's own conversion is the reference.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "common/text/convert.h"

namespace {

std::string acp_of(const std::u16string& w) {
  const wchar_t* src = reinterpret_cast<const wchar_t*>(w.c_str());
  int n = WideCharToMultiByte(CP_ACP, 0, src, -1, nullptr, 0, nullptr, nullptr);
  std::string r(static_cast<size_t>(n), '\0');
  WideCharToMultiByte(CP_ACP, 0, src, -1, &r[0], n, nullptr, nullptr);
  r.resize(r.find('\0'));
  return r;
}

std::u16string wide_of_acp(const std::string& s) {
  int n = MultiByteToWideChar(CP_ACP, 0, s.c_str(), -1, nullptr, 0);
  std::wstring r(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, s.c_str(), -1, &r[0], n);
  r.resize(r.find(L'\0'));
  return std::u16string(r.begin(), r.end());
}

TEST(ConvertOnWindows, NarrowsToTheSystemCodePage) {
  const std::u16string wide = u"Gr\u00fc\u00dfe \u20ac \u4e2d";
  EXPECT_EQ(util::to_multibyte(wide), acp_of(wide));
  EXPECT_EQ(util::to_multibyte_safe(wide), acp_of(wide));
  if (GetACP() == 1252) {
    EXPECT_EQ(util::to_multibyte(u"Gr\u00fc\u00dfe"), "Gr\xFC\xDF" "e");
  }
}

TEST(ConvertOnWindows, WidensFromTheSystemCodePage) {
  const std::string narrow = "Gr\xFC\xDF" "e \x80";
  EXPECT_EQ(util::to_unicode(narrow), wide_of_acp(narrow));
  EXPECT_EQ(util::to_unicode_safe(narrow), wide_of_acp(narrow));
  if (GetACP() == 1252) {
    EXPECT_EQ(util::to_unicode("\xE4\x80"), u"\u00e4\u20ac");
  }
}

TEST(ConvertOnWindows, ConvertsTheCodePageToUtf8) {
  if (GetACP() != 1252) GTEST_SKIP() << "expects code page 1252, have " << GetACP();
  EXPECT_EQ(util::multibyte_to_utf8("Gr\xFC\xDF" "e \x80"), "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC");
}

}  // namespace
