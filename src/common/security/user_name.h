// Splitting an account name into the parts a Windows logon takes. Pure function: any thread.
#pragma once
#include <string>

namespace security {

// "DOMAIN\user": the domain is what stands before the first backslash, the user what follows
// it. Otherwise a name with an at sign is a user principal name: `is_upn` is set to true and
// `domain` and `user` are left as they were. Any other name is a local account: domain ".",
// user the whole name. `is_upn` is only ever set, never cleared: callers start it at false.
void parse_user_name(const std::u16string& name, std::u16string& domain, std::u16string& user,
                     bool& is_upn);

}  // namespace security
