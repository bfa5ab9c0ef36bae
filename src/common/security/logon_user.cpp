#include "common/security/logon_user.h"

#include <cstdint>

#include "common/exc/exc_base.h"
#include "common/security/user_name.h"
#include "common/text/base64.h"
#include "common/text/codepage.h"
#include "common/text/convert.h"

namespace security {

namespace {

// Overwrites a string that held a secret, through a volatile pointer so that the stores stay.
template <typename String>
void wipe(String& text) {
  volatile auto* p = text.data();
  for (size_t i = 0; i < text.size(); ++i) p[i] = 0;
}

// Holds a secret and wipes it on every way out of the scope.
template <typename String>
struct wiped_t {
  String value;
  ~wiped_t() { wipe(value); }
};

// base64 in the system's code page, to the clear wide text. The widening is that of
// to_unicode, but its failure must not carry the source text, which here is the password.
void decode_password(const std::u16string& password_base64, std::u16string& password) {
  wiped_t<std::string> encoded{util::to_multibyte(password_base64)};
  wiped_t<std::string> clear{util::base64_decode(encoded.value)};
  if (clear.value.empty()) return;
  uint32_t error = 0;
  if (!util::codepage::narrow_to_wide(util::codepage::kSystem, clear.value, password, error)) {
    wipe(password);
    throw exc::win_sys_exc_t("Multibyte string cannot be converted to unicode string.", error);
  }
}

}  // namespace

void logon_user_with(const logon_call_t& call, const std::u16string& name,
                     const std::u16string& password_base64, win::win_handle_t& token) {
  wiped_t<std::u16string> password;
  decode_password(password_base64, password.value);

  std::u16string domain;
  std::u16string user;
  bool is_upn = false;
  parse_user_name(name, domain, user, is_upn);

  void* handle = nullptr;
  uint32_t error = 0;
  if (is_upn) {
    if (!call(name, nullptr, password.value, handle, error)) {
      throw exc::win_sys_exc_t("Failed to logon UPN user [%1]", util::to_multibyte_safe(name),
                               error);
    }
  } else if (!call(user, &domain, password.value, handle, error)) {
    throw exc::win_sys_exc_t("Failed to logon user [%1]", util::to_multibyte_safe(name), error);
  }
  token.reset(handle);
}

void logon_user(const std::u16string& name, const std::u16string& password_base64,
                win::win_handle_t& token) {
  logon_user_with(system_logon, name, password_base64, token);
}

}  // namespace security
