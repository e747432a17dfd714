#include "tests/support/recording_host.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "rastrel/platform/host/selected_object_list.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/host/translation.h"
#include "tests/support/checked_host.h"

namespace {

namespace host = rastrel::host;
using rastrel::test::CheckedHost;
using rastrel::test::HostCalls;
using rastrel::test::RecordingHost;
using Lines = HostCalls::Lines;

/// Adds a plate object of one pane as an importer does.
host::ObjectHandle AddPlate(RecordingHost& recording) {
  auto plate = recording.m_Application.NewGenericPlateObject(1, 10, 5, {}, 0, 0);
  host::ObjectHandle object = 0;
  plate->CreatePanesWithOriginBottomLeft({}, 60, 30);
  plate.release()->Add(1, 1, 0, object);
  recording.m_Store.DSAddObject(object);
  return object;
}

TEST(HostCalls, writes_numbers_with_the_digits_that_bring_them_back) {
  HostCalls calls;
  calls.Told("Lengths", 0.1, 1.0 / 3, 1e300, -0.0, 4000.0);
  EXPECT_EQ(calls.All(), (Lines{"Lengths(0.1, 0.3333333333333333, 1e+300, -0, 4000)"}));
}

TEST(HostCalls, writes_texts_in_quotes_with_line_ends_and_quotes_escaped) {
  HostCalls calls;
  calls.Told("Text", L"a \"b\"\\\r\n\u00FC", true, nullptr);
  EXPECT_EQ(calls.All(), (Lines{"Text(\"a \\\"b\\\"\\\\\\r\\n\xC3\xBC\", true, null)"}));
}

TEST(HostCalls, answers_in_sequence_then_as_set_for_good_then_by_default) {
  HostCalls calls;
  EXPECT_EQ(calls.Answer("Op", 7), 7);
  calls.Always("Op", 5);
  calls.Next("Op", {1, 2});
  EXPECT_EQ(calls.Answer("Op", 7), 1);
  EXPECT_EQ(calls.Answer("Op", 7), 2);
  EXPECT_EQ(calls.Answer("Op", 7), 5);
  EXPECT_EQ(calls.Answer("Other", 7), 7);
}

TEST(HostCalls, finds_lines_by_the_operation_whatever_object_it_belongs_to) {
  HostCalls calls;
  calls.Told("P1.Add", 1);
  calls.Told("AddFont", 1);
  calls.Write("paragraph.fit = 2");
  calls.Told("Add", 2);
  EXPECT_EQ(calls.Of({"Add"}), (Lines{"P1.Add(1)", "Add(2)"}));
  EXPECT_EQ(calls.Count("Add"), 2U);
}

TEST(HostCalls, keeps_no_more_lines_than_allowed) {
  HostCalls calls;
  calls.Limit(2);
  for (int line = 0; line < 5; ++line) calls.Told("Op", line);
  EXPECT_EQ(calls.All(), (Lines{"Op(0)", "Op(1)"}));
}

TEST(RecordingHost, is_the_host_in_force_while_it_exists_and_may_have_no_document) {
  {
    RecordingHost recording;
    EXPECT_EQ(&host::GetHost(), &recording);
    EXPECT_EQ(host::GetHost().GetObjectStore(), &recording.m_Store);
    recording.m_HasDocument = false;
    EXPECT_EQ(host::GetHost().GetObjectStore(), nullptr);
    EXPECT_EQ(host::GetHost().GetTextCompose(), nullptr);
    EXPECT_EQ(host::GetHost().GetApplication(), nullptr);
  }
  EXPECT_EQ(host::GetHost().GetObjectStore(), nullptr);
}

TEST(RecordingHost, lists_the_plate_objects_that_were_added_in_their_order) {
  CheckedHost recording;
  EXPECT_EQ(AddPlate(recording), 2U);
  EXPECT_EQ(AddPlate(recording), 3U);
  host::ObjectStore& store = recording.m_Store;
  const host::ListHandle list = store.DBCreateList(
      host::DocumentRoot, DBLIST_MEMBERS + DBLIST_ALL_PAGES, ObjFilter_IsGenericPlate);
  EXPECT_EQ(store.DBGetFirstMember(list), 2U);
  EXPECT_EQ(store.DBGetNextMember(list), 3U);
  EXPECT_EQ(store.DBGetNextMember(list), 0U);
  EXPECT_EQ(store.DBGetLastMember(list), 3U);
  store.DBDestroyList(list);
  EXPECT_EQ(recording.m_Calls.Of({"DBCreateList", "DBGetFirstMember", "DBGetNextMember",
                                  "DBGetLastMember", "DBDestroyList"}),
            (Lines{"DBCreateList(1, 9, IsGenericPlate) -> L1", "DBGetFirstMember(L1) -> #2",
                   "DBGetNextMember(L1) -> #3", "DBGetNextMember(L1) -> none",
                   "DBGetLastMember(L1) -> #3", "DBDestroyList(L1)"}));
}

TEST(RecordingHost, writes_the_calls_of_a_plate_object_with_its_name) {
  CheckedHost recording;
  AddPlate(recording);
  EXPECT_EQ(recording.m_Calls.Text(),
            "NewGenericPlateObject(1, 10, 5, (0 0 0 0), 0, 0) -> P1\n"
            "P1.CreatePanesWithOriginBottomLeft((0 0), 60, 30) -> 1\n"
            "P1.Add(1, 1, 0) -> #2\n"
            "DSAddObject(#2) -> 1\n");
}

TEST(RecordingHost, refuses_a_pane_that_does_not_fit_the_blank) {
  CheckedHost recording;
  const auto refused = [&](double width, double height, const CWorldRect& margins) {
    return recording.m_Application.NewGenericPlateObject(1, width, height, margins, 0, 0) ==
           nullptr;
  };
  EXPECT_FALSE(refused(60, 30, {}));
  EXPECT_TRUE(refused(60.001, 30, {}));
  EXPECT_TRUE(refused(60, 30.001, {}));
  EXPECT_TRUE(refused(60, 30, {.left = 0.1}));
  EXPECT_TRUE(refused(0, 30, {}));
  EXPECT_TRUE(refused(-1, 30, {}));
  EXPECT_TRUE(refused(std::nan(""), 30, {}));
}

TEST(RecordingHost, writes_fields_of_the_paragraph_in_front_of_the_next_call) {
  CheckedHost recording;
  host::TextCompose& text = recording.m_Text;
  ParagraphInfo info;
  text.SetOpenParagraphInfo(info, 0);
  ASSERT_EQ(text.OpenParagraph(4, info, {.x = 0, .y = 0}, {.x = 100, .y = 50}), 0);
  CurrentParagraph current;
  text.GetCurParagraph(current);
  current.paragraph->fit = 2;
  current.paragraph->leftPercent = 220;
  text.FitTextToFrame(current.paragraph, current.lines);
  text.CloseParagraph(1, info);
  EXPECT_EQ(recording.m_Calls.Text(),
            "SetOpenParagraphInfo(0) -> (1 101)\n"
            "OpenParagraph(4, (1 101), (0 0), (100 50)) -> 0\n"
            "GetCurParagraph()\n"
            "paragraph.fit = 2\n"
            "paragraph.leftPercent = 220\n"
            "FitTextToFrame(paragraph, lines)\n"
            "CloseParagraph(1, (1 101))\n");
}

TEST(RecordingHost, opens_one_paragraph_at_a_time) {
  CheckedHost recording;
  ParagraphInfo info;
  EXPECT_EQ(recording.m_Text.OpenParagraph(4, info, {}, {}), 0);
  EXPECT_NE(recording.m_Text.OpenParagraph(4, info, {}, {}), 0);
  recording.m_Text.CloseParagraph(1, info);
}

TEST(RecordingHost, makes_a_drill_point_the_selection_while_they_are_on) {
  CheckedHost recording;
  recording.m_Application.SetDrillPointObj({.x = 1, .y = 2});
  EXPECT_EQ(CSelectedObjectList(recording.m_Store).GetFirstMember(), 0U);
  recording.m_Application.SetXMLDrillPoint(1, 0.5);
  recording.m_Application.SetDrillPointObj({.x = 1, .y = 2});
  recording.m_Application.SetXMLDrillPoint(0, 0);
  EXPECT_EQ(CSelectedObjectList(recording.m_Store).GetFirstMember(), 2U);
}

TEST(RecordingHost, writes_settings_and_translations) {
  CheckedHost recording;
  recording.m_Settings[{L"Pages", L"CollapseToZero"}] = L"1";
  recording.m_Translations[L"(*v*)Adding text"] = L"Text zuf\u00FCgen";
  EXPECT_EQ(GetIntKorvane(L"Pages", L"CollapseToZero", 0, DS_USER, nullptr), 1);
  WriteIntKorvane(L"Pages", L"CollapseToZero", 0, DS_USER, nullptr);
  WriteIntKorvane(L"Pages", L"CollapseToZero", 1, DS_USER, nullptr);
  wchar_t translated[TStringLimit];
  TString(L"(*v*)Adding text", translated, TStringLimit);
  EXPECT_STREQ(translated, L"Text zuf\u00FCgen");
  EXPECT_EQ(recording.m_Calls.Text(),
            "Read(\"Pages\", \"CollapseToZero\") -> \"1\"\n"
            "Write(\"Pages\", \"CollapseToZero\", \"0\")\n"
            "Write(\"Pages\", \"CollapseToZero\", \"1\")\n"
            "TString(\"(*v*)Adding text\") -> \"Text zuf\xC3\xBCgen\"\n");
}

// Each way of leaving something open, and its message.
struct Opening {
  const char* name;
  std::function<void(RecordingHost&)> open;
  const char* words;
};

std::vector<Opening> Openings() {
  return {
      {"undo step", [](RecordingHost& to) { to.m_Store.UNOpenStep(L"Cut"); }, "undo step \"Cut\""},
      {"list", [](RecordingHost& to) { (void)to.m_Store.DBCreateEmptyList(); }, "list L1"},
      {"notifications", [](RecordingHost& to) { to.m_Store.DBHoldNotifications(); },
       "held notifications"},
      {"history", [](RecordingHost& to) { to.m_Store.WriteKeepHistory(0); },
       "undo history switched off"},
      {"paragraph", [](RecordingHost& to) { (void)to.m_Text.OpenParagraph(4, {}, {}, {}); },
       "paragraph"},
      {"new text", [](RecordingHost& to) { to.m_Text.InitNewText(nullptr, {}, {}, 1); },
       "new text"},
      {"records",
       [](RecordingHost& to) {
         (void)to.m_Text.OpenParagraph(4, {}, {}, {});
         CurrentParagraph current;
         to.m_Text.GetCurParagraph(current);
         to.m_Text.CloseParagraph(1, {});
         current.paragraph->fit = 9;
       },
       "records written after their paragraph's end"},
      {"hourglass", [](RecordingHost& to) { to.m_Application.HourGlass(1); }, "hourglass"},
      {"drill points", [](RecordingHost& to) { to.m_Application.SetXMLDrillPoint(1, 1); },
       "making of drill points"},
      {"setting",
       [](RecordingHost&) {
         WriteIntKorvane(L"Grouping", L"CollapseDatabase", 0, DS_USER, nullptr);
       },
       "setting \"Grouping\", \"CollapseDatabase\""},
  };
}

TEST(RecordingHost, reports_everything_that_is_left_open) {
  for (const Opening& opening : Openings()) {
    RecordingHost recording;
    EXPECT_EQ(recording.LeftOpen(), Lines{}) << opening.name;
    opening.open(recording);
    EXPECT_EQ(recording.LeftOpen(), Lines{opening.words}) << opening.name;
  }
}

TEST(RecordingHost, lets_a_setting_stay_that_may) {
  CheckedHost recording;
  recording.MayStay(L"plottersetup", L"DeviceUsed");
  WriteIntKorvane(L"plottersetup", L"DeviceUsed", 2, DS_USER, nullptr);
}

void LeaveAnUndoStepOpen() {
  CheckedHost recording;
  recording.m_Store.UNOpenStep(L"Cut");
}

TEST(CheckedHost, fails_the_test_that_leaves_something_open) {
  EXPECT_NONFATAL_FAILURE(LeaveAnUndoStepOpen(), "left open: undo step \"Cut\"");
}

}  // namespace
