// The system's logon of a Windows account, one call, as logon_user (logon_user.h) makes it:
// interactive logon (type 2) through the default provider (0). Windows: LogonUserW.
// The host build has no Windows accounts: its logon succeeds for any name and password and
// gives no token (null); the library then goes on under its own identity, as it does for an
// identity that needs no impersonation. Any thread.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

namespace security {

// user, domain (null for a user principal name, which goes whole in `user`), password; true
// with the token, or false with the system's error code.
using logon_call_t = std::function<bool(const std::u16string& user, const std::u16string* domain,
                                        const std::u16string& password, void*& token,
                                        uint32_t& error)>;

bool system_logon(const std::u16string& user, const std::u16string* domain,
                  const std::u16string& password, void*& token, uint32_t& error);

}  // namespace security
