// Building and walking documents through xml_node_ref_t (xml_doc.h), so that no caller holds
// a bare TinyXML pointer. Names compare case-sensitively; the child list is searched in
// document order and the first match wins. A null reference is accepted everywhere: walking
// from it gives a null reference, and the failing forms fail with their usual text.
// Belongs to the thread that holds the document.
#pragma once
#include <string>

#include "common/xml/xml_doc.h"

namespace xml {

// Appends a new element `name` at the end of the parent's children and answers a reference to
// it. A null parent: runtime_exc_t "Failed to create XML element [%1]. Parent node is not
// specified."
xml_node_ref_t add_element(const xml_node_ref_t& parent, const std::string& name);

// The first child element called `name`; runtime_exc_t "There is no node with the specified
// name: [%1]." when there is none.
xml_node_ref_t child(const xml_node_ref_t& ref, const std::string& name);

// The first child element called `name`, or a null reference.
xml_node_ref_t find_child(const xml_node_ref_t& ref, const std::string& name);

// The first child that is an element (comments and text are passed over), or a null reference.
xml_node_ref_t first_child(const xml_node_ref_t& ref);

// The next node at the same level, of any kind (a comment counts), or a null reference.
xml_node_ref_t next_sibling(const xml_node_ref_t& ref);

}  // namespace xml
