#include "oracle/discovery/oracle_homes.h"

#include <exception>
#include <string>
#include <utility>

#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "oracle/discovery/oracle_homes_registry.h"
#include "oracle/discovery/oracle_homes_rules.h"

namespace specific::oracle {

namespace {

constexpr char16_t kHomesPath[] = u"SOFTWARE\\ORACLE";
constexpr char16_t kServicesPath[] = u"SYSTEM\\CURRENTCONTROLSET\\SERVICES";

constexpr char16_t kOracleHomeValue[] = u"ORACLE_HOME";
constexpr char16_t kRdbmsControlValue[] = u"RDBMS_CONTROL";
constexpr char16_t kOracleHomeNameValue[] = u"ORACLE_HOME_NAME";
constexpr char16_t kImagePathValue[] = u"IMAGEPATH";

constexpr char kEnumFailed[] = "COracleHomes: failed to enum reg subkeys.";
constexpr char kValueFailed[] = "COracleHomes: failed to get reg key value.";
constexpr char kHomesFailed[] = "COracleHomes: failed to find oracle homes.";
constexpr char kServicesFailed[] = "COracleHomes: failed to find oracle services.";
constexpr char kInstancesFailed[] = "COracleHomes: failed to find oracle instances.";
constexpr char kCreateFailed[] = "Failed to create oracle homes.";
constexpr char kFoundInstance[] = "Found oracle instance: %1. Is ASM: %2";

std::vector<std::u16string> list_subkeys(const COracleRegKey& key) {
  try {
    return key.subkey_names();
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kEnumFailed, e);
  }
}

std::u16string read_value(const COracleRegKey& key, const std::u16string& name) {
  try {
    return key.read_string(name);
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kValueFailed, e);
  }
}

// Every KEY_ key below SOFTWARE\ORACLE, in listing order, whether or not it holds the values:
// client homes and half-removed homes are among them and simply find no service later.
std::vector<SOracleHomeRegInfo> find_homes(const COracleRegKey& root) {
  try {
    std::vector<SOracleHomeRegInfo> homes;
    // No such key: a machine without Oracle, which is nothing to report.
    const auto base = root.open(kHomesPath);
    if (!base) return homes;
    for (const auto& name : list_subkeys(*base)) {
      if (!homes_rules::is_home_key_name(name)) continue;
      // Key names are not case-sensitive, so the upper-cased name opens the same key.
      const auto key = base->open(homes_rules::upper_case(name));
      if (!key) continue;
      SOracleHomeRegInfo home;
      home.home = read_value(*key, kOracleHomeValue);
      home.rdbmsControl = read_value(*key, kRdbmsControlValue);
      home.homeName = read_value(*key, kOracleHomeNameValue);
      homes.push_back(std::move(home));
    }
    return homes;
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kHomesFailed, e);
  }
}

// Every database and ASM service whose command line can be split, in listing order.
std::vector<SOracleServiceRegInfo> find_services(const COracleRegKey& root) {
  try {
    std::vector<SOracleServiceRegInfo> services;
    const auto base = root.open(kServicesPath);
    if (!base) return services;
    for (const auto& name : list_subkeys(*base)) {
      const EOracleServiceKind kind = homes_rules::service_key_kind(name);
      if (kind == EOracleServiceKind::none) continue;
      const auto key = base->open(name);
      if (!key) continue;
      auto service = homes_rules::service_from_image_path(
          read_value(*key, kImagePathValue), kind == EOracleServiceKind::asm_instance);
      if (service) services.push_back(std::move(*service));
    }
    return services;
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kServicesFailed, e);
  }
}

// Homes outside, services inside, and no early exit: one home serves several instances, and
// two home keys with one ORACLE_HOME each claim its services.
std::vector<SOracleSid> find_instances(const std::vector<SOracleHomeRegInfo>& homes,
                                       const std::vector<SOracleServiceRegInfo>& services) {
  try {
    std::vector<SOracleSid> sids;
    for (const auto& home : homes) {
      const std::u16string expected = homes_rules::expected_server_path(home.home);
      for (const auto& service : services) {
        if (!homes_rules::runs_from(service, expected)) continue;
        SOracleSid sid;
        sid.sid = service.sid;
        sid.home = home.home;
        sid.homeName = home.homeName;
        sid.isAsm = service.isAsm;
        sids.push_back(std::move(sid));
        logging::oralib().info(kFoundInstance, util::to_multibyte_safe(service.sid),
                               util::to_str(service.isAsm));
      }
    }
    return sids;
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kInstancesFailed, e);
  }
}

// Home scan, service scan, join, in this order. The service scan runs even when there is no
// home: its failures are failures all the same.
std::vector<SOracleSid> scan(const COracleRegKey& root) {
  const auto homes = find_homes(root);
  const auto services = find_services(root);
  return find_instances(homes, services);
}

}  // namespace

COracleHomes::COracleHomes() {
  try {
    sids_ = scan(*machine_registry_root());
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kCreateFailed, e);
  }
}

COracleHomes::COracleHomes(const COracleRegKey& root) {
  try {
    sids_ = scan(root);
  } catch (const std::exception& e) {
    exc::rethrow_with_context(kCreateFailed, e);
  }
}

}  // namespace specific::oracle
