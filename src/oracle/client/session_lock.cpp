#include "oracle/client/session_lock.h"

#include "common/win/thread_id.h"

namespace specific::oracle {

session_lock_t& session_lock_t::instance() {
  static auto* lock = new session_lock_t;  // never destroyed: exit-time code may still ask
  return *lock;
}

void session_lock_t::lock() {
  const uint32_t self = win::current_thread_id();
  if (owner_.load() == self) {
    count_.fetch_add(1);
    return;
  }
  mutex_.lock();
  owner_.store(self);
  count_.store(1);
}

void session_lock_t::unlock() {
  if (count_.fetch_sub(1) == 1) {
    owner_.store(0);
    mutex_.unlock();
  }
}

}  // namespace specific::oracle
