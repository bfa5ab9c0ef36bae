#include <cstdlib>
#include <fstream>
#include <sstream>

#include "explore_fixture.h"
#include "support/bin_dir.h"

namespace explore_test {

std::string ocisim_library() { return dsl_test::bin_dir() + "/ocisim/libclntsh.so"; }

bool validate_file(const std::string& xsd, const std::string& file, std::string& output) {
  const std::string log = file + ".xmllint.txt";
  const int status = std::system(("xmllint --noout --schema '" + xsd + "' '" + file + "' >'" + log +
                                  "' 2>&1").c_str());
  std::ifstream in(log);
  std::ostringstream text;
  text << in.rdbuf();
  output = text.str();
  return status == 0;
}

}  // namespace explore_test
