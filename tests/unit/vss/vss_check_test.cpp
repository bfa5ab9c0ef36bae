// The VSS check's order, its answer and its cache, with stand-in probes that record what they
// were asked: which instances reach the database probe, which SIDs the writer probe, and what
// the check writes to the log.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "oracle/discovery/vss_state.h"
#include "support/capture_receiver.h"

namespace {

using specific::oracle::CVssState;
using specific::oracle::SOracleSid;
using specific::oracle::SVssCheckProbes;

SOracleSid database(const std::u16string& sid) {
  SOracleSid s;
  s.sid = sid;
  s.home = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
  s.homeName = u"OraDB19Home1";
  return s;
}

SOracleSid asm_instance(const std::u16string& sid) {
  SOracleSid s = database(sid);
  s.home = u"C:\\app\\oracle\\product\\19.0.0\\grid";
  s.isAsm = true;
  return s;
}

// A machine of stand-ins: the instances, which databases are in order, which writers enabled.
struct machine_t {
  std::vector<SOracleSid> instances;
  std::vector<std::u16string> databases_in_order;
  std::vector<std::u16string> writers_enabled;
  bool discovery_fails = false;

  std::vector<std::u16string> database_probes;  // SIDs in the order asked
  std::vector<std::u16string> writer_probes;

  static bool has(const std::vector<std::u16string>& list, const std::u16string& sid) {
    for (const auto& s : list) {
      if (s == sid) return true;
    }
    return false;
  }

  SVssCheckProbes probes() {
    return SVssCheckProbes{
        [this]() -> std::vector<SOracleSid> {
          if (discovery_fails) throw std::runtime_error("Failed to create oracle homes.");
          return instances;
        },
        [this](const SOracleSid& s) {
          database_probes.push_back(s.sid);
          return has(databases_in_order, s.sid);
        },
        [this](const std::u16string& sid) {
          writer_probes.push_back(sid);
          return has(writers_enabled, sid);
        }};
  }
};

using lines_t = std::vector<std::string>;

const lines_t kEnabledLog = {"Checking if oracle VSS must be disabled", "VSS must be enabled",
                             "Checking if oracle VSS must be disabled ok."};
const lines_t kDisabledLog = {"Checking if oracle VSS must be disabled", "VSS must be disabled",
                              "Checking if oracle VSS must be disabled ok."};

TEST(VssCheck, NoInstancesGiveEnabledAndNothingElseHappens) {
  CVssState state;
  machine_t machine;
  dsl_test::capture_log_t log;
  EXPECT_TRUE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(dsl_test::plain_log(log), kEnabledLog);
  EXPECT_TRUE(machine.database_probes.empty());
  EXPECT_TRUE(machine.writer_probes.empty());
  ASSERT_TRUE(state.vss_must_be_enabled());
  EXPECT_TRUE(*state.vss_must_be_enabled());
}

TEST(VssCheck, OnlyAsmInstancesGiveEnabledWithoutAnyProbe) {
  CVssState state;
  machine_t machine;
  machine.instances = {asm_instance(u"+ASM"), asm_instance(u"+ASM2")};
  dsl_test::capture_log_t log;
  EXPECT_TRUE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(dsl_test::plain_log(log), kEnabledLog);
  EXPECT_TRUE(machine.database_probes.empty());
  EXPECT_TRUE(machine.writer_probes.empty());
}

TEST(VssCheck, DatabaseInOrderLeavesItsWriterUnasked) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL")};
  machine.databases_in_order = {u"ORCL"};
  machine.writers_enabled = {u"ORCL"};
  EXPECT_TRUE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(machine.database_probes, std::vector<std::u16string>{u"ORCL"});
  EXPECT_TRUE(machine.writer_probes.empty());
}

TEST(VssCheck, DatabaseNotInOrderWithItsWriterEnabledGivesDisabled) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL")};
  machine.writers_enabled = {u"ORCL"};
  dsl_test::capture_log_t log;
  EXPECT_FALSE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(dsl_test::plain_log(log), kDisabledLog);
  EXPECT_EQ(machine.writer_probes, std::vector<std::u16string>{u"ORCL"});
}

TEST(VssCheck, DatabaseNotInOrderWithItsWriterStoppedGivesEnabled) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL")};
  EXPECT_TRUE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(machine.writer_probes, std::vector<std::u16string>{u"ORCL"});
}

TEST(VssCheck, AsmInstancesArePassedOverAndTheDatabasesProbedInDiscoveryOrder) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"SALES"), asm_instance(u"+ASM"), database(u"ORCL")};
  machine.databases_in_order = {u"SALES"};
  EXPECT_TRUE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(machine.database_probes, (std::vector<std::u16string>{u"SALES", u"ORCL"}));
  EXPECT_EQ(machine.writer_probes, std::vector<std::u16string>{u"ORCL"});
}

TEST(VssCheck, SecondBadDatabaseIsNotVisitedOnceTheFirstDisabled) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL"), database(u"SALES")};
  machine.writers_enabled = {u"ORCL", u"SALES"};
  EXPECT_FALSE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(machine.database_probes, std::vector<std::u16string>{u"ORCL"});
  EXPECT_EQ(machine.writer_probes, std::vector<std::u16string>{u"ORCL"});
}

TEST(VssCheck, SecondCallWithChangedConditionsGivesTheSameAnswerAndNoLogLine) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL")};
  machine.writers_enabled = {u"ORCL"};
  ASSERT_FALSE(state.check_vss_functionality(machine.probes()));

  // The database is in order now and its writer stopped: a new probing would say enabled.
  machine.databases_in_order = {u"ORCL"};
  machine.writers_enabled.clear();
  machine.database_probes.clear();
  machine.writer_probes.clear();
  dsl_test::capture_log_t log;
  EXPECT_FALSE(state.check_vss_functionality(machine.probes()));
  EXPECT_TRUE(log.receiver().writes().empty());
  EXPECT_TRUE(machine.database_probes.empty());
  EXPECT_TRUE(machine.writer_probes.empty());
}

TEST(VssCheck, FailedDiscoveryLeavesTheCacheEmptyAndTheStepFailedSoTheNextCallProbes) {
  CVssState state;
  machine_t machine;
  machine.instances = {database(u"ORCL")};
  machine.discovery_fails = true;
  {
    dsl_test::capture_log_t log;
    EXPECT_THROW(state.check_vss_functionality(machine.probes()), std::runtime_error);
    EXPECT_EQ(dsl_test::plain_log(log),
              (lines_t{"Checking if oracle VSS must be disabled",
                       "Checking if oracle VSS must be disabled Failed."}));
  }
  EXPECT_FALSE(state.vss_must_be_enabled());

  machine.discovery_fails = false;
  machine.writers_enabled = {u"ORCL"};
  EXPECT_FALSE(state.check_vss_functionality(machine.probes()));
  EXPECT_EQ(machine.database_probes, std::vector<std::u16string>{u"ORCL"});
}

TEST(VssCheck, TheProcessWideStateIsOneObject) {
  EXPECT_EQ(&CVssState::instance(), &CVssState::instance());
}

TEST(VssSkipSids, LookupIsExactAndCaseSensitive) {
  CVssState state;
  state.add_skip_sid(u"ORCL");
  EXPECT_TRUE(state.should_skip(u"ORCL"));
  EXPECT_FALSE(state.should_skip(u"orcl"));
  EXPECT_FALSE(state.should_skip(u"ORCL "));
  EXPECT_FALSE(state.should_skip(u"ORC"));
  EXPECT_FALSE(state.should_skip(u""));
}

TEST(VssSkipSids, AnEmptySetSkipsNothing) {
  CVssState state;
  EXPECT_FALSE(state.should_skip(u"ORCL"));
  EXPECT_TRUE(state.skip_sids().empty());
}

}  // namespace
