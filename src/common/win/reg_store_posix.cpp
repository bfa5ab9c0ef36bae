#include "common/win/reg_store_posix.h"

#include <cstdlib>
#include <mutex>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"

namespace win::reg_store {

namespace {

struct state_t {
  std::mutex lock;
  bool loaded = false;
  std::shared_ptr<const reg_file::tree_t> tree;
  exc::exc_ptr_t failure;  // set instead of `tree` when the file could not be used
};

state_t& state() {
  static state_t instance;
  return instance;
}

}  // namespace

std::shared_ptr<const reg_file::tree_t> current() {
  state_t& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  if (!s.loaded) {
    const char* path = std::getenv(kRegistryVariable);
    try {
      s.tree = std::make_shared<const reg_file::tree_t>(
          (path == nullptr || *path == '\0') ? reg_file::tree_t() : reg_file::load(path));
      s.failure.reset();
    } catch (const std::exception& e) {
      s.tree.reset();
      s.failure = exc::capture(e);
    }
    s.loaded = true;
  }
  if (s.failure) s.failure->throw_copy();
  return s.tree;
}

void reload() {
  state_t& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  s.loaded = false;
  s.tree.reset();
  s.failure.reset();
}

}  // namespace win::reg_store
