// GUIDs: new ones from the system, and their text "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}"
// with lower-case digits, as UuidToStringW writes them.
#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace util {

struct guid_t {
  uint32_t data1 = 0;
  uint16_t data2 = 0;
  uint16_t data3 = 0;
  std::array<uint8_t, 8> data4{};
};

guid_t new_guid();
std::u16string guid_to_text(const guid_t& guid);

}  // namespace util
