#include "common/logging/zip_writer_sys.h"

#include <windows.h>

#include "common/text/convert.h"

namespace logging::receiver::zip_sys {

gzFile open(const std::string& path, const char* mode, uint32_t& error) {
  const std::u16string wide = util::from_utf8(path);
  ::SetLastError(0);
  gzFile gz = ::gzopen_w(reinterpret_cast<const wchar_t*>(wide.c_str()), mode);
  if (gz == nullptr) {
    error = ::GetLastError();
    // The run-time library may fail before reaching the system; its errno is then all there is.
    if (error == 0) error = ERROR_OPEN_FAILED;
  }
  return gz;
}

uint32_t last_error() { return ::GetLastError(); }

}  // namespace logging::receiver::zip_sys
