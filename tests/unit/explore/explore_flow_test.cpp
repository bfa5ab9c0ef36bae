// The explore flow's own logic over fake sessions: grouping, outcomes, the keep-or-drop
// decision of a home, error records, the skip rule and the VSS record of skipped databases.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/xml/xml_doc.h"
#include "config/oracle_config.h"
#include "oracle/discovery/explore_flow.h"
#include "oracle/discovery/vss_state.h"
#include "support/capture_receiver.h"
#include "support/thrown.h"

using namespace specific::oracle;

namespace {

// How one fake instance answers.
struct behaviour_t {
  bool refuse = false;  // connect throws
  bool open = true;
  bool active = true;
  bool below11 = false;
  std::u16string databaseName = u"DB";
  bool archiveLog = true;
  bool optionsFail = false;
  bool collectFails = false;
  std::u16string version = u"19.0.0.0.0";
  std::u16string banner = u"ORACLE DATABASE 19C";
};

struct fake_world_t {
  std::vector<SOracleSid> instances;
  std::map<std::u16string, behaviour_t> behaviour;
  std::vector<std::string> calls;
  std::map<std::u16string, std::shared_ptr<SDbLogRecInfo>> seenRecords;
  bool envFails = false;
  bool homesFail = false;
};

class fake_session_t : public CExploreSession {
 public:
  fake_session_t(fake_world_t& world, const SOracleSid& instance)
      : world_(world), sid_(instance.sid), b_(world.behaviour[instance.sid]) {}
  bool is_instance_open(bool assumeOpen) override {
    note("open");
    return b_.open;
  }
  bool is_database_active() override {
    note("active");
    return b_.active;
  }
  bool is_version_below_11() override { return b_.below11; }
  std::u16string get_database_name() override { return b_.databaseName; }
  bool archive_log_on() override {
    note("options");
    if (b_.optionsFail) throw exc::runtime_exc_t("ORA-01507: database not mounted");
    return b_.archiveLog;
  }
  std::u16string sid() const override { return sid_; }
  std::u16string instance_version() override { return b_.version; }
  std::u16string version_banner() override { return b_.banner; }
  oracle_props_ptr_t collect(const SOracleSid& instance, std::shared_ptr<SDbLogRecInfo> logRecInfo,
                             bool option) override {
    note("collect");
    world_.seenRecords[instance.sid] = logRecInfo;
    if (b_.collectFails) throw exc::runtime_exc_t("ORA-00942: table or view does not exist");
    if (instance.isAsm) return std::make_shared<CAsmInstanceProps>(instance.sid);
    auto props = std::make_shared<CDatabaseProps>();
    props->sid = instance.sid;
    props->name = option ? u"with-option" : u"without-option";
    props->timeUtc = u"T";
    return props;
  }

 private:
  void note(const char* what) {
    world_.calls.push_back(std::string(sid_.begin(), sid_.end()) + ":" + what);
  }
  fake_world_t& world_;
  std::u16string sid_;
  behaviour_t b_;
};

class fake_backend_t : public CExploreBackend {
 public:
  explicit fake_backend_t(fake_world_t& world) : world_(world) {}
  std::vector<SOracleSid> find_instances() override {
    if (world_.homesFail) throw exc::runtime_exc_t("Failed to create oracle homes.");
    return world_.instances;
  }
  std::unique_ptr<CExploreSession> connect(const SOracleSid& instance, const conn_t& conn) override {
    world_.calls.push_back(std::string(instance.sid.begin(), instance.sid.end()) + ":connect " +
                           conn.first);
    if (world_.behaviour[instance.sid].refuse) {
      throw exc::runtime_exc_t("ORA-12560: TNS:protocol adapter error");
    }
    return std::make_unique<fake_session_t>(world_, instance);
  }
  std::u16string parameter_file(const SOracleSid& instance) override {
    return instance.home + u"\\database\\init" + instance.sid + u".ora";
  }
  std::shared_ptr<CEnvProps> environment() override {
    if (world_.envFails) throw exc::runtime_exc_t("Failed to collect environment properties");
    auto env = std::make_shared<CEnvProps>();
    env->serverName = u"HOST";
    env->osName = u"OS";
    env->timeZone = 4;
    return env;
  }

 private:
  fake_world_t& world_;
};

class ExploreFlow : public ::testing::Test {
 protected:
  void TearDown() override { COracleConfig::replace_for_tests(COracleConfig()); }

  void add(const char16_t* sid, const char16_t* homeName, const char16_t* home = u"C:\\h",
           bool isAsm = false) {
    world_.instances.push_back({sid, home, homeName, isAsm});
  }
  std::string run(const std::u16string& input = u"", bool option = false) {
    fake_backend_t backend(world_);
    const std::u16string text = COracleExplorer(backend).explore(option, {"sys", "pw"}, input);
    return std::string(text.begin(), text.end());
  }
  void set_config(bool disable, bool support10 = false) {
    COracleConfig config;
    config.disableOracleProcessing = disable;
    config.supportOracle10 = support10;
    COracleConfig::replace_for_tests(config);
  }

  fake_world_t world_;
};

const char kEnv[] = "<OracleOverall serverName=\"HOST\" osName=\"OS\" timeZone=\"4\"";
const char kOrcl[] =
    "<database isError=\"false\" name=\"without-option\" id=\"\" sid=\"ORCL\" config=\"\" "
    "lastScn=\"\" archiveLogsOn=\"false\" isReadonly=\"false\" reverted=\"false\" timeUtc=\"T\" "
    "lastLogNum=\"\" maxLogRecId=\"\" maxLogStamp=\"\" pfile=\"\" pwdFilePath=\"\" globalName=\"\" "
    "recoveryFileDest=\"\" localListener=\"\" remoteListener=\"\"><control_files /><data_files />"
    "<log_files /><temp_files /><pdbs /><archived_logs /></database>";
const char kBroken[] =
    "<database isError=\"true\" sid=\"BROKEN\" config=\"C:\\h\\database\\initBROKEN.ora\" "
    "errorDescription=\"ORA-12560: TNS:protocol adapter error&#x0A;--tr:x\" />";

std::string broken_record(const std::string& description) {
  return "<database isError=\"true\" sid=\"BROKEN\" config=\"C:\\h\\database\\initBROKEN.ora\" "
         "errorDescription=\"" + description + "\" />";
}

TEST_F(ExploreFlow, NoInstanceGivesAnEmptyRootWithoutAttributes) {
  world_.envFails = true;  // not even asked
  EXPECT_EQ(run(), "<OracleOverall />");
}

TEST_F(ExploreFlow, WorkingThenRefusingSidInOneHome) {
  add(u"ORCL", u"Home1");
  add(u"BROKEN", u"Home1");
  world_.behaviour[u"BROKEN"].refuse = true;
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Home1\" version=\"19.0.0.0.0\" path=\"C:\\h\" "
                       "desc=\"ORACLE DATABASE 19C\">" + kOrcl +
                       broken_record("ORA-12560: TNS:protocol adapter error") +
                       "</home></OracleOverall>");
}

TEST_F(ExploreFlow, RefusingThenWorkingSidFillsPathFromTheErrorThenVersionFromTheDatabase) {
  add(u"BROKEN", u"Home1");
  add(u"ORCL", u"Home1");
  world_.behaviour[u"BROKEN"].refuse = true;
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Home1\" version=\"19.0.0.0.0\" path=\"C:\\h\" "
                       "desc=\"ORACLE DATABASE 19C\">" +
                       broken_record("ORA-12560: TNS:protocol adapter error") + kOrcl +
                       "</home></OracleOverall>");
}

TEST_F(ExploreFlow, OnlyARefusingSidKeepsItsHomeWithPathAndOneErrorRecord) {
  dsl_test::capture_log_t log;
  add(u"BROKEN", u"Home1");
  world_.behaviour[u"BROKEN"].refuse = true;
  EXPECT_EQ(run(), std::string(kEnv) + "><home name=\"Home1\" version=\"\" path=\"C:\\h\" desc=\"\">" +
                       broken_record("ORA-12560: TNS:protocol adapter error") +
                       "</home></OracleOverall>");
  const auto lines = dsl_test::plain_log(log);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "ERR |Failed to gather database props for SID: BROKEN"),
            lines.end());
}

TEST_F(ExploreFlow, FailingAsmInstanceAloneDropsItsHome) {
  add(u"+ASM", u"Grid", u"C:\\grid", true);
  world_.behaviour[u"+ASM"].refuse = true;
  EXPECT_EQ(run(), std::string(kEnv) + " />");
}

TEST_F(ExploreFlow, FailingAsmInstanceBesideACollectedDatabaseLeavesTheDatabaseAlone) {
  add(u"+ASM", u"Home1", u"C:\\h", true);
  add(u"ORCL", u"Home1");
  world_.behaviour[u"+ASM"].collectFails = true;
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Home1\" version=\"19.0.0.0.0\" path=\"C:\\h\" "
                       "desc=\"ORACLE DATABASE 19C\">" + kOrcl + "</home></OracleOverall>");
}

TEST_F(ExploreFlow, CollectedAsmInstanceIsAnAsmElement) {
  add(u"+ASM", u"Grid", u"C:\\grid", true);
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Grid\" version=\"19.0.0.0.0\" path=\"C:\\grid\" "
                       "desc=\"ORACLE DATABASE 19C\"><asm sid=\"+ASM\" /></home></OracleOverall>");
}

TEST_F(ExploreFlow, FailedDatabaseBesideAFailedAsmInstanceIsDroppedWithItsHome) {
  add(u"BROKEN", u"Home1");
  add(u"+ASM", u"Home1", u"C:\\h", true);
  world_.behaviour[u"BROKEN"].refuse = true;
  world_.behaviour[u"+ASM"].refuse = true;
  EXPECT_EQ(run(), std::string(kEnv) + " />");
}

TEST_F(ExploreFlow, FailedDatabaseBesideASkippedOneIsDroppedWithItsHome) {
  add(u"BROKEN", u"Home1");
  add(u"OLD", u"Home1");
  world_.behaviour[u"BROKEN"].refuse = true;
  world_.behaviour[u"OLD"].below11 = true;
  EXPECT_EQ(run(), std::string(kEnv) + " />");
}

TEST_F(ExploreFlow, TempSidAloneGivesAnEmptyHomeAndIsNeverConnected) {
  add(u"TreloTmp1", u"Home1");
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Home1\" version=\"\" path=\"\" desc=\"\" /></OracleOverall>");
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(ExploreFlow, TempPrefixIsCaseSensitive) {
  add(u"trelotmp1", u"Home1");
  run();
  EXPECT_FALSE(world_.calls.empty());
}

TEST_F(ExploreFlow, DatabaseWithATempNameIsSkippedAndItsHomeDropped) {
  dsl_test::capture_log_t log;
  add(u"SCRATCH", u"Home1");
  world_.behaviour[u"SCRATCH"].databaseName = u"TreloTmp_restore";
  EXPECT_EQ(run(), std::string(kEnv) + " />");
  const auto lines = dsl_test::plain_log(log);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "Database (SID: SCRATCH) skipped from data collection"),
            lines.end());
}

TEST_F(ExploreFlow, AsmInstanceIsNotSkippedForItsDatabaseName) {
  add(u"+ASM", u"Grid", u"C:\\g", true);
  world_.behaviour[u"+ASM"].databaseName = u"TreloTmp";
  EXPECT_NE(run().find("<asm sid=\"+ASM\" />"), std::string::npos);
}

TEST_F(ExploreFlow, Version10IsSkippedUnlessSupported) {
  add(u"OLD", u"Home1");
  world_.behaviour[u"OLD"].below11 = true;
  EXPECT_EQ(run(), std::string(kEnv) + " />");
  set_config(false, /*support10=*/true);
  EXPECT_NE(run().find("sid=\"OLD\""), std::string::npos);
}

TEST_F(ExploreFlow, SkippedDatabaseWithoutArchiveLogIsRecordedForTheVssWriter) {
  add(u"NOARCH_SKIP", u"Home1");
  add(u"ARCH_SKIP", u"Home1");
  world_.behaviour[u"NOARCH_SKIP"].below11 = true;
  world_.behaviour[u"NOARCH_SKIP"].archiveLog = false;
  world_.behaviour[u"ARCH_SKIP"].below11 = true;
  run();
  EXPECT_TRUE(CVssState::instance().should_skip(u"NOARCH_SKIP"));
  EXPECT_FALSE(CVssState::instance().should_skip(u"ARCH_SKIP"));
}

TEST_F(ExploreFlow, FailureToReadTheLogModeOfASkippedDatabaseIsAnErrorRecord) {
  add(u"BROKEN", u"Home1");
  add(u"ORCL", u"Home1");
  world_.behaviour[u"BROKEN"].below11 = true;
  world_.behaviour[u"BROKEN"].optionsFail = true;
  const std::string text = run();
  EXPECT_NE(text.find("errorDescription=\"ORA-01507: database not mounted&#x0A;Failed to set "
                      "database VSS state\""),
            std::string::npos)
      << text;
}

TEST_F(ExploreFlow, InstanceNotOpenIsAnErrorRecordWithTheStateText) {
  dsl_test::capture_log_t log;
  add(u"BROKEN", u"Home1");
  world_.behaviour[u"BROKEN"].open = false;
  EXPECT_NE(run().find(broken_record("Oracle database instance state is not valid for property collection")),
            std::string::npos);
  EXPECT_EQ(world_.calls, (std::vector<std::string>{"BROKEN:connect sys", "BROKEN:open"}));
  const auto lines = dsl_test::plain_log(log);
  EXPECT_NE(std::find(lines.begin(), lines.end(),
                      "ERR |Oracle database instance state is not valid for property collection"),
            lines.end());
}

TEST_F(ExploreFlow, DatabaseNotActiveIsAnErrorRecord) {
  add(u"BROKEN", u"Home1");
  world_.behaviour[u"BROKEN"].active = false;
  EXPECT_NE(run().find(broken_record("Oracle database instance state is not valid for property collection")),
            std::string::npos);
}

TEST_F(ExploreFlow, DisableOracleProcessingListsNoInstanceAndDropsHomesWithSkips) {
  set_config(true);
  add(u"ORCL", u"Home1");
  add(u"BROKEN", u"Home2");
  add(u"DOWN", u"Home3");
  add(u"TreloTmp9", u"Home4");
  world_.behaviour[u"BROKEN"].refuse = true;
  world_.behaviour[u"DOWN"].open = false;
  EXPECT_EQ(run(), std::string(kEnv) +
                       "><home name=\"Home4\" version=\"\" path=\"\" desc=\"\" /></OracleOverall>");
}

TEST_F(ExploreFlow, HomesAreGroupedByNameInCodeUnitOrder) {
  add(u"A", u"alpha", u"C:\\a");
  add(u"Z", u"Zeta", u"C:\\z");
  add(u"B", u"Beta", u"C:\\b");
  const std::string text = run();
  const size_t zeta = text.find("name=\"Zeta\"");
  const size_t beta = text.find("name=\"Beta\"");
  const size_t alpha = text.find("name=\"alpha\"");
  ASSERT_NE(alpha, std::string::npos);
  EXPECT_LT(beta, zeta);
  EXPECT_LT(zeta, alpha);
}

TEST_F(ExploreFlow, TwoHomesWithOneNameMakeOneHomeWithPathFromTheFirstCollected) {
  add(u"FIRST", u"Same", u"C:\\one");
  add(u"OTHER", u"Different", u"C:\\x");
  add(u"SECOND", u"Same", u"C:\\two");
  const std::string text = run();
  EXPECT_EQ(text.find("name=\"Same\"", text.find("name=\"Same\"") + 1), std::string::npos);
  EXPECT_NE(text.find("<home name=\"Same\" version=\"19.0.0.0.0\" path=\"C:\\one\""),
            std::string::npos) << text;
  EXPECT_LT(text.find("sid=\"FIRST\""), text.find("sid=\"SECOND\""));
}

TEST_F(ExploreFlow, InputRecordReachesTheCollectorOfThatSidOnlyAndOptionIsPassedOn) {
  add(u"ORCL", u"Home1");
  add(u"SALES", u"Home1");
  const std::string text =
      run(u"<r><d sid=\"ORCL\" recId=\"17\" stamp=\"99\"/><d sid=\"sales\" recId=\"1\" stamp=\"1\"/></r>",
          /*option=*/true);
  ASSERT_TRUE(world_.seenRecords[u"ORCL"]);
  EXPECT_EQ(world_.seenRecords[u"ORCL"]->recId, u"17");
  EXPECT_FALSE(world_.seenRecords[u"SALES"]) << "the SID is matched with its case";
  EXPECT_NE(text.find("name=\"with-option\""), std::string::npos);
}

TEST_F(ExploreFlow, FailingCollectorGivesAnErrorRecordWithItsMessage) {
  add(u"BROKEN", u"Home1");
  world_.behaviour[u"BROKEN"].collectFails = true;
  EXPECT_NE(run().find(broken_record("ORA-00942: table or view does not exist")), std::string::npos);
}

TEST_F(ExploreFlow, BadInputFailsTheCallUnderTheFlowsTraceLine) {
  add(u"ORCL", u"Home1");
  const auto e = dsl_test::thrown<exc::exc_base_t>([&] { run(u"<r><d sid=\"ORCL\" recId=\"1\"/></r>"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(dsl_test::lines_of(*e),
            (std::vector<dsl_test::line_t>{
                dsl_test::plain("Attribute value is not specified. Attribute: [stamp]."),
                dsl_test::plain("Failed to parse explore db config"),
                dsl_test::trace("Failed to explore oracle instances.")}));
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(ExploreFlow, FailingRegistryScanFailsTheCall) {
  world_.homesFail = true;
  const auto e = dsl_test::thrown<exc::exc_base_t>([&] { run(); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->messages().back().text, "Failed to explore oracle instances.");
}

TEST_F(ExploreFlow, FailingEnvironmentFailsTheCallAfterTheInstances) {
  add(u"ORCL", u"Home1");
  world_.envFails = true;
  const auto e = dsl_test::thrown<exc::exc_base_t>([&] { run(); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->messages().back().text, "Failed to explore oracle instances.");
  EXPECT_FALSE(world_.calls.empty());
}

TEST_F(ExploreFlow, RenderedDocumentIsLoggedAsOneLine) {
  dsl_test::capture_log_t log;
  add(u"TreloTmp1", u"H");
  const std::string text = run();
  const auto lines = dsl_test::plain_log(log);
  EXPECT_NE(std::find(lines.begin(), lines.end(), text), lines.end());
  EXPECT_EQ(text.find('\n'), std::string::npos);
}

}  // namespace
