// CDbsBackupXml: the reader and writer of the preparation document, the one XML text that ties
// prepare, finish and restore together, and of the backup meta file OracleMeta.xml that carries
// the same document into the snapshot. No state of its own; any thread, one call at a time.
//
// Document: <databases><database sid home timeUtc scn errMsg action BackupWithBackupState>
// <pdbs><database name mode/>...</pdbs></database>...</databases>, printed on one line.
// `errMsg` is written and never read back; `BackupWithBackupState` says only that the
// preparation did not fail and is meant for the caller.
//
// Meta file: <restore dbPrepareXml="base64 of the document" [conn="block"] [os_conn="block"]/>.
// The credential blocks are the fixed empty blocks of crypto::serialize_protected: no user name
// and no password ever reach the file, so the restore always connects with an empty login.
//
// Both texts are UTF-8 inside, as the explored document and the log descriptions are: a SID,
// home or plugged database outside the system code page must come back to finish and restore
// exactly as it was prepared, or the database prepared would not be found again.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oracle/backup/prepare_action.h"
#include "oracle/client/conn.h"

namespace specific::oracle {

// One plugged database and the open mode it had when prepared ("READ ONLY", "READ WRITE" or
// "MIGRATE").
struct SPdbInfo {
  std::u16string name;
  std::u16string mode;
};

class CDbsBackupXml {
 public:
  struct SDbPrepareInfo {
    std::u16string sid;
    std::u16string home;
    uint32_t action = kActionFailure;
    std::vector<SPdbInfo> pdbs;
    std::u16string timeUtc;
    std::u16string scn;
    std::u16string errMsg;
  };
  using info_ptr_t = std::shared_ptr<SDbPrepareInfo>;
  using info_list_t = std::vector<info_ptr_t>;

  // The document as one line of XML, widened.
  static std::u16string write_document(const info_list_t& infos);
  // Parses, logs the whole text as "XML: %1", and reads every child element of `databases`
  // in order, whatever its name. Fails on text that is no XML; "There is no node with the
  // specified name: [%1]." without `databases` or a record without `pdbs`; "Attribute value is
  // not specified. Attribute: [%1]." for a missing attribute; for `action` the two texts are
  // swapped (see xml::action_attr). `errMsg` is not read back.
  static info_list_t read_document(const std::u16string& text);

  // The current UTC time as "%4d-%02d-%02dT%02d:%02d:%02d".
  static std::u16string current_time_utc();
  // The same for a given count of seconds since 1970 (UTC); for tests.
  static std::u16string time_utc_text(int64_t secondsSince1970);

  // OracleTempLogPath joined with "OracleMeta.xml"; creates the folder when it is missing.
  static std::u16string meta_path();

  // Writes the meta file (nothing at all for an empty document). Never throws: a failure is
  // the warning "Failed to save oracle backup meta" and the step ends " Failed.". An older file
  // of that path is removed first.
  static void save_meta(const std::u16string& path, const std::u16string& document,
                        const conn_t& conn, const std::u16string& osUser,
                        const std::u16string& osPassword);
  // Reads the meta file. A missing or empty file leaves the outputs untouched; any failure is
  // the warning "Failed to get restore meta content: %1" with the path, and the outputs stay
  // as far as they came. Never throws.
  static void load_meta(const std::u16string& path, std::u16string& document, conn_t& conn,
                        std::u16string& osUser, std::u16string& osPassword);
  // The content of a meta file: the document and the credential blocks, which load as empty
  // strings. Throws on text that is no XML or has no `restore` with `dbPrepareXml`; the outputs
  // are filled as far as reading came.
  static void read_meta_text(const std::string& text, std::u16string& document, conn_t& conn,
                             std::u16string& osUser, std::u16string& osPassword);
  // Deletes the meta file when it exists; a failure is the warning
  // "Failed to remove restore meta file: %1". Never throws.
  static void remove_meta(const std::u16string& path);
};

using SDbPrepareInfo = CDbsBackupXml::SDbPrepareInfo;

// The file name of the meta file inside OracleTempLogPath.
extern const char16_t kMetaFileName[];

}  // namespace specific::oracle
