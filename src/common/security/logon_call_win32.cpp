#include <windows.h>

#include "common/security/logon_call.h"

namespace security {

bool system_logon(const std::u16string& user, const std::u16string* domain,
                  const std::u16string& password, void*& token, uint32_t& error) {
  HANDLE handle = nullptr;
  const BOOL ok = LogonUserW(reinterpret_cast<LPCWSTR>(user.c_str()),
                             domain ? reinterpret_cast<LPCWSTR>(domain->c_str()) : nullptr,
                             reinterpret_cast<LPCWSTR>(password.c_str()),
                             LOGON32_LOGON_INTERACTIVE, LOGON32_PROVIDER_DEFAULT, &handle);
  if (!ok) {
    error = GetLastError();
    return false;
  }
  token = handle;
  return true;
}

}  // namespace security
