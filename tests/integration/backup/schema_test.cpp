// The documents of the preparation against their schemas in docs/schemas, with xmllint.
#include <gtest/gtest.h>

#include "backup_fixture.h"
#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "oracle/backup/backup_prepare.h"
#include "support/schema_check.h"

namespace backup_test {
namespace {

using specific::oracle::CDbsBackupPrepare;

class SchemaTest : public backup_test_t {
 protected:
  // 0 when `text` validates against docs/schemas/<schema>, else 1 with xmllint's words in
  // errors_.
  int validate(const std::string& text, const std::string& schema) {
    const std::string problems = dsl_test::schema_problems(text, schema);
    errors_ += problems;
    return problems.empty() ? 0 : 1;
  }
  std::string errors_;
};

TEST_F(SchemaTest, PreparationDocumentWithEveryKindOfRecordIsValid) {
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
  EXPECT_EQ(validate("<databases />", "prepare-document.xsd"), 0) << errors_;
}

TEST_F(SchemaTest, DocumentWithActionSevenIsRefusedByTheSchema) {
  EXPECT_NE(validate(util::to_utf8(document_of({record("A", 7)})), "prepare-document.xsd"), 0);
}

TEST_F(SchemaTest, MetaFileWithAndWithoutCredentialBlocksIsValid) {
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
  EXPECT_EQ(validate("<databases><database sid=\"ORCL\"/><database sid=\"SALES\"/></databases>",
                     "prepare-config.xsd"), 0) << errors_;
}

}  // namespace
}  // namespace backup_test
