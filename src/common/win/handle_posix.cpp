#include "common/win/handle.h"

namespace win {

// The host build hands out no kernel handles (logon and impersonation succeed as no-ops there),
// so a value held here names nothing that could be closed.
void win_handle_t::close_native_handle(native_t) noexcept {}

}  // namespace win
