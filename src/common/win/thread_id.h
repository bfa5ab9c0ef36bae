// The calling thread's numeric id, as the log lines and exceptions show it. On Windows it is
// GetCurrentThreadId; on the host build the kernel's thread id, which also fits 32 bits.
#pragma once
#include <cstdint>

namespace win {

uint32_t current_thread_id();

}  // namespace win
