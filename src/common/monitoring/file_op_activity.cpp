#include "common/monitoring/file_op_activity.h"

#include "common/monitoring/clock.h"
#include "common/win/thread_id.h"

namespace monitoring {

file_op_activity_t& file_op_activity_t::instance() {
  // Never destroyed: the log writes its file during process exit too.
  static file_op_activity_t* const activity = new file_op_activity_t();
  return *activity;
}

void file_op_activity_t::enter() {
  const uint32_t thread = win::current_thread_id();
  const uint32_t now = tick_count();
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = threads_.find(thread);
  if (it == threads_.end()) {
    threads_.emplace(thread, entry_t{now, 1});
  } else {
    ++it->second.depth;
  }
}

void file_op_activity_t::leave() noexcept {
  const uint32_t thread = win::current_thread_id();
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = threads_.find(thread);
  if (it == threads_.end()) return;
  if (--it->second.depth == 0) threads_.erase(it);
}

std::optional<file_op_activity_t::entry_t> file_op_activity_t::find(uint32_t thread_id) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = threads_.find(thread_id);
  if (it == threads_.end()) return std::nullopt;
  return it->second;
}

void file_op_enter() { file_op_activity_t::instance().enter(); }
void file_op_leave() noexcept { file_op_activity_t::instance().leave(); }

}  // namespace monitoring
