// COracleHomes on fixture machines: the same .reg file gives the same instances, in the same
// order, on Windows (real registry) and on the host build (.reg store).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "discovery_machine.h"

namespace {

using dsl_test::discover;
using dsl_test::discovery_machine_t;
using dsl_test::found_lines;
using dsl_test::instance;
using dsl_test::sids_t;
using lines_t = std::vector<std::string>;

const std::u16string kDb19 = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
const std::u16string kGrid19 = u"C:\\app\\oracle\\product\\19.0.0\\grid";

class OracleHomes : public ::testing::Test {
 protected:
  void TearDown() override { dsl_test::expect_no_oracle_keys("after the test"); }
  dsl_test::capture_log_t log_;
};

TEST_F(OracleHomes, TheDemoMachineHasTwoDatabasesAndAnAsmInstance) {
  discovery_machine_t machine("demo_machine.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"ORCL", kDb19, u"OraDB19Home1"),
                                instance(u"SALES", kDb19, u"OraDB19Home1"),
                                instance(u"+ASM", kGrid19, u"OraGI19Home1", true)}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: ORCL. Is ASM: false",
                                        "Found oracle instance: SALES. Is ASM: false",
                                        "Found oracle instance: +ASM. Is ASM: true"}));
}

TEST_F(OracleHomes, OneHomeWithOneDatabaseGivesOneInstanceWithTheHomeAsStored) {
  discovery_machine_t machine("discovery_single_home.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"ORCL", u"C:\\app\\oracle\\product\\12.1.0\\dbhome_1",
                                         u"OraDB12Home1")}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: ORCL. Is ASM: false"}));
}

TEST_F(OracleHomes, AnAsmServiceGivesAnAsmInstanceInItsHomesPlace) {
  discovery_machine_t machine("discovery_asm.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"PROD", kDb19, u"OraDB19Home1"),
                                instance(u"+ASM", u"C:\\app\\19.0.0\\grid", u"OraGI19Home1", true)}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: PROD. Is ASM: false",
                                        "Found oracle instance: +ASM. Is ASM: true"}));
}

TEST_F(OracleHomes, AMachineWithoutOracleHasNoInstancesAndNoFailure) {
  discovery_machine_t machine("discovery_no_oracle_key.reg");
  EXPECT_TRUE(discover().empty());
  EXPECT_TRUE(found_lines(log_).empty());
}

TEST_F(OracleHomes, AnEmptyRegistryHasNoInstancesAndNoFailure) {
  // No file: on the host build an empty registry; on Windows nothing is added to Wine's.
  discovery_machine_t machine("discovery_no_such_machine.reg");
  EXPECT_TRUE(discover().empty());
}

TEST_F(OracleHomes, ServicesAreListedEvenWithoutHomes) {
  // The listing of services fails on a name too long for its buffer: it ran.
  discovery_machine_t machine("discovery_no_oracle_key_long_service_name.reg");
  try {
    discover();
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorMoreData);
    EXPECT_EQ(dsl_test::chain_after_system_text(e),
              (lines_t{"Failed to enum oracle home reg key", "--tr:Error code: 0x000000ea",
                       "COracleHomes: failed to enum reg subkeys.",
                       "COracleHomes: failed to find oracle services.",
                       "Failed to create oracle homes."}));
  }
  EXPECT_TRUE(found_lines(log_).empty());
}

TEST_F(OracleHomes, AHomeKeyNameTooLongForTheListingFailsTheHomeScan) {
  discovery_machine_t machine("discovery_long_home_key_name.reg");
  try {
    discover();
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), win::kErrorMoreData);
    EXPECT_EQ(dsl_test::chain_after_system_text(e),
              (lines_t{"Failed to enum oracle home reg key", "--tr:Error code: 0x000000ea",
                       "COracleHomes: failed to enum reg subkeys.",
                       "COracleHomes: failed to find oracle homes.",
                       "Failed to create oracle homes."}));
  }
  EXPECT_TRUE(found_lines(log_).empty());
}

TEST_F(OracleHomes, LowerCaseKeyNamesQualifyAndTextKeepsItsStoredCase) {
  discovery_machine_t machine("discovery_lower_case_names.reg");
  const std::u16string home = u"C:\\App\\Oracle\\Product\\19.0.0\\DbHome_1";
  EXPECT_EQ(discover(), (sids_t{instance(u"orcl", home, u"OraDB19Home1"),
                                instance(u"Sales", home, u"OraDB19Home1"),
                                instance(u"+asm", u"c:\\app\\grid", u"oragi19home1", true)}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: orcl. Is ASM: false",
                                        "Found oracle instance: Sales. Is ASM: false",
                                        "Found oracle instance: +asm. Is ASM: true"}));
}

TEST_F(OracleHomes, AHomeWithATrailingBackslashMatchesOnlyALineWithTwoBackslashes) {
  discovery_machine_t machine("discovery_trailing_backslash.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"TWICE", kDb19 + u"\\", u"OraDB19Home1")}));
}

TEST_F(OracleHomes, EverythingBehindTheFirstBlankIsTheSid) {
  discovery_machine_t machine("discovery_three_word_image_path.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"ORCL EXTRA", kDb19, u"OraDB19Home1")}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: ORCL EXTRA. Is ASM: false"}));
}

TEST_F(OracleHomes, AHomeOf260CharactersIsReadAsEmpty) {
  discovery_machine_t machine("discovery_long_home.reg");
  std::u16string home239 = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_";
  home239.resize(239, u'x');
  // L239X and L260 have command lines of 260 characters or more, read as empty: lost.
  // ROOTLESS runs from \bin\ORACLE.EXE, which is the server path of the empty home.
  EXPECT_EQ(discover(), (sids_t{instance(u"L239", home239, u"Long239"),
                                instance(u"ROOTLESS", u"", u"Long260")}));
}

TEST_F(OracleHomes, ExpandableHomesAreTakenLiterally) {
  discovery_machine_t machine("discovery_expand_sz_home.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"TEST", u"C:\\app\\oracle\\product\\19.0.0\\dbhome_2",
                                         u"OraDB19Home2")}));
}

TEST_F(OracleHomes, ServicesOfOneExecutableAreInstancesInServiceOrder) {
  discovery_machine_t machine("discovery_shared_executable.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"HR", kDb19, u"OraDB19Home1"),
                                instance(u"ORCL", kDb19, u"OraDB19Home1"),
                                instance(u"SALES", kDb19, u"OraDB19Home1")}));
}

TEST_F(OracleHomes, TwoHomeKeysWithOneHomeEachClaimEveryServiceOfIt) {
  discovery_machine_t machine("discovery_duplicate_home.reg");
  const std::u16string upper = u"C:\\APP\\ORACLE\\PRODUCT\\19.0.0\\DBHOME_1";
  EXPECT_EQ(discover(), (sids_t{instance(u"ORCL", kDb19, u"OraDB19Home1"),
                                instance(u"SALES", kDb19, u"OraDB19Home1"),
                                instance(u"ORCL", upper, u"OraDB19Home1_old"),
                                instance(u"SALES", upper, u"OraDB19Home1_old")}));
}

TEST_F(OracleHomes, OnlyKeysThatBeginWithKeyUnderscoreAreHomesEvenWithoutValues) {
  discovery_machine_t machine("discovery_key_prefix.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"BARE", u"", u"")}));
}

TEST_F(OracleHomes, ACommandLineThatBeginsWithABlankIsDropped) {
  discovery_machine_t machine("discovery_leading_blank.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u"SALES", kDb19, u"OraDB19Home1")}));
}

TEST_F(OracleHomes, ACommandLineWithoutBlankIsBothServerPathAndSid) {
  discovery_machine_t machine("discovery_no_blank.reg");
  EXPECT_EQ(discover(),
            (sids_t{instance(kDb19 + u"\\bin\\ORACLE.EXE", kDb19, u"OraDB19Home1")}));
}

TEST_F(OracleHomes, CommandLinesAreNeitherTrimmedNorUnquotedNorNormalised) {
  discovery_machine_t machine("discovery_image_path_shapes.reg");
  EXPECT_EQ(discover(), (sids_t{instance(u" DOUBLE", kDb19, u"OraDB19Home1"),
                                instance(u"TRAILING ", kDb19, u"OraDB19Home1")}));
}

TEST_F(OracleHomes, EachObjectScansAfresh) {
  {
    discovery_machine_t machine("discovery_single_home.reg");
    EXPECT_EQ(discover().size(), 1u);
  }
  discovery_machine_t machine("discovery_shared_executable.reg");
  EXPECT_EQ(discover().size(), 3u);
}

}  // namespace
