// The identity a file operation runs under. The file layer asks scope_for_path before it names
// a path to the system and keeps the session until the operation is done: for a path on a
// share that has an entry in the impersonation table, the session puts that identity on the
// calling thread and takes it off again at its end; for any other path it does nothing.
// A session belongs to the thread that made it and must end there.
#pragma once
#include <memory>
#include <string>

#include "common/win/handle.h"
#include "common/win/impersonation_entry.h"

namespace win {

class win_impersonation_session_t {
 public:
  // Stands for no identity: a local path, or a share without an entry.
  win_impersonation_session_t() = default;
  // Enters `entry` on the calling thread. On failure nothing is left entered and the failure,
  // with the line "Failed to impersonate user.", reaches the caller.
  explicit win_impersonation_session_t(std::shared_ptr<impersonation_entry_t> entry);
  // Leaves when entered; a failure there is logged and goes no further.
  ~win_impersonation_session_t();

  win_impersonation_session_t(win_impersonation_session_t&& other) noexcept;
  win_impersonation_session_t& operator=(win_impersonation_session_t&&) = delete;
  win_impersonation_session_t(const win_impersonation_session_t&) = delete;
  win_impersonation_session_t& operator=(const win_impersonation_session_t&) = delete;

  const std::shared_ptr<impersonation_entry_t>& entry() const { return entry_; }
  const std::shared_ptr<win_handle_t>& duplicate_token() const { return duplicate_token_; }
  bool entered() const { return entered_; }

 private:
  void enter();
  void leave();

  std::shared_ptr<impersonation_entry_t> entry_;
  std::shared_ptr<win_handle_t> duplicate_token_;
  bool entered_ = false;
};

// The session for one file operation on `path`. The narrow form takes the system code page
// first and UTF-8 second, so that a path given in either finds its share.
win_impersonation_session_t scope_for_path(const std::u16string& path);
win_impersonation_session_t scope_for_path(const std::string& path);

// The entry of the share `path` lies on, or empty; writes whether one was found, unless the
// path names no share at all.
std::shared_ptr<impersonation_entry_t> find_entry(const std::u16string& path);

}  // namespace win
