// The registry calls passed to Win32 as they are.
#include <windows.h>

#include "common/win/reg_api.h"

namespace win::reg_api {

namespace {

HKEY as_hkey(reg_handle_t key) { return static_cast<HKEY>(key); }

LPCWSTR as_wide(const std::u16string& text) { return reinterpret_cast<LPCWSTR>(text.c_str()); }

LPDWORD as_dword(uint32_t* value) {
  static_assert(sizeof(DWORD) == sizeof(uint32_t), "DWORD is 32 bits");
  return reinterpret_cast<LPDWORD>(value);
}

}  // namespace

uint32_t open_key(reg_handle_t parent, const std::u16string& path, uint32_t access,
                  reg_handle_t& out) {
  HKEY key = nullptr;
  const LSTATUS status = RegOpenKeyExW(parent == nullptr ? HKEY_LOCAL_MACHINE : as_hkey(parent),
                                       as_wide(path), /*ulOptions=*/0, access, &key);
  if (status == ERROR_SUCCESS) out = key;
  return static_cast<uint32_t>(status);
}

uint32_t close_key(reg_handle_t key) noexcept {
  return static_cast<uint32_t>(RegCloseKey(as_hkey(key)));
}

uint32_t query_value_w(reg_handle_t key, const std::u16string& name, uint32_t* type, uint8_t* data,
                       uint32_t* size) {
  return static_cast<uint32_t>(RegQueryValueExW(as_hkey(key), as_wide(name),
                                                /*lpReserved=*/nullptr, as_dword(type), data,
                                                as_dword(size)));
}

uint32_t query_value_a(reg_handle_t key, const std::string& name, uint32_t* type, uint8_t* data,
                       uint32_t* size) {
  return static_cast<uint32_t>(RegQueryValueExA(as_hkey(key), name.c_str(),
                                                /*lpReserved=*/nullptr, as_dword(type), data,
                                                as_dword(size)));
}

uint32_t query_subkey_count(reg_handle_t key, uint32_t& count) {
  DWORD subkeys = 0;
  const LSTATUS status = RegQueryInfoKeyW(
      as_hkey(key), /*lpClass=*/nullptr, /*lpcchClass=*/nullptr, /*lpReserved=*/nullptr, &subkeys,
      /*lpcbMaxSubKeyLen=*/nullptr, /*lpcbMaxClassLen=*/nullptr, /*lpcValues=*/nullptr,
      /*lpcbMaxValueNameLen=*/nullptr, /*lpcbMaxValueLen=*/nullptr,
      /*lpcbSecurityDescriptor=*/nullptr, /*lpftLastWriteTime=*/nullptr);
  if (status == ERROR_SUCCESS) count = subkeys;
  return static_cast<uint32_t>(status);
}

uint32_t enum_key(reg_handle_t key, uint32_t index, char16_t* name, uint32_t& length) {
  DWORD chars = length;
  const LSTATUS status =
      RegEnumKeyExW(as_hkey(key), index, reinterpret_cast<LPWSTR>(name), &chars,
                    /*lpReserved=*/nullptr, /*lpClass=*/nullptr, /*lpcchClass=*/nullptr,
                    /*lpftLastWriteTime=*/nullptr);
  if (status == ERROR_SUCCESS) length = chars;
  return static_cast<uint32_t>(status);
}

}  // namespace win::reg_api
