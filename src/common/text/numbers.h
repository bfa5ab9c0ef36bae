// Numbers and booleans as text, and text to number, with classic digits.
#pragma once
#include <cstdint>
#include <string>

namespace util {

std::string to_str(int32_t value);
std::string to_str(uint32_t value);
std::string to_str(uint64_t value);
std::string to_str(bool value);  // "true" or "false"
std::u16string to_wstr(int32_t value);
std::u16string to_wstr(uint32_t value);
std::u16string to_wstr(uint64_t value);

std::string to_hex(uint32_t value);  // "0x" and 8 lower-case digits
std::string to_hex(uint64_t value);  // "0x" and 16 lower-case digits
std::string to_hex(int32_t value);   // the bit pattern, 8 digits

// strtol in base 10 with 32-bit saturation: leading blanks and a sign accepted, trailing
// characters ignored. Throws runtime_exc_t when no character could be used.
int32_t to_int(const std::string& text);
int32_t to_int(const std::u16string& text);

// The strtol core shared with fmt_t: parses at `pos`, returns false when no number is there,
// otherwise the value (saturated to 32 bits) and the index behind its last digit.
template <typename Char>
bool parse_long(const std::basic_string<Char>& text, size_t pos, int32_t& value, size_t& end);

}  // namespace util
