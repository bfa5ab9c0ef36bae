// The file operations that name a path rather than an open file: existence, size, removal,
// renaming, folder creation and listing, and the library's temporary and common data folders.
// Each asks the access policy and takes the impersonation scope first (file_hooks.h), so a
// call holds the rights of the calling thread. Paths are UTF-8 or UTF-16 (path_holder_t).
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "common/win/path_holder.h"

namespace win {

// Whether anything stands at `path`. One trailing separator is ignored, and a share root is
// searched as "\\srv\share\*". When the search finds nothing (2 or 3) a direct test of the
// same text decides. Any other failure is written to the log as two error lines and thrown as
// win_sys_exc_t "Failed to check whether file '%1' exists.".
bool file_exists(const path_holder_t& path);
// file_exists of the folder part of `path` (the part before its last separator).
bool dir_exists(const path_holder_t& path);

// Deletes a file or an empty folder; a path where nothing stands is no failure (the answer is
// then false). Runs in the scope of the folder. Failure: win_sys_exc_t
// "Failed to delete file [%1]."
bool remove_file(const path_holder_t& path);
// Renames, replacing an existing `to`. Runs in the scope of the folder of `from`. Failure:
// win_sys_exc_t "Failed to rename file [%1] to [%2]."
void rename_file(const path_holder_t& from, const path_holder_t& to);

// The size of the file, opened for reading as win_file_t::open_read does.
uint64_t file_size(const path_holder_t& path);

// Creates each missing folder of `path`, whose last part is a file name unless `path` ends in a
// separator. The server and share of a UNC path are never touched, nor a long-path prefix
// (directory_prefixes in path.h). A folder that exists is left alone; a failure leaves what was
// created and throws win_sys_exc_t "Failed to create directory [%1]." with the folder.
void create_directories(const path_holder_t& path);

struct dir_entry_t {
  std::u16string name;
  bool is_directory = false;
  bool is_regular = false;
};
// The entries of a folder without "." and "..", in the order the system gives them (not
// sorted). Failure: win_sys_exc_t "Failed to list directory [%1]."
std::vector<dir_entry_t> list_directory(const path_holder_t& path);

// The system's folder for temporary files, ending in a separator. On the host build
// "C:\Temp\". Failure: win_sys_exc_t
// "Failed to retrieve the path of the directory designated for temporary files."
std::u16string temp_path();

// The machine-wide application data folder (CSIDL_COMMON_APPDATA; on the host build
// "C:\ProgramData"). Answers the HRESULT of the query; `folder` is set only on success (0), so
// that each caller keeps its own rule for a failure.
[[nodiscard]] int32_t common_appdata_folder(std::u16string& folder);

// The library's folder for temporary files, "<common data>\Trelo\Backup\Tmp\", created when
// missing; the system's temp_path() when the common data folder cannot be had.
std::u16string library_temp_folder();
// A fresh name in library_temp_folder(): a new GUID in braces.
std::u16string make_temp_file_path();

}  // namespace win
