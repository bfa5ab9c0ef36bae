// Validation of a document against one of the schemas in docs/schemas with xmllint, the same
// way on both builds: the host build runs xmllint directly; under Wine xmllint is a program of
// the Unix side, which a shell script runs and answers through a file (see the _win32 half).
#pragma once
#include <string>

namespace dsl_test {

// xmllint --noout --schema docs/schemas/<xsd_file_name> on `document_text` (UTF-8 bytes).
// Empty when the document validates; otherwise what xmllint said, or why it could not be asked
// (never empty then). The source folder is the one DSL_SOURCE_DIR names.
std::string schema_problems(const std::string& document_text, const std::string& xsd_file_name);

}  // namespace dsl_test
