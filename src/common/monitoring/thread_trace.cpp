#include "common/monitoring/thread_trace.h"

#include <utility>

#include "common/win/thread_id.h"

namespace monitoring {

void thread_state_t::push(std::string text) {
  auto step = std::make_shared<CThreadTrace>(std::move(text));
  std::lock_guard<std::mutex> guard(lock_);
  stack_.push_back(std::move(step));
}

void thread_state_t::pop() {
  std::shared_ptr<CThreadTrace> last;
  std::lock_guard<std::mutex> guard(lock_);
  if (stack_.empty()) return;
  last = std::move(stack_.back());
  stack_.pop_back();
}

std::vector<std::string> thread_state_t::steps() const {
  std::lock_guard<std::mutex> guard(lock_);
  std::vector<std::string> texts;
  texts.reserve(stack_.size());
  for (const auto& step : stack_) texts.push_back(step->text());
  return texts;
}

CThreadStatesCollection& CThreadStatesCollection::instance() {
  // Never destroyed: steps are logged during process exit too.
  static CThreadStatesCollection* const collection = new CThreadStatesCollection();
  return *collection;
}

std::shared_ptr<thread_state_t> CThreadStatesCollection::register_thread(uint32_t thread_id) {
  std::lock_guard<std::mutex> guard(lock_);
  auto& state = states_[thread_id];
  if (!state) state = std::make_shared<thread_state_t>();
  return state;
}

void CThreadStatesCollection::unregister_thread(uint32_t thread_id) {
  std::shared_ptr<thread_state_t> gone;
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = states_.find(thread_id);
  if (it == states_.end()) return;
  gone = std::move(it->second);
  states_.erase(it);
}

std::shared_ptr<thread_state_t> CThreadStatesCollection::find(uint32_t thread_id) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = states_.find(thread_id);
  return it != states_.end() ? it->second : nullptr;
}

bool CThreadStatesCollection::enabled() const {
  std::lock_guard<std::mutex> guard(lock_);
  return enabled_;
}

void push_step(const std::string& text) {
  const auto state = CThreadStatesCollection::instance().find(win::current_thread_id());
  if (state) state->push(text);
}

void pop_step() noexcept {
  try {
    const auto state = CThreadStatesCollection::instance().find(win::current_thread_id());
    if (state) state->pop();
  } catch (const std::exception&) {
    // Runs in a step's destructor; a lock that cannot be taken must not end the process.
  }
}

}  // namespace monitoring
