#include "common/synch/thread_context.h"

#include <utility>

#include "common/common_lib_ctx.h"

namespace synch {

CThreadContext::CThreadContext(std::shared_ptr<CThreadContext> parent, std::shared_ptr<void> value)
    : parent_(std::move(parent)), value_(std::move(value)) {}

std::shared_ptr<void> CThreadContext::resolve() const {
  // Each context is asked under its own lock only, so that no two locks are ever held at once.
  for (const CThreadContext* context = this; context != nullptr;
       context = context->parent_.get()) {
    std::lock_guard<std::mutex> guard(context->lock_);
    if (context->value_) return context->value_;
  }
  return nullptr;
}

void CThreadContext::set_value(std::shared_ptr<void> value) {
  std::lock_guard<std::mutex> guard(lock_);
  value_ = std::move(value);
}

void thread_context_list_t::add(const std::shared_ptr<CThreadContext>& context) {
  std::lock_guard<std::mutex> guard(lock_);
  // Contexts of ended threads are dropped here rather than at thread exit, so that a thread
  // ending during process exit never has to reach the library context.
  contexts_.remove_if([](const std::weak_ptr<CThreadContext>& c) { return c.expired(); });
  contexts_.push_back(context);
}

size_t thread_context_list_t::live_count() const {
  std::lock_guard<std::mutex> guard(lock_);
  size_t count = 0;
  for (const auto& c : contexts_) {
    if (!c.expired()) ++count;
  }
  return count;
}

namespace {

thread_local SSmartPointerContainer<CThreadContext> t_current;

}  // namespace

std::shared_ptr<CThreadContext> current_context() {
  if (!t_current.ptr) {
    auto context = std::make_shared<CThreadContext>();
    ctx()->thread_contexts().add(context);
    t_current.ptr = std::move(context);
  }
  return t_current.ptr;
}

void set_current_context(std::shared_ptr<CThreadContext> context) {
  if (context) ctx()->thread_contexts().add(context);
  t_current.ptr = std::move(context);
}

}  // namespace synch
