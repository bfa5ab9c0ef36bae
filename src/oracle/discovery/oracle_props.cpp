#include "oracle/discovery/oracle_props.h"

#include <tinyxml.h>

#include <cstdio>
#include <ctime>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_node.h"

namespace specific::oracle {

namespace {

using xml::xml_doc_ptr_t;
using xml::xml_node_ref_t;

// The documents are UTF-8 inside, on both builds, and widened from UTF-8 when they are handed
// out: a value in the system code page would lose every character outside it (a SID, a path
// or a home name with letters of another script) on the way to the agent, who gets UTF-16.
void set_text(const xml_node_ref_t& element, const char* name, const std::u16string& value) {
  xml::set_attr(element, name, util::to_utf8(value));
}

// A fresh document holding one element called `name`; the element is returned.
xml_node_ref_t new_element(const char* name, xml_doc_ptr_t& doc) {
  doc = xml::new_doc();
  return xml::add_element(xml::root_ref(doc), name);
}

// The parent takes a child record in by inserting a deep copy of the first element of the
// child's own document at the end of its children.
void merge_child(const xml_node_ref_t& parent, const COracleProps& child) {
  const xml_doc_ptr_t childDoc = child.ToXml();
  const TiXmlNode* node = childDoc ? childDoc->FirstChild() : nullptr;
  while (node != nullptr && node->ToElement() == nullptr) node = node->NextSibling();
  if (node == nullptr) return;
  if (parent.node == nullptr || parent.node->InsertEndChild(*node) == nullptr) {
    throw exc::runtime_exc_t("Failed to create XML element [%1].", node->ValueStr());
  }
}

void add_file_list(const xml_node_ref_t& database, const char* name, const db_file_list_t& files) {
  const xml_node_ref_t list = xml::add_element(database, name);
  for (const auto& file : files) {
    if (file) merge_child(list, *file);
  }
}

// Each member of the online redo log gets the number of its group, when the group map knows
// the member's path. Runs on the tree already built, so the number stands last on its element.
void add_group_numbers(const xml_node_ref_t& database,
                       const std::map<std::u16string, std::string>& logGroups) {
  const xml_node_ref_t logFiles = xml::find_child(database, "log_files");
  for (xml_node_ref_t file = xml::first_child(logFiles); file; file = xml::next_sibling(file)) {
    if (file.node->ToElement() == nullptr) continue;
    std::string path;
    if (!xml::query_attr(file, "path", path)) continue;
    const auto found = logGroups.find(util::from_utf8(path));
    if (found != logGroups.end()) xml::set_attr(file, "groupNumber", found->second);
  }
}

std::u16string current_utc_stamp() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  if (const std::tm* broken = std::gmtime(&now)) utc = *broken;
  char text[64];
  std::snprintf(text, sizeof text, "%4d-%02d-%02dT%02d:%02d:%02d", utc.tm_year + 1900,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  return util::from_utf8(text);
}

}  // namespace

xml_doc_ptr_t CDbFileProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t file = new_element("dbfile", doc);
  set_text(file, "path", path);
  set_text(file, "size", size);
  return doc;
}

CDatabaseProps::CDatabaseProps() : timeUtc(current_utc_stamp()) {}

xml_doc_ptr_t CDatabaseProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t database = new_element("database", doc);
  if (isError) {
    // The error form: what the agent needs to show the failure, and nothing else.
    xml::set_attr(database, "isError", true);
    set_text(database, "sid", sid);
    set_text(database, "config", config);
    set_text(database, "errorDescription", errorDescription);
    return doc;
  }
  xml::set_attr(database, "isError", false);
  set_text(database, "name", name);
  set_text(database, "id", id);
  set_text(database, "sid", sid);
  set_text(database, "config", config);
  set_text(database, "lastScn", lastScn);
  xml::set_attr(database, "archiveLogsOn", archiveLogsOn);
  xml::set_attr(database, "isReadonly", isReadonly);
  xml::set_attr(database, "reverted", reverted);
  set_text(database, "timeUtc", timeUtc);
  set_text(database, "lastLogNum", lastLogNum);
  set_text(database, "maxLogRecId", maxLogRecId);
  set_text(database, "maxLogStamp", maxLogStamp);
  xml::set_attr(database, "pfile", pfile);  // base64, already narrow
  set_text(database, "pwdFilePath", pwdFilePath);
  set_text(database, "globalName", globalName);
  set_text(database, "recoveryFileDest", recoveryFileDest);
  set_text(database, "localListener", localListener);
  set_text(database, "remoteListener", remoteListener);

  add_file_list(database, "control_files", controlFiles);
  add_file_list(database, "data_files", dataFiles);
  add_file_list(database, "log_files", logFiles);
  add_file_list(database, "temp_files", tempFiles);
  add_group_numbers(database, logGroups);

  const xml_node_ref_t pdbList = xml::add_element(database, "pdbs");
  for (const SPdbProps& pdb : pdbs) {
    const xml_node_ref_t db = xml::add_element(pdbList, "db");
    set_text(db, "name", pdb.name);
    set_text(db, "guid", pdb.guid);
  }

  const xml_node_ref_t logList = xml::add_element(database, "archived_logs");
  for (const arch_log_ptr_t& log : archivedLogs) {
    if (!log) continue;
    const xml_node_ref_t entry = xml::add_element(logList, "archived_log");
    set_text(entry, "path", log->logPath);
    set_text(entry, "size", log->size);
    set_text(entry, "scnFrom", log->firstChange);
    set_text(entry, "scnTo", log->nextChange);
    set_text(entry, "utcTimeFrom", log->firstTimeUtc);
    set_text(entry, "utcTimeTo", log->nextTimeUtc);
    set_text(entry, "seqNum", log->seqNum);
  }
  return doc;
}

xml_doc_ptr_t CAsmDiskProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t disk = new_element("disk", doc);
  set_text(disk, "name", name);
  set_text(disk, "path", path);
  set_text(disk, "state", state);
  return doc;
}

xml_doc_ptr_t CAsmInstanceProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t asmElement = new_element("asm", doc);
  set_text(asmElement, "sid", sid);
  for (const auto& disk : disks) {
    if (disk) merge_child(asmElement, *disk);
  }
  return doc;
}

xml_doc_ptr_t CHomeProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t home = new_element("home", doc);
  set_text(home, "name", name);
  set_text(home, "version", version);
  set_text(home, "path", path);
  set_text(home, "desc", desc);
  for (const auto& instance : instances) {
    if (instance) merge_child(home, *instance);
  }
  return doc;
}

xml_doc_ptr_t COverallProps::ToXml() const {
  xml_doc_ptr_t doc;
  const xml_node_ref_t overall = new_element("OracleOverall", doc);
  if (env) {
    set_text(overall, "serverName", env->serverName);
    set_text(overall, "osName", env->osName);
    xml::set_attr(overall, "timeZone", std::to_string(env->timeZone));
  }
  for (const auto& home : homes) {
    if (home) merge_child(overall, *home);
  }
  return doc;
}

}  // namespace specific::oracle
