// The operating system's name and version as the log header shows them, e.g.
// "Windows 8.1 (6.3.9600)" or "Windows Server 2003 (5.2.3790) Service Pack 2". The pure rules
// (name table, text, probing) are here for both builds; os_version_text() is the platform's.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

namespace logging::os {

struct os_version_t {
  uint32_t major = 0;
  uint32_t minor = 0;
  uint32_t build = 0;
  uint32_t sp_major = 0;
  uint32_t sp_minor = 0;
};

// What tells editions of one version apart.
struct os_kind_t {
  uint32_t product_type = 0;   // 1: workstation
  uint32_t architecture = 0;   // 9: AMD64
  uint32_t suite = 0;          // 0x8000: home server
  bool server_r2 = false;      // GetSystemMetrics(SM_SERVERR2) is not zero
};

constexpr uint32_t kWorkstation = 1;
constexpr uint32_t kArchitectureAmd64 = 9;
constexpr uint32_t kSuiteHomeServer = 0x8000;
constexpr uint32_t kErrorOldWinVersion = 1150;

// Windows' name for the version; "Unknown Windows <major>.<minor>" when the table has none.
std::string windows_name(const os_version_t& version, const os_kind_t& kind);

// name, " (", major.minor.build, ")", then " Service Pack <major>[.<minor>]" when there is one.
std::string os_text(const std::string& name, const os_version_t& version);

// One field of the version found by asking "is it this value?" from 0 upward. `ask` answers
// true on a match; otherwise it sets `error`, and 0 or ERROR_OLD_WIN_VERSION mean "ask the
// next value", while any other code fails with win_sys_exc_t "Failed to determine operating
// system version". Without a match below `limit` the answer is `limit`.
using version_question_t = std::function<bool(uint32_t value, uint32_t& error)>;
uint32_t probe_version_field(const version_question_t& ask, uint32_t limit);

// The probing limits of each field.
constexpr uint32_t kProbeLimitMajorMinor = 100;
constexpr uint32_t kProbeLimitServicePack = 100;
constexpr uint32_t kProbeLimitBuild = 100000;

// The platform's text: from RtlGetVersion (probing when that is missing or fails) and the
// edition facts on Windows; from uname on the host build. Throws on failure.
std::string os_version_text();

}  // namespace logging::os
