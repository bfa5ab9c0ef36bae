// The documents of the archived-log flows validate against docs/schemas/archived-logs.xsd with
// xmllint: the list of a backup, each description file, and the enumerated list.
#include <gtest/gtest.h>

#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "logs_fixture.h"
#include "logs_scenario.h"
#include "support/schema_check.h"

namespace logs_test {
namespace {

using specific::oracle::COracleManager;
using specific::oracle::conn_t;

class LogSchemaTest : public logs_test_t {
 protected:
  // xmllint's verdict on `text`, with its output on failure.
  ::testing::AssertionResult valid(const std::string& text) {
    const std::string problems = dsl_test::schema_problems(text, "archived-logs.xsd");
    if (problems.empty()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << problems << "\n" << text;
  }
};

TEST_F(LogSchemaTest, BackupListDescriptionsAndEnumeratedListAreValid) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 3;
  o.asmPercent = 50;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::string list = util::to_utf8(
      COracleManager::instance().backup_logs(util::from_utf8(m.home), u"ORCL", u"77", u"", conn_t()));
  EXPECT_TRUE(valid(list));
  size_t descriptions = 0;
  for (const std::string& name : files_in("logs")) {
    if (name.size() < 4 || name.substr(name.size() - 4) != ".xml") continue;
    ++descriptions;
    EXPECT_TRUE(valid(folder_->raw_read(util::from_utf8("logs\\" + name)))) << name;
  }
  EXPECT_EQ(descriptions, 8u);
  folder_->raw_write(u"logs\\OracleMeta.xml", "<restore dbPrepareXml=\"PGRhdGFiYXNlcyAvPg==\" />");
  EXPECT_TRUE(valid(util::to_utf8(COracleManager::instance().enum_logs())));
}

TEST_F(LogSchemaTest, EmptyListIsValid) {
  EXPECT_TRUE(valid(util::to_utf8(COracleManager::instance().enum_logs())));
}

TEST_F(LogSchemaTest, SchemaRejectsADescriptionWithoutItsBookmark) {
  EXPECT_FALSE(valid("<archived_logs><archived_log logPath=\"x\" /></archived_logs>"));
}

}  // namespace
}  // namespace logs_test
