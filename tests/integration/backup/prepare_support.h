// Reading a preparation document back in the tests, errMsg included (the library's reader
// drops it on purpose), and running a preparation over a machine of db_t.
#pragma once
#include <map>
#include <string>
#include <vector>

#include "backup_fixture.h"

namespace backup_test {

struct prepared_t {
  std::map<std::string, std::string> attributes;
  std::vector<std::pair<std::string, std::string>> pdbs;
  std::string operator[](const std::string& name) const {
    const auto found = attributes.find(name);
    return found == attributes.end() ? std::string("<absent>") : found->second;
  }
};

// Records by SID, in document order in `order`.
struct prepared_doc_t {
  std::map<std::string, prepared_t> by_sid;
  std::vector<std::string> order;
  const prepared_t& operator[](const std::string& sid) const { return by_sid.at(sid); }
};

prepared_doc_t read_prepared(const std::u16string& document);

}  // namespace backup_test
