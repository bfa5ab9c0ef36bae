// The writer-enabled set read from configXml, and the upper-casing of SIDs.
#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "oracle/backup/backup_prepare.h"

namespace {

using specific::oracle::CDbsBackupPrepare;
using specific::oracle::sid_set_t;

std::string failure_of(const std::u16string& text) {
  try {
    CDbsBackupPrepare::parse_writer_sids(text);
  } catch (const exc::exc_base_t& e) {
    return e.what();
  }
  return "<no failure>";
}

TEST(WriterSids, EmptyConfigMeansNoWriter) {
  EXPECT_TRUE(CDbsBackupPrepare::parse_writer_sids(u"").empty());
}

TEST(WriterSids, EveryChildWhateverItsNameGivesItsSidUpperCased) {
  EXPECT_EQ(CDbsBackupPrepare::parse_writer_sids(
                u"<databases><database sid=\"orcl\"/><x sid=\"Sales\" other=\"1\"/></databases>"),
            (sid_set_t{u"ORCL", u"SALES"}));
}

TEST(WriterSids, ConfigWithoutDatabasesFailsWithTheNodeText) {
  EXPECT_NE(failure_of(u"<dbs/>").find("There is no node with the specified name: [databases]."),
            std::string::npos);
}

TEST(WriterSids, ChildWithoutSidFails) {
  EXPECT_NE(failure_of(u"<databases><database name=\"x\"/></databases>")
                .find("Attribute value is not specified. Attribute: [sid]."),
            std::string::npos);
}

TEST(WriterSids, ConfigThatIsNoXmlFails) {
  EXPECT_NE(failure_of(u"<databases").find("XML error"), std::string::npos);
}

TEST(WriterSids, UpperCasingTouchesOnlyAsciiLetters) {
  EXPECT_EQ(specific::oracle::upper_sid(u"orcl_1\u00e9"), u"ORCL_1\u00e9");
}

}  // namespace
