#include <windows.h>
#include <oleauto.h>

#include <system_error>

#include "common/exc/sys_text.h"

namespace exc {

namespace {

constexpr uint32_t kFirstInternetError = 12000;
constexpr uint32_t kLastInternetError = 12175;
constexpr WORD kEnglishUnitedStates = 1033;

std::string wide_to_utf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size < 1) return std::string();
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
  result.resize(result.find('\0'));
  return result;
}

bool format_message(DWORD flags, HMODULE module, DWORD code, DWORD language, std::string& out) {
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(flags | FORMAT_MESSAGE_ALLOCATE_BUFFER, module, code,
                                      language, reinterpret_cast<wchar_t*>(&buffer), /*nSize=*/0,
                                      /*Arguments=*/nullptr);
  if (length == 0 || buffer == nullptr) return false;
  out = wide_to_utf8(buffer);
  LocalFree(buffer);
  return true;
}

}  // namespace

std::string system_error_text(uint32_t code) {
  std::string text;
  bool found = format_message(FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM,
                              /*module=*/nullptr, code, kEnglishUnitedStates, text);
  if (!found && code >= kFirstInternetError && code <= kLastInternetError) {
    found = format_message(FORMAT_MESSAGE_FROM_HMODULE, GetModuleHandleW(L"wininet.dll"), code,
                           /*language=*/0, text);
  }
  if (!found) {
    try {
      text = std::system_category().message(static_cast<int>(code));
    } catch (...) {
      text.clear();
    }
  }
  if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) text.resize(text.size() - 2);
  return text;
}

std::string com_error_description() {
  IErrorInfo* info = nullptr;
  if (GetErrorInfo(0, &info) != S_OK || info == nullptr) return std::string();
  std::string text;
  BSTR description = nullptr;
  if (SUCCEEDED(info->GetDescription(&description)) && description != nullptr) {
    text = wide_to_utf8(description);
    SysFreeString(description);
  }
  info->Release();
  return text;
}

}  // namespace exc
