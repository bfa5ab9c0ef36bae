// The system's table of connections to shares (NetUseGetInfo, NetUseAdd and NetUseDel at level
// 2 with no server name), behind one interface so that the rules built on it can be tested
// against a stand-in. Windows asks the system. The host build has no client for shares: it
// keeps a table of its own for the life of the process, so that the same lines are written and
// the same decisions taken as on Windows.
// Safe from any thread; an installed stand-in must be too.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

namespace win {

// NERR_UseNotFound: no connection to that share.
constexpr uint32_t kNerrUseNotFound = 2250;

// The fields of USE_INFO_2 that are reported.
struct net_use_info_t {
  std::u16string remote;
  uint32_t status = 0;
  uint32_t ref_count = 0;
  uint32_t use_count = 0;
};

class net_use_api_t {
 public:
  virtual ~net_use_api_t() = default;
  // 0 with `info` filled, or the system's code (kNerrUseNotFound when there is no connection);
  // `info` is not touched on failure.
  virtual uint32_t get_info(const std::u16string& share, net_use_info_t& info) = 0;
  // A connection to `share` as `domain`\`user`, as a disk device; 0 or the system's code.
  virtual uint32_t add(const std::u16string& share, const std::u16string& domain,
                       const std::u16string& user, const std::u16string& password) = 0;
  // Ends the connection without forcing it (USE_NOFORCE); 0 or the system's code.
  virtual uint32_t del(const std::u16string& share) = 0;
};

// The platform's own table.
std::shared_ptr<net_use_api_t> platform_net_use_api();
// What the connection operations use; an empty pointer brings the platform's back.
void set_net_use_api(std::shared_ptr<net_use_api_t> api);
std::shared_ptr<net_use_api_t> net_use_api();

}  // namespace win
