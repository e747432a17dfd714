// From a template of the second generation to records.

#include "rastrel/imports/cr2/zml_parse.h"

#include <gtest/gtest.h>

#include "tests/imports/cr2/cr2_fixture.h"
#include "tests/support/present_directory.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseZmlFile;
using rastrel::imports::ZmlFile;

/// The calls of every file: the image directory, and the rotation.
const std::string Begun = "Read(\"Crown\", \"ImagePath\") -> null\nSetImportRotation(0)\n";
/// The calls of a frame of a graphic.
const std::string Variables = "Read(\"zippo\", \"NumStrings\") -> null\n";

class ZmlParse : public TemplateTest {
 protected:
  bool ParseText(std::string_view text, std::string_view name = "template.zml") {
    m_Document = {};
    m_File = {};
    Calls().Clear();
    return ParseZmlFile(Write(text, name).c_str(), m_Document, m_File);
  }
  bool Parse(const TemplateParts& parts = {}) {
    return ParseText(TemplateText(parts, "engraving_template"));
  }
  /// The same in millimetres.
  bool ParseMetric(TemplateParts parts) {
    parts.head = "<Units>mm</Units>";
    return Parse(parts);
  }
  std::string Placed(const std::string& attributes) {
    TemplateParts parts;
    parts.placement = "<placement width='3' height='2' " + attributes + "/>";
    EXPECT_TRUE(Parse(parts));
    return Placement(m_Document.plateTemplate.placement);
  }
  const CR2_TEMPLATE& WithAttributes(const std::string& attributes) {
    TemplateParts parts;
    parts.attributes = attributes;
    EXPECT_TRUE(Parse(parts));
    return m_Document.plateTemplate;
  }
  std::string ColorsOf(const std::string& elements) {
    EXPECT_TRUE(Parse(WithContent(elements)));
    return Colors(m_Document.plateTemplate.colors);
  }
  const CR2_PLATE& Plate(const std::string& content) {
    EXPECT_TRUE(Parse(WithPlate(content)));
    return m_Document.plates.at(0);
  }
  const CR2_TEXT& Block(const std::string& font) {
    return Plate(TextFrame(font)).textFrames.at(0).texts.at(0);
  }

  Cr2Document m_Document;
  ZmlFile m_File;
};

TEST_F(ZmlParse, lengths_in_inches_become_centimetres) {
  TemplateParts parts;
  parts.table =
      "<table_size x='1' y='-2' width='10' height='5' origin='bottom left' margin-top='0.5'/>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Placement(m_Document.tableSize.placement), "7: 2.54 -5.08, 25.4 x 12.7");
  EXPECT_EQ(Margins(m_Document.tableSize.margins), "0 1.27 0 0");
  EXPECT_FALSE(m_File.isMetric);
}

TEST_F(ZmlParse, lengths_in_millimetres_become_centimetres) {
  TemplateParts parts;
  parts.table = "<table_size x='1' y='-2' width='10' height='5' margins='3'/>";
  parts.attributes = "spacing='4' stroke='0.5'";
  parts.plates =
      "<plates><plate>" + TextFrame("<font size='6' line_height='7'/>") + "</plate></plates>";
  EXPECT_TRUE(ParseMetric(parts));
  EXPECT_EQ(Placement(m_Document.tableSize.placement), "1: 0.1 -0.2, 1 x 0.5");
  EXPECT_EQ(Margins(m_Document.tableSize.margins), "0.3 0.3 0.3 0.3");
  EXPECT_EQ(m_Document.plateTemplate.xSpacing, 0.4);
  EXPECT_EQ(m_Document.plateTemplate.strokeWidth, 0.05);
  EXPECT_EQ(m_Document.plates.at(0).textFrames.at(0).texts.at(0).font.size, 0.6);
  EXPECT_EQ(m_Document.plates.at(0).textFrames.at(0).texts.at(0).font.lineHeight, 0.7);
  EXPECT_TRUE(m_File.isMetric);
}

TEST_F(ZmlParse, units_of_any_other_text_are_inches) {
  for (const char* units : {"MM", "Mm", "millimetres", "m m", ""}) {
    TemplateParts parts;
    parts.head = std::string("<Units>") + units + "</Units>";
    EXPECT_TRUE(Parse(parts));
    EXPECT_FALSE(m_File.isMetric) << units;
    EXPECT_EQ(m_Document.plateTemplate.placement.width, 3 * 2.54);
  }
}

TEST_F(ZmlParse, whitespace_around_the_units_does_not_count) {
  TemplateParts parts;
  parts.head = "<Units> mm\n</Units>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_TRUE(m_File.isMetric);
}

TEST_F(ZmlParse, a_root_of_any_name_is_accepted) {
  for (const char* root : {"ENGRAVINGTEMPLATE", "engraving_template", "anything"})
    EXPECT_TRUE(ParseText(TemplateText({}, root))) << root;
  TemplateParts parts;
  parts.head = "<Units>mm</Units>";
  EXPECT_TRUE(ParseText(TemplateText(parts, "ENGRAVINGTEMPLATE")));
  EXPECT_TRUE(m_File.isMetric);
}

TEST_F(ZmlParse, origins_and_proportions_are_those_of_the_first_generation) {
  EXPECT_EQ(Placed("origin='center' constrained_proportions='true'"),
            "5: 0 0, 7.62 x 5.08 constrained");
  EXPECT_EQ(Placed("origin='bottom right'"), "9: 0 0, 7.62 x 5.08");
  EXPECT_EQ(Placed("origin='bottom'"), "1: 0 0, 7.62 x 5.08");
}

TEST_F(ZmlParse, single_margins_are_read_only_without_that_of_all_sides) {
  EXPECT_EQ(Margins(WithAttributes("margins='1' margin-left='2' margin-bottom='3'").margins),
            "2.54 2.54 2.54 2.54");
  EXPECT_EQ(Margins(WithAttributes("margins='0' margin-left='2'").margins), "0 0 0 0");
  EXPECT_EQ(Margins(WithAttributes("margin-left='2' margin-bottom='0.5'").margins),
            "5.08 0 0 1.27");
  EXPECT_EQ(Margins(WithAttributes("margins='' margin-left='2'").margins), "5.08 0 0 0");
}

TEST_F(ZmlParse, a_spacing_is_that_of_both_axes_and_keeps_its_number) {
  const CR2_TEMPLATE& spaced = WithAttributes("spacing='0.5' Xspacing='1' Yspacing='2'");
  EXPECT_EQ(spaced.spacing, 0.5);
  EXPECT_EQ(spaced.xSpacing, 1.27);
  EXPECT_EQ(spaced.ySpacing, 1.27);
}

TEST_F(ZmlParse, a_spacing_of_0_leaves_no_gap_and_asks_no_axis) {
  const CR2_TEMPLATE& spaced = WithAttributes("spacing='0' Xspacing='1' Yspacing='2'");
  EXPECT_EQ(spaced.xSpacing, 0.0);
  EXPECT_EQ(spaced.ySpacing, 0.0);
}

TEST_F(ZmlParse, without_a_spacing_each_axis_has_its_own) {
  const CR2_TEMPLATE& spaced = WithAttributes("Xspacing='1' Yspacing='2'");
  EXPECT_EQ(spaced.spacing, 0.0);
  EXPECT_EQ(spaced.xSpacing, 2.54);
  EXPECT_EQ(spaced.ySpacing, 5.08);
  EXPECT_EQ(WithAttributes("Xspacing='1'").ySpacing, 0.0);
}

TEST_F(ZmlParse, a_stroke_is_a_converted_width_or_the_hairline) {
  EXPECT_EQ(WithAttributes("stroke='0.5'").strokeWidth, 1.27);
  EXPECT_EQ(WithAttributes("stroke='hairline'").strokeWidth, 4.450147717014403e-308);
  EXPECT_EQ(WithAttributes("stroke='Hairline'").strokeWidth, 0.0);
  EXPECT_EQ(WithAttributes("").strokeWidth, 0.0);
}

TEST_F(ZmlParse, a_file_that_lacks_a_part_is_refused) {
  EXPECT_FALSE(ParseText("<engraving_template/>"));
  TemplateParts parts;
  parts.table = "";
  EXPECT_FALSE(Parse(parts));
  parts.table = "<table_size width='24'/>";
  EXPECT_FALSE(Parse(parts));
  EXPECT_FALSE(ParseText("<a><table_size width='24' height='12'/><plates><plate/></plates></a>"));
  parts = {};
  parts.placement = "<placement height='2'/>";
  EXPECT_FALSE(Parse(parts));
  parts = {};
  parts.plates = "";
  EXPECT_FALSE(Parse(parts));
  parts.plates = "<plates><Plate/>text</plates>";
  EXPECT_FALSE(Parse(parts));
}

TEST_F(ZmlParse, a_file_that_is_no_xml_is_refused_and_not_repaired) {
  EXPECT_FALSE(ParseText("x" + TemplateText({}, "engraving_template")));
  EXPECT_FALSE(ParseText(TemplateText(WithContent("&copy;"), "engraving_template")));
  EXPECT_EQ(Calls().Text(), "Read(\"Crown\", \"ImagePath\") -> null\n");
}

TEST_F(ZmlParse, a_path_of_another_kind_is_refused_before_anything_is_asked) {
  const std::string text = TemplateText({}, "engraving_template");
  EXPECT_FALSE(ParseZmlFile(nullptr, m_Document, m_File));
  EXPECT_FALSE(ParseZmlFile(m_Scratch.Wide("missing.zml").c_str(), m_Document, m_File));
  EXPECT_FALSE(ParseText(text, "template.cr2"));
  EXPECT_FALSE(ParseText(text, "template.zml "));
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_TRUE(ParseText(text, "TEMPLATE.ZmL"));
}

TEST_F(ZmlParse, a_path_of_less_than_5_characters_is_refused) {
  const PresentDirectory here(m_Scratch.Path());
  for (const char* name : {".zml", "a.zml", "ab.zml"})
    m_Scratch.Write(name, TemplateText({}, "engraving_template"));
  EXPECT_FALSE(ParseZmlFile(L".zml", m_Document, m_File));
  EXPECT_TRUE(ParseZmlFile(L"a.zml", m_Document, m_File));
  EXPECT_TRUE(ParseZmlFile(L"ab.zml", m_Document, m_File));
}

TEST_F(ZmlParse, the_image_directory_is_a_setting) {
  m_Host.m_Settings[{L"Crown", L"ImagePath"}] = L"C:\\art";
  EXPECT_TRUE(Parse());
  EXPECT_EQ(m_File.imageDirectory, L"C:\\art");
  m_Host.m_Settings[{L"Crown", L"ImagePath"}] = std::wstring(300, L'a');
  EXPECT_TRUE(Parse());
  EXPECT_EQ(m_File.imageDirectory, std::wstring(259, L'a'));
  m_Host.m_Settings.clear();
  EXPECT_TRUE(Parse());
  EXPECT_EQ(m_File.imageDirectory, L"");
}

TEST_F(ZmlParse, a_frame_of_a_graphic_has_its_variables) {
  const CR2_PLATE& plate = Plate(
      "<graphic_frame><graphic>logo</graphic><placement width='2' height='1'/>"
      "<variable2> TWO </variable2><variable0/><variable2>again</variable2>"
      "<variable4>no</variable4><variable03>no</variable03></graphic_frame>");
  ASSERT_EQ(plate.graphicFrames.size(), 1U);
  EXPECT_EQ(plate.graphicFrames[0].graphic, L"logo");
  EXPECT_EQ(plate.graphicFrames[0].variables, (std::vector<std::wstring>{L"", L"", L"TWO", L""}));
  EXPECT_EQ(plate.graphicFrames[0].isVariablePresent,
            (std::vector<bool>{true, false, true, false}));
  EXPECT_EQ(Calls().Text(), Begun + Variables);
}

TEST_F(ZmlParse, the_number_of_variables_is_a_setting_up_to_255) {
  const auto variables = [&](const wchar_t* setting) {
    m_Host.m_Settings[{L"zippo", L"NumStrings"}] = setting;
    return Plate(
               "<graphic_frame><graphic/><placement width='2' height='1'/>"
               "</graphic_frame>")
        .graphicFrames.at(0)
        .variables.size();
  };
  EXPECT_EQ(variables(L"-1"), 0U);
  EXPECT_EQ(variables(L"0"), 1U);
  EXPECT_EQ(variables(L"254"), 255U);
  EXPECT_EQ(variables(L"255"), 256U);
  EXPECT_EQ(variables(L"256"), 256U);
  EXPECT_EQ(variables(L"2147483647"), 256U);
}

TEST_F(ZmlParse, a_frame_without_graphic_or_placement_ends_the_graphics_of_its_plate) {
  const std::string placed =
      "<graphic_frame><graphic>a</graphic><placement width='2' height='1'/></graphic_frame>";
  for (const char* bad :
       {"<graphic_frame><placement width='2' height='1'/></graphic_frame>",
        "<graphic_frame><graphic>b</graphic></graphic_frame>",
        "<graphic_frame><graphic>b</graphic><placement width='2'/></graphic_frame>"}) {
    TemplateParts parts;
    parts.plates = "<plates><plate>" + placed + bad + placed +
                   TextFrame("<font><line>A</line></font>") + "</plate><plate>" + placed + placed +
                   "</plate></plates>";
    EXPECT_TRUE(Parse(parts));
    EXPECT_EQ(m_Document.plates.at(0).graphicFrames.size(), 1U) << bad;
    EXPECT_EQ(m_Document.plates.at(0).textFrames.size(), 1U);
    EXPECT_EQ(m_Document.plates.at(1).graphicFrames.size(), 2U);
  }
}

TEST_F(ZmlParse, a_text_frame_without_a_placement_is_left_out_alone) {
  const CR2_PLATE& plate = Plate(TextFrame("<font><line>A</line></font>") +
                                 "<text_frame><font><line>B</line></font></text_frame>" +
                                 TextFrame("<font><line>C</line></font>"));
  ASSERT_EQ(plate.textFrames.size(), 2U);
  EXPECT_EQ(plate.textFrames[1].texts.at(0).lines.at(0).spans.at(0).text, L"C");
}

TEST_F(ZmlParse, a_font_with_a_size_and_no_line_height_has_lines_as_high_as_its_size) {
  const CR2_TEXT& block = Block("<font face='Arial' style='Bold' size='0.5'/>");
  EXPECT_EQ(block.font.size, 1.27);
  EXPECT_EQ(block.font.lineHeight, 1.27);
  EXPECT_EQ(block.font.face, L"Arial");
  EXPECT_EQ(block.font.style, L"Bold");
}

TEST_F(ZmlParse, a_line_height_of_its_own_is_a_length) {
  const CR2_TEXT& block = Block("<font size='0.5' line_height='1' justification='right'/>");
  EXPECT_EQ(block.font.size, 1.27);
  EXPECT_EQ(block.font.lineHeight, 2.54);
  EXPECT_EQ(block.font.justification, 1);
}

TEST_F(ZmlParse, a_justification_that_is_missing_compares_the_attribute_before_it) {
  // A size or a line height that is a keyword is no number and so 0, and justifies.
  EXPECT_EQ(Block("<font size='0.5' line_height='center'/>").font.justification, 2);
  EXPECT_EQ(Block("<font size='right'/>").font.justification, 1);
  EXPECT_EQ(Block("<font size='right' line_height='1'/>").font.justification, 0);
  EXPECT_EQ(
      Block("<font size='0.5' line_height='center' justification='left'/>").font.justification, 0);
  EXPECT_EQ(Block("<font size='0.5'/>").font.justification, 0);
}

TEST_F(ZmlParse, a_span_without_a_size_has_none_and_keeps_face_and_style) {
  const CR2_TEXT& block = Block(
      "<font face='Arial' style='Bold' size='0.5' line_height='1' justification='center'>"
      "<line><span>A</span><span face='Roman' size='0.25'>B</span></line></font>");
  const std::vector<CR2_SPAN>& spans = block.lines.at(0).spans;
  ASSERT_EQ(spans.size(), 2U);
  EXPECT_EQ(spans[0].font.face, L"Arial");
  EXPECT_EQ(spans[0].font.style, L"Bold");
  EXPECT_EQ(spans[0].font.size, 0.0);
  EXPECT_EQ(spans[0].font.lineHeight, 0.0);
  EXPECT_EQ(spans[0].font.justification, 0);
  EXPECT_EQ(spans[1].font.face, L"Roman");
  EXPECT_EQ(spans[1].font.size, 0.25 * 2.54);
}

TEST_F(ZmlParse, an_rgb_color_keeps_all_bits_of_blue_alone) {
  EXPECT_EQ(ColorsOf("<color target='stroke' format='RGB'>"
                     "<rgb red='255' green='128' blue='1'/></color>"),
            "stroke RGB(255 128 1), fill none");
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'><rgb red='300' green='-1'/></color>"),
            "stroke none, fill RGB(44 255 0)");
  // With blue of 16 bits the reference is -1.
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'>"
                     "<rgb red='255' green='255' blue='65535'/></color>"),
            "stroke none, fill invisible");
  EXPECT_EQ(ColorsOf("<color target='fill' format='RGB'>"
                     "<rgb red='255' green='255' blue='255'/></color>"),
            "stroke none, fill RGB(255 255 255)");
}

TEST_F(ZmlParse, a_cmyk_color_is_divided_by_100) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='CMYK'>"
                     "<cmyk cyan='25' magenta='50.9' yellow='100' black='-3'/></color>"),
            "stroke none, fill CMYK(0.25 0.5 1 -0.03)");
}

TEST_F(ZmlParse, a_hex_value_of_8_characters_is_rgb_and_of_10_cmyk) {
  const auto fill = [&](const std::string& value) {
    return ColorsOf("<color target='fill' format='HEX'><hex value='" + value + "'/></color>");
  };
  EXPECT_EQ(fill("0xFF8001"), "stroke none, fill RGB(255 128 1)");
  EXPECT_EQ(fill("0xff80Ab"), "stroke none, fill RGB(255 128 171)");
  EXPECT_EQ(fill("##FF8001"), "stroke none, fill RGB(255 128 1)");
  // 0x19 is 25, 0x32 50, 0x64 100 and 0xC8 200.
  EXPECT_EQ(fill("0x193264C8"), "stroke none, fill CMYK(0.25 0.5 1 2)");
  EXPECT_EQ(fill("0xFF800"), "stroke none, fill none");
  EXPECT_EQ(fill("0xFF80010"), "stroke none, fill none");
  EXPECT_EQ(fill("0x193264C80"), "stroke none, fill none");
  EXPECT_EQ(fill(""), "stroke none, fill none");
}

TEST_F(ZmlParse, a_character_of_a_hex_value_that_is_no_digit_counts_as_0) {
  EXPECT_EQ(ColorsOf("<color target='fill' format='HEX'><hex value='0xG1 2\xC3\xA4"
                     "3'/></color>"),
            "stroke none, fill RGB(1 2 3)");
}

TEST_F(ZmlParse, an_invisible_color_needs_no_format) {
  EXPECT_EQ(ColorsOf("<color target='fill' invisible='no'/>"), "stroke none, fill invisible");
  EXPECT_EQ(ColorsOf("<color target='fill' invisible='1' format='RGB'><rgb red='9'/></color>"),
            "stroke none, fill invisible");
  EXPECT_EQ(ColorsOf("<color target='fill' invisible='' format='RGB'><rgb red='9'/></color>"),
            "stroke none, fill RGB(9 0 0)");
}

TEST_F(ZmlParse, colors_by_name_and_output_filters_do_not_exist) {
  m_Host.m_Application.m_Palette[L"Red"] = CVKFullColor(0x0000FF, COLORSPACE_RGB, 0, 0);
  TemplateParts parts = WithContent(
      "<color target='fill' format='NAME'><name>Red</name></color>"
      "<color target='fill' format='RGB'><hex value='1'/></color>");
  parts.tail =
      "<Output_Filter><color target='fill' format='RGB'><rgb red='1'/></color></Output_Filter>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Colors(m_Document.plateTemplate.colors), "stroke none, fill none");
  EXPECT_TRUE(m_Document.outputFilter.empty());
  EXPECT_EQ(Calls().Text(), Begun);
}

TEST_F(ZmlParse, a_color_that_the_palette_lacks_is_added_while_it_is_read) {
  Calls().Next("IsColorInPalette", {0, 1});
  EXPECT_EQ(ColorsOf("<color target='stroke' format='RGB'><rgb red='1'/></color>"
                     "<color target='fill' format='RGB'><rgb red='2'/></color>"
                     "<color target='other' format='RGB'><rgb red='3'/></color>"
                     "<color target='fill' invisible='1'/>"
                     "<color format='RGB'><rgb red='4'/></color>"
                     "<color target='fill' format='RGB'><rgb red='5'/></color>"),
            "stroke RGB(1 0 0), fill invisible");
  EXPECT_EQ(Calls().Text(), Begun +
                                "IsColorInPalette(RGB(1 0 0)) -> 0\n"
                                "AddColorToPalette(RGB(1 0 0)) -> 1\n"
                                "IsColorInPalette(RGB(2 0 0)) -> 1\n"
                                "IsColorInPalette(invisible) -> 0\n"
                                "AddColorToPalette(invisible) -> 1\n");
}

TEST_F(ZmlParse, without_an_application_the_records_are_the_same) {
  m_Host.m_HasDocument = false;
  TemplateParts parts = WithContent("<color target='fill' format='RGB'><rgb red='2'/></color>");
  parts.head = "<Rotation>90</Rotation><Driver/>";
  EXPECT_TRUE(Parse(parts));
  EXPECT_EQ(Colors(m_Document.plateTemplate.colors), "stroke none, fill RGB(2 0 0)");
  EXPECT_EQ(m_File.rotation, 90.0);
  EXPECT_EQ(Calls().Text(), "Read(\"Crown\", \"ImagePath\") -> null\n");
}

}  // namespace
