// Attribute reading and writing, query_bool's readings and action_attr's paired texts.
#include "common/xml/xml_attr.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <climits>
#include <string>

#include "common/exc/exc_base.h"
#include "common/xml/xml_node.h"

namespace {

using exc::runtime_exc_t;

xml::xml_node_ref_t element_from(const std::string& text) {
  const auto doc = xml::parse(text);
  return xml::first_child(xml::root_ref(doc));
}

template <typename F>
std::string failure_text(F&& f) {
  try {
    f();
  } catch (const runtime_exc_t& e) {
    return e.what();
  }
  return "<nothing thrown>";
}

TEST(XmlAttr, AttrAnswersTheValue) {
  EXPECT_EQ(xml::attr(element_from("<e a=\"x\" b=\"y\"/>"), "b"), "y");
  EXPECT_EQ(xml::attr(element_from("<e a=\"\"/>"), "a"), "");
}

TEST(XmlAttr, AttrOfAMissingAttributeFailsWithItsName) {
  EXPECT_EQ(failure_text([] { xml::attr(element_from("<e a=\"x\"/>"), "dbPrepareXml"); }),
            "Attribute value is not specified. Attribute: [dbPrepareXml].");
}

TEST(XmlAttr, AttrNamesCompareWithRegardToCase) {
  const auto e = element_from("<e Name=\"x\"/>");
  EXPECT_EQ(failure_text([&] { xml::attr(e, "name"); }),
            "Attribute value is not specified. Attribute: [name].");
}

TEST(XmlAttr, ReadingFormsTreatANullOrNonElementReferenceAsHavingNoAttributes) {
  EXPECT_EQ(failure_text([] { xml::attr(xml::xml_node_ref_t{}, "a"); }),
            "Attribute value is not specified. Attribute: [a].");
  std::string value = "kept";
  EXPECT_FALSE(xml::query_attr(xml::xml_node_ref_t{}, "a", value));
  EXPECT_EQ(value, "kept");
  const auto doc = xml::parse("<r><!-- c --></r>");
  const xml::xml_node_ref_t comment{doc, doc->RootElement()->FirstChild()};
  EXPECT_FALSE(xml::query_attr(comment, "a", value));
  bool flag = false;
  EXPECT_FALSE(xml::query_bool(comment, "a", flag));
}

TEST(XmlAttr, QueryAttrAnswersPresenceAndLeavesTheOutputWhenMissing) {
  const auto e = element_from("<e a=\"1\"/>");
  std::string value = "kept";
  EXPECT_FALSE(xml::query_attr(e, "b", value));
  EXPECT_EQ(value, "kept");
  EXPECT_TRUE(xml::query_attr(e, "a", value));
  EXPECT_EQ(value, "1");
}

TEST(XmlAttr, SetAttrAddsAndReplaces) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_attr(e, "a", std::string("1"));
  xml::set_attr(e, "b", std::string("2"));
  xml::set_attr(e, "a", std::string("3"));
  EXPECT_EQ(xml::print(doc), "<e a=\"3\" b=\"2\" />");
}

TEST(XmlAttr, SetAttrOfALiteralWritesTextNotABoolean) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_attr(e, "a", "text");
  EXPECT_EQ(xml::attr(e, "a"), "text");
}

TEST(XmlAttr, SetAttrOfABooleanWritesTrueOrFalse) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_attr(e, "yes", true);
  xml::set_attr(e, "no", false);
  EXPECT_EQ(xml::print(doc), "<e yes=\"true\" no=\"false\" />");
}

TEST(XmlAttr, SetAttrOnANullReferenceFailsWithTheContextLine) {
  try {
    xml::set_attr(xml::xml_node_ref_t{}, "conn", std::string("abc"));
    FAIL() << "nothing thrown";
  } catch (const runtime_exc_t& e) {
    ASSERT_EQ(e.messages().size(), 2u);
    EXPECT_EQ(e.messages()[0].text, "XML element is not specified.");
    EXPECT_EQ(e.messages()[1].text,
              "Failed to set attribute value. Attribute: [conn]. Value: [abc].");
    EXPECT_FALSE(e.messages()[1].is_trace);
  }
}

TEST(XmlAttr, SetAttrOnTheDocumentItselfFails) {
  const auto doc = xml::new_doc();
  EXPECT_EQ(failure_text([&] { xml::set_attr(xml::root_ref(doc), "a", true); }),
            "XML element is not specified.\n"
            "Failed to set attribute value. Attribute: [a]. Value: [true].");
}

struct bool_case_t {
  const char* text;
  bool expected;
};

class XmlQueryBool : public ::testing::TestWithParam<bool_case_t> {};

TEST_P(XmlQueryBool, ReadsTheText) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_attr(e, "f", GetParam().text);
  bool value = !GetParam().expected;
  EXPECT_TRUE(xml::query_bool(e, "f", value));
  EXPECT_EQ(value, GetParam().expected) << "text: [" << GetParam().text << "]";
}

INSTANTIATE_TEST_SUITE_P(Texts, XmlQueryBool,
                         ::testing::Values(bool_case_t{"true", true}, bool_case_t{"TRUE", true},
                                           bool_case_t{"tRuE", true}, bool_case_t{"false", false},
                                           bool_case_t{"False", false}, bool_case_t{"FALSE", false},
                                           bool_case_t{"0", false}, bool_case_t{"", true},
                                           bool_case_t{"1", true}, bool_case_t{"yes", true},
                                           bool_case_t{"no", true}, bool_case_t{"00", true},
                                           bool_case_t{" false", true}, bool_case_t{"false ", true},
                                           bool_case_t{"f", true}, bool_case_t{"truee", true}));

TEST(XmlAttr, QueryBoolOfAMissingAttributeAnswersFalseAndLeavesTheValue) {
  const auto e = element_from("<e/>");
  bool value = true;
  EXPECT_FALSE(xml::query_bool(e, "f", value));
  EXPECT_TRUE(value);
  value = false;
  EXPECT_FALSE(xml::query_bool(e, "f", value));
  EXPECT_FALSE(value);
}

TEST(XmlAttr, ActionAttrReadsTheLeadingNumber) {
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"12abc\"/>")), 12);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"3\"/>")), 3);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"0\"/>")), 0);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"  -7\"/>")), -7);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"+4 x\"/>")), 4);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"&#x09;5\"/>")), 5);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"007\"/>")), 7);
}

TEST(XmlAttr, ActionAttrSaturatesBeyondThirtyTwoBits) {
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"99999999999\"/>")), INT32_MAX);
  EXPECT_EQ(xml::action_attr(element_from("<e action=\"-99999999999\"/>")), INT32_MIN);
}

TEST(XmlAttr, ActionAttrThatIsNoNumberFailsAsNotSpecified) {
  const char* const kExpected = "Attribute value is not specified. Attribute: [action].";
  EXPECT_EQ(failure_text([] { xml::action_attr(element_from("<e action=\"abc\"/>")); }), kExpected);
  EXPECT_EQ(failure_text([] { xml::action_attr(element_from("<e action=\"\"/>")); }), kExpected);
  EXPECT_EQ(failure_text([] { xml::action_attr(element_from("<e action=\"-\"/>")); }), kExpected);
  EXPECT_EQ(failure_text([] { xml::action_attr(element_from("<e action=\"+ 1\"/>")); }), kExpected);
}

TEST(XmlAttr, ActionAttrThatIsMissingFailsAsAnUnexpectedType) {
  const char* const kExpected = "Unexpected type of the attribute. Attribute: [action].";
  EXPECT_EQ(failure_text([] { xml::action_attr(element_from("<e Action=\"1\"/>")); }), kExpected);
  EXPECT_EQ(failure_text([] { xml::action_attr(xml::xml_node_ref_t{}); }), kExpected);
}

TEST(XmlAttr, SetActionAttrWritesDecimal) {
  const auto doc = xml::new_doc();
  const auto e = xml::add_element(xml::root_ref(doc), "e");
  xml::set_action_attr(e, 42);
  EXPECT_EQ(xml::attr(e, "action"), "42");
  xml::set_action_attr(e, -3);
  EXPECT_EQ(xml::attr(e, "action"), "-3");
  xml::set_action_attr(e, INT32_MIN);
  EXPECT_EQ(xml::attr(e, "action"), "-2147483648");
  EXPECT_EQ(xml::action_attr(e), INT32_MIN);
  EXPECT_EQ(xml::print(doc), "<e action=\"-2147483648\" />");
}

TEST(XmlAttr, SetActionAttrOnANullReferenceFailsWithTheContextLine) {
  EXPECT_EQ(failure_text([] { xml::set_action_attr(xml::xml_node_ref_t{}, 5); }),
            "XML element is not specified.\n"
            "Failed to set attribute value. Attribute: [action]. Value: [5].");
}

}  // namespace
