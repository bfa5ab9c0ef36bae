#include "common/win/net_use_api.h"

#include <utility>

namespace win {

namespace {

// Never destroyed: a file operation during process exit may still end a connection.
std::shared_ptr<net_use_api_t>& installed() {
  static auto* const api = new std::shared_ptr<net_use_api_t>();
  return *api;
}

}  // namespace

void set_net_use_api(std::shared_ptr<net_use_api_t> api) {
  std::atomic_store(&installed(), std::move(api));
}

std::shared_ptr<net_use_api_t> net_use_api() {
  auto api = std::atomic_load(&installed());
  if (api) return api;
  return platform_net_use_api();
}

}  // namespace win
