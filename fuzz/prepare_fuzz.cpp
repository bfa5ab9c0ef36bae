// Fuzz target of the preparation's inputs from outside: the preparation document that the
// finish and the restore read, the meta file's text, and the writer configuration (configXml).
// The first byte picks the reader; the rest is its text. The library's own failures are
// expected and caught; anything else (a crash, a leak, an uncaught exception) is a finding.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "common/text/convert.h"
#include "oracle/backup/backup_prepare.h"
#include "oracle/backup/dbs_backup_xml.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  using specific::oracle::CDbsBackupPrepare;
  using specific::oracle::CDbsBackupXml;
  try {
    switch (data[0] % 3) {
      case 0: {
        const auto infos = CDbsBackupXml::read_document(util::to_unicode(text));
        // What was read must print again.
        CDbsBackupXml::write_document(infos);
        break;
      }
      case 1: {
        std::u16string document;
        std::u16string osUser;
        std::u16string osPassword;
        specific::oracle::conn_t conn;
        CDbsBackupXml::read_meta_text(text, document, conn, osUser, osPassword);
        if (!conn.first.empty() || !conn.second.empty() || !osUser.empty() || !osPassword.empty()) {
          // The blocks never carry credentials: a non-empty value is a defect.
          __builtin_trap();
        }
        break;
      }
      default:
        CDbsBackupPrepare::parse_writer_sids(util::to_unicode(text));
        break;
    }
  } catch (const std::exception&) {
  }
  return 0;
}
