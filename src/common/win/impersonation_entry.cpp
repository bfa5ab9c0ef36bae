#include "common/win/impersonation_entry.h"

#include "common/win/thread_id.h"

namespace win {

void impersonation_counter_t::enter() {
  const uint32_t thread = current_thread_id();
  std::lock_guard<std::mutex> guard(lock_);
  ++counts_[thread];
}

bool impersonation_counter_t::leave() {
  const uint32_t thread = current_thread_id();
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = counts_.find(thread);
  if (it == counts_.end()) return false;
  if (--it->second != 0) return false;
  counts_.erase(it);
  return true;
}

int32_t impersonation_counter_t::count(uint32_t thread_id) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = counts_.find(thread_id);
  return it != counts_.end() ? it->second : 0;
}

size_t impersonation_counter_t::threads() const {
  std::lock_guard<std::mutex> guard(lock_);
  return counts_.size();
}

}  // namespace win
