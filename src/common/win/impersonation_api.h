// The system calls that put an identity on the calling thread and take it off again: a logon
// token (DuplicateToken, ImpersonateLoggedOnUser, RevertToSelf) and an SSPI security context
// (ImpersonateSecurityContext, RevertSecurityContext). Behind one interface so that the rules
// built on them can be tested against a stand-in.
// On the host build there is no identity to take: every call succeeds and changes nothing, and
// a duplicated token is the same value again.
// The calls act on the calling thread; the interface itself is safe from any thread.
#pragma once
#include <cstdint>
#include <memory>

#include "common/win/handle.h"

namespace win {

// The two words of an SSPI CtxtHandle.
struct security_context_t {
  uintptr_t lower = 0;
  uintptr_t upper = 0;
};

class impersonation_api_t {
 public:
  virtual ~impersonation_api_t() = default;
  // A copy of `token` at SecurityImpersonation level into `copy`; false on failure.
  virtual bool duplicate_token(win_handle_t::native_t token, win_handle_t& copy) = 0;
  // True when the thread now runs as `token`; otherwise false and the Win32 code in `error`.
  virtual bool impersonate_logged_on_user(win_handle_t::native_t token, uint32_t& error) = 0;
  virtual void revert_to_self() = 0;
  // The SECURITY_STATUS of the call: 0 on success.
  virtual int32_t impersonate_security_context(const security_context_t& context) = 0;
  virtual int32_t revert_security_context(const security_context_t& context) = 0;
};

std::shared_ptr<impersonation_api_t> platform_impersonation_api();
// What the impersonation sessions use; an empty pointer brings the platform's back.
void set_impersonation_api(std::shared_ptr<impersonation_api_t> api);
std::shared_ptr<impersonation_api_t> impersonation_api();

}  // namespace win
