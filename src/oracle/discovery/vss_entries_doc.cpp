#include "oracle/discovery/vss_entries_doc.h"

#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"

namespace specific::oracle {

std::u16string render_vss_entries(const vss_info_list_t& list) {
  const xml::xml_doc_ptr_t doc = xml::new_doc();
  const xml::xml_node_ref_t root = xml::add_element(xml::root_ref(doc), "OracleEntries");
  for (const SVssInfoEntry& entry : list) {
    const xml::xml_node_ref_t element = xml::add_element(root, "OracleEntry");
    xml::set_attr(element, "sid", util::to_multibyte(entry.sid));
    if (!entry.valid) {
      xml::set_attr(element, "error", util::to_multibyte(entry.error));
      continue;
    }
    xml::set_attr(element, "db_name", util::to_multibyte(entry.dbName));
    xml::set_attr(element, "instance_open", entry.instanceOpen);
    xml::set_attr(element, "db_open_readonly", entry.dbOpenReadonly);
    xml::set_attr(element, "db_archive_logs_on", entry.dbArchiveLogsOn);
    xml::set_attr(element, "db_active", entry.dbActive);
  }
  return util::to_unicode(xml::print(doc));
}

}  // namespace specific::oracle
