#include "common/win/handle.h"

#include <windows.h>

namespace win {

void win_handle_t::close_native_handle(native_t value) noexcept {
  const DWORD last_error = GetLastError();
  CloseHandle(static_cast<HANDLE>(value));
  SetLastError(last_error);
}

}  // namespace win
