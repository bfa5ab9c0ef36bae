#include "oracle/discovery/oracle_homes_rules.h"

#include "common/text/compare.h"

namespace specific::oracle::homes_rules {

namespace {

constexpr char16_t kHomeKeyPrefix[] = u"KEY_";
constexpr char16_t kDatabaseServicePrefix[] = u"ORACLESERVICE";
constexpr char16_t kAsmServicePrefix[] = u"ORACLEASMSERVICE";
constexpr char16_t kServerBelowHome[] = u"BIN\\ORACLE.EXE";

}  // namespace

std::u16string upper_case(const std::u16string& text) {
  std::u16string result = text;
  for (auto& c : result) c = util::fold_case(c);
  return result;
}

bool is_home_key_name(const std::u16string& name) {
  return util::equals_nocase_prefix(name, kHomeKeyPrefix);
}

EOracleServiceKind service_key_kind(const std::u16string& name) {
  // Neither prefix begins the other ("ORACLEA..." against "ORACLES..."), so at most one holds.
  if (util::equals_nocase_prefix(name, kAsmServicePrefix)) return EOracleServiceKind::asm_instance;
  if (util::equals_nocase_prefix(name, kDatabaseServicePrefix)) return EOracleServiceKind::database;
  return EOracleServiceKind::none;
}

std::optional<SOracleServiceRegInfo> service_from_image_path(const std::u16string& imagePath,
                                                             bool isAsm) {
  const size_t blank = imagePath.find(u' ');
  if (blank == 0) return std::nullopt;
  SOracleServiceRegInfo service;
  service.isAsm = isAsm;
  if (blank == std::u16string::npos) {
    // No blank: the whole line is both. Such a record finds a home only when the line alone
    // is that home's server path, and then the SID is that path.
    service.exePath = imagePath;
    service.sid = imagePath;
  } else {
    service.exePath = imagePath.substr(0, blank);
    service.sid = imagePath.substr(blank + 1);
  }
  return service;
}

std::u16string expected_server_path(const std::u16string& home) {
  return upper_case(home + u'\\' + kServerBelowHome);
}

bool runs_from(const SOracleServiceRegInfo& service, const std::u16string& expectedServerPath) {
  return util::equals_nocase(service.exePath, expectedServerPath);
}

}  // namespace specific::oracle::homes_rules
