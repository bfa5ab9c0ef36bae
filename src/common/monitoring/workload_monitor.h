// workload_monitor_t: the process-wide set of per-thread time-ratio counters that the file
// layer feeds around each read and write system call, and the machine's idle, kernel and user
// times taken when it was made. Nothing in this library reads the figures; they are kept for a
// host that wants them. Made on first use, from any thread; lives to process exit.
//
// The file layer calls, right around the system call:
//   workload::counter_enter(workload::read_counter());
//   ok = ReadFile(..., &done, ...);
//   workload::counter_leave(workload::read_counter(), done);
// and the same with write_counter() for writes.
#pragma once
#include <array>
#include <cstdint>

#include "common/monitoring/clock.h"
#include "common/monitoring/thread_aware_counter.h"

namespace workload {

class workload_monitor_t {
 public:
  static workload_monitor_t& instance();

  // Six counters; the third serves reads, the fourth writes, the others stay idle.
  CThreadAwareCounter& counter(size_t index) { return counters_.at(index); }
  const monitoring::system_times_t& system_times() const { return system_times_; }
  bool system_times_known() const { return system_times_known_; }

 private:
  workload_monitor_t();

  std::array<CThreadAwareCounter, 6> counters_;
  monitoring::system_times_t system_times_;
  bool system_times_known_ = false;
};

CThreadAwareCounter& read_counter();
CThreadAwareCounter& write_counter();

// The calling thread's counter in `counter` enters.
void counter_enter(CThreadAwareCounter& counter);
// The calling thread's counter in `counter` keeps `amount` (bytes; negative counts as 0) and
// leaves.
void counter_leave(CThreadAwareCounter& counter, int64_t amount);

}  // namespace workload
