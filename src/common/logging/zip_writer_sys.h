// The platform half of zip_writer_t: opening the gzip stream on a Windows path and the system's
// code of the failure that zlib reports as Z_ERRNO. For zip_writer.cpp only.
#pragma once
#include <cstdint>
#include <string>

#include <zlib.h>

namespace logging::receiver::zip_sys {

// gzopen on `path` (UTF-8, a Windows path) with `mode`; null on failure, with the system's
// code in `error`.
gzFile open(const std::string& path, const char* mode, uint32_t& error);

// The Win32 code of the last failed system call of this thread: GetLastError on Windows, errno
// mapped onto the Win32 numbers on the host build.
uint32_t last_error();

}  // namespace logging::receiver::zip_sys
