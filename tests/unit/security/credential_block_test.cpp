// The credential block: its fixed shape, its empty content, and the warnings of bad blocks.
#include "common/security/credential_block.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/text/base64.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_doc.h"
#include "common/xml/xml_node.h"
#include "support/capture_receiver.h"

namespace {

using strings = std::vector<std::string>;

// The only block there is: protection gives no bytes for either value.
const std::string kEmptyRoot = "<root u=\"\" p=\"\" />";

std::string block_of(const std::string& xml_text) { return util::base64_encode(xml_text); }

TEST(CredentialBlock, SerializeGivesTheSameBlockForAnyCredentials) {
  dsl_test::capture_log_t capture;
  std::string a, b, c;
  EXPECT_TRUE(crypto::serialize_protected("alice", "s3cret", a));
  EXPECT_TRUE(crypto::serialize_protected("", "", b));
  EXPECT_TRUE(crypto::serialize_protected("CORP\\j\xC3\xBCrgen", "p\xC3\xA4ss&<>\"'", c));
  EXPECT_EQ(a, block_of(kEmptyRoot));
  EXPECT_EQ(b, a);
  EXPECT_EQ(c, a);
  EXPECT_TRUE(capture.bodies().empty());
}

TEST(CredentialBlock, SerializedBlockDecodesToARootWithEmptyUAndP) {
  std::string block;
  ASSERT_TRUE(crypto::serialize_protected("alice", "s3cret", block));
  const std::string text = util::base64_decode(block);
  EXPECT_EQ(text, kEmptyRoot);
  EXPECT_EQ(text.find("alice"), std::string::npos);
  EXPECT_EQ(text.find("s3cret"), std::string::npos);
  const auto root = xml::child(xml::root_ref(xml::parse(text)), "root");
  EXPECT_EQ(xml::attr(root, "u"), "");
  EXPECT_EQ(xml::attr(root, "p"), "");
  // u comes before p.
  EXPECT_LT(text.find(" u="), text.find(" p="));
}

TEST(CredentialBlock, DeserializeOfASerializedBlockGivesEmptyStrings) {
  std::string block;
  ASSERT_TRUE(crypto::serialize_protected("alice", "s3cret", block));
  std::string user = "x", password = "y";
  EXPECT_TRUE(crypto::deserialize_protected(block, user, password));
  EXPECT_EQ(user, "");
  EXPECT_EQ(password, "");
}

TEST(CredentialBlock, DeserializeOfNonEmptyAttributesStillGivesEmptyStrings) {
  dsl_test::capture_log_t capture;
  const std::string block = block_of("<root u=\"" + util::base64_encode(std::string("alice")) +
                                     "\" p=\"" + util::base64_encode(std::string("s3cret")) +
                                     "\"/>");
  std::string user = "x", password = "y";
  EXPECT_TRUE(crypto::deserialize_protected(block, user, password));
  EXPECT_EQ(user, "");
  EXPECT_EQ(password, "");
  EXPECT_TRUE(capture.bodies().empty());
}

TEST(CredentialBlock, DeserializeAcceptsTheBlockOfAnExpandedDocument) {
  std::string user = "x", password = "y";
  EXPECT_TRUE(crypto::deserialize_protected(
      block_of("<?xml version=\"1.0\"?>\n<!-- c -->\n<root p=\"\" u=\"\" extra=\"1\">\n</root>\n"),
      user, password));
  EXPECT_EQ(user, "");
  EXPECT_EQ(password, "");
}

// A failed deserialize: false, outputs untouched, and the warning lines it wrote.
strings failed_deserialize(const std::string& block) {
  dsl_test::capture_log_t capture;
  std::string user = "user-before", password = "password-before";
  EXPECT_FALSE(crypto::deserialize_protected(block, user, password));
  EXPECT_EQ(user, "user-before");
  EXPECT_EQ(password, "password-before");
  return capture.bodies();
}

TEST(CredentialBlock, BlockThatIsNotBase64GivesFalseAndAWarning) {
  EXPECT_EQ(failed_deserialize("!!! not base64 !!!"),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |XML error: [Error document empty.]. Error code: [12].",
                     ">>  |--tr:Failed to parse XML content. Source content: []."}));
}

TEST(CredentialBlock, BlockOfTextThatIsNotXmlGivesFalseAndAWarning) {
  EXPECT_EQ(failed_deserialize(util::base64_encode(std::string("user=alice;password=x"))),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |XML error: [Error document empty.]. Error code: [12].",
                     ">>  |--tr:Failed to parse XML content. Source content: "
                     "[user=alice;password=x]."}));
}

TEST(CredentialBlock, EmptyBlockGivesFalseAndAWarning) {
  const strings lines = failed_deserialize("");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "WARN|Unable to deserialize protected credentials");
}

TEST(CredentialBlock, ShortBlockGivesFalseAndAWarning) {
  const std::string whole = block_of(kEmptyRoot);
  for (size_t length : {size_t{4}, size_t{10}, whole.size() / 2, whole.size() - 8}) {
    const strings lines = failed_deserialize(whole.substr(0, length));
    ASSERT_GE(lines.size(), 2u) << "length " << length;
    EXPECT_EQ(lines[0], "WARN|Unable to deserialize protected credentials");
    EXPECT_EQ(lines[1].rfind(">>  |XML error: [", 0), 0u) << lines[1];
  }
}

TEST(CredentialBlock, BlockWithoutRootGivesFalseWithTheNodeText) {
  EXPECT_EQ(failed_deserialize(block_of("<creds u=\"\" p=\"\"/>")),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |There is no node with the specified name: [root]."}));
}

TEST(CredentialBlock, BlockWithoutPGivesFalseWithTheAttributeText) {
  EXPECT_EQ(failed_deserialize(block_of("<root u=\"\"/>")),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |Attribute value is not specified. Attribute: [p]."}));
}

TEST(CredentialBlock, BlockWithoutUGivesFalseWithTheAttributeText) {
  EXPECT_EQ(failed_deserialize(block_of("<root p=\"\"/>")),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |Attribute value is not specified. Attribute: [u]."}));
}

TEST(CredentialBlock, BlockWhoseRootIsNestedGivesFalse) {
  EXPECT_EQ(failed_deserialize(block_of("<outer><root u=\"\" p=\"\"/></outer>")),
            (strings{"WARN|Unable to deserialize protected credentials",
                     ">>  |There is no node with the specified name: [root]."}));
}

TEST(CredentialBlock, AttributeValuesThatAreNotBase64StillReadAsEmpty) {
  std::string user = "x", password = "y";
  EXPECT_TRUE(crypto::deserialize_protected(block_of("<root u=\"%%%\" p=\"\xC3\xA9\"/>"), user,
                                            password));
  EXPECT_EQ(user, "");
  EXPECT_EQ(password, "");
}

}  // namespace
