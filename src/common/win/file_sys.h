// The system calls of the file layer, one implementation per platform (file_sys_win32.cpp,
// file_sys_posix.cpp). Each answers a Win32 error code, 0 on success, and never throws: the
// callers own the failure texts. Paths are Windows paths on both builds; the host build maps
// them onto its folder here and nowhere above. For the file layer's own use.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "common/win/file_codes.h"
#include "common/win/path_ops.h"

namespace win::sys {

// Neither 0 nor the invalid value on Windows; a descriptor on the host build.
bool is_valid(native_handle_t handle);

// CreateFileW with these parameters and no security attributes or template. On failure `out`
// is not touched.
uint32_t open(const std::u16string& path, uint32_t access, uint32_t share, uint32_t disposition,
              uint32_t flags, native_handle_t& out);
// The result of the close is of no interest to anyone.
void close(native_handle_t handle) noexcept;

// One WriteFile / ReadFile of the whole count at the current position, no overlapped
// structure. `done` is set in every case.
uint32_t write(native_handle_t handle, const void* data, uint32_t size, uint32_t& done);
uint32_t read(native_handle_t handle, void* data, uint32_t size, uint32_t& done);
// SetFilePointerEx.
uint32_t seek(native_handle_t handle, int64_t distance, uint32_t method, int64_t& position);
// SetFilePointer from the start, with its own sign of failure: the low part all ones and a
// non-zero last error.
uint32_t move_pointer(native_handle_t handle, uint64_t position);
// SetEndOfFile at the current position.
uint32_t set_end(native_handle_t handle);
uint32_t size(native_handle_t handle, uint64_t& out);
uint32_t flush(native_handle_t handle);

// FindFirstFileW followed by FindClose: 0 when anything matches `pattern`.
uint32_t find_first(const std::u16string& pattern);
// PathFileExistsW.
bool path_file_exists(const std::u16string& path);

// What a file-status query tells about a path, in the numbering of the status query the
// directory creation relies on: 0 the status could not be had, 1 nothing is there.
enum class file_kind_t : int {
  status_error = 0,
  not_found = 1,
  regular = 2,
  directory = 3,
  other = 4,
};
file_kind_t status(const std::u16string& path);

uint32_t create_directory(const std::u16string& path);
// A file, or an empty folder.
uint32_t remove(const std::u16string& path, bool is_directory);
// Replaces an existing target.
uint32_t rename(const std::u16string& from, const std::u16string& to);

// GetTempPathW with its buffer of 261 characters; ends in a separator.
uint32_t temp_path(std::u16string& out);
// SHGetFolderPathW(CSIDL_COMMON_APPDATA) into 260 characters; answers the HRESULT.
int32_t common_appdata(std::u16string& out);

// The entries of a folder, "." and ".." left out, in the order the system gives them.
uint32_t list_directory(const std::u16string& path, std::vector<dir_entry_t>& out);

}  // namespace win::sys
