// Which nodes count as a text, and which text.

#include "tests/xml/xml_fixture.h"

namespace {

class XmlText : public rastrel::test::XmlTest {};

int CountOf(const XmlNode& node) {
  int count = 0;
  return static_cast<int>(NodeChildren(node, count).size());
}

TEST_F(XmlText, texts_of_blanks_alone_are_no_children) {
  EXPECT_EQ(CountOf(Load(L"<a>\r\n\t <b/>\n </a>")), 1);
  EXPECT_EQ(CountOf(Load(L"<a> \t\r\n</a>")), 0);
}

TEST_F(XmlText, blanks_of_unicode_are_text) {
  EXPECT_EQ(CountOf(Load(L"<a>\u00A0</a>")), 1);
  EXPECT_EQ(Text(Load(L"<a>\u00A0</a>")), L"\u00A0");
  EXPECT_EQ(Text(Load(L"<a>\u2003x</a>")), L"\u2003x");
}

TEST_F(XmlText, is_all_text_below_an_element_in_order) {
  EXPECT_EQ(Text(Load(L"<a> one <b>two<!--not this--><?nor this?></b> "
                      L"<c><d> three</d></c> </a>")),
            L"one two three");
}

TEST_F(XmlText, between_elements_blanks_alone_are_dropped) {
  EXPECT_EQ(Text(Load(L"<a><b>one</b> <b>two</b></a>")), L"onetwo");
}

TEST_F(XmlText, a_comment_parts_two_texts) {
  EXPECT_EQ(CountOf(Load(L"<a>one<!--x-->two</a>")), 3);
  EXPECT_EQ(Text(Load(L"<a>one<!--x-->two</a>")), L"onetwo");
}

TEST_F(XmlText, blanks_inside_stay_and_those_at_the_ends_go) {
  EXPECT_EQ(Text(Load(L"<a>\r\n\t one \t two\n\nthree \t\r\n</a>")), L"one \t two\n\nthree");
}

TEST_F(XmlText, every_kind_of_line_end_becomes_a_line_feed) {
  EXPECT_EQ(Text(Load(L"<a>1\r\n2\r3\n4\n\r5</a>")), L"1\n2\n3\n4\n\n5");
  EXPECT_EQ(Text(Load(L"<a><![CDATA[1\r\n2\r3\r\r\n4]]></a>")), L"1\n2\n3\n\n4");
  const XmlNode parts = Load(L"<a n='1\r\n2\r3'><!--1\r\n2\r3--><?x 1\r\n2\r3?></a>");
  EXPECT_EQ(Attribute(parts, L"n"), L"1 2 3");
  int count = 0;
  for (const XmlNode& part : NodeChildren(parts, count)) EXPECT_EQ(Text(part), L"1\n2\n3");
}

TEST_F(XmlText, a_carriage_return_that_is_written_as_a_number_stays) {
  EXPECT_EQ(Text(Load(L"<a>1&#13;2</a>")), L"1\r2");
}

TEST_F(XmlText, the_five_entities_and_numbers_are_replaced) {
  EXPECT_EQ(Text(Load(L"<a>&lt;&amp;&gt;&quot;&apos;&#65;&#x20ac;&#x1F600;</a>")),
            L"<&>\"'A\u20AC\U0001F600");
  EXPECT_EQ(Attribute(Load(L"<a n='&lt;&amp;&gt;&quot;&apos;'/>"), L"n"), L"<&>\"'");
  // An entity's characters are text and not markup.
  EXPECT_EQ(Text(Load(L"<a>&lt;b/&gt;</a>")), L"<b/>");
  EXPECT_EQ(Text(Load(L"<a>&amp;lt;</a>")), L"&lt;");
}

TEST_F(XmlText, a_cdata_section_is_as_it_is) {
  EXPECT_EQ(Text(Load(L"<a><![CDATA[<b> &amp; ]] >]]></a>")), L"<b> &amp; ]] >");
}

TEST_F(XmlText, a_cdata_section_of_blanks_is_a_node_and_trims_away) {
  const XmlNode root = Load(L"<a><![CDATA[  ]]></a>");
  EXPECT_EQ(CountOf(root), 1);
  EXPECT_EQ(Text(root), L"(none)");
  EXPECT_EQ(Text(Load(L"<a>1<![CDATA[  ]]>2</a>")), L"1  2");
}

TEST_F(XmlText, sections_side_by_side_are_two_nodes_and_an_empty_one_is_one) {
  EXPECT_EQ(CountOf(Load(L"<a><![CDATA[x]]><![CDATA[y]]><![CDATA[]]></a>")), 3);
  EXPECT_EQ(CountOf(Load(L"<a>x<![CDATA[y]]>z</a>")), 3);
}

TEST_F(XmlText, a_section_is_one_node_however_long_it_is) {
  // The parser hands long ones over in pieces of 300 bytes.
  for (const std::size_t length : {299U, 300U, 301U, 600U, 65536U, 70000U, 200000U}) {
    for (const bool last : {false, true}) {
      const std::wstring content(length, L'x');
      const XmlNode root =
          Load(L"<a><![CDATA[" + content + L"]]>" + (last ? L"" : L"<![CDATA[y]]>z") + L"</a>");
      EXPECT_EQ(last ? 1 : 3, CountOf(root)) << length;
      EXPECT_EQ(content + (last ? L"" : L"yz"), Text(root)) << length;
    }
  }
}

TEST_F(XmlText, a_long_text_is_one_node) {
  std::wstring content;
  for (int index = 0; index < 40000; ++index)
    content += L"line\n&amp;\u00E9" + std::to_wstring(index);
  std::wstring written;
  for (const wchar_t character : content)
    written += character == L'\n' ? std::wstring(L"\r\n") : std::wstring(1, character);
  std::wstring expected;
  for (int index = 0; index < 40000; ++index) expected += L"line\n&\u00E9" + std::to_wstring(index);
  const XmlNode root = Load(L"<a>" + written + L"</a>");
  EXPECT_EQ(CountOf(root), 1);
  EXPECT_EQ(expected, Text(root));
}

TEST_F(XmlText, many_blanks_ahead_of_a_text_belong_to_it) {
  const std::wstring blanks(100000, L' ');
  const XmlNode root = Load(L"<a>" + blanks + L"x" + blanks + L"</a>");
  EXPECT_EQ(CountOf(root), 1);
  EXPECT_EQ(Text(root), L"x");
  EXPECT_EQ(CountOf(Load(L"<a>" + blanks + L"</a>")), 0);
}

TEST_F(XmlText, nodes_around_the_document_element_are_no_part_of_it) {
  const XmlNode root = Load(L"<?xml version='1.0'?>\n<!--a--><?b c?>\n<d/>\n<!--e--><?f?>\n");
  EXPECT_TRUE(NodeNameIs(root, L"d"));
  EXPECT_EQ(CountOf(root), 0);
}

}  // namespace
