#include "collect_fixture.h"
#include "support/bin_dir.h"

namespace collect_test {

void write_srvctl_forwarder(const dsl_test::test_folder_t& folder, const std::u16string& relative) {
  folder.raw_write(relative, "@\"" + dsl_test::bin_dir() + "\\ocisim\\ocisim_srvctl.exe\" %*\r\n");
}

void write_srvctl_printing(const dsl_test::test_folder_t& folder, const std::u16string& relative,
                           const std::vector<std::string>& lines) {
  std::string body = "@echo off\r\n";
  for (const auto& line : lines) body += line.empty() ? "echo.\r\n" : "echo " + line + "\r\n";
  folder.raw_write(relative, body);
}

}  // namespace collect_test
