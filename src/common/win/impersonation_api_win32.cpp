#include "common/win/impersonation_api.h"

#define SECURITY_WIN32
#include <windows.h>
#include <security.h>
#include <sspi.h>

namespace win {

namespace {

CtxtHandle to_handle(const security_context_t& context) {
  CtxtHandle handle;
  handle.dwLower = context.lower;
  handle.dwUpper = context.upper;
  return handle;
}

class win32_impersonation_api_t : public impersonation_api_t {
 public:
  bool duplicate_token(win_handle_t::native_t token, win_handle_t& copy) override {
    HANDLE duplicate = nullptr;
    if (!DuplicateToken(static_cast<HANDLE>(token), SecurityImpersonation, &duplicate)) {
      return false;
    }
    copy.reset(duplicate);
    return true;
  }

  bool impersonate_logged_on_user(win_handle_t::native_t token, uint32_t& error) override {
    if (ImpersonateLoggedOnUser(static_cast<HANDLE>(token))) return true;
    error = GetLastError();
    return false;
  }

  void revert_to_self() override { RevertToSelf(); }

  int32_t impersonate_security_context(const security_context_t& context) override {
    CtxtHandle handle = to_handle(context);
    return ImpersonateSecurityContext(&handle);
  }

  int32_t revert_security_context(const security_context_t& context) override {
    CtxtHandle handle = to_handle(context);
    return RevertSecurityContext(&handle);
  }
};

}  // namespace

std::shared_ptr<impersonation_api_t> platform_impersonation_api() {
  static auto* const api =
      new std::shared_ptr<impersonation_api_t>(std::make_shared<win32_impersonation_api_t>());
  return *api;
}

}  // namespace win
