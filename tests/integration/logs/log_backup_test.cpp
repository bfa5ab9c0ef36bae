// The log backup against the simulated client: the bookmark road, what is copied and what is
// not, the folder, the flush, and the failures that fail the whole call.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <map>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "frame/oracle_manager.h"
#include "logs_fixture.h"
#include "support/thrown.h"
#include "logs_scenario.h"

namespace logs_test {
namespace {

using specific::oracle::COracleManager;
using specific::oracle::conn_t;

struct listed_t {
  std::map<std::string, std::string> attrs;
};

std::vector<listed_t> parse_list(const std::u16string& text) {
  std::vector<listed_t> result;
  const auto doc = xml::parse(util::to_utf8(text));
  const auto root = xml::child(xml::root_ref(doc), "archived_logs");
  for (auto e = xml::first_child(root); e; e = xml::next_sibling(e)) {
    listed_t l;
    for (const char* name : {"logPath", "size", "seqNum", "recId", "xmlLogPath", "isLogCopied",
                             "creationUsn", "dbId", "sid", "homePath", "nextTimeUtc"}) {
      std::string v;
      if (xml::query_attr(e, name, v)) l.attrs[name] = v;
    }
    result.push_back(l);
  }
  return result;
}

using LogBackupTest = logs_test_t;

TEST_F(LogBackupTest, BookmarkRoadTakesEveryLogFirstAndOnlyTheNewOnesNext) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 5;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::u16string home = util::from_utf8(m.home);

  const std::u16string first = COracleManager::instance().backup_logs(home, u"ORCL", u"u1", u"", conn_t());
  const auto firstList = parse_list(first);
  // The ten logs of the scenario and the two of the flush (one per thread).
  ASSERT_EQ(firstList.size(), 12u) << util::to_utf8(first);
  EXPECT_TRUE(log_has("Found 12 log files with seq number above "));
  uint64_t bookmark = 0;
  for (const auto& l : firstList) bookmark = std::max<uint64_t>(bookmark, std::stoull(l.attrs.at("recId")));
  EXPECT_EQ(bookmark, 12u);

  const std::u16string second = COracleManager::instance().backup_logs(
      home, u"ORCL", u"u2", util::from_utf8(std::to_string(bookmark)), conn_t());
  const auto secondList = parse_list(second);
  ASSERT_EQ(secondList.size(), 2u) << util::to_utf8(second);
  for (const auto& l : secondList) {
    EXPECT_GT(std::stoull(l.attrs.at("recId")), bookmark);
    EXPECT_EQ(l.attrs.at("creationUsn"), "u2");
    EXPECT_EQ(l.attrs.at("dbId"), "1559187620");
    EXPECT_EQ(l.attrs.at("sid"), "ORCL");
    EXPECT_EQ(l.attrs.at("homePath"), m.home);
  }
  const auto sql = sql_lines();
  EXPECT_NE(std::find(sql.begin(), sql.end(),
                      "SELECT FIRST_CHANGE#, TO_CHAR(SYS_EXTRACT_UTC(CAST(FIRST_TIME AS TIMESTAMP)), "
                      "'yyyy/mm/dd hh24:mi:ss'), NEXT_CHANGE#, TO_CHAR(SYS_EXTRACT_UTC(CAST(NEXT_TIME "
                      "AS TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), NAME, SEQUENCE#, RECID, STAMP FROM "
                      "V$ARCHIVED_LOG WHERE RECID > 12"),
            sql.end());
}

TEST_F(LogBackupTest, EmptyBookmarkSelectsWithoutWhereAndIncludesDeletedLogs) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 6;
  o.deletedPercent = 50;
  o.seed = 3;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  const size_t named = std::count_if(m.logs.begin(), m.logs.end(),
                                     [](const generated_log_t& l) { return !l.deleted; });
  // A deleted log has no NAME, so the row is left out by the query layer, not by a filter.
  EXPECT_EQ(list.size(), named + 1);
  const auto sql = sql_lines();
  const auto select = std::find_if(sql.begin(), sql.end(), [](const std::string& s) {
    return s.rfind("SELECT FIRST_CHANGE#", 0) == 0;
  });
  ASSERT_NE(select, sql.end());
  EXPECT_EQ(select->substr(select->size() - 15), "V$ARCHIVED_LOG ");
  EXPECT_EQ(select->find("STATUS"), std::string::npos);
}

TEST_F(LogBackupTest, BookmarkAtTheTopGivesAnEmptyListAndACountOfZero) {
  const auto m = generate_logs_machine(*folder_, scenario_options_t());
  use_scenario(m.xml);
  const std::u16string text = COracleManager::instance().backup_logs(
      util::from_utf8(m.home), u"ORCL", u"", u"100000", conn_t());
  EXPECT_EQ(text, u"<archived_logs />");
  EXPECT_TRUE(log_has("Found 0 log files with seq number above 100000"));
}

TEST_F(LogBackupTest, BookmarkThatIsNoNumberFailsBeforeAnyStatement) {
  const auto m = generate_logs_machine(*folder_, scenario_options_t());
  use_scenario(m.xml);
  for (const std::u16string bad : {u"12 OR 1=1", u"-1", u"1e3", u" 12", u"abc"}) {
    const std::string text = dsl_test::thrown_text([&] {
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", bad, conn_t());
    });
    EXPECT_NE(text.find("is not a decimal number"), std::string::npos) << text;
    EXPECT_NE(text.find("Oracle manager failed to backup archived logs"), std::string::npos);
  }
  EXPECT_TRUE(sql_lines().empty()) << journal_text();
}

TEST_F(LogBackupTest, LocalLogWithoutStagingIsDescribedWhereItLies) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 2;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  ASSERT_EQ(list.size(), 3u);
  for (const auto& l : list) {
    EXPECT_EQ(l.attrs.at("isLogCopied"), "false");
    EXPECT_EQ(l.attrs.at("logPath").rfind(m.archFolder, 0), 0u) << l.attrs.at("logPath");
  }
  EXPECT_EQ(list[0].attrs.at("size"), std::to_string(m.logs[0].blocks * 512));
  // Only the three descriptions were created in the logs folder.
  const auto files = files_in("logs");
  EXPECT_EQ(files.size(), 3u);
  for (const auto& f : files) EXPECT_EQ(f.substr(f.size() - 4), ".xml") << f;
}

TEST_F(LogBackupTest, LocalLogWithStagingIsCopiedByteForByte) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 3;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  configure(folder_->path(u"logs\\"), true);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  ASSERT_EQ(list.size(), 4u);
  for (size_t i = 0; i < 3; ++i) {
    const auto& l = list[i];
    EXPECT_EQ(l.attrs.at("isLogCopied"), "true");
    EXPECT_EQ(l.attrs.at("logPath").rfind(base() + "logs\\{", 0), 0u);
    EXPECT_EQ(l.attrs.at("xmlLogPath"), l.attrs.at("logPath") + ".xml");
    const auto rel = [&](const std::string& p) { return util::from_utf8(p.substr(base().size())); };
    EXPECT_EQ(folder_->raw_read(rel(l.attrs.at("logPath"))),
              folder_->raw_read(rel(m.logs[i].fileWindowsPath)));
  }
  EXPECT_EQ(files_in("logs").size(), 8u);
}

TEST_F(LogBackupTest, AsmLogIsCopiedEvenWithoutStaging) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 4;
  o.asmPercent = 100;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  ASSERT_EQ(list.size(), 5u);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(list[i].attrs.at("isLogCopied"), "true");
    EXPECT_EQ(list[i].attrs.at("size"), std::to_string(m.logs[i].blocks * 512));
  }
  const std::string sql = journal_text();
  EXPECT_NE(sql.find("DBMS_FILE_TRANSFER.COPY_FILE"), std::string::npos);
}

TEST_F(LogBackupTest, DatabaseNotOpenGivesAnEmptyListAfterTheChecksOnly) {
  scenario_options_t o;
  o.state = "mounted";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  EXPECT_EQ(COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()),
            u"<archived_logs />");
  EXPECT_EQ(sql_lines(), (std::vector<std::string>{"SELECT DBID FROM V$DATABASE",
                                                   "SELECT STATUS FROM V$INSTANCE"}));
}

TEST_F(LogBackupTest, ArchiveLogAllFailingIsOnlyAWarning) {
  scenario_options_t o;
  o.extraInstanceXml = "    <fault on=\"execute\" sql=\"ALTER SYSTEM ARCHIVE LOG ALL\" error=\"271\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  EXPECT_EQ(list.size(), 42u);
  EXPECT_TRUE(log_has("WARN|Failed to archive logs all"));
}

TEST_F(LogBackupTest, ArchiveLogCurrentFailingFailsTheCall) {
  scenario_options_t o;
  o.extraInstanceXml =
      "    <fault on=\"execute\" sql=\"ALTER SYSTEM ARCHIVE LOG CURRENT\" error=\"258\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::string text = dsl_test::thrown_text([&] {
    COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  });
  EXPECT_NE(text.find("Failed to archive logs current"), std::string::npos) << text;
  EXPECT_NE(text.find("Failed to backup logs to path: " + base() + "logs\\"), std::string::npos);
}

TEST_F(LogBackupTest, AsmCopyErrorFailsTheCallWithTheWarningAndNoDescription) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 3;
  o.asmPercent = 100;
  o.extraInstanceXml =
      "    <fault on=\"execute\" sql=\"DBMS_FILE_TRANSFER\" match=\"contains\" error=\"19505\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::string text = dsl_test::thrown_text([&] {
    COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  });
  EXPECT_TRUE(log_has("WARN|Failed to copy archived log from [+FRA/ORCL/ARCHIVELOG/"));
  EXPECT_NE(text.find("thread 1, sequence 100, RECID 1"), std::string::npos) << text;
  EXPECT_NE(text.find("could not be copied to the logs folder"), std::string::npos) << text;
  EXPECT_NE(text.find("Oracle manager failed to backup archived logs"), std::string::npos);
  for (const auto& f : files_in("logs")) EXPECT_EQ(f.find(".xml"), std::string::npos) << f;
}

TEST_F(LogBackupTest, LocalCopyOfAMissingFileFailsTheCallWithNoDescription) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 4;
  o.missingPercent = 100;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  configure(folder_->path(u"logs\\"), true);
  const std::string text = dsl_test::thrown_text([&] {
    COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  });
  EXPECT_TRUE(log_has("WARN|Failed to copy archived log from [" + m.logs[0].name + "]"));
  EXPECT_NE(text.find("crosscheck"), std::string::npos) << text;
  EXPECT_TRUE(files_in("logs").empty());
}

TEST_F(LogBackupTest, ListedLogWhoseFileIsGoneFailsTheCallNamingIt) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 3;
  const auto m = generate_logs_machine(*folder_, o);
  // The fourth log's file goes behind the database's back.
  std::error_code ec;
  std::filesystem::remove(native_path(*folder_, m.logs[3].fileWindowsPath), ec);
  use_scenario(m.xml);
  const std::string text = dsl_test::thrown_text([&] {
    COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  });
  const auto& gone = m.logs[3];
  EXPECT_NE(text.find("The archived log of thread " + std::to_string(gone.thread) + ", sequence " +
                      std::to_string(gone.sequence) + ", RECID " + std::to_string(gone.recid) +
                      " is listed by the database, but its file [" + gone.name + "]"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("crosscheck its archived logs and delete the expired ones"), std::string::npos);
  EXPECT_TRUE(files_in("logs").empty());
}

TEST_F(LogBackupTest, LogsFolderIsCreatedWholeWithOrWithoutATrailingSeparator) {
  const auto m = generate_logs_machine(*folder_, scenario_options_t());
  use_scenario(m.xml);
  configure(folder_->path(u"deep\\er\\logs"), false);
  COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  EXPECT_TRUE(folder_->raw_is_directory(u"deep\\er\\logs"));
  EXPECT_EQ(files_in("deep\\er\\logs").size(), 42u);
  configure(folder_->path(u"other\\logs\\"), false);
  COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  EXPECT_TRUE(folder_->raw_is_directory(u"other\\logs"));
}

TEST_F(LogBackupTest, SeveralThreadsComeAsRowsOfOneList) {
  scenario_options_t o;
  o.threads = 3;
  o.logsPerThread = 4;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const auto list = parse_list(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t()));
  EXPECT_EQ(list.size(), 15u);
  size_t seq100 = 0;
  for (const auto& l : list) seq100 += l.attrs.at("seqNum") == "100" ? 1 : 0;
  EXPECT_EQ(seq100, 3u);
}

TEST_F(LogBackupTest, SessionFailureIsWrappedByTheManagersLine) {
  const auto m = generate_logs_machine(*folder_, scenario_options_t());
  use_scenario(m.xml);
  const std::string text = dsl_test::thrown_text([&] {
    COracleManager::instance().backup_logs(u"C:\\nowhere", u"NOSUCH", u"", u"", conn_t());
  });
  EXPECT_NE(text.find("Oracle manager failed to backup archived logs"), std::string::npos) << text;
}

}  // namespace
}  // namespace logs_test
