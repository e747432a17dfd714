// Elements that are read without the parser, and all that is left to it.

#include "rastrel/xml/plain_scanner.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "rastrel/xml/limits.h"
#include "rastrel/xml/walk.h"

namespace {

using namespace rastrel::xml;

std::string TextOf(const XmlTreeNode& node) {
  if (node.kind != XmlKind::Element)
    return (node.isWhitespace ? "blank[" : "[") + std::string(node.Content()) + "]";
  std::string text = "<" + std::string(node.name->bytes) + "@" + std::to_string(node.line);
  for (const XmlTreeAttribute& attribute : node.Attributes())
    text += " " + std::string(attribute.name->bytes) + "=" + std::string(attribute.Value());
  text += ">";
  for (const XmlTreeNode* child = node.child; child != nullptr; child = child->next)
    text += TextOf(*child);
  return text + "/";
}

// Has one answer to all, and keeps the elements as text.
class Taker : public XmlElements {
 public:
  [[nodiscard]] const XmlName* Collected() const override { return nullptr; }
  [[nodiscard]] std::optional<StreamChoice> Choose(XmlTreeNode& start) override {
    chosen = TextOf(start);
    return choice;
  }
  void Take(const XmlTreeNode& element) override { taken = TextOf(element); }
  [[nodiscard]] bool KeepsWhitespace() const override { return keepsWhitespace; }

  std::optional<StreamChoice> choice = StreamChoice::Node;
  bool keepsWhitespace = false;
  std::string chosen;
  std::string taken;
};

class XmlPlain : public testing::Test {
 protected:
  // The elements taken of the bytes, as text, and the rest; or why nothing is taken.
  std::string Scan(std::string_view bytes, int depth = 1) {
    XmlPlainScanner scanner(m_Names, m_Taker);
    scanner.SetScope(m_Scope);
    m_Taker.taken.clear();
    m_Taker.chosen.clear();
    m_Result = scanner.Scan(bytes, depth, 1);
    m_Line = scanner.Line();
    m_Name = scanner.Name() == nullptr ? "" : scanner.Name()->bytes;
    m_Rest = bytes.substr(static_cast<std::size_t>(scanner.End() - bytes.data()));
    switch (m_Result) {
      case XmlScan::Taken: return m_Taker.taken + (m_Rest.empty() ? "" : " then " + m_Rest);
      case XmlScan::Entered: return "entered, then " + m_Rest;
      case XmlScan::Refused: return "refused before " + m_Rest;
      case XmlScan::NotPlain: return "not plain";
      case XmlScan::Incomplete: return "incomplete";
    }
    return {};
  }
  void ExpectNotPlain(std::string_view bytes) {
    EXPECT_EQ(Scan(bytes), "not plain") << bytes;
    EXPECT_EQ(m_Taker.taken, "") << bytes;
  }

  Taker m_Taker;
  XmlNames m_Names;
  std::vector<XmlBinding> m_Scope;
  XmlScan m_Result = XmlScan::Taken;
  std::uint32_t m_Line = 0;
  std::string m_Name;
  std::string m_Rest;
};

TEST_F(XmlPlain, a_row_of_cells_is_taken_with_its_attributes_and_texts) {
  EXPECT_EQ(Scan("<row r=\"1\" spans='1:2'><c r=\"A1\" t=\"s\"><v>17</v></c><c r=\"B1\"/></row>"
                 "<row/>"),
            "<row@1 r=1 spans=1:2><c@1 r=A1 t=s><v@1>[17]//<c@1 r=B1>// then <row/>");
}

TEST_F(XmlPlain, blanks_in_front_and_in_tags_are_passed) {
  EXPECT_EQ(Scan(" \n\t<a  b='c' ></a > "), "<a@2 b=c>/ then  ");
  EXPECT_EQ(Scan("<a />"), "<a@1>/");
}

TEST_F(XmlPlain, lines_are_counted_where_start_tags_end) {
  EXPECT_EQ(Scan("\n<a\n b='1'>\n<c\n/>x\n</a>"), "<a@3 b=1><c@5>/[x\n]/");
  EXPECT_EQ(m_Line, 6U);
}

TEST_F(XmlPlain, texts_of_blanks_alone_stand_in_nodes_only_where_they_are_kept) {
  EXPECT_EQ(Scan("<a> \n<b/> x </a>"), "<a@1><b@2>/[ x ]/");
  m_Taker.keepsWhitespace = true;
  EXPECT_EQ(Scan("<a> \n<b/> x </a>"), "<a@1>blank[ \n]<b@2>/[ x ]/");
}

TEST_F(XmlPlain, a_cut_element_is_incomplete_at_every_byte) {
  const std::string element =
      " <row r=\"1\" n='\xC3\xA9'><c/><v >x]y\xE2\x82\xAC</v ><xml.a-b_c.1 "
      "xml:space='preserve'/></row >";
  for (std::size_t size = 0; size < element.size(); ++size) {
    // Half a character looks like none, and the parser judges it.
    const std::string answer = Scan(element.substr(0, size));
    EXPECT_EQ(answer, "incomplete") << size;
  }
  EXPECT_NE(m_Taker.chosen, "");
  EXPECT_EQ(Scan(element).find("<row@1 r=1 n=\xC3\xA9>"), 0U) << Scan(element);
}

TEST_F(XmlPlain, references_are_left_to_the_parser) {
  ExpectNotPlain("<a>&amp;</a>");
  ExpectNotPlain("<a>x&#65;</a>");
  ExpectNotPlain("<a b='&lt;'/>");
}

TEST_F(XmlPlain, line_ends_that_change_are_left_to_the_parser) {
  ExpectNotPlain("\r\n<a/>");
  ExpectNotPlain("<a>\r\n</a>");
  ExpectNotPlain("<a>x\ry</a>");
  ExpectNotPlain("<a\r/>");
  for (const char* const value : {"x\ny", "x\ty", "\r"})
    ExpectNotPlain("<a b='" + std::string(value) + "'/>");
}

TEST_F(XmlPlain, sections_comments_and_instructions_are_left_to_the_parser) {
  for (const char* const piece : {"<![CDATA[x]]>", "<!--c-->", "<?i?>", "<!DOCTYPE a>"}) {
    ExpectNotPlain(piece);
    ExpectNotPlain("<a>" + std::string(piece) + "</a>");
  }
}

TEST_F(XmlPlain, texts_and_end_tags_between_elements_are_left_to_the_parser) {
  ExpectNotPlain("x<a/>");
  ExpectNotPlain("</a>");
  ExpectNotPlain("]<a/>");
}

TEST_F(XmlPlain, whatever_is_not_well_formed_is_left_to_the_parser) {
  for (const char* const element : {"<a></b>",
                                    "<a></ab>",
                                    "<ab></a >",
                                    "<a><b></a></b>",
                                    "<a b='1' b='2'/>",
                                    "<a b='1'c='2'/>",
                                    "<a b=1/>",
                                    "<a b/>",
                                    "<a b = '1'/>",
                                    "<a b='<'/>",
                                    "< a/>",
                                    "<1a/>",
                                    "<-a/>",
                                    "<a/ >",
                                    "<a>x]]>y</a>",
                                    "<a>\x01</a>",
                                    "<a b='\x1F'/>",
                                    "<a>\xC3</a>",
                                    "<a>\xED\xA0\x80</a>",
                                    "<a>\xC0\x80</a>",
                                    "<a>\xF4\x90\x80\x80</a>",
                                    "<a>\xEF\xBF\xBE</a>",
                                    "<a>\xEF\xBF\xBF</a>",
                                    "<a b='\xEF\xBF\xBF'/>",
                                    "<a b='\x80'/>",
                                    "<a ='1'/>",
                                    "<a></ a>",
                                    "<a></a b>"})
    ExpectNotPlain(element);
  ExpectNotPlain(std::string_view("<a>\0</a>", 8));
}

TEST_F(XmlPlain, characters_beyond_ascii_are_taken_in_texts_and_values_and_left_in_names) {
  EXPECT_EQ(Scan("<a b='\xC3\xA9'>\xF0\x9F\x98\x80\xC2\x85\x7F</a>"),
            "<a@1 b=\xC3\xA9>[\xF0\x9F\x98\x80\xC2\x85\x7F]/");
  ExpectNotPlain("<\xC3\xA9/>");
  ExpectNotPlain("<a \xC3\xA9='1'/>");
}

TEST_F(XmlPlain, brackets_that_end_no_section_are_text) {
  EXPECT_EQ(Scan("<a>x]]y > z]</a>"), "<a@1>[x]]y > z]]/");
}

TEST_F(XmlPlain, prefixes_are_taken_only_where_they_are_declared) {
  ExpectNotPlain("<p:a/>");
  ExpectNotPlain("<a p:b='1'/>");
  const char u[] = "u";
  m_Scope = {{nullptr, u}, {"p", u}};
  EXPECT_EQ(Scan("<p:a p:b='1'/>"), "<p:a@1 p:b=1>/");
  for (const char* const element : {"<q:a/>", "<p:a:b/>", "<:a/>", "<p:/>", "<p:1/>", "<xml:a/>",
                                    "<xmlns:a/>", "<a q:b='1'/>", "<a b:='1'/>"})
    ExpectNotPlain(element);
}

TEST_F(XmlPlain, declarations_are_left_to_the_parser) {
  for (const char* const element : {"<a xmlns='u'/>", "<a xmlns:p='u'/>", "<a xmlns=''/>"})
    ExpectNotPlain(element);
}

TEST_F(XmlPlain, of_the_attributes_of_xml_the_usual_one_is_taken) {
  EXPECT_EQ(Scan("<t xml:space=\"preserve\"> x</t>"), "<t@1 xml:space=preserve>[ x]/");
  EXPECT_EQ(Scan("<t xml:space='default'/>"), "<t@1 xml:space=default>/");
  for (const char* const element :
       {"<t xml:space='no'/>", "<t xml:lang='de'/>", "<t xml:id='x'/>", "<xml:space/>"})
    ExpectNotPlain(element);
}

TEST_F(XmlPlain, prefixes_of_one_namespace_leave_equal_parts_to_the_parser) {
  const char u[] = "u";
  const char v[] = "v";
  m_Scope = {{"p", u}, {"q", v}};
  EXPECT_EQ(Scan("<a p:b='1' q:b='2' b='3'/>"), "<a@1 p:b=1 q:b=2 b=3>/");
  m_Scope = {{"p", u}, {"q", u}};
  ExpectNotPlain("<a p:b='1' q:b='2'/>");
  EXPECT_EQ(Scan("<a p:b='1' q:c='2' b='3'/>"), "<a@1 p:b=1 q:c=2 b=3>/");
}

TEST_F(XmlPlain, another_scope_counts_from_the_next_element_on) {
  const char u[] = "u";
  XmlPlainScanner scanner(m_Names, m_Taker);
  const std::vector<XmlBinding> scope = {{"p", u}};
  scanner.SetScope(scope);
  EXPECT_EQ(scanner.Scan("<p:a/>", 1, 1), XmlScan::Taken);
  scanner.SetScope({});
  EXPECT_EQ(scanner.Scan("<p:a/>", 1, 1), XmlScan::NotPlain);
  scanner.SetScope(scope);
  EXPECT_EQ(scanner.Scan("<p:a/>", 1, 1), XmlScan::Taken);
}

TEST_F(XmlPlain, elements_are_taken_to_the_depth_that_documents_have) {
  const auto nested = [](int count) {
    std::string text;
    for (int level = 0; level < count; ++level) text += "<a>";
    for (int level = 0; level < count; ++level) text += "</a>";
    return text;
  };
  EXPECT_EQ(Scan(nested(limits::Depth - 3), 2).find("<a"), 0U);
  EXPECT_EQ(Scan(nested(limits::Depth - 2), 2).find("<a"), 0U);
  EXPECT_EQ(Scan(nested(limits::Depth - 1), 2), "not plain");
}

TEST_F(XmlPlain, an_element_of_more_than_32_attributes_is_left_to_the_parser) {
  const auto element = [](int count) {
    std::string text = "<a";
    for (int index = 0; index < count; ++index) text += " n" + std::to_string(index) + "=''";
    return text + "/>";
  };
  EXPECT_EQ(Scan(element(31)).find("<a"), 0U);
  EXPECT_EQ(Scan(element(32)).find("<a"), 0U);
  EXPECT_EQ(Scan(element(33)), "not plain");
}

TEST_F(XmlPlain, a_skipped_element_is_read_as_strictly_and_has_nothing_in_it) {
  m_Taker.choice = StreamChoice::Skip;
  EXPECT_EQ(Scan("<a b='1'><c>y</c>z</a>x"), "<a@1 b=1>/ then x");
  ExpectNotPlain("<a><c></a></c>");
  EXPECT_EQ(Scan("<a><c>"), "incomplete");
}

TEST_F(XmlPlain, an_entered_element_is_left_behind_its_start) {
  m_Taker.choice = StreamChoice::Enter;
  EXPECT_EQ(Scan(" <a b='1'><c/></a>"), "entered, then <c/></a>");
  EXPECT_EQ(Scan("<a/>x"), "entered, then x");
}

TEST_F(XmlPlain, a_refused_element_is_left_before_the_bracket_of_its_start) {
  m_Taker.choice = std::nullopt;
  EXPECT_EQ(Scan("<a b='1'><c/></a>"), "refused before ><c/></a>");
  EXPECT_EQ(Scan("\n<a b='1' />x"), "refused before />x");
  EXPECT_EQ(m_Line, 2U);
}

TEST_F(XmlPlain, the_name_of_an_element_that_is_not_plain_is_returned_as_far_as_it_is_known) {
  ExpectNotPlain("<row><c>&amp;</c></row>");
  EXPECT_EQ(m_Name, "row");
  ExpectNotPlain("<row a='&amp;'/>");
  EXPECT_EQ(m_Name, "row");
  ExpectNotPlain("<p:row/>");
  EXPECT_EQ(m_Name, "");
}

}  // namespace
