#include "prepare_support.h"

#include <tinyxml.h>

#include "common/text/convert.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"

namespace backup_test {

prepared_doc_t read_prepared(const std::u16string& document) {
  prepared_doc_t result;
  const auto doc = xml::parse(util::to_multibyte(document));
  const auto root = xml::child(xml::root_ref(doc), "databases");
  for (auto db = xml::first_child(root); db; db = xml::next_sibling(db)) {
    prepared_t record;
    for (const TiXmlAttribute* a = db.node->ToElement()->FirstAttribute(); a; a = a->Next()) {
      record.attributes[a->Name()] = a->Value();
    }
    const auto pdbs = xml::child(db, "pdbs");
    for (auto p = xml::first_child(pdbs); p; p = xml::next_sibling(p)) {
      const TiXmlElement* e = p.node->ToElement();
      record.pdbs.emplace_back(e->Attribute("name") ? e->Attribute("name") : "",
                               e->Attribute("mode") ? e->Attribute("mode") : "");
    }
    result.order.push_back(record["sid"]);
    result.by_sid[record["sid"]] = record;
  }
  return result;
}

}  // namespace backup_test
