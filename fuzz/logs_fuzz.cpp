// libFuzzer target for the `logsXml` list that the agent hands to OracleRemoveLogsInTemp: the
// bytes are the list text, parsed and walked by the removal. The walk only deletes files named
// in the list; the fuzzer runs with DBSHADOWLINK_ROOT pointing at an empty scratch folder (the
// host build maps every Windows path below it), so nothing of the machine can be touched, and
// the paths it invents name nothing that exists.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "oracle/logs/log_descriptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool scratch = [] {
    // An empty machine below /tmp unless the caller chose one.
    if (!std::getenv("DBSHADOWLINK_ROOT")) setenv("DBSHADOWLINK_ROOT", "/tmp/dsl-logs-fuzz-root", 1);
    return true;
  }();
  (void)scratch;
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    specific::oracle::logs::remove_described_logs(util::from_utf8(text), u"C:\\Logs");
  } catch (const exc::exc_base_t&) {
  } catch (const std::exception&) {
  }
  return 0;
}
