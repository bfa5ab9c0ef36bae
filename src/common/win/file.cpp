#include "common/win/file.h"

#include <utility>

#include "common/exc/exc_base.h"
#include "common/text/numbers.h"
#include "common/win/file_retry.h"
#include "common/win/file_sys.h"
#include "common/win/safe_folder.h"
#include "common/win/safe_folder_sys.h"

namespace win {

namespace {

const char kCreateFailed[] = "Failed to create or open file [%1].";
const char kOpenReadFailed[] = "Failed to open file [%1] in readonly mode.";
const char kOpenReadNocacheFailed[] = "Failed to open file [%1] in readonly mode (without cache).";
const char kReadFailed[] = "Failed to read data from the file [%1].";
const char kSeekFailed[] =
    "Seek operation has failed. File: [%1]. Distance to move: [%2]. Move method: [%3].";
const char kResizeMoveFailed[] =
    "Unable to reset file size: move operation has failed. Specified file size: [%1]. File: [%2].";
const char kResizeTruncFailed[] =
    "Unable to reset file size: trunk operation has failed. File: [%1].";
const char kSizeFailed[] = "WINAPI: Cannot get file size. File: [%1].";
const char kFlushFailed[] = "Failed to flush file buffers. File: [%1].";

// Whether an open with these parameters may change what it opens.
bool open_writes(uint32_t access, uint32_t disposition) {
  return (access & kGenericWrite) != 0 || disposition == kCreateAlways ||
         disposition == kTruncateExisting;
}

// In the data folder a file is opened as itself, never through a link: the folders on the way
// and what stands at the name are checked first (an open that creates or truncates changes the
// file before a handle could be looked at), the open does not follow a link at its last part,
// and what was opened is looked at again before anybody writes to it. Answers whether the path
// lies there.
bool guard_data_folder_open(const path_holder_t& path, uint32_t& flags, bool writes) {
  const std::u16string& wide = path.wide();
  if (!lies_in_data_folder(wide)) return false;
  check_not_link(wide, writes);
  flags |= kFileFlagOpenReparsePoint;
  return true;
}

// After an open in the data folder: a link (or, for a write, a file with several hard links)
// is closed again and refused. `error` is the open's answer.
void refuse_opened_link(const path_holder_t& path, uint32_t error, native_handle_t handle,
                        bool writes) {
  if (error == kErrorReparsePointEncountered) {
    throw exc::runtime_exc_t(link_refused_text(path.wide()));
  }
  if (error != 0) return;
  const int kind = sys::handle_link_kind(handle);
  if (kind == 1 || (kind == 2 && writes)) {
    sys::close(handle);
    throw exc::runtime_exc_t(kind == 1 ? link_refused_text(path.wide())
                                       : hard_link_refused_text(path.wide()));
  }
}

}  // namespace

win_file_t::win_file_t(private_t, native_handle_t handle, path_holder_t path)
    : handle_(handle), path_(std::move(path)), trace_flags_(file_hooks().trace_flags()) {}

win_file_t::~win_file_t() {
  if (sys::is_valid(handle_)) sys::close(handle_);
}

win_file_ptr_t win_file_t::try_open(const path_holder_t& path, const open_mode_t& mode,
                                    uint32_t& error) {
  path_guard_t guard(path);
  file_op_t op;
  native_handle_t handle = kInvalidNativeHandle;
  uint32_t flags = mode.flags;
  const bool writes = open_writes(mode.access, mode.disposition);
  const bool in_data_folder = guard_data_folder_open(path, flags, writes);
  error = sys::open(path.wide(), mode.access, mode.share, mode.disposition, flags, handle);
  if (in_data_folder) {
    refuse_opened_link(path, error, handle, writes);
  }
  if (error != 0) return nullptr;
  return std::make_shared<win_file_t>(private_t{}, handle, path);
}

win_file_ptr_t win_file_t::open_checked(const path_holder_t& path, const open_mode_t& mode,
                                        const char* failure_text) {
  uint32_t error = 0;
  win_file_ptr_t file = try_open(path, mode, error);
  if (!file) throw exc::win_sys_exc_t(failure_text, path.narrow_or_empty(), error);
  return file;
}

win_file_ptr_t win_file_t::create_or_open(const path_holder_t& path) {
  open_mode_t mode;
  mode.access = kGenericRead | kGenericWrite;
  mode.share = kFileShareRead;
  mode.disposition = kOpenAlways;
  mode.flags = kFileAttributeNormal;
  return open_checked(path, mode, kCreateFailed);
}

win_file_ptr_t win_file_t::create(const path_holder_t& path, bool overwrite) {
  open_mode_t mode;
  mode.access = kGenericRead | kGenericWrite;
  mode.share = kFileShareRead;
  mode.disposition = overwrite ? kCreateAlways : kCreateNew;
  mode.flags = kFileAttributeNormal;
  return open_checked(path, mode, kCreateFailed);
}

win_file_ptr_t win_file_t::open_read_with(const path_holder_t& path, uint32_t flags,
                                          const char* failure_text) {
  path_guard_t guard(path);
  file_op_t op;
  const std::u16string& wide = path.wide();
  native_handle_t handle = kInvalidNativeHandle;
  const bool in_data_folder = guard_data_folder_open(path, flags, /*writes=*/false);
  uint32_t error = sys::open(wide, kGenericRead, kFileShareRead, kOpenExisting, flags, handle);
  if (error == kErrorAccessDenied) {
    // Backup semantics pass by the file's own access list where the process may back it up.
    error = sys::open(wide, kGenericRead, kFileShareRead, kOpenExisting,
                      flags | kFileFlagBackupSemantics, handle);
  } else if (error == kErrorSharingViolation) {
    // Somebody writes the file (a live log, say): reading beside the writer is still wanted.
    error = sys::open(wide, kGenericRead, kFileShareRead | kFileShareWrite, kOpenExisting, flags,
                      handle);
  }
  if (in_data_folder) refuse_opened_link(path, error, handle, /*writes=*/false);
  if (error != 0) throw exc::win_sys_exc_t(failure_text, path.narrow_or_empty(), error);
  return std::make_shared<win_file_t>(private_t{}, handle, path);
}

win_file_ptr_t win_file_t::open_read(const path_holder_t& path) {
  return open_read_with(path, 0, kOpenReadFailed);
}

win_file_ptr_t win_file_t::open_read_nocache(const path_holder_t& path) {
  return open_read_with(path, kFileFlagNoBuffering, kOpenReadNocacheFailed);
}

win_file_ptr_t win_file_t::from_handle(native_handle_t handle, const std::string& path) {
  const path_holder_t holder(path);
  path_guard_t guard(holder);
  return std::make_shared<win_file_t>(private_t{}, handle, holder);
}

void win_file_t::write(uint32_t size, const void* data) {
  file_op_t op;
  file_hooks_t& hooks = file_hooks();
  write_with_retry(
      path_, size,
      [&](uint32_t& written) {
        hooks.counter_enter(io_counter_t::write);
        const uint32_t error = sys::write(handle_, data, size, written);
        hooks.counter_leave(io_counter_t::write, written);
        return error;
      },
      sleep_ms);
}

uint32_t win_file_t::read(void* data, uint32_t size) {
  file_op_t op;
  file_hooks_t& hooks = file_hooks();
  uint32_t done = 0;
  hooks.counter_enter(io_counter_t::read);
  const uint32_t error = sys::read(handle_, data, size, done);
  hooks.counter_leave(io_counter_t::read, done);
  if (error != 0) throw exc::win_sys_exc_t(kReadFailed, path_text(), error);
  return done;
}

int64_t win_file_t::seek(int64_t distance, uint32_t method) {
  file_op_t op;
  int64_t position = 0;
  const uint32_t error = sys::seek(handle_, distance, method, position);
  if (error != 0) {
    throw exc::win_sys_exc_t(kSeekFailed, path_text(), std::to_string(distance),
                             move_method_text(method), error);
  }
  return position;
}

int64_t win_file_t::seek_set(int64_t position) { return seek(position, kFileBegin); }

int64_t win_file_t::seek_end(int64_t distance) { return seek(distance, kFileEnd); }

void win_file_t::reset_size(uint64_t size) {
  file_op_t op;
  uint32_t error = sys::move_pointer(handle_, size);
  if (error != 0) {
    throw exc::win_sys_exc_t(kResizeMoveFailed, util::to_str(size), path_text(), error);
  }
  error = sys::set_end(handle_);
  if (error != 0) throw exc::win_sys_exc_t(kResizeTruncFailed, path_text(), error);
}

uint64_t win_file_t::size() {
  file_op_t op;
  uint64_t value = 0;
  const uint32_t error = sys::size(handle_, value);
  if (error != 0) throw exc::win_sys_exc_t(kSizeFailed, path_text(), error);
  return value;
}

void win_file_t::flush() {
  file_op_t op;
  const uint32_t error = sys::flush(handle_);
  if (error != 0) throw exc::win_sys_exc_t(kFlushFailed, path_text(), error);
}

std::string win_file_t::move_method_text(uint32_t method) {
  switch (method) {
    case kFileBegin:
      return "FILE_BEGIN";
    case kFileCurrent:
      return "FILE_CURRENT";
    case kFileEnd:
      return "FILE_END";
    default:
      return util::to_str(method);
  }
}

}  // namespace win
