#include "oracle/discovery/explore_db_config.h"

#include <tinyxml.h>

#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "oracle/client/sql_text.h"

namespace specific::oracle {

namespace {

// The next sibling that is an element; comments and text between entries are passed over.
xml::xml_node_ref_t next_element(xml::xml_node_ref_t ref) {
  do {
    ref = xml::next_sibling(ref);
  } while (ref.node != nullptr && ref.node->ToElement() == nullptr);
  return ref;
}

// A record id and a stamp are later filled into a SQL condition as numbers: anything but
// decimal digits is logged and read as empty, so that the SID is served as if the agent had
// remembered nothing for it.
std::u16string decimal_or_empty(const std::u16string& value, const char* name,
                                const std::string& sid) {
  if (value.empty() || sql::is_decimal_number(value)) return value;
  logging::oralib().warn("Explore db config sid %1: " + std::string(name) +
                             " is not a decimal number and is ignored: %2",
                         sid, util::to_utf8(value));
  return std::u16string();
}

}  // namespace

CExploreDbConfig CExploreDbConfig::parse(const std::u16string& text) {
  CExploreDbConfig config;
  if (text.empty()) {
    logging::oralib().info("Explore db config is empty");
    return config;
  }
  try {
    // Read as UTF-8, like the explored document: the code page would turn a SID with letters
    // outside it into question marks, and the SID would then match nothing.
    const xml::xml_doc_ptr_t doc = xml::parse(util::to_utf8(text));
    // Element names are not looked at: the first element is the root, its child elements are
    // the SIDs.
    const xml::xml_node_ref_t root = xml::first_child(xml::root_ref(doc));
    for (xml::xml_node_ref_t entry = xml::first_child(root); entry; entry = next_element(entry)) {
      const std::string sid = xml::attr(entry, "sid");
      const std::string recId = xml::attr(entry, "recId");
      const std::string stamp = xml::attr(entry, "stamp");
      logging::oralib().info("Explore db config sid found: %1, recId: %2, stamp: %3", sid, recId,
                             stamp);
      auto record = std::make_shared<SDbLogRecInfo>();
      record->recId = decimal_or_empty(util::from_utf8(recId), "recId", sid);
      record->stamp = decimal_or_empty(util::from_utf8(stamp), "stamp", sid);
      if (record->recId.empty() || record->stamp.empty()) continue;
      // With a duplicate SID the first record stays.
      config.records.emplace(util::from_utf8(sid), std::move(record));
    }
  } catch (const std::exception& e) {
    exc::rethrow_with_context("Failed to parse explore db config", e);
  }
  return config;
}

std::shared_ptr<SDbLogRecInfo> CExploreDbConfig::find(const std::u16string& sid) const {
  const auto it = records.find(sid);
  return it == records.end() ? nullptr : it->second;
}

}  // namespace specific::oracle
