// The platform's answers behind the environment properties (env_props.h).
//   Windows: GetComputerNameExW(ComputerNameDnsFullyQualified); GetVersionExA, GetSystemInfo
//   and GetSystemMetrics(SM_SERVERR2) read through the Windows name table; and
//   GetTimeZoneInformation.
//   Host build: the node name of uname, followed by "." and the domain name when the system
//   has one (getdomainname, "(none)" counting as none), without asking any name service; the
//   system's name and kernel release from uname ("Linux 6.1.0-18-amd64"); and the bias of the
//   local time zone (TZ) at this moment, as a time zone in standard time would report it.
// Each throws on failure; any thread.
#pragma once
#include <string>

#include "oracle/discovery/env_props.h"

namespace specific::oracle::env_sys {

// Throws win_sys_exc_t "Failed to retrieve fully qualified computer name (FQDN)." when the
// name cannot be read.
std::u16string computer_fqdn();

// Throws "Failed to determine operating system version".
std::u16string os_name();

STimeZoneBias time_zone_bias();

}  // namespace specific::oracle::env_sys
