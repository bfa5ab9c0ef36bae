#include "common/common_lib_ctx.h"

#include <atomic>
#include <utility>

#include "common/common_file_hooks.h"
#include "common/logging/log_channel.h"
#include "common/synch/global_lock.h"

namespace io {

size_t io_dev_pool_t::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  return devices_.size();
}

void CCoutMultiplexor::add(std::shared_ptr<void> multiplexor) {
  std::lock_guard<std::mutex> guard(lock_);
  multiplexors_.push_back(std::move(multiplexor));
}

size_t CCoutMultiplexor::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  return multiplexors_.size();
}

void CCoutMultiplexor::clear() {
  std::list<std::shared_ptr<void>> gone;
  {
    std::lock_guard<std::mutex> guard(lock_);
    gone.swap(multiplexors_);
  }
  // `gone` ends here, outside the lock, in case a multiplexor writes as it goes.
}

}  // namespace io

CCommonLibCtx::CCommonLibCtx()
    : cout_multiplexor_(std::make_shared<io::CCoutMultiplexor>()),
      key_store_(std::make_shared<crypto::CRuntimeKeyStore>()),
      files_permissions_(std::make_shared<security::CUnrestrictedFilesAccessPermissions>()) {
  io_pools_.emplace(0, std::make_shared<io::io_dev_pool_t>());
}

CCommonLibCtx::~CCommonLibCtx() {
  try {
    if (cout_multiplexor_ && cout_multiplexor_->size() != 0) {
      logging::cli().info("Clearing collection of cout multiplexors.");
      cout_multiplexor_->clear();
    }
  } catch (const std::exception&) {
    // The context ends at process exit; nothing is left that could act on a failure here.
  }
}

std::shared_ptr<io::io_dev_pool_t> CCommonLibCtx::io_pool(uint32_t id) const {
  std::lock_guard<std::mutex> guard(io_pools_lock_);
  const auto it = io_pools_.find(id);
  return it != io_pools_.end() ? it->second : nullptr;
}

size_t CCommonLibCtx::io_pool_count() const {
  std::lock_guard<std::mutex> guard(io_pools_lock_);
  return io_pools_.size();
}

std::shared_ptr<security::IFilesAccessPermissions> CCommonLibCtx::files_permissions() const {
  return std::atomic_load(&files_permissions_);
}

void CCommonLibCtx::set_files_permissions(
    std::shared_ptr<security::IFilesAccessPermissions> permissions) {
  if (!permissions) permissions = std::make_shared<security::CUnrestrictedFilesAccessPermissions>();
  std::atomic_store(&files_permissions_, std::move(permissions));
}

namespace {

// The slot read on every file call, without the global lock. Never destroyed itself; the
// context in it ends with ctx_end_t below.
std::shared_ptr<CCommonLibCtx>& live_slot() {
  static auto* const slot = new std::shared_ptr<CCommonLibCtx>();
  return *slot;
}

bool g_made = false;  // under the global lock

// A function-local static made right after the context, so that at process exit the context
// ends in the reverse order of creation among the process-wide objects.
struct ctx_end_t {
  ~ctx_end_t() {
    std::shared_ptr<CCommonLibCtx> last = std::atomic_exchange(&live_slot(), {});
    last.reset();
  }
};

}  // namespace

std::shared_ptr<CCommonLibCtx> ctx() {
  std::shared_ptr<CCommonLibCtx> current = std::atomic_load(&live_slot());
  if (current) return current;
  // The first use of the context joins the file layer too (idempotent; it makes no context).
  common::install_file_hooks();
  std::lock_guard<std::recursive_mutex> guard(synch::global_lock());
  current = std::atomic_load(&live_slot());
  if (current) return current;
  if (!g_made) {
    current = std::make_shared<CCommonLibCtx>();
    std::atomic_store(&live_slot(), current);
    static ctx_end_t end_at_exit;
    g_made = true;
    return current;
  }
  static auto* const late = new std::shared_ptr<CCommonLibCtx>(std::make_shared<CCommonLibCtx>());
  return *late;
}
