// Templates of the first generation that are no XML as they are.

#include <gtest/gtest.h>

#include "tests/imports/cr2/cr2_fixture.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseCr2File;

/// Each repair asks for the code page once, and a file that needs none does not.
const std::string NoCodePage = "Read(\"impcr2\", \"CodePage\") -> null\n";

class Cr2Repair : public TemplateTest {
 protected:
  bool Parse(const std::string& text) {
    m_Document = {};
    return ParseCr2File(Write(text, "template.cr2").c_str(), m_Document);
  }
  static std::string WithLine(const std::string& line) {
    return TemplateText(WithPlate(TextFrame("<font><line>" + line + "</line></font>")),
                        "engraving_template");
  }
  /// The text of the only line; "(no plate)" if there is none.
  std::wstring Line(const std::string& text) {
    EXPECT_TRUE(Parse(text));
    if (m_Document.plates.empty()) return L"(no plate)";
    return m_Document.plates[0].textFrames.at(0).texts.at(0).lines.at(0).spans.at(0).text;
  }

  Cr2Document m_Document;
};

TEST_F(Cr2Repair, a_file_that_the_parser_takes_is_not_changed) {
  EXPECT_EQ(Line("<?xml version='1.0'?>" + WithLine("&amp;copy; &#169;")), L"&copy; \u00A9");
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(Cr2Repair, names_of_characters_that_xml_lacks_become_numbers) {
  EXPECT_EQ(Line(WithLine("&trade; &copy; &copy;")), L"\u2122 \u00A9 \u00A9");
  EXPECT_EQ(Calls().Text(), NoCodePage);
}

TEST_F(Cr2Repair, references_to_markup_stay_the_characters_that_they_are) {
  EXPECT_EQ(Line(WithLine("&copy; &lt;A&amp;B&gt;")), L"\u00A9 <A&B>");
}

TEST_F(Cr2Repair, rewriting_is_in_order_and_looks_at_no_result_of_its_own) {
  // "&amp;trade;" has no "&trade;" in it, and becomes "&#38;trade;".
  EXPECT_EQ(Line(WithLine("&copy;&amp;trade;")), L"\u00A9&trade;");
}

TEST_F(Cr2Repair, other_names_of_characters_stay_refused) {
  EXPECT_EQ(Line(WithLine("&reg;")), L"(no plate)");
  EXPECT_EQ(m_Document.tableSize.placement.origin, 0);
}

TEST_F(Cr2Repair, a_first_character_that_opens_nothing_is_deleted) {
  EXPECT_EQ(Line("x" + WithLine("A")), L"A");
  EXPECT_EQ(Line("\xEF\xBB\xBF" + WithLine("&copy;")), L"\u00A9");
  EXPECT_EQ(Line("xy" + WithLine("A")), L"(no plate)");
}

TEST_F(Cr2Repair, a_declaration_with_a_blank_is_mended_at_the_start) {
  EXPECT_EQ(Line("<? xml version='1.0'?>" + WithLine("A")), L"A");
}

TEST_F(Cr2Repair, a_declaration_with_a_blank_elsewhere_costs_the_third_character) {
  // It is the "n" of the root's start tag, which no longer matches its end tag.
  EXPECT_EQ(Line(WithLine("&copy;<![CDATA[<? xml]]>")), L"(no plate)");
}

TEST_F(Cr2Repair, the_code_page_is_a_setting) {
  m_Host.m_Settings[{L"impcr2", L"CodePage"}] = L"1250";
  // 0x8A is S with caron in 1250, and begins no character of UTF-8.
  EXPECT_EQ(Line(WithLine("\x8A")), L"\u0160");
  EXPECT_EQ(Calls().Text(), "Read(\"impcr2\", \"CodePage\") -> \"1250\"\n");
}

TEST_F(Cr2Repair, bytes_that_are_no_characters_are_replaced_and_the_file_is_read) {
  EXPECT_EQ(Line(WithLine("PUMP \x8A 1")), L"PUMP \uFFFD 1");
}

TEST_F(Cr2Repair, a_prefix_that_is_not_declared_stays_refused_and_is_reported) {
  EXPECT_EQ(Line("<engraving_template>\n<svg:table_size/></engraving_template>"), L"(no plate)");
  const auto refusal = rastrel::xml::TakeXmlFailure();
  ASSERT_FALSE(refusal);
  EXPECT_EQ(refusal.Error().line, 2);
  EXPECT_NE(refusal.Error().why.find("svg"), std::string::npos) << Describe(refusal.Error());
}

TEST_F(Cr2Repair, a_file_that_was_repaired_leaves_no_refusal) {
  EXPECT_EQ(Line(WithLine("&copy;")), L"\u00A9");
  EXPECT_TRUE(rastrel::xml::TakeXmlFailure());
}

}  // namespace
