// A node written as a document of its own, read back by the layer and by another parser.

#include <libxml/parser.h>

#include "tests/xml/xml_fixture.h"

namespace {

class XmlSave : public rastrel::test::XmlTest {
 protected:
  std::string Saved(const XmlNode& node) {
    EXPECT_TRUE(SaveNodeXml(node, m_Files.Wide() + L"/saved.xml"));
    return m_Files.Read("saved.xml");
  }
};

TEST_F(XmlSave, writes_the_node_and_its_descendants) {
  const XmlNode root = Load(L"<a><b n='1'>x<!--c--><?i d?><?j?><![CDATA[<y>]]><z/></b><not/></a>");
  EXPECT_EQ(Saved(FirstChildNamed(root, L"b")),
            "<b n=\"1\">x<!--c--><?i d?><?j?><![CDATA[<y>]]><z/></b>");
}

TEST_F(XmlSave, declares_the_namespaces_that_stood_further_out) {
  const XmlNode root = Load(
      L"<a xmlns='d' xmlns:p='u' xmlns:q='v'>"
      L"<p:b xmlns:q='w'><q:c p:n='1'/></p:b></a>");
  const XmlNode inner = FirstChildNamed(FirstChildNamed(root, L"b"), L"c");
  EXPECT_EQ(Saved(inner), "<q:c xmlns:q=\"w\" xmlns=\"d\" xmlns:p=\"u\" p:n=\"1\"/>");
  EXPECT_EQ(Saved(FirstChildNamed(root, L"b")),
            "<p:b xmlns=\"d\" xmlns:p=\"u\" xmlns:q=\"w\"><q:c p:n=\"1\"/></p:b>");
}

TEST_F(XmlSave, a_saved_node_reads_back_as_it_was) {
  const std::wstring text = L"<&>\"' ]]> \t\n\r \u20AC\U0001F600";
  const XmlNode root = Load(
      L"<a><b n='&lt;&amp;&gt;&quot;&apos; ]]&gt; &#9;&#10;&#13; \u20AC\U0001F600'>"
      L".&lt;&amp;&gt;&quot;&apos; ]]&gt; \t\n&#13; \u20AC\U0001F600.</b></a>");
  const XmlNode before = FirstChildNamed(root, L"b");
  const std::string saved = Saved(before);
  const XmlNode after = LoadXmlFile(m_Files.Wide() + L"/saved.xml");
  EXPECT_EQ(text, Attribute(before, L"n"));
  EXPECT_EQ(text, Attribute(after, L"n")) << saved;
  EXPECT_EQ(L"." + text + L".", Text(before));
  EXPECT_EQ(L"." + text + L".", Text(after)) << saved;
}

TEST_F(XmlSave, another_parser_reads_it) {
  const XmlNode root = Load(L"<a xmlns:p='u&amp;v'><p:b p:n='\u20AC'><c/>&#13;t</p:b></a>");
  const std::string saved = Saved(FirstChildNamed(root, L"b"));
  xmlDoc* const document = xmlReadMemory(saved.data(), static_cast<int>(saved.size()), nullptr,
                                         nullptr, XML_PARSE_NONET | XML_PARSE_NOENT);
  ASSERT_NE(document, nullptr) << saved;
  const xmlNode* const element = xmlDocGetRootElement(document);
  EXPECT_STREQ(reinterpret_cast<const char*>(element->name), "b");
  EXPECT_STREQ(reinterpret_cast<const char*>(element->ns->href), "u&v");
  xmlFreeDoc(document);
}

TEST_F(XmlSave, says_whether_the_file_could_be_made) {
  const XmlNode root = Load(L"<a/>");
  EXPECT_FALSE(SaveNodeXml(root, m_Files.Wide() + L"/none/saved.xml"));
  EXPECT_FALSE(SaveNodeXml(root, m_Files.Wide()));
  m_Files.Write("saved.xml", "much longer than what follows");
  EXPECT_EQ(Saved(root), "<a/>");
}

}  // namespace
