#include <gtest/gtest.h>

#include <map>
#include <string>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/document_host.h"
#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/platform/host/application.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

// Crown Trophy templates in the embedded host: the operations that only they use, together.
namespace rastrel::document {
namespace {

// A table that holds one plate, so that each of three is on a page of its own. Inches.
std::string Template(const std::string& font, const std::string& head = "") {
  std::string plates;
  for (const char* name : {"One", "Two", "Three"}) {
    plates +=
        "<plate><text_frame><placement x='0.5' y='0.25' width='2' height='0.5' "
        "origin='top left'/><font " +
        font + " size='0.25' line_height='1'><line><span " + font + " size='0.25'>" + name +
        "</span></line></font></text_frame></plate>";
  }
  return "<engraving_template>" + head +
         "<table_size width='3.2' height='1.2' origin='top left'/>"
         "<template spacing='0'><placement width='3' height='1' origin='top left'/>"
         "<color target='stroke' format='CMYK'><cmyk cyan='0' magenta='50' yellow='50' "
         "black='0'/></color></template><plates>" +
         plates + "</plates></engraving_template>";
}

class CrownTrophy : public testing::Test {
 protected:
  CrownTrophy() { host::SetHost(&m_Host); }
  ~CrownTrophy() override { host::SetHost(nullptr); }

  void ImportCr2(const std::string& content) {
    m_Place.Write("badge.cr2", content);
    const CCR2FileImport import(m_Place.Wide("badge.cr2").c_str(), nullptr);
  }
  void ImportZml(const std::string& content) {
    m_Place.Write("badge.zml", content);
    const CCR2FileImportVers2 import(m_Place.Wide("badge.zml").c_str(), nullptr);
  }

  // The texts of the document by their letters.
  [[nodiscard]] std::map<std::wstring, const Object*> Texts() {
    std::map<std::wstring, const Object*> texts;
    for (const ObjectHandle member : m_Host.GetDocument().Members(host::DocumentRoot)) {
      const Object* object = m_Host.GetDocument().Find(member);
      const auto* text = std::get_if<TextShape>(&object->shape);
      if (text) texts[text->lines.at(0).runs.at(0).text] = object;
    }
    return texts;
  }

  test::ScratchDirectory m_Place;
  test::EnvironmentGuard m_Home{"RASTREL_HOME", m_Place.Path("root")};
  DocumentHost m_Host;
};

TEST_F(CrownTrophy, texts_are_on_the_page_of_their_plate_and_at_their_place) {
  ImportCr2(Template("face='DejaVu Sans'"));
  EXPECT_EQ(m_Host.GetNotices().Losses(), std::vector<std::wstring>());
  EXPECT_EQ(m_Host.GetNotices().Texts(), std::vector<std::wstring>());
  EXPECT_EQ(m_Host.GetDocument().HighestPage(), 3);
  const auto texts = Texts();
  ASSERT_EQ(texts.size(), 3U);
  int page = 0;
  for (const wchar_t* name : {L"One", L"Two", L"Three"}) {
    const Object& object = *texts.at(name);
    ++page;
    EXPECT_EQ(object.attributes.pages, (VK_PAGE_RANGE{page, page})) << page;
    // Code 1: left + x, top - y - height, of a pane whose top is the blank's, 1.2 inches.
    const CWorldRect& frame = std::get<TextShape>(object.shape).frame;
    EXPECT_NEAR(frame.left, 0.5 * 2.54, 1e-6);
    EXPECT_NEAR(frame.right, 2.5 * 2.54, 1e-6);
    EXPECT_NEAR(frame.top, 0.95 * 2.54, 1e-6);
    EXPECT_NEAR(frame.bottom, 0.45 * 2.54, 1e-6);
  }
  EXPECT_EQ(m_Host.StillOpen(), DocumentHost::OpenWork());
}

TEST_F(CrownTrophy, a_plate_has_its_color_in_percents_of_ink) {
  ImportCr2(Template("face='DejaVu Sans'"));
  const ObjectHandle plate = m_Host.GetDocument().SharedPlateObjects()->front();
  double red = 0;
  double green = 0;
  double blue = 0;
  m_Host.GetDocument().Find(plate)->attributes.layer.GetColorChannels(&red, &green, &blue, nullptr);
  EXPECT_EQ(red, 255);
  EXPECT_EQ(green, 127.5);
  EXPECT_EQ(blue, 127.5);
}

TEST_F(CrownTrophy, a_missing_font_and_none_at_all_are_replaced_with_a_note_each) {
  ImportCr2(Template("face='No Such Font'"));
  EXPECT_EQ(m_Host.GetNotices().Texts(),
            std::vector<std::wstring>{
                L"the font \"No Such Font\" can't be had; DejaVu Sans stands in for it"});
  EXPECT_EQ(Texts().size(), 3U);
  DocumentHost other;
  host::SetHost(&other);
  ImportCr2(Template(""));
  EXPECT_EQ(other.GetNotices().Texts(),
            std::vector<std::wstring>{L"a text names no font; it is set in DejaVu Sans"});
  host::SetHost(&m_Host);
}

TEST_F(CrownTrophy, a_font_that_was_chosen_is_used) {
  ASSERT_TRUE(m_Host.ReplaceFont(L"No Such Font", L"DejaVu Serif"));
  ImportCr2(Template("face='No Such Font'"));
  EXPECT_EQ(std::get<TextShape>(Texts().at(L"One")->shape).lines[0].runs[0].replacement,
            L"DejaVu Serif");
}

TEST_F(CrownTrophy, missing_fonts_that_cancel_end_the_import_and_the_next_one_works) {
  m_Host.CancelMissingFonts(true);
  ImportCr2(Template("face='No Such Font'"));
  EXPECT_EQ(
      m_Host.GetNotices().Losses(),
      (std::vector<std::wstring>{L"the font \"No Such Font\" can't be had", L"Import cancelled!"}));
  EXPECT_TRUE(Texts().empty());
  EXPECT_TRUE(m_Host.StillOpen().paragraph) << "a cancelled import closes nothing";
  ImportCr2(Template("face='DejaVu Sans'"));
  EXPECT_EQ(Texts().size(), 3U);
  EXPECT_EQ(m_Host.StillOpen(), DocumentHost::OpenWork());
}

TEST_F(CrownTrophy, the_second_generation_replaces_the_document_and_keeps_its_rotation) {
  ImportCr2(Template("face='DejaVu Sans'"));
  ImportZml(Template("face='DejaVu Sans'", "<Rotation>90</Rotation>"));
  EXPECT_EQ(m_Host.GetDocument().Rotation(), 90);
  EXPECT_EQ(Texts().size(), 3U) << "three of the first are gone";
  EXPECT_EQ(m_Host.GetDocument().HighestPage(), 3);
  int page = 0;
  for (const wchar_t* name : {L"One", L"Two", L"Three"}) {
    ++page;
    EXPECT_EQ(Texts().at(name)->attributes.pages, (VK_PAGE_RANGE{page, page})) << page;
  }
  EXPECT_EQ(m_Host.StillOpen(), DocumentHost::OpenWork());
}

TEST_F(CrownTrophy, a_template_selects_its_plotter_and_names_its_file) {
  m_Place.Write("root/settings.ini", "[plottersetup]\nNumberDevices = 2\n");
  m_Place.Write("root/plotters/0.ini", "[setup]\nplottername = Cutter\n");
  m_Place.Write("root/plotters/1.ini", "[setup]\nplottername = 90\n");
  ImportZml(Template("face='DejaVu Sans'", "<Rotation>90</Rotation><Driver>Any</Driver>"));
  EXPECT_NE(m_Place.Read("root/settings.ini").find("DeviceUsed = 1"), std::string::npos);
  EXPECT_EQ(m_Place.Read("root/plotters/1.ini"),
            "[setup]\nplottername = 90\n\n[Port Setup]\nFile Name = badge\n");
  EXPECT_EQ(m_Place.Read("root/plotters/0.ini"), "[setup]\nplottername = Cutter\n");
}

}  // namespace
}  // namespace rastrel::document
