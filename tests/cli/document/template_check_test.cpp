#include "cli/document/template_check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/document/schema_check.h"
#include "cli/document/template_schema.h"
#include "host/document/document.h"
#include "host/document/shapes.h"
#include "host/document_host.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/xml/layer.h"
#include "tests/support/environment_guard.h"
#include "tests/support/present_directory.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using Lines = std::vector<std::string>;

// The findings of a template, "line: text".
class TemplateCheck : public ::testing::Test {
 protected:
  TemplateCheck() { host::SetHost(&m_Host); }
  ~TemplateCheck() override { host::SetHost(nullptr); }

  Lines Check(TemplateFormat format, const std::wstring& document) {
    const XmlNode root = LoadXmlString(document);
    EXPECT_TRUE(root);
    Lines lines;
    for (const Finding& finding : CheckTemplate(format, root, m_Host))
      lines.push_back(std::to_string(finding.line) + ": " + finding.text);
    return lines;
  }

  test::ScratchDirectory m_Place;
  test::PresentDirectory m_Present{m_Place.Path()};
  document::DocumentHost m_Host;
};

TEST_F(TemplateCheck, a_cro_template_without_faults_has_no_findings) {
  EXPECT_EQ(
      Check(TemplateFormat::Cro,
            L"<ENGRAVINGTEMPLATE><TEMPLATENAME>a</TEMPLATENAME>"
            L"<DRIVER>d<Setting Header='a' Name='b' Value='c'/></DRIVER>"
            L"<TEMPLATESIZE><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>"
            L"<USETEMPLATEBLANKSIZE>TRUE</USETEMPLATEBLANKSIZE></TEMPLATESIZE>"
            L"<TEMPLATEORIGIN>mid center</TEMPLATEORIGIN><METRIC yes='1'/>"
            L"<TEMPLATETEXT line='1'><FONT>DejaVuSans.ttf</FONT><HEIGHT>1</HEIGHT></TEMPLATETEXT>"
            L"<PLATES><PLATE><TEXT>x</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>"),
      Lines());
}

TEST_F(TemplateCheck, cro_elements_and_keywords_that_are_passed_over_are_named_with_their_lines) {
  EXPECT_EQ(Check(TemplateFormat::Cro,
                  L"<ENGRAVINGTEMPLATE>\n<PLATE/>\n<TEMPLATEORIGIN>center</TEMPLATEORIGIN>\n"
                  L"<ROTATION>half</ROTATION>\n<METRIC/>\n<DRIVER><Setting Name='a'/></DRIVER>\n"
                  L"<PLATES>\n<PLATE><GRAPHIC>logo</GRAPHIC></PLATE></PLATES></ENGRAVINGTEMPLATE>"),
            (Lines{"2: <PLATE> is not known in <ENGRAVINGTEMPLATE>",
                   "3: <TEMPLATEORIGIN> is \"center\", which is not known",
                   "4: <ROTATION> is no number: \"half\"", "5: <METRIC> has no yes",
                   "6: <Setting> has no Header", "6: <Setting> has no Value",
                   "8: there is no <TEMPLATEGRAPHIC> of the name \"logo\""}));
}

TEST_F(TemplateCheck, graphics_that_are_not_found_are_named_and_others_are_not) {
  m_Place.Write("Art/logo.svg", "<svg/>");
  EXPECT_EQ(Check(TemplateFormat::Llx,
                  L"<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT>\n"
                  L"<GRAPHIC><FILE>art\\LOGO.svg</FILE></GRAPHIC>\n"
                  L"<GRAPHIC><FILE>none.svg</FILE></GRAPHIC>"
                  L"</PLATE></ENGRAVINGTEMPLATE></A>"),
            (Lines{"3: the graphic \"none.svg\" is not found"}));
}

TEST_F(TemplateCheck, only_the_first_plate_and_template_of_llx_count) {
  EXPECT_EQ(Check(TemplateFormat::Llx,
                  L"<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT></PLATE>\n"
                  L"<PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT></PLATE></ENGRAVINGTEMPLATE>\n"
                  L"<ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT></PLATE>"
                  L"</ENGRAVINGTEMPLATE></A>"),
            (Lines{"2: only the first <PLATE> is imported",
                   "3: only the first <ENGRAVINGTEMPLATE> is imported"}));
}

TEST_F(TemplateCheck, keywords_and_fonts_of_llx_and_bright_star_are_checked) {
  EXPECT_EQ(
      Check(TemplateFormat::Llx,
            L"<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT>\n"
            L"<ORIGIN>middle</ORIGIN>\n"
            L"<ARCTEXT><RADIUS>1</RADIUS><HEIGHT>x</HEIGHT><FONT>NoSuchFont.ttf</FONT>"
            L"<JUSTIFY>Left</JUSTIFY><TEXT>a</TEXT></ARCTEXT>"
            L"</PLATE></ENGRAVINGTEMPLATE></A>"),
      (Lines{"2: <ORIGIN> is \"middle\", which is not known", "3: <HEIGHT> is no number: \"x\"",
             "3: <JUSTIFY> is \"Left\", which is not known",
             "3: the font \"NoSuchFont.ttf\" can't be had; DejaVu Sans stands in for it"}));
  EXPECT_EQ(Check(TemplateFormat::BrightStar,
                  L"<A><ENGRAVINGTEMPLATE><WIDTH>1</WIDTH><HEIGHT>1</HEIGHT>\n"
                  L"<ORIGIN>BOTTOM LEFT</ORIGIN>\n"
                  L"<TEXTFRAME compression='none' UPPERXLOC='a' other='1'>\n"
                  L"<FONT name='DejaVuSans.ttf' size='1' justification='left'/></TEXTFRAME>\n"
                  L"</ENGRAVINGTEMPLATE></A>"),
            (Lines{"2: <ORIGIN> is \"BOTTOM LEFT\", which is not known",
                   "3: compression of <TEXTFRAME> is \"none\", which is not known",
                   "3: UPPERXLOC of <TEXTFRAME> is no number: \"a\"",
                   "3: <TEXTFRAME> has an attribute \"other\" that is not known",
                   "4: justification of <FONT> is \"left\", which is not known"}));
}

std::wstring Crown(const std::wstring& plates, const std::wstring& before = L"") {
  return L"<engraving_template><table_size width='9' height='9'/><template><placement width='3' "
         L"height='1'/></template>" +
         before + L"\n<plates>\n<plate>" + plates + L"</plate></plates></engraving_template>";
}

TEST_F(TemplateCheck, a_crown_trophy_template_without_faults_has_no_findings) {
  const std::wstring text =
      L"<text_frame><placement width='1' height='1'/><font face='DejaVu Sans' size='0.2'>"
      L"<line>a</line></font></text_frame>";
  EXPECT_EQ(Check(TemplateFormat::Cr2, Crown(text)), Lines());
  EXPECT_EQ(Check(TemplateFormat::Zml, Crown(text)), Lines());
}

TEST_F(TemplateCheck, frames_without_placement_and_names_without_graphics_are_named) {
  EXPECT_EQ(Check(TemplateFormat::Cr2,
                  Crown(L"<graphic_frame><graphic>logo</graphic><placement width='1'/>"
                        L"</graphic_frame>\n<text_frame/>")),
            (Lines{"3: <placement> has no height",
                   "3: there is no <graphic_location> of the name \"logo\"",
                   "4: <text_frame> has no <placement>"}));
}

TEST_F(TemplateCheck, a_graphic_frame_of_the_second_generation_is_said_to_never_appear) {
  EXPECT_EQ(Check(TemplateFormat::Zml,
                  Crown(L"<graphic_frame><graphic>logo</graphic><placement width='1' height='1'/>"
                        L"</graphic_frame>")),
            (Lines{"3: a graphic frame of this format is checked, and never appears"}));
}

TEST_F(TemplateCheck, a_colors_name_in_a_span_is_engraved_and_said_so) {
  EXPECT_EQ(
      Check(TemplateFormat::Cr2,
            Crown(L"<text_frame><placement width='1' height='1'/><font face='DejaVu Sans'>\n<line>"
                  L"<span face='DejaVu Sans'><color target='fill' format='NAME'><name>Red</name>"
                  L"</color>a</span></line></font></text_frame>")),
      (Lines{"4: the name \"Red\" of the colour is engraved as a part of the text"}));
}

TEST_F(TemplateCheck, colors_that_become_none_are_named) {
  EXPECT_EQ(Check(TemplateFormat::Cr2,
                  Crown(L"<text_frame><placement width='1' height='1'/></text_frame>",
                        L"\n<Output_Filter>\n<color target='x' format='NAME'><name>Octarine</name>"
                        L"</color>\n<color format='RGB'><hex value='1'/></color></Output_Filter>")),
            (Lines{"3: the palette has no colour \"Octarine\", and there is none",
                   "4: <color> has no target", "4: <hex> is not known in <color>",
                   "4: <hex> gives no colour in this format"}));
}

TEST_F(TemplateCheck, spans_that_do_not_take_over_from_their_block_are_named) {
  const std::wstring text =
      L"<text_frame><placement width='1' height='1'/><font face='DejaVu Sans' size='1'>\n<line>"
      L"<span>a</span></line></font></text_frame>";
  EXPECT_EQ(
      Check(TemplateFormat::Cr2, Crown(text)),
      (Lines{"4: <span> has no face, and is set in a replacement; that of its <font> does not "
             "count"}));
  EXPECT_EQ(Check(TemplateFormat::Zml, Crown(text)),
            (Lines{"4: <span> has no size, which is 0; that of its <font> does not count"}));
}

TEST_F(TemplateCheck, characters_that_are_not_kept_are_named) {
  const auto text = [](const std::wstring& line) {
    return Crown(
        L"<text_frame><placement width='1' height='1'/><font face='DejaVu Sans' size='1'>"
        L"<line>" +
        line + L"</line></font></text_frame>");
  };
  EXPECT_EQ(Check(TemplateFormat::Zml, text(L"&amp;#x0416;")),
            (Lines{"3: characters of \"&#x0416;\" can't be kept, and become others"}));
  EXPECT_EQ(Check(TemplateFormat::Cr2, text(L"&amp;#x414; &amp;#65;")),
            (Lines{"3: a character reference of \"&#x414; &#65;\" is engraved as it is written"}));
  EXPECT_EQ(Check(TemplateFormat::Cr2, text(L"&amp;eacute;")), Lines());
}

TEST_F(TemplateCheck, a_table_that_counts_from_its_middle_is_named) {
  EXPECT_EQ(Check(TemplateFormat::Cr2,
                  L"<engraving_template>\n<table_size width='9' height='9' origin='center'/>"
                  L"<template><placement width='3' height='1'/></template><plates><plate/></plates>"
                  L"</engraving_template>"),
            (Lines{"2: the origin of the table is \"center\", and becomes \"top left\""}));
}

TEST_F(TemplateCheck, formats_with_checks_of_their_own_have_no_schema) {
  EXPECT_EQ(SchemaOf(TemplateFormat::Abb), nullptr);
  EXPECT_EQ(SchemaOf(TemplateFormat::Document), nullptr);
  EXPECT_EQ(Check(TemplateFormat::Abb, L"<A/>"), Lines());
}

TEST_F(TemplateCheck, a_driver_that_names_no_plotter_is_named_with_the_text_that_is_compared) {
  const auto rotation = [](const std::wstring& name) {
    return L"<engraving_template>\n<Driver>Cutter</Driver><Rotation>" + name +
           L"</Rotation><table_size width='9' height='9'/><template><placement width='3' "
           L"height='1'/></template><plates><plate/></plates></engraving_template>";
  };
  EXPECT_EQ(Check(TemplateFormat::Zml, rotation(L"90")),
            (Lines{"2: <Driver> chooses no plotter: it goes by the text of <Rotation>, and no "
                   "plotter of this installation has the name \"90\""}));
}

TEST_F(TemplateCheck, a_driver_that_names_a_plotter_and_a_template_without_driver_are_no_findings) {
  test::ScratchDirectory root;
  const test::EnvironmentGuard home("RASTREL_HOME", root.Path());
  root.Write("plotters/0.ini", "[setup]\nplottername = Cutter\n");
  root.Write("settings.ini", "[plottersetup]\nNumberDevices = 1\n");
  const std::wstring rest =
      L"<table_size width='9' height='9'/><template><placement width='3' height='1'/></template>"
      L"<plates><plate/></plates></engraving_template>";
  EXPECT_EQ(Check(TemplateFormat::Zml,
                  L"<engraving_template><Driver/><Rotation>Cutter</Rotation>" + rest),
            (Lines{"1: <Rotation> is no number: \"Cutter\""}));
  EXPECT_EQ(Check(TemplateFormat::Zml, L"<engraving_template>" + rest), Lines());
}

// Texts on circles, in the document that a template becomes.
class ArcTextCheck : public TemplateCheck {
 protected:
  Lines Texts(const std::wstring& text, double radius) {
    document::ArcTextShape arc;
    arc.center = {10, 10};
    arc.radius = radius;
    arc.run.text = text;
    arc.run.font = L"DejaVuSans";
    arc.run.size = 400;
    document::Document& document = m_Host.GetDocument();
    document.Insert(document.Create(arc, {}), host::DocumentRoot);
    Lines lines;
    for (const Finding& finding : CheckTexts(m_Host, {})) lines.push_back(finding.text);
    return lines;
  }
};

TEST_F(ArcTextCheck, a_text_that_fits_on_its_circle_has_no_findings) {
  EXPECT_EQ(Texts(L"Harlow", 5), Lines());
}

TEST_F(ArcTextCheck, a_text_that_is_longer_than_its_circle_is_squeezed) {
  EXPECT_EQ(Texts(std::wstring(100, L'W'), 3),
            (Lines{"the text is longer than its circle, and is squeezed"}));
}

TEST_F(ArcTextCheck, letters_that_no_font_has_are_named) {
  const Lines found = Texts(L"a\xE000", 5);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_NE(found[0].find("U+E000"), std::string::npos) << found[0];
}

TEST_F(ArcTextCheck, a_text_has_the_line_of_its_plate) {
  const XmlNode root =
      LoadXmlString(L"<A>\n<ENGRAVINGTEMPLATE>\n<PLATE/>\n<PLATE/></ENGRAVINGTEMPLATE></A>");
  EXPECT_EQ(PlateLines(TemplateFormat::Llx, root), (std::vector<int>{3}));
  EXPECT_TRUE(PlateLines(TemplateFormat::Llx, LoadXmlString(L"<A/>")).empty());
}

// Each list of each schema can be cut to its end, and names kinds that there are.
TEST(TemplateSchema, all_rows_name_kinds_that_are_known) {
  int entries = 0;
  for (const TemplateFormat format :
       {TemplateFormat::Cro, TemplateFormat::Llx, TemplateFormat::BrightStar, TemplateFormat::Cr2,
        TemplateFormat::Zml}) {
    for (const SchemaElement& row : SchemaOf(format)->elements) {
      for (std::wstring_view list : {row.attributes, row.children}) {
        while (!list.empty()) {
          const SchemaEntry entry = TakeEntry(list);
          EXPECT_FALSE(entry.name.empty());
          if (!entry.kind.empty()) {
            EXPECT_EQ(KindOf(entry.kind).name, entry.kind);
          }
          ++entries;
        }
      }
    }
  }
  EXPECT_GT(entries, 50);
}

TEST(IsNumber, takes_numbers_as_a_whole_alone) {
  for (const wchar_t* text : {L"1", L"-1.5", L" 2\t", L"+.5", L"1e3", L"1E-3"})
    EXPECT_TRUE(IsNumber(text)) << text;
  for (const wchar_t* text : {L"", L" ", L"1 2", L"1e", L"e3", L".", L"1.2.3", L"0x10", L"nan"})
    EXPECT_FALSE(IsNumber(text)) << text;
}

}  // namespace
}  // namespace rastrel::cli
