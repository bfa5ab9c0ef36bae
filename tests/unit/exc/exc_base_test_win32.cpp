// COM failures on Windows: the description of the thread's error object stands in front of
// the code line.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"

namespace {

// Sets the thread's COM error object with the given description.
void set_error_description(const wchar_t* description) {
  ICreateErrorInfo* create = nullptr;
  ASSERT_EQ(CreateErrorInfo(&create), S_OK);
  create->SetDescription(const_cast<LPOLESTR>(description));
  IErrorInfo* info = nullptr;
  ASSERT_EQ(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)), S_OK);
  ASSERT_EQ(SetErrorInfo(0, info), S_OK);
  info->Release();
  create->Release();
}

TEST(ComErrorDescriptionOnWindows, GivesTheErrorObjectsDescriptionInUtf8Once) {
  set_error_description(L"Schreibfehler \u00e4");
  EXPECT_EQ(exc::com_error_description(), "Schreibfehler \xC3\xA4");
  EXPECT_EQ(exc::com_error_description(), "");  // taking the object clears it
}

TEST(ComExcOnWindows, PutsTheDescriptionDirectlyInFrontOfTheCodeLine) {
  set_error_description(L"The writer did not respond.");
  exc::com_exc_t e(0x80042319u, "Creating the snapshot set failed.");
  ASSERT_EQ(e.messages().size(), 2u);
  EXPECT_EQ(e.messages()[0].text, "The writer did not respond. Error code: 0x80042319");
  EXPECT_EQ(e.messages()[1].text, "Creating the snapshot set failed.");
  EXPECT_EQ(e.code(), 0x80042319u);
}

}  // namespace
