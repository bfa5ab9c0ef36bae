// Helpers for the discovery tests: a fixture machine put in place for one test (keys below
// SOFTWARE\ORACLE and SYSTEM\CurrentControlSet\Services: on Windows in the real registry, on the
// host build through the .reg store), the instances found on it, the "Found oracle instance"
// lines of the log, and the lines of an exception's chain.
#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "oracle/discovery/oracle_homes.h"
#include "oracle/discovery/oracle_homes_registry.h"
#include "oracle/discovery/oracle_homes_rules.h"
#include "oracle/discovery/oracle_sid.h"
#include "support/capture_receiver.h"
#include "support/reg_machine.h"

namespace specific::oracle {

// Readable records in assertion messages.
inline void PrintTo(const SOracleSid& s, std::ostream* out) {
  *out << "{sid \"" << util::to_utf8(s.sid) << "\", home \"" << util::to_utf8(s.home)
       << "\", homeName \"" << util::to_utf8(s.homeName) << "\", isAsm "
       << (s.isAsm ? "true" : "false") << "}";
}

}  // namespace specific::oracle

namespace dsl_test {

using specific::oracle::SOracleSid;
using sids_t = std::vector<SOracleSid>;

inline SOracleSid instance(const std::u16string& sid, const std::u16string& home,
                           const std::u16string& homeName, bool isAsm = false) {
  SOracleSid s;
  s.sid = sid;
  s.home = home;
  s.homeName = homeName;
  s.isAsm = isAsm;
  return s;
}

// Oracle keys that an earlier run left behind (a crash between placing and removing) or that
// another test placed at the same time would change every answer: such a test is stopped with
// a message that says so rather than failing on its figures.
inline void expect_no_oracle_keys(const std::string& when) {
  const auto root = specific::oracle::machine_registry_root();
  EXPECT_TRUE(root->open(u"SOFTWARE\\ORACLE") == nullptr)
      << "HKLM\\SOFTWARE\\ORACLE exists " << when;
  if (const auto services = root->open(u"SYSTEM\\CurrentControlSet\\Services")) {
    for (const auto& name : services->subkey_names()) {
      EXPECT_EQ(specific::oracle::homes_rules::service_key_kind(name),
                specific::oracle::EOracleServiceKind::none)
          << "service key " << util::to_utf8(name) << " exists " << when;
    }
  }
}

class discovery_machine_t {
 public:
  explicit discovery_machine_t(const std::string& fixture) {
    expect_no_oracle_keys("before the fixture " + fixture + " is placed");
    machine_ = std::make_unique<reg_machine_t>(fixture_path(fixture));
  }

 private:
  std::unique_ptr<reg_machine_t> machine_;
};

inline sids_t discover() {
  const specific::oracle::COracleHomes homes;
  sids_t result(homes.begin(), homes.end());
  EXPECT_EQ(homes.count(), result.size());
  return result;
}

// The texts of the "Found oracle instance" lines, in the order written.
inline std::vector<std::string> found_lines(const capture_log_t& log) {
  std::vector<std::string> result;
  for (const auto& body : log.bodies()) {
    const size_t at = body.find("Found oracle instance: ");
    if (at != std::string::npos) result.push_back(body.substr(at));
  }
  return result;
}

// The chain of an exception, one entry a line, trace lines with their mark.
inline std::vector<std::string> chain_of(const exc::exc_base_t& e) {
  std::vector<std::string> lines;
  for (const auto& m : e.messages()) lines.push_back((m.is_trace ? "--tr:" : "") + m.text);
  return lines;
}

// The chain without its first line (the system's own text, which differs between Windows and
// the host build).
inline std::vector<std::string> chain_after_system_text(const exc::exc_base_t& e) {
  std::vector<std::string> lines = chain_of(e);
  EXPECT_FALSE(lines.empty());
  if (!lines.empty()) {
    EXPECT_FALSE(lines.front().empty()) << "the system's text of the code";
    lines.erase(lines.begin());
  }
  return lines;
}

}  // namespace dsl_test
