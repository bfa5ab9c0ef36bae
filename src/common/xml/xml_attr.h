// Attributes of an element reached through an xml_node_ref_t (xml_doc.h). Reading forms treat
// a null reference, or one on a node that is no element, as an element without attributes;
// writing forms fail on it. Names compare case-sensitively. Values are UTF-8; escaping on
// print and unescaping on parse are TinyXML's. Belongs to the thread that holds the document.
#pragma once
#include <cstdint>
#include <string>

#include "common/xml/xml_doc.h"

namespace xml {

// The value; runtime_exc_t "Attribute value is not specified. Attribute: [%1]." when missing.
std::string attr(const xml_node_ref_t& element, const std::string& name);

// True and the value, or false with `value` untouched.
bool query_attr(const xml_node_ref_t& element, const std::string& name, std::string& value);

// Sets or replaces an attribute. A failure gets the context line "Failed to set attribute
// value. Attribute: [%1]. Value: [%2]."; a null or non-element reference fails so, with
// "XML element is not specified." as its cause.
void set_attr(const xml_node_ref_t& element, const std::string& name, const std::string& value);
// A literal is text, not a boolean.
void set_attr(const xml_node_ref_t& element, const std::string& name, const char* value);
// "true" or "false".
void set_attr(const xml_node_ref_t& element, const std::string& name, bool value);

// False, with `value` untouched, when the attribute is missing. Otherwise "true" and "false"
// in any case and "0" read as their values, and every other text, the empty one included,
// reads as true.
bool query_bool(const xml_node_ref_t& element, const std::string& name, bool& value);

// The integer attribute "action", read as scanf's "%d" reads it: leading blanks, a sign,
// digits, anything after them ignored; beyond 32 bits it saturates, as strtol does where long
// has 32 bits, so that both builds agree. The two failure texts are paired with their cases
// on purpose, and callers' logs depend on it:
//   missing:                runtime_exc_t "Unexpected type of the attribute. Attribute: [%1]."
//   not starting a number:  runtime_exc_t "Attribute value is not specified. Attribute: [%1]."
int32_t action_attr(const xml_node_ref_t& element);

// Writes "action" in decimal, as "%d" prints it.
void set_action_attr(const xml_node_ref_t& element, int32_t number);

}  // namespace xml
