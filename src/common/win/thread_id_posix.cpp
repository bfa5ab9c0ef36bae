#include "common/win/thread_id.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace win {

uint32_t current_thread_id() {
  thread_local const uint32_t id = static_cast<uint32_t>(::syscall(SYS_gettid));
  return id;
}

}  // namespace win
