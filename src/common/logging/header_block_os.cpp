#include "common/logging/header_block_os.h"

#include "common/exc/exc_base.h"

namespace logging::os {

namespace {

const char kProbeFailed[] = "Failed to determine operating system version";

std::string by_type(const os_kind_t& kind, const char* workstation, const char* server) {
  return kind.product_type == kWorkstation ? workstation : server;
}

}  // namespace

std::string windows_name(const os_version_t& version, const os_kind_t& kind) {
  const uint32_t major = version.major;
  const uint32_t minor = version.minor;
  if (major == 5 && minor == 0) return "Windows 2000";
  if (major == 5 && minor == 1) return "Windows XP";
  if (major == 5 && minor == 2) {
    if (kind.product_type == kWorkstation && kind.architecture == kArchitectureAmd64) {
      return "Windows XP Professional x64 Edition";
    }
    if ((kind.suite & kSuiteHomeServer) != 0) return "Windows Home Server";
    if (kind.server_r2) return "Windows Server 2003 R2";
    return "Windows Server 2003";
  }
  if (major == 6 && minor == 0) return by_type(kind, "Windows Vista", "Windows Server 2008");
  if (major == 6 && minor == 1) return by_type(kind, "Windows 7", "Windows Server 2008 R2");
  if (major == 6 && minor == 2) return by_type(kind, "Windows 8", "Windows Server 2012");
  if (major == 6 && minor == 3) return by_type(kind, "Windows 8.1", "Windows Server 2012 R2");
  if ((major == 6 && minor == 4) || (major == 10 && minor == 0)) {
    return by_type(kind, "Windows 10", "Windows Server 2015");
  }
  return "Unknown Windows " + std::to_string(major) + "." + std::to_string(minor);
}

std::string os_text(const std::string& name, const os_version_t& version) {
  std::string text = name + " (" + std::to_string(version.major) + "." +
                     std::to_string(version.minor) + "." + std::to_string(version.build) + ")";
  if (version.sp_major > 0 || version.sp_minor >= 1) {
    text += " Service Pack " + std::to_string(version.sp_major);
    if (version.sp_minor > 0) text += "." + std::to_string(version.sp_minor);
  }
  return text;
}

uint32_t probe_version_field(const version_question_t& ask, uint32_t limit) {
  for (uint32_t value = 0; value < limit; ++value) {
    uint32_t error = 0;
    if (ask(value, error)) return value;
    if (error != 0 && error != kErrorOldWinVersion) throw exc::win_sys_exc_t(kProbeFailed, error);
  }
  return limit;
}

}  // namespace logging::os
