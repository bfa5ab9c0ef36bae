// win_handle_t: the one owner of a Win32 handle (a token, an event, a thread). Move-only; the
// destructor closes what it holds and leaves the thread's last error as it found it, so that a
// failure read after the handle goes out of scope still names the call that failed. Both 0 and
// INVALID_HANDLE_VALUE (-1) count as "no handle". Not for concurrent use.
// The host build has no kernel handles: the value is carried as given and never closed.
#pragma once
#include <cstdint>

namespace win {

class win_handle_t {
 public:
  using native_t = void*;

  // INVALID_HANDLE_VALUE.
  static native_t invalid_value() { return reinterpret_cast<native_t>(static_cast<intptr_t>(-1)); }
  static bool is_valid(native_t value) { return value != nullptr && value != invalid_value(); }

  // Holds -1, ready to be filled through put().
  win_handle_t() noexcept = default;
  explicit win_handle_t(native_t value) noexcept : value_(value) {}
  ~win_handle_t() { close(); }

  win_handle_t(win_handle_t&& other) noexcept : value_(other.release()) {}
  win_handle_t& operator=(win_handle_t&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  win_handle_t(const win_handle_t&) = delete;
  win_handle_t& operator=(const win_handle_t&) = delete;

  [[nodiscard]] native_t get() const { return value_; }
  [[nodiscard]] bool valid() const { return is_valid(value_); }
  explicit operator bool() const { return valid(); }

  // Closes what is held and answers the slot, for a system call's out-parameter.
  native_t* put() {
    close();
    return &value_;
  }
  // Gives the value up without closing it; the object then holds -1.
  [[nodiscard]] native_t release() noexcept {
    native_t value = value_;
    value_ = invalid_value();
    return value;
  }
  void reset(native_t value = invalid_value()) noexcept {
    if (value == value_) return;
    close();
    value_ = value;
  }

 private:
  void close() noexcept {
    if (is_valid(value_)) close_native_handle(value_);
    value_ = invalid_value();
  }
  // CloseHandle, with the last error kept; its result is ignored, as nothing can be done about
  // a handle that will not close.
  static void close_native_handle(native_t value) noexcept;

  native_t value_ = invalid_value();
};

}  // namespace win
