#include <cstdio>
#include <fstream>
#include <random>

#include "common/exc/exc_base.h"
#include "common/text/guid.h"

namespace util {

guid_t new_guid() {
  uint8_t bytes[16];
  std::ifstream random("/dev/urandom", std::ios::binary);
  if (!random.read(reinterpret_cast<char*>(bytes), sizeof bytes)) {
    std::random_device device;
    for (auto& b : bytes) b = static_cast<uint8_t>(device());
  }
  // A version-4 GUID, as CoCreateGuid makes them.
  bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
  guid_t g;
  g.data1 = static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
  g.data2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
  g.data3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
  for (int i = 0; i < 8; ++i) g.data4[i] = bytes[8 + i];
  return g;
}

std::u16string guid_to_text(const guid_t& g) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}",
                g.data1, g.data2, g.data3, g.data4[0], g.data4[1], g.data4[2], g.data4[3],
                g.data4[4], g.data4[5], g.data4[6], g.data4[7]);
  return std::u16string(buffer, buffer + std::char_traits<char>::length(buffer));
}

}  // namespace util
