#include "common/win/impersonation_api.h"

#include <utility>

namespace win {

namespace {

// Never destroyed: a session may end during process exit.
std::shared_ptr<impersonation_api_t>& installed() {
  static auto* const api = new std::shared_ptr<impersonation_api_t>();
  return *api;
}

}  // namespace

void set_impersonation_api(std::shared_ptr<impersonation_api_t> api) {
  std::atomic_store(&installed(), std::move(api));
}

std::shared_ptr<impersonation_api_t> impersonation_api() {
  auto api = std::atomic_load(&installed());
  if (api) return api;
  return platform_impersonation_api();
}

}  // namespace win
