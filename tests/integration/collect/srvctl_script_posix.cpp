#include <sys/stat.h>

#include <stdexcept>

#include "collect_fixture.h"
#include "common/text/convert.h"
#include "support/bin_dir.h"

namespace collect_test {

namespace {

// The host file below the folder's drive, worked out as the test folder lays it out.
std::string host_file(const dsl_test::test_folder_t& folder, const std::u16string& relative) {
  std::string rel = util::to_utf8(relative);
  for (auto& c : rel) c = (c == '\\') ? '/' : c;
  return folder.host_root() + "/c/t/" + rel;
}

void write_script(const dsl_test::test_folder_t& folder, const std::u16string& relative,
                  const std::string& body) {
  folder.raw_write(relative, "#!/bin/sh\n" + body);
  if (::chmod(host_file(folder, relative).c_str(), 0755) != 0) {
    throw std::runtime_error("chmod of the srvctl stand-in failed");
  }
}

}  // namespace

void write_srvctl_forwarder(const dsl_test::test_folder_t& folder, const std::u16string& relative) {
  write_script(folder, relative, "exec '" + dsl_test::bin_dir() + "/ocisim/ocisim_srvctl' \"$@\"\n");
}

void write_srvctl_printing(const dsl_test::test_folder_t& folder, const std::u16string& relative,
                           const std::vector<std::string>& lines) {
  std::string body;
  for (const auto& line : lines) body += "printf '%s\\r\\n' '" + line + "'\n";
  write_script(folder, relative, body);
}

}  // namespace collect_test
