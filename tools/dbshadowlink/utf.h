// UTF-8 <-> UTF-16 conversion for the console host. The host keeps all its own text in UTF-8
// and turns it into UTF-16 only at the library's boundary (and at Win32 calls). Pure functions,
// safe from any thread.
#pragma once
#include <string>
#include <string_view>

namespace host {

// Strict decoding: on success fills `out` and returns true. On ill-formed input (a bad lead or
// continuation byte, a truncated sequence, an overlong form, a surrogate or a value above
// U+10FFFF) returns false, leaves `out` untouched and sets `bad_offset` to the byte offset of
// the first bad sequence.
[[nodiscard]] bool utf8_to_utf16(std::string_view utf8, std::u16string& out, size_t& bad_offset);

// Lenient encoding: a lone surrogate, which UTF-8 cannot carry, becomes U+FFFD. Texts from the
// library are shown as they are, never refused.
std::string utf16_to_utf8(std::u16string_view utf16);

}  // namespace host
