#include "config/oracle_config.h"

#include <memory>

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"
#include "common/product.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "common/win/reg_key.h"

namespace specific::oracle {

namespace {

std::unique_ptr<COracleConfig>& record() {
  static std::unique_ptr<COracleConfig> config;
  return config;
}

// A read never fails: a missing value, one of another type or any other error gives the
// present value.
template <typename Name, typename T>
T read_or_keep(const win::win_reg_key_t& key, const Name& name, T present) {
  try {
    return key.value_or(name, present);
  } catch (const std::exception&) {
    return present;
  }
}

}  // namespace

const COracleConfig& COracleConfig::get() {
  auto& config = record();
  if (!config) {
    // Built into a local first, so that a failure leaves the record unbuilt and the next
    // reader tries again.
    auto fresh = std::make_unique<COracleConfig>();
    fresh->load_defaults();
    fresh->load_registry();
    config = std::move(fresh);
  }
  return *config;
}

void COracleConfig::replace_for_tests(const COracleConfig& config) {
  record() = std::make_unique<COracleConfig>(config);
}

void COracleConfig::load_defaults() {
  *this = COracleConfig();
  try {
    std::u16string folder;
    const int32_t hr = win::common_appdata_folder(folder);
    if (hr != 0) {
      throw exc::com_exc_t(static_cast<uint32_t>(hr),
                           "Cannot get the path to the system directory containing application "
                           "data for all users");
    }
    std::u16string path = win::join_path_windows(folder, product::kDataFolder);
    path = win::join_path_windows(path, u"OracleLogBackup");
    if (!path.empty() && path.back() != u'\\' && path.back() != u'/') path += u'\\';
    tempLogPath = path;
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to init base config", e);
    tempLogPath.clear();
  }
}

void COracleConfig::load_registry() {
  try {
    const auto key = win::open_subkey(/*parent=*/0, product::kSettingsKey, win::kKeyRead);
    if (!key) return;  // no key: the defaults stand, and nothing is said
    connectionTimeoutSec = read_or_keep(*key, "OracleConnectionTimeout", connectionTimeoutSec);
    restoreWaitInSec = read_or_keep(*key, "OracleRestoreWaitInSec", restoreWaitInSec);
    agentTtlSec = read_or_keep(*key, "OracleAgentTtlSec", agentTtlSec);
    waitDbStartedAttemptCount =
        read_or_keep(*key, "OracleWaitDbStartedAttemptCount", waitDbStartedAttemptCount);
    // Taken as it stands: no separator is added and the folder need not exist.
    tempLogPath = read_or_keep(*key, std::u16string(u"OracleTempLogPath"), tempLogPath);
    checkAsmLogFileExistence =
        read_or_keep(*key, "CheckAsmLogFileExistence", checkAsmLogFileExistence);
    supportOracle10 = read_or_keep(*key, "SupportOracle10", supportOracle10);
    stageLogsBeforeBackup = read_or_keep(*key, "OracleStageLogsBeforeBackup", stageLogsBeforeBackup);
    disableOracleProcessing =
        read_or_keep(*key, "DisableOracleProcessing", disableOracleProcessing);
    skipNoArchiveLogDb = read_or_keep(*key, "OracleSkipNoArchiveLogDB", skipNoArchiveLogDb);
  } catch (const std::exception& e) {
    // Only opening the key gets here, before any value was read: the defaults stand.
    exc::log_warn(logging::oralib(), "Failed to init oracle config", e);
  }
}

void COracleConfig::dump() const {
  const auto& log = logging::oralib();
  log.info("Oracle agent config:");
  log.info("ConnectionTimeoutSec: %1", util::to_str(connectionTimeoutSec));
  log.info("OracleRestoreWaitInSec: %1", util::to_str(restoreWaitInSec));
  log.info("OracleAgentTtlSec: %1", util::to_str(agentTtlSec));
  log.info("WaitDbStartedAttemptCount: %1", util::to_str(waitDbStartedAttemptCount));
  log.info("CheckAsmLogFileExistence: %1", util::to_str(checkAsmLogFileExistence));
  log.info("SupportOracle10: %1", util::to_str(supportOracle10));
  log.info("OracleStageLogsBeforeBackup: %1", util::to_str(stageLogsBeforeBackup));
  log.info("DisableOracleProcessing: %1", util::to_str(disableOracleProcessing));
  log.info("OracleSkipNoArchiveLogDB: %1", util::to_str(skipNoArchiveLogDb));
  log.info("OracleTempLogPath: %1", util::to_utf8(tempLogPath));
  log.info("=======================");
}

}  // namespace specific::oracle
