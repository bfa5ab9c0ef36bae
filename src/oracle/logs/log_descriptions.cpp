#include "oracle/logs/log_descriptions.h"

#include <tinyxml.h>

#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/win/file.h"
#include "common/win/file_sys.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"

namespace specific::oracle::logs {

const char* const kDescriptionAttributes[16] = {
    "logPath", "size",  "firstChange", "firstTimeUtc", "nextChange", "nextTimeUtc",
    "sid",     "homePath", "seqNum",   "dbId",         "recId",      "stamp",
    "xmlLogPath", "isLogCopied", "creationUsn", "creationTimeUtc"};

namespace {

const char* const kListElement = "archived_logs";
const char* const kLogElement = "archived_log";

xml::xml_node_ref_t add_description(const xml::xml_node_ref_t& parent, const SArchLogInfo& log,
                                    const std::string& creationTimeUtc) {
  const auto element = xml::add_element(parent, kLogElement);
  const auto text = [](const std::u16string& value) { return util::to_utf8(value); };
  xml::set_attr(element, "logPath", text(log.backupPath));
  xml::set_attr(element, "size", text(log.size));
  xml::set_attr(element, "firstChange", text(log.firstChange));
  xml::set_attr(element, "firstTimeUtc", text(log.firstTimeUtc));
  xml::set_attr(element, "nextChange", text(log.nextChange));
  xml::set_attr(element, "nextTimeUtc", text(log.nextTimeUtc));
  xml::set_attr(element, "sid", text(log.sid));
  xml::set_attr(element, "homePath", text(log.homePath));
  xml::set_attr(element, "seqNum", text(log.seqNum));
  xml::set_attr(element, "dbId", text(log.dbId));
  xml::set_attr(element, "recId", text(log.recId));
  xml::set_attr(element, "stamp", text(log.stamp));
  xml::set_attr(element, "xmlLogPath", text(log.xmlLogPath));
  xml::set_attr(element, "isLogCopied", log.isLogCopied);
  xml::set_attr(element, "creationUsn", text(log.creationUsn));
  xml::set_attr(element, "creationTimeUtc", creationTimeUtc);
  return element;
}

// Appends a deep copy of `element` (of another document) to `parent`.
void append_copy(const xml::xml_node_ref_t& parent, const xml::xml_node_ref_t& element) {
  if (!parent.node->InsertEndChild(*element.node)) {
    throw exc::runtime_exc_t("Failed to create XML element [%1]. Parent node is not specified.",
                             element.node->ValueStr());
  }
}

std::string read_whole_file(win::win_file_t& file, uint64_t size) {
  std::string text(static_cast<size_t>(size), '\0');
  size_t done = 0;
  while (done < text.size()) {
    const uint32_t chunk = static_cast<uint32_t>(std::min<size_t>(text.size() - done, 1u << 20));
    const uint32_t got = file.read(&text[done], chunk);
    if (got == 0) break;
    done += got;
  }
  text.resize(done);
  return text;
}

void write_whole_file(const std::string& path, const std::string& text) {
  const auto file = win::win_file_t::create(win::path_holder_t(path));
  if (!text.empty()) file->write(static_cast<uint32_t>(text.size()), text.data());
}

bool ends_with_xml(const std::u16string& name) {
  const std::u16string ext = u".xml";
  // The extension as the directory walk sees it: from the last "." of the name on.
  const size_t dot = name.rfind(u'.');
  return dot != std::u16string::npos && name.compare(dot, std::u16string::npos, ext) == 0;
}

}  // namespace

std::string description_text(const SArchLogInfo& log, const std::string& creationTimeUtc) {
  const auto doc = xml::new_doc();
  add_description(xml::root_ref(doc), log, creationTimeUtc);
  return xml::print(doc);
}

std::u16string write_descriptions(const arch_log_list_t& logs,
                                  const std::string& creationTimeUtc) {
  try {
    const auto list = xml::new_doc();
    const auto root = xml::add_element(xml::root_ref(list), kListElement);
    for (const auto& log : logs) {
      const std::string path = util::to_utf8(log->xmlLogPath);
      logging::log_step_t step(logging::oralib(), "Saving oracle log description to: %1", path);
      const auto doc = xml::new_doc();
      const auto element = add_description(xml::root_ref(doc), *log, creationTimeUtc);
      write_whole_file(path, xml::print(doc));
      append_copy(root, element);
      step.ok();
    }
    const std::string text = xml::print(list);
    logging::oralib().info(text);
    return util::from_utf8(text);
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to save oracle log description", e);
  }
}

std::u16string enumerate_descriptions(const std::u16string& folder) {
  try {
    logging::log_step_t step(logging::oralib(), "Enumerating oracle logs");
    const auto list = xml::new_doc();
    const auto root = xml::add_element(xml::root_ref(list), kListElement);
    const win::path_holder_t folderPath(folder);
    if (win::file_exists(folderPath)) {
      for (const win::dir_entry_t& entry : win::list_directory(folderPath)) {
        if (!entry.is_regular || !ends_with_xml(entry.name)) continue;
        const std::u16string path = win::join_path_windows(folder, entry.name);
        logging::oralib().info("Found xml file: %1", util::to_utf8(path));
        const auto file = win::win_file_t::open_read(win::path_holder_t(path));
        const uint64_t size = file->size();
        if (size == 0) continue;
        const auto doc = xml::parse(read_whole_file(*file, size));
        const auto first = xml::first_child(xml::root_ref(doc));
        if (first) append_copy(root, first);
      }
    }
    const std::string text = xml::print(list);
    logging::oralib().info(text);
    step.ok();
    return util::from_utf8(text);
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to enum oracle logs description", e);
  }
}

bool is_log_copied_value(const std::string* value) {
  if (!value) return true;
  std::string lower;
  for (char c : *value) lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  return !(lower == "false" || lower == "0");
}

std::string derived_description_path(const std::string& logPath) {
  // Only the last part of the path has an extension: a "." in a folder name is no extension,
  // and replacing from it would name another file.
  const size_t separator = win::last_separator(logPath);
  const size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
  const size_t dot = logPath.rfind('.');
  if (dot == std::string::npos || dot < nameStart) return logPath + ".xml";
  return logPath.substr(0, dot) + ".xml";
}

bool lies_in_logs_folder(const std::string& path, const std::u16string& folder) {
  std::u16string dir, name;
  win::split_path(util::from_utf8(path), dir, name);
  // Only a file directly in the folder: "." and ".." name no file, and a folder that merely
  // contains them is not the logs folder part by part. The meta file lies there too, but it
  // is the restore's signal in the snapshot and no log's description: it is never removed here.
  return !name.empty() && name != u"." && name != u".." &&
         !util::equals_nocase(name, u"OracleMeta.xml") &&
         win::path_relation(dir, folder) == win::kPathEqual;
}

namespace {

// A regular file, not a folder: the removal deletes files only.
bool is_regular_file(const std::string& path) {
  return win::sys::status(util::from_utf8(path)) == win::sys::file_kind_t::regular;
}

}  // namespace

void remove_described_logs(const std::u16string& logsXml, const std::u16string& folder) {
  try {
    const std::string text = util::to_utf8(logsXml);
    logging::log_step_t step(logging::oralib(), "Removing oracle logs: %1", text);
    const auto doc = xml::parse(text);
    const auto list = xml::first_child(xml::root_ref(doc));
    if (list) {
      for (auto element = xml::first_child(list); element; element = xml::next_sibling(element)) {
        if (element.node->Type() != TiXmlNode::TINYXML_ELEMENT) continue;
        const std::string logPath = xml::attr(element, "logPath");
        try {
          std::string copied;
          const bool isLogCopied =
              is_log_copied_value(xml::query_attr(element, "isLogCopied", copied) ? &copied
                                                                                  : nullptr);
          const bool logInFolder = lies_in_logs_folder(logPath, folder);
          if (isLogCopied && !logInFolder) {
            logging::oralib().warn(
                "Log [%1] does not lie in the logs folder [%2]; it is not deleted.", logPath,
                util::to_utf8(folder));
          }
          if (isLogCopied && logInFolder && win::file_exists(win::path_holder_t(logPath)) &&
              is_regular_file(logPath)) {
            logging::oralib().info("Found oracle log to delete: %1", logPath);
            win::remove_file(win::path_holder_t(logPath));
          }
          std::string xmlLogPath;
          if (!xml::query_attr(element, "xmlLogPath", xmlLogPath) || xmlLogPath.empty()) {
            xmlLogPath = derived_description_path(logPath);
          }
          if (!lies_in_logs_folder(xmlLogPath, folder)) {
            logging::oralib().warn(
                "Description [%1] does not lie in the logs folder [%2]; it is not deleted.",
                xmlLogPath, util::to_utf8(folder));
          } else if (win::file_exists(win::path_holder_t(xmlLogPath)) &&
                     is_regular_file(xmlLogPath)) {
            win::remove_file(win::path_holder_t(xmlLogPath));
          }
        } catch (const std::exception& e) {
          exc::log_error(logging::oralib(), "Failed to remove log [%1]", logPath, e);
        }
      }
    }
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to save oracle log description", e);
  }
}

}  // namespace specific::oracle::logs
