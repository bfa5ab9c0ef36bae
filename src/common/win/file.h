// win_file_t: the owner of one open file, through which all file work of the library passes.
// Reads and writes go straight to the system with no buffering here; a write that meets a
// region locked by another process is retried for five seconds (file_retry.h). Every factory
// asks the access policy and takes the impersonation scope of the path first (file_hooks.h).
// One thread at a time uses a file: it is not locked, and all holders of the shared pointer
// share its position. After any failure the file stays open and usable.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "common/win/file_codes.h"
#include "common/win/file_hooks.h"
#include "common/win/path_holder.h"

namespace win {

class win_file_t;
using win_file_ptr_t = std::shared_ptr<win_file_t>;

// The parameters of an open, in CreateFileW's own terms (file_codes.h).
struct open_mode_t {
  uint32_t access = kGenericRead;
  uint32_t share = kFileShareRead;
  uint32_t disposition = kOpenExisting;
  uint32_t flags = 0;
};

class win_file_t {
  struct private_t {};

 public:
  // Read and write, others may read; an existing file is opened, a missing one created.
  // Failure: win_sys_exc_t "Failed to create or open file [%1]."
  static win_file_ptr_t create_or_open(const path_holder_t& path);
  // The same access; the file is made empty (overwrite) or must not exist yet.
  static win_file_ptr_t create(const path_holder_t& path, bool overwrite = true);
  // Read only, others may read. Access denied is tried once more with backup semantics, a
  // sharing violation once more letting others write too. Failure: win_sys_exc_t
  // "Failed to open file [%1] in readonly mode."
  static win_file_ptr_t open_read(const path_holder_t& path);
  // As open_read, past the system's cache; "... in readonly mode (without cache)."
  static win_file_ptr_t open_read_nocache(const path_holder_t& path);
  // Takes over a handle the caller opened; `path` (UTF-8) names it in failure texts.
  static win_file_ptr_t from_handle(native_handle_t handle, const std::string& path);
  // Opens with exactly these parameters. On failure answers an empty pointer and the Win32
  // code in `error`, for callers that treat some codes as an answer (a locked log file, say).
  // The access policy may still throw.
  static win_file_ptr_t try_open(const path_holder_t& path, const open_mode_t& mode,
                                 uint32_t& error);

  win_file_t(private_t, native_handle_t handle, path_holder_t path);
  ~win_file_t();
  win_file_t(const win_file_t&) = delete;
  win_file_t& operator=(const win_file_t&) = delete;

  // All of `data` in one system write, retried while another process locks the region.
  // Failures: win_sys_exc_t "Failed to write data to the file [%1]."; runtime_exc_t
  // "Failed to write %1 bytes to the file '%2': %3 bytes were written instead".
  void write(uint32_t size, const void* data);
  // Up to `size` bytes; fewer at the end of the file, which is no failure.
  // Failure: win_sys_exc_t "Failed to read data from the file [%1]."
  uint32_t read(void* data, uint32_t size);
  // Answers the new position. `method` is kFileBegin, kFileCurrent or kFileEnd.
  int64_t seek(int64_t distance, uint32_t method);
  int64_t seek_set(int64_t position);
  int64_t seek_end(int64_t distance);
  // Cuts or extends the file to `size`; the position stays at the new end.
  void reset_size(uint64_t size);
  uint64_t size();
  void flush();

  const path_holder_t& path() const { return path_; }
  // The path as given or converted; "Parameter is not available." when there is none.
  const std::string& path_narrow() const { return path_.narrow(); }
  const std::u16string& path_wide() const { return path_.wide(); }
  native_handle_t handle() const { return handle_; }
  const file_trace_flags_t& trace_flags() const { return trace_flags_; }

  // "FILE_BEGIN", "FILE_CURRENT", "FILE_END", or the number in decimal.
  static std::string move_method_text(uint32_t method);

 private:
  static win_file_ptr_t open_checked(const path_holder_t& path, const open_mode_t& mode,
                                     const char* failure_text);
  static win_file_ptr_t open_read_with(const path_holder_t& path, uint32_t flags,
                                       const char* failure_text);
  std::string path_text() const { return path_.narrow_or_empty(); }

  native_handle_t handle_;
  path_holder_t path_;
  // The per-file trace switches and the operation budget they would count against. No
  // trace recorder exists in this library, so nothing is sent whatever they say; they are
  // kept so that a recorder can be added without changing how a file is made.
  file_trace_flags_t trace_flags_;
  int32_t operation_limit_ = 0;
  int32_t operations_done_ = 0;
};

}  // namespace win
