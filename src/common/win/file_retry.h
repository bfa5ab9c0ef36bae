// The rule of a file write that meets a region locked by another process: the write is tried
// again every 100 ms for five seconds, with a warning each time, before the caller hears of
// it. Kept apart from the system call so that the rule can be exercised by itself.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "common/win/path_holder.h"

namespace win {

constexpr uint32_t kWriteRetryPauseMs = 100;
constexpr uint32_t kWriteRetryLimitMs = 5000;

// Writes once: answers the Win32 error (0 on success) and sets the bytes written.
using write_attempt_t = std::function<uint32_t(uint32_t& written)>;
using pause_t = std::function<void(uint32_t milliseconds)>;

// Runs `attempt` until it succeeds, fails with anything but ERROR_LOCK_VIOLATION, or has met
// the lock for kWriteRetryLimitMs of pauses. Each lock violation is written as a warning with
// the failure and then "Retry." on the default channel. `path` names the file in the texts.
// Throws win_sys_exc_t "Failed to write data to the file [%1]." for another error, and
// runtime_exc_t "Failed to write %1 bytes to the file '%2': %3 bytes were written instead"
// when the last count differs from `size`, as it does when the lock never went away.
void write_with_retry(const path_holder_t& path, uint32_t size, const write_attempt_t& attempt,
                      const pause_t& pause);

// The pause the file layer uses: the calling thread sleeps.
void sleep_ms(uint32_t milliseconds);

}  // namespace win
