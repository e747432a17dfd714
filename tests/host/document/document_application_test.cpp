#include "host/document/document_application.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/document/document_store.h"
#include "host/document/notices.h"

namespace rastrel::document {
namespace {

class DocumentApplicationTest : public testing::Test {
 protected:
  Document m_Document;
  DocumentStore m_Store{m_Document};
  Notices m_Notices;
  DocumentApplication m_Application{m_Document, m_Store, m_Notices};
};

TEST_F(DocumentApplicationTest, a_blank_takes_only_a_size_that_can_be) {
  double width = 0;
  double height = 0;
  m_Application.SetSignBlankSize(30.5, 20, 1);
  for (const double none : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    m_Application.SetSignBlankSize(none, 10, 1);
    m_Application.SetSignBlankSize(10, none, 1);
  }
  m_Application.GetSignBlankSize(width, height);
  EXPECT_EQ(width, 30.5);
  EXPECT_EQ(height, 20);
  ASSERT_FALSE(m_Notices.Texts().empty());
  EXPECT_EQ(m_Notices.Texts().front(), L"a blank of 0 by 10 cm is none; it stays 30.5 by 20 cm");
}

// The origin is counted in rows from the top; the grid in text units from the lower left corner.
TEST_F(DocumentApplicationTest, the_grid_begins_in_the_corner_that_is_counted_from) {
  m_Application.SetSignBlankSize(25.4, 50.8, 1);  // 10 by 20 inches
  const struct {
    int origin;
    double x, y;
  } corners[] = {{1, 0, 20000}, {2, 5000, 20000}, {3, 10000, 20000},
                 {4, 0, 10000}, {5, 5000, 10000}, {6, 10000, 10000},
                 {7, 0, 0},     {8, 5000, 0},     {9, 10000, 0}};
  for (const auto& corner : corners) {
    m_Application.SetSignBlankOriginPos(corner.origin);
    m_Application.SetSignBlankOriginPos(0);
    m_Application.SetSignBlankOriginPos(10);
    EXPECT_EQ(m_Application.GetSignBlankOriginPos(), corner.origin);
    double x = 1;
    double y = 1;
    double third = 1;
    m_Application.GetGridOriginXY(x, y, third);
    EXPECT_NEAR(x, corner.x, 1e-6) << corner.origin;
    EXPECT_NEAR(y, corner.y, 1e-6) << corner.origin;
    EXPECT_EQ(third, 0);
  }
}

TEST_F(DocumentApplicationTest, a_palette_color_is_found_by_number_and_by_value) {
  const int count = static_cast<int>(m_Document.Colors().Entries().size());
  CVKColor color(7, COLORSPACE_RGB, 7, 7);
  EXPECT_EQ(m_Application.FindPaletteColor(count, color), 0);
  EXPECT_EQ(m_Application.FindPaletteColor(-2, color), 0);
  EXPECT_EQ(color, CVKColor(7, COLORSPACE_RGB, 7, 7));
  EXPECT_EQ(m_Application.FindPaletteColor(-1, color), 1);
  EXPECT_EQ(m_Application.IsInvisibleColor(color), 1);

  const CVKFullColor mauve = NamedRgb(L"Mauve", 224, 176, 255);
  EXPECT_EQ(m_Application.IsColorInPalette(mauve), 0);
  EXPECT_EQ(m_Application.AddColorToPalette(mauve), 1);
  EXPECT_EQ(m_Application.AddColorToPalette(NamedRgb(L"Mauve", 1, 2, 3)), 0)
      << "a name stands once";
  EXPECT_EQ(m_Application.IsColorInPalette(mauve), 1);
  EXPECT_EQ(m_Application.FindPaletteColor(count, color), 1);
  EXPECT_EQ(color, static_cast<const CVKColor&>(mauve));
  EXPECT_EQ(m_Application.IsInvisibleColor(color), 0);
}

TEST_F(DocumentApplicationTest, the_invisible_color_is_in_every_palette) {
  const std::size_t count = m_Document.Colors().Entries().size();
  const CVKColor invisible(-1, COLORSPACE_RGB, 0, 0);
  EXPECT_EQ(m_Application.IsColorInPalette(invisible), 1);
  EXPECT_EQ(m_Application.IsInvisibleColor(invisible), 1);
  EXPECT_EQ(m_Application.IsInvisibleColor(CVKColor(0, COLORSPACE_RGB, 0, 0)), 0);
  EXPECT_EQ(m_Document.Colors().Entries().size(), count);
  CVKColor first;
  EXPECT_EQ(m_Application.FindPaletteColor(0, first), 1);
  EXPECT_EQ(first, static_cast<const CVKColor&>(m_Document.Colors().Entries().front().color));
}

TEST_F(DocumentApplicationTest, colors_without_a_name_are_added_each_time) {
  const std::size_t count = m_Document.Colors().Entries().size();
  CVKColor ink;
  ink.SetColor(0, 50, 50, 0, COLORSPACE_CMYK);
  EXPECT_EQ(m_Application.IsColorInPalette(ink), 0);
  EXPECT_EQ(m_Application.AddColorToPalette(CVKFullColor(ink)), 1);
  EXPECT_EQ(m_Application.AddColorToPalette(CVKFullColor(ink)), 1);
  EXPECT_EQ(m_Application.IsColorInPalette(ink), 1);
  EXPECT_EQ(m_Document.Colors().Entries().size(), count + 2);
}

TEST_F(DocumentApplicationTest, the_rotation_of_an_import_outlives_the_new_document_that_it_makes) {
  m_Application.SetImportRotation(90);
  m_Application.UIGetActiveView()->OnNew();
  EXPECT_EQ(m_Document.Rotation(), 90);
  for (const double none : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    m_Application.SetImportRotation(none);
    EXPECT_EQ(m_Document.Rotation(), 0);
  }
}

TEST_F(DocumentApplicationTest, without_a_program_s_files_there_are_no_plotters) {
  EXPECT_EQ(m_Application.GGetPathDeviceInI(0), L"");
  EXPECT_FALSE(m_Application.GetStringDevice(L"path", L"setup", L"plottername"));
  EXPECT_EQ(m_Application.WriteStringDevice(L"Port Setup", L"File Name", L"badge"), 0);
  EXPECT_FALSE(m_Application.LoadBaseDir().empty());
}

TEST_F(DocumentApplicationTest, sheet_layers_are_kept_by_their_number) {
  CSheetLayerPalette& layers = *m_Application.GetSheetLayerPalette();
  EXPECT_EQ(layers.AddSheetToPalette({3, L"Brass", 1, true}), 1);
  EXPECT_EQ(layers.AddSheetToPalette({3, L"Steel", 1, true}), 0);
  EXPECT_EQ(m_Application.GetNextEmptyLayer(), 4);
  ASSERT_TRUE(layers.GetSheetLayerFromPalette(3));
  EXPECT_EQ(layers.GetSheetLayerFromPalette(3)->name, L"Brass");
  layers.RemoveSheetFromPalette(3);
  EXPECT_FALSE(layers.GetSheetLayerFromPalette(3));
}

// Plates of 8 by 8 on a blank of 20 by 10: two fit beside each other, and five need three pages.
TEST_F(DocumentApplicationTest, a_pane_names_the_plate_object_of_its_page) {
  m_Application.SetSignBlankSize(20, 10, 1);
  auto made = m_Application.NewGenericPlateObject(1, 8, 8, {}, 0, 0);
  ASSERT_TRUE(made);
  ASSERT_EQ(made->CreatePanesWithOriginBottomLeft({0, 0}, 20, 10), 1);
  ASSERT_NE(made->GetFirstPane(), nullptr);
  EXPECT_EQ(made->GetFirstPane()->GetPlateObject(), 0U) << "it is not in the document yet";
  ObjectHandle first = 0;
  ASSERT_EQ(made->Add(1, 1, 0, first), 1);
  CGenericPlateObject* plate = made.release();
  ASSERT_EQ(m_Store.DSAddObject(first), 1);
  m_Application.AddPanesToPlateObject(first, 4);

  const auto plates = *m_Document.SharedPlateObjects();
  ASSERT_EQ(plates.size(), 3U);
  std::vector<ObjectHandle> holders;
  for (CPane* pane = plate->GetFirstPane(); pane; pane = plate->GetNextPane()) {
    holders.push_back(pane->GetPlateObject());
  }
  EXPECT_EQ(holders,
            (std::vector<ObjectHandle>{plates[0], plates[0], plates[1], plates[1], plates[2]}));
  for (int page = 1; page <= 3; ++page) {
    EXPECT_EQ(m_Store.DBGetPageRange(plates[static_cast<std::size_t>(page - 1)]),
              (VK_PAGE_RANGE{page, page}));
  }
  // Asked of the object of page 2, its own panes come first, with that object as their holder.
  auto* second = static_cast<CGenericPlateObject*>(
      m_Store.DBGetObjectElement(plates[1])->GetPlaceholderItem());
  EXPECT_EQ(second->GetFirstPane()->GetPlateObject(), plates[1]);
}

TEST_F(DocumentApplicationTest, a_drill_point_that_can_not_be_is_reported_and_not_made) {
  m_Application.SetDrillPointObj({});
  EXPECT_TRUE(m_Notices.Losses().empty()) << "drill points are off";
  for (const double diameter : {0.0, -1.0, std::nan(""), 1e300}) {
    m_Application.SetXMLDrillPoint(1, diameter);
    m_Application.SetDrillPointObj({});
  }
  EXPECT_EQ(m_Notices.Losses().size(), 4U);
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
  m_Application.SetXMLDrillPoint(1, 0.4);
  m_Application.SetDrillPointObj({});
  EXPECT_EQ(m_Document.ObjectCount(), 1U);
}

TEST_F(DocumentApplicationTest, a_warning_becomes_a_note_and_a_stop_a_loss) {
  m_Application.TMessageBox(L"warned", L"caption", 48);
  m_Application.MessageBoxW(L"warned again", L"caption", 48);
  m_Application.MessageBoxW(L"plain", L"caption", 0);
  m_Application.TMessageBox(L"stopped", L"caption", 16);
  m_Application.MessageBoxW(L"Import cancelled!", L"caption", 16);
  m_Application.MessageBoxW(nullptr, nullptr, 16);
  EXPECT_EQ(m_Notices.Texts(), (std::vector<std::wstring>{L"warned", L"warned again", L"plain"}));
  EXPECT_EQ(m_Notices.Losses(), (std::vector<std::wstring>{L"stopped", L"Import cancelled!"}));
}

TEST_F(DocumentApplicationTest, a_message_of_several_lines_becomes_a_notice_of_one) {
  m_Application.TMessageBox(L"can't load\nlogo.svg", L"caption", 48);
  m_Application.MessageBoxW(L"first\nsecond\n\nthird\r\n", L"caption", 48);
  EXPECT_EQ(m_Notices.Texts(),
            (std::vector<std::wstring>{L"can't load logo.svg", L"first second third"}));
}

TEST_F(DocumentApplicationTest, new_objects_are_on_the_page_on_show_and_on_page_1_when_all_are) {
  for (const int shown : {1, 2, 7, 0}) {
    m_Document.SetDisplayPage(shown);
    const VK_PAGE_RANGE expected{std::max(shown, 1), std::max(shown, 1)};
    m_Application.SetXMLDrillPoint(1, 0.4);
    m_Application.SetDrillPointObj({});
    EXPECT_EQ(m_Store.DBGetPageRange(m_Document.Members(host::DocumentRoot).back()), expected);
    for (const int type : {DBTYPE_GROUP, DBTYPE_POLYARC, DBTYPE_PARAGRAPH}) {
      EXPECT_EQ(m_Store.DBGetPageRange(m_Store.DBCreateObject(type)), expected) << type;
    }
    auto plate = m_Application.NewGenericPlateObject(1, 8, 8, {}, 0, 0);
    ObjectHandle object = 0;
    ASSERT_EQ(plate.release()->Add(1, 1, 0, object), 1);
    EXPECT_EQ(m_Store.DBGetPageRange(object), expected);
  }
}

TEST_F(DocumentApplicationTest, a_new_document_has_nothing_of_the_old_one_but_palette_and_blank) {
  m_Application.SetSignBlankSize(30, 20, 1);
  m_Application.SetSignBlankOriginPos(3);
  m_Application.AddColorToPalette(NamedRgb(L"Mauve", 224, 176, 255));
  m_Application.AddNewSheetLayer(4);
  m_Application.SetPlateObjectParameters({1, 1, 1, 1}, 2, 2);
  m_Document.SetDisplayPage(2);
  m_Application.SetXMLDrillPoint(1, 0.4);
  m_Store.UNOpenStep(L"drill");
  m_Application.SetDrillPointObj({});
  m_Store.UNCloseStep();
  const ObjectHandle old = m_Document.Members(host::DocumentRoot).at(0);
  const host::ListHandle list = m_Store.DBCreateList(host::DocumentRoot, 9, ObjFilter_IsCurrent);
  ASSERT_NE(m_Store.DBGetObjectElement(old), nullptr);

  int told = 0;
  m_Application.SetNewDocumentHandler([&] { ++told; });
  m_Application.UIGetActiveView()->OnNew();
  EXPECT_EQ(told, 1);
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
  EXPECT_TRUE(m_Document.Members(host::DocumentRoot).empty());
  EXPECT_TRUE(m_Document.SharedPlateObjects()->empty());
  EXPECT_TRUE(m_Document.Selection().empty());
  EXPECT_TRUE(m_Document.StepNames().empty());
  EXPECT_TRUE(m_Document.SheetLayers().empty());
  EXPECT_EQ(m_Document.Plates(), PlateParameters());
  EXPECT_EQ(m_Document.DisplayPage(), 1);
  EXPECT_EQ(m_Document.HighestPage(), 0);
  EXPECT_EQ(m_Application.GetNextEmptyLayer(), 1);
  EXPECT_FALSE(m_Document.Undo());
  EXPECT_EQ(m_Store.DBGetObjectElement(old), nullptr);
  EXPECT_EQ(m_Store.DBGetObjectType(old), 0);
  EXPECT_EQ(m_Store.OpenLists(), 0U);
  EXPECT_EQ(m_Store.DBGetFirstMember(list), 0U);

  EXPECT_EQ(m_Document.Blank(), (SignBlank{30, 20, 3}));
  EXPECT_EQ(m_Application.IsColorInPalette(NamedRgb(L"Mauve", 224, 176, 255)), 1);
  m_Application.SetDrillPointObj({});
  EXPECT_GT(m_Document.Members(host::DocumentRoot).at(0), old) << "a handle is never used again";
}

TEST_F(DocumentApplicationTest, a_step_that_is_open_over_a_new_document_still_closes) {
  m_Store.UNOpenStep(L"import");
  m_Application.UIGetActiveView()->OnNew();
  m_Application.SetXMLDrillPoint(1, 0.4);
  m_Application.SetDrillPointObj({});
  m_Store.UNCloseStep();
  EXPECT_EQ(m_Document.OpenSteps(), 0);
  EXPECT_TRUE(m_Document.Undo());
  EXPECT_EQ(m_Document.ObjectCount(), 0U);
}

}  // namespace
}  // namespace rastrel::document
