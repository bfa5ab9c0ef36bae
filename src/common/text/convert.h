// Conversions between UTF-16 (wide), the system code page and UTF-8 (narrow).
// On Windows the code page is CP_ACP; on the host build it is UTF-8. Conversions follow
// Windows' rules with flags 0 on both builds: invalid input is replaced (U+FFFD, or the code
// page's default character), the result stops at the first NUL, an empty source gives an
// empty result. The throwing forms raise win_sys_exc_t; the _safe forms return a marker text
// instead and are meant for paths that already report an error.
#pragma once
#include <string>

namespace util {

std::string to_multibyte(const std::u16string& wide);
std::string to_multibyte_safe(const std::u16string& wide);  // "UNICODE->ANSI failed"
std::u16string to_unicode(const std::string& narrow);
std::u16string to_unicode_safe(const std::string& narrow);  // u"ANSI -> UNICODE failed."
std::string to_utf8(const std::u16string& wide);
std::u16string from_utf8(const std::string& utf8);
// Code page to UTF-8; on any failure a copy of the source.
std::string multibyte_to_utf8(const std::string& narrow);

// The literal texts of the _safe forms.
extern const char kToMultibyteFailed[];
extern const char16_t kToUnicodeFailed[];

}  // namespace util
