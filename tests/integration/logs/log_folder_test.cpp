// Enumeration and removal through the manager after real backups: the folder is the index,
// the meta file's element comes along, and removal takes copies and descriptions away but
// never the database's own files.
#include <gtest/gtest.h>


#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "logs_fixture.h"
#include "support/thrown.h"
#include "logs_scenario.h"

namespace logs_test {
namespace {

using specific::oracle::COracleManager;
using specific::oracle::conn_t;

size_t count_of(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

using LogFolderTest = logs_test_t;

TEST_F(LogFolderTest, EnumAfterABackupListsEveryDescriptionAndTheMetaFilesElement) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 3;
  o.asmPercent = 50;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  folder_->raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRhdGFiYXNlcyAvPg==\" />");
  const std::string list = util::to_utf8(COracleManager::instance().enum_logs());
  EXPECT_EQ(count_of(list, "<archived_log "), 8u) << list;
  EXPECT_EQ(count_of(list, "<restore "), 1u) << list;
}

TEST_F(LogFolderTest, TwoRunsWithTheSameBookmarkGiveTwoDescriptionsOfOneLog) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 2;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  const std::string list = util::to_utf8(COracleManager::instance().enum_logs());
  EXPECT_EQ(count_of(list, "recId=\"1\""), 2u) << list;
}

TEST_F(LogFolderTest, RemoveOfTheBackupsListTakesCopiesAndDescriptionsButNotTheDatabasesFiles) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 3;
  o.asmPercent = 50;
  o.seed = 9;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::u16string list =
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"", u"", conn_t());
  folder_->raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"x\" />");
  COracleManager::instance().remove_logs_in_temp(list);
  EXPECT_EQ(files_in("logs"), (std::vector<std::string>{"OracleMeta.xml"}));
  for (const auto& l : m.logs) {
    EXPECT_TRUE(folder_->raw_exists(util::from_utf8(l.fileWindowsPath.substr(base().size()))))
        << l.fileWindowsPath;
  }
  EXPECT_EQ(COracleManager::instance().enum_logs(),
            u"<archived_logs><restore dbPrepareXml=\"x\" /></archived_logs>");
}

TEST_F(LogFolderTest, RemoveOfTheEnumeratedListStopsAtTheMetaFilesElement) {
  folder_->raw_mkdir(u"logs");
  folder_->raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"x\" />");
  const std::u16string list = COracleManager::instance().enum_logs();
  try {
    COracleManager::instance().remove_logs_in_temp(list);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& e) {
    const std::string text = e.what();
    EXPECT_NE(text.find("Attribute value is not specified. Attribute: [logPath]."), std::string::npos);
    EXPECT_NE(text.find("Failed to save oracle log description"), std::string::npos);
    EXPECT_NE(text.find("Oracle manager failed to remove logs in temp"), std::string::npos);
  }
  EXPECT_TRUE(folder_->raw_exists(u"logs\\OracleMeta.xml"));
}

TEST_F(LogFolderTest, EnumOfAMissingFolderIsEmptyAndCreatesNothing) {
  EXPECT_EQ(COracleManager::instance().enum_logs(), u"<archived_logs />");
  EXPECT_FALSE(folder_->raw_exists(u"logs"));
}

TEST_F(LogFolderTest, UnparsableDescriptionFailsTheEnumWithTheManagersLine) {
  folder_->raw_mkdir(u"logs");
  folder_->raw_write(u"logs\\bad.xml", "<archived_log");
  try {
    COracleManager::instance().enum_logs();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& e) {
    const std::string text = e.what();
    EXPECT_NE(text.find("Failed to enum oracle logs description"), std::string::npos) << text;
    EXPECT_NE(text.find("Oracle manager failed to enum logs"), std::string::npos) << text;
  }
}

}  // namespace
}  // namespace logs_test
