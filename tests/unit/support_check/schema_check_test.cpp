// The tests' schema check is real on both builds: a document that follows its schema passes,
// and documents that break it, are not well-formed or name no schema are refused with a reason.
#include <gtest/gtest.h>

#include <string>

#include "support/schema_check.h"

namespace {

using dsl_test::schema_problems;

TEST(SchemaCheck, DocumentThatFollowsItsSchemaHasNoProblems) {
  EXPECT_EQ(schema_problems("<OracleEntries><OracleEntry sid=\"ORCL\" db_name=\"ORCL\" "
                            "instance_open=\"true\" /></OracleEntries>",
                            "oracle-entries.xsd"),
            "");
}

TEST(SchemaCheck, DocumentThatBreaksItsSchemaIsRefusedWithXmllintsMessage) {
  // "maybe" is not a flag, and an entry must carry "sid".
  const std::string problems = schema_problems(
      "<OracleEntries><OracleEntry sid=\"ORCL\" db_active=\"maybe\" /><OracleEntry /></OracleEntries>",
      "oracle-entries.xsd");
  EXPECT_NE(problems.find("fails to validate"), std::string::npos) << problems;
  EXPECT_NE(problems.find("db_active"), std::string::npos) << problems;
  EXPECT_NE(problems.find("sid"), std::string::npos) << problems;
}

TEST(SchemaCheck, DocumentWithAnUnknownRootIsRefused) {
  const std::string problems = schema_problems("<OracleEntry sid=\"A\" />", "oracle-entries.xsd");
  EXPECT_NE(problems.find("fails to validate"), std::string::npos) << problems;
}

TEST(SchemaCheck, DocumentThatIsNotWellFormedIsRefused) {
  EXPECT_NE(schema_problems("<OracleEntries><OracleEntry sid=\"A\" />", "oracle-entries.xsd"), "");
}

TEST(SchemaCheck, MissingSchemaFileIsReportedNotPassed) {
  EXPECT_NE(schema_problems("<OracleEntries />", "no-such-schema.xsd"), "");
}

TEST(SchemaCheck, TextWithQuotesAndNonAsciiCharactersPassesThroughUnchanged) {
  // The document travels as bytes; an attribute with an apostrophe and UTF-8 text stays valid.
  EXPECT_EQ(schema_problems("<OracleEntries><OracleEntry sid=\"O'R\xC3\xA9\" error=\"it's \xE2\x82\xAC\" "
                            "/></OracleEntries>",
                            "oracle-entries.xsd"),
            "");
}

}  // namespace
