// The console check on the sample machine: its registry (two homes, two databases, an ASM
// instance) and the simulated instances behind it, as an administrator would run it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include "console_fixture.h"
#include "support/reg_machine.h"

namespace console_test {
namespace {

std::string read_source_file(const std::string& relative) {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  std::ifstream in(std::string(root ? root : ".") + "/" + relative, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::string without_carriage_returns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

class DemoMachine : public console_test_t {};

TEST_F(DemoMachine, TestChecksEveryOpenInstanceAndPrintsItsArchivedLogs) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("demo_machine.reg"));
  const std::string scenario_text = read_source_file("tests/scenarios/demo-machine.xml");
  ASSERT_FALSE(scenario_text.empty());
  const std::string scenario = write_file("scenario.xml", scenario_text);
  const std::string host = host_path();
  const bool windows = host.size() > 4 && host.compare(host.size() - 4, 4, ".exe") == 0;
  const std::string bin = host.substr(0, host.find_last_of("/\\") + 1);
  const std::string client = bin + (windows ? "ocisim\\OCI.dll" : "ocisim/libclntsh.so");

  const process_result_t run =
      this->host({"test"}, "",
                 {{"OCISIM_SCENARIO", scenario},
                  {"OCISIM_JOURNAL", path_in_test_folder("journal.txt")},
                  {"DSL_OCI_LIBRARY", client}});

  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(without_carriage_returns(run.out),
            "Checking SID: ORCL\n"
            "ARCHIVE LOGS: ON\n"
            "Log path: 11\n"
            "Log path: 12\n"
            "Log path: 13\n"
            "LOCAL: 0, ASM: 0\n"
            "ok\n"
            "Checking SID: SALES\n"
            "ARCHIVE LOGS: ON\n"
            "Log path: 199\n"
            "Log path: 200\n"
            "LOCAL: 0, ASM: 0\n"
            "ok\n"
            "Checking SID: +ASM\n"
            "ok\n");
}


// What changes from run to run and machine to machine: the moment of collection and the
// machine's own facts on the root. The expected document holds "*" there.
std::string normalised_explore(const std::string& document) {
  std::string text = std::regex_replace(document, std::regex(" timeUtc=\"[0-9T:-]+\""), " timeUtc=\"*\"");
  text = std::regex_replace(text, std::regex("^<OracleOverall serverName=\"[^\"]+\" osName=\"[^\"]+\" timeZone=\"-?[0-9]+\""),
                            "<OracleOverall serverName=\"*\" osName=\"*\" timeZone=\"*\"");
  return text;
}

TEST_F(DemoMachine, ExploreCollectPrintsTheExpectedDocumentOfTheSampleMachine) {
  dsl_test::reg_machine_t machine(dsl_test::fixture_path("demo_machine.reg"));
  const std::string scenario = write_file("scenario.xml", read_source_file("tests/scenarios/demo-machine.xml"));
  const std::string host = host_path();
  const bool windows = host.size() > 4 && host.compare(host.size() - 4, 4, ".exe") == 0;
  const std::string bin = host.substr(0, host.find_last_of("/\\") + 1);
  const std::string client = bin + (windows ? "ocisim\\OCI.dll" : "ocisim/libclntsh.so");
  const std::string expected =
      without_carriage_returns(read_source_file("tests/integration/explore/expected/demo_machine.xml"));
  ASSERT_FALSE(expected.empty());

  const process_result_t run =
      this->host({"explore", "--collect"}, "",
                 {{"OCISIM_SCENARIO", scenario},
                  {"OCISIM_JOURNAL", path_in_test_folder("journal.txt")},
                  {"DSL_OCI_LIBRARY", client}});

  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(normalised_explore(without_carriage_returns(run.out)), expected);
}

}  // namespace
}  // namespace console_test
