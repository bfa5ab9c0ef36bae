// OracleGatherVssInfo and OracleShouldSkipVssWriter end to end through the console host: the
// OracleEntries document of a machine with an ASM instance and three databases, checked against
// its schema and attribute by attribute; the list read once per process; the skip question
// answered without a session or a registry read.
#include <gtest/gtest.h>

#include <string>

#include "vss_machine.h"

namespace vss_test {
namespace {

class GatherVssInfo : public vss_console_t {};

// ORCL open, ACTIVE, read-write in ARCHIVELOG; SALES open, SUSPENDED, read-only, no
// ARCHIVELOG; TEST's service stopped (no session comes); +ASM left out.
const char kOrcl[] =
    "<OracleEntry sid=\"ORCL\" db_name=\"ORCL\" instance_open=\"true\" "
    "db_open_readonly=\"false\" db_archive_logs_on=\"true\" db_active=\"true\" />";
const char kSales[] =
    "<OracleEntry sid=\"SALES\" db_name=\"SALES\" instance_open=\"true\" "
    "db_open_readonly=\"true\" db_archive_logs_on=\"false\" db_active=\"false\" />";

TEST_F(GatherVssInfo, DocumentListsEveryDatabaseInDiscoveryOrderAndMatchesItsSchema) {
  vss_machine_t machine("vss_gather_machine.reg");
  const auto run = host({"gather-vss-info"}, "vss_gather.xml");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const std::string text = run.out;
  ASSERT_FALSE(text.empty());
  ASSERT_EQ(text.back(), '\n');
  const std::string document = text.substr(0, text.size() - 1);
  EXPECT_EQ(document.find('\n'), std::string::npos) << "one line";
  EXPECT_EQ(document.rfind(std::string("<OracleEntries>") + kOrcl + kSales +
                               "<OracleEntry sid=\"TEST\" error=\"",
                           0),
            0u)
      << document;
  EXPECT_EQ(document.find("+ASM"), std::string::npos);
  EXPECT_EQ(schema_errors("oracle-entries.xsd", document), "");
}

TEST_F(GatherVssInfo, EntryOfAFailedProbeHasExactlySidAndError) {
  vss_machine_t machine("vss_gather_machine.reg");
  const auto run = host({"gather-vss-info"}, "vss_gather.xml");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const size_t start = run.out.find("<OracleEntry sid=\"TEST\"");
  ASSERT_NE(start, std::string::npos) << run.out;
  const std::string entry = run.out.substr(start, run.out.find("/>", start) + 2 - start);
  // The session's failure: the attach to an instance whose service is down.
  EXPECT_EQ(entry.rfind("<OracleEntry sid=\"TEST\" error=\"Oracle error has occurred. "
                       "ORA-12560: TNS:protocol adapter error",
                       0),
            0u)
      << entry;
  EXPECT_EQ(entry.find("db_name"), std::string::npos) << entry;
  EXPECT_EQ(entry.find("instance_open"), std::string::npos) << entry;
  EXPECT_EQ(entry.find("db_active"), std::string::npos) << entry;
  EXPECT_EQ(entry.find("db_open_readonly"), std::string::npos) << entry;
  EXPECT_EQ(entry.find("db_archive_logs_on"), std::string::npos) << entry;
  size_t attributes = 0;
  for (size_t at = entry.find("=\""); at != std::string::npos; at = entry.find("=\"", at + 1)) {
    ++attributes;
  }
  EXPECT_EQ(attributes, 2u) << entry;
  EXPECT_TRUE(logged_containing("Failed to gather VSS info, sid: TEST"));
}

TEST_F(GatherVssInfo, ListIsReadOnceAndKeptForTheProcess) {
  vss_machine_t machine("vss_gather_machine.reg");
  const auto run = script("gather-vss-info\ngather-vss-info\n", "vss_gather.xml");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const size_t half = run.out.find('\n');
  ASSERT_NE(half, std::string::npos);
  EXPECT_EQ(run.out.substr(0, half + 1), run.out.substr(half + 1));
  EXPECT_EQ(count_logged("Gathering oracle VSS info"), 1u);
  EXPECT_EQ(count_logged("Creating oracle session holder: ORCL."), 1u);
  // One logon per database that answered, none in the second call.
  const std::string calls = journal();
  size_t logons = 0;
  for (size_t at = calls.find("CALL OCISessionBegin"); at != std::string::npos;
       at = calls.find("CALL OCISessionBegin", at + 1)) {
    ++logons;
  }
  EXPECT_EQ(logons, 2u) << calls;
}

TEST_F(GatherVssInfo, MachineWithoutInstancesGivesTheRootAlone) {
  vss_machine_t machine("vss_no_instances.reg");
  const auto run = host({"gather-vss-info"}, "vss_gather.xml");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "<OracleEntries />\n");
  EXPECT_EQ(schema_errors("oracle-entries.xsd", "<OracleEntries />"), "");
}

TEST_F(GatherVssInfo, SchemaRefusesAnEntryWithoutSidOrWithAFlagThatIsNoWord) {
  // The schema check of the tests above is real: documents that break it are refused.
  EXPECT_NE(schema_errors("oracle-entries.xsd", "<OracleEntries><OracleEntry error=\"x\" />"
                                                "</OracleEntries>"),
            "");
  EXPECT_NE(schema_errors("oracle-entries.xsd",
                          "<OracleEntries><OracleEntry sid=\"A\" db_active=\"1\" />"
                          "</OracleEntries>"),
            "");
  EXPECT_NE(schema_errors("oracle-entries.xsd", "<OracleEntry sid=\"A\" />"), "");
}

class ShouldSkipWriter : public vss_console_t {};

TEST_F(ShouldSkipWriter, NothingSkippedOpensNoSessionAndReadsNoInstance) {
  vss_machine_t machine("vss_gather_machine.reg", "vss_writer_orcl_running.reg");
  const auto run = script("should-skip-writer ORCL\nshould-skip-writer orcl\n", "vss_gather.xml");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.out, "false\nfalse\n");
  EXPECT_EQ(journal(), "");
  EXPECT_FALSE(logged_containing("Found oracle instance"));
  EXPECT_FALSE(logged_containing("Found service"));
}

}  // namespace
}  // namespace vss_test
