#include <gtest/gtest.h>

#include "rastrel/platform/host/base_dir.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/plane_reader.h"
#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/tm.h"
#include "tests/support/bare_document.h"
#include "tests/support/test_host.h"

// Each operation that a host may leave out, as its header documents it.

namespace {

namespace host = rastrel::host;
using host::ListHandle;
using rastrel::test::BareApplication;
using rastrel::test::BareElement;
using rastrel::test::BareFontReplacement;
using rastrel::test::BareItem;
using rastrel::test::BareStore;
using rastrel::test::BareText;

// A color and bounds that no default would set.
const CVKColor Untouched(0x123456, COLORSPACE_RGB, 0, 0);
constexpr BOUNDS UntouchedBounds{1, 2, 3, 4};

class TakenBitmap : public CVKBitmap {
 public:
  int Create(const BITMAPINFOHEADER&, std::span<const std::byte>) override { return 1; }
};

TEST(HostDefaults, a_host_has_no_document) {
  rastrel::test::TestHost bare;
  EXPECT_EQ(bare.GetObjectStore(), nullptr);
  EXPECT_EQ(bare.GetTextCompose(), nullptr);
  EXPECT_EQ(bare.GetGraphicsIO(), nullptr);
  EXPECT_EQ(bare.GetContourCut(), nullptr);
  EXPECT_EQ(bare.GetPlaneReader(), nullptr);
  EXPECT_EQ(bare.GetApplication(), nullptr);
}

TEST(HostDefaults, the_views_of_dialogs_are_the_same_in_each_call) {
  rastrel::test::TestHost bare;
  EXPECT_EQ(&bare.GetDialogViews(), &bare.GetDialogViews());
}

class BarePlane : public CFMPlane {
 public:
  int SetBaseDirectory(const wchar_t*) override { return 1; }
  int SetLanguageKey(const wchar_t*) override { return 1; }
  int Open(const wchar_t*) override { return 0; }
  int GetDimensions(std::int32_t&, std::int32_t&) override { return 0; }
  int GetPixels(const BITMAPINFOHEADER*&, std::span<const std::byte>&) override { return 0; }
  void ReleasePixels(const BITMAPINFOHEADER*, std::span<const std::byte>) override {}
};

TEST(HostDefaults, a_plane_says_nothing_of_its_failures) {
  EXPECT_STREQ(BarePlane().GetFailure(), L"");
}

class BareDialog : public host::DialogLogic {
 public:
  const host::DialogResource& GetResource() const override { return m_Resource; }
  CWnd* GetParent() const override { return nullptr; }
  HANDLE GetPostedHandle() const override { return INVALID_HANDLE_VALUE; }
  std::size_t HandleMessages() override { return 0; }
  void Command(int) override {}
  bool HasEnded() const override { return true; }
  bool MayEndByItself() const override { return false; }

 private:
  host::DialogResource m_Resource{1, L"", {}};
};

TEST(HostDefaults, nobody_answers_a_question_and_a_dialog_has_no_lists) {
  rastrel::test::TestHost bare;
  EXPECT_FALSE(bare.GetDialogViews().CanAsk());
  BareDialog dialog;
  dialog.Choose(1, 5);
  EXPECT_TRUE(dialog.GetEntries(1).empty());
  EXPECT_EQ(dialog.GetChosen(1), 0U);
}

TEST(GenericItemDefaults, an_item_has_no_picture_and_an_element_no_text) {
  EXPECT_EQ(BareItem().CreatePreviewBmp(L"/a.bmp"), 0);
  EXPECT_EQ(BareElement().GetParagraph(), nullptr);
}

// --- The document database ---

TEST(ObjectStoreDefaults, no_history_is_kept) {
  BareStore store;
  store.WriteKeepHistory(1);
  EXPECT_EQ(store.GetKeepHistory(), 0);
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, lists_that_the_library_fills_are_none) {
  BareStore store;
  EXPECT_EQ(store.DBCreateEmptyList(), ListHandle::None);
  EXPECT_EQ(store.DBFilterList(BareStore::List, ObjFilter_IsText), ListHandle::None);
  store.DBAddToList(BareStore::List, BareStore::Object);
  EXPECT_EQ(store.DBGetMemberCount(BareStore::List), 0);
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, no_object_is_made_by_hand) {
  BareStore store;
  EXPECT_EQ(store.DBCreateObject(DBTYPE_GROUP), 0U);
  EXPECT_EQ(store.DBInsertBitmap(TakenBitmap(), 1, 1), 0U);
  EXPECT_EQ(store.DBInsertObject(BareStore::Object, host::DocumentRoot), 0);
  store.DBDestroyObject(BareStore::Object);
  EXPECT_EQ(store.DBGetObjectType(BareStore::Object), 0);
  EXPECT_EQ(store.DSGroupObjects(BareStore::List, 2, BareStore::Object), 0U);
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, the_selection_stays_and_has_no_bounds) {
  BareStore store;
  BOUNDS bounds = UntouchedBounds;
  store.DBSelect(BareStore::Object);
  store.DBSetSelectedList(BareStore::List);
  store.DBNotifySelectionChanged();
  EXPECT_EQ(store.DBGetSelectedListBounds(BareStore::List, bounds), 0);
  EXPECT_EQ(bounds, UntouchedBounds);
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, colors_are_not_read_and_attributes_not_set) {
  BareStore store;
  CVKColor color = Untouched;
  EXPECT_EQ(store.DBGetLayer(BareStore::Object, color), 0);
  EXPECT_EQ(store.DBGetLineColor(BareStore::Object, color), 0);
  EXPECT_EQ(color, Untouched);
  store.DBSetTraits(BareStore::Object, DBTRAIT_VISIBLE);
  store.DBSetPropertyLocks(BareStore::Object, {});
  store.DBApplyTM(BareStore::Object, {});
  store.DBHoldNotifications();
  store.DBReleaseNotifications();
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, one_page_is_a_range_from_it_to_itself) {
  BareStore store;
  store.SetPageRange(BareStore::Object, 3);
  EXPECT_EQ(store.m_Calls, 1);
  EXPECT_EQ(store.m_Object, BareStore::Object);
  EXPECT_EQ(store.m_Pages, (VK_PAGE_RANGE{3, 3}));
}

TEST(ObjectStoreDefaults, no_paths_are_made) {
  class EmptyArc : public POLYARC {
  } arc;
  BareStore store;
  EXPECT_EQ(store.PA_NewPolyArc(), nullptr);
  store.PA_NewSubPoly(arc);
  store.PA_AddVertice(arc, 0, 0, {});
  store.PA_CloseSubpoly(arc, 0);
  EXPECT_EQ(store.m_Calls, 0);
}

TEST(ObjectStoreDefaults, an_object_is_derived_from_itself_by_no_operation) {
  BareStore store;
  EXPECT_EQ(store.XCGetBaseObject(BareStore::Object), BareStore::Object);
  EXPECT_EQ(store.XCGetOwnedOperation(BareStore::Object), 0U);
  store.SetProductListValid(5, 0);
  store.RecalculateOperations();
  EXPECT_EQ(store.m_Calls, 0);
}

// --- The text engine ---

TEST(TextComposeDefaults, no_font_is_replaced) {
  BareText text;
  BareFontReplacement replacement;
  EXPECT_EQ(text.NewFontReplacement(L"Trophy"), nullptr);
  EXPECT_EQ(text.ChooseReplacementFont(replacement, L"Arial", -1, -1), nullptr);
  EXPECT_EQ(text.m_Calls, 0);
}

TEST(TextComposeDefaults, new_text_makes_no_object) {
  BareText text;
  text.SetTextColor(Untouched);
  text.InitNewText(nullptr, {0, 0}, {1000, 1000}, 1);
  text.TerminateNewText(nullptr, 1);
  EXPECT_EQ(text.GetTerminateTextEditHI(), 0U);
  EXPECT_EQ(text.m_Calls, 0);
}

TEST(TextComposeDefaults, a_text_has_no_replaceable_items) {
  BareText text;
  ParagraphEle paragraph{1, 2};
  EXPECT_TRUE(text.MakeReplaceableItemsListForParagraphEle(paragraph).empty());
  EXPECT_EQ(text.GetTextParagraphEle(paragraph, 1), L"");
  EXPECT_EQ(text.ReplaceTextParagraphEle(paragraph, 1, L"new"), 0);
  EXPECT_EQ(paragraph, (ParagraphEle{1, 2}));
  EXPECT_EQ(text.m_Calls, 0);
}

// --- The application ---

TEST(ApplicationDefaults, the_palette_is_known_by_name_alone) {
  BareApplication application;
  CVKColor color = Untouched;
  EXPECT_EQ(application.FindPaletteColor(-1, color), 0);
  EXPECT_EQ(application.FindPaletteColor(0, color), 0);
  EXPECT_EQ(color, Untouched);
  EXPECT_EQ(application.IsColorInPalette(color), 0);
  EXPECT_EQ(application.AddColorToPalette(CVKFullColor(color)), 0);
  EXPECT_EQ(application.IsInvisibleColor(CVKColor(-1, COLORSPACE_RGB, 0, 0)), 0);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, the_user_counts_from_the_bottom_left_corner) {
  BareApplication application;
  application.SetSignBlankOriginPos(1);
  EXPECT_EQ(application.GetSignBlankOriginPos(), 7);
  double x = 1;
  double y = 2;
  double third = 3;
  application.GetGridOriginXY(x, y, third);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(y, 0);
  EXPECT_EQ(third, 0);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, there_are_no_sheet_layers_to_choose_from) {
  BareApplication application;
  EXPECT_FALSE(application.GetEmptySeparationLayer().has_value());
  EXPECT_EQ(application.GetSheetLayerPalette(), nullptr);
  application.SetActiveOnlySheetLayer(1);
  application.SetCurrentSheetLayer(1);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, plates_get_no_further_panes) {
  BareApplication application;
  application.AddPaneToPlateObject(2);
  application.AddPanesToPlateObject(2, 3);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, no_file_is_placed_and_no_bitmap_made) {
  BareApplication application;
  EXPECT_EQ(application.LoadTHZ(nullptr, nullptr, L"/a.wmf", 1, 0), 0);
  EXPECT_EQ(application.NewGenericEPS(L"/a.eps"), nullptr);
  EXPECT_EQ(application.NewGenericCFPlane(L"/a.info", 0, 0), nullptr);
  EXPECT_EQ(application.NewVKBitmap(), nullptr);
  TakenBitmap kept;
  application.DeleteVKBitmap(&kept);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, there_is_no_window_and_messages_are_lost) {
  BareApplication application;
  EXPECT_EQ(application.UIGetActiveView(), nullptr);
  EXPECT_EQ(application.GetWindowHandle(2), nullptr);
  application.HourGlass(1);
  application.HourGlass(0);
  application.TMessageBox(L"(*v*)Idle", L"", 48);
  application.MessageBoxW(L"Idle", L"", 16);
  application.ZoomObj();
  EXPECT_EQ(application.GetCurrentUnits(), 0);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, there_are_no_devices) {
  BareApplication application;
  EXPECT_EQ(application.GGetPathDeviceInI(0), L"");
  EXPECT_FALSE(application.GetStringDevice(L"/plotter", L"Section", L"Key").has_value());
  EXPECT_EQ(application.WriteStringDevice(L"Section", L"Key", L"value"), 0);
  EXPECT_EQ(application.GetQueueComChannel(L"Plotter"), 0);
  application.SetImportRotation(90);
  EXPECT_EQ(application.m_Calls, 0);
}

TEST(ApplicationDefaults, files_of_an_import_go_to_the_temporary_directory) {
  rastrel::test::TestHost bare;
  BareApplication application;
  application.ExpectCutLine(true);
  EXPECT_EQ(application.LoadBaseDir(), std::wstring(CBaseDir(PATH_TEMP)));
  EXPECT_EQ(application.m_Calls, 0);
}

}  // namespace
