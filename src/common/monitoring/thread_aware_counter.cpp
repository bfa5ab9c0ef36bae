#include "common/monitoring/thread_aware_counter.h"

#include "common/synch/thread_context.h"
#include "common/win/thread_id.h"

namespace workload {

std::shared_ptr<CTimeRatioCounter> CThreadAwareCounter::get() {
  const uint32_t thread = win::current_thread_id();
  {
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = counters_.find(thread);
    if (it != counters_.end()) return it->second;
  }
  // The context is resolved outside this lock: it has locks of its own and, on the thread's
  // first use, registers with the library context.
  auto counter = std::make_shared<CTimeRatioCounter>(synch::current_context()->resolve());
  std::lock_guard<std::mutex> guard(lock_);
  return counters_.emplace(thread, std::move(counter)).first->second;
}

std::shared_ptr<CTimeRatioCounter> CThreadAwareCounter::find(uint32_t thread_id) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = counters_.find(thread_id);
  return it != counters_.end() ? it->second : nullptr;
}

size_t CThreadAwareCounter::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  return counters_.size();
}

}  // namespace workload
