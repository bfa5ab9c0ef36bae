#include "oracle/backup/dbs_backup_xml.h"

#include <tinyxml.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "common/exc/exc_log.h"
#include "common/logging/log_step.h"
#include "common/security/credential_block.h"
#include "common/text/base64.h"
#include "common/text/convert.h"
#include "common/win/file.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "config/oracle_config.h"

namespace specific::oracle {

const char16_t kMetaFileName[] = u"OracleMeta.xml";

namespace {

// The next sibling that is an element: comments and text between records are passed over.
xml::xml_node_ref_t next_element(const xml::xml_node_ref_t& ref) {
  xml::xml_node_ref_t at = xml::next_sibling(ref);
  while (at && at.node->ToElement() == nullptr) at = xml::next_sibling(at);
  return at;
}

std::u16string wide_attr(const xml::xml_node_ref_t& element, const char* name) {
  return util::from_utf8(xml::attr(element, name));
}

// Days since 1970-01-01 to a civil date (proleptic Gregorian), so that the stamp needs no
// platform time call.
void civil_from_days(int64_t days, int& year, unsigned& month, unsigned& day) {
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(days - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t y = static_cast<int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = doy - (153 * mp + 2) / 5 + 1;
  month = mp < 10 ? mp + 3 : mp - 9;
  year = static_cast<int>(y + (month <= 2 ? 1 : 0));
}

}  // namespace

std::u16string CDbsBackupXml::write_document(const info_list_t& infos) {
  const xml::xml_doc_ptr_t doc = xml::new_doc();
  const xml::xml_node_ref_t root = xml::add_element(xml::root_ref(doc), "databases");
  for (const info_ptr_t& info : infos) {
    const xml::xml_node_ref_t db = xml::add_element(root, "database");
    xml::set_attr(db, "sid", util::to_utf8(info->sid));
    xml::set_attr(db, "home", util::to_utf8(info->home));
    xml::set_attr(db, "timeUtc", util::to_utf8(info->timeUtc));
    xml::set_attr(db, "scn", util::to_utf8(info->scn));
    xml::set_attr(db, "errMsg", util::to_utf8(info->errMsg));
    xml::set_action_attr(db, static_cast<int32_t>(info->action));
    // Says only that the preparation did not fail, for "vss" as for "backup".
    xml::set_attr(db, "BackupWithBackupState", info->action != kActionFailure);
    const xml::xml_node_ref_t pdbs = xml::add_element(db, "pdbs");
    for (const SPdbInfo& pdb : info->pdbs) {
      const xml::xml_node_ref_t p = xml::add_element(pdbs, "database");
      xml::set_attr(p, "name", util::to_utf8(pdb.name));
      xml::set_attr(p, "mode", util::to_utf8(pdb.mode));
    }
  }
  return util::from_utf8(xml::print(doc));
}

CDbsBackupXml::info_list_t CDbsBackupXml::read_document(const std::u16string& text) {
  const std::string narrow = util::to_utf8(text);
  const xml::xml_doc_ptr_t doc = xml::parse(narrow);
  logging::oralib().info("XML: %1", narrow);
  const xml::xml_node_ref_t root = xml::child(xml::root_ref(doc), "databases");
  info_list_t infos;
  for (xml::xml_node_ref_t db = xml::first_child(root); db; db = next_element(db)) {
    auto info = std::make_shared<SDbPrepareInfo>();
    info->sid = wide_attr(db, "sid");
    info->home = wide_attr(db, "home");
    info->timeUtc = wide_attr(db, "timeUtc");
    info->scn = wide_attr(db, "scn");
    info->action = static_cast<uint32_t>(xml::action_attr(db));
    const xml::xml_node_ref_t pdbs = xml::child(db, "pdbs");
    for (xml::xml_node_ref_t p = xml::first_child(pdbs); p; p = next_element(p)) {
      SPdbInfo pdb;
      pdb.name = wide_attr(p, "name");
      pdb.mode = wide_attr(p, "mode");
      info->pdbs.push_back(pdb);
    }
    infos.push_back(info);
  }
  return infos;
}

std::u16string CDbsBackupXml::time_utc_text(int64_t secondsSince1970) {
  int64_t days = secondsSince1970 / 86400;
  int64_t rest = secondsSince1970 % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  civil_from_days(days, year, month, day);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%4d-%02u-%02uT%02d:%02d:%02d", year, month, day,
                static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60),
                static_cast<int>(rest % 60));
  return util::to_unicode(buffer);
}

std::u16string CDbsBackupXml::current_time_utc() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return time_utc_text(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

std::u16string CDbsBackupXml::meta_path() {
  const std::u16string path =
      win::join_path_windows(COracleConfig::get().tempLogPath, std::u16string(kMetaFileName));
  win::create_directories(path);
  return path;
}

void CDbsBackupXml::save_meta(const std::u16string& path, const std::u16string& document,
                              const conn_t& conn, const std::u16string& osUser,
                              const std::u16string& osPassword) {
  if (document.empty()) return;
  logging::log_step_t step(logging::oralib(), "Saving oracle backup meta to: %1",
                           util::to_utf8(path));
  try {
    const xml::xml_doc_ptr_t doc = xml::new_doc();
    const xml::xml_node_ref_t root = xml::add_element(xml::root_ref(doc), "restore");
    xml::set_attr(root, "dbPrepareXml", util::base64_encode(util::to_utf8(document)));
    // The blocks hold nothing of the credentials: only that some were given.
    std::string block;
    if (!conn.first.empty() && crypto::serialize_protected(conn.first, conn.second, block)) {
      xml::set_attr(root, "conn", block);
    }
    if (!osUser.empty() && crypto::serialize_protected(util::to_multibyte(osUser),
                                                       util::to_multibyte(osPassword), block)) {
      xml::set_attr(root, "os_conn", block);
    }
    if (win::file_exists(path)) win::remove_file(path);
    const std::string text = xml::print(doc);
    const win::win_file_ptr_t file = win::win_file_t::create(path);
    file->write(static_cast<uint32_t>(text.size()), text.data());
    file->flush();
    step.ok();
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to save oracle backup meta", e);
  }
}

void CDbsBackupXml::load_meta(const std::u16string& path, std::u16string& document, conn_t& conn,
                              std::u16string& osUser, std::u16string& osPassword) {
  try {
    if (!win::file_exists(path)) return;
    const win::win_file_ptr_t file = win::win_file_t::open_read(path);
    const uint64_t size = file->size();
    if (size == 0) return;
    std::string text(static_cast<size_t>(size), '\0');
    size_t got = 0;
    while (got < text.size()) {
      const uint32_t chunk = static_cast<uint32_t>(std::min<size_t>(text.size() - got, 1u << 20));
      const uint32_t n = file->read(&text[got], chunk);
      if (n == 0) break;
      got += n;
    }
    text.resize(got);
    read_meta_text(text, document, conn, osUser, osPassword);
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to get restore meta content: %1",
                  util::to_utf8(path), e);
  }
}

void CDbsBackupXml::read_meta_text(const std::string& text, std::u16string& document,
                                   conn_t& conn, std::u16string& osUser,
                                   std::u16string& osPassword) {
  const xml::xml_doc_ptr_t doc = xml::parse(text);
  const xml::xml_node_ref_t root = xml::child(xml::root_ref(doc), "restore");
  document = util::from_utf8(util::base64_decode(xml::attr(root, "dbPrepareXml")));
  std::string block;
  if (xml::query_attr(root, "conn", block)) {
    crypto::deserialize_protected(block, conn.first, conn.second);
  }
  if (xml::query_attr(root, "os_conn", block)) {
    std::string user;
    std::string password;
    if (crypto::deserialize_protected(block, user, password)) {
      osUser = util::to_unicode(user);
      osPassword = util::to_unicode(password);
    }
  }
}

void CDbsBackupXml::remove_meta(const std::u16string& path) {
  try {
    if (win::file_exists(path)) win::remove_file(path);
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to remove restore meta file: %1",
                  util::to_utf8(path), e);
  }
}

}  // namespace specific::oracle
