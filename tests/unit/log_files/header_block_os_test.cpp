// The operating system's name and version text, and the probing of a version field.
#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/header_block_os.h"

namespace {

using logging::os::os_kind_t;
using logging::os::os_version_t;
using logging::os::os_text;
using logging::os::probe_version_field;
using logging::os::windows_name;

os_version_t version(uint32_t major, uint32_t minor, uint32_t build = 0, uint32_t sp_major = 0,
                     uint32_t sp_minor = 0) {
  os_version_t v;
  v.major = major;
  v.minor = minor;
  v.build = build;
  v.sp_major = sp_major;
  v.sp_minor = sp_minor;
  return v;
}

os_kind_t workstation() {
  os_kind_t k;
  k.product_type = 1;
  return k;
}

os_kind_t server() {
  os_kind_t k;
  k.product_type = 3;
  return k;
}

TEST(OsText, AWorkstationOf63Build9600ReadsNameAndNumbers) {
  const os_version_t v = version(6, 3, 9600);
  EXPECT_EQ(os_text(windows_name(v, workstation()), v), "Windows 8.1 (6.3.9600)");
}

TEST(OsText, AServicePackIsNamedWithItsMajorNumber) {
  EXPECT_EQ(os_text("Windows 7", version(6, 1, 7601, 1, 0)),
            "Windows 7 (6.1.7601) Service Pack 1");
}

TEST(OsText, AServicePackMinorNumberFollowsTheMajor) {
  EXPECT_EQ(os_text("Windows XP", version(5, 1, 2600, 3, 2)),
            "Windows XP (5.1.2600) Service Pack 3.2");
}

TEST(OsText, AMinorServicePackAloneStillNamesTheServicePack) {
  EXPECT_EQ(os_text("Windows XP", version(5, 1, 2600, 0, 1)),
            "Windows XP (5.1.2600) Service Pack 0.1");
}

TEST(WindowsName, FollowsTheVersionTable) {
  EXPECT_EQ(windows_name(version(5, 0), server()), "Windows 2000");
  EXPECT_EQ(windows_name(version(5, 1), workstation()), "Windows XP");
  EXPECT_EQ(windows_name(version(6, 0), workstation()), "Windows Vista");
  EXPECT_EQ(windows_name(version(6, 0), server()), "Windows Server 2008");
  EXPECT_EQ(windows_name(version(6, 1), workstation()), "Windows 7");
  EXPECT_EQ(windows_name(version(6, 1), server()), "Windows Server 2008 R2");
  EXPECT_EQ(windows_name(version(6, 2), workstation()), "Windows 8");
  EXPECT_EQ(windows_name(version(6, 2), server()), "Windows Server 2012");
  EXPECT_EQ(windows_name(version(6, 3), workstation()), "Windows 8.1");
  EXPECT_EQ(windows_name(version(6, 3), server()), "Windows Server 2012 R2");
  EXPECT_EQ(windows_name(version(6, 4), workstation()), "Windows 10");
  EXPECT_EQ(windows_name(version(10, 0), workstation()), "Windows 10");
  EXPECT_EQ(windows_name(version(10, 0), server()), "Windows Server 2015");
  EXPECT_EQ(windows_name(version(11, 2), workstation()), "Unknown Windows 11.2");
  EXPECT_EQ(windows_name(version(4, 0), server()), "Unknown Windows 4.0");
}

TEST(WindowsName, TellsTheEditionsOf52Apart) {
  os_kind_t x64 = workstation();
  x64.architecture = 9;
  EXPECT_EQ(windows_name(version(5, 2), x64), "Windows XP Professional x64 Edition");
  os_kind_t x86_workstation = workstation();
  x86_workstation.architecture = 0;
  EXPECT_EQ(windows_name(version(5, 2), x86_workstation), "Windows Server 2003");
  os_kind_t home = server();
  home.suite = 0x8000 | 0x10;
  home.server_r2 = true;
  EXPECT_EQ(windows_name(version(5, 2), home), "Windows Home Server");
  os_kind_t r2 = server();
  r2.server_r2 = true;
  EXPECT_EQ(windows_name(version(5, 2), r2), "Windows Server 2003 R2");
  EXPECT_EQ(windows_name(version(5, 2), server()), "Windows Server 2003");
}

TEST(ProbeVersionField, AnswersTheFirstValueThatMatches) {
  int asked = 0;
  const uint32_t found = probe_version_field(
      [&](uint32_t value, uint32_t& error) {
        ++asked;
        if (value == 7) return true;
        error = value % 2 == 0 ? 1150 : 0;  // both mean "not this one"
        return false;
      },
      100);
  EXPECT_EQ(found, 7u);
  EXPECT_EQ(asked, 8);
}

TEST(ProbeVersionField, AnyOtherErrorFails) {
  try {
    probe_version_field(
        [](uint32_t value, uint32_t& error) {
          error = value == 3 ? 87 : 1150;
          return false;
        },
        100);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 87u);
    EXPECT_NE(std::string(e.what()).find("Failed to determine operating system version"),
              std::string::npos);
  }
}

TEST(ProbeVersionField, StopsAtTheLimit) {
  int asked = 0;
  EXPECT_EQ(probe_version_field(
                [&](uint32_t, uint32_t& error) {
                  ++asked;
                  error = 1150;
                  return false;
                },
                logging::os::kProbeLimitMajorMinor),
            100u);
  EXPECT_EQ(asked, 100);
}

TEST(OsVersionText, NamesThisMachine) {
  const std::string text = logging::os::os_version_text();
  EXPECT_FALSE(text.empty());
  EXPECT_NE(text.find(" ("), std::string::npos) << text;
}

}  // namespace
