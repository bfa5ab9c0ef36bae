// The explore flow end to end on simulated machines: each test installs one registry fixture
// and the explore machine's scenario, explores through the manager, compares the whole
// document with its expected file attribute by attribute, in order, and validates it.
#include <string>

#include "common/text/convert.h"
#include "explore_fixture.h"
#include "oracle/discovery/vss_state.h"

namespace explore_test {
namespace {

using ExploreMachine = explore_test_t;

TEST_F(ExploreMachine, NoInstanceGivesAnEmptyRootWithoutAttributes) {
  use_machine("explore_no_instance.reg");
  const std::string document = explore();
  EXPECT_EQ(document, "<OracleOverall />");
  expect_valid(document);
}

TEST_F(ExploreMachine, WorkingThenRefusingSidGivesTheHomeFromTheWorkingOneAndAnErrorRecord) {
  use_machine("explore_working_then_refusing.reg");
  expect_document(explore(), "working_then_refusing.xml");
  EXPECT_TRUE(logged("ERR |Failed to gather database props for SID: BROKEN"));
}

TEST_F(ExploreMachine, RefusingThenWorkingSidGivesTheSameHomeWithTheErrorRecordFirst) {
  use_machine("explore_refusing_then_working.reg");
  expect_document(explore(), "refusing_then_working.xml");
}

TEST_F(ExploreMachine, OnlyARefusingSidKeepsItsHomeWithPathAndOneErrorRecord) {
  use_machine("explore_only_refusing.reg");
  expect_document(explore(), "only_refusing.xml");
}

TEST_F(ExploreMachine, FailingAsmInstanceAloneLeavesNoHome) {
  use_machine("explore_asm_failing_alone.reg");
  expect_document(explore(), "all_homes_dropped.xml");
  EXPECT_TRUE(logged("ERR |Failed to gather database props for SID: +ASMBAD"));
  bool wrapped = false;
  for (const auto& line : log_lines()) wrapped = wrapped || line.find("Failed to gather ASM properties.") != std::string::npos;
  EXPECT_TRUE(wrapped) << "the collector's own line is in the chain";
}

TEST_F(ExploreMachine, AsmInstanceWithoutMountedGroupsIsItsSidAlone) {
  use_machine("explore_asm_no_group.reg");
  const std::string document = explore();
  EXPECT_NE(document.find("<asm sid=\"+ASMEMPTY\" /></home>"), std::string::npos) << document;
  expect_valid(document);
}

TEST_F(ExploreMachine, FailingAsmInstanceBesideACollectedDatabaseLeavesTheDatabaseAlone) {
  use_machine("explore_asm_failing_beside_database.reg");
  expect_document(explore(), "asm_failing_beside_database.xml");
}

TEST_F(ExploreMachine, AsmInstanceWithTwoGroupsOfTwoDisksListsFourDisks) {
  use_machine("explore_asm_two_groups.reg");
  expect_document(explore(), "asm_two_groups.xml");
}

TEST_F(ExploreMachine, FailedDatabaseBesideASkippedOneIsDroppedWithItsHome) {
  use_machine("explore_failed_beside_skipped.reg");
  expect_document(explore(), "all_homes_dropped.xml");
  EXPECT_TRUE(logged("Database (SID: OLD) skipped from data collection"));
}

TEST_F(ExploreMachine, FailedDatabaseBesideAFailedAsmInstanceIsDroppedWithItsHome) {
  use_machine("explore_failed_beside_failed_asm.reg");
  expect_document(explore(), "all_homes_dropped.xml");
}

TEST_F(ExploreMachine, TemporarySidAloneGivesAnEmptyHomeAndIsNeverConnected) {
  use_machine("explore_temp_sid.reg");
  expect_document(explore(), "temp_sid.xml");
  EXPECT_EQ(journal().find("TreloTmp1"), std::string::npos) << journal();
}

TEST_F(ExploreMachine, DatabaseWithTheTemporaryNameIsSkippedAndItsHomeDropped) {
  use_machine("explore_temp_database_name.reg");
  expect_document(explore(), "all_homes_dropped.xml");
  EXPECT_TRUE(logged("Database (SID: SCRATCH) skipped from data collection"));
}

TEST_F(ExploreMachine, Version10IsSkippedAndWithoutArchiveLogRecordedForTheVssWriter) {
  use_machine("explore_version_10.reg");
  expect_document(explore(), "all_homes_dropped.xml");
  EXPECT_TRUE(logged("Database (SID: OLD) skipped from data collection"));
  EXPECT_TRUE(logged("Database (SID: NOARCH10) skipped from data collection"));
  EXPECT_TRUE(specific::oracle::CVssState::instance().should_skip(u"NOARCH10"));
  EXPECT_FALSE(specific::oracle::CVssState::instance().should_skip(u"OLD"));
}

TEST_F(ExploreMachine, Version10IsCollectedWhenSupportOracle10IsSet) {
  use_machine("explore_version_10_supported.reg");
  expect_document(explore(), "version_10_supported.xml");
}

TEST_F(ExploreMachine, MountedDatabaseIsAnErrorRecordWithTheStateText) {
  use_machine("explore_mounted.reg");
  expect_document(explore(), "mounted.xml");
  EXPECT_TRUE(logged("ERR |Oracle database instance state is not valid for property collection"));
}

TEST_F(ExploreMachine, DisableOracleProcessingListsNoInstance) {
  use_machine("explore_disabled.reg");
  expect_document(explore(), "disabled.xml");
}

TEST_F(ExploreMachine, TwoHomesWithOneNameMakeOneHomeWithThePathOfTheFirstCollected) {
  use_machine("explore_two_homes_one_name.reg");
  expect_document(explore(), "two_homes_one_name.xml");
}

TEST_F(ExploreMachine, HomeNamesAreOrderedByCodeUnitZetaBeforeAlpha) {
  use_machine("explore_home_name_order.reg");
  expect_document(explore(), "home_name_order.xml");
}

TEST_F(ExploreMachine, RememberedLogThatStillExistsIsNotReverted) {
  use_machine("explore_single_database.reg");
  const std::string input = "<databases><database sid=\"ORCL\" recId=\"17\" stamp=\"99\"/></databases>";
  expect_valid(input, "explore-input.xsd");
  expect_document(explore(false, util::from_utf8(input)), "single_database.xml");
  EXPECT_NE(journal().find("WHERE RECID=17 AND STAMP=99"), std::string::npos) << journal();
}

TEST_F(ExploreMachine, RememberedLogThatIsGoneIsReverted) {
  use_machine("explore_single_database.reg");
  const std::string document =
      explore(false, u"<databases><database sid=\"ORCL\" recId=\"17\" stamp=\"98\"/></databases>");
  EXPECT_NE(document.find(" reverted=\"true\" "), std::string::npos) << document;
  expect_valid(document);
}

TEST_F(ExploreMachine, SidGivenInAnotherCaseHasNoRecord) {
  use_machine("explore_single_database.reg");
  expect_document(explore(false, u"<databases><database sid=\"orcl\" recId=\"17\" stamp=\"98\"/></databases>"),
                  "single_database.xml");
  EXPECT_EQ(journal().find(" AND STAMP="), std::string::npos) << journal();
}

TEST_F(ExploreMachine, EmptyRecIdMakesTheSidBehaveAsWithoutRecord) {
  use_machine("explore_single_database.reg");
  expect_document(explore(false, u"<databases><database sid=\"ORCL\" recId=\"\" stamp=\"98\"/></databases>"),
                  "single_database.xml");
  EXPECT_TRUE(logged("Explore db config sid found: ORCL, recId: , stamp: 98"));
  EXPECT_EQ(journal().find(" AND STAMP="), std::string::npos) << journal();
}

TEST_F(ExploreMachine, RecIdThatIsNoNumberNeverReachesTheDatabase) {
  use_machine("explore_single_database.reg");
  expect_document(
      explore(false, u"<databases><database sid=\"ORCL\" recId=\"17 OR 1=1\" stamp=\"98\"/></databases>"),
      "single_database.xml");
  EXPECT_EQ(journal().find(" AND STAMP="), std::string::npos) << journal();
}

TEST_F(ExploreMachine, MissingStampFailsTheCallWithTheAttributeText) {
  use_machine("explore_single_database.reg");
  EXPECT_EQ(explore_failure(false, u"<databases><database sid=\"ORCL\" recId=\"17\"/></databases>"),
            "Attribute value is not specified. Attribute: [stamp].\n"
            "Failed to parse explore db config\n"
            "--tr:Failed to explore oracle instances.\n"
            "--tr:Oracle manager failed to explore Oracle instances");
  EXPECT_EQ(journal().find("OCIServerAttach"), std::string::npos) << "nothing is connected";
}

TEST_F(ExploreMachine, InputThatIsNotXmlFailsTheCall) {
  use_machine("explore_single_database.reg");
  const std::string text = explore_failure(false, u"this is not XML");
  EXPECT_EQ(text.rfind("XML error: [", 0), 0u) << text;
  EXPECT_NE(text.find("\nFailed to parse explore db config\n--tr:Failed to explore oracle instances.\n"),
            std::string::npos)
      << text;
}

TEST_F(ExploreMachine, TenMebibytesOfInputAreRead) {
  use_machine("explore_single_database.reg");
  std::u16string input = u"<databases><database sid=\"";
  input.append(10u << 20, u'S');
  input += u"\" recId=\"1\" stamp=\"2\"/><database sid=\"ORCL\" recId=\"17\" stamp=\"99\"/></databases>";
  expect_document(explore(false, input), "single_database.xml");
  EXPECT_NE(journal().find("WHERE RECID=17 AND STAMP=99"), std::string::npos);
}

TEST_F(ExploreMachine, ThousandsOfSidsInTheInputAreRead) {
  use_machine("explore_single_database.reg");
  std::u16string input = u"<databases>";
  for (int i = 0; i < 5000; ++i) {
    const std::string n = std::to_string(i);
    input += u"<database sid=\"S" + std::u16string(n.begin(), n.end()) + u"\" recId=\"" +
             std::u16string(n.begin(), n.end()) + u"\" stamp=\"1\"/>";
  }
  input += u"<database sid=\"ORCL\" recId=\"17\" stamp=\"99\"/></databases>";
  expect_document(explore(false, input), "single_database.xml");
}

}  // namespace
}  // namespace explore_test

namespace explore_test {
namespace {

TEST_F(ExploreMachine, SidsAndPathsWithQuotesAmpersandsAndNonAsciiLettersAreEscapedAndKept) {
  use_machine("explore_unusual_names.reg", "explore_unusual.xml");
  expect_document(explore(), "unusual_names.xml");
}

TEST_F(ExploreMachine, ViewRowWithA1024ByteValueIsLeftOut) {
  use_machine("explore_unusual_names.reg", "explore_unusual.xml");
  const std::string document = explore();
  EXPECT_EQ(document.find("LLLL"), std::string::npos);
  EXPECT_NE(document.find("users01.dbf"), std::string::npos) << document;
  EXPECT_NE(document.find(" localListener=\"\" "), std::string::npos) << document;
}

}  // namespace
}  // namespace explore_test

namespace explore_test {
namespace {

// The sample machine of scripts/demo, explored with --collect: the document the demo prints.
TEST_F(ExploreMachine, SampleMachineOfTheDemoIsDescribedWithLogsAndParameterFiles) {
  use_machine("demo_machine.reg", "demo-machine.xml");
  expect_document(explore(/*collect=*/true), "demo_machine.xml");
}

}  // namespace
}  // namespace explore_test
