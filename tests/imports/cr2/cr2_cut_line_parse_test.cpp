// Cut lines of templates of the first generation, and the file that their drawing goes to.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/imports/cr2/cr2_fixture.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/present_directory.h"

namespace {

using namespace rastrel::test;
using rastrel::imports::Cr2Document;
using rastrel::imports::ParseCr2File;

const std::string Placed = "<placement width='3' height='2'/>";
const std::string Drawing = "<svg xmlns='urn:drawing'><path d='M0 0'/></svg>";
/// The same as the layer writes it.
const std::string Written = "<svg xmlns=\"urn:drawing\"><path d=\"M0 0\"/></svg>";

class Cr2CutLineParse : public TemplateTest {
 protected:
  Cr2CutLineParse() { m_Host.m_Application.m_LoadBaseDir = m_ImportDirectory.Wide(); }

  static std::string Text(const std::string& cutLine) {
    return TemplateText(WithContent(cutLine), "engraving_template");
  }
  bool ParsePath(const std::wstring& path) {
    m_Document = {};
    return ParseCr2File(path.c_str(), m_Document);
  }
  bool Parse(const std::string& cutLine, std::string_view name = "template.cr2") {
    return ParsePath(Write(Text(cutLine), name));
  }
  static std::string WithDrawing(const std::string& drawing) {
    return "<cutline format='SVG'>" + drawing + Placed + "</cutline>";
  }
  /// Expects the drawing in the directory for files of an import, after the place beside the
  /// template failed.
  void ExpectInImportDirectory() {
    EXPECT_EQ(m_Document.cutLine.file, m_ImportDirectory.Wide() + L"\\cutline.svg");
    EXPECT_EQ(m_ImportDirectory.Read("cutline.svg"), Written);
    EXPECT_EQ(Calls().Text(), "LoadBaseDir()\n");
  }

  Cr2Document m_Document;
  ScratchDirectory m_ImportDirectory;
};

TEST_F(Cr2CutLineParse, a_cut_line_of_a_file_has_its_path_stroke_group_and_colors) {
  EXPECT_TRUE(
      Parse("<cutline stroke='0.01' group='True'><file> C:\\art\\line.svg </file>"
            "<placement x='1' width='3' height='2' origin='center'/>"
            "<color target='stroke' format='RGB'><rgb red='255'/></color></cutline>"));
  const CR2_CUTLINE& line = m_Document.cutLine;
  EXPECT_EQ(line.file, L"C:\\art\\line.svg");
  EXPECT_EQ(line.strokeWidth, 0.01);
  EXPECT_TRUE(line.group);
  EXPECT_EQ(Placement(line.placement), "5: 1 0, 3 x 2");
  EXPECT_EQ(Colors(line.colors), "stroke RGB(255 0 0), fill none");
  EXPECT_EQ(line.present, 1.0);
  EXPECT_EQ(m_Document.plates.size(), 1U);
}

TEST_F(Cr2CutLineParse, a_group_is_true_in_any_case_and_nothing_else_is) {
  const auto group = [&](const std::string& value) {
    EXPECT_TRUE(Parse("<cutline group='" + value + "'><file>a</file>" + Placed + "</cutline>"));
    return m_Document.cutLine.group;
  };
  EXPECT_TRUE(group("true"));
  EXPECT_TRUE(group("TRUE"));
  EXPECT_FALSE(group("true "));
  EXPECT_FALSE(group("1"));
  EXPECT_FALSE(group(""));
}

TEST_F(Cr2CutLineParse, a_template_without_a_cut_line_has_none_present) {
  EXPECT_TRUE(ParsePath(Write(TemplateText({}, "engraving_template"), "template.cr2")));
  EXPECT_EQ(m_Document.cutLine.present, 0.0);
}

TEST_F(Cr2CutLineParse, the_hairline_of_a_cut_line_is_exact) {
  EXPECT_TRUE(Parse("<cutline stroke='hairline'><file>a</file>" + Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.strokeWidth, 4.450147717014403e-308);
}

TEST_F(Cr2CutLineParse, a_format_of_another_value_takes_the_child_file) {
  for (const char* format : {"", "format=''", "format='svg'", "format='SVG '", "format='DXF'"}) {
    EXPECT_TRUE(Parse(std::string("<cutline ") + format + "><file>a.svg</file><svg/>" + Placed +
                      "</cutline>"))
        << format;
    EXPECT_EQ(m_Document.cutLine.file, L"a.svg");
  }
}

TEST_F(Cr2CutLineParse, a_child_file_without_text_is_an_empty_path) {
  EXPECT_TRUE(Parse("<cutline><file/>" + Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.file, L"");
  EXPECT_EQ(m_Document.cutLine.present, 1.0);
}

TEST_F(Cr2CutLineParse, the_format_FILE_fails_the_file_whose_table_is_read) {
  EXPECT_FALSE(Parse("<cutline format='FILE' file='a.svg'><file>a.svg</file><FILE/>" + Placed +
                     "</cutline>"));
  EXPECT_EQ(Placement(m_Document.tableSize.placement), "1: 0 0, 24 x 12");
  EXPECT_EQ(m_Document.cutLine.present, 0.0);
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(Cr2CutLineParse, a_cut_line_that_lacks_a_part_ends_the_file) {
  EXPECT_FALSE(Parse("<cutline>" + Placed + "</cutline>"));
  EXPECT_FALSE(Parse("<cutline><file>a</file></cutline>"));
  EXPECT_FALSE(Parse("<cutline><file>a</file><placement width='3'/></cutline>"));
  EXPECT_FALSE(Parse("<cutline format='SVG'><SVG/>" + Placed + "</cutline>"));
  EXPECT_EQ(m_Document.cutLine.present, 0.0);
  EXPECT_EQ(m_Document.plateTemplate.placement.width, 3.0);
  EXPECT_TRUE(m_Document.plates.empty());
}

TEST_F(Cr2CutLineParse, a_drawing_is_written_beside_its_template) {
  EXPECT_TRUE(Parse(WithDrawing(Drawing), "shop/template.cr2"));
  EXPECT_EQ(m_Document.cutLine.file, m_Scratch.Wide() + L"/shop/cutline.svg");
  EXPECT_EQ(m_Scratch.Read("shop/cutline.svg"), Written);
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(Cr2CutLineParse, a_drawing_takes_the_place_of_the_one_before) {
  m_Scratch.Write("cutline.svg", "an earlier and much longer drawing" + std::string(500, '.'));
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  EXPECT_EQ(m_Scratch.Read("cutline.svg"), Written);
}

TEST_F(Cr2CutLineParse, a_drawing_with_a_prefix_is_found_and_declares_it) {
  EXPECT_TRUE(Parse("<cutline format='SVG' xmlns:svg='urn:drawing'><svg:svg><svg:path/></svg:svg>" +
                    Placed + "</cutline>"));
  EXPECT_EQ(m_Scratch.Read("cutline.svg"),
            "<svg:svg xmlns:svg=\"urn:drawing\"><svg:path/></svg:svg>");
}

TEST_F(Cr2CutLineParse, a_relative_path_has_its_drawing_in_the_present_directory) {
  const PresentDirectory here(m_Scratch.Path());
  m_Scratch.Write("a.cr2", Text(WithDrawing(Drawing)));
  EXPECT_TRUE(ParsePath(L"a.cr2"));
  EXPECT_EQ(m_Document.cutLine.file, L"cutline.svg");
  EXPECT_EQ(m_Scratch.Read("cutline.svg"), Written);
}

TEST_F(Cr2CutLineParse, the_drive_of_a_template_is_left_out_of_the_path) {
  // The drive is a directory of the data root, and the path without it one of the machine.
  m_Library.Directory().Write("drive_c" + m_Scratch.Path() + "/a.cr2", Text(WithDrawing(Drawing)));
  EXPECT_TRUE(ParsePath(L"C:" + m_Scratch.Wide("a.cr2")));
  EXPECT_EQ(m_Document.cutLine.file, m_Scratch.Wide("cutline.svg"));
  EXPECT_EQ(m_Scratch.Read("cutline.svg"), Written);
}

TEST_F(Cr2CutLineParse, a_directory_that_can_t_be_written_sends_the_drawing_to_that_of_imports) {
  const std::wstring path = Write(Text(WithDrawing(Drawing)), "shop/template.cr2");
  ASSERT_EQ(::chmod(m_Scratch.Path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(m_Scratch.Path("shop").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(m_ImportDirectory.Path().c_str(), 0777), 0);
  {
    const OrdinaryUser user;
    EXPECT_TRUE(ParsePath(path));
  }
  ExpectInImportDirectory();
  EXPECT_FALSE(m_Scratch.Has("shop/cutline.svg"));
  ASSERT_EQ(::chmod(m_Scratch.Path("shop").c_str(), 0755), 0);
}

TEST_F(Cr2CutLineParse, a_directory_of_the_drawing_s_name_sends_it_to_that_of_imports) {
  std::filesystem::create_directory(m_Scratch.Path("cutline.svg"));
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  ExpectInImportDirectory();
}

TEST_F(Cr2CutLineParse, a_link_of_the_drawing_s_name_is_not_followed) {
  m_Scratch.Write("letter.txt", "Dear customer");
  std::filesystem::create_symlink("letter.txt", m_Scratch.Path("cutline.svg"));
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  ExpectInImportDirectory();
  EXPECT_EQ(m_Scratch.Read("letter.txt"), "Dear customer");
}

TEST_F(Cr2CutLineParse, a_pipe_of_the_drawing_s_name_is_not_waited_for) {
  ASSERT_EQ(::mkfifo(m_Scratch.Path("cutline.svg").c_str(), 0600), 0);
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  ExpectInImportDirectory();
}

TEST_F(Cr2CutLineParse, a_drawing_that_can_be_written_nowhere_is_logged) {
  std::filesystem::create_directory(m_Scratch.Path("cutline.svg"));
  m_Host.m_Application.m_LoadBaseDir = m_Scratch.Wide("missing");
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  EXPECT_EQ(m_Document.cutLine.file, m_Scratch.Wide("missing") + L"\\cutline.svg");
  EXPECT_NE(Log().find("[Import] the cut line can't be written to "), std::string::npos);
}

TEST_F(Cr2CutLineParse, without_an_application_the_temporary_directory_takes_the_drawing) {
  std::filesystem::create_directory(m_Scratch.Path("cutline.svg"));
  m_Host.m_HasDocument = false;
  m_Host.m_BaseDirectories[PATH_TEMP] = m_ImportDirectory.Wide();
  EXPECT_TRUE(Parse(WithDrawing(Drawing)));
  EXPECT_EQ(m_Document.cutLine.file, m_ImportDirectory.Wide() + L"\\cutline.svg");
  EXPECT_EQ(m_ImportDirectory.Read("cutline.svg"), Written);
}

}  // namespace
