// The functions that readers see documents through.

#include "rastrel/imports/xml_layer.h"

#include <gtest/gtest.h>

#include "tests/support/library_fixture.h"

namespace {

class XmlLayer : public rastrel::test::LibraryTest {
 protected:
  static XmlNode Load(std::wstring_view text) {
    XmlNode root = LoadXmlString(text);
    EXPECT_TRUE(static_cast<bool>(root));
    return root;
  }
};

TEST_F(XmlLayer, an_empty_element_leaves_what_was_there) {
  const XmlNode root = Load(L"<a><b/><c> \n </c></a>");
  std::wstring text = L"kept";
  double number = 2.5;
  float narrow = 1.5F;
  std::int32_t whole = 7;
  for (const wchar_t* const name : {L"b", L"c"}) {
    const XmlNode node = FirstChildNamed(root, name);
    ASSERT_TRUE(static_cast<bool>(node));
    EXPECT_FALSE(NodeText(node, text));
    EXPECT_FALSE(NodeDouble(node, number));
    EXPECT_FALSE(NodeFloat(node, narrow));
    EXPECT_FALSE(NodeInt(node, whole));
  }
  EXPECT_EQ(L"kept", text);
  EXPECT_EQ(2.5, number);
  EXPECT_EQ(1.5F, narrow);
  EXPECT_EQ(7, whole);
}

TEST_F(XmlLayer, a_prefix_is_no_part_of_the_name) {
  const XmlNode root = Load(L"<svg:svg xmlns:svg='http://www.w3.org/2000/svg'/>");
  std::wstring name;
  EXPECT_TRUE(NodeNameIs(root, L"svg"));
  EXPECT_FALSE(NodeNameIs(root, L"svg:svg"));
  EXPECT_TRUE(NodeBaseName(root, name));
  EXPECT_EQ(L"svg", name);
}

TEST_F(XmlLayer, an_element_of_another_case_counts_as_absent) {
  const XmlNode root = Load(L"<a><Plate/><PLATE n='1'/><plate/></a>");
  ASSERT_EQ(1U, ChildrenNamed(root, L"PLATE").size());
  std::int32_t number = 0;
  EXPECT_TRUE(AttributeInt(FirstChildNamed(root, L"PLATE"), L"n", number));
  EXPECT_EQ(1, number);
  EXPECT_FALSE(static_cast<bool>(FirstChildNamed(root, L"pLATE")));
}

TEST_F(XmlLayer, an_element_knows_its_line_and_nothing_else_has_one) {
  const XmlNode root =
      LoadXmlString(L"<?xml version='1.0'?>\n<a>\n\n<b x='1'\n  y='2'/>text<!-- c -->\n</a>");
  ASSERT_TRUE(root);
  int count = 0;
  const std::vector<XmlNode> children = NodeChildren(root, count);
  ASSERT_EQ(count, 3);
  EXPECT_EQ(NodeLine(root), 2);
  EXPECT_EQ(NodeLine(children[0]), 5) << "where the start tag ends";
  EXPECT_EQ(NodeLine(children[1]), 0);
  EXPECT_EQ(NodeLine(children[2]), 0);
  EXPECT_EQ(NodeLine(XmlNode()), 0);
}

}  // namespace
