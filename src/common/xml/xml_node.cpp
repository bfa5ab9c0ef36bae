#include "common/xml/xml_node.h"

#include <tinyxml.h>

#include "common/exc/exc_base.h"

namespace xml {

xml_node_ref_t add_element(const xml_node_ref_t& parent, const std::string& name) {
  const TiXmlElement element(name);
  if (!parent.node) {
    throw exc::runtime_exc_t("Failed to create XML element [%1]. Parent node is not specified.",
                             name);
  }
  // TinyXML inserts a copy; the element built here goes with the scope.
  TiXmlNode* inserted = parent.node->InsertEndChild(element);
  if (!inserted) throw exc::runtime_exc_t("Failed to create XML element [%1].", name);
  return {parent.doc, inserted};
}

xml_node_ref_t child(const xml_node_ref_t& ref, const std::string& name) {
  xml_node_ref_t found = find_child(ref, name);
  if (!found) throw exc::runtime_exc_t("There is no node with the specified name: [%1].", name);
  return found;
}

xml_node_ref_t find_child(const xml_node_ref_t& ref, const std::string& name) {
  if (!ref.node) return {ref.doc, nullptr};
  return {ref.doc, ref.node->FirstChildElement(name)};
}

xml_node_ref_t first_child(const xml_node_ref_t& ref) {
  if (!ref.node) return {ref.doc, nullptr};
  return {ref.doc, ref.node->FirstChildElement()};
}

xml_node_ref_t next_sibling(const xml_node_ref_t& ref) {
  if (!ref.node) return {ref.doc, nullptr};
  return {ref.doc, ref.node->NextSibling()};
}

}  // namespace xml
