#include "common/win/thread_id.h"

#include <windows.h>

namespace win {

uint32_t current_thread_id() { return GetCurrentThreadId(); }

}  // namespace win
