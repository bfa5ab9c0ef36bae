#include "node.h"

#include <tinyxml.h>

namespace ocisim {

bool node_t::has(const std::string& attribute) const {
  for (const auto& pair : attributes) {
    if (pair.first == attribute) return true;
  }
  return false;
}

std::string node_t::get(const std::string& attribute, const std::string& fallback) const {
  for (const auto& pair : attributes) {
    if (pair.first == attribute) return pair.second;
  }
  return fallback;
}

const std::string* node_t::find(const std::string& attribute) const {
  for (const auto& pair : attributes) {
    if (pair.first == attribute) return &pair.second;
  }
  return nullptr;
}

void node_t::set(const std::string& attribute, const std::string& value) {
  for (auto& pair : attributes) {
    if (pair.first == attribute) {
      pair.second = value;
      return;
    }
  }
  attributes.emplace_back(attribute, value);
}

void node_t::erase(const std::string& attribute) {
  for (auto it = attributes.begin(); it != attributes.end(); ++it) {
    if (it->first == attribute) {
      attributes.erase(it);
      return;
    }
  }
}

std::vector<node_t*> node_t::all(const std::string& child_name) {
  std::vector<node_t*> result;
  for (node_t& c : children) {
    if (c.name == child_name) result.push_back(&c);
  }
  return result;
}

std::vector<const node_t*> node_t::all(const std::string& child_name) const {
  std::vector<const node_t*> result;
  for (const node_t& c : children) {
    if (c.name == child_name) result.push_back(&c);
  }
  return result;
}

node_t* node_t::first(const std::string& child_name) {
  for (node_t& c : children) {
    if (c.name == child_name) return &c;
  }
  return nullptr;
}

const node_t* node_t::first(const std::string& child_name) const {
  for (const node_t& c : children) {
    if (c.name == child_name) return &c;
  }
  return nullptr;
}

node_t& node_t::child(const std::string& child_name) {
  if (node_t* found = first(child_name)) return *found;
  children.push_back(node_t{child_name, {}, {}});
  return children.back();
}

namespace {

void read_element(const TiXmlElement& element, node_t& node) {
  node.name = element.Value();
  for (const TiXmlAttribute* a = element.FirstAttribute(); a != nullptr; a = a->Next()) {
    node.attributes.emplace_back(a->Name(), a->Value());
  }
  for (const TiXmlElement* c = element.FirstChildElement(); c != nullptr;
       c = c->NextSiblingElement()) {
    node.children.emplace_back();
    read_element(*c, node.children.back());
  }
}

TiXmlElement* write_element(const node_t& node) {
  auto* element = new TiXmlElement(node.name);
  for (const auto& pair : node.attributes) element->SetAttribute(pair.first, pair.second);
  for (const node_t& c : node.children) element->LinkEndChild(write_element(c));
  return element;
}

}  // namespace

bool parse_xml(const std::string& text, node_t& root, std::string& error) {
  TiXmlDocument document;
  // TIXML_ENCODING_UTF8: the scenario is UTF-8 whatever its declaration says, so paths with
  // non-ASCII letters come through byte for byte.
  document.Parse(text.c_str(), /*prevData=*/nullptr, TIXML_ENCODING_UTF8);
  if (document.Error()) {
    error = "line " + std::to_string(document.ErrorRow()) + ": " + document.ErrorDesc();
    return false;
  }
  const TiXmlElement* element = document.RootElement();
  if (element == nullptr) {
    error = "no root element";
    return false;
  }
  root = node_t{};
  read_element(*element, root);
  return true;
}

std::string to_xml(const node_t& root) {
  TiXmlDocument document;
  document.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
  document.LinkEndChild(write_element(root));
  TiXmlPrinter printer;
  printer.SetIndent("  ");
  document.Accept(&printer);
  return printer.Str();
}

}  // namespace ocisim
