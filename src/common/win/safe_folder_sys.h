// The system side of the data folder's safety (safe_folder.h), one implementation per platform:
// safe_folder_sys_win32.cpp reads and sets security descriptors, safe_folder_sys_posix.cpp
// owners and modes. Windows paths on both builds. Never throws: problems come back as text.
#pragma once
#include <cstdint>
#include <string>

#include "common/win/file_codes.h"

namespace win::sys {

// What inspect_folder found.
enum class folder_state_t { missing, safe, repaired, refused };

// Looks at the folder `path` without following a link. Missing: nothing there. Refused: `reason`
// says why (a link, not a folder, a foreign owner, others may write, the security cannot be
// read). Repaired (Windows only): the owner was trusted and the access list too wide, and it has
// been replaced by the safe one.
folder_state_t inspect_folder(const std::u16string& path, std::string& reason);

// Creates the folder `path` with the safe access list (Windows) or mode 0700 (host). Answers the
// Win32 code; 183 when something is there already.
uint32_t create_private_folder(const std::u16string& path);

// What stands at `path`, not following a link: 0 nothing or a plain entry, 1 a link (junction,
// symbolic link, any reparse point), 2 a file with more than one hard link.
int entry_link_kind(const std::u16string& path);
// The same for an open handle (a file opened without following a link).
int handle_link_kind(native_handle_t handle);

// Windows build only. The descriptor a folder made by the library gets, as SDDL text, and what
// the folder check says of a descriptor given as SDDL text (owner and access list): empty when
// it is safe, else the reason; `repairable` is set when only the access list is at fault (the
// owner is trusted), so that the check would replace the list.
std::u16string safe_descriptor_text();
std::string descriptor_problem(const std::u16string& sddl, bool& repairable);

// `path` with "." and ".." folded and a long-path prefix dropped, as the system would resolve it
// (GetFullPathNameW on Windows); the text itself when that fails.
std::u16string full_path(const std::u16string& path);

}  // namespace win::sys
