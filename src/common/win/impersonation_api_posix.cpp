#include "common/win/impersonation_api.h"

namespace win {

namespace {

// The host build runs every operation as the process's own user: taking on an identity
// succeeds and changes nothing, so that the sessions, their counts and their log lines follow
// the same path as on Windows.
class posix_impersonation_api_t : public impersonation_api_t {
 public:
  bool duplicate_token(win_handle_t::native_t token, win_handle_t& copy) override {
    copy.reset(token);
    return true;
  }
  bool impersonate_logged_on_user(win_handle_t::native_t, uint32_t&) override { return true; }
  void revert_to_self() override {}
  int32_t impersonate_security_context(const security_context_t&) override { return 0; }
  int32_t revert_security_context(const security_context_t&) override { return 0; }
};

}  // namespace

std::shared_ptr<impersonation_api_t> platform_impersonation_api() {
  static auto* const api =
      new std::shared_ptr<impersonation_api_t>(std::make_shared<posix_impersonation_api_t>());
  return *api;
}

}  // namespace win
