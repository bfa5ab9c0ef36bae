// The OracleEntries document and the gather list behind OracleGatherVssInfo: the attributes of
// an entry and their order, the entry of a failed probe, the list filled once and kept until
// it is dropped, and the instances that are no databases left out.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "common/text/convert.h"
#include "oracle/discovery/vss_entries_doc.h"
#include "oracle/discovery/vss_gather.h"
#include "support/capture_receiver.h"

namespace {

using specific::oracle::gather_vss_info;
using specific::oracle::render_vss_entries;
using specific::oracle::SOracleSid;
using specific::oracle::SVssInfoEntry;
using specific::oracle::vss_info_list_ptr_t;
using specific::oracle::vss_info_list_t;

SVssInfoEntry valid_entry(const std::u16string& sid, const std::u16string& name) {
  SVssInfoEntry e;
  e.sid = sid;
  e.home = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
  e.homeName = u"OraDB19Home1";
  e.dbName = name;
  e.valid = true;
  return e;
}

std::string render(const vss_info_list_t& list) { return util::to_utf8(render_vss_entries(list)); }

TEST(VssEntriesDocument, EmptyListIsTheRootAlone) {
  EXPECT_EQ(render({}), "<OracleEntries />");
}

TEST(VssEntriesDocument, ValidEntryCarriesItsAttributesInTableOrder) {
  SVssInfoEntry e = valid_entry(u"ORCL", u"ORCL");
  e.instanceOpen = true;
  e.dbActive = true;
  e.dbOpenReadonly = false;
  e.dbArchiveLogsOn = true;
  EXPECT_EQ(render({e}),
            "<OracleEntries><OracleEntry sid=\"ORCL\" db_name=\"ORCL\" instance_open=\"true\" "
            "db_open_readonly=\"false\" db_archive_logs_on=\"true\" db_active=\"true\" />"
            "</OracleEntries>");
}

TEST(VssEntriesDocument, EachFlagLandsInItsOwnAttribute) {
  SVssInfoEntry e = valid_entry(u"SALES", u"SALESDB");
  e.dbOpenReadonly = true;
  EXPECT_EQ(render({e}),
            "<OracleEntries><OracleEntry sid=\"SALES\" db_name=\"SALESDB\" instance_open=\"false\" "
            "db_open_readonly=\"true\" db_archive_logs_on=\"false\" db_active=\"false\" />"
            "</OracleEntries>");
}

TEST(VssEntriesDocument, EntryThatIsNotValidHasExactlySidAndError) {
  SVssInfoEntry e = valid_entry(u"TEST", u"TEST");
  e.valid = false;
  e.instanceOpen = true;  // whatever the other fields hold, only the error is shown
  e.error = u"ORA-12560: TNS:protocol adapter error";
  EXPECT_EQ(render({e}),
            "<OracleEntries><OracleEntry sid=\"TEST\" "
            "error=\"ORA-12560: TNS:protocol adapter error\" /></OracleEntries>");
}

TEST(VssEntriesDocument, EntriesFollowListOrderAndTextIsEscaped) {
  SVssInfoEntry bad;
  bad.sid = u"B";
  bad.error = u"a <b> & \"c\"";
  EXPECT_EQ(render({valid_entry(u"Z", u"Z"), bad}),
            "<OracleEntries><OracleEntry sid=\"Z\" db_name=\"Z\" instance_open=\"false\" "
            "db_open_readonly=\"false\" db_archive_logs_on=\"false\" db_active=\"false\" />"
            "<OracleEntry sid=\"B\" error='a &lt;b&gt; &amp; &quot;c&quot;' /></OracleEntries>");
}

SOracleSid instance(const std::u16string& sid, bool isAsm = false) {
  SOracleSid s;
  s.sid = sid;
  s.home = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
  s.homeName = u"OraDB19Home1";
  s.isAsm = isAsm;
  return s;
}

// Stand-ins for discovery and the probe that count their calls.
struct gatherer_t {
  std::vector<SOracleSid> instances;
  int discoveries = 0;
  std::vector<std::u16string> probed;
  bool discovery_fails = false;

  std::u16string gather(vss_info_list_ptr_t& list) {
    return gather_vss_info(
        list,
        [this]() -> std::vector<SOracleSid> {
          ++discoveries;
          if (discovery_fails) throw std::runtime_error("Failed to create oracle homes.");
          return instances;
        },
        [this](const SOracleSid& s) {
          probed.push_back(s.sid);
          SVssInfoEntry e = valid_entry(s.sid, s.sid + u"DB");
          e.instanceOpen = true;
          return e;
        });
  }
};

TEST(VssGatherList, FirstCallFillsTheListWithOneEntryPerDatabaseInDiscoveryOrder) {
  gatherer_t g;
  g.instances = {instance(u"SALES"), instance(u"+ASM", true), instance(u"ORCL")};
  vss_info_list_ptr_t list;
  dsl_test::capture_log_t log;
  const std::string text = util::to_utf8(g.gather(list));
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2u);
  EXPECT_EQ((*list)[0].sid, u"SALES");
  EXPECT_EQ((*list)[1].sid, u"ORCL");
  EXPECT_EQ(g.probed, (std::vector<std::u16string>{u"SALES", u"ORCL"}));
  EXPECT_EQ(text, render(*list));
  EXPECT_EQ(text.find("+ASM"), std::string::npos);
  EXPECT_EQ(dsl_test::plain_log(log), (std::vector<std::string>{"Gathering oracle VSS info",
                                                                "Gathering oracle VSS info ok."}));
}

TEST(VssGatherList, LaterCallsRenderTheKeptListWithoutProbingAgain) {
  gatherer_t g;
  g.instances = {instance(u"ORCL")};
  vss_info_list_ptr_t list;
  const std::u16string first = g.gather(list);
  g.instances = {instance(u"ORCL"), instance(u"SALES")};  // the machine changes meanwhile
  dsl_test::capture_log_t log;
  EXPECT_EQ(g.gather(list), first);
  EXPECT_EQ(g.discoveries, 1);
  EXPECT_EQ(g.probed.size(), 1u);
  EXPECT_TRUE(log.receiver().writes().empty());
}

TEST(VssGatherList, DroppedListIsFilledAnewByTheNextCall) {
  gatherer_t g;
  g.instances = {instance(u"ORCL")};
  vss_info_list_ptr_t list;
  g.gather(list);
  list.reset();  // what OracleVssStopLib does
  g.instances = {instance(u"ORCL"), instance(u"SALES")};
  const std::string text = util::to_utf8(g.gather(list));
  EXPECT_EQ(g.discoveries, 2);
  ASSERT_TRUE(list);
  EXPECT_EQ(list->size(), 2u);
  EXPECT_NE(text.find("sid=\"SALES\""), std::string::npos);
}

TEST(VssGatherList, MachineWithoutDatabasesKeepsAnEmptyList) {
  gatherer_t g;
  g.instances = {instance(u"+ASM", true)};
  vss_info_list_ptr_t list;
  EXPECT_EQ(util::to_utf8(g.gather(list)), "<OracleEntries />");
  ASSERT_TRUE(list);
  EXPECT_TRUE(list->empty());
  g.gather(list);
  EXPECT_EQ(g.discoveries, 1);
}

TEST(VssGatherList, FailedDiscoveryFailsTheCallAndLeavesTheListEmpty) {
  gatherer_t g;
  g.discovery_fails = true;
  vss_info_list_ptr_t list;
  dsl_test::capture_log_t log;
  EXPECT_THROW(g.gather(list), std::runtime_error);
  EXPECT_FALSE(list);
  EXPECT_EQ(dsl_test::plain_log(log), (std::vector<std::string>{
                                          "Gathering oracle VSS info",
                                          "Gathering oracle VSS info Failed."}));
  g.discovery_fails = false;
  g.instances = {instance(u"ORCL")};
  g.gather(list);
  EXPECT_EQ(g.discoveries, 2);
  EXPECT_TRUE(list);
}

}  // namespace
