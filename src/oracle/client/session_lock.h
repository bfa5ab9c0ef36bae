// The process-wide lock that serialises the making of Oracle sessions. The instance a local
// connection reaches is chosen by the process environment (ORACLE_SID, ORACLE_HOME), so two
// sessions must never be made at once. Recursive: a mutex, an owner thread id and a count.
// Built at first use and never destroyed. Any thread.
#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>

namespace specific::oracle {

class session_lock_t {
 public:
  static session_lock_t& instance();

  // The owner takes it again by raising the count; any other thread waits for the mutex.
  void lock();
  void unlock();

  // For diagnosis and tests: the owner's thread id (0 for none) and the count.
  uint32_t owner() const { return owner_.load(); }
  uint32_t count() const { return count_.load(); }

 private:
  session_lock_t() = default;

  std::mutex mutex_;
  std::atomic<uint32_t> owner_{0};
  std::atomic<uint32_t> count_{0};
};

// Holds the session lock for its scope.
class session_lock_guard_t {
 public:
  session_lock_guard_t() { session_lock_t::instance().lock(); }
  ~session_lock_guard_t() { session_lock_t::instance().unlock(); }
  session_lock_guard_t(const session_lock_guard_t&) = delete;
  session_lock_guard_t& operator=(const session_lock_guard_t&) = delete;
};

}  // namespace specific::oracle
