// The preparation document and the meta file: attributes and their order, what is read back
// and what is not, the failure texts, and the meta file's save, load and remove.
#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "common/text/base64.h"
#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "oracle/backup/dbs_backup_xml.h"
#include "support/capture_receiver.h"
#include "support/test_folder.h"

namespace {

using specific::oracle::CDbsBackupXml;
using specific::oracle::COracleConfig;
using specific::oracle::SDbPrepareInfo;
using specific::oracle::SPdbInfo;

std::shared_ptr<SDbPrepareInfo> info(const std::u16string& sid, uint32_t action) {
  auto i = std::make_shared<SDbPrepareInfo>();
  i->sid = sid;
  i->home = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
  i->action = action;
  i->timeUtc = u"2024-03-05T10:00:00";
  i->scn = u"2741980";
  return i;
}

std::string failure_of(const std::u16string& text) {
  try {
    CDbsBackupXml::read_document(text);
  } catch (const exc::exc_base_t& e) {
    return e.what();
  }
  return "<no failure>";
}

TEST(PrepareDocument, RecordIsWrittenWithEveryAttributeInItsOrderAndAPdbsChild) {
  auto i = info(u"ORCL", 2);
  i->pdbs = {SPdbInfo{u"P1", u"READ WRITE"}, SPdbInfo{u"P2", u"MIGRATE"}};
  EXPECT_EQ(CDbsBackupXml::write_document({i}),
            u"<databases><database sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" "
            u"timeUtc=\"2024-03-05T10:00:00\" scn=\"2741980\" errMsg=\"\" action=\"2\" "
            u"BackupWithBackupState=\"true\"><pdbs><database name=\"P1\" mode=\"READ WRITE\" />"
            u"<database name=\"P2\" mode=\"MIGRATE\" /></pdbs></database></databases>");
}

TEST(PrepareDocument, NamesOutsideTheSystemCodePageComeBackExactly) {
  // Greek, CJK and a character outside the Basic Multilingual Plane: a finish must find the
  // database it prepared, whatever the machine's code page.
  auto i = info(u"\u03A9RCL", 2);
  i->home = u"C:\\\u65E5\u672C\\\U0001F600\\dbhome_1";
  i->pdbs = {SPdbInfo{u"P\u00C9\u03A3", u"READ WRITE"}};
  const auto back = CDbsBackupXml::read_document(CDbsBackupXml::write_document({i}));
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0]->sid, i->sid);
  EXPECT_EQ(back[0]->home, i->home);
  ASSERT_EQ(back[0]->pdbs.size(), 1u);
  EXPECT_EQ(back[0]->pdbs[0].name, i->pdbs[0].name);
}

TEST(PrepareDocument, EmptyListIsADatabasesElementWithoutChildren) {
  EXPECT_EQ(CDbsBackupXml::write_document({}), u"<databases />");
}

TEST(PrepareDocument, EmptyPdbListStillWritesThePdbsElementAndEmptyAttributes) {
  auto i = info(u"ORCL", 1);
  i->scn.clear();
  const std::u16string text = CDbsBackupXml::write_document({i});
  EXPECT_NE(text.find(u"scn=\"\""), std::u16string::npos);
  EXPECT_NE(text.find(u"<pdbs />"), std::u16string::npos);
}

TEST(PrepareDocument, FailedRecordSaysFalseAndLosesItsTextOnReading) {
  auto i = info(u"ORCL", 0);
  i->errMsg = u"ORA-01123: cannot start online backup <&>";
  const std::u16string text = CDbsBackupXml::write_document({i});
  EXPECT_NE(text.find(u"BackupWithBackupState=\"false\""), std::u16string::npos);
  EXPECT_NE(text.find(u"&lt;&amp;&gt;"), std::u16string::npos);
  const auto back = CDbsBackupXml::read_document(text);
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0]->action, 0u);
  EXPECT_EQ(back[0]->errMsg, u"");
}

TEST(PrepareDocument, VssRecordAlsoSaysBackupWithBackupState) {
  EXPECT_NE(CDbsBackupXml::write_document({info(u"ORCL", 4)}).find(u"BackupWithBackupState=\"true\""),
            std::u16string::npos);
}

TEST(PrepareDocument, EverythingWrittenButErrMsgIsReadBackInOrder) {
  auto a = info(u"A", 2);
  a->pdbs = {SPdbInfo{u"P1", u"READ ONLY"}};
  auto b = info(u"b", 6);
  b->scn.clear();
  const auto back = CDbsBackupXml::read_document(CDbsBackupXml::write_document({a, b}));
  ASSERT_EQ(back.size(), 2u);
  EXPECT_EQ(back[0]->sid, u"A");
  EXPECT_EQ(back[0]->home, a->home);
  EXPECT_EQ(back[0]->timeUtc, u"2024-03-05T10:00:00");
  EXPECT_EQ(back[0]->scn, u"2741980");
  EXPECT_EQ(back[0]->action, 2u);
  ASSERT_EQ(back[0]->pdbs.size(), 1u);
  EXPECT_EQ(back[0]->pdbs[0].name, u"P1");
  EXPECT_EQ(back[0]->pdbs[0].mode, u"READ ONLY");
  EXPECT_EQ(back[1]->sid, u"b");
  EXPECT_EQ(back[1]->scn, u"");
}

TEST(PrepareDocument, ChildrenOfAnyNameCountAndCommentsDoNot) {
  const auto back = CDbsBackupXml::read_document(
      u"<databases><!-- c --><x sid=\"A\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"1\"><pdbs/></x>"
      u"<database sid=\"B\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"5\"><pdbs/></database></databases>");
  ASSERT_EQ(back.size(), 2u);
  EXPECT_EQ(back[1]->action, 5u);
}

TEST(PrepareDocument, ReadingLogsTheWholeText) {
  dsl_test::capture_log_t log;
  CDbsBackupXml::read_document(u"<databases />");
  bool found = false;
  for (const auto& line : dsl_test::plain_log(log)) found = found || line == "XML: <databases />";
  EXPECT_TRUE(found);
}

TEST(PrepareDocument, TextThatIsNoXmlFails) {
  EXPECT_NE(failure_of(u"not xml at all").find("XML error"), std::string::npos);
}

TEST(PrepareDocument, MissingDatabasesFailsWithTheNodeText) {
  EXPECT_NE(failure_of(u"<other/>").find("There is no node with the specified name: [databases]."),
            std::string::npos);
}

TEST(PrepareDocument, RecordWithoutPdbsFailsWithTheNodeText) {
  EXPECT_NE(failure_of(u"<databases><database sid=\"A\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"1\"/></databases>")
                .find("There is no node with the specified name: [pdbs]."),
            std::string::npos);
}

TEST(PrepareDocument, MissingRequiredAttributeFailsWithTheAttributeText) {
  EXPECT_NE(failure_of(u"<databases><database sid=\"A\" timeUtc=\"t\" scn=\"\" action=\"1\"><pdbs/></database></databases>")
                .find("Attribute value is not specified. Attribute: [home]."),
            std::string::npos);
  EXPECT_NE(failure_of(u"<databases><database sid=\"A\" home=\"h\" timeUtc=\"t\" action=\"1\"><pdbs/></database></databases>")
                .find("Attribute value is not specified. Attribute: [scn]."),
            std::string::npos);
}

TEST(PrepareDocument, MissingActionGivesTheTypeTextAsItAlwaysHas) {
  EXPECT_NE(failure_of(u"<databases><database sid=\"A\" home=\"h\" timeUtc=\"t\" scn=\"\"><pdbs/></database></databases>")
                .find("Unexpected type of the attribute. Attribute: [action]."),
            std::string::npos);
}

TEST(PrepareDocument, ActionThatIsNoNumberGivesTheValueTextAsItAlwaysHas) {
  EXPECT_NE(failure_of(u"<databases><database sid=\"A\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"abc\"><pdbs/></database></databases>")
                .find("Attribute value is not specified. Attribute: [action]."),
            std::string::npos);
}

TEST(PrepareDocument, ActionSevenIsReadAsItStands) {
  const auto back = CDbsBackupXml::read_document(
      u"<databases><database sid=\"A\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"7\"><pdbs/></database></databases>");
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0]->action, 7u);
}

TEST(PrepareDocument, TenThousandRecordsAreReadInOrder) {
  std::u16string text = u"<databases>";
  for (int i = 0; i < 10000; ++i) {
    text += u"<database sid=\"S" + util::from_utf8(std::to_string(i)) +
            u"\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"1\"><pdbs/></database>";
  }
  text += u"</databases>";
  const auto back = CDbsBackupXml::read_document(text);
  ASSERT_EQ(back.size(), 10000u);
  EXPECT_EQ(back[9999]->sid, u"S9999");
}

TEST(PrepareDocument, TimeStampIsUtcInItsFixedForm) {
  EXPECT_EQ(CDbsBackupXml::time_utc_text(0), u"1970-01-01T00:00:00");
  EXPECT_EQ(CDbsBackupXml::time_utc_text(1709632800), u"2024-03-05T10:00:00");
  EXPECT_EQ(CDbsBackupXml::time_utc_text(951782400), u"2000-02-29T00:00:00");
  EXPECT_EQ(CDbsBackupXml::current_time_utc().size(), 19u);
}

TEST(PrepareDocument, ActionNamesAndUnknown) {
  EXPECT_STREQ(specific::oracle::action_name(0), "failure");
  EXPECT_STREQ(specific::oracle::action_name(1), "inactive");
  EXPECT_STREQ(specific::oracle::action_name(2), "backup");
  EXPECT_STREQ(specific::oracle::action_name(3), "shutdown");
  EXPECT_STREQ(specific::oracle::action_name(4), "vss");
  EXPECT_STREQ(specific::oracle::action_name(5), "oracleSkipVss");
  EXPECT_STREQ(specific::oracle::action_name(6), "oracleNoAction");
  EXPECT_STREQ(specific::oracle::action_name(7), "unknown");
}

// --- the meta file -------------------------------------------------------------------------------

class MetaFile : public ::testing::Test {
 protected:
  void SetUp() override {
    COracleConfig config;
    config.tempLogPath = folder_.path(u"logs\\");
    COracleConfig::replace_for_tests(config);
  }
  void TearDown() override { COracleConfig::replace_for_tests(COracleConfig()); }
  std::string meta_text() const { return folder_.raw_read(u"logs\\OracleMeta.xml"); }
  void load(std::u16string& document, specific::oracle::conn_t& conn, std::u16string& osUser,
            std::u16string& osPassword) {
    CDbsBackupXml::load_meta(CDbsBackupXml::meta_path(), document, conn, osUser, osPassword);
  }
  bool warned(const std::string& text) const {
    for (const auto& line : dsl_test::plain_log(log_)) {
      if (line.find(text) != std::string::npos) return true;
    }
    return false;
  }
  dsl_test::test_folder_t folder_;
  dsl_test::capture_log_t log_;
};

TEST_F(MetaFile, PathIsInTheTempLogFolderWhichIsCreated) {
  EXPECT_EQ(CDbsBackupXml::meta_path(), folder_.path(u"logs\\OracleMeta.xml"));
  EXPECT_TRUE(folder_.raw_is_directory(u"logs"));
}

TEST_F(MetaFile, PathJoinsATempFolderWithoutTrailingSeparator) {
  COracleConfig config;
  config.tempLogPath = folder_.path(u"nosep");
  COracleConfig::replace_for_tests(config);
  EXPECT_EQ(CDbsBackupXml::meta_path(), folder_.path(u"nosep\\OracleMeta.xml"));
}

TEST_F(MetaFile, WithoutCredentialsTheFileHoldsTheDocumentOnly) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {}, u"", u"");
  EXPECT_EQ(meta_text(), "<restore dbPrepareXml=\"" + util::base64_encode(std::string("<databases />")) + "\" />");
}

TEST_F(MetaFile, CredentialBlocksAreWrittenEmptyAndNoSecretReachesTheFile) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {"BACKUP", "s3cret-Pw"},
                           u"DOMAIN\\admin", u"b3MtcGFzcw==");
  const std::string text = meta_text();
  EXPECT_NE(text.find(" conn=\""), std::string::npos);
  EXPECT_NE(text.find(" os_conn=\""), std::string::npos);
  EXPECT_EQ(text.find("s3cret"), std::string::npos);
  EXPECT_EQ(text.find("BACKUP"), std::string::npos);
  EXPECT_EQ(text.find("admin"), std::string::npos);
  const std::string block = util::base64_decode(text.substr(text.find(" conn=\"") + 7,
                                                           text.find('"', text.find(" conn=\"") + 7) - text.find(" conn=\"") - 7));
  EXPECT_EQ(block, "<root u=\"\" p=\"\" />");
  for (const auto& line : dsl_test::plain_log(log_)) EXPECT_EQ(line.find("s3cret"), std::string::npos);
}

TEST_F(MetaFile, OsUserWithoutDatabaseUserGivesOsConnAlone) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {}, u"admin", u"");
  EXPECT_EQ(meta_text().find(" conn=\""), std::string::npos);
  EXPECT_NE(meta_text().find(" os_conn=\""), std::string::npos);
}

TEST_F(MetaFile, EmptyDocumentWritesNothing) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"", {}, u"", u"");
  EXPECT_FALSE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
}

TEST_F(MetaFile, SaveReplacesAnOlderFile) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"logs\\OracleMeta.xml", std::string(5000, 'x'));
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {}, u"", u"");
  EXPECT_EQ(meta_text().substr(0, 9), "<restore ");
  EXPECT_LT(meta_text().size(), 100u);
}

TEST_F(MetaFile, SaveThatCannotWriteIsAWarningAndNoFailure) {
  // A folder where the file should be: it can be neither removed as a file nor created.
  folder_.raw_mkdir(u"logs");
  folder_.raw_mkdir(u"logs\\OracleMeta.xml");
  folder_.raw_write(u"logs\\OracleMeta.xml\\keep", "x");
  EXPECT_NO_THROW(CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {}, u"", u""));
  EXPECT_TRUE(warned("WARN|Failed to save oracle backup meta"));
}

TEST_F(MetaFile, LoadGivesTheDocumentBackAndEmptyCredentials) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {"BACKUP", "s3cret-Pw"},
                           u"admin", u"cGFzcw==");
  std::u16string document;
  specific::oracle::conn_t conn{"x", "y"};
  std::u16string osUser = u"keep";
  std::u16string osPassword = u"keep";
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"<databases />");
  EXPECT_EQ(conn, (specific::oracle::conn_t{"", ""}));
  EXPECT_EQ(osUser, u"");
  EXPECT_EQ(osPassword, u"");
}

TEST_F(MetaFile, MissingFileLeavesTheOutputsUntouched) {
  std::u16string document = u"d";
  specific::oracle::conn_t conn{"u", "p"};
  std::u16string osUser = u"o";
  std::u16string osPassword = u"q";
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"d");
  EXPECT_EQ(conn.first, "u");
  EXPECT_EQ(osUser, u"o");
}

TEST_F(MetaFile, EmptyFileLeavesTheOutputsUntouchedWithoutWarning) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"logs\\OracleMeta.xml", "");
  std::u16string document = u"d", osUser, osPassword;
  specific::oracle::conn_t conn;
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"d");
  EXPECT_FALSE(warned("Failed to get restore meta content"));
}

TEST_F(MetaFile, TruncatedFileIsAWarningAndLeavesTheDocument) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRhdGFi");
  std::u16string document = u"d", osUser, osPassword;
  specific::oracle::conn_t conn;
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"d");
  EXPECT_TRUE(warned("WARN|Failed to get restore meta content: " + util::to_utf8(folder_.path(u"logs\\OracleMeta.xml"))));
}

TEST_F(MetaFile, ValueThatIsNotBase64StopsDecodingEarlyAndTheDocumentIsWhatCameOut) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRh!!!not base64\" />");
  std::u16string document, osUser, osPassword;
  specific::oracle::conn_t conn;
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"<da");
  // Reading that document then fails as any text that is no XML does.
  EXPECT_NE(failure_of(document).find("XML error"), std::string::npos);
}

TEST_F(MetaFile, FileWithoutRestoreIsAWarning) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"logs\\OracleMeta.xml", "<other/>");
  std::u16string document = u"d", osUser, osPassword;
  specific::oracle::conn_t conn;
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, u"d");
  EXPECT_TRUE(warned("There is no node with the specified name: [restore]."));
}

TEST_F(MetaFile, TenMebibyteFileIsReadWhole) {
  std::u16string big = u"<databases>";
  while (big.size() < 7u * 1024 * 1024) {
    big += u"<database sid=\"S\" home=\"h\" timeUtc=\"t\" scn=\"\" action=\"1\"><pdbs/></database>";
  }
  big += u"</databases>";
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), big, {}, u"", u"");
  EXPECT_GE(meta_text().size(), 9u * 1024 * 1024);
  std::u16string document, osUser, osPassword;
  specific::oracle::conn_t conn;
  load(document, conn, osUser, osPassword);
  EXPECT_EQ(document, big);
}

TEST_F(MetaFile, RemoveDeletesTheFileAndAMissingFileIsNoFailure) {
  CDbsBackupXml::save_meta(CDbsBackupXml::meta_path(), u"<databases />", {}, u"", u"");
  ASSERT_TRUE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
  CDbsBackupXml::remove_meta(CDbsBackupXml::meta_path());
  EXPECT_FALSE(folder_.raw_exists(u"logs\\OracleMeta.xml"));
  EXPECT_NO_THROW(CDbsBackupXml::remove_meta(CDbsBackupXml::meta_path()));
  EXPECT_FALSE(warned("Failed to remove restore meta file"));
}

TEST_F(MetaFile, RemoveThatFailsIsAWarning) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_mkdir(u"logs\\OracleMeta.xml");
  folder_.raw_write(u"logs\\OracleMeta.xml\\keep", "x");
  EXPECT_NO_THROW(CDbsBackupXml::remove_meta(CDbsBackupXml::meta_path()));
  EXPECT_TRUE(warned("WARN|Failed to remove restore meta file: "));
}

}  // namespace

namespace {

}  // namespace
