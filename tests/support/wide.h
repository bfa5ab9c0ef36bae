// Small helpers for tests that talk to the exports: UTF-16 literals as DSL_WCHAR pointers and
// out texts back as std::u16string or UTF-8.
#pragma once
#include <string>

#include "DbShadowLink.h"

namespace dsl_test {

inline const DSL_WCHAR* W(const char16_t* text) { return reinterpret_cast<const DSL_WCHAR*>(text); }

inline std::u16string take_text(DSL_WCHAR* text) {
  std::u16string result(reinterpret_cast<const char16_t*>(text));
  OracleLibStrFree(text);
  return result;
}

// UTF-16 to UTF-8, for readable assertion messages.
std::string utf8(const std::u16string& text);

}  // namespace dsl_test
