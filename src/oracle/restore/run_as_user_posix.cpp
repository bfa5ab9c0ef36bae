#include "oracle/restore/run_as_user.h"

#include "common/security/logon_user.h"

namespace specific::oracle {

void run_as_user(const std::u16string& osUser, const std::u16string& osPassword,
                 const std::function<void()>& body) {
  // No impersonation on this platform: the logon is still checked, the body runs as we are.
  win::win_handle_t token;
  security::logon_user(osUser, osPassword, token);
  body();
}

}  // namespace specific::oracle
