// The sleeps of the restore: the wait before it starts, 15 s between attempts of the wait for
// an instance, 10 s after a failed start. They pass through one replaceable function so that
// tests run the whole procedure without sleeping; the product never replaces it. The caller's
// thread sleeps; nothing is locked.
#pragma once
#include <cstdint>
#include <functional>

namespace specific::oracle {

using restore_sleep_t = std::function<void(uint32_t milliseconds)>;

// Sleeps `milliseconds` on the calling thread (or calls the test's replacement).
void restore_sleep(uint32_t milliseconds);

// Replaces the sleep; an empty function brings the real one back. Tests only.
void replace_restore_sleep_for_tests(restore_sleep_t sleep);

constexpr uint32_t kWaitBetweenAttemptsMs = 15000;
constexpr uint32_t kWaitAfterFailedStartMs = 10000;

}  // namespace specific::oracle
