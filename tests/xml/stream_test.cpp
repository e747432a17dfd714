// Documents that are handed on while they are read.

#include "rastrel/xml/stream.h"

#include "rastrel/xml/limits.h"
#include "rastrel/xml/walk.h"
#include "tests/xml/xml_fixture.h"

namespace {

using namespace rastrel::xml;
using rastrel::os::Utf8FromWide;

// Notes all calls as text. A name that begins with s is skipped, with n collected, with x refused.
class Notes : public XmlStreamHandler {
 public:
  StreamChoice Begin(std::wstring_view name, const XmlNode& start, int depth) override {
    m_Text += "<" + Utf8FromWide(name) + std::to_string(depth);
    for (const auto& [key, value] : AttributeList(start))
      m_Text += " " + Utf8FromWide(key) + "=" + Utf8FromWide(value);
    EXPECT_TRUE(NodeNameIs(start, name));
    EXPECT_FALSE(static_cast<bool>(FirstChild(start)));
    EXPECT_FALSE(static_cast<bool>(NextSibling(start)));
    if (name.starts_with(L'x')) Refuse("no " + Utf8FromWide(name) + " here");
    if (name.starts_with(L's')) return StreamChoice::Skip;
    return name.starts_with(L'n') ? StreamChoice::Node : StreamChoice::Enter;
  }
  void Node(const XmlNode& node) override {
    std::string scratch;
    int count = 0;
    const auto children = NodeChildren(node, count);
    m_Text += "{" + std::to_string(count) + " " + std::string(TextBytes(node, scratch)) + "|" +
              std::string(RawTextBytes(node, scratch)) + "}";
    for (const XmlNode& child : children)
      if (NodeNameIs(child, L"refuse")) Refuse("not this");
  }
  void End(std::wstring_view name, int depth) override {
    m_Text += ">" + Utf8FromWide(name) + std::to_string(depth);
    if (name == L"yEnd") Refuse("at the end");
  }
  [[nodiscard]] const std::string& Text() const { return m_Text; }

 private:
  std::string m_Text;
};

class XmlStream : public rastrel::test::XmlTest {
 protected:
  std::string NotesOf(std::string_view content, XmlWhitespace blanks = XmlWhitespace::Drop) {
    Notes notes;
    const bool whole = StreamXmlFile(FileOf(content), notes, blanks);
    return notes.Text() + (whole ? "" : "!");
  }
};

TEST_F(XmlStream, announces_enters_skips_and_collects) {
  EXPECT_EQ(NotesOf("<a k='v'>text<b><n i='1'>x</n> <n/></b><s><n>y</n><s/></s><c/></a>"),
            "<a0 k=v<b1<n2 i=1{1 x|x}<n2{0 |}>b1<s1<c1>c1>a0");
}

TEST_F(XmlStream, the_document_element_may_be_skipped_or_collected) {
  EXPECT_EQ(NotesOf("<s><n/></s>"), "<s0");
  EXPECT_EQ(NotesOf("<n>x<b>y</b></n>"), "<n0{2 xy|xy}");
}

TEST_F(XmlStream, a_prefix_is_no_part_of_the_name) {
  EXPECT_EQ(NotesOf("<p:a xmlns:p='u'><p:n/></p:a>"), "<a0 p=u<n1{0 |}>a0");
}

TEST_F(XmlStream, collected_nodes_are_as_in_a_loaded_document) {
  EXPECT_EQ(NotesOf("<n> x<!--c--><?i?><![CDATA[y  z ]]></n>"), "<n0{4 xy  z| xy  z }");
}

TEST_F(XmlStream, blanks_alone_are_kept_for_those_who_want_them_raw) {
  const std::string content = "<n> <b>x</b> <b>y</b>\n</n>";
  EXPECT_EQ(NotesOf(content), "<n0{2 xy|xy}");
  EXPECT_EQ(NotesOf(content, XmlWhitespace::Keep), "<n0{2 xy| x y\n}");
}

TEST_F(XmlStream, a_handler_may_refuse_in_every_call_and_hears_no_more) {
  EXPECT_EQ(NotesOf("<a><x/><b/><n/></a>"), "<a0<x1!");
  EXPECT_TRUE(Reason().ends_with("no x here"));
  EXPECT_EQ(NotesOf("<a><n><refuse/></n><n/></a>"), "<a0<n1{1 |}!");
  EXPECT_TRUE(Reason().ends_with("not this"));
  EXPECT_EQ(NotesOf("<a><yEnd/><n/></a>"), "<a0<yEnd1>yEnd1!");
  EXPECT_TRUE(Reason().ends_with("at the end"));
  // Also where the document ends with the call.
  EXPECT_EQ(NotesOf("<yEnd/>"), "<yEnd0>yEnd0!");
}

TEST_F(XmlStream, says_on_which_line_a_handler_refused) {
  EXPECT_EQ(NotesOf("<a>\n\n<x/>\n</a>"), "<a0<x1!");
  EXPECT_NE(std::string::npos, Reason().find("document.xml:3:"));
}

TEST_F(XmlStream, a_fault_in_the_last_line_fails_the_whole) {
  EXPECT_EQ(NotesOf("<a><n/></b>"), "<a0<n1{0 |}!");
  EXPECT_EQ(NotesOf("<a><n/></a>x"), "<a0<n1{0 |}>a0!");
  EXPECT_EQ(NotesOf("<a><s><n></s></a>"), "<a0<s1!");
}

TEST_F(XmlStream, a_file_that_can_not_be_read_is_refused) {
  Notes notes;
  EXPECT_FALSE(StreamXmlFile(m_Files.Wide() + L"/absent.xml", notes));
  EXPECT_NE(Reason(), "");
  EXPECT_EQ(NotesOf(""), "!");
  EXPECT_EQ(NotesOf("<!DOCTYPE a><a/>"), "!");
}

TEST_F(XmlStream, many_parts_take_no_more_than_one) {
  std::string content = "<a>";
  const std::string part = "<n i='1'>" + std::string(1000, 'x') + "</n>";
  while (content.size() < 2 * limits::StreamBytes) content += part;
  const std::string calls = NotesOf(content + "</a>");
  EXPECT_TRUE(calls.ends_with(">a0")) << Reason();
}

TEST_F(XmlStream, one_part_has_its_limit) {
  EXPECT_EQ(NotesOf("<n>" + std::string(limits::StreamBytes, 'x') + "</n>"), "<n0!");
  EXPECT_NE(std::string::npos, Reason().find("takes more than 33554432 bytes of memory"));
  EXPECT_EQ(NotesOf("<s>" + std::string(limits::StreamBytes, 'x') + "</s>"), "<s0");
}

TEST_F(XmlStream, skipped_and_entered_elements_have_the_same_limit_of_depth) {
  for (const char* const tag : {"s", "e", "n"}) {
    const auto nested = [&](int depth) {
      std::string content;
      for (int level = 0; level < depth; ++level) content += std::string("<") + tag + ">";
      for (int level = 0; level < depth; ++level) content += std::string("</") + tag + ">";
      return content;
    };
    EXPECT_FALSE(NotesOf(nested(limits::Depth)).ends_with("!")) << tag;
    EXPECT_TRUE(NotesOf(nested(limits::Depth + 1)).ends_with("!")) << tag;
  }
}

TEST_F(XmlStream, a_lent_node_is_written_with_the_namespaces_around_it) {
  class Saver : public XmlStreamHandler {
   public:
    explicit Saver(std::wstring path) : m_Path(std::move(path)) {}
    StreamChoice Begin(std::wstring_view, const XmlNode&, int depth) override {
      return depth < 2 ? StreamChoice::Enter : StreamChoice::Node;
    }
    void Node(const XmlNode& node) override { EXPECT_TRUE(SaveNodeXml(node, m_Path)); }
    void End(std::wstring_view, int) override {}

   private:
    std::wstring m_Path;
  };
  Saver saver(m_Files.Wide() + L"/saved.xml");
  EXPECT_TRUE(
      StreamXmlFile(FileOf("<a xmlns:p='u'><p:b xmlns:q='v'><q:c><p:d/></q:c></p:b></a>"), saver));
  EXPECT_EQ(m_Files.Read("saved.xml"), "<q:c xmlns:q=\"v\" xmlns:p=\"u\"><p:d/></q:c>");
}

}  // namespace
