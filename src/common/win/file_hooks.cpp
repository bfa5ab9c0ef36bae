#include "common/win/file_hooks.h"

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include "common/win/path.h"
#include "common/win/share_root.h"

namespace win {

namespace {

file_hooks_t& default_hooks() {
  static file_hooks_t* const hooks = new file_hooks_t();
  return *hooks;
}

std::atomic<file_hooks_t*> g_current{nullptr};

// Every object ever installed stays alive to process exit: the current one is read without a
// lock on every file call, and a call may still be running on one that has been replaced.
std::mutex& installed_lock() {
  static auto* const lock = new std::mutex();
  return *lock;
}
std::vector<std::shared_ptr<file_hooks_t>>& installed() {
  static auto* const list = new std::vector<std::shared_ptr<file_hooks_t>>();
  return *list;
}

}  // namespace

file_hooks_t::~file_hooks_t() = default;
void file_hooks_t::check_access(const path_holder_t&) {}
std::shared_ptr<void> file_hooks_t::scope_for_path(const path_holder_t&) { return {}; }
void file_hooks_t::file_op_enter() {}
void file_hooks_t::file_op_leave() noexcept {}
void file_hooks_t::counter_enter(io_counter_t) {}
void file_hooks_t::counter_leave(io_counter_t, int64_t) {}
file_trace_flags_t file_hooks_t::trace_flags() { return {}; }

void set_file_hooks(std::shared_ptr<file_hooks_t> hooks) {
  std::lock_guard<std::mutex> guard(installed_lock());
  file_hooks_t* raw = hooks.get();
  if (hooks) installed().push_back(std::move(hooks));
  g_current.store(raw, std::memory_order_release);
}

file_hooks_t& file_hooks() {
  file_hooks_t* current = g_current.load(std::memory_order_acquire);
  return current != nullptr ? *current : default_hooks();
}

path_guard_t::path_guard_t(const path_holder_t& path) : path_guard_t(path, path) {}

path_guard_t::path_guard_t(const path_holder_t& path, const path_holder_t& scope_path) {
  file_hooks_t& hooks = file_hooks();
  // A share path whose root is not a server and a share could reach another share than the
  // one whose identity it would be given.
  if (path.has_wide() ? is_network_path(path.wide()) : is_network_path(path.narrow())) {
    check_share_root(path.wide());
  }
  hooks.check_access(path);
  scope_ = hooks.scope_for_path(scope_path);
}

file_op_t::file_op_t() : hooks_(file_hooks()) { hooks_.file_op_enter(); }
file_op_t::~file_op_t() { hooks_.file_op_leave(); }

}  // namespace win
