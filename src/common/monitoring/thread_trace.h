// The steps a thread is inside, as a stack per registered thread. log_step_t pushes its text
// when it starts and pops it when it ends; only threads that a host has registered in
// CThreadStatesCollection keep a stack, and for the others push and pop are a lookup and
// nothing more. No thread is registered by this library itself.
// Safe from any thread; each stack has a lock of its own.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace monitoring {

class CThreadTrace {
 public:
  explicit CThreadTrace(std::string text) : text_(std::move(text)) {}
  const std::string& text() const { return text_; }
  uint32_t flags() const { return flags_; }

 private:
  std::string text_;
  uint32_t flags_ = 0;  // free for a host's marks; no reader here
};

class thread_state_t {
 public:
  void push(std::string text);
  // Drops the last step; an empty stack stays empty.
  void pop();
  // The texts, outermost first.
  std::vector<std::string> steps() const;

 private:
  mutable std::mutex lock_;
  std::vector<std::shared_ptr<CThreadTrace>> stack_;
};

class CThreadStatesCollection {
 public:
  static CThreadStatesCollection& instance();

  // Gives `thread_id` a stack (a fresh one unless it has one) and answers it.
  std::shared_ptr<thread_state_t> register_thread(uint32_t thread_id);
  void unregister_thread(uint32_t thread_id);
  std::shared_ptr<thread_state_t> find(uint32_t thread_id) const;

  bool enabled() const;

 private:
  CThreadStatesCollection() = default;

  mutable std::mutex lock_;
  std::map<uint32_t, std::shared_ptr<thread_state_t>> states_;
  bool enabled_ = true;
};

// On the calling thread's stack, when it has one.
void push_step(const std::string& text);
void pop_step() noexcept;

}  // namespace monitoring
