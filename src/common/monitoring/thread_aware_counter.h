// CThreadAwareCounter: one CTimeRatioCounter per thread, made on the thread's first request and
// kept to process exit. The lock covers the lookup only; the counter returned is then used by
// its thread without one.
#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "common/monitoring/time_ratio_counter.h"

namespace workload {

class CThreadAwareCounter {
 public:
  // The calling thread's counter. A new one carries what the thread's context resolves to.
  std::shared_ptr<CTimeRatioCounter> get();
  // The counter of `thread_id`, or empty; for readers and tests.
  std::shared_ptr<CTimeRatioCounter> find(uint32_t thread_id) const;
  size_t size() const;

 private:
  mutable std::mutex lock_;
  std::map<uint32_t, std::shared_ptr<CTimeRatioCounter>> counters_;
};

}  // namespace workload
