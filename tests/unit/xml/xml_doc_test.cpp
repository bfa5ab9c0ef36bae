// Parsing and printing documents: failure texts and the cut trace line, the compact printer,
// escaping through a print and parse, non-ASCII text, and texts that are broken or huge.
#include "common/xml/xml_doc.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/xml/xml_attr.h"
#include "common/xml/xml_node.h"

namespace {

using exc::message_t;
using exc::runtime_exc_t;

// The message lines of the failure of parse(text); fails the test when nothing is thrown.
std::vector<message_t> parse_failure(const std::string& text) {
  try {
    xml::parse(text);
  } catch (const runtime_exc_t& e) {
    return e.messages();
  } catch (const std::exception& e) {
    ADD_FAILURE() << "unexpected exception type: " << e.what();
    return {};
  }
  ADD_FAILURE() << "parse succeeded";
  return {};
}

std::string trace_for(const std::string& content) {
  return "Failed to parse XML content. Source content: [" + content + "].";
}

void expect_parse_failure(const std::string& text, const std::string& first_line) {
  const auto lines = parse_failure(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, first_line);
  EXPECT_FALSE(lines[0].is_trace);
  EXPECT_TRUE(lines[1].is_trace);
}

std::string excerpt_line(const std::string& text) { return parse_failure(text).at(1).text; }

TEST(XmlDoc, NewDocIsEmptyAndPrintsAsAnEmptyText) {
  const xml::xml_doc_ptr_t doc = xml::new_doc();
  ASSERT_NE(doc, nullptr);
  EXPECT_EQ(doc->FirstChild(), nullptr);
  EXPECT_EQ(xml::print(doc), "");
}

TEST(XmlDoc, RootRefPointsToTheDocumentItselfAndSharesIt) {
  const xml::xml_doc_ptr_t doc = xml::new_doc();
  const xml::xml_node_ref_t ref = xml::root_ref(doc);
  EXPECT_EQ(ref.node, doc.get());
  EXPECT_EQ(ref.doc, doc);
  EXPECT_EQ(doc.use_count(), 2);
}

TEST(XmlDoc, ParseOfAnEmptyTextFailsWithTinyXmlsDescriptionOfAnEmptyDocument) {
  const auto lines = parse_failure("");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "XML error: [Error document empty.]. Error code: [12].");
  EXPECT_EQ(lines[1].text, trace_for(""));
  EXPECT_TRUE(lines[1].is_trace);
}

TEST(XmlDoc, ParseOfBlanksOrPlainTextFailsAsAnEmptyDocument) {
  expect_parse_failure("  \r\n\t ", "XML error: [Error document empty.]. Error code: [12].");
  expect_parse_failure("just words", "XML error: [Error document empty.]. Error code: [12].");
}

TEST(XmlDoc, WhatShowsTheCauseFirstAndTheTraceLineMarked) {
  try {
    xml::parse("<a>");
    FAIL() << "parse succeeded";
  } catch (const runtime_exc_t& e) {
    EXPECT_STREQ(e.what(),
                 "XML error: [Error reading Element value.]. Error code: [5].\n"
                 "--tr:Failed to parse XML content. Source content: [<a>].");
  }
}

TEST(XmlDoc, TruncatedTextsFailWithTinyXmlsDescriptions) {
  expect_parse_failure("<a", "XML error: [Failed to read Element name]. Error code: [4].");
  expect_parse_failure("<a b='1'>", "XML error: [Error reading Element value.]. Error code: [5].");
  expect_parse_failure("<a><b/>", "XML error: [Error reading Element value.]. Error code: [5].");
  expect_parse_failure("<a b='1", "XML error: [Error parsing Element.]. Error code: [3].");
  expect_parse_failure("<a></a", "XML error: [Error reading end tag.]. Error code: [8].");
  expect_parse_failure("<a></b>", "XML error: [Error reading end tag.]. Error code: [8].");
}

TEST(XmlDoc, RepeatedAttributeFails) {
  expect_parse_failure("<a b='1' b='2'/>", "XML error: [Error parsing Element.]. Error code: [3].");
}

TEST(XmlDoc, TraceLineOfA200ByteTextShows128BytesThenTheLength) {
  std::string text = "<a>";
  while (text.size() < 200) text += static_cast<char>('a' + text.size() % 26);
  ASSERT_EQ(text.size(), 200u);
  EXPECT_EQ(excerpt_line(text), trace_for(text.substr(0, 128) + "..., length: 200"));
}

TEST(XmlDoc, TraceLineOfExactly128BytesShowsTheWholeText) {
  const std::string text = "<a>" + std::string(125, 'x');
  ASSERT_EQ(text.size(), 128u);
  EXPECT_EQ(excerpt_line(text), trace_for(text));
}

TEST(XmlDoc, TraceLineOf129BytesIsCut) {
  const std::string text = "<a>" + std::string(126, 'x');
  EXPECT_EQ(excerpt_line(text), trace_for(text.substr(0, 128) + "..., length: 129"));
}

TEST(XmlDoc, ExcerptCutsBytesNotCharacters) {
  // 127 ASCII bytes and then a two-byte character: the cut falls inside it.
  const std::string text = std::string(127, 'a') + "\xC3\xA9" + "b";
  EXPECT_EQ(xml::source_excerpt(text), std::string(127, 'a') + "\xC3" + "..., length: 130");
}

TEST(XmlDoc, TraceLineKeepsPercentSignsOfTheSourceAsTheyAre) {
  EXPECT_EQ(excerpt_line("<a>%1 %2"), trace_for("<a>%1 %2"));
}

TEST(XmlDoc, ParseErrorWithoutDescriptionShowsTheIdAlone) {
  try {
    xml::throw_parse_error(nullptr, 7);
  } catch (const runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "XML error: [7].");
    return;
  }
  FAIL() << "nothing thrown";
}

TEST(XmlDoc, ParseErrorWithDescriptionShowsBoth) {
  try {
    xml::throw_parse_error("Something.", 2);
  } catch (const runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "XML error: [Something.]. Error code: [2].");
    return;
  }
  FAIL() << "nothing thrown";
}

TEST(XmlDoc, PrintIsOneLineWithoutIndentation) {
  const auto doc =
      xml::parse("<a>\n    <b x=\"1\">\n        <c/>\n    </b>\n    <d>text</d>\n</a>\n");
  EXPECT_EQ(xml::print(doc), "<a><b x=\"1\"><c /></b><d>text</d></a>");
}

TEST(XmlDoc, PrintKeepsADeclarationOnlyWhenTheDocumentHasOne) {
  EXPECT_EQ(xml::print(xml::parse("<a/>")), "<a />");
  EXPECT_EQ(xml::print(xml::parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><a />");
}

TEST(XmlDoc, PrintKeepsCommentsAndTextContent) {
  EXPECT_EQ(xml::print(xml::parse("<a><!-- note --><b>one two</b></a>")),
            "<a><!-- note --><b>one two</b></a>");
}

TEST(XmlDoc, PrintOfANullDocumentFailsWithTheSerializeTrace) {
  try {
    xml::print(nullptr);
    FAIL() << "nothing thrown";
  } catch (const runtime_exc_t& e) {
    ASSERT_EQ(e.messages().size(), 2u);
    EXPECT_EQ(e.messages()[0].text, "XML document is not specified.");
    EXPECT_EQ(e.messages()[1].text, "Failed to serialize XML document.");
    EXPECT_TRUE(e.messages()[1].is_trace);
  }
}

TEST(XmlDoc, PrintEscapesEveryReservedCharacterInAttributes) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_attr(e, "v", "a&b<c>d\"e'f");
  // With a double quote in the value TinyXML quotes with apostrophes; it escapes all five.
  EXPECT_EQ(xml::print(doc), "<e v='a&amp;b&lt;c&gt;d&quot;e&apos;f' />");
}

TEST(XmlDoc, PrintEscapesReservedCharactersInText) {
  const auto doc = xml::parse("<e>a &amp; b &lt; c &gt; d &quot; e &apos; f</e>");
  EXPECT_EQ(xml::print(doc), "<e>a &amp; b &lt; c &gt; d &quot; e &apos; f</e>");
  EXPECT_STREQ(doc->RootElement()->GetText(), "a & b < c > d \" e ' f");
}

// Each value is printed, parsed again and read back.
class XmlRoundTrip : public ::testing::TestWithParam<std::string> {};

TEST_P(XmlRoundTrip, AttributeValueSurvivesPrintAndParse) {
  const auto doc = xml::new_doc();
  const auto root = xml::add_element(xml::root_ref(doc), "root");
  xml::set_attr(root, "v", GetParam());
  xml::set_attr(xml::add_element(root, "child"), "w", GetParam() + GetParam());
  const std::string text = xml::print(doc);
  EXPECT_EQ(text.find('\n'), std::string::npos);

  const auto again = xml::parse(text);
  const auto root2 = xml::child(xml::root_ref(again), "root");
  EXPECT_EQ(xml::attr(root2, "v"), GetParam());
  EXPECT_EQ(xml::attr(xml::child(root2, "child"), "w"), GetParam() + GetParam());
  EXPECT_EQ(xml::print(again), text);
}

TEST_P(XmlRoundTrip, AttributeValueSurvivesBehindAUtf8Declaration) {
  const auto doc = xml::parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?><root/>");
  const auto root = xml::child(xml::root_ref(doc), "root");
  xml::set_attr(root, "v", GetParam());
  const auto again = xml::parse(xml::print(doc));
  EXPECT_EQ(xml::attr(xml::child(xml::root_ref(again), "root"), "v"), GetParam());
}

INSTANTIATE_TEST_SUITE_P(ReservedAndForeign, XmlRoundTrip,
                         ::testing::Values(std::string("&"), std::string("<"), std::string(">"),
                                           std::string("\""), std::string("'"),
                                           std::string("&<>\"'"), std::string("\"'\"'"),
                                           std::string("&amp;"), std::string("&#x41;"),
                                           std::string("&#65;"), std::string("a & b <c> \"d\" 'e'"),
                                           std::string(""), std::string(" lead"),
                                           std::string("tab\there"), std::string("line\nbreak"),
                                           std::string("caf\xC3\xA9"),               // é
                                           std::string("\xE2\x82\xAC 100"),          // €
                                           std::string("\xE4\xB8\xAD\xE6\x96\x87"),  // CJK
                                           std::string("\xF0\x9F\x98\x80"),  // outside the BMP
                                           std::string("\xD0\x9F\xD1\x80\xD0\xB8 & <\xC3\xA9>")));

TEST(XmlDoc, NonAsciiTextContentSurvivesPrintAndParse) {
  const std::string text =
      "<r>Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x82\xAC &amp; \xE4\xB8\xAD</r>";
  const auto doc = xml::parse(text);
  EXPECT_STREQ(doc->RootElement()->GetText(),
               "Gr\xC3\xBC\xC3\x9F"
               "e \xE2\x82\xAC & \xE4\xB8\xAD");
  EXPECT_EQ(xml::print(doc), text);
}

TEST(XmlDoc, NonAsciiNamesSurvivePrintAndParse) {
  const std::string text = "<\xC3\xA9l\xC3\xA9ment \xC3\xA4ttr=\"x\" />";
  EXPECT_EQ(xml::print(xml::parse(text)), text);
}

TEST(XmlDoc, ControlCharactersArePrintedAsReferencesAndReadBack) {
  const auto doc = xml::new_doc();
  xml::set_attr(xml::add_element(xml::root_ref(doc), "e"), "v", std::string("a\x01\tb"));
  const std::string text = xml::print(doc);
  EXPECT_EQ(text, "<e v=\"a&#x01;&#x09;b\" />");
  EXPECT_EQ(xml::attr(xml::child(xml::root_ref(xml::parse(text)), "e"), "v"), "a\x01\tb");
}

TEST(XmlDoc, ParseStopsAtTheFirstNul) {
  const std::string text("<a x=\"1\"/>\0<b", 13);
  const auto doc = xml::parse(text);
  EXPECT_EQ(xml::print(doc), "<a x=\"1\" />");
}

TEST(XmlDoc, AFailedParseShowsTheWholeLengthIncludingBytesBehindANul) {
  std::string text("<a", 2);
  text += '\0';
  text += std::string(200, 'z');
  EXPECT_EQ(excerpt_line(text), trace_for(text.substr(0, 128) + "..., length: 203"));
}

TEST(XmlDoc, UnknownEncodingKeepsBytesOfAReference) {
  // Without a UTF-8 declaration TinyXML reads byte-wise: a reference gives its low byte.
  EXPECT_EQ(xml::attr(xml::child(xml::root_ref(xml::parse("<a b='&#x20AC;'/>")), "a"), "b"),
            "\xAC");
  EXPECT_EQ(
      xml::attr(xml::child(xml::root_ref(xml::parse(
                               "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a b='&#x20AC;'/>")),
                           "a"),
                "b"),
      "\xE2\x82\xAC");
}

TEST(XmlDoc, TruncatedUtf8SequenceAtTheEndDoesNotReadPastTheText) {
  // In UTF-8 mode TinyXML steps over a whole sequence from its lead byte. Bytes left behind
  // the terminator in the string's buffer would otherwise be read as text: here they would
  // close the attribute and the element and make the document look whole.
  const std::string head = "<?xml version=\"1.0\"?><a b=\"\xE2";
  std::string text = head + "12\"/>";
  text.resize(head.size());
  ASSERT_EQ(text.back(), '\xE2');
  const auto lines = parse_failure(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "XML error: [Error parsing Element.]. Error code: [3].");
}

TEST(XmlDoc, DocumentLivesAsLongAsAReferenceToIt) {
  xml::xml_node_ref_t ref;
  {
    const auto doc = xml::parse("<a><b v=\"kept\"/></a>");
    ref = xml::child(xml::child(xml::root_ref(doc), "a"), "b");
  }
  EXPECT_EQ(ref.doc.use_count(), 1);
  EXPECT_EQ(xml::attr(ref, "v"), "kept");
}

// 10 MiB texts: a large document works; large broken ones fail with their texts.
constexpr size_t kTenMiB = 10u * 1024u * 1024u;

TEST(XmlDocLarge, TenMebibyteDocumentOfManyElementsParsesAndPrints) {
  std::string text = "<root>";
  size_t count = 0;
  while (text.size() < kTenMiB) {
    text += "<item n=\"" + std::to_string(count++) + "\" v=\"&amp;&lt;x&gt;\">t</item>";
  }
  text += "</root>";
  const auto doc = xml::parse(text);
  size_t seen = 0;
  for (auto i = xml::first_child(xml::child(xml::root_ref(doc), "root")); i;
       i = xml::next_sibling(i)) {
    ++seen;
  }
  EXPECT_EQ(seen, count);
  EXPECT_EQ(xml::print(doc), text);
}

TEST(XmlDocLarge, TenMebibyteAttributeValueSurvives) {
  std::string value(kTenMiB, 'v');
  value[12345] = '&';
  value[kTenMiB - 1] = '<';
  const auto doc = xml::new_doc();
  xml::set_attr(xml::add_element(xml::root_ref(doc), "a"), "v", value);
  const auto again = xml::parse(xml::print(doc));
  EXPECT_EQ(xml::attr(xml::child(xml::root_ref(again), "a"), "v"), value);
}

TEST(XmlDocLarge, TenMebibyteTextWithoutItsEndFailsWithTheCutTraceLine) {
  std::string text = "<root>";
  while (text.size() < kTenMiB) text += "<item v=\"1\"/>";
  const auto lines = parse_failure(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "XML error: [Error reading Element value.]. Error code: [5].");
  EXPECT_EQ(lines[1].text,
            trace_for(text.substr(0, 128) + "..., length: " + std::to_string(text.size())));
}

TEST(XmlDocLarge, TenMebibytesOfNestingFailBeforeTinyXmlRecursesIntoThem) {
  std::string text;
  while (text.size() < kTenMiB) text += "<a>";
  expect_parse_failure(text,
                       "XML error: [Element nesting is deeper than 256 levels.]. Error code: [3].");
}

TEST(XmlDocLarge, TenMebibytesOfGarbageFail) {
  std::string text(kTenMiB, '\0');
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(1 + (i * 7919) % 255);
  const auto lines = parse_failure(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text.rfind("XML error: [", 0), 0u);
}

TEST(XmlDocLarge, TenMebibytesOfUnterminatedReferencesFail) {
  std::string text = "<a v=\"";
  while (text.size() < kTenMiB) text += "&#x1";
  const auto lines = parse_failure(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "XML error: [Error parsing Element.]. Error code: [3].");
}

}  // namespace
