// POSIX failures in the numbering of Win32 error codes, which is what the logic above the
// platform layer tests for and reports. For the _posix files only.
#pragma once
#include <cstdint>
#include <string>

namespace win::host {

// The Win32 code for an errno value. ENOENT is told apart by where it stands: ERROR_FILE_NOT_FOUND
// when the folder of `host_path` exists, ERROR_PATH_NOT_FOUND when it does not (or when no path
// is given: ERROR_FILE_NOT_FOUND).
uint32_t error_from_errno(int error, const std::string& host_path = {});

}  // namespace win::host
