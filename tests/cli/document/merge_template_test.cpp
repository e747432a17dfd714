#include "cli/document/merge_template.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

MergeTable Table(std::vector<std::string> headings, std::vector<std::vector<std::string>> rows) {
  MergeTable table;
  table.headings = std::move(headings);
  std::uint64_t number = 2;
  for (auto& cells : rows) table.rows.push_back({number++, std::move(cells)});
  return table;
}

// The merged document, or why there is none.
std::string Merge(const std::wstring& document, TemplateFormat format, const MergeTable& table) {
  const auto merge = MergeTemplate::Read(LoadXmlString(document), format, table);
  if (!merge) return std::to_string(merge.Error().line) + ": " + merge.Error().why;
  return merge->Write(table.rows).text;
}

std::wstring Abb(const std::wstring& plates) {
  return L"<A><ENGRAVINGTEMPLATE><PLATES/>" + plates + L"</ENGRAVINGTEMPLATE></A>";
}

const MergeTable Names = Table({"Name", "Price"}, {{"Ada", "1"}, {"Bob", "2"}});

TEST(MergeTemplate, each_row_repeats_the_plate_with_its_values_on_a_line_of_its_own) {
  EXPECT_EQ(
      Merge(Abb(L"<PLATE><TEXT data='{Name}: {Price}'/></PLATE>"), TemplateFormat::Abb, Names),
      "<A><ENGRAVINGTEMPLATE><PLATES/>\n"
      "<PLATE><TEXT data=\"Ada: 1\"/></PLATE>\n"
      "<PLATE><TEXT data=\"Bob: 2\"/></PLATE>\n"
      "</ENGRAVINGTEMPLATE></A>");
}

TEST(MergeTemplate, all_plates_of_a_template_come_together_for_each_row) {
  EXPECT_EQ(Merge(L"<A><ENGRAVINGTEMPLATE><PLATES/><PLATE>{Name}</PLATE></ENGRAVINGTEMPLATE>"
                  L"<ENGRAVINGTEMPLATE><PLATE>back</PLATE></ENGRAVINGTEMPLATE></A>",
                  TemplateFormat::Abb, Names),
            "<A><ENGRAVINGTEMPLATE><PLATES/>\n"
            "<PLATE>Ada</PLATE><PLATE>back</PLATE>\n"
            "<PLATE>Bob</PLATE><PLATE>back</PLATE>\n"
            "</ENGRAVINGTEMPLATE><ENGRAVINGTEMPLATE></ENGRAVINGTEMPLATE></A>");
}

TEST(MergeTemplate, no_value_becomes_markup_or_a_field) {
  const MergeTable table = Table({"V"}, {{"<b a='\"'>&amp;</b>{V}{{]]>"}});
  const std::wstring text = Abb(L"<PLATE a='{V}'>{V}<![CDATA[{V}]]></PLATE>");
  const auto merge = MergeTemplate::Read(LoadXmlString(text), TemplateFormat::Abb, table);
  ASSERT_TRUE(merge);
  const XmlNode root = LoadXmlString(std::wstring(L"") + [&] {
    const std::string bytes = merge->Write(table.rows).text;
    return std::wstring(bytes.begin(), bytes.end());
  }());
  ASSERT_TRUE(root);
  const XmlNode plate = FirstChildNamed(FirstChildNamed(root, L"ENGRAVINGTEMPLATE"), L"PLATE");
  std::wstring value;
  ASSERT_TRUE(AttributeString(plate, L"a", value));
  const std::wstring cell = L"<b a='\"'>&amp;</b>{V}{{]]>";
  EXPECT_EQ(value, cell);
  ASSERT_TRUE(NodeText(plate, value));
  EXPECT_EQ(value, cell + cell);
}

TEST(MergeTemplate, line_ends_and_tabs_of_a_value_stay_and_do_not_end_its_line) {
  const MergeTable table = Table({"V"}, {{"a\tb\r\nc"}});
  EXPECT_EQ(Merge(Abb(L"<PLATE>{V}</PLATE>"), TemplateFormat::Abb, table),
            "<A><ENGRAVINGTEMPLATE><PLATES/>\n"
            "<PLATE>a&#9;b&#13;&#10;c</PLATE>\n"
            "</ENGRAVINGTEMPLATE></A>");
}

TEST(MergeTemplate, the_first_rows_line_is_told_whatever_is_before_it) {
  const auto merge = MergeTemplate::Read(
      LoadXmlString(L"<A><!-- a\nb\nc --><ENGRAVINGTEMPLATE>\n<PLATES/>\n<PLATE>{Name}\n</PLATE>\n"
                    L"</ENGRAVINGTEMPLATE></A>"),
      TemplateFormat::Abb, Names);
  ASSERT_TRUE(merge);
  const auto merged = merge->Write(Names.rows);
  const XmlNode root = LoadXmlString(std::wstring(merged.text.begin(), merged.text.end()));
  const auto plates = ChildrenNamed(FirstChildNamed(root, L"ENGRAVINGTEMPLATE"), L"PLATE");
  ASSERT_EQ(plates.size(), 2U);
  EXPECT_EQ(NodeLine(plates[0]), merged.firstLine);
  EXPECT_EQ(NodeLine(plates[1]), merged.firstLine + 1);
}

TEST(MergeTemplate, two_opening_braces_are_one_and_closing_ones_stay) {
  EXPECT_NE(Merge(Abb(L"<PLATE>{{Name}} {Name}} }</PLATE>"), TemplateFormat::Abb, Names)
                .find("<PLATE>{Name}} Ada} }</PLATE>"),
            std::string::npos);
}

TEST(MergeTemplate, blanks_at_the_ends_of_a_field_do_not_count) {
  EXPECT_NE(
      Merge(Abb(L"<PLATE>{ Name }</PLATE>"), TemplateFormat::Abb, Names).find("<PLATE>Ada</PLATE>"),
      std::string::npos);
}

TEST(MergeTemplate, a_heading_that_the_table_lacks_is_refused_with_both_lists) {
  EXPECT_EQ(Merge(Abb(L"\n<PLATE>{Name}{Nam}{Size}</PLATE>"), TemplateFormat::Abb, Names),
            "2: the table has no heading \"Nam\". The table has the headings \"Name\", \"Price\"; "
            "the template has the fields \"Name\", \"Nam\", \"Size\"");
}

TEST(MergeTemplate, a_heading_that_comes_twice_is_refused_if_it_is_used) {
  const MergeTable table = Table({"Name", "Name", "Price"}, {{"a", "b", "c"}});
  EXPECT_NE(Merge(Abb(L"<PLATE>{Name}</PLATE>"), TemplateFormat::Abb, table)
                .find("the table has the heading \"Name\" more than once"),
            std::string::npos);
  EXPECT_NE(Merge(Abb(L"<PLATE>{Price}</PLATE>"), TemplateFormat::Abb, table).find(">c<"),
            std::string::npos);
}

TEST(MergeTemplate, a_field_without_an_end_is_refused_with_its_line) {
  for (const wchar_t* text : {L"{Name", L"{Na{Name}", L"{"}) {
    EXPECT_EQ(
        Merge(Abb(L"\n\n<PLATE>" + std::wstring(text) + L"</PLATE>"), TemplateFormat::Abb, Names),
        "3: a field has no end: a brace by itself is written as {{");
  }
}

TEST(MergeTemplate, a_field_where_nothing_is_repeated_is_refused) {
  EXPECT_EQ(Merge(L"<engraving_template><table_size width='{Price}'/><plates><plate>{Name}</plate>"
                  L"</plates></engraving_template>",
                  TemplateFormat::Cr2, Names),
            "1: the field {Price} is outside <plate>, which is repeated for each row");
}

TEST(MergeTemplate, a_template_without_plates_or_fields_is_refused) {
  EXPECT_EQ(Merge(Abb(L""), TemplateFormat::Abb, Names),
            "0: there is no <PLATE> in <ENGRAVINGTEMPLATE> to repeat for each row");
  EXPECT_EQ(Merge(Abb(L"<PLATE/>"), TemplateFormat::Abb, Names),
            "0: no text of the template has a field; a field is a heading in braces. The table has "
            "the headings \"Name\", \"Price\"");
}

TEST(MergeTemplate, the_drawing_of_a_cut_line_keeps_its_braces) {
  const std::string merged = Merge(
      L"<engraving_template><template><cutline><svg><style>.a{fill:red}</style></svg></cutline>"
      L"</template><plates><plate>{Name}</plate></plates></engraving_template>",
      TemplateFormat::Cr2, Names);
  EXPECT_NE(merged.find("<style>.a{fill:red}</style>"), std::string::npos) << merged;
}

TEST(MergeTemplate, entries_of_graphics_with_fields_come_once_for_each_different_value) {
  const MergeTable table = Table({"Logo"}, {{"a"}, {"b"}, {"a"}});
  EXPECT_EQ(Merge(L"<engraving_template><graphics><graphic_location name='fixed'/>"
                  L"<graphic_location name='{Logo}'/></graphics><plates><plate>{Logo}</plate>"
                  L"</plates></engraving_template>",
                  TemplateFormat::Cr2, table),
            "<engraving_template><graphics><graphic_location name=\"fixed\"/>"
            "<graphic_location name=\"a\"/><graphic_location name=\"b\"/></graphics><plates>\n"
            "<plate>a</plate>\n<plate>b</plate>\n<plate>a</plate>\n"
            "</plates></engraving_template>");
}

// Crown Trophy's readers replace character references in the text of spans themselves.
TEST(MergeTemplate, an_ampersand_of_a_value_is_no_reference_for_crown_trophy) {
  const MergeTable table = Table({"V"}, {{"&copy; & <"}});
  const std::string merged = Merge(
      L"<engraving_template><plates><plate><graphic>{V}</graphic><font><line>{V}</line></font>"
      L"</plate></plates></engraving_template>",
      TemplateFormat::Zml, table);
  EXPECT_NE(merged.find("<graphic>&amp;copy; &amp; &lt;</graphic>"), std::string::npos) << merged;
  EXPECT_NE(merged.find("<line>&amp;amp;copy; &amp;amp; &lt;</line>"), std::string::npos) << merged;
}

TEST(MergeTemplate, formats_with_one_plate_are_a_document_a_row) {
  for (const TemplateFormat format : {TemplateFormat::Llx, TemplateFormat::BrightStar}) {
    const auto merge = MergeTemplate::Read(LoadXmlString(L"<A><B>{Name}</B></A>"), format, Names);
    ASSERT_TRUE(merge);
    EXPECT_TRUE(merge->IsDocumentARow());
    EXPECT_EQ(merge->Write({Names.rows[1]}).text, "<A><B>Bob</B></A>\n");
  }
}

TEST(MergeTemplate, characters_that_xml_can_not_have_are_replaced) {
  const MergeTable table = Table({"V"}, {{"a\x01"
                                          "b\xEF\xBF\xBF"}});
  EXPECT_NE(Merge(Abb(L"<PLATE>{V}</PLATE>"), TemplateFormat::Abb, table)
                .find("<PLATE>a\xEF\xBF\xBD"
                      "b\xEF\xBF\xBD</PLATE>"),
            std::string::npos);
  EXPECT_TRUE(HasUnwritableCharacters("\x01"));
  EXPECT_FALSE(HasUnwritableCharacters("a\tb\r\n\xEF\xBF\xBD"));
}

TEST(MergeTemplate, a_row_that_ends_early_has_empty_values) {
  const MergeTable table = Table({"Name", "Price"}, {{"Ada"}});
  EXPECT_NE(Merge(Abb(L"<PLATE>{Name}/{Price}</PLATE>"), TemplateFormat::Abb, table).find(">Ada/<"),
            std::string::npos);
}

// "Name text 255; Width number 0": the fields of a template, or why there are none.
std::string FieldsOf(const std::wstring& document, TemplateFormat format) {
  const auto fields = MergeTemplate::FieldsOf(LoadXmlString(document), format);
  if (!fields) return std::to_string(fields.Error().line) + ": " + fields.Error().why;
  std::string shown;
  for (const TemplateField& field : *fields)
    shown += (shown.empty() ? "" : "; ") + field.heading + " " + NameOf(field.kind) + " " +
             std::to_string(field.maximum);
  return shown;
}

TEST(TemplateFields, say_what_goes_into_each_place_of_plate_xml) {
  EXPECT_EQ(FieldsOf(Abb(L"<PLATE><COLOR>{Tone}</COLOR><WIDTH>{Width}</WIDTH>"
                         L"<TEXT line='{Line}' data='{Name}, {Team}'><FONT name='{Font}' "
                         L"size='{Size}'/></TEXT></PLATE>"),
                     TemplateFormat::Abb),
            "Tone color 0; Width number 0; Line number 0; Name text 255; Team text 255; "
            "Font value 0; Size number 0");
}

TEST(TemplateFields, say_what_goes_into_the_places_of_the_other_formats) {
  EXPECT_EQ(FieldsOf(L"<E><TEMPLATEGRAPHIC name='a'><FILE>{Logo}</FILE></TEMPLATEGRAPHIC>"
                     L"<PLATES><PLATE><TEXT>{Sign}</TEXT><GRAPHIC>{Which}</GRAPHIC></PLATE>"
                     L"</PLATES></E>",
                     TemplateFormat::Cro),
            "Logo file 0; Sign text 100000; Which value 0");
  EXPECT_EQ(FieldsOf(L"<E><PLATE><GRAPHIC><FILE>{Logo}</FILE><X>{X}</X></GRAPHIC>"
                     L"<ARCTEXT><RADIUS>{R}</RADIUS><TEXT>{Town}</TEXT></ARCTEXT></PLATE></E>",
                     TemplateFormat::Llx),
            "Logo file 0; X number 0; R number 0; Town text 4096");
  EXPECT_EQ(FieldsOf(L"<B><TEXTFRAME UPPERXLOC='{Left}'><LINE>{Room}</LINE></TEXTFRAME></B>",
                     TemplateFormat::BrightStar),
            "Left number 0; Room text 0");
  EXPECT_EQ(FieldsOf(L"<T><graphics><graphic_location name='c'><file>{Crest}</file>"
                     L"</graphic_location></graphics><plates><plate><text_frame>"
                     L"<font face='{Face}' size='{Size}'><line>{Name}<span>{Title}</span></line>"
                     L"</font></text_frame></plate></plates></T>",
                     TemplateFormat::Zml),
            "Crest file 0; Face value 0; Size number 0; Name text 0; Title text 0");
}

TEST(TemplateFields, a_field_in_several_places_is_listed_once_as_the_strictest) {
  EXPECT_EQ(
      FieldsOf(Abb(L"<PLATE><TEXT data='{A}'/><WIDTH>{ A }</WIDTH></PLATE>"), TemplateFormat::Abb),
      "A number 255");
}

TEST(TemplateFields, a_template_with_a_fault_or_without_fields_has_none) {
  EXPECT_EQ(FieldsOf(Abb(L"<PLATE><TEXT data='x {{'/></PLATE>"), TemplateFormat::Abb),
            "0: no text of the template has a field; a field is a heading in braces");
  EXPECT_EQ(FieldsOf(Abb(L"<PLATE>{}</PLATE>"), TemplateFormat::Abb), "1: a field has no name: {}");
  EXPECT_EQ(FieldsOf(L"<A><ENGRAVINGTEMPLATE><PLATES>{A}</PLATES><PLATE/></ENGRAVINGTEMPLATE></A>",
                     TemplateFormat::Abb),
            "1: the field {A} is outside <PLATE>, which is repeated for each row");
}

}  // namespace
}  // namespace rastrel::cli
