// UTF-8 and UTF-16 for the tests, written apart from the library's own conversion so that the
// tests check the console host against an independent reading of the same texts.
#pragma once
#include <string>
#include <string_view>

#include "DbShadowLink.h"

namespace console_test {

// Throws std::invalid_argument on ill-formed UTF-8.
std::u16string utf8_to_utf16(std::string_view utf8);
// Throws std::invalid_argument on a lone surrogate.
std::string utf16_to_utf8(std::u16string_view utf16);

using dsl_string_t = std::basic_string<DSL_WCHAR>;
dsl_string_t to_dsl(std::string_view utf8);
std::string from_dsl(const DSL_WCHAR* text);

}  // namespace console_test
