// The explore input: what the agent remembers of each SID's newest archived log.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "oracle/discovery/explore_db_config.h"
#include "support/capture_receiver.h"
#include "support/thrown.h"

using specific::oracle::CExploreDbConfig;

namespace {

bool logged(const dsl_test::capture_log_t& log, const std::string& line) {
  const auto lines = dsl_test::plain_log(log);
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(ExploreDbConfig, EmptyTextGivesNoRecordsAndSaysSo) {
  dsl_test::capture_log_t log;
  const CExploreDbConfig config = CExploreDbConfig::parse(u"");
  EXPECT_TRUE(config.records.empty());
  EXPECT_TRUE(logged(log, "Explore db config is empty"));
}

TEST(ExploreDbConfig, EachChildOfTheRootIsOneSidWhateverTheElementNames) {
  dsl_test::capture_log_t log;
  const CExploreDbConfig config = CExploreDbConfig::parse(
      u"<anything><x sid=\"ORCL\" recId=\"17\" stamp=\"99\"/><y sid=\"SALES\" recId=\"3\" "
      u"stamp=\"4\"><z sid=\"NESTED\" recId=\"1\" stamp=\"1\"/></y></anything>");
  ASSERT_EQ(config.records.size(), 2u);
  ASSERT_TRUE(config.find(u"ORCL"));
  EXPECT_EQ(config.find(u"ORCL")->recId, u"17");
  EXPECT_EQ(config.find(u"ORCL")->stamp, u"99");
  EXPECT_EQ(config.find(u"SALES")->recId, u"3");
  EXPECT_FALSE(config.find(u"NESTED"));
  EXPECT_TRUE(logged(log, "Explore db config sid found: ORCL, recId: 17, stamp: 99"));
  EXPECT_TRUE(logged(log, "Explore db config sid found: SALES, recId: 3, stamp: 4"));
}

TEST(ExploreDbConfig, CommentsAndTextBetweenEntriesArePassedOver) {
  const CExploreDbConfig config = CExploreDbConfig::parse(
      u"<r>text<!-- c --><a sid=\"A\" recId=\"1\" stamp=\"2\"/>more<!-- d -->"
      u"<b sid=\"B\" recId=\"3\" stamp=\"4\"/></r>");
  EXPECT_EQ(config.records.size(), 2u);
  EXPECT_TRUE(config.find(u"B"));
}

TEST(ExploreDbConfig, SidIsMatchedExactlyCaseIncluded) {
  const CExploreDbConfig config =
      CExploreDbConfig::parse(u"<r><d sid=\"orcl\" recId=\"1\" stamp=\"2\"/></r>");
  EXPECT_TRUE(config.find(u"orcl"));
  EXPECT_FALSE(config.find(u"ORCL"));
}

TEST(ExploreDbConfig, EmptyRecIdIsLoggedButNotStored) {
  dsl_test::capture_log_t log;
  const CExploreDbConfig config =
      CExploreDbConfig::parse(u"<r><d sid=\"ORCL\" recId=\"\" stamp=\"2\"/></r>");
  EXPECT_TRUE(config.records.empty());
  EXPECT_TRUE(logged(log, "Explore db config sid found: ORCL, recId: , stamp: 2"));
}

TEST(ExploreDbConfig, EmptyStampIsNotStored) {
  const CExploreDbConfig config =
      CExploreDbConfig::parse(u"<r><d sid=\"ORCL\" recId=\"5\" stamp=\"\"/></r>");
  EXPECT_TRUE(config.records.empty());
}

TEST(ExploreDbConfig, RecIdThatIsNoDecimalNumberIsLoggedAndReadAsEmpty) {
  dsl_test::capture_log_t log;
  const CExploreDbConfig config = CExploreDbConfig::parse(
      u"<r><d sid=\"ORCL\" recId=\"1 OR 1=1\" stamp=\"2\"/></r>");
  EXPECT_TRUE(config.records.empty());
  EXPECT_TRUE(logged(log, "WARN|Explore db config sid ORCL: recId is not a decimal number and "
                          "is ignored: 1 OR 1=1"));
}

TEST(ExploreDbConfig, StampThatIsNoDecimalNumberIsLoggedAndReadAsEmpty) {
  dsl_test::capture_log_t log;
  for (const char16_t* stamp : {u"-1", u"+7", u" 7", u"7 ", u"0x10", u"9'--", u"\u0663"}) {
    const CExploreDbConfig config = CExploreDbConfig::parse(
        u"<r><d sid=\"ORCL\" recId=\"1\" stamp=\"" + std::u16string(stamp) + u"\"/></r>");
    EXPECT_TRUE(config.records.empty());
  }
}

TEST(ExploreDbConfig, FirstRecordOfADuplicateSidStays) {
  const CExploreDbConfig config = CExploreDbConfig::parse(
      u"<r><d sid=\"ORCL\" recId=\"1\" stamp=\"2\"/><d sid=\"ORCL\" recId=\"8\" stamp=\"9\"/></r>");
  ASSERT_EQ(config.records.size(), 1u);
  EXPECT_EQ(config.find(u"ORCL")->recId, u"1");
}

TEST(ExploreDbConfig, EmptySidIsAKeyLikeAnyOther) {
  const CExploreDbConfig config =
      CExploreDbConfig::parse(u"<r><d sid=\"\" recId=\"1\" stamp=\"2\"/></r>");
  EXPECT_TRUE(config.find(u""));
}

TEST(ExploreDbConfig, RootWithoutChildrenGivesNoRecords) {
  EXPECT_TRUE(CExploreDbConfig::parse(u"<r/>").records.empty());
  EXPECT_TRUE(CExploreDbConfig::parse(u"<!-- only a comment --><r></r>").records.empty());
}

TEST(ExploreDbConfig, MissingStampFailsTheWholeParseWithTheAttributeName) {
  const auto e = dsl_test::thrown<exc::exc_base_t>([] {
    CExploreDbConfig::parse(u"<r><d sid=\"A\" recId=\"1\" stamp=\"2\"/><d sid=\"B\" recId=\"1\"/></r>");
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(dsl_test::lines_of(*e),
            (std::vector<dsl_test::line_t>{
                dsl_test::plain("Attribute value is not specified. Attribute: [stamp]."),
                dsl_test::plain("Failed to parse explore db config")}));
}

TEST(ExploreDbConfig, AttributesAreReadSidRecIdStampInThisOrder) {
  // With all three missing, the first one asked for is named.
  const auto e = dsl_test::thrown<exc::exc_base_t>([] { CExploreDbConfig::parse(u"<r><d/></r>"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->messages().front().text, "Attribute value is not specified. Attribute: [sid].");
  const auto f = dsl_test::thrown<exc::exc_base_t>(
      [] { CExploreDbConfig::parse(u"<r><d sid=\"A\" stamp=\"1\"/></r>"); });
  ASSERT_TRUE(f);
  EXPECT_EQ(f->messages().front().text, "Attribute value is not specified. Attribute: [recId].");
}

TEST(ExploreDbConfig, TextThatIsNoXmlFailsUnderTheParseLine) {
  const auto e = dsl_test::thrown<exc::exc_base_t>([] { CExploreDbConfig::parse(u"not xml <"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->messages().front().text.rfind("XML error: [", 0), 0u) << e->what();
  EXPECT_EQ(e->messages().back().text, "Failed to parse explore db config");
}

TEST(ExploreDbConfig, EscapedAndNonAsciiSidsComeBackAsWrittenInUtf16) {
  const CExploreDbConfig config = CExploreDbConfig::parse(
      u"<r><d sid=\"O&amp;R&quot;C'L\u00c4\u65e5\" recId=\"1\" stamp=\"2\"/></r>");
  EXPECT_TRUE(config.find(u"O&R\"C'L\u00c4\u65e5"));
}

TEST(ExploreDbConfig, ThousandsOfSidsAreAllKept) {
  std::u16string text = u"<r>";
  for (int i = 0; i < 5000; ++i) {
    const std::string n = std::to_string(i);
    text += u"<d sid=\"S" + std::u16string(n.begin(), n.end()) + u"\" recId=\"" +
            std::u16string(n.begin(), n.end()) + u"\" stamp=\"1\"/>";
  }
  text += u"</r>";
  const CExploreDbConfig config = CExploreDbConfig::parse(text);
  EXPECT_EQ(config.records.size(), 5000u);
  EXPECT_EQ(config.find(u"S4999")->recId, u"4999");
}

}  // namespace
