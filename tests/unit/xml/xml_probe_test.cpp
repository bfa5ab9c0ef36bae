// The structure walk that guards parse(): it must see exactly the nesting and the attribute
// counts that TinyXML itself reaches, on any text, or a hostile text could slip past it.
// TinyXML is the reference: after a parse, failed or not, its tree holds every element it
// recursed into.
#include "common/xml/xml_probe.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/xml/xml_doc.h"

namespace {

using xml::detail::padded_copy;
using xml::detail::probe_result_t;
using xml::detail::probe_structure;

constexpr size_t kNoLimit = static_cast<size_t>(-1);

struct shape_t {
  size_t depth = 0;
  size_t most_attributes = 0;
};

void measure(const TiXmlNode* node, size_t level, shape_t& shape) {
  for (const TiXmlNode* c = node->FirstChild(); c; c = c->NextSibling()) {
    if (const TiXmlElement* e = c->ToElement()) {
      shape.depth = std::max(shape.depth, level + 1);
      size_t count = 0;
      for (const TiXmlAttribute* a = e->FirstAttribute(); a; a = a->Next()) ++count;
      shape.most_attributes = std::max(shape.most_attributes, count);
      measure(c, level + 1, shape);
    }
  }
}

shape_t tinyxml_shape(const std::string& text) {
  const std::string padded = padded_copy(text);
  TiXmlDocument doc;
  doc.Parse(padded.c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
  shape_t shape;
  measure(&doc, 0, shape);
  return shape;
}

probe_result_t probe(const std::string& text, size_t max_depth = kNoLimit,
                     size_t max_attributes = kNoLimit) {
  const std::string padded = padded_copy(text);
  return probe_structure(padded.c_str(), max_depth, max_attributes);
}

void expect_same_shape(const std::string& text) {
  const shape_t expected = tinyxml_shape(text);
  const probe_result_t got = probe(text);
  EXPECT_EQ(got.depth, expected.depth) << "text: [" << text << "]";
  EXPECT_EQ(got.most_attributes, expected.most_attributes) << "text: [" << text << "]";
  EXPECT_FALSE(got.stopped_at_limit);
}

std::string repeat(const std::string& part, size_t times) {
  std::string out;
  for (size_t i = 0; i < times; ++i) out += part;
  return out;
}

TEST(XmlProbe, PaddedCopyEndsAtTheFirstNulAndAddsZeros) {
  const std::string padded = padded_copy(std::string("<a/>\0<b/>", 9));
  EXPECT_EQ(padded, std::string("<a/>\0\0\0\0", 8));
}

TEST(XmlProbe, AgreesWithTinyXmlOnHandPickedTexts) {
  const char* const texts[] = {
      "",
      "<a/>",
      "<a><b><c/></b></a>",
      "<a><b/><c><d/></c></a><e><f><g><h/></g></f></e>",
      "<a b='1' c=\"2\" d=3><e f='&amp;' g='&#x41;' h='&#65;'/></a>",
      "<a b='</a><a><a>'><c/></a>",
      "<a><!-- </a><a><a> --><b/></a>",
      "<a><![CDATA[</a><a><a>]]><b/></a>",
      "<a><?xml version=\"</a></a>\"?><a><a/></a></a>",
      "<a><?xml foo=\"</a>\"?><b/></a>",
      "<a><!DOCTYPE </a>><b/></a>",
      "<a>< b><c/></a>",
      "<a><1><c/></a>",
      "<a></ab><c/></a>",
      "<a></a ><b/>",
      "<r><a></a x><b><c/></b></r>",
      "<r><a></a\n><b><c/></b></r>",
      "<a><b></a></b>",
      "<a b='1' b='2'><c/></a>",
      "<a b=x'><c/></a>",
      "<a b=\"&#x;\"><c/></a>",
      "<a b=\"&#xZZ;\"><c/></a>",
      "<a b=\"&#12\"><c/></a>",
      "\xEF\xBB\xBF<a>\xC3</a><b/></a>",
      "<?xml version=\"1.0\"?><a>\xC3</a><b/></a>",
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xC3</a><b/>",
      "<?xml version=\"1.0\" encoding=\"utf-8\"?><a>\xE2\x82</a><b/></a>",
      "<?xml version=\"1.0\" encoding=\"UTF&#x2D;8\"?><a>\xC3</a><b/></a>",
      "<?xml encoding=\"UTF-8x\"?><a>\xC3</a><b/></a>",
      "<?xml encoding=\"&#0;latin\"?><a>\xC3</a><b/></a>",
      "<a/><?xml encoding=\"UTF-8\"?><a>\xC3</a><b/></a>",
      "<a b=\"\xC3\"><c/></a>",
      "<?xml version=\"1.0\"?><a b=\"\xC3\"><c/></a>",
      "<?XML version='1.0'?><a><b/></a>",
      "<a>\xEF\xBB\xBF<b/></a>",
      "<_a><_b/></_a>",
      "<\xC3\xA9><\xC3\xA9/></\xC3\xA9>",
      "<a><b/>text<c>more &amp; <d/></c></a>",
      "  \n<a>\n  <b/>\n</a>\n  junk <c/>",
      "<a><!----><!-- -- --><b/></a>",
      "<a><![CDATA[]]></a>",
      "<a><![CDATA[x",
      "<a><!-- x",
      "<a><!x",
      "<?xml version='1.0'",
      "<a\x7f><b/></a\x7f>",
  };
  for (const char* text : texts) expect_same_shape(text);
}

TEST(XmlProbe, AgreesWithTinyXmlOnRandomTexts) {
  const std::vector<std::string> tokens = {
      "<a>", "</a>", "<b>", "</b>", "<a/>", "<b/>", "<a ", "<b ", "<", ">", "/>", "</", "/",
      " ", "\n", "\t", "=", "'", "\"", "x='1'", "y=\"2\"", "x=3", "x", "y", "a", "b", "_",
      "<!--", "-->", "--", "<![CDATA[", "]]>", "<!", "<?xml", "<?XML", "?>", " version='1.0'",
      " encoding='UTF-8'", " encoding=\"latin1\"", "encoding=", "&", "&amp;", "&lt;", "&#x41;",
      "&#65;", "&#x", "&#", ";", "\xC3", "\xC3\xA9", "\xE2\x82", "\xE2\x82\xAC", "\xF0",
      "\xEF\xBB\xBF", "\xEF\xBF\xBE", "\x7f", "1", "-", ".", ":", "<_", "</_", "</a", "</b"};
  std::mt19937 random(20240611u);
  std::uniform_int_distribution<size_t> pick(0, tokens.size() - 1);
  std::uniform_int_distribution<size_t> length(1, 40);
  size_t disagreements = 0;
  for (int round = 0; round < 60000 && disagreements < 10; ++round) {
    std::string text;
    const size_t n = length(random);
    for (size_t i = 0; i < n; ++i) text += tokens[pick(random)];
    const shape_t expected = tinyxml_shape(text);
    const probe_result_t got = probe(text);
    if (got.depth != expected.depth || got.most_attributes != expected.most_attributes) {
      ++disagreements;
      ADD_FAILURE() << "text: [" << text << "] tinyxml depth " << expected.depth << " attributes "
                    << expected.most_attributes << ", probe depth " << got.depth
                    << " attributes " << got.most_attributes;
    }
  }
  EXPECT_EQ(disagreements, 0u);
}

// Texts whose nesting hides from a naive scan: TinyXML recurses into them, so must the walk.
class XmlProbeDisguised : public ::testing::TestWithParam<std::string> {};

TEST_P(XmlProbeDisguised, NestingIsSeenAsTinyXmlSeesIt) {
  const std::string text = GetParam();
  const shape_t expected = tinyxml_shape(text);
  EXPECT_GT(expected.depth, 250u);
  EXPECT_EQ(probe(text).depth, expected.depth);
  try {
    xml::parse(text + repeat("<a>", 10));
    FAIL() << "parse succeeded";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(e.messages().at(0).text,
              "XML error: [Element nesting is deeper than 256 levels.]. Error code: [3].");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Hidden, XmlProbeDisguised,
    ::testing::Values(repeat("<a b=\"</a>\">", 300), repeat("<a><!-- </a> -->", 300),
                      repeat("<a><![CDATA[</a>]]>", 300),
                      repeat("<a><?xml version=\"</a>\"?>", 300),
                      "<?xml version=\"1.0\"?>" + repeat("<a>\xC3</a>", 300),
                      "\xEF\xBB\xBF" + repeat("<a>\xE2\x82</a>", 300)));

TEST(XmlProbe, SwallowedEndTagsCountOnlyInUtf8Mode) {
  const std::string body = repeat("<a>\xC3</a>", 300);
  EXPECT_EQ(probe(body).depth, 1u);
  EXPECT_EQ(tinyxml_shape(body).depth, 1u);
  EXPECT_NO_THROW(xml::parse(body));
}

TEST(XmlProbe, DepthOfTheLimitIsAcceptedAndOneMoreIsNot) {
  const std::string at_limit = repeat("<a>", xml::kMaxDepth) + repeat("</a>", xml::kMaxDepth);
  EXPECT_NO_THROW(xml::parse(at_limit));
  const std::string beyond =
      repeat("<a>", xml::kMaxDepth + 1) + repeat("</a>", xml::kMaxDepth + 1);
  const probe_result_t r = probe(beyond, xml::kMaxDepth, xml::kMaxAttributes);
  EXPECT_TRUE(r.stopped_at_limit);
  EXPECT_EQ(r.depth, xml::kMaxDepth + 1);
  EXPECT_THROW(xml::parse(beyond), exc::runtime_exc_t);
}

TEST(XmlProbe, AnEmptyElementAtTheDeepestLevelCounts) {
  const std::string text =
      repeat("<a>", xml::kMaxDepth) + "<b/>" + repeat("</a>", xml::kMaxDepth);
  EXPECT_EQ(probe(text).depth, xml::kMaxDepth + 1);
  EXPECT_THROW(xml::parse(text), exc::runtime_exc_t);
}

std::string element_with_attributes(size_t count) {
  std::string text = "<a";
  for (size_t i = 0; i < count; ++i) text += " n" + std::to_string(i) + "=\"\"";
  return text + "/>";
}

TEST(XmlProbe, AttributesUpToTheLimitAreAcceptedAndOneMoreIsNot) {
  EXPECT_NO_THROW(xml::parse(element_with_attributes(xml::kMaxAttributes)));
  EXPECT_EQ(probe(element_with_attributes(xml::kMaxAttributes)).most_attributes,
            xml::kMaxAttributes);
  try {
    xml::parse(element_with_attributes(xml::kMaxAttributes + 1));
    FAIL() << "parse succeeded";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(e.messages().at(0).text,
              "XML error: [Element has more than 1024 attributes.]. Error code: [3].");
  }
}

TEST(XmlProbe, StopsAtTheLimitWithoutWalkingTheRest) {
  const probe_result_t r = probe(repeat("<a>", 100000), 10, kNoLimit);
  EXPECT_TRUE(r.stopped_at_limit);
  EXPECT_EQ(r.depth, 11u);
}

}  // namespace
