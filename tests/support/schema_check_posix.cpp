#include "support/schema_check.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "support/process_runner.h"

namespace dsl_test {

namespace {

// xmllint as the search path finds it; the process runner takes a full path.
std::string find_xmllint() {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr && *path != '\0' ? path : "/usr/bin:/bin");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    const std::string candidate = (folder.empty() ? "." : folder) + "/xmllint";
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::string();
}

}  // namespace

std::string schema_problems(const std::string& document_text, const std::string& xsd_file_name) {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  const std::string schema = std::string(root != nullptr ? root : ".") + "/docs/schemas/" + xsd_file_name;
  const std::string xmllint = find_xmllint();
  if (xmllint.empty()) return "xmllint is not on the search path (package libxml2-utils)";
  const auto run = console_test::run_process(xmllint, {"--noout", "--schema", schema, "-"}, document_text);
  if (run.timed_out) return "xmllint did not finish";
  if (run.exit_code == 0) return std::string();
  return "xmllint exit " + std::to_string(run.exit_code) + ": " + run.err + run.out;
}

}  // namespace dsl_test
