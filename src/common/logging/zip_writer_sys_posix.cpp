#include "common/logging/zip_writer_sys.h"

#include <cerrno>

#include "common/text/convert.h"
#include "common/win/errno_codes_posix.h"
#include "common/win/path_map_posix.h"

namespace logging::receiver::zip_sys {

gzFile open(const std::string& path, const char* mode, uint32_t& error) {
  const std::string host = win::host::host_path(util::from_utf8(path));
  errno = 0;
  gzFile gz = ::gzopen(host.c_str(), mode);
  if (gz == nullptr) error = win::host::error_from_errno(errno != 0 ? errno : ENOMEM, host);
  return gz;
}

uint32_t last_error() { return win::host::error_from_errno(errno); }

}  // namespace logging::receiver::zip_sys
