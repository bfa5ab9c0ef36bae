// The service control manager calls passed to Win32 as they are.
#include <windows.h>

#include "common/win/svc_api.h"

namespace win::svc_api {

namespace {

SC_HANDLE as_sc(svc_handle_t handle) { return static_cast<SC_HANDLE>(handle); }

}  // namespace

uint32_t open_manager(uint32_t access, svc_handle_t& out) {
  SC_HANDLE manager = OpenSCManagerW(/*lpMachineName=*/nullptr, /*lpDatabaseName=*/nullptr, access);
  if (manager == nullptr) return static_cast<uint32_t>(GetLastError());
  out = manager;
  return 0;
}

uint32_t open_service(svc_handle_t manager, const std::u16string& name, uint32_t access,
                      svc_handle_t& out) {
  SC_HANDLE service = OpenServiceW(as_sc(manager), reinterpret_cast<LPCWSTR>(name.c_str()), access);
  if (service == nullptr) return static_cast<uint32_t>(GetLastError());
  out = service;
  return 0;
}

uint32_t query_state(svc_handle_t service, uint32_t& state) {
  SERVICE_STATUS status{};
  if (!QueryServiceStatus(as_sc(service), &status)) return static_cast<uint32_t>(GetLastError());
  state = status.dwCurrentState;
  return 0;
}

uint32_t close_handle(svc_handle_t handle) noexcept {
  return CloseServiceHandle(as_sc(handle)) ? 0 : static_cast<uint32_t>(GetLastError());
}

}  // namespace win::svc_api
