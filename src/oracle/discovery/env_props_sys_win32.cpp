#include <windows.h>

#include <vector>

#include "common/exc/exc_base.h"
#include "common/logging/header_block_os.h"
#include "common/text/convert.h"
#include "oracle/discovery/env_props_sys.h"

namespace specific::oracle::env_sys {

std::u16string computer_fqdn() {
  // First the length, then the name into a buffer one longer.
  DWORD length = 0;
  ::GetComputerNameExW(ComputerNameDnsFullyQualified, /*lpBuffer=*/nullptr, &length);
  std::vector<wchar_t> buffer(static_cast<size_t>(length) + 1, L'\0');
  DWORD size = length + 1;
  if (!::GetComputerNameExW(ComputerNameDnsFullyQualified, buffer.data(), &size)) {
    throw exc::win_sys_exc_t("Failed to retrieve fully qualified computer name (FQDN).",
                             ::GetLastError());
  }
  return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), size);
}

std::u16string os_name() {
  OSVERSIONINFOEXA info = {};
  info.dwOSVersionInfoSize = sizeof info;
  if (!::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info))) {
    throw exc::win_sys_exc_t("Failed to determine operating system version", ::GetLastError());
  }
  SYSTEM_INFO system = {};
  ::GetSystemInfo(&system);
  logging::os::os_version_t version;
  version.major = info.dwMajorVersion;
  version.minor = info.dwMinorVersion;
  logging::os::os_kind_t kind;
  kind.product_type = info.wProductType;
  kind.suite = info.wSuiteMask;
  kind.architecture = system.wProcessorArchitecture;
  kind.server_r2 = ::GetSystemMetrics(SM_SERVERR2) != 0;
  return util::to_unicode(logging::os::windows_name(version, kind));
}

STimeZoneBias time_zone_bias() {
  TIME_ZONE_INFORMATION info = {};
  STimeZoneBias zone;
  zone.result = ::GetTimeZoneInformation(&info);
  zone.bias = info.Bias;
  zone.standardBias = info.StandardBias;
  zone.daylightBias = info.DaylightBias;
  return zone;
}

}  // namespace specific::oracle::env_sys
