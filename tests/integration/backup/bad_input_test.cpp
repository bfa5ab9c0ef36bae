// Bad input from outside against a machine with databases: the failures the design names, and
// no database touched by a call that failed before it reached that database.
#include <gtest/gtest.h>

#include "backup_fixture.h"
#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_finish.h"

namespace backup_test {
namespace {

using specific::oracle::COracleManager;

class BadInputTest : public backup_test_t {
 protected:
  void SetUp() override {
    backup_test_t::SetUp();
    db_t d;
    d.sid = "ORCL";
    d.backup = "ACTIVE";
    use_machine({d});
  }
  std::string finish_failure(const std::u16string& document) {
    try {
      COracleManager::instance().finish(document, {});
    } catch (const exc::exc_base_t& e) {
      return e.what();
    }
    return "<no failure>";
  }
  void expect_untouched() {
    EXPECT_TRUE(statements().empty()) << journal_text();
    EXPECT_TRUE(calls_of("OCIServerAttach").empty());
    EXPECT_TRUE(in_backup("ORCL"));
  }
};

TEST_F(BadInputTest, FinishOfTextThatIsNoXmlFailsAndTouchesNothing) {
  EXPECT_NE(finish_failure(u"this is not xml").find("XML error"), std::string::npos);
  expect_untouched();
}

TEST_F(BadInputTest, FinishOfADocumentWithoutDatabasesFailsAndTouchesNothing) {
  EXPECT_NE(finish_failure(u"<dbs/>").find("There is no node with the specified name: [databases]."),
            std::string::npos);
  expect_untouched();
}

TEST_F(BadInputTest, FinishOfADocumentWithARecordWithoutPdbsTouchesNotEvenTheRecordsBeforeIt) {
  const std::u16string good = document_of({record("ORCL", 2)});
  std::u16string text = good.substr(0, good.size() - std::u16string(u"</databases>").size()) +
                        u"<database sid=\"X\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"1\"/></databases>";
  EXPECT_NE(finish_failure(text).find("There is no node with the specified name: [pdbs]."),
            std::string::npos);
  expect_untouched();
}

TEST_F(BadInputTest, FinishOfActionAbcFailsWithTheValueTextAndTouchesNothing) {
  std::u16string text = document_of({record("ORCL", 2)});
  text.replace(text.find(u"action=\"2\""), 10, u"action=\"abc\"");
  EXPECT_NE(finish_failure(text).find("Attribute value is not specified. Attribute: [action]."),
            std::string::npos);
  expect_untouched();
}

TEST_F(BadInputTest, FinishOfActionSevenSucceedsAndTouchesNothing) {
  EXPECT_EQ(finish_failure(document_of({record("ORCL", 7)})), "<no failure>");
  expect_untouched();
  EXPECT_TRUE(log_contains("Unexpected backup action: 7"));
}

TEST_F(BadInputTest, FinishOfTenThousandRecordsWalksThemAll) {
  std::vector<specific::oracle::SDbPrepareInfo> records;
  for (int i = 0; i < 10000; ++i) records.push_back(record("S" + std::to_string(i), 1));
  EXPECT_EQ(finish_failure(document_of(records)), "<no failure>");
  size_t inactive = 0;
  for (const auto& line : log_lines()) inactive += line == "Database is inactive. Nothing to do.";
  EXPECT_EQ(inactive, 10000u);
  expect_untouched();
}

TEST_F(BadInputTest, PrepareWithAConfigWithoutDatabasesFailsBeforeAnyDatabaseAndWritesNoMeta) {
  try {
    COracleManager::instance().prepare(u"<sids><database sid=\"ORCL\"/></sids>", {}, u"", u"");
    FAIL() << "no failure";
  } catch (const exc::exc_base_t& e) {
    EXPECT_NE(std::string(e.what()).find("There is no node with the specified name: [databases]."
                                         "\n--tr:Failed to prepare dbs for backup"
                                         "\n--tr:Oracle manager failed to prepare dbs for backup"),
              std::string::npos) << e.what();
  }
  expect_untouched();
  EXPECT_FALSE(meta_exists());
}

TEST_F(BadInputTest, PrepareWithAConfigChildWithoutSidFailsBeforeAnyDatabase) {
  EXPECT_ANY_THROW(COracleManager::instance().prepare(u"<databases><database/></databases>", {}, u"", u""));
  expect_untouched();
}

TEST_F(BadInputTest, RestoreWithAnEmptyMetaFileDoesNothingAndSucceeds) {
  folder_->raw_mkdir(u"OracleLogBackup");
  folder_->raw_write(u"OracleLogBackup\\OracleMeta.xml", "");
  EXPECT_NO_THROW(COracleManager::instance().do_restore());
  expect_untouched();
  EXPECT_FALSE(meta_exists());
}

TEST_F(BadInputTest, RestoreWithATruncatedMetaFileWarnsAndTouchesNothing) {
  folder_->raw_mkdir(u"OracleLogBackup");
  folder_->raw_write(u"OracleLogBackup\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRhdGFiYXNl");
  EXPECT_NO_THROW(COracleManager::instance().do_restore());
  EXPECT_TRUE(log_contains("Failed to get restore meta content: "));
  expect_untouched();
  EXPECT_FALSE(meta_exists());
}

TEST_F(BadInputTest, RestoreWithAMetaFileThatIsNotBase64FailsToReadTheShortenedDocument) {
  // Decoding stops at the first character outside the alphabet; the text that came out is no
  // document, so the walk fails before any database, and the file is gone all the same.
  folder_->raw_mkdir(u"OracleLogBackup");
  folder_->raw_write(u"OracleLogBackup\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRh*not base64*\" />");
  try {
    COracleManager::instance().do_restore();
    FAIL() << "no failure";
  } catch (const exc::exc_base_t& e) {
    EXPECT_NE(std::string(e.what()).find("--tr:Failed to finish dbs backup\n--tr:Oracle manager failed to do db restore"),
              std::string::npos) << e.what();
  }
  expect_untouched();
  EXPECT_FALSE(meta_exists());
}

TEST_F(BadInputTest, RestoreWithATenMebibyteMetaFileWalksEveryRecord) {
  std::vector<specific::oracle::SDbPrepareInfo> records;
  for (int i = 0; i < 70000; ++i) records.push_back(record("S" + std::to_string(i), 5));
  specific::oracle::CDbsBackupXml::save_meta(specific::oracle::CDbsBackupXml::meta_path(),
                                             document_of(records), {}, u"", u"");
  ASSERT_GE(folder_->raw_read(u"OracleLogBackup\\OracleMeta.xml").size(), 10u * 1024 * 1024);
  EXPECT_NO_THROW(COracleManager::instance().do_restore());
  size_t skipped = 0;
  for (const auto& line : log_lines()) skipped += line == "Oracle version is not supported. Nothing to do.";
  EXPECT_EQ(skipped, 70000u);
  expect_untouched();
}

}  // namespace
}  // namespace backup_test
