#include "common/monitoring/workload_monitor.h"

namespace workload {

namespace {

constexpr size_t kReadCounter = 2;
constexpr size_t kWriteCounter = 3;

}  // namespace

workload_monitor_t::workload_monitor_t()
    : system_times_known_(monitoring::system_times(system_times_)) {}

workload_monitor_t& workload_monitor_t::instance() {
  // Never destroyed: reads and writes go on during process exit (the log's own file).
  static workload_monitor_t* const monitor = new workload_monitor_t();
  return *monitor;
}

CThreadAwareCounter& read_counter() { return workload_monitor_t::instance().counter(kReadCounter); }

CThreadAwareCounter& write_counter() {
  return workload_monitor_t::instance().counter(kWriteCounter);
}

void counter_enter(CThreadAwareCounter& counter) { counter.get()->enter(); }

void counter_leave(CThreadAwareCounter& counter, int64_t amount) {
  const auto c = counter.get();
  c->set_last_amount(amount);
  c->leave();
}

}  // namespace workload
