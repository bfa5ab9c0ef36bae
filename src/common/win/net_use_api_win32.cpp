#include "common/win/net_use_api.h"

#include <windows.h>
#include <lm.h>

namespace win {

namespace {

LPWSTR w(const std::u16string& text) {
  return const_cast<LPWSTR>(reinterpret_cast<LPCWSTR>(text.c_str()));
}

std::u16string from_w(LPCWSTR text) {
  return text != nullptr ? std::u16string(reinterpret_cast<const char16_t*>(text)) : std::u16string();
}

class win32_net_use_api_t : public net_use_api_t {
 public:
  uint32_t get_info(const std::u16string& share, net_use_info_t& info) override {
    LPBYTE buffer = nullptr;
    const NET_API_STATUS status = NetUseGetInfo(/*UncServerName=*/nullptr, w(share), /*level=*/2,
                                                &buffer);
    if (status != NERR_Success) {
      if (buffer != nullptr) NetApiBufferFree(buffer);
      return status;
    }
    const auto* record = reinterpret_cast<const USE_INFO_2*>(buffer);
    net_use_info_t result;
    result.remote = from_w(record->ui2_remote);
    result.status = record->ui2_status;
    result.ref_count = record->ui2_refcount;
    result.use_count = record->ui2_usecount;
    NetApiBufferFree(buffer);
    info = std::move(result);
    return 0;
  }

  uint32_t add(const std::u16string& share, const std::u16string& domain,
               const std::u16string& user, const std::u16string& password) override {
    // A zeroed record asks for a disk device (USE_DISKDEV) with no local name.
    USE_INFO_2 record{};
    record.ui2_remote = w(share);
    record.ui2_password = w(password);
    record.ui2_username = w(user);
    record.ui2_domainname = w(domain);
    DWORD parm_err = 0;
    return NetUseAdd(/*servername=*/nullptr, /*LevelFlags=*/2, reinterpret_cast<LPBYTE>(&record),
                     &parm_err);
  }

  uint32_t del(const std::u16string& share) override {
    return NetUseDel(/*UncServerName=*/nullptr, w(share), /*ForceLevelFlags=*/USE_NOFORCE);
  }
};

}  // namespace

std::shared_ptr<net_use_api_t> platform_net_use_api() {
  static auto* const api =
      new std::shared_ptr<net_use_api_t>(std::make_shared<win32_net_use_api_t>());
  return *api;
}

}  // namespace win
