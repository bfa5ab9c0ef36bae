// Base64 with the standard alphabet ("+", "/", "=" padding), no line breaks. Decoding stops
// at the first "=" or the first character outside the alphabet, without failing.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace util {

std::string base64_encode(const uint8_t* bytes, size_t length);
std::string base64_encode(const std::vector<uint8_t>& bytes);
std::string base64_encode(const std::string& bytes);

void base64_decode(const std::string& text, std::vector<uint8_t>& out_bytes);
std::string base64_decode(const std::string& text);

}  // namespace util
