#include "common/xml/xml_attr.h"

#include <tinyxml.h>

#include <cctype>
#include <cstdio>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"

namespace xml {

namespace {

const char kAction[] = "action";

TiXmlElement* element_of(const xml_node_ref_t& ref) {
  return ref.node ? ref.node->ToElement() : nullptr;
}

// The first attribute of that name, by a walk of the element's list.
const char* find_value(const xml_node_ref_t& ref, const std::string& name) {
  const TiXmlElement* element = element_of(ref);
  if (!element) return nullptr;
  for (const TiXmlAttribute* a = element->FirstAttribute(); a; a = a->Next()) {
    if (a->NameTStr() == name) return a->Value();
  }
  return nullptr;
}

bool equals_ascii_nocase(const std::string& text, const char* word) {
  size_t i = 0;
  for (; word[i]; ++i) {
    if (i == text.size()) return false;
    const auto a = static_cast<unsigned char>(text[i]);
    const auto b = static_cast<unsigned char>(word[i]);
    if (a >= 0x80 || std::tolower(a) != std::tolower(b)) return false;
  }
  return i == text.size();
}

}  // namespace

std::string attr(const xml_node_ref_t& element, const std::string& name) {
  const char* value = find_value(element, name);
  if (!value) throw exc::runtime_exc_t("Attribute value is not specified. Attribute: [%1].", name);
  return value;
}

bool query_attr(const xml_node_ref_t& element, const std::string& name, std::string& value) {
  const char* found = find_value(element, name);
  if (!found) return false;
  value = found;
  return true;
}

void set_attr(const xml_node_ref_t& element, const std::string& name, const std::string& value) {
  try {
    TiXmlElement* target = element_of(element);
    if (!target) throw exc::runtime_exc_t("XML element is not specified.");
    target->SetAttribute(name, value);
  } catch (const std::exception& e) {
    exc::rethrow_with_context(
        util::fmt_t::format("Failed to set attribute value. Attribute: [%1]. Value: [%2].", name,
                            value),
        e);
  }
}

void set_attr(const xml_node_ref_t& element, const std::string& name, const char* value) {
  set_attr(element, name, std::string(value ? value : ""));
}

void set_attr(const xml_node_ref_t& element, const std::string& name, bool value) {
  set_attr(element, name, util::to_str(value));
}

bool query_bool(const xml_node_ref_t& element, const std::string& name, bool& value) {
  const char* found = find_value(element, name);
  if (!found) return false;
  const std::string text = found;
  if (equals_ascii_nocase(text, "true")) {
    value = true;
  } else if (equals_ascii_nocase(text, "false") || text == "0") {
    value = false;
  } else {
    value = true;
  }
  return true;
}

int32_t action_attr(const xml_node_ref_t& element) {
  const char* found = find_value(element, kAction);
  if (!found) {
    throw exc::runtime_exc_t("Unexpected type of the attribute. Attribute: [%1].", kAction);
  }
  int32_t number = 0;
  size_t end = 0;
  if (!util::parse_long(std::string(found), 0, number, end)) {
    throw exc::runtime_exc_t("Attribute value is not specified. Attribute: [%1].", kAction);
  }
  return number;
}

void set_action_attr(const xml_node_ref_t& element, int32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "%d", static_cast<int>(number));
  set_attr(element, kAction, std::string(text));
}

}  // namespace xml
