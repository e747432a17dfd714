// From an LLX file to its records.

#include "rastrel/imports/llx_file_import.h"

#include <cmath>

#include "tests/imports/template_fixture.h"

namespace {

class LlxImport : public rastrel::test::TemplateTest {
 protected:
  /// A parsed document of these children of its plate.
  CLLXFileImport& Parse(std::string_view children, std::string_view name = "template.llx") {
    return Read("<?xml version='1.0'?><LLX><ENGRAVINGTEMPLATE><PLATE>" + std::string(children) +
                    "</PLATE></ENGRAVINGTEMPLATE></LLX>",
                name);
  }
  CLLXFileImport& Read(std::string_view document, std::string_view name = "template.llx") {
    m_Importer = std::make_unique<CLLXFileImport>(Write(document, name).c_str(), nullptr);
    return *m_Importer;
  }
  void ExpectRefused(std::string_view document, std::string_view name = "template.llx") {
    const CLLXFileImport& importer = Read(document, name);
    EXPECT_FALSE(importer.m_bParsed) << document;
    EXPECT_EQ(importer.m_Width, 0);
    EXPECT_TRUE(importer.m_Graphics.empty() && importer.m_ArcTexts.empty());
  }
  std::int32_t PlateOrigin(const std::string& text) {
    return Parse("<ORIGIN>" + text + "</ORIGIN>").m_Origin;
  }
  std::int32_t GraphicOrigin(const std::string& text) {
    return Parse("<GRAPHIC><ORIGIN>" + text + "</ORIGIN></GRAPHIC>").m_Graphics.at(0)->origin;
  }
  std::int32_t Justify(const std::string& elements) {
    return Parse("<ARCTEXT>" + elements + "</ARCTEXT>").m_ArcTexts.at(0)->justify;
  }

  std::unique_ptr<CLLXFileImport> m_Importer;
};

TEST_F(LlxImport, a_template_has_the_values_of_its_elements) {
  const CLLXFileImport& importer = Parse(
      "<WIDTH>4.25</WIDTH><HEIGHT>3</HEIGHT><ORIGIN>top left</ORIGIN>"
      "<GRAPHIC><FILE> art/logo.svg </FILE><ORIGIN>mid right</ORIGIN><X>0.1</X><Y>-0.2</Y>"
      "<WIDTH>1.5</WIDTH><HEIGHT>0.5</HEIGHT><ROTATION>45</ROTATION></GRAPHIC>"
      "<ARCTEXT><CENTERX>2</CENTERX><CENTERY>1.5</CENTERY><RADIUS>1.25</RADIUS>"
      "<ROTATION>90</ROTATION><HEIGHT>0.3</HEIGHT><FONT>Arial</FONT><JUSTIFY>right</JUSTIFY>"
      "<TEXT>Round it</TEXT></ARCTEXT>");
  EXPECT_TRUE(importer.m_bParsed);
  EXPECT_EQ(importer.m_Width, 4.25);
  EXPECT_EQ(importer.m_Height, 3);
  EXPECT_EQ(importer.m_Origin, 1);
  EXPECT_EQ(importer.m_Reserved1 + importer.m_Reserved2, L"");
  ASSERT_EQ(importer.m_Graphics.size(), 1U);
  const LLXGraphic& graphic = *importer.m_Graphics[0];
  EXPECT_EQ(graphic.file, L"art/logo.svg");
  EXPECT_EQ(graphic.origin, 6);
  EXPECT_EQ(graphic.x, 0.1F);
  EXPECT_EQ(graphic.y, -0.2F);
  EXPECT_EQ(graphic.width, 1.5F);
  EXPECT_EQ(graphic.height, 0.5F);
  EXPECT_EQ(graphic.rotation, 45);
  EXPECT_EQ(graphic.reserved, L"");
  ASSERT_EQ(importer.m_ArcTexts.size(), 1U);
  const LLXArcText& text = *importer.m_ArcTexts[0];
  EXPECT_EQ(text.centerX, 2);
  EXPECT_EQ(text.centerY, 1.5F);
  EXPECT_EQ(text.radius, 1.25F);
  EXPECT_EQ(text.rotation, 90);
  EXPECT_EQ(text.height, 0.3F);
  EXPECT_EQ(text.justify, LLXJUSTIFY_RIGHT);
  EXPECT_EQ(text.font, L"Arial");
  EXPECT_EQ(text.text, L"Round it");
}

TEST_F(LlxImport, values_that_the_file_does_not_give_are_zero_or_empty) {
  const CLLXFileImport& importer = Parse("<GRAPHIC/><ARCTEXT/>");
  EXPECT_EQ(importer.m_Width + importer.m_Height, 0);
  EXPECT_EQ(importer.m_Origin, 0);
  const LLXGraphic& graphic = *importer.m_Graphics.at(0);
  EXPECT_EQ(graphic.origin, 0);
  EXPECT_EQ(graphic.x + graphic.y + graphic.width + graphic.height + graphic.rotation, 0);
  EXPECT_EQ(graphic.file, L"");
  const LLXArcText& text = *importer.m_ArcTexts.at(0);
  EXPECT_EQ(text.centerX + text.centerY + text.radius + text.rotation + text.height, 0);
  EXPECT_EQ(text.justify, LLXJUSTIFY_LEFT);
  EXPECT_EQ(text.font + text.text, L"");
}

TEST_F(LlxImport, the_extension_is_llx_in_any_case) {
  EXPECT_TRUE(Parse("", "a.llx").m_bParsed);
  EXPECT_TRUE(Parse("", "a.LLX").m_bParsed);
  EXPECT_TRUE(Parse("", "a.llx ").m_bParsed);
  EXPECT_FALSE(Parse("", "a.xml").m_bParsed);
  EXPECT_FALSE(Parse("", "a.cro").m_bParsed);
  EXPECT_FALSE(Parse("", "llx").m_bParsed);
}

TEST_F(LlxImport, paths_that_name_nothing_are_refused) {
  EXPECT_FALSE(CLLXFileImport(nullptr, nullptr).m_bParsed);
  EXPECT_FALSE(CLLXFileImport(L"", nullptr).m_bParsed);
  EXPECT_FALSE(CLLXFileImport(m_Scratch.Wide("absent.llx").c_str(), nullptr).m_bParsed);
}

TEST_F(LlxImport, the_template_is_a_child_of_the_root_whatever_the_roots_name) {
  EXPECT_TRUE(Read("<A><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE></A>").m_bParsed);
  EXPECT_TRUE(Read("<ENGRAVINGTEMPLATE><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE>"
                   "</ENGRAVINGTEMPLATE>")
                  .m_bParsed);
  ExpectRefused("<ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH></PLATE></ENGRAVINGTEMPLATE>");
}

TEST_F(LlxImport, without_a_template_or_a_plate_a_file_is_refused) {
  ExpectRefused("<A/>");
  ExpectRefused("<A><ENGRAVINGTEMPLATE/></A>");
  ExpectRefused("<A><PLATE><WIDTH>1</WIDTH></PLATE></A>");
  ExpectRefused("<A><ENGRAVINGTEMPLATE><Plate/></ENGRAVINGTEMPLATE></A>");
}

TEST_F(LlxImport, only_the_first_template_is_looked_into) {
  ExpectRefused("<A><ENGRAVINGTEMPLATE/><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE></A>");
}

TEST_F(LlxImport, a_second_plate_is_ignored) {
  const CLLXFileImport& importer = Read(
      "<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>1</WIDTH></PLATE><PLATE><WIDTH>2</WIDTH>"
      "<HEIGHT>3</HEIGHT><GRAPHIC/></PLATE></ENGRAVINGTEMPLATE></A>");
  EXPECT_EQ(importer.m_Width, 1);
  EXPECT_EQ(importer.m_Height, 0);
  EXPECT_TRUE(importer.m_Graphics.empty());
}

TEST_F(LlxImport, a_refused_file_is_not_repaired) {
  ExpectRefused("<? xml version='1.0'?><A><ENGRAVINGTEMPLATE><PLATE/></ENGRAVINGTEMPLATE></A>");
  ExpectRefused("<A><ENGRAVINGTEMPLATE><PLATE>\xE9</PLATE></ENGRAVINGTEMPLATE></A>");
}

TEST_F(LlxImport, each_origin_has_its_code) {
  int code = 1;
  for (const char* row : {"top", "mid", "bottom"}) {
    for (const char* column : {"left", "center", "right"}) {
      EXPECT_EQ(PlateOrigin(std::string(row) + " " + column), code);
      EXPECT_EQ(GraphicOrigin(std::string(row) + " " + column), code);
      ++code;
    }
  }
  EXPECT_EQ(PlateOrigin("center"), 5);
  EXPECT_EQ(GraphicOrigin("center"), 5);
}

TEST_F(LlxImport, an_unknown_origin_is_7_for_the_plate_and_5_for_a_graphic) {
  for (const char* text : {"middle", "Top Left", "1", "CENTER"}) {
    EXPECT_EQ(PlateOrigin(text), 7) << text;
    EXPECT_EQ(GraphicOrigin(text), 5) << text;
  }
}

TEST_F(LlxImport, an_empty_origin_leaves_0) {
  EXPECT_EQ(PlateOrigin(" "), 0);
  EXPECT_EQ(GraphicOrigin(""), 0);
  EXPECT_EQ(Parse("<GRAPHIC/>").m_Graphics.at(0)->origin, 0);
  EXPECT_EQ(Parse("<ORIGIN>top left</ORIGIN><ORIGIN/>").m_Origin, 1);
}

TEST_F(LlxImport, a_justification_is_compared_exactly_and_unknown_ones_are_center) {
  EXPECT_EQ(Justify("<JUSTIFY>left</JUSTIFY>"), LLXJUSTIFY_LEFT);
  EXPECT_EQ(Justify("<JUSTIFY>right</JUSTIFY>"), LLXJUSTIFY_RIGHT);
  EXPECT_EQ(Justify("<JUSTIFY>center</JUSTIFY>"), LLXJUSTIFY_CENTER);
  EXPECT_EQ(Justify("<JUSTIFY>Left</JUSTIFY>"), LLXJUSTIFY_CENTER);
  EXPECT_EQ(Justify("<JUSTIFY>1</JUSTIFY>"), LLXJUSTIFY_CENTER);
}

TEST_F(LlxImport, an_absent_or_empty_justification_stays_as_it_is) {
  EXPECT_EQ(Justify(""), LLXJUSTIFY_LEFT);
  EXPECT_EQ(Justify("<JUSTIFY/>"), LLXJUSTIFY_LEFT);
  EXPECT_EQ(Justify("<JUSTIFY>right</JUSTIFY><JUSTIFY/>"), LLXJUSTIFY_RIGHT);
}

TEST_F(LlxImport, an_element_that_comes_twice_overwrites_and_an_empty_one_does_not) {
  const CLLXFileImport& importer =
      Parse("<WIDTH>1</WIDTH><WIDTH>2</WIDTH><WIDTH/><ARCTEXT><TEXT>A</TEXT><TEXT/></ARCTEXT>");
  EXPECT_EQ(importer.m_Width, 2);
  EXPECT_EQ(importer.m_ArcTexts.at(0)->text, L"A");
}

TEST_F(LlxImport, graphics_and_texts_keep_the_files_order) {
  const CLLXFileImport& importer = Parse(
      "<GRAPHIC><FILE>1</FILE></GRAPHIC><ARCTEXT><TEXT>a</TEXT></ARCTEXT><OTHER/>"
      "<GRAPHIC><FILE>2</FILE></GRAPHIC><ARCTEXT><TEXT>b</TEXT></ARCTEXT>");
  EXPECT_EQ(importer.m_Graphics.at(0)->file, L"1");
  EXPECT_EQ(importer.m_Graphics.at(1)->file, L"2");
  EXPECT_EQ(importer.m_ArcTexts.at(0)->text, L"a");
  EXPECT_EQ(importer.m_ArcTexts.at(1)->text, L"b");
}

TEST_F(LlxImport, sizes_that_no_plate_could_have_pass) {
  const CLLXFileImport& importer =
      Parse("<WIDTH>-1</WIDTH><HEIGHT>1e999</HEIGHT><GRAPHIC><X>1e39</X><Y>nan</Y></GRAPHIC>");
  EXPECT_EQ(importer.m_Width, -1);
  EXPECT_TRUE(std::isinf(importer.m_Height));
  EXPECT_TRUE(std::isinf(importer.m_Graphics.at(0)->x));
  EXPECT_EQ(importer.m_Graphics.at(0)->y, 0);
}

TEST_F(LlxImport, a_copy_has_records_of_its_own) {
  CLLXFileImport& original = Parse(
      "<WIDTH>1</WIDTH><GRAPHIC><FILE>a</FILE></GRAPHIC>"
      "<ARCTEXT><TEXT>b</TEXT></ARCTEXT>");
  CLLXFileImport copy(original);
  original.m_Graphics[0]->file = L"changed";
  m_Importer.reset();
  EXPECT_TRUE(copy.m_bParsed);
  EXPECT_EQ(copy.m_Width, 1);
  EXPECT_EQ(copy.m_Graphics.at(0)->file, L"a");
  EXPECT_EQ(copy.m_ArcTexts.at(0)->text, L"b");
}

TEST_F(LlxImport, an_assignment_replaces_all_and_one_to_itself_nothing) {
  CLLXFileImport target(nullptr, nullptr);
  const CLLXFileImport& source = Parse("<HEIGHT>2</HEIGHT><GRAPHIC/><GRAPHIC/><ARCTEXT/>");
  target = source;
  EXPECT_EQ(target.m_Height, 2);
  EXPECT_EQ(target.m_Graphics.size(), 2U);
  const CLLXFileImport& same = target;
  target = same;
  EXPECT_EQ(target.m_Graphics.size(), 2U);
  target = CLLXFileImport(nullptr, nullptr);
  EXPECT_FALSE(target.m_bParsed);
  EXPECT_TRUE(target.m_Graphics.empty() && target.m_ArcTexts.empty());
}

TEST_F(LlxImport, the_host_is_asked_nothing_and_nothing_is_logged_or_written) {
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(std::tmpfile(), std::fclose);
  ASSERT_NE(stream, nullptr);
  const std::wstring path = Write("<A><ENGRAVINGTEMPLATE/></A>", "a.llx");
  EXPECT_FALSE(CLLXFileImport(path.c_str(), stream.get()).m_bParsed);
  Parse("<UNKNOWN/>");
  EXPECT_EQ(std::ftell(stream.get()), 0);
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(Log(), "");
}

}  // namespace
