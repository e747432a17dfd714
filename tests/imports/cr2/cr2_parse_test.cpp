// From a template of the first generation to records.

#include "rastrel/imports/cr2/cr2_parse.h"

#include <gtest/gtest.h>

#include "tests/imports/cr2/cr2_fixture.h"
#include "tests/support/present_directory.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseCr2File;

class Cr2Parse : public TemplateTest {
 protected:
  Cr2Parse() {
    m_Host.m_Application.m_Palette[L"Red"] = CVKFullColor(0x0000FF, COLORSPACE_RGB, 0, 0);
  }

  bool ParseText(std::string_view text, std::string_view name = "template.cr2") {
    m_Document = {};
    return ParseCr2File(Write(text, name).c_str(), m_Document);
  }
  bool Parse(const TemplateParts& parts = {}) {
    return ParseText(TemplateText(parts, "engraving_template"));
  }
  /// The placement of a template with those attributes.
  std::string Placed(const std::string& attributes) {
    TemplateParts parts;
    parts.placement = "<placement width='3' height='2' " + attributes + "/>";
    EXPECT_TRUE(Parse(parts));
    return Placement(m_Document.plateTemplate.placement);
  }
  /// The template's colors for its `color` elements.
  std::string ColorsOf(const std::string& elements) {
    EXPECT_TRUE(Parse(WithContent(elements)));
    return Colors(m_Document.plateTemplate.colors);
  }
  const CR2_PLATE& Plate(const std::string& content) {
    EXPECT_TRUE(Parse(WithPlate(content)));
    return m_Document.plates.at(0);
  }
  /// The first block of the first text frame.
  const CR2_TEXT& Block(const std::string& font) {
    return Plate(TextFrame(font)).textFrames.at(0).texts.at(0);
  }

  Cr2Document m_Document;
};

TEST_F(Cr2Parse, a_table_has_its_placement_and_its_margins_in_inches) {
  TemplateParts parts;
  parts.table =
      "<table_size x='0.5' y='-0.25' width='24' height='1.2e1' origin='bottom left' "
      "constrained_proportions='true' margins='1' margin-top='0.5'/>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Placement(m_Document.tableSize.placement), "7: 0.5 -0.25, 24 x 12 constrained");
  EXPECT_EQ(Margins(m_Document.tableSize.margins), "1 0.5 1 1");
}

TEST_F(Cr2Parse, each_keyword_of_an_origin_has_its_code) {
  const std::vector<std::pair<std::string, std::string>> codes = {
      {"top left", "1"},    {"top center", "2"},    {"top right", "3"},
      {"mid left", "4"},    {"mid center", "5"},    {"mid right", "6"},
      {"bottom left", "7"}, {"bottom center", "8"}, {"bottom right", "9"}};
  for (const auto& [keyword, code] : codes)
    EXPECT_EQ(Placed("origin='" + keyword + "'"), code + ": 0 0, 3 x 2");
}

TEST_F(Cr2Parse, center_and_mid_center_are_one_code) {
  EXPECT_EQ(Placed("origin='center'"), Placed("origin='mid center'"));
  EXPECT_EQ(Placed("origin='center'"), "5: 0 0, 3 x 2");
}

TEST_F(Cr2Parse, an_origin_that_is_missing_or_unknown_is_the_top_left) {
  EXPECT_EQ(Placed(""), "1: 0 0, 3 x 2");
  EXPECT_EQ(Placed("origin=''"), "1: 0 0, 3 x 2");
  EXPECT_EQ(Placed("origin='Bottom Right'"), "1: 0 0, 3 x 2");
  // Whitespace of an attribute stays.
  EXPECT_EQ(Placed("origin=' bottom right'"), "1: 0 0, 3 x 2");
}

TEST_F(Cr2Parse, proportions_are_kept_for_exactly_true) {
  EXPECT_EQ(Placed("constrained_proportions='true'"), "1: 0 0, 3 x 2 constrained");
  EXPECT_EQ(Placed("constrained_proportions='TRUE'"), "1: 0 0, 3 x 2");
  EXPECT_EQ(Placed("constrained_proportions='true '"), "1: 0 0, 3 x 2");
  EXPECT_EQ(Placed("constrained_proportions='1'"), "1: 0 0, 3 x 2");
}

TEST_F(Cr2Parse, a_table_without_a_width_or_a_height_ends_the_file_with_zeros) {
  for (const char* attributes : {"width='24'", "height='12'", "width='' height='12'", ""}) {
    TemplateParts parts;
    parts.table = std::string("<table_size x='1' margins='1' ") + attributes + "/>";
    EXPECT_FALSE(Parse(parts)) << attributes;
    EXPECT_EQ(Placement(m_Document.tableSize.placement), "0: 0 0, 0 x 0");
    EXPECT_TRUE(m_Document.plates.empty());
  }
}

TEST_F(Cr2Parse, a_width_that_is_no_number_is_0_and_valid) {
  TemplateParts parts;
  parts.table = "<table_size width='wide' height='12'/>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Placement(m_Document.tableSize.placement), "1: 0 0, 0 x 12");
}

TEST_F(Cr2Parse, single_margins_go_over_that_of_all_sides) {
  TemplateParts parts;
  parts.attributes = "margins='0.5' margin-left='1' margin-bottom='0'";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Margins(m_Document.plateTemplate.margins), "1 0.5 0.5 0");
  parts.attributes = "margin-top='2' margin-right='3'";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Margins(m_Document.plateTemplate.margins), "0 2 3 0");
}

TEST_F(Cr2Parse, a_stroke_is_a_width_or_the_hairline) {
  const auto stroke = [&](const std::string& attributes) {
    TemplateParts parts;
    parts.attributes = attributes;
    EXPECT_TRUE(Parse(parts));
    return m_Document.plateTemplate.strokeWidth;
  };
  EXPECT_EQ(stroke("stroke='hairline'"), 4.450147717014403e-308);
  EXPECT_EQ(stroke("stroke='Hairline'"), 0.0);  // the keyword is case-sensitive
  EXPECT_EQ(stroke("stroke='0.125in'"), 0.125);
  EXPECT_EQ(stroke(""), 0.0);
}

TEST_F(Cr2Parse, only_the_spacing_of_both_axes_is_known) {
  TemplateParts parts;
  parts.attributes = "spacing='0.25' Xspacing='1' Yspacing='2'";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(m_Document.plateTemplate.spacing, 0.25);
  EXPECT_EQ(m_Document.plateTemplate.xSpacing + m_Document.plateTemplate.ySpacing, 0.0);
}

TEST_F(Cr2Parse, a_template_without_a_valid_placement_ends_the_file) {
  for (const char* placement :
       {"", "<placement width='3'/>", "<Placement width='3' height='2'/>"}) {
    TemplateParts parts;
    parts.attributes = "spacing='0.25'";
    parts.placement = placement;
    EXPECT_FALSE(Parse(parts)) << placement;
    EXPECT_EQ(m_Document.tableSize.placement.width, 24.0);
    EXPECT_EQ(m_Document.plateTemplate.spacing, 0.25);
    EXPECT_EQ(Placement(m_Document.plateTemplate.placement), "0: 0 0, 0 x 0");
    EXPECT_TRUE(m_Document.plates.empty());
  }
}

TEST_F(Cr2Parse, a_missing_part_ends_the_file_with_what_was_read) {
  EXPECT_TRUE(ParseText("<engraving_template/>"));
  EXPECT_EQ(m_Document.tableSize.placement.origin, 0);
  TemplateParts parts;
  parts.table = "<Table_Size width='24' height='12'/>";  // a name of its own
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(m_Document.plateTemplate.placement.origin, 0);
  EXPECT_TRUE(
      ParseText("<engraving_template><table_size width='24' height='12'/></engraving_template>"));
  EXPECT_EQ(m_Document.tableSize.placement.width, 24.0);
  parts = {};
  parts.plates = "";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(m_Document.plateTemplate.placement.width, 3.0);
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(Cr2Parse, plates_without_a_plate_are_a_failure) {
  TemplateParts parts;
  parts.plates = "<plates><Plate/></plates>";
  EXPECT_FALSE(Parse(parts));
  EXPECT_EQ(m_Document.plateTemplate.placement.width, 3.0);
}

TEST_F(Cr2Parse, plates_outside_of_plates_are_not_seen) {
  TemplateParts parts;
  parts.tail = "<plate/>";
  parts.plates = "<plates><plate/><plate/></plates><plates><plate/></plates>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(m_Document.plates.size(), 2U);
}

TEST_F(Cr2Parse, another_root_is_a_file_without_records) {
  EXPECT_TRUE(ParseText(TemplateText({}, "ENGRAVINGTEMPLATE")));
  EXPECT_EQ(m_Document.tableSize.placement.origin, 0);
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(Cr2Parse, a_file_that_is_no_xml_is_a_file_without_records) {
  EXPECT_TRUE(ParseText("<engraving_template><table_size"));
  EXPECT_TRUE(ParseText(""));
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(Cr2Parse, a_path_of_another_kind_is_refused) {
  const std::string text = TemplateText({}, "engraving_template");
  EXPECT_FALSE(ParseCr2File(nullptr, m_Document));
  EXPECT_FALSE(ParseCr2File(m_Scratch.Wide("missing.cr2").c_str(), m_Document));
  EXPECT_FALSE(ParseText(text, "template.xml"));
  EXPECT_FALSE(ParseText(text, "template.cr2x"));
  EXPECT_FALSE(ParseText(text, "template.cr2 "));
  EXPECT_FALSE(ParseText(text, "cr2"));
  EXPECT_TRUE(ParseText(text, "TEMPLATE.Cr2"));
  EXPECT_EQ(m_Document.plates.size(), 1U);
}

TEST_F(Cr2Parse, a_path_of_less_than_5_characters_is_refused) {
  const PresentDirectory here(m_Scratch.Path());
  const std::string text = TemplateText({}, "engraving_template");
  m_Scratch.Write(".cr2", text);
  m_Scratch.Write("a.cr2", text);
  m_Scratch.Write("ab.cr2", text);
  EXPECT_FALSE(ParseCr2File(L".cr2", m_Document));
  EXPECT_TRUE(ParseCr2File(L"a.cr2", m_Document));
  EXPECT_EQ(m_Document.plates.size(), 1U);
  m_Document = {};
  EXPECT_TRUE(ParseCr2File(L"ab.cr2", m_Document));
  EXPECT_EQ(m_Document.plates.size(), 1U);
}

TEST_F(Cr2Parse, the_directory_of_graphics_keeps_its_order) {
  TemplateParts parts;
  parts.tail =
      "<graphics><graphic_location name='logo'><file> C:\\art\\logo.svg </file></graphic_location>"
      "<graphic_location name='bare'/><other name='x'/>"
      "<graphic_location><file>b.svg</file></graphic_location></graphics>";
  EXPECT_TRUE(Parse(parts));
  ASSERT_EQ(m_Document.graphics.size(), 3U);
  EXPECT_EQ(m_Document.graphics[0].name, L"logo");
  EXPECT_EQ(m_Document.graphics[0].file, L"C:\\art\\logo.svg");
  EXPECT_EQ(m_Document.graphics[1].name, L"bare");
  EXPECT_EQ(m_Document.graphics[1].file, L"");
  EXPECT_EQ(m_Document.graphics[2].name, L"");
  EXPECT_EQ(m_Document.graphics[2].file, L"b.svg");
}

TEST_F(Cr2Parse, a_frame_of_a_graphic_has_its_name_placement_and_colors) {
  const CR2_PLATE& plate = Plate(
      "<graphic_frame><graphic> logo </graphic><placement x='1' width='2' height='1'/>"
      "<color target='fill' format='RGB'><rgb red='255'/></color></graphic_frame>");
  ASSERT_EQ(plate.graphicFrames.size(), 1U);
  EXPECT_EQ(plate.graphicFrames[0].graphic, L"logo");
  EXPECT_EQ(Placement(plate.graphicFrames[0].placement), "1: 1 0, 2 x 1");
  EXPECT_EQ(Colors(plate.graphicFrames[0].colors), "stroke none, fill RGB(255 0 0)");
  EXPECT_TRUE(plate.graphicFrames[0].variables.empty());
  EXPECT_TRUE(plate.graphicFrames[0].isVariablePresent.empty());
}

TEST_F(Cr2Parse, a_frame_without_a_valid_placement_keeps_zeros) {
  const CR2_PLATE& plate = Plate(
      "<graphic_frame><graphic>logo</graphic></graphic_frame>"
      "<graphic_frame><placement x='1' y='2' width='3' origin='center'/></graphic_frame>"
      "<text_frame><placement x='1' height='3'/><font><line>A</line></font></text_frame>");
  ASSERT_EQ(plate.graphicFrames.size(), 2U);
  EXPECT_EQ(Placement(plate.graphicFrames[0].placement), "0: 0 0, 0 x 0");
  EXPECT_EQ(Placement(plate.graphicFrames[1].placement), "0: 0 0, 0 x 0");
  EXPECT_EQ(plate.graphicFrames[1].graphic, L"");
  ASSERT_EQ(plate.textFrames.size(), 1U);
  EXPECT_EQ(Placement(plate.textFrames[0].placement), "0: 0 0, 0 x 0");
  EXPECT_EQ(plate.textFrames[0].texts.at(0).lines.at(0).spans.at(0).text, L"A");
}

TEST_F(Cr2Parse, a_block_has_its_font_and_its_lines) {
  const CR2_TEXT& block = Block(
      "<font face='Arial' style='Bold' size='0.5' line_height='1.25' justification='center'>"
      "<color target='fill' format='RGB'><rgb green='128'/></color>"
      "<line>ONE</line><line>TWO</line></font>");
  EXPECT_EQ(block.font.face, L"Arial");
  EXPECT_EQ(block.font.style, L"Bold");
  EXPECT_EQ(block.font.size, 0.5);
  EXPECT_EQ(block.font.lineHeight, 1.25);
  EXPECT_EQ(block.font.justification, 2);
  EXPECT_EQ(Colors(block.font.colors), "stroke none, fill RGB(0 128 0)");
  ASSERT_EQ(block.lines.size(), 2U);
  EXPECT_EQ(block.lines[1].spans.at(0).text, L"TWO");
}

TEST_F(Cr2Parse, each_justification_has_its_number) {
  const auto justification = [&](const std::string& attribute) {
    return Block("<font " + attribute + "/>").font.justification;
  };
  EXPECT_EQ(justification("justification='left'"), 0);
  EXPECT_EQ(justification("justification='right'"), 1);
  EXPECT_EQ(justification("justification='center'"), 2);
  EXPECT_EQ(justification("justification='Right'"), 0);
  EXPECT_EQ(justification("justification='justify'"), 0);
  EXPECT_EQ(justification(""), 0);
}

TEST_F(Cr2Parse, a_line_without_spans_has_one_in_the_font_of_the_block) {
  const CR2_TEXT& block = Block(
      "<font face='Arial' style='Bold' size='0.5' justification='right'>"
      "<line> A <b>B</b> C </line><line/></font>");
  ASSERT_EQ(block.lines.size(), 2U);
  ASSERT_EQ(block.lines[0].spans.size(), 1U);
  EXPECT_EQ(block.lines[0].spans[0].text, L"A B C");
  EXPECT_EQ(block.lines[0].spans[0].font.face, L"Arial");
  EXPECT_EQ(block.lines[0].spans[0].font.style, L"Bold");
  EXPECT_EQ(block.lines[0].spans[0].font.justification, 1);
  ASSERT_EQ(block.lines[1].spans.size(), 1U);
  EXPECT_EQ(block.lines[1].spans[0].text, L"");
}

TEST_F(Cr2Parse, a_span_that_names_no_face_and_style_has_none) {
  const CR2_TEXT& block = Block(
      "<font face='Arial' style='Bold' size='0.5' line_height='1.25' justification='right'>"
      "<line>lost<span>A</span><span face='Roman' style='Italic' "
      "size='0.25'>B</span></line></font>");
  const std::vector<CR2_SPAN>& spans = block.lines.at(0).spans;
  ASSERT_EQ(spans.size(), 2U);
  EXPECT_EQ(spans[0].text, L"A");
  EXPECT_EQ(spans[0].font.face, L"");
  EXPECT_EQ(spans[0].font.style, L"");
  // The numbers stay where they are not given, and the justification does not.
  EXPECT_EQ(spans[0].font.size, 0.5);
  EXPECT_EQ(spans[0].font.lineHeight, 1.25);
  EXPECT_EQ(spans[0].font.justification, 0);
  EXPECT_EQ(spans[1].font.face, L"Roman");
  EXPECT_EQ(spans[1].font.style, L"Italic");
  EXPECT_EQ(spans[1].font.size, 0.25);
  EXPECT_EQ(block.font.face, L"Arial");
}

TEST_F(Cr2Parse, a_span_has_the_colors_of_its_block_under_its_own) {
  const CR2_TEXT& block = Block(
      "<font><color target='fill' format='RGB'><rgb red='1'/></color>"
      "<color target='stroke' format='RGB'><rgb red='2'/></color>"
      "<line><span>A</span><span><color target='fill' format='RGB'><rgb red='3'/></color>B</span>"
      "</line></font>");
  const std::vector<CR2_SPAN>& spans = block.lines.at(0).spans;
  EXPECT_EQ(Colors(spans.at(0).font.colors), "stroke RGB(2 0 0), fill RGB(1 0 0)");
  EXPECT_EQ(Colors(spans.at(1).font.colors), "stroke RGB(2 0 0), fill RGB(3 0 0)");
  EXPECT_EQ(Colors(block.font.colors), "stroke RGB(2 0 0), fill RGB(1 0 0)");
}

TEST_F(Cr2Parse, the_name_of_a_color_is_part_of_its_span_s_text) {
  const CR2_TEXT& block = Block(
      "<font><line><span><color target='fill' format='NAME'><name>Red</name></color> PUMP</span>"
      "</line></font>");
  EXPECT_EQ(block.lines.at(0).spans.at(0).text, L"Red PUMP");
  EXPECT_EQ(Colors(block.lines.at(0).spans.at(0).font.colors), "stroke none, fill RGB(255 0 0)");
}

TEST_F(Cr2Parse, the_color_of_a_line_without_spans_is_text_and_no_color) {
  const CR2_TEXT& block = Block(
      "<font><line><color target='fill' format='NAME'><name>Red</name></color> PUMP</line></font>");
  EXPECT_EQ(block.lines.at(0).spans.at(0).text, L"Red PUMP");
  EXPECT_EQ(Colors(block.lines.at(0).spans.at(0).font.colors), "stroke none, fill none");
}

TEST_F(Cr2Parse, an_rgb_color_is_the_sum_of_its_shifted_values) {
  EXPECT_EQ(ColorsOf("<color target='stroke' format='RGB'>"
                     "<rgb red='255' green='128' blue='1'/></color>"),
            "stroke RGB(255 128 1), fill none");
  // 300 is 256 + 44: one more of green.
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='300' green='2'/></color>"),
            "stroke none, fill RGB(44 3 0)");
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb/></color>"),
            "stroke none, fill RGB(0 0 0)");
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='-1'/></color>"),
            "stroke none, fill invisible");
}

TEST_F(Cr2Parse, a_cmyk_color_has_its_values_as_they_are) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='CMYK'>"
                     "<cmyk cyan='0' magenta='50' yellow='100.9' black='-3'/></color>"),
            "stroke none, fill CMYK(0 50 100 -3)");
}

TEST_F(Cr2Parse, a_color_by_name_is_that_of_the_palette) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='NAME'><name> Red </name></color>"
                     "<color target='stroke' format='NAME'><name>red</name></color>"),
            "stroke none, fill RGB(255 0 0)");
  EXPECT_EQ(Calls().Text(),
            "FindPaletteColor(\"Red\") -> 1\n"
            "FindPaletteColor(\"red\") -> 0\n");
}

TEST_F(Cr2Parse, a_color_by_name_without_text_asks_the_palette_nothing) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='NAME'><name/></color>"
                     "<color target='fill' format='NAME'/>"),
            "stroke none, fill none");
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(Cr2Parse, without_an_application_no_name_is_found) {
  m_Host.m_HasDocument = false;
  EXPECT_EQ(ColorsOf("<color target='fill' format='NAME'><name>Red</name></color>"),
            "stroke none, fill none");
}

TEST_F(Cr2Parse, a_hex_value_results_in_no_color) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><hex value='255'/></color>"
                     "<color target='stroke' format='CMYK'><hex value='255'/></color>"
                     "<color target='stroke' format='HEX'><hex value='0xFF0000'/></color>"),
            "stroke none, fill none");
}

TEST_F(Cr2Parse, a_color_that_results_in_none_empties_no_slot) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='9'/></color>"
                     "<color target='fill' format='RGB'><hex value='1'/></color>"
                     "<color target='fill' format='NAME'><name>Pink</name></color>"
                     "<color target='fill'/>"),
            "stroke none, fill RGB(9 0 0)");
}

TEST_F(Cr2Parse, a_later_color_of_a_target_takes_the_slot) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='9'/></color>"
                     "<color target='fill' format='RGB'><rgb red='8'/></color>"),
            "stroke none, fill RGB(8 0 0)");
}

TEST_F(Cr2Parse, a_color_without_a_target_ends_its_list) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='9'/></color>"
                     "<color format='NAME'><name>Red</name></color>"
                     "<color target='stroke' format='NAME'><name>Red</name></color>"),
            "stroke none, fill RGB(9 0 0)");
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(Cr2Parse, a_color_of_another_target_is_looked_up_and_dropped) {
  EXPECT_EQ(ColorsOf("<color target='Fill' format='NAME'><name>Red</name></color>"),
            "stroke none, fill none");
  EXPECT_EQ(Calls().Text(), "FindPaletteColor(\"Red\") -> 1\n");
}

TEST_F(Cr2Parse, the_output_filter_has_the_colors_of_all_targets) {
  TemplateParts parts;
  parts.tail =
      "<Output_Filter><color target='fill' format='RGB'><rgb red='1'/></color>"
      "<color target='any' format='CMYK'><cmyk black='2'/></color>"
      "<color target='fill' format='NAME'><name>Pink</name></color>"
      "<color target='fill' format='RGB'><rgb red='3'/></color>"
      "<color format='RGB'><rgb red='4'/></color>"
      "<color target='fill' format='RGB'><rgb red='5'/></color></Output_Filter>";
  EXPECT_TRUE(Parse(parts));
  ASSERT_EQ(m_Document.outputFilter.size(), 3U);
  EXPECT_EQ(TextOf(*m_Document.outputFilter[0]), "RGB(1 0 0)");
  EXPECT_EQ(TextOf(*m_Document.outputFilter[1]), "CMYK(0 0 0 2)");
  EXPECT_EQ(TextOf(*m_Document.outputFilter[2]), "RGB(3 0 0)");
}

}  // namespace
