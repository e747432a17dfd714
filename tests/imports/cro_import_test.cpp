// From a CRO file to its records.

#include "rastrel/imports/cro_file_import.h"

#include <cmath>
#include <limits>

#include "tests/imports/template_fixture.h"

namespace {

using Texts = std::vector<std::wstring>;

Texts TextsOf(const CStringArray* array) {
  if (array == nullptr) return {L"(null)"};
  Texts texts;
  for (int index = 0; index < array->GetSize(); ++index) texts.push_back(array->GetAt(index));
  return texts;
}

class CroImport : public rastrel::test::TemplateTest {
 protected:
  /// A parsed document of these children of its root.
  CCROFileImport& Parse(std::string_view children, std::string_view name = "template.cro") {
    return Read(
        "<?xml version='1.0'?><ENGRAVINGTEMPLATE>" + std::string(children) + "</ENGRAVINGTEMPLATE>",
        name);
  }
  CCROFileImport& Read(std::string_view document, std::string_view name = "template.cro") {
    m_Importer = std::make_unique<CCROFileImport>(Write(document, name).c_str(), nullptr);
    return *m_Importer;
  }
  /// The same for a file that must be refused: nothing may be in its members.
  void ExpectRefused(std::string_view document, std::string_view name = "template.cro") {
    const CCROFileImport& importer = Read(document, name);
    EXPECT_FALSE(importer.m_bParsed);
    EXPECT_TRUE(importer.m_PlateText.empty() && importer.m_PlateGraphics.empty());
    EXPECT_TRUE(importer.m_Graphics.empty() && importer.m_TextOverrides.empty());
    EXPECT_EQ(importer.m_Width, 0);
  }
  /// The origin that a text gives the template, which had 4 before.
  std::int32_t OriginOf(const std::string& text) {
    return Parse("<TEMPLATEORIGIN>mid left</TEMPLATEORIGIN><TEMPLATEORIGIN>" + text +
                 "</TEMPLATEORIGIN>")
        .m_Origin;
  }

  std::unique_ptr<CCROFileImport> m_Importer;
};

TEST_F(CroImport, a_template_has_the_values_of_its_elements) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATENAME> Doors </TEMPLATENAME>"
      "<DRIVER>Mill 4<Setting Header='H' Name='N' Value='V'/></DRIVER>"
      "<TEMPLATESIZE><WIDTH>4.5</WIDTH><HEIGHT>2</HEIGHT>"
      "<USETEMPLATEBLANKSIZE>TRUE</USETEMPLATEBLANKSIZE></TEMPLATESIZE>"
      "<ROTATION>90</ROTATION><TEMPLATEORIGIN>bottom right</TEMPLATEORIGIN>"
      "<VERTICALSPACING><MARGINS>0.25</MARGINS></VERTICALSPACING>"
      "<SHOWPRINTDIALOG yes='1'/><PRINTDIRECT yes='1'/>");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.m_TemplateName, L"Doors");
  EXPECT_EQ(importer.m_DriverName, L"Mill 4");
  ASSERT_EQ(importer.m_DriverSettings.size(), 1U);
  EXPECT_EQ(importer.m_DriverSettings[0].header, L"H");
  EXPECT_EQ(importer.m_DriverSettings[0].name, L"N");
  EXPECT_EQ(importer.m_DriverSettings[0].value, L"V");
  EXPECT_EQ(importer.m_Width, 4.5);
  EXPECT_EQ(importer.m_Height, 2);
  EXPECT_TRUE(importer.m_bUseTemplateBlankSize);
  EXPECT_EQ(importer.m_Rotation, 90);
  EXPECT_EQ(importer.m_Origin, 9);
  EXPECT_EQ(importer.m_HasVerticalSpacing, 1);
  EXPECT_EQ(importer.m_Margins, 0.25F);
  EXPECT_TRUE(importer.IsShowPrintDialog());
  EXPECT_TRUE(importer.IsPrintDirect());
  EXPECT_FALSE(importer.UseMetric());
}

TEST_F(CroImport, values_that_the_file_does_not_give_are_zero_or_empty) {
  const CCROFileImport& importer = Parse("");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.m_TemplateName + importer.m_DriverName + importer.m_Reserved1 +
                importer.m_Reserved2 + importer.m_Reserved3,
            L"");
  EXPECT_EQ(importer.m_Width + importer.m_Height + importer.m_Rotation, 0);
  EXPECT_EQ(importer.m_Origin, 0);
  EXPECT_EQ(importer.m_HasVerticalSpacing, 0);
  EXPECT_EQ(importer.m_TiltHorizontal, 0);
  EXPECT_EQ(importer.m_TiltLeftBottom + importer.m_TiltTopRight, 0);
  EXPECT_FALSE(importer.UseMetric() || importer.IsPrintDirect() || importer.IsShowPrintDialog() ||
               importer.m_bUseTemplateBlankSize);
}

// Which files are taken.

TEST_F(CroImport, each_of_the_four_extensions_reads_the_same_file) {
  for (const char* name : {"a.cro", "a.crx", "a.cml", "a.xml", "a.CRO", "a.Xml", "a.xml "}) {
    CCROFileImport& importer = Parse("<PLATES><PLATE><TEXT>A</TEXT></PLATE></PLATES>", name);
    EXPECT_TRUE(importer.m_bParsed) << name;
    EXPECT_EQ(TextsOf(importer.GetFirstPlate()), Texts{L"A"}) << name;
  }
}

TEST_F(CroImport, other_extensions_are_refused) {
  for (const char* name : {"a.llx", "a.cro2", "a.cr", "cro", "a.cro.txt", "a"})
    ExpectRefused("<ENGRAVINGTEMPLATE><PLATES><PLATE/></PLATES></ENGRAVINGTEMPLATE>", name);
}

TEST_F(CroImport, the_extension_is_after_the_last_dot_of_the_last_component) {
  const std::string document = "<ENGRAVINGTEMPLATE/>";
  EXPECT_TRUE(Read(document, "plates.old.cro").m_bParsed);
  EXPECT_TRUE(Read(document, "plates. cro ").m_bParsed);
  ExpectRefused(document, "folder.cro/plates");
  ExpectRefused(document, "plates.cro.");
}

TEST_F(CroImport, paths_that_name_nothing_are_refused) {
  EXPECT_FALSE(CCROFileImport(nullptr, nullptr).m_bParsed);
  EXPECT_FALSE(CCROFileImport(L"", nullptr).m_bParsed);
  EXPECT_FALSE(CCROFileImport(m_Scratch.Wide("absent.cro").c_str(), nullptr).m_bParsed);
}

TEST_F(CroImport, a_directory_of_that_name_is_refused) {
  std::filesystem::create_directory(m_Scratch.Path("folder.cro"));
  EXPECT_FALSE(CCROFileImport(m_Scratch.Wide("folder.cro").c_str(), nullptr).m_bParsed);
}

TEST_F(CroImport, a_root_of_another_name_gives_no_records) {
  ExpectRefused("<engravingtemplate><PLATES><PLATE/></PLATES></engravingtemplate>");
  ExpectRefused("<A><ENGRAVINGTEMPLATE><PLATES><PLATE/></PLATES></ENGRAVINGTEMPLATE></A>");
}

TEST_F(CroImport, a_root_with_a_prefix_counts_by_its_local_name) {
  EXPECT_TRUE(
      Read("<v:ENGRAVINGTEMPLATE xmlns:v='urn:v'><v:PLATES/></v:ENGRAVINGTEMPLATE>").m_bParsed);
}

TEST_F(CroImport, nothing_is_written_to_the_log_stream) {
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(std::tmpfile(), std::fclose);
  ASSERT_NE(stream, nullptr);
  const std::wstring path = Write("<ENGRAVINGTEMPLATE/>", "a.cro");
  EXPECT_TRUE(CCROFileImport(path.c_str(), stream.get()).m_bParsed);
  EXPECT_FALSE(CCROFileImport(L"absent.cro", stream.get()).m_bParsed);
  EXPECT_EQ(std::ftell(stream.get()), 0);
}

TEST_F(CroImport, the_host_is_asked_nothing_and_nothing_is_logged) {
  Parse("<PLATES><PLATE/></PLATES><UNKNOWN/><DRIVER><Setting Name='n'/></DRIVER>");
  ExpectRefused("<OTHER/>");
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(Log(), "");
}

// The repair.

TEST_F(CroImport, a_spaced_declaration_is_repaired) {
  CCROFileImport& importer = Read(
      "<? xml version='1.0'?><ENGRAVINGTEMPLATE><PLATES><PLATE><TEXT>A</TEXT></PLATE></PLATES>"
      "</ENGRAVINGTEMPLATE>");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(TextsOf(importer.GetFirstPlate()), Texts{L"A"});
}

TEST_F(CroImport, a_file_in_code_page_1250_is_repaired) {
  CCROFileImport& importer =
      Read("<ENGRAVINGTEMPLATE><TEMPLATENAME>\x8Cl\xB9sk</TEMPLATENAME></ENGRAVINGTEMPLATE>");
  EXPECT_EQ(importer.m_TemplateName, L"\u015Al\u0105sk");
}

TEST_F(CroImport, references_that_only_html_has_stay_refused) {
  ExpectRefused("<ENGRAVINGTEMPLATE><TEMPLATENAME>&copy;</TEMPLATENAME></ENGRAVINGTEMPLATE>");
}

TEST_F(CroImport, a_wrong_root_after_the_repair_is_refused_too) {
  ExpectRefused("<? xml version='1.0'?><OTHER/>");
}

// Flags.

TEST_F(CroImport, a_flag_is_a_number_other_than_0_in_its_attribute) {
  EXPECT_TRUE(Parse("<METRIC yes='1'/>").UseMetric());
  EXPECT_TRUE(Parse("<METRIC yes='-2x'/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC yes='0'/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC yes=''/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC yes='yes'/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC yes='true'/>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC>1</METRIC>").UseMetric());
  EXPECT_FALSE(Parse("<METRIC Yes='1'/>").UseMetric());
}

TEST_F(CroImport, the_last_element_of_a_flag_counts_also_without_a_value) {
  EXPECT_FALSE(Parse("<METRIC yes='1'/><METRIC/>").UseMetric());
  EXPECT_TRUE(Parse("<METRIC/><METRIC yes='1'/>").UseMetric());
  EXPECT_FALSE(Parse("<PRINTDIRECT yes='1'/><PRINTDIRECT/>").IsPrintDirect());
  EXPECT_FALSE(Parse("<SHOWPRINTDIALOG yes='1'/><SHOWPRINTDIALOG/>").IsShowPrintDialog());
}

// The template.

TEST_F(CroImport, settings_of_the_driver_need_all_three_attributes) {
  const CCROFileImport& importer = Parse(
      "<DRIVER>D<Setting Header='a' Name='b' Value='c'/><Setting Header='a' Name='b'/>"
      "<Setting Header='' Name='b' Value='c'/><Setting Name='b' Value='c'/>"
      "<setting Header='a' Name='b' Value='c'/><Setting header='a' Name='b' Value='c'/>"
      "<Setting Header='d' Name='e' Value=' f '/></DRIVER>");
  ASSERT_EQ(importer.m_DriverSettings.size(), 2U);
  EXPECT_EQ(importer.m_DriverSettings[1].header, L"d");
  EXPECT_EQ(importer.m_DriverSettings[1].name, L"e");
  EXPECT_EQ(importer.m_DriverSettings[1].value, L" f ");
}

TEST_F(CroImport, the_driver_is_the_text_of_all_below_its_element) {
  EXPECT_EQ(Parse("<DRIVER> Mill <Setting>4</Setting></DRIVER>").m_DriverName, L"Mill 4");
}

TEST_F(CroImport, the_blank_has_the_size_of_the_template_only_where_the_file_says_TRUE) {
  const auto uses = [this](const std::string& elements) {
    return Parse("<TEMPLATESIZE>" + elements + "</TEMPLATESIZE>").m_bUseTemplateBlankSize;
  };
  EXPECT_TRUE(uses("<USETEMPLATEBLANKSIZE> TRUE </USETEMPLATEBLANKSIZE>"));
  EXPECT_FALSE(uses("<USETEMPLATEBLANKSIZE>true</USETEMPLATEBLANKSIZE>"));
  EXPECT_FALSE(uses("<USETEMPLATEBLANKSIZE>1</USETEMPLATEBLANKSIZE>"));
  EXPECT_FALSE(uses("<USETEMPLATEBLANKSIZE yes='1'/>"));
  EXPECT_FALSE(uses("<USETEMPLATEBLANKSIZE>TRUE</USETEMPLATEBLANKSIZE><USETEMPLATEBLANKSIZE/>"));
}

TEST_F(CroImport, an_empty_element_keeps_the_value_that_was_there) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATENAME>A</TEMPLATENAME><TEMPLATENAME/><ROTATION>45</ROTATION><ROTATION> </ROTATION>"
      "<TEMPLATESIZE><WIDTH>1</WIDTH><WIDTH/></TEMPLATESIZE><TEMPLATESIZE/>"
      "<TEMPLATEORIGIN>top left</TEMPLATEORIGIN><TEMPLATEORIGIN/>"
      "<VERTICALSPACING><MARGINS>1</MARGINS></VERTICALSPACING><VERTICALSPACING/>");
  EXPECT_EQ(importer.m_TemplateName, L"A");
  EXPECT_EQ(importer.m_Rotation, 45);
  EXPECT_EQ(importer.m_Width, 1);
  EXPECT_EQ(importer.m_Origin, 1);
  EXPECT_EQ(importer.m_Margins, 1);
}

TEST_F(CroImport, a_text_that_is_no_number_is_0) {
  EXPECT_EQ(Parse("<ROTATION>45</ROTATION><ROTATION>left</ROTATION>").m_Rotation, 0);
}

TEST_F(CroImport, each_origin_has_its_code_and_an_unknown_one_keeps_the_value) {
  EXPECT_EQ(OriginOf("top left"), 1);
  EXPECT_EQ(OriginOf("top center"), 2);
  EXPECT_EQ(OriginOf("top right"), 3);
  EXPECT_EQ(OriginOf("mid left"), 4);
  EXPECT_EQ(OriginOf("mid center"), 5);
  EXPECT_EQ(OriginOf("mid right"), 6);
  EXPECT_EQ(OriginOf("bottom left"), 7);
  EXPECT_EQ(OriginOf("bottom center"), 8);
  EXPECT_EQ(OriginOf("bottom right"), 9);
  EXPECT_EQ(OriginOf("center"), 4);
  EXPECT_EQ(OriginOf("Top Left"), 4);
  EXPECT_EQ(OriginOf(" top left "), 1);
}

TEST_F(CroImport, vertical_spacing_without_margins_is_seen_all_the_same) {
  const CCROFileImport& importer = Parse("<VERTICALSPACING/>");
  EXPECT_EQ(importer.m_HasVerticalSpacing, 1);
  EXPECT_EQ(importer.m_Margins, 0);
}

TEST_F(CroImport, a_tilting_tool_has_the_values_of_its_path_and_defaults_for_the_others) {
  const CCROFileImport& empty = Parse("<TILTTOOLPATH/>");
  EXPECT_EQ(empty.m_TiltHorizontal, 1);
  EXPECT_EQ(empty.m_TiltGroove, 0);
  EXPECT_EQ(empty.m_TiltRelative, 0);
  EXPECT_EQ(empty.m_TiltLeftBottom, 0.254);
  EXPECT_EQ(empty.m_TiltTopRight, 0.762);
  const CCROFileImport& given = Parse(
      "<TILTTOOLPATH><HORIZONTAL>0</HORIZONTAL><GROOVE>2</GROOVE><RELATIVE>3</RELATIVE>"
      "<LBVALUE>1.5</LBVALUE><TRVALUE>2.5</TRVALUE></TILTTOOLPATH>");
  EXPECT_EQ(given.m_TiltHorizontal, 0);
  EXPECT_EQ(given.m_TiltGroove, 2);
  EXPECT_EQ(given.m_TiltRelative, 3);
  EXPECT_EQ(given.m_TiltLeftBottom, 1.5);
  EXPECT_EQ(given.m_TiltTopRight, 2.5);
}

TEST_F(CroImport, a_second_tilting_tool_begins_with_the_defaults_again) {
  const CCROFileImport& importer =
      Parse("<TILTTOOLPATH><GROOVE>2</GROOVE></TILTTOOLPATH><TILTTOOLPATH/>");
  EXPECT_EQ(importer.m_TiltGroove, 0);
}

// Graphics.

constexpr const char* CommonValues =
    "<TEMPLATEGRAPHICS><WIDTH>3</WIDTH><HEIGHT>4</HEIGHT><ORIGIN>top left</ORIGIN><XLOC>5</XLOC>"
    "<YLOC>6</YLOC></TEMPLATEGRAPHICS>";

TEST_F(CroImport, a_graphic_has_the_values_of_its_elements) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATEGRAPHIC name='Logo'><FILE>logo.svg</FILE><WIDTH>1</WIDTH><HEIGHT>2</HEIGHT>"
      "<ORIGIN>mid center</ORIGIN><XLOC>0.5</XLOC><YLOC>-0.5</YLOC></TEMPLATEGRAPHIC>");
  ASSERT_EQ(importer.m_Graphics.size(), 1U);
  const CROGraphic& graphic = *importer.m_Graphics[0];
  EXPECT_EQ(graphic.name, L"Logo");
  EXPECT_EQ(graphic.file, L"logo.svg");
  EXPECT_EQ(graphic.width, 1);
  EXPECT_EQ(graphic.height, 2);
  EXPECT_EQ(graphic.origin, 5);
  EXPECT_EQ(graphic.x, 0.5);
  EXPECT_EQ(graphic.y, -0.5);
}

TEST_F(CroImport, a_graphic_takes_the_common_values_where_it_gives_none) {
  const CCROFileImport& importer =
      Parse(std::string(CommonValues) +
            "<TEMPLATEGRAPHIC/><TEMPLATEGRAPHIC><WIDTH>1</WIDTH><HEIGHT/><ORIGIN>center</ORIGIN>"
            "<XLOC>left</XLOC></TEMPLATEGRAPHIC>");
  EXPECT_EQ(importer.m_GraphicsWidth, 3);
  EXPECT_EQ(importer.m_GraphicsHeight, 4);
  EXPECT_EQ(importer.m_GraphicsOrigin, 1);
  EXPECT_EQ(importer.m_GraphicsX, 5);
  EXPECT_EQ(importer.m_GraphicsY, 6);
  ASSERT_EQ(importer.m_Graphics.size(), 2U);
  const CROGraphic& none = *importer.m_Graphics[0];
  EXPECT_EQ(none.width, 3);
  EXPECT_EQ(none.height, 4);
  EXPECT_EQ(none.origin, 1);
  EXPECT_EQ(none.x, 5);
  EXPECT_EQ(none.y, 6);
  const CROGraphic& some = *importer.m_Graphics[1];
  EXPECT_EQ(some.width, 1);
  EXPECT_EQ(some.height, 4);  // an empty element gives nothing
  EXPECT_EQ(some.origin, 1);  // nor does an unknown origin
  EXPECT_EQ(some.x, 0);       // a text that is no number does
  EXPECT_EQ(some.y, 6);
}

TEST_F(CroImport, a_graphic_before_the_common_values_gets_zeros) {
  const CCROFileImport& importer = Parse(std::string("<TEMPLATEGRAPHIC name='A'/>") + CommonValues);
  const CROGraphic& graphic = *importer.m_Graphics.at(0);
  EXPECT_EQ(graphic.width + graphic.height + graphic.x + graphic.y, 0);
  EXPECT_EQ(graphic.origin, 0);
}

TEST_F(CroImport, later_common_values_overwrite_those_that_they_give) {
  const CCROFileImport& importer =
      Parse(std::string(CommonValues) +
            "<TEMPLATEGRAPHICS><WIDTH>9</WIDTH></TEMPLATEGRAPHICS><TEMPLATEGRAPHIC/>");
  EXPECT_EQ(importer.m_Graphics.at(0)->width, 9);
  EXPECT_EQ(importer.m_Graphics.at(0)->height, 4);
}

TEST_F(CroImport, a_name_element_with_text_counts_before_the_attribute) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATEGRAPHIC name='A'><name>B</name></TEMPLATEGRAPHIC>"
      "<TEMPLATEGRAPHIC name='A'><name/></TEMPLATEGRAPHIC>"
      "<TEMPLATEGRAPHIC name='A'><NAME>C</NAME></TEMPLATEGRAPHIC>");
  EXPECT_EQ(importer.m_Graphics.at(0)->name, L"B");
  EXPECT_EQ(importer.m_Graphics.at(1)->name, L"A");
  EXPECT_EQ(importer.m_Graphics.at(2)->name, L"A");
}

TEST_F(CroImport, a_graphic_is_found_by_its_exact_name_and_the_first_counts) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATEGRAPHIC name='A'/><TEMPLATEGRAPHIC name='B'/><TEMPLATEGRAPHIC name='B'/>"
      "<TEMPLATEGRAPHIC/>");
  EXPECT_EQ(importer.GetGraphicDesc(L"A"), importer.m_Graphics[0].get());
  EXPECT_EQ(importer.GetGraphicDesc(L"B"), importer.m_Graphics[1].get());
  EXPECT_EQ(importer.GetGraphicDesc(L""), importer.m_Graphics[3].get());
  EXPECT_EQ(importer.GetGraphicDesc(L"b"), nullptr);
  EXPECT_EQ(importer.GetGraphicDesc(L"A "), nullptr);
}

// Lines that differ.

TEST_F(CroImport, an_override_has_its_line_its_font_and_its_height) {
  CCROFileImport& importer = Parse(
      "<TEMPLATETEXT line='2'><FONT>Arial</FONT><HEIGHT>0.3</HEIGHT></TEMPLATETEXT>"
      "<TEMPLATETEXT/>");
  const CROTextOverride* first = importer.GetFirstTextLineOverride();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->line, 2);
  EXPECT_EQ(first->font, L"Arial");
  EXPECT_EQ(first->height, 0.3F);
  const CROTextOverride* second = importer.GetNextTextLineOverride();
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->line, 0);
  EXPECT_EQ(second->height, 0);
  EXPECT_EQ(importer.GetNextTextLineOverride(), nullptr);
}

TEST_F(CroImport, a_metric_file_has_the_heights_of_its_template_divided_in_single_precision) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATETEXT><HEIGHT>0.9</HEIGHT></TEMPLATETEXT><METRIC yes='1'/>"
      "<TEMPLATETEXT><HEIGHT>0.7</HEIGHT></TEMPLATETEXT>"
      "<TEMPLATESIZE><WIDTH>10</WIDTH></TEMPLATESIZE><ROTATION>90</ROTATION>"
      "<VERTICALSPACING><MARGINS>5</MARGINS></VERTICALSPACING>"
      "<PLATES><PLATE><TEMPLATETEXT><HEIGHT>1.1</HEIGHT></TEMPLATETEXT></PLATE></PLATES>");
  // 0.9 and 2.54 in single precision are 0x3F666666 and 0x40228F5C. Their quotient, rounded once,
  // is 0x3EB56AD6; a division in double precision and by 2.54 as a double would end one lower.
  EXPECT_EQ(importer.m_TextOverrides.at(0)->height, 0x1.6ad5acp-2F);
  // 0.7 is 0x3F333333, and the quotient 0x3E8D1A34.
  EXPECT_EQ(importer.m_TextOverrides.at(1)->height, 0x1.1a3468p-2F);
  EXPECT_EQ(importer.m_PlateOverrides.at(0).text->height, 1.1F);
  EXPECT_EQ(importer.m_Width, 10);
  EXPECT_EQ(importer.m_Margins, 5);
}

TEST_F(CroImport, heights_of_a_file_that_is_not_metric_stay) {
  EXPECT_EQ(Parse("<TEMPLATETEXT><HEIGHT>1.1</HEIGHT></TEMPLATETEXT><METRIC yes='0'/>")
                .m_TextOverrides.at(0)
                ->height,
            1.1F);
}

// Plates.

TEST_F(CroImport, plates_have_their_texts_and_graphics_in_order) {
  CCROFileImport& importer = Parse(
      "<PLATES><PLATE><GRAPHIC>Logo</GRAPHIC><TEXT>A</TEXT><TEXT> B </TEXT>"
      "<GRAPHIC>Arrow</GRAPHIC></PLATE><PLATE/><PLATE><TEXT>C</TEXT></PLATE></PLATES>");
  EXPECT_EQ(TextsOf(importer.GetFirstPlate()), (Texts{L"A", L"B"}));
  EXPECT_EQ(TextsOf(importer.GetNextPlate()), Texts{});
  EXPECT_EQ(TextsOf(importer.GetNextPlate()), Texts{L"C"});
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(TextsOf(importer.GetFirstPlateGraphics()), (Texts{L"Logo", L"Arrow"}));
  EXPECT_EQ(TextsOf(importer.GetNextPlateGraphics()), Texts{});
  EXPECT_EQ(TextsOf(importer.GetNextPlateGraphics()), Texts{});
  EXPECT_EQ(importer.GetNextPlateGraphics(), nullptr);
}

TEST_F(CroImport, empty_texts_and_graphics_keep_their_place) {
  CCROFileImport& importer = Parse(
      "<PLATES><PLATE><TEXT>A</TEXT><TEXT/><TEXT>C</TEXT><GRAPHIC> </GRAPHIC></PLATE>"
      "</PLATES>");
  EXPECT_EQ(TextsOf(importer.GetFirstPlate()), (Texts{L"A", L"", L"C"}));
  EXPECT_EQ(TextsOf(importer.GetFirstPlateGraphics()), Texts{L""});
}

TEST_F(CroImport, a_plate_outside_the_list_of_plates_is_ignored) {
  CCROFileImport& importer = Parse("<PLATE><TEXT>A</TEXT></PLATE><TEXT>B</TEXT>");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.GetFirstPlate(), nullptr);
}

TEST_F(CroImport, overrides_of_plates_have_the_plates_number_from_0_over_all_lists) {
  const CCROFileImport& importer = Parse(
      "<PLATES><PLATE/><OTHER/><PLATE><TEMPLATETEXT line='1'/><TEMPLATETEXT line='3'/></PLATE>"
      "</PLATES><PLATES><PLATE><TEMPLATETEXT line='2'><FONT>F</FONT></TEMPLATETEXT></PLATE>"
      "</PLATES>");
  ASSERT_EQ(importer.m_PlateOverrides.size(), 3U);
  EXPECT_EQ(importer.m_PlateOverrides[0].plate, 1);
  EXPECT_EQ(importer.m_PlateOverrides[0].text->line, 1);
  EXPECT_EQ(importer.m_PlateOverrides[1].plate, 1);
  EXPECT_EQ(importer.m_PlateOverrides[1].text->line, 3);
  EXPECT_EQ(importer.m_PlateOverrides[2].plate, 2);
  EXPECT_EQ(importer.m_PlateOverrides[2].text->font, L"F");
  EXPECT_EQ(importer.m_PlateText.size(), 3U);
  EXPECT_EQ(importer.m_PlateGraphics.size(), 3U);
  EXPECT_TRUE(importer.m_TextOverrides.empty());
}

// Walks.

TEST_F(CroImport, the_current_graphics_are_those_returned_last) {
  CCROFileImport& importer = Parse(
      "<PLATES><PLATE><GRAPHIC>A</GRAPHIC></PLATE><PLATE><GRAPHIC>B</GRAPHIC></PLATE>"
      "</PLATES>");
  EXPECT_EQ(importer.GetCurrentPlateGraphics(), nullptr);  // no walk has begun
  const CStringArray* first = importer.GetFirstPlateGraphics();
  EXPECT_EQ(importer.GetCurrentPlateGraphics(), first);
  EXPECT_EQ(importer.GetCurrentPlateGraphics(), first);
  const CStringArray* second = importer.GetNextPlateGraphics();
  EXPECT_EQ(importer.GetCurrentPlateGraphics(), second);
  EXPECT_EQ(importer.GetNextPlateGraphics(), nullptr);
  EXPECT_EQ(importer.GetCurrentPlateGraphics(), nullptr);
}

TEST_F(CroImport, a_walk_that_was_not_begun_has_no_next) {
  CCROFileImport& importer =
      Parse("<TEMPLATETEXT/><TEMPLATETEXT/><PLATES><PLATE/><PLATE/></PLATES>");
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(importer.GetNextPlateGraphics(), nullptr);
  EXPECT_EQ(importer.GetNextTextLineOverride(), nullptr);
}

TEST_F(CroImport, walks_end_for_good_begin_anew_and_do_not_disturb_each_other) {
  CCROFileImport& importer =
      Parse("<PLATES><PLATE><TEXT>A</TEXT></PLATE><PLATE><TEXT>B</TEXT></PLATE></PLATES>");
  EXPECT_EQ(TextsOf(importer.GetFirstPlate()), Texts{L"A"});
  EXPECT_NE(importer.GetFirstPlateGraphics(), nullptr);
  EXPECT_EQ(TextsOf(importer.GetNextPlate()), Texts{L"B"});
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_EQ(importer.GetNextPlate(), nullptr);
  EXPECT_NE(importer.GetNextPlateGraphics(), nullptr);
  EXPECT_EQ(TextsOf(importer.GetFirstPlate()), Texts{L"A"});
}

TEST_F(CroImport, a_file_without_plates_has_no_first) {
  CCROFileImport& importer = Parse("<PLATES/>");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.GetFirstPlate(), nullptr);
  EXPECT_EQ(importer.GetFirstPlateGraphics(), nullptr);
  EXPECT_EQ(importer.GetFirstTextLineOverride(), nullptr);
}

// Values that no plate could have.

TEST_F(CroImport, negative_and_infinite_sizes_pass) {
  const CCROFileImport& importer = Parse(
      "<TEMPLATESIZE><WIDTH>-3</WIDTH><HEIGHT>1e999</HEIGHT></TEMPLATESIZE>"
      "<ROTATION>nan</ROTATION><METRIC yes='1'/>"
      "<TEMPLATETEXT line='99999999999'><HEIGHT>1e300</HEIGHT></TEMPLATETEXT>");
  EXPECT_EQ(importer.m_Width, -3);
  EXPECT_TRUE(std::isinf(importer.m_Height));
  EXPECT_EQ(importer.m_Rotation, 0);
  EXPECT_EQ(importer.m_TextOverrides.at(0)->line, std::numeric_limits<std::int32_t>::max());
  EXPECT_TRUE(std::isinf(importer.m_TextOverrides.at(0)->height));
}

}  // namespace
