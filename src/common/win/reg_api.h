// The registry calls this library makes, in the shape of their Win32 originals: each returns the
// Win32 status code (0 on success) and fills its out-parameters only as Win32 does. Windows
// passes them straight to the system; the host build answers them from a read-only store
// loaded from the .reg file named by DBSHADOWLINK_REGISTRY (see reg_store_posix.h).
// Logic that needs exactly these calls and their codes (discovery opens keys and reads its
// values into fixed buffers) calls them here; everything else goes through win_reg_key_t
// (reg_key.h).
// A handle belongs to one thread at a time; different handles may be used in parallel.
#pragma once
#include <cstdint>
#include <string>

#include "common/win/file_codes.h"

namespace win {

// An HKEY; 0 when there is none.
using reg_handle_t = void*;

// Access masks.
constexpr uint32_t kKeyQueryValue = 0x0001;
constexpr uint32_t kKeySetValue = 0x0002;
constexpr uint32_t kKeyEnumerateSubKeys = 0x0008;
constexpr uint32_t kKeyRead = 0x20019;                       // KEY_READ
constexpr uint32_t kKeyWow64_64Key = 0x0100;                 // KEY_WOW64_64KEY
constexpr uint32_t kKeyRead64 = kKeyRead | kKeyWow64_64Key;  // 0x20119

// Value types.
constexpr uint32_t kRegNone = 0;
constexpr uint32_t kRegSz = 1;
constexpr uint32_t kRegExpandSz = 2;
constexpr uint32_t kRegBinary = 3;
constexpr uint32_t kRegDword = 4;
constexpr uint32_t kRegMultiSz = 7;
constexpr uint32_t kRegQword = 11;

// Status codes the callers test for, beyond the common ones of file_codes.h (kErrorSuccess,
// kErrorFileNotFound, kErrorPathNotFound, kErrorAccessDenied, kErrorInvalidHandle, ...).
constexpr uint32_t kErrorBadPathname = 161;
constexpr uint32_t kErrorMoreData = 234;
constexpr uint32_t kErrorNoMoreItems = 259;

// The longest key name the registry allows, in UTF-16 units without terminator.
constexpr uint32_t kMaxKeyNameLength = 255;

// Registry data is little-endian on every platform Windows runs on: a DWORD from its four
// bytes, and `units` UTF-16 characters from twice as many bytes.
inline uint32_t le_dword(const uint8_t* bytes) {
  return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
         static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}
inline std::u16string utf16le_text(const uint8_t* bytes, size_t units) {
  std::u16string text(units, u'\0');
  for (size_t i = 0; i < units; ++i) {
    text[i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  return text;
}

namespace reg_api {

// RegOpenKeyExW(parent, path, /*options=*/0, access, &out). A parent of 0 stands for
// HKEY_LOCAL_MACHINE. On failure `out` is not touched. On the host build a store file that
// cannot be read or parsed makes this throw exc::runtime_exc_t naming the file and the line.
[[nodiscard]] uint32_t open_key(reg_handle_t parent, const std::u16string& path, uint32_t access,
                                reg_handle_t& out);

// RegCloseKey. Never throws.
uint32_t close_key(reg_handle_t key) noexcept;

// RegQueryValueExW: `name` empty for the key's default value; `type`, `data` and `size` may
// each be null as Win32 allows. `*size` is in bytes: the capacity of `data` on the way in, the
// size of the value (or the size needed, with kErrorMoreData) on the way out.
[[nodiscard]] uint32_t query_value_w(reg_handle_t key, const std::u16string& name, uint32_t* type,
                                     uint8_t* data, uint32_t* size);

// RegQueryValueExA: the name in the system code page; text values (REG_SZ, REG_EXPAND_SZ,
// REG_MULTI_SZ) come converted to the system code page, other values as stored.
[[nodiscard]] uint32_t query_value_a(reg_handle_t key, const std::string& name, uint32_t* type,
                                     uint8_t* data, uint32_t* size);

// RegQueryInfoKeyW, asked only for the number of subkeys.
[[nodiscard]] uint32_t query_subkey_count(reg_handle_t key, uint32_t& count);

// RegEnumKeyExW: the name of subkey `index` into `name`. `length` holds the capacity of `name`
// in UTF-16 units, terminator included, on the way in, and the length of the name without
// terminator on the way out. kErrorNoMoreItems past the last subkey, kErrorMoreData when the
// name does not fit.
[[nodiscard]] uint32_t enum_key(reg_handle_t key, uint32_t index, char16_t* name, uint32_t& length);

}  // namespace reg_api
}  // namespace win
