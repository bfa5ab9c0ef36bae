#include "common/logging/header_block_os.h"

#include <sys/utsname.h>

#include <cerrno>
#include <cstdlib>

#include "common/exc/exc_base.h"
#include "common/win/errno_codes_posix.h"

namespace logging::os {

namespace {

// The leading number of `text` from `pos` on, and the position after it and one separator.
uint32_t next_number(const std::string& text, size_t& pos) {
  uint32_t value = 0;
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
    value = value * 10 + static_cast<uint32_t>(text[pos] - '0');
    ++pos;
  }
  if (pos < text.size() && text[pos] == '.') ++pos;
  return value;
}

}  // namespace

std::string os_version_text() {
  utsname names;
  if (::uname(&names) != 0) {
    throw exc::win_sys_exc_t("Failed to determine operating system version",
                             win::host::error_from_errno(errno));
  }
  // The kernel release reads "major.minor.patch-flavour"; the patch level stands where
  // Windows puts its build number.
  const std::string release = names.release;
  os_version_t version;
  size_t pos = 0;
  version.major = next_number(release, pos);
  version.minor = next_number(release, pos);
  version.build = next_number(release, pos);
  return os_text(names.sysname, version);
}

}  // namespace logging::os
