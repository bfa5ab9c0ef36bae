// The explore input: the text an agent hands OracleExploreInstances, parsed into the records
// of the SIDs. The bytes are taken as UTF-8 (as the console host reads its files) and widened;
// the parser's own failures are expected, anything else (a crash, a sanitizer report, a
// foreign exception) is a finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "oracle/client/sql_text.h"
#include "oracle/discovery/explore_db_config.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  try {
    const auto config =
        specific::oracle::CExploreDbConfig::parse(util::from_utf8(bytes));
    for (const auto& [sid, record] : config.records) {
      // What is kept is later filled into SQL: it must be a number, never empty.
      if (!record || record->recId.empty() || record->stamp.empty() ||
          !specific::oracle::sql::is_decimal_number(record->recId) ||
          !specific::oracle::sql::is_decimal_number(record->stamp) || config.find(sid) != record) {
        __builtin_trap();
      }
    }
  } catch (const exc::exc_base_t&) {
    // A refused input: the parser's own failure.
  }
  return 0;
}
