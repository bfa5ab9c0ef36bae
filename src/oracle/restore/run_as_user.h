// Running a piece of the restore under a Windows account: logon (security::logon_user, the
// password base64 in the system's code page), impersonation of the calling thread, the body,
// and RevertToSelf also when the body fails. The session workers the body starts do not
// inherit the identity. On the host build there is no identity to take: the logon is made
// (it succeeds there) and the body runs on the process's own identity.
#pragma once
#include <functional>
#include <string>

namespace specific::oracle {

// Throws what the logon throws (win_sys_exc_t "Failed to logon user [%1]" or "... UPN user"),
// runtime_exc_t "User credentials not specified or logon error" without a token, win_sys_exc_t
// "Failed to impersonate logged on user", or what the body throws.
void run_as_user(const std::u16string& osUser, const std::u16string& osPassword,
                 const std::function<void()>& body);

}  // namespace specific::oracle
