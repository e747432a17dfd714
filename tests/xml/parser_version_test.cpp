// Versions of the parser: the one that was checked, and any other, with which nothing of its
// structures is touched.

#include "rastrel/xml/library.h"
#include "rastrel/xml/parser_internals.h"
#include "rastrel/xml/stream.h"
#include "tests/support/processor_time.h"
#include "tests/support/xml_oracle.h"
#include "tests/xml/xml_fixture.h"

namespace {

using rastrel::xml::XmlLibrary;
using rastrel::xml::XmlParserInternals;
using rastrel::xml::XmlUncheckedVersion;

class XmlParserVersion : public rastrel::test::XmlTest {
 protected:
  // All of the document, or why it is refused.
  std::string Read(std::string_view content) {
    const XmlNode root = LoadFile(content);
    return root ? rastrel::test::DumpOf(root) : Reason();
  }
  // The same, after the same with an unchecked version of the parser.
  std::string ReadBothWays(std::string_view content) {
    std::string unchecked;
    {
      const XmlUncheckedVersion scope;
      EXPECT_FALSE(XmlParserInternals::IsAvailable());
      unchecked = Read(content);
    }
    std::string checked = Read(content);
    EXPECT_EQ(unchecked, checked);
    return checked;
  }
};

TEST_F(XmlParserVersion, a_number_stands_at_the_start_of_its_text) {
  EXPECT_EQ(XmlParserInternals::VersionNumber("20914"), 20914);
  EXPECT_EQ(XmlParserInternals::VersionNumber("20914-GITv2.9.14"), 20914);
  EXPECT_EQ(XmlParserInternals::VersionNumber("21204-GITv2.12.4"), 21204);
  EXPECT_EQ(XmlParserInternals::VersionNumber("version"), 0);
  EXPECT_EQ(XmlParserInternals::VersionNumber(""), 0);
  EXPECT_EQ(XmlParserInternals::VersionNumber(nullptr), 0);
}

TEST_F(XmlParserVersion, only_2_9_14_was_checked) {
  EXPECT_TRUE(XmlParserInternals::IsChecked(20914));
  for (const int version : {0, 20913, 20910, 20915, 21000, 21108, 21204, 21400})
    EXPECT_FALSE(XmlParserInternals::IsChecked(version)) << version;
}

TEST_F(XmlParserVersion, the_loaded_library_says_its_version) {
  ASSERT_TRUE(static_cast<bool>(XmlLibrary::Instance()));
  EXPECT_GE(XmlLibrary::Instance()->version, 20900);
  EXPECT_EQ(XmlParserInternals::IsAvailable(),
            XmlLibrary::Instance()->version == 20914 && LIBXML_VERSION == 20914);
}

TEST_F(XmlParserVersion, an_unchecked_one_gives_the_same_nodes) {
  const std::string large = "<a>" + std::string(200000, 'x') + "<![CDATA[" +
                            std::string(100000, 'y') + "\r\n]]><![CDATA[]]><![CDATA[z]]></a>";
  const std::string names = "<p:a xmlns:p='u'><b p:n='1'/><p:b xmlns:p='v'/><!--c--><?i d?></p:a>";
  for (const std::string& content : {large, names})
    EXPECT_EQ(ReadBothWays(content).find("document.xml:"), std::string::npos);
}

TEST_F(XmlParserVersion, an_unchecked_one_has_the_same_limits) {
  std::string attributes = "<a";
  for (int index = 0; index < 1000000; ++index) attributes += " n" + std::to_string(index) + "='1'";
  EXPECT_TRUE(ReadBothWays(attributes + "/>").ends_with("more than 256 attributes"));
  const std::string lengthy(5000000, 'x');
  for (const std::string& content : {"<a n='" + lengthy + "'/>", "<a><!--" + lengthy + "--></a>",
                                     "<a><?i " + lengthy + "?></a>"})
    EXPECT_TRUE(ReadBothWays(content).ends_with("has more than 4194304 bytes"));
  std::string namespaces;
  for (int index = 0; index < 257; ++index)
    namespaces += (index % 2 == 0 ? "<a xmlns:p" : " xmlns:p") + std::to_string(index) +
                  (index % 2 == 0 ? "='u'" : "='u'>");
  EXPECT_TRUE(ReadBothWays(namespaces + ">").ends_with("256 namespaces are declared at a time"));
}

TEST_F(XmlParserVersion, an_unchecked_one_counts_a_tag_of_utf_16_before_it_is_whole) {
  std::string units("\xFF\xFE<\0a\0", 6);
  for (int index = 0; index < 400000; ++index) {
    for (const char byte : " n" + std::to_string(index) + "='1'") units += {byte, '\0'};
  }
  const XmlUncheckedVersion scope;
  const double before = rastrel::test::ProcessorSeconds();
  EXPECT_TRUE(Read(units).ends_with("more than 256 attributes"));
  EXPECT_LT(rastrel::test::ProcessorSeconds() - before, 5.0);
}

TEST_F(XmlParserVersion, an_unchecked_one_sees_documents_that_end_within_a_character) {
  const std::string japanese = "<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA</a>";
  EXPECT_EQ(ReadBothWays(japanese).find("character"), std::string::npos);
  EXPECT_TRUE(ReadBothWays(japanese + "\x93").ends_with("ends within a character"));
  const std::string utf16("\xFF\xFE<\0a\0/\0>\0", 10);
  EXPECT_EQ(ReadBothWays(utf16).find("character"), std::string::npos);
  EXPECT_TRUE(ReadBothWays(utf16 + "\n").ends_with("ends within a character"));
}

TEST_F(XmlParserVersion, an_unchecked_one_refuses_documents_not_well_formed_or_declared_wrongly) {
  for (const std::string_view content :
       {"<a>", "<a></b>", "<a/><b/>", "<p:a/>", "<a n='1' n='2'/>", "<a>&x;</a>",
        "<!DOCTYPE a><a/>", "<?xml version='1.1'?><a/>",
        "<?xml version='1.0' encoding='UTF_8'?><a/>", "<?xml version='1.0' encoding='UTF-16'?><a/>",
        "<a>\xFF</a>", "<a><![CDATA[\xFF]]></a>"})
    EXPECT_NE(ReadBothWays(content).find(".xml:1:"), std::string::npos) << content;
}

}  // namespace
