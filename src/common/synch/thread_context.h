// Thread contexts: each thread has a current CThreadContext, created empty on first use, that
// carries an object for whoever runs on that thread. A context may have a parent that answers
// when its own value is empty. Counters made on a thread remember what their context resolved
// to at the time. Any thread may call these; a context's value has a lock of its own.
#pragma once
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>

namespace synch {

class CThreadContext {
 public:
  explicit CThreadContext(std::shared_ptr<CThreadContext> parent = nullptr,
                          std::shared_ptr<void> value = nullptr);
  CThreadContext(const CThreadContext&) = delete;
  CThreadContext& operator=(const CThreadContext&) = delete;

  // The value of this context or, when that is empty, of the nearest ancestor that has one;
  // empty at the end of the chain.
  std::shared_ptr<void> resolve() const;

  void set_value(std::shared_ptr<void> value);
  const std::shared_ptr<CThreadContext>& parent() const { return parent_; }

 private:
  const std::shared_ptr<CThreadContext> parent_;
  mutable std::mutex lock_;
  std::shared_ptr<void> value_;
};

// A small holder of one shared pointer: what a thread-specific slot keeps.
template <typename T>
struct SSmartPointerContainer {
  std::shared_ptr<T> ptr;
};

// The contexts of the threads that are alive, as the common library context keeps them. Holds
// them weakly: a context ends with its thread.
class thread_context_list_t {
 public:
  void add(const std::shared_ptr<CThreadContext>& context);
  // Contexts whose thread is still alive.
  size_t live_count() const;

 private:
  mutable std::mutex lock_;
  std::list<std::weak_ptr<CThreadContext>> contexts_;
};

// The calling thread's context, made empty (no parent, no value) on first use.
std::shared_ptr<CThreadContext> current_context();
// Replaces the calling thread's context, for a host that wants a thread to inherit another's.
void set_current_context(std::shared_ptr<CThreadContext> context);

}  // namespace synch
