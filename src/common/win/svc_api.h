// The service control manager calls this library makes, in the shape of their Win32 originals:
// each returns 0 or the Win32 error code (GetLastError) and fills its out-parameter only on
// success. Windows passes them to the system. The host build answers them from the registry
// store (reg_store_posix.h): a service is a key below HKLM\SYSTEM\CurrentControlSet\Services,
// its state the DWORD value CurrentState of that key (stopped when the key has none); a name
// without a key is ERROR_SERVICE_DOES_NOT_EXIST. Services are only asked, never controlled.
// Logic uses win_scm_t and win_svc_t (svc_manager.h). A handle belongs to one thread at a time.
#pragma once
#include <cstdint>
#include <string>

#include "common/win/file_codes.h"

namespace win {

// An SC_HANDLE; 0 when there is none.
using svc_handle_t = void*;

constexpr uint32_t kScManagerAllAccess = 0xF003F;  // SC_MANAGER_ALL_ACCESS
constexpr uint32_t kGenericAll = 0x10000000;       // GENERIC_ALL
constexpr uint32_t kServiceQueryStatus = 0x0004;   // SERVICE_QUERY_STATUS

// Status codes beyond the common ones of file_codes.h.
constexpr uint32_t kErrorInvalidData = 13;
constexpr uint32_t kErrorServiceDoesNotExist = 1060;

// dwCurrentState of a service.
constexpr uint32_t kServiceStopped = 1;
constexpr uint32_t kServiceStartPending = 2;
constexpr uint32_t kServiceStopPending = 3;
constexpr uint32_t kServiceRunning = 4;
constexpr uint32_t kServiceContinuePending = 5;
constexpr uint32_t kServicePausePending = 6;
constexpr uint32_t kServicePaused = 7;

namespace svc_api {

// OpenSCManagerW(/*machine=*/null, /*database=*/null, access). On the host build a store file
// that cannot be read or parsed makes this throw exc::runtime_exc_t naming the file and line.
[[nodiscard]] uint32_t open_manager(uint32_t access, svc_handle_t& out);

// OpenServiceW(manager, name, access).
[[nodiscard]] uint32_t open_service(svc_handle_t manager, const std::u16string& name,
                                    uint32_t access, svc_handle_t& out);

// QueryServiceStatus: dwCurrentState of the status record.
[[nodiscard]] uint32_t query_state(svc_handle_t service, uint32_t& state);

// CloseServiceHandle. Never throws.
uint32_t close_handle(svc_handle_t handle) noexcept;

}  // namespace svc_api
}  // namespace win
