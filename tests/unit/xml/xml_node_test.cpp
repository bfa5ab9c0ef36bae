// Building and walking documents through references.
#include "common/xml/xml_node.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

#include "common/exc/exc_base.h"
#include "common/xml/xml_attr.h"

namespace {

using exc::runtime_exc_t;

std::string name_of(const xml::xml_node_ref_t& ref) { return ref.node ? ref.node->ValueStr() : ""; }

template <typename F>
std::string failure_text(F&& f) {
  try {
    f();
  } catch (const runtime_exc_t& e) {
    return e.what();
  }
  return "<nothing thrown>";
}

TEST(XmlNode, AddElementOnTheDocumentMakesTheRoot) {
  const auto doc = xml::new_doc();
  const auto root = xml::add_element(xml::root_ref(doc), "restore");
  EXPECT_EQ(root.doc, doc);
  EXPECT_EQ(root.node, doc->RootElement());
  EXPECT_EQ(xml::print(doc), "<restore />");
}

TEST(XmlNode, AddElementAppendsAtTheEndAndAnswersTheInsertedCopy) {
  const auto doc = xml::new_doc();
  const auto root = xml::add_element(xml::root_ref(doc), "r");
  const auto first = xml::add_element(root, "x");
  const auto second = xml::add_element(root, "y");
  xml::set_attr(first, "n", "1");
  xml::set_attr(second, "n", "2");
  EXPECT_EQ(xml::print(doc), "<r><x n=\"1\" /><y n=\"2\" /></r>");
  EXPECT_EQ(first.node->Parent(), root.node);
}

TEST(XmlNode, AddElementOnANullReferenceFailsWithTheName) {
  EXPECT_EQ(failure_text([] { xml::add_element(xml::xml_node_ref_t{}, "pdbs"); }),
            "Failed to create XML element [pdbs]. Parent node is not specified.");
  const auto doc = xml::new_doc();
  EXPECT_EQ(
      failure_text([&] { xml::add_element(xml::find_child(xml::root_ref(doc), "none"), "x"); }),
      "Failed to create XML element [x]. Parent node is not specified.");
}

TEST(XmlNode, FindChildWithANameThatOccursTwiceAnswersTheFirst) {
  const auto doc = xml::parse("<r><a n=\"1\"/><b/><a n=\"2\"/></r>");
  const auto a = xml::find_child(xml::child(xml::root_ref(doc), "r"), "a");
  ASSERT_TRUE(a);
  EXPECT_EQ(xml::attr(a, "n"), "1");
}

TEST(XmlNode, FindChildWithoutAMatchAnswersANullReferenceOnTheSameDocument) {
  const auto doc = xml::parse("<r><a/></r>");
  const auto none = xml::find_child(xml::child(xml::root_ref(doc), "r"), "b");
  EXPECT_TRUE(none.is_null());
  EXPECT_FALSE(none);
  EXPECT_EQ(none.doc, doc);
}

TEST(XmlNode, NamesCompareWithRegardToCase) {
  const auto doc = xml::parse("<r><Item/></r>");
  const auto r = xml::child(xml::root_ref(doc), "r");
  EXPECT_FALSE(xml::find_child(r, "item"));
  EXPECT_TRUE(xml::find_child(r, "Item"));
}

TEST(XmlNode, FindChildLooksOnlyAtDirectChildren) {
  const auto doc = xml::parse("<r><a><b/></a></r>");
  EXPECT_FALSE(xml::find_child(xml::child(xml::root_ref(doc), "r"), "b"));
}

TEST(XmlNode, ChildWithoutAMatchFailsWithTheName) {
  const auto doc = xml::parse("<databases/>");
  EXPECT_EQ(failure_text([&] { xml::child(xml::root_ref(doc), "restore"); }),
            "There is no node with the specified name: [restore].");
  EXPECT_EQ(failure_text([] { xml::child(xml::xml_node_ref_t{}, "x"); }),
            "There is no node with the specified name: [x].");
}

TEST(XmlNode, FirstChildPassesOverCommentsAndText) {
  const auto doc = xml::parse("<r>text<!-- c --><b/><c/></r>");
  EXPECT_EQ(name_of(xml::first_child(xml::child(xml::root_ref(doc), "r"))), "b");
}

TEST(XmlNode, FirstChildOfAnElementWithOnlyTextIsNull) {
  const auto doc = xml::parse("<r>only text</r>");
  EXPECT_TRUE(xml::first_child(xml::child(xml::root_ref(doc), "r")).is_null());
}

TEST(XmlNode, FirstChildOfTheDocumentIsItsRootElement) {
  const auto doc = xml::parse("<?xml version=\"1.0\"?><!-- c --><r/>");
  EXPECT_EQ(name_of(xml::first_child(xml::root_ref(doc))), "r");
}

TEST(XmlNode, NextSiblingCountsCommentsAsNodes) {
  const auto doc = xml::parse("<r><a/><!-- c --><b/></r>");
  const auto a = xml::first_child(xml::child(xml::root_ref(doc), "r"));
  const auto comment = xml::next_sibling(a);
  ASSERT_TRUE(comment);
  EXPECT_NE(comment.node->ToComment(), nullptr);
  EXPECT_EQ(name_of(xml::next_sibling(comment)), "b");
  EXPECT_TRUE(xml::next_sibling(xml::next_sibling(comment)).is_null());
}

TEST(XmlNode, NavigationFromANullReferenceGivesNullReferences) {
  const xml::xml_node_ref_t none;
  EXPECT_TRUE(xml::find_child(none, "a").is_null());
  EXPECT_TRUE(xml::first_child(none).is_null());
  EXPECT_TRUE(xml::next_sibling(none).is_null());
}

TEST(XmlNode, CopiesOfAReferenceShareTheDocument) {
  const auto doc = xml::parse("<r/>");
  const auto r = xml::child(xml::root_ref(doc), "r");
  const xml::xml_node_ref_t copy = r;
  EXPECT_EQ(copy.doc, r.doc);
  EXPECT_EQ(copy.node, r.node);
  EXPECT_EQ(doc.use_count(), 3);
}

TEST(XmlNode, WalkOfAllChildElementsSeesTheDocumentOrder) {
  const auto doc = xml::parse("<r><d n=\"1\"/><x n=\"2\"/><!-- c -->text<d n=\"3\"/></r>");
  std::string seen;
  for (auto i = xml::first_child(xml::child(xml::root_ref(doc), "r")); i;
       i = xml::next_sibling(i)) {
    std::string n;
    if (xml::query_attr(i, "n", n)) seen += n;
  }
  EXPECT_EQ(seen, "123");
}

}  // namespace
