#include <windows.h>
#include <objbase.h>
#include <rpc.h>

#include <cstring>

#include "common/exc/exc_base.h"
#include "common/text/guid.h"

namespace util {

guid_t new_guid() {
  GUID g;
  const HRESULT hr = CoCreateGuid(&g);
  if (FAILED(hr)) throw exc::com_exc_t(static_cast<uint32_t>(hr), "Failed to create GUID.");
  guid_t result;
  result.data1 = g.Data1;
  result.data2 = g.Data2;
  result.data3 = g.Data3;
  std::memcpy(result.data4.data(), g.Data4, 8);
  return result;
}

std::u16string guid_to_text(const guid_t& guid) {
  UUID u;
  u.Data1 = guid.data1;
  u.Data2 = guid.data2;
  u.Data3 = guid.data3;
  std::memcpy(u.Data4, guid.data4.data(), 8);
  RPC_WSTR text = nullptr;
  const RPC_STATUS status = UuidToStringW(&u, &text);
  if (status != RPC_S_OK || text == nullptr) {
    throw exc::win_sys_exc_t("Failed to convert GUID to string.", static_cast<uint32_t>(status));
  }
  std::u16string result = u"{" + std::u16string(reinterpret_cast<const char16_t*>(text)) + u"}";
  RpcStringFreeW(&text);
  return result;
}

}  // namespace util
