#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "oracle/client/session_worker.h"

namespace specific::oracle {

namespace {

struct worker_signal_t {
  std::mutex lock;
  std::condition_variable changed;
  bool running = false;
  bool ended = false;
};

}  // namespace

struct session_worker_t::impl_t {
  std::shared_ptr<worker_signal_t> signal = std::make_shared<worker_signal_t>();
  std::thread thread;
};

session_worker_t::session_worker_t(std::function<void()> body) : impl_(new impl_t) {
  // The thread shares the signal, so an abandoned thread never touches what its starter owns.
  impl_->thread = std::thread([body = std::move(body), signal = impl_->signal]() {
    {
      std::lock_guard<std::mutex> guard(signal->lock);
      signal->running = true;
      signal->changed.notify_all();
    }
    try {
      body();
    } catch (...) {
      // The body has logged and kept what it needed; nothing may leave a thread.
    }
    std::lock_guard<std::mutex> guard(signal->lock);
    signal->ended = true;
    signal->changed.notify_all();
  });
}

session_worker_t::~session_worker_t() {
  if (impl_->thread.joinable()) impl_->thread.detach();
}

void session_worker_t::wait_until_running() {
  std::unique_lock<std::mutex> lock(impl_->signal->lock);
  impl_->signal->changed.wait(lock, [this] { return impl_->signal->running; });
}

bool session_worker_t::join_until(clock_t::time_point deadline) {
  {
    std::unique_lock<std::mutex> lock(impl_->signal->lock);
    if (!impl_->signal->changed.wait_until(lock, deadline,
                                           [this] { return impl_->signal->ended; })) {
      return false;
    }
  }
  // It has signalled its end: what remains is the return from its function.
  impl_->thread.join();
  return true;
}

void session_worker_t::cut_off() {
  if (impl_->thread.joinable()) impl_->thread.detach();
}

void end_cut_off_worker() {
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

}  // namespace specific::oracle
