// Logon of a Windows account for code that must then act under that identity (the restore
// driver). The password comes base64-encoded in the system's code page; its clear form exists
// only inside the call, and the strings that hold it here are overwritten before the call
// returns (copies made inside the system's conversion calls are beyond reach). Neither the
// password nor its encoded form appears in any message. Any thread; the token belongs to the
// caller.
#pragma once
#include <string>

#include "common/security/logon_call.h"
#include "common/win/handle.h"

namespace security {

// Decodes the password, splits the name (parse_user_name) and logs on: a user principal name
// whole with no domain, any other name as user and domain. On success `token` owns the new
// token; on the host build, whose logons give none, it then holds null (no valid handle).
// On failure `token` is untouched and win_sys_exc_t carries the system's code with "Failed to
// logon UPN user [%1]" or "Failed to logon user [%1]" and the whole name in the system's code
// page.
void logon_user(const std::u16string& name, const std::u16string& password_base64,
                win::win_handle_t& token);

// The same through a given logon call instead of the system's.
void logon_user_with(const logon_call_t& call, const std::u16string& name,
                     const std::u16string& password_base64, win::win_handle_t& token);

}  // namespace security
