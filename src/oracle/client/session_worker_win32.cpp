#include <windows.h>

#include <cstdint>

#include "common/exc/exc_base.h"
#include "oracle/client/session_worker.h"

namespace specific::oracle {

namespace {

// The exit code a terminated worker is given: ERROR_TIMEOUT.
constexpr DWORD kTerminatedExitCode = 1460;

DWORD WINAPI worker_entry(void* parameter) {
  // The body is freed by the thread that ran it. A terminated thread never gets here, and
  // what the body holds stays held: nothing is freed under a thread that may have died
  // inside the client.
  auto* body = static_cast<std::function<void()>*>(parameter);
  try {
    (*body)();
  } catch (...) {
    // The body has logged and kept what it needed; nothing may leave a thread.
  }
  delete body;
  return 0;
}

}  // namespace

struct session_worker_t::impl_t {
  HANDLE thread = nullptr;
};

session_worker_t::session_worker_t(std::function<void()> body) : impl_(new impl_t) {
  auto* owned = new std::function<void()>(std::move(body));
  impl_->thread = ::CreateThread(/*attributes=*/nullptr, /*stack_size=*/0, worker_entry, owned,
                                 /*flags=*/0, /*thread_id=*/nullptr);
  if (!impl_->thread) {
    const DWORD error = ::GetLastError();
    delete owned;
    throw exc::win_sys_exc_t("Failed to start oracle session init thread", error);
  }
}

session_worker_t::~session_worker_t() {
  if (impl_->thread) ::CloseHandle(impl_->thread);
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
  if (!::TerminateThread(impl_->thread, kTerminatedExitCode)) {
    throw exc::win_sys_exc_t("Failed to terminate oracle session init thread", ::GetLastError());
  }
  ::WaitForSingleObject(impl_->thread, INFINITE);
}

}  // namespace specific::oracle
