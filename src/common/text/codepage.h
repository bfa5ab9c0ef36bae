// The platform half of the text conversions: one call each way for a code page. On Windows
// these are WideCharToMultiByte / MultiByteToWideChar with flags 0; the host build treats both
// the system code page and UTF-8 as UTF-8 and replaces invalid input with U+FFFD, as Windows
// does for UTF-8. The result ends at the first NUL.
#pragma once
#include <cstdint>
#include <string>

namespace util::codepage {

constexpr uint32_t kSystem = 0;    // CP_ACP
constexpr uint32_t kUtf8 = 65001;  // CP_UTF8

// False on failure, with the system's error code in `error`.
bool wide_to_narrow(uint32_t code_page, const std::u16string& wide, std::string& out,
                    uint32_t& error);
bool narrow_to_wide(uint32_t code_page, const std::string& narrow, std::u16string& out,
                    uint32_t& error);

}  // namespace util::codepage
