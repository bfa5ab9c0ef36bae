#include <windows.h>

#include <cstdint>
#include <memory>

#include "common/exc/exc_base.h"
#include "oracle/client/session_worker.h"

namespace specific::oracle {

namespace {

// Shared by the starter and the thread; the last of the two to let go closes the event.
struct worker_shared_t {
  HANDLE running = nullptr;  // manual-reset event: the thread runs its body
  ~worker_shared_t() {
    if (running) ::CloseHandle(running);
  }
};

struct worker_start_t {
  std::function<void()> body;
  std::shared_ptr<worker_shared_t> shared;
};

DWORD WINAPI worker_entry(void* parameter) {
  // The start block is freed by the thread that ran it. A worker parked after a cut-off never
  // gets back here, and what it holds stays held: nothing is freed under a thread that may
  // have left the client in an unknown state.
  auto* start = static_cast<worker_start_t*>(parameter);
  ::SetEvent(start->shared->running);
  try {
    start->body();
  } catch (...) {
    // The body has logged and kept what it needed; nothing may leave a thread.
  }
  delete start;
  return 0;
}

}  // namespace

struct session_worker_t::impl_t {
  HANDLE thread = nullptr;
  std::shared_ptr<worker_shared_t> shared = std::make_shared<worker_shared_t>();
};

session_worker_t::session_worker_t(std::function<void()> body) : impl_(new impl_t) {
  impl_->shared->running = ::CreateEventW(/*attributes=*/nullptr, /*manual_reset=*/TRUE,
                                          /*initial_state=*/FALSE, /*name=*/nullptr);
  if (!impl_->shared->running) {
    throw exc::win_sys_exc_t("Failed to start oracle session init thread", ::GetLastError());
  }
  auto* start = new worker_start_t{std::move(body), impl_->shared};
  impl_->thread = ::CreateThread(/*attributes=*/nullptr, /*stack_size=*/0, worker_entry, start,
                                 /*flags=*/0, /*thread_id=*/nullptr);
  if (!impl_->thread) {
    const DWORD error = ::GetLastError();
    delete start;
    throw exc::win_sys_exc_t("Failed to start oracle session init thread", error);
  }
}

session_worker_t::~session_worker_t() {
  if (impl_->thread) ::CloseHandle(impl_->thread);
}

void session_worker_t::wait_until_running() {
  // Either event ends the wait: a thread that ended at once has run its body too.
  HANDLE both[2] = {impl_->shared->running, impl_->thread};
  ::WaitForMultipleObjects(2, both, /*wait_all=*/FALSE, INFINITE);
}

bool session_worker_t::join_until(clock_t::time_point deadline) {
  for (;;) {
    const auto now = clock_t::now();
    DWORD wait = 0;
    if (deadline > now) {
      // Rounded up, so that the wait never ends before the deadline.
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
      wait = left >= static_cast<int64_t>(INFINITE) ? INFINITE - 1 : static_cast<DWORD>(left);
    }
    const DWORD result = ::WaitForSingleObject(impl_->thread, wait);
    if (result == WAIT_OBJECT_0) return true;
    if (result != WAIT_TIMEOUT) {
      throw exc::win_sys_exc_t("Failed to wait oracle session init thread", ::GetLastError());
    }
    if (wait == 0 || clock_t::now() >= deadline) return false;
  }
}

void session_worker_t::cut_off() {
  // Nothing to do to the thread itself: it is left to itself, and its handle is closed with
  // this object. The gate ends it at its next call (end_cut_off_worker).
}

void end_cut_off_worker() {
  // Parked for good, as on the host build, rather than ended from deep inside its body: a
  // sleeping thread holds nothing; the process's end takes it away.
  for (;;) ::Sleep(INFINITE);
}

}  // namespace specific::oracle
