// The host build's stand-in for the handles that Windows gives out for registry keys and
// service objects: each handle is the address of a record that the table owns, and only an
// address the table still holds is taken as a handle, so that a closed or made-up handle is
// answered with ERROR_INVALID_HANDLE instead of being used. For the _posix files only.
#pragma once
#include <memory>
#include <mutex>
#include <set>

namespace win::host {

template <typename record_t>
class handle_table_t {
 public:
  // Takes the record over; its address is the handle.
  void* keep(std::unique_ptr<record_t> record) {
    std::lock_guard<std::mutex> guard(lock_);
    live_.insert(record.get());
    return record.release();
  }

  // The record of a live handle, or null.
  record_t* find(const void* handle) const {
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = live_.find(static_cast<record_t*>(const_cast<void*>(handle)));
    return it == live_.end() ? nullptr : *it;
  }

  // Ends a live handle and frees its record; false when the handle is not live.
  bool close(const void* handle) noexcept {
    std::unique_ptr<record_t> record;
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = live_.find(static_cast<record_t*>(const_cast<void*>(handle)));
    if (it == live_.end()) return false;
    record.reset(*it);
    live_.erase(it);
    return true;
  }

 private:
  mutable std::mutex lock_;
  std::set<record_t*> live_;
};

}  // namespace win::host
