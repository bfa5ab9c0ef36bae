#include "common/text/base64.h"

namespace util {

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int decode_char(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

std::string base64_encode(const uint8_t* bytes, size_t length) {
  std::string out;
  out.reserve((length + 2) / 3 * 4);
  size_t i = 0;
  for (; i + 3 <= length; i += 3) {
    const uint32_t group = bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2];
    out.push_back(kAlphabet[group >> 18 & 63]);
    out.push_back(kAlphabet[group >> 12 & 63]);
    out.push_back(kAlphabet[group >> 6 & 63]);
    out.push_back(kAlphabet[group & 63]);
  }
  const size_t rest = length - i;
  if (rest != 0) {
    uint32_t group = bytes[i] << 16;
    if (rest == 2) group |= bytes[i + 1] << 8;
    out.push_back(kAlphabet[group >> 18 & 63]);
    out.push_back(kAlphabet[group >> 12 & 63]);
    out.push_back(rest == 2 ? kAlphabet[group >> 6 & 63] : '=');
    out.push_back('=');
  }
  return out;
}

std::string base64_encode(const std::vector<uint8_t>& bytes) {
  return base64_encode(bytes.data(), bytes.size());
}

std::string base64_encode(const std::string& bytes) {
  return base64_encode(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

void base64_decode(const std::string& text, std::vector<uint8_t>& out_bytes) {
  out_bytes.clear();
  out_bytes.reserve(text.size());
  uint32_t group = 0;
  int count = 0;
  for (const char c : text) {
    const int v = decode_char(c);
    if (v < 0) break;  // "=", a line break or anything else ends the text
    group = group << 6 | static_cast<uint32_t>(v);
    if (++count == 4) {
      out_bytes.push_back(static_cast<uint8_t>(group >> 16));
      out_bytes.push_back(static_cast<uint8_t>(group >> 8));
      out_bytes.push_back(static_cast<uint8_t>(group));
      group = 0;
      count = 0;
    }
  }
  if (count != 0) {
    group <<= 6 * (4 - count);
    const uint8_t last[3] = {static_cast<uint8_t>(group >> 16), static_cast<uint8_t>(group >> 8),
                             static_cast<uint8_t>(group)};
    for (int k = 0; k < count - 1; ++k) out_bytes.push_back(last[k]);
  }
}

std::string base64_decode(const std::string& text) {
  std::vector<uint8_t> bytes;
  base64_decode(text, bytes);
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace util
