#include "oracle/restore/restore_wait.h"

#include <chrono>
#include <thread>

namespace specific::oracle {

namespace {

restore_sleep_t& replacement() {
  static restore_sleep_t sleep;
  return sleep;
}

}  // namespace

void restore_sleep(uint32_t milliseconds) {
  if (replacement()) {
    replacement()(milliseconds);
    return;
  }
  if (milliseconds != 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void replace_restore_sleep_for_tests(restore_sleep_t sleep) { replacement() = std::move(sleep); }

}  // namespace specific::oracle
