#include "common/logging/header_block_os.h"

#include <windows.h>

namespace logging::os {

namespace {

using rtl_get_version_t = LONG(WINAPI*)(OSVERSIONINFOEXW*);

bool version_from_rtl(os_version_t& out) {
  HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
  if (ntdll == nullptr) return false;
  // Through the generic function pointer type, which any function pointer may be cast from.
  const auto rtl_get_version = reinterpret_cast<rtl_get_version_t>(
      reinterpret_cast<void (*)()>(::GetProcAddress(ntdll, "RtlGetVersion")));
  if (rtl_get_version == nullptr) return false;
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof info;
  if (rtl_get_version(&info) != 0) return false;
  out.major = info.dwMajorVersion;
  out.minor = info.dwMinorVersion;
  out.build = info.dwBuildNumber;
  out.sp_major = info.wServicePackMajor;
  out.sp_minor = info.wServicePackMinor;
  return true;
}

// Asks the system whether one field equals `value`.
bool field_equals(DWORD type_mask, uint32_t value, uint32_t& error) {
  OSVERSIONINFOEXA info = {};
  info.dwOSVersionInfoSize = sizeof info;
  switch (type_mask) {
    case VER_MAJORVERSION: info.dwMajorVersion = value; break;
    case VER_MINORVERSION: info.dwMinorVersion = value; break;
    case VER_BUILDNUMBER: info.dwBuildNumber = value; break;
    case VER_SERVICEPACKMAJOR: info.wServicePackMajor = static_cast<WORD>(value); break;
    case VER_SERVICEPACKMINOR: info.wServicePackMinor = static_cast<WORD>(value); break;
    default: break;
  }
  const DWORDLONG condition = ::VerSetConditionMask(/*ConditionMask=*/0, type_mask, VER_EQUAL);
  ::SetLastError(0);
  if (::VerifyVersionInfoA(&info, type_mask, condition)) return true;
  error = ::GetLastError();
  return false;
}

uint32_t probe(DWORD type_mask, uint32_t limit) {
  return probe_version_field(
      [type_mask](uint32_t value, uint32_t& error) { return field_equals(type_mask, value, error); },
      limit);
}

os_version_t read_version() {
  os_version_t version;
  if (version_from_rtl(version)) return version;
  version.major = probe(VER_MAJORVERSION, kProbeLimitMajorMinor);
  version.minor = probe(VER_MINORVERSION, kProbeLimitMajorMinor);
  version.build = probe(VER_BUILDNUMBER, kProbeLimitBuild);
  version.sp_major = probe(VER_SERVICEPACKMAJOR, kProbeLimitServicePack);
  version.sp_minor = probe(VER_SERVICEPACKMINOR, kProbeLimitServicePack);
  return version;
}

// Read once per process; a failed reading is tried again by the next caller.
const os_version_t& cached_version() {
  static const os_version_t version = read_version();
  return version;
}

os_kind_t read_kind() {
  os_kind_t kind;
  OSVERSIONINFOEXA info = {};
  info.dwOSVersionInfoSize = sizeof info;
  if (::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&info))) {
    kind.product_type = info.wProductType;
    kind.suite = info.wSuiteMask;
  }
  SYSTEM_INFO system = {};
  ::GetSystemInfo(&system);
  kind.architecture = system.wProcessorArchitecture;
  kind.server_r2 = ::GetSystemMetrics(SM_SERVERR2) != 0;
  return kind;
}

}  // namespace

std::string os_version_text() {
  const os_version_t& version = cached_version();
  return os_text(windows_name(version, read_kind()), version);
}

}  // namespace logging::os
