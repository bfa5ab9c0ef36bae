// The documents of the preparation against their schemas in docs/schemas, with xmllint (the
// host build runs it; under Wine there is no xmllint to call).
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "backup_fixture.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_prepare.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupPrepare;

class SchemaTest : public backup_test_t {
 protected:
  // xmllint's exit code for `text` against docs/schemas/<schema>.
  int validate(const std::string& text, const std::string& schema) {
    const auto file = dir_ / ("doc-" + std::to_string(count_++) + ".xml");
    std::ofstream(file, std::ios::binary) << text;
    const std::string source = std::getenv("DSL_SOURCE_DIR") ? std::getenv("DSL_SOURCE_DIR") : ".";
    const std::string command = "xmllint --noout --schema '" + source + "/docs/schemas/" + schema +
                                "' '" + file.string() + "' 2>'" + (dir_ / "xmllint.txt").string() + "'";
    const int rc = std::system(command.c_str());
    std::ifstream err(dir_ / "xmllint.txt");
    std::string line;
    while (std::getline(err, line)) errors_ += line + "\n";
    return rc;
  }
  int count_ = 0;
  std::string errors_;
};

TEST_F(SchemaTest, PreparationDocumentWithEveryKindOfRecordIsValid) {
  if (std::system("xmllint --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  db_t cdb;
  cdb.sid = "CDB1";
  cdb.cdb = "YES";
  cdb.pdbs = {{"P1", "READ WRITE"}, {"P2", "MIGRATE"}};
  db_t noarch;
  noarch.sid = "NOARC";
  noarch.log_mode = "NOARCHIVELOG";
  db_t bad;
  bad.sid = "BAD";
  bad.extra = "<fault on=\"execute\" sql=\"ALTER DATABASE BEGIN BACKUP\" error=\"1123\"/>";
  db_t mounted;
  mounted.sid = "MNT";
  mounted.state = "mounted";
  use_machine({cdb, noarch, bad, mounted});
  const std::u16string document = CDbsBackupPrepare::prepare_instances(
      sids_of({cdb, noarch, bad, mounted}),
      CDbsBackupPrepare::parse_writer_sids(u"<databases><database sid=\"NOARC\"/></databases>"), {});
  EXPECT_EQ(validate(util::to_utf8(document), "prepare-document.xsd"), 0) << errors_ << util::to_utf8(document);
}

TEST_F(SchemaTest, EmptyPreparationDocumentIsValid) {
  if (std::system("xmllint --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  EXPECT_EQ(validate("<databases />", "prepare-document.xsd"), 0) << errors_;
}

TEST_F(SchemaTest, DocumentWithActionSevenIsRefusedByTheSchema) {
  if (std::system("xmllint --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  EXPECT_NE(validate(util::to_utf8(document_of({record("A", 7)})), "prepare-document.xsd"), 0);
}

TEST_F(SchemaTest, MetaFileWithAndWithoutCredentialBlocksIsValid) {
  if (std::system("xmllint --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  db_t d;
  d.sid = "ORCL";
  use_machine({d});
  specific::oracle::COracleManager::instance().prepare(u"", {}, u"", u"");
  EXPECT_EQ(validate(folder_->raw_read(u"OracleLogBackup\\OracleMeta.xml"), "prepare-meta.xsd"), 0) << errors_;
  specific::oracle::COracleManager::instance().prepare(u"", {"BACKUP", "s3cret-Pw"}, u"admin", u"cA==");
  const std::string meta = folder_->raw_read(u"OracleLogBackup\\OracleMeta.xml");
  EXPECT_NE(meta.find("os_conn"), std::string::npos);
  EXPECT_EQ(validate(meta, "prepare-meta.xsd"), 0) << errors_;
}

TEST_F(SchemaTest, WriterConfigIsValid) {
  if (std::system("xmllint --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  EXPECT_EQ(validate("<databases><database sid=\"ORCL\"/><database sid=\"SALES\"/></databases>",
                     "prepare-config.xsd"), 0) << errors_;
}

}  // namespace
}  // namespace backup_test
