// The functions that readers see documents through.

#include "rastrel/xml/layer.h"

#include <thread>

#include "tests/xml/xml_fixture.h"

namespace {

class XmlLayer : public rastrel::test::XmlTest {};

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

TEST_F(XmlLayer, an_empty_element_leaves_the_value_unchanged) {
  const XmlNode root = Load(L"<a><b/><c> \n </c></a>");
  std::wstring text = L"kept";
  double number = 2.5;
  float narrow = 1.5F;
  std::int32_t whole = 7;
  for (const wchar_t* const name : {L"b", L"c", L"absent"}) {
    const XmlNode node = FirstChildNamed(root, name);
    EXPECT_FALSE(NodeText(node, text));
    EXPECT_FALSE(NodeDouble(node, number));
    EXPECT_FALSE(NodeFloat(node, narrow));
    EXPECT_FALSE(NodeInt(node, whole));
  }
  EXPECT_EQ(text, L"kept");
  EXPECT_EQ(number, 2.5);
  EXPECT_EQ(narrow, 1.5F);
  EXPECT_EQ(whole, 7);
}

TEST_F(XmlLayer, a_text_that_is_no_number_is_0_and_not_the_earlier_value) {
  const XmlNode root = Load(L"<a n='wide'>wide</a>");
  double number = 2.5;
  float narrow = 1.5F;
  std::int32_t whole = 7;
  EXPECT_TRUE(NodeDouble(root, number));
  EXPECT_TRUE(NodeFloat(root, narrow));
  EXPECT_TRUE(NodeInt(root, whole));
  EXPECT_EQ(number, 0.0);
  EXPECT_EQ(narrow, 0.0F);
  EXPECT_EQ(whole, 0);
  number = 2.5;
  whole = 7;
  EXPECT_TRUE(AttributeDouble(root, L"n", number));
  EXPECT_TRUE(AttributeInt(root, L"n", whole));
  EXPECT_EQ(number, 0.0);
  EXPECT_EQ(whole, 0);
}

TEST_F(XmlLayer, numbers_are_read_from_the_start_of_the_text) {
  const XmlNode root = Load(L"<a w=' 12 mm' h='-3.5e1x'>\n 0.1</a>");
  double number = 0;
  float narrow = 0;
  std::int32_t whole = 0;
  EXPECT_TRUE(NodeFloat(root, narrow));
  EXPECT_EQ(narrow, 0.1F);
  EXPECT_TRUE(NodeDouble(root, number));
  EXPECT_EQ(number, 0.1);
  EXPECT_TRUE(AttributeInt(root, L"w", whole));
  EXPECT_EQ(whole, 12);
  EXPECT_TRUE(AttributeDouble(root, L"h", number));
  EXPECT_EQ(number, -35.0);
}

TEST_F(XmlLayer, a_prefix_is_no_part_of_an_elements_name) {
  const XmlNode root = Load(L"<svg:svg xmlns:svg='http://www.w3.org/2000/svg'/>");
  std::wstring name;
  EXPECT_TRUE(NodeNameIs(root, L"svg"));
  EXPECT_FALSE(NodeNameIs(root, L"svg:svg"));
  EXPECT_TRUE(NodeBaseName(root, name));
  EXPECT_EQ(name, L"svg");
}

TEST_F(XmlLayer, an_element_of_another_case_counts_as_absent) {
  const XmlNode root = Load(L"<a><Plate/><PLATE n='1'/><plate/></a>");
  ASSERT_EQ(ChildrenNamed(root, L"PLATE").size(), 1U);
  std::int32_t number = 0;
  EXPECT_TRUE(AttributeInt(FirstChildNamed(root, L"PLATE"), L"n", number));
  EXPECT_EQ(number, 1);
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

TEST_F(XmlLayer, a_name_is_no_other_that_it_begins) {
  const XmlNode root = Load(L"<name x='1' xx='2'/>");
  EXPECT_FALSE(NodeNameIs(root, L"nam"));
  EXPECT_FALSE(NodeNameIs(root, L"names"));
  EXPECT_FALSE(NodeNameIs(root, L""));
  EXPECT_EQ(Attribute(root, L"xx"), L"2");
  EXPECT_EQ(Attribute(root, L"xxx"), L"(none)");
}

TEST_F(XmlLayer, comments_instructions_and_texts_are_children_without_a_name) {
  const XmlNode root = Load(L"<a>one<!--two--><?three now?><b/><![CDATA[four]]></a>");
  int count = 0;
  const std::vector<XmlNode> children = NodeChildren(root, count);
  ASSERT_EQ(count, 5);
  ASSERT_EQ(children.size(), 5U);
  EXPECT_EQ(Text(children[0]), L"one");
  EXPECT_EQ(Text(children[1]), L"two");
  EXPECT_EQ(Text(children[2]), L"now");
  EXPECT_TRUE(NodeNameIs(children[3], L"b"));
  EXPECT_EQ(Text(children[4]), L"four");
  for (const std::size_t index : {0U, 1U, 2U, 4U}) {
    std::wstring name = L"there";
    EXPECT_FALSE(NodeBaseName(children[index], name));
    EXPECT_EQ(name, L"");
    EXPECT_FALSE(NodeNameIs(children[index], L"three"));
    EXPECT_FALSE(NodeNameIs(children[index], L""));
    EXPECT_TRUE(AttributeList(children[index]).empty());
    EXPECT_TRUE(NodeChildren(children[index], count).empty());
    EXPECT_EQ(count, 0);
  }
}

TEST_F(XmlLayer, children_keep_their_order_and_their_names_apart) {
  const XmlNode root = Load(L"<a><n>1</n><m>2</m><x:n xmlns:x='u'>3</x:n><b><n>4</n></b></a>");
  const std::vector<XmlNode> named = ChildrenNamed(root, L"n");
  ASSERT_EQ(named.size(), 2U);
  EXPECT_EQ(Text(named[0]), L"1");
  EXPECT_EQ(Text(named[1]), L"3");
  EXPECT_EQ(Text(FirstChildNamed(root, L"n")), L"1");
  EXPECT_TRUE(ChildrenNamed(root, L"none").empty());
}

TEST_F(XmlLayer, attributes_are_asked_for_by_the_name_as_written) {
  const XmlNode root = Load(L"<a x:id='7' id='8' empty='' xmlns:x='u'/>");
  EXPECT_EQ(Attribute(root, L"x:id"), L"7");
  EXPECT_EQ(Attribute(root, L"id"), L"8");
  EXPECT_EQ(Attribute(root, L"ID"), L"(none)");
  EXPECT_EQ(Attribute(root, L"empty"), L"(none)");
  EXPECT_EQ(Attribute(root, L"xmlns:x"), L"u");
  double number = 2.5;
  std::int32_t whole = 7;
  EXPECT_FALSE(AttributeDouble(root, L"empty", number));
  EXPECT_FALSE(AttributeInt(root, L"absent", whole));
  EXPECT_EQ(number, 2.5);
  EXPECT_EQ(whole, 7);
}

TEST_F(XmlLayer, a_list_of_attributes_has_local_names_and_no_empty_ones) {
  const XmlNode root = Load(L"<a x:id='7' name='n' empty='' xmlns:x='u' xmlns='d' last='l'/>");
  const Pairs expected = {
      {L"x", L"u"}, {L"xmlns", L"d"}, {L"id", L"7"}, {L"name", L"n"}, {L"last", L"l"}};
  EXPECT_EQ(expected, AttributeList(root));
}

TEST_F(XmlLayer, an_attribute_keeps_the_blanks_at_its_ends) {
  // A line end in an attribute is a blank, by XML's own rules.
  EXPECT_EQ(Attribute(Load(L"<a n=' two\n\twords '/>"), L"n"), L" two  words ");
}

TEST_F(XmlLayer, no_node_is_a_node_without_anything) {
  const XmlNode none;
  int count = 7;
  std::wstring name;
  EXPECT_FALSE(static_cast<bool>(none));
  EXPECT_TRUE(NodeChildren(none, count).empty());
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(ChildrenNamed(none, L"a").empty());
  EXPECT_FALSE(static_cast<bool>(FirstChildNamed(none, L"a")));
  EXPECT_FALSE(NodeNameIs(none, L""));
  EXPECT_FALSE(NodeBaseName(none, name));
  EXPECT_EQ(Text(none), L"(none)");
  EXPECT_EQ(Attribute(none, L"a"), L"(none)");
  EXPECT_TRUE(AttributeList(none).empty());
}

TEST_F(XmlLayer, a_node_keeps_its_document_alive) {
  XmlNode deep;
  {
    const XmlNode root = Load(L"<a><b><c>deep</c></b></a>");
    XmlNode copy = FirstChildNamed(FirstChildNamed(root, L"b"), L"c");
    deep = copy;
    copy = XmlNode();
    XmlNode& itself = deep;
    deep = itself;
  }
  EXPECT_EQ(Text(deep), L"deep");
  const XmlNode moved = std::move(deep);
  EXPECT_EQ(Text(moved), L"deep");
}

TEST_F(XmlLayer, several_threads_read_one_document) {
  const XmlNode root = Load(L"<a><b>text</b></a>");
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 4; ++reader)
    readers.emplace_back([root] {
      for (int round = 0; round < 2000; ++round)
        ASSERT_EQ(Text(FirstChildNamed(root, L"b")), L"text");
    });
  for (std::thread& reader : readers) reader.join();
}

TEST_F(XmlLayer, a_text_goes_where_there_is_room_already) {
  const XmlNode root = Load(L"<a n='short'>short</a>");
  std::wstring text(500, L'x');
  const wchar_t* const place = text.data();
  ASSERT_TRUE(NodeText(root, text));
  EXPECT_EQ(place, text.data());
  ASSERT_TRUE(AttributeString(root, L"n", text));
  EXPECT_EQ(place, text.data());
  EXPECT_EQ(text, L"short");
}

}  // namespace
