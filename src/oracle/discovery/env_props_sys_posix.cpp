#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/win/errno_codes_posix.h"
#include "oracle/discovery/env_props_sys.h"

namespace specific::oracle::env_sys {

namespace {

utsname read_uname(const char* failure) {
  utsname names;
  if (::uname(&names) != 0) throw exc::win_sys_exc_t(failure, win::host::error_from_errno(errno));
  return names;
}

}  // namespace

std::u16string computer_fqdn() {
  const utsname names = read_uname("Failed to retrieve fully qualified computer name (FQDN).");
  std::string name = names.nodename;
  // No name service is asked: a resolver that does not answer would stall the explore.
  char domain[256] = {};
  if (::getdomainname(domain, sizeof domain - 1) == 0 && domain[0] != '\0' &&
      std::strcmp(domain, "(none)") != 0) {
    name += ".";
    name += domain;
  }
  return util::from_utf8(name);
}

std::u16string os_name() {
  const utsname names = read_uname("Failed to determine operating system version");
  return util::from_utf8(std::string(names.sysname) + " " + names.release);
}

STimeZoneBias time_zone_bias() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  STimeZoneBias zone;
  zone.result = kTimeZoneIdStandard;
  zone.bias = static_cast<int32_t>(-local.tm_gmtoff / 60);
  return zone;
}

}  // namespace specific::oracle::env_sys
