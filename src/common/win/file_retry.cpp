#include "common/win/file_retry.h"

#include <chrono>
#include <thread>

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"
#include "common/text/numbers.h"
#include "common/win/file_codes.h"

namespace win {

namespace {
const char kWriteFailed[] = "Failed to write data to the file [%1].";
const char kShortWrite[] =
    "Failed to write %1 bytes to the file '%2': %3 bytes were written instead";
}  // namespace

void write_with_retry(const path_holder_t& path, uint32_t size, const write_attempt_t& attempt,
                      const pause_t& pause) {
  uint32_t total_wait = 0;
  uint32_t written = 0;
  for (;;) {
    written = 0;
    const uint32_t error = attempt(written);
    if (error == 0) break;
    if (error != kErrorLockViolation) {
      throw exc::win_sys_exc_t(kWriteFailed, path.narrow_or_empty(), error);
    }
    // Another process holds the region for a moment (a backup reader, a virus scanner): say
    // so and wait rather than fail the caller's work at once.
    const exc::win_sys_exc_t locked(kWriteFailed, path.narrow_or_empty(), error);
    exc::log_warn(logging::default_channel(), locked);
    pause(kWriteRetryPauseMs);
    total_wait += kWriteRetryPauseMs;
    logging::default_channel().warn("Retry.");
    if (total_wait >= kWriteRetryLimitMs) break;
  }
  if (written != size) {
    throw exc::runtime_exc_t(kShortWrite, util::to_str(size), path.narrow_or_empty(),
                             util::to_str(written));
  }
}

void sleep_ms(uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace win
