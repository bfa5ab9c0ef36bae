#include "common/logging/header_block.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/logging/header_block_os.h"
#include "common/text/fmt.h"
#include "common/win/errno_codes_posix.h"

namespace logging {

namespace {

const char kPathFailed[] = "Fully-qualified path for the executable file cannot be retrieved.";
const char kSizeFailed[] = "Size of the version resource is unknown.";
const char kVersionFailed[] =
    "Cannot retrieve the version of the specified module. Module path: [%1].";
// The path buffer of the Windows call.
constexpr size_t kModulePathCapacity = 260;

class posix_header_source_t : public header_source_t {
 public:
  std::string module_path() const override {
    char buffer[kModulePathCapacity] = {};
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
    if (length <= 0) {
      throw exc::win_sys_exc_t(kPathFailed, win::host::error_from_errno(errno));
    }
    return std::string(buffer, static_cast<size_t>(length));
  }

  // Executables of the host carry no version resource: the answer is that of a module built
  // without one, less the system code that only Windows has.
  std::string module_version(const std::string& module_path,
                             std::string& comments) const override {
    try {
      throw exc::runtime_exc_t(kSizeFailed);
    } catch (const std::exception& failure) {
      exc::rethrow_with_context(util::fmt_t::format(kVersionFailed, module_path), failure);
    }
  }

  std::string os_version() const override { return os::os_version_text(); }

  uint32_t process_id() const override { return static_cast<uint32_t>(::getpid()); }
};

}  // namespace

const header_source_t& platform_header_source() {
  static const posix_header_source_t source;
  return source;
}

}  // namespace logging
