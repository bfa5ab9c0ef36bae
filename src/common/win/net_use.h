// Connections to shares under other credentials, as an impersonation entry of the NetUse kind
// opens and closes them: a report of the connection's state, the test whether it exists, its
// creation and its deletion, each with its log line and failure text. Called on the thread of
// the file operation; no lock is held while the system is asked.
#pragma once
#include <string>

namespace win {

// The identity a NetUse connection is made with. `user` may be "DOMAIN\name".
struct net_credentials_t {
  std::u16string user;
  std::u16string password;
};

// An information line with the share, status and counts, or the line that there is no such
// connection, or an error line for any other failure. Never throws.
void net_use_report(const std::u16string& share) noexcept;
// True when the connection exists, false when the system says there is none; any other
// failure throws win_sys_exc_t.
bool net_use_exists(const std::u16string& share);
// Throws win_sys_exc_t on failure.
void net_use_create(const std::u16string& share, const net_credentials_t& credentials);
// Throws win_sys_exc_t on failure.
void net_use_delete(const std::u16string& share);

// "DOMAIN\name" into its parts. A user with no backslash before its last character has the
// domain "." (this computer) and is the name as a whole.
void split_net_user(const std::u16string& user, std::u16string& domain, std::u16string& name);

}  // namespace win
