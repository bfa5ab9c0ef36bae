// The machine as a small tree of named records with ordered text attributes, read from and
// written to XML. The scenario and the state file share this one form, so whatever a statement
// changes is saved without a list of what may change. One thread at a time per tree.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace ocisim {

struct node_t {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<node_t> children;

  bool has(const std::string& attribute) const;
  // The attribute's value, or `fallback` when it is absent.
  std::string get(const std::string& attribute, const std::string& fallback = "") const;
  // The attribute's value in place, or null when it is absent.
  const std::string* find(const std::string& attribute) const;
  void set(const std::string& attribute, const std::string& value);
  void erase(const std::string& attribute);

  std::vector<node_t*> all(const std::string& child_name);
  std::vector<const node_t*> all(const std::string& child_name) const;
  // The first child of that name, or null.
  node_t* first(const std::string& child_name);
  const node_t* first(const std::string& child_name) const;
  // The first child of that name, made when missing.
  node_t& child(const std::string& child_name);
};

// Parses XML text into `root`; false with `error` set ("line N: what") when it is no XML.
bool parse_xml(const std::string& text, node_t& root, std::string& error);
// The tree as indented XML with a declaration.
std::string to_xml(const node_t& root);

}  // namespace ocisim
