#include "oracle/restore/run_as_user.h"

#include "common/exc/exc_base.h"
#include "common/security/logon_user.h"
#include "common/win/impersonation_api.h"

namespace specific::oracle {

void run_as_user(const std::u16string& osUser, const std::u16string& osPassword,
                 const std::function<void()>& body) {
  win::win_handle_t token;
  security::logon_user(osUser, osPassword, token);
  if (!token.valid()) {
    throw exc::runtime_exc_t("User credentials not specified or logon error");
  }
  const auto api = win::impersonation_api();
  uint32_t error = 0;
  if (!api->impersonate_logged_on_user(token.get(), error)) {
    throw exc::win_sys_exc_t("Failed to impersonate logged on user", error);
  }
  try {
    body();
  } catch (...) {
    api->revert_to_self();
    throw;
  }
  api->revert_to_self();
  // No user profile is loaded for this logon, so the token's close is all there is to release.
}

}  // namespace specific::oracle
