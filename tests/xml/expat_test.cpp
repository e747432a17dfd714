// Documents as expat reads them, a parser that shares no line with the layer's own, and the layer's
// output as expat reads it.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/xml/stream.h"
#include "tests/support/xml_oracle.h"
#include "tests/xml/xml_fixture.h"

namespace {

namespace fs = std::filesystem;
using rastrel::test::DumpOf;

constexpr const char* Refused = "refused";

// Each rule of XML 1.0 and of its namespaces that a writer may break, and its sound neighbour.
constexpr std::string_view Documents[] = {
    // Around the document element.
    "<a/>",
    "<a></a>",
    "<a></a >",
    "< a/>",
    "<a / >",
    "",
    " ",
    "\n<a/>",
    "<a/>\n",
    "<a/>x",
    "x<a/>",
    "<a/><b/>",
    "<!--c--><a/><?i?>",
    "<a/><![CDATA[]]>",
    "<a/>&#32;",
    " <?xml version='1.0'?><a/>",
    "<?xml version='1.0'?><?xml version='1.0'?><a/>",
    "<?xml version=\"1.0\" ?>\n<a/>",
    "<?xml version='1.0' standalone='yes'?><a/>",
    "<?xml version='1.0' standalone='maybe'?><a/>",
    "<?xml version='1.1'?><a/>",
    "<?xml version='1.0' encoding='utf-8'?><a/>",
    "<?xml encoding='utf-8' version='1.0'?><a/>",
    "<?xml encoding='utf-8'?><a/>",
    "<?xml?><a/>",
    "<?xml version='1.0'><a/>",
    "<?XML version='1.0'?><a/>",
    "<?xMl x?><a/>",
    "<?xmlx x?><a/>",
    "\xEF\xBB\xBF<a/>",
    "\xEF\xBB\xBF<?xml version='1.0'?><a/>",
    "<a/>\xEF\xBB\xBF",
    "<!DOCTYPE a><a/>",
    "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>",
    "<a><!DOCTYPE a></a>",
    "<!doctype a><a/>",
    // Tags and their names.
    "<a>",
    "</a>",
    "<a></b>",
    "<a><b></a></b>",
    "<a></a",
    "<a",
    "<A></a>",
    "<1/>",
    "<-a/>",
    "<.a/>",
    "<_/>",
    "<a.-_1/>",
    "<a\xC2\xB7/>",
    "<\xC2\xB7/>",
    "<\xC3\x97/>",
    "<\xE8\xAA\xB2>\xE8\xAA\xB2</\xE8\xAA\xB2>",
    "<a\n/>",
    "<a\t\r\n></a\n>",
    "<a></ a>",
    "<a><></></a>",
    "<a$/>",
    "<a b/>",
    // Attributes.
    "<a n='1'/>",
    "<a n=1/>",
    "<a n='1\"/>",
    "<a n/>",
    "<a n=''/>",
    "<a n = '1'/>",
    "<a n='1'm='2'/>",
    "<a n='1' n='1'/>",
    "<a n='1' N='1'/>",
    "<a n='<'/>",
    "<a n='>'/>",
    "<a n='&lt;'/>",
    "<a n='&'/>",
    "<a n='\"'/>",
    "<a n=\"'\"/>",
    "<a n='\t\n\r\n\r '/>",
    "<a n='&#9;&#10;&#13; '/>",
    "<a n=' x  y '/>",
    "<a n=']]>'/>",
    "<a n='&#60;&#38;'/>",
    "<a n='&amp;lt;'/>",
    "<a =''/>",
    "<a 'x'/>",
    "<a n='x'/ >",
    "<a xml:lang='de' xml:space='preserve'> </a>",
    "<a n='\xE2\x82\xAC'>\xE2\x82\xAC</a>",
    // Namespaces.
    "<p:a/>",
    "<p:a xmlns:p='u'/>",
    "<a p:n='1'/>",
    "<a xmlns:p='u' p:n='1'/>",
    "<a xmlns='u'><b/></a>",
    "<a xmlns='u'><b xmlns=''/></a>",
    "<a xmlns:p='u'><b xmlns:p=''/></a>",
    "<a xmlns:p=''/>",
    "<a xmlns:p='u' xmlns:q='u' p:n='1' q:n='2'/>",
    "<a xmlns='u' xmlns:q='u' n='1' q:n='2'/>",
    "<a xmlns:p='u' xmlns:q='v' p:n='1' q:n='2'/>",
    "<a xmlns:p='u' xmlns:p='u'/>",
    "<p:a:b xmlns:p='u'/>",
    "<:a/>",
    "<a:/>",
    "<:/>",
    "<a :n='1'/>",
    "<a n:='1'/>",
    "<xml:a/>",
    "<a xml:n='1'/>",

    "<a xmlns:xml='u'/>",
    "<a xmlns:p='http://www.w3.org/XML/1998/namespace'/>",
    "<a xmlns='http://www.w3.org/XML/1998/namespace'/>",
    "<a xmlns:xmlns='u'/>",
    "<a xmlns:p='http://www.w3.org/2000/xmlns/'/>",
    "<xmlns:a xmlns:xmlns='u'/>",
    "<a xmlns='http://www.w3.org/2000/xmlns/'/>",
    "<a xmlns:xmlfoo='u'><xmlfoo:b/></a>",
    "<a xmlns:p='u'><p:b xmlns:p='v' p:n='1'><p:c/></p:b><p:d/></a>",
    "<a xmlns:p='u'><b/></a><p:c/>",
    "<p:a xmlns:p='u' xmlns:P='v'><P:a/></p:a>",
    "<p:a xmlns:p='u'></a>",
    "<p:a xmlns:p='u' xmlns:q='u'></q:a>",
    "<a xmlns:p='a &amp; b'/>",
    "<a xmlns:p=' u '/>",
    "<a xmlns:p='not an address'/>",
    // Texts and references.
    "<a>x</a>",
    "<a> x </a>",
    "<a> </a>",
    "<a>\r\n</a>",
    "<a>x\ry\r\nz\n</a>",
    "<a>]]></a>",
    "<a>]]</a>",
    "<a>]] ></a>",
    "<a>]&#93;></a>",
    "<a>></a>",
    "<a>&gt;</a>",
    "<a>&amp;&lt;&gt;&quot;&apos;</a>",
    "<a>&nbsp;</a>",
    "<a>&AMP;</a>",
    "<a>&amp</a>",
    "<a>& amp;</a>",
    "<a>&</a>",
    "<a>&;</a>",
    "<a>&#;</a>",
    "<a>&#x;</a>",
    "<a>&#0;</a>",
    "<a>&#1;</a>",
    "<a>&#8;</a>",
    "<a>&#9;</a>",
    "<a>x&#13;y</a>",
    "<a>&#31;</a>",
    "<a>&#32;</a>",
    "<a>&#x20;x&#x20;</a>",
    "<a>&#127;</a>",
    "<a>&#128;</a>",
    "<a>&#xD7FF;</a>",
    "<a>&#xD800;</a>",
    "<a>&#xDFFF;</a>",
    "<a>&#xE000;</a>",
    "<a>&#xFFFD;</a>",
    "<a>&#xFFFE;</a>",
    "<a>&#xFFFF;</a>",
    "<a>&#x10000;</a>",
    "<a>&#x10FFFF;</a>",
    "<a>&#x110000;</a>",
    "<a>&#4294967297;</a>",
    "<a>&#X41;</a>",
    "<a>&#x4g;</a>",
    "<a>&#0000000000000000000065;</a>",
    "<a>\x01</a>",
    "<a>\x7F</a>",
    "<a>\xC2\x80</a>",
    "<a>\xEF\xBF\xBD</a>",
    "<a>\xEF\xBF\xBE</a>",
    "<a>\xED\xA0\x80</a>",
    "<a>\xC0\x80</a>",
    "<a>\xF4\x90\x80\x80</a>",
    "<a>\xF4\x8F\xBF\xBF</a>",
    "<a>\xE2\x82</a>",
    "<a>\xFF</a>",
    "<a>\xC2\xA0</a>",
    "<a> \xC2\xA0 </a>",
    "<a>x<b/>y</a>",
    "<a> <b/> <b/> </a>",
    "<a>x <b> y </b> z</a>",
    "<a>x<!--c-->y</a>",
    "<a> <!--c--> </a>",
    "<a>1<b>2</b><!--3--><?4 5?><![CDATA[6]]>7</a>",
    // Sections, comments, instructions.
    "<a><![CDATA[x]]></a>",
    "<a><![CDATA[]]></a>",
    "<a><![CDATA[ ]]></a>",
    "<a> <![CDATA[ x ]]> </a>",
    "<a><![CDATA[<b>&amp;]]></a>",
    "<a><![CDATA[]]]]></a>",
    "<a><![CDATA[]]]]><![CDATA[>]]></a>",
    "<a><![CDATA[\r\n\r]]></a>",
    "<a><![CDATA[\x01]]></a>",
    "<a><![CDATA[x]]</a>",
    "<a><![cdata[x]]></a>",
    "<a><! [CDATA[x]]></a>",
    "<a>x<![CDATA[y]]>z</a>",
    "<a><![CDATA[x]]><![CDATA[y]]></a>",
    "<a><!----></a>",
    "<a><!-- c --></a>",
    "<a><!-- - --></a>",
    "<a><!-- -- --></a>",
    "<a><!----- --></a>",
    "<a><!-- --->x</a>",
    "<a><!->x</a>",
    "<a><!-- <b> & ]]> --></a>",
    "<a><!-- c</a>",
    "<a><!--\r\n--></a>",
    "<a><?i?></a>",
    "<a><?i d?></a>",
    "<a><?i  d ?></a>",
    "<a><?i d ? > ?></a>",
    "<a><? i?></a>",
    "<a><?i d></a>",
    "<a><?"
    "?></a>",
    "<a><?1?></a>",
    "<a><?i\r\nd\r\n?></a>",
    "<a><?xml?></a>",
    "<a><?xml-stylesheet x='1'?></a>",
};

// Every example that is XML.
std::vector<std::string> Examples() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(RASTREL_SOURCE_DIR "/examples"))
    if (entry.is_regular_file()) paths.push_back(entry.path());
  std::ranges::sort(paths);
  std::vector<std::string> examples;
  for (const fs::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (content.starts_with("<?xml")) examples.push_back(std::move(content));
  }
  return examples;
}

// Takes the elements of one depth, as they are streamed.
class StreamedParts : public rastrel::xml::XmlStreamHandler {
 public:
  explicit StreamedParts(int depth) : m_Depth(depth) {}
  rastrel::xml::StreamChoice Begin(std::wstring_view, const XmlNode&, int depth) override {
    return depth == m_Depth ? rastrel::xml::StreamChoice::Node : rastrel::xml::StreamChoice::Enter;
  }
  void Node(const XmlNode& node) override { m_Dump += DumpOf(node); }
  void End(std::wstring_view, int) override {}
  [[nodiscard]] const std::string& Dump() const { return m_Dump; }

 private:
  int m_Depth;
  std::string m_Dump;
};

// The same of a loaded document.
std::string Parts(const XmlNode& element, int depth) {
  if (depth == 0) return DumpOf(element);
  int count = 0;
  std::wstring name;
  std::string parts;
  for (const XmlNode& child : NodeChildren(element, count))
    if (NodeBaseName(child, name)) parts += Parts(child, depth - 1);
  return parts;
}

// ASCII in two bytes a character.
std::string InUtf16(std::string_view text, bool lowFirst) {
  std::string bytes;
  for (const char character : text) {
    if (!lowFirst) bytes += '\0';
    bytes += character;
    if (lowFirst) bytes += '\0';
  }
  return bytes;
}

class XmlExpat : public rastrel::test::XmlTest {
 protected:
  void SetUp() override {
    if (std::system("python3 -c 'import xml.parsers.expat' >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "python3 with expat is not installed";
  }

  // Adds a document; its name.
  std::string Add(std::string_view document) {
    std::string name = "document" + std::to_string(m_Count++);
    m_Folder.Write(name, document);
    m_Asked += "dump " + name + "\n";
    m_Names.push_back(name);
    return name;
  }
  // Adds the layer's output of an element and of all elements below it. `place` is the way to it in
  // the document.
  void AddParts(const std::string& document, const std::string& place, const XmlNode& element) {
    m_Saved.push_back("saved" + std::to_string(m_Count++));
    EXPECT_TRUE(SaveNodeXml(element, m_Folder.Wide(m_Saved.back())));
    m_Asked += "same " + document + " " + place + " " + m_Saved.back() + "\n";
    int count = 0;
    std::wstring name;
    const std::vector<XmlNode> children = NodeChildren(element, count);
    for (std::size_t index = 0; index < children.size(); ++index)
      if (NodeBaseName(children[index], name))
        AddParts(document, place + "." + std::to_string(index), children[index]);
  }
  // Has expat read all that was added.
  void Ask() {
    m_Folder.Write("asked", m_Asked);
    const std::string command = "python3 -B '" RASTREL_SOURCE_DIR "/tests/xml/expat_reader.py' '" +
                                m_Folder.Path() + "' < '" + m_Folder.Path("asked") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
  }
  // Holds the streamed parts of a document against those of the loaded one.
  void ExpectStreamed(const std::string& name, const XmlNode& root) {
    for (const int depth : {0, 1, 2}) {
      StreamedParts streamed(depth);
      const bool isSound = rastrel::xml::StreamXmlFile(m_Folder.Wide(name), streamed);
      EXPECT_EQ(isSound, static_cast<bool>(root)) << m_Folder.Read(name) << "\n" << Reason();
      if (!isSound || !root) continue;
      EXPECT_EQ(streamed.Dump(), Parts(root, depth)) << m_Folder.Read(name);
    }
  }
  // Compares each document as expat reads it with the same as the layer reads it.
  void Compare() {
    Ask();
    for (const std::string& name : m_Names) {
      const std::string dump = m_Folder.Read(name + ".dump");
      if (dump == "unknown") continue;
      const std::string expected = dump.starts_with(Refused) ? Refused : dump;
      const XmlNode root = LoadXmlFile(m_Folder.Wide(name));
      m_Sound += root ? 1 : 0;
      const auto words = [&] { return m_Folder.Read(name) + "\n" + dump + "\n" + Reason(); };
      EXPECT_EQ(expected, root ? DumpOf(root) : Refused) << words();
      ExpectStreamed(name, root);
    }
  }

  rastrel::test::MemoryScratchDirectory m_Folder;
  std::string m_Asked;
  int m_Count = 0;
  std::vector<std::string> m_Names;
  std::vector<std::string> m_Saved;
  int m_Sound = 0;  // documents that both took
};

TEST_F(XmlExpat, random_documents_are_as_another_parser_reads_them) {
  constexpr int count = 4000;
  rastrel::test::XmlDocuments documents(20261122);
  for (int index = 0; index < count; ++index) Add(documents.Next());
  Compare();
  EXPECT_GT(m_Sound, count / 3);
  EXPECT_LT(m_Sound, count * 19 / 20);
}

// Nothing refused here but what XML itself refuses: each with its neighbour that is sound.
TEST_F(XmlExpat, documents_that_try_each_rule_are_as_another_parser_reads_them) {
  for (const std::string_view document : Documents) Add(document);
  Compare();
  EXPECT_GT(m_Sound, 100);
  EXPECT_LT(m_Sound, m_Count - 100);
}

// The one difference of the two, which nobody asks for.
TEST_F(XmlExpat, a_declaration_of_the_prefix_xml_itself_is_taken_and_not_reported) {
  const std::string name = Add("<a xmlns:xml='http://www.w3.org/XML/1998/namespace' n='1'/>");
  Ask();
  EXPECT_EQ(m_Folder.Read(name + ".dump"),
            "(a xml=[http://www.w3.org/XML/1998/namespace] n=[1]||)");
  EXPECT_EQ(DumpOf(LoadXmlFile(m_Folder.Wide(name))), "(a n=[1]||)");
}

// Names are those of the fifth edition of XML 1.0, and expat knows those of the fourth.
TEST_F(XmlExpat, names_that_the_fifth_edition_let_in_are_taken) {
  const std::string name = Add("<\xE2\x82\xAC/>");
  Ask();
  EXPECT_TRUE(m_Folder.Read(name + ".dump").starts_with(Refused));
  EXPECT_EQ(DumpOf(LoadXmlFile(m_Folder.Wide(name))), "(\xE2\x82\xAC||)");
}

TEST_F(XmlExpat, documents_in_other_encodings_are_as_another_parser_reads_them) {
  using namespace std::string_literals;
  std::string high;
  for (int byte = 0xC0; byte <= 0xFF; ++byte) high += static_cast<char>(byte);
  for (const char* const encoding : {"ISO-8859-1", "ISO-8859-2", "ISO-8859-5", "ISO-8859-15",
                                     "windows-1250", "windows-1251", "windows-1252"}) {
    Add("<?xml version='1.0' encoding='"s + encoding + "'?><a n='" + high + "'>" + high + "</a>");
    Add("<?xml version='1.0' encoding='"s + encoding + "'?><\xE9 \xFC='1'>\xE4</\xE9>");
  }
  for (const std::string_view document :
       {"<a n='1'>x\r\n<b/></a>", "<?xml version='1.0' encoding='UTF-16'?><a>x</a>", "<a>",
        "<?xml version='1.0' encoding='UTF-8'?><a/>"}) {
    Add("\xFF\xFE" + InUtf16(document, true));
    Add("\xFE\xFF" + InUtf16(document, false));
    Add("\xFF\xFE" + InUtf16(document, true).substr(1));
  }
  Compare();
  EXPECT_EQ(m_Sound, 7 * 2 + 2 * 2);
}

TEST_F(XmlExpat, the_examples_are_as_another_parser_reads_them) {
  for (const std::string& example : Examples()) Add(example);
  Compare();
  EXPECT_EQ(m_Sound, m_Count);
  EXPECT_GE(m_Sound, 8);
}

TEST_F(XmlExpat, examples_with_any_place_changed_are_as_another_parser_reads_them) {
  constexpr std::string_view bytes("<>&'\"/=![]-?:; \n\0\x01\x80\xC3\xFFx#0", 24);
  std::mt19937 random(20261124);
  for (const std::string& example : Examples()) {
    for (int count = 0; count < 120; ++count) {
      std::string changed = example;
      const std::size_t at = random() % changed.size();
      const std::size_t from = random() % changed.size();
      switch (random() % 4) {
        case 0: changed[at] = bytes[random() % bytes.size()]; break;
        case 1: changed.erase(at, 1 + random() % 3); break;
        case 2: changed.insert(at, 1, bytes[random() % bytes.size()]); break;
        default: changed.insert(at, changed.substr(from, 1 + random() % 30)); break;
      }
      Add(changed);
    }
  }
  Compare();
  EXPECT_GT(m_Sound, m_Count / 20);
  EXPECT_LT(m_Sound, m_Count * 19 / 20);
}

TEST_F(XmlExpat, every_part_that_is_saved_is_as_another_parser_reads_it_in_the_document) {
  constexpr int count = 600;
  rastrel::test::XmlDocuments documents(20261123);
  std::vector<std::string> names;
  for (int index = 0; index < count; ++index) names.push_back(Add(documents.Next()));
  for (const std::string_view document : Documents) names.push_back(Add(document));
  for (const std::string& name : names)
    if (const XmlNode root = LoadXmlFile(m_Folder.Wide(name))) AddParts(name, {}, root);
  ASSERT_GT(m_Saved.size(), 1000U);
  Ask();
  for (const std::string& name : m_Saved)
    EXPECT_EQ(m_Folder.Read(name + ".same"), "same") << m_Folder.Read(name);
}

}  // namespace
