// A database collection against the simulated client: a private folder that stands for the
// machine's drive (the scenario's files, the home's folders, srvctl), a scenario from
// tests/scenarios with "$BASE$" set to that folder, and the collector run over a holder of the
// scenario's instance.
#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "integration/oracle_client/ocisim_fixture.h"
#include "oracle/discovery/explore_db_config.h"
#include "oracle/discovery/oracle_props.h"
#include "support/test_folder.h"

namespace collect_test {

class collect_test_t : public ocisim_test::ocisim_test_t {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The folder's Windows path (ends in "\") and the home of the scenarios' database.
  std::string base() const;
  std::u16string home() const;
  std::u16string home_file(const std::u16string& relative) const;

  // Writes tests/scenarios/<name> as this test's scenario: "$BASE$" becomes base(), each
  // key of `values` becomes its value ("$VERSION$" and the like), and `extra` (XML) is put in
  // place of "<!--EXTRA-->" inside the database's instance.
  void use_scenario_file(const std::string& name, const std::map<std::string, std::string>& values = {},
                         const std::string& extra = "");
  // A file below base() (name relative to it, with "\").
  void put_file(const std::u16string& relative, const std::string& bytes = std::string(512, 'x'));
  bool has_file(const std::u16string& relative) const;

  // The configuration from a .reg fixture (CheckAsmLogFileExistence and the others), with the
  // short connection time-out of these tests.
  void use_registry(const std::string& fixture);

  // Runs the collector for `sid` of home(); throws what Collect throws.
  std::shared_ptr<specific::oracle::CDatabaseProps> collect(
      bool option, std::shared_ptr<specific::oracle::SDbLogRecInfo> record = nullptr,
      const std::u16string& sid = u"ORCL");

  // The statements the server saw, in order, and those from the first one equal to `from`.
  std::vector<std::string> statements() const;
  std::vector<std::string> statements_from(const std::string& from) const;
  bool saw_statement_starting(const std::string& prefix) const;
  // Log lines that contain `text`.
  std::vector<std::string> log_with(const std::string& text) const;
  // What is left in the library's temporary folder.
  std::vector<std::u16string> temp_files() const;

  std::unique_ptr<dsl_test::test_folder_t> folder_;
  std::shared_ptr<void> registry_;
};

// "<home>\bin\srvctl.bat" (or another place) that forwards to ocisim_srvctl, which answers
// from the scenario; or one that prints `lines`, each ended by CR LF as the tool's output on
// Windows is. A shell script on the host build, a batch file on Windows.
void write_srvctl_forwarder(const dsl_test::test_folder_t& folder, const std::u16string& relative);
void write_srvctl_printing(const dsl_test::test_folder_t& folder, const std::u16string& relative,
                           const std::vector<std::string>& lines);

}  // namespace collect_test
