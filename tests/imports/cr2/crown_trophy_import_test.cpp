// Whole imports of Crown Trophy templates, from the file to the last call.

#include <gtest/gtest.h>

#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/save.h"
#include "tests/imports/cr2/build_transcript.h"
#include "tests/imports/cr2/cr2_fixture.h"

namespace {

using namespace rastrel::test;

class CrownTrophyImport : public TemplateTest {
 protected:
  void ImportCr2(const std::string& text) {
    CCR2FileImport(Write(text, "plates.cr2").c_str(), nullptr);
  }
  void ImportZml(const std::string& text) {
    CCR2FileImportVers2(Write(text, "plates.zml").c_str(), nullptr);
  }
  static std::string Call(const std::string& start, const std::wstring& path,
                          const std::string& end) {
    return start + TextOf(path) + end;
  }
  static std::string Refused(const std::string& blank = "60 30") {
    return "NewFontReplacement(\"cr2\")\nSetSignBlankSize(0, 0, 1)\nSetSignBlankOriginPos(1)\n"
           "GetSignBlankSize() -> (" +
           blank +
           ")\nGetOriginPosIndex() -> 1\n"
           "GetDisplayPage() -> 1\nNewGenericPlateObject(1, 0, 0, (0 0 0 0), 0, 0) -> none\n"
           "AdjustPlateObjects(0, 0, 1) -> none\n";
  }
};

TEST_F(CrownTrophyImport, of_a_cr2_from_the_file_to_the_last_call) {
  const std::wstring logo = Write("<svg/>", "logo.svg");
  std::string escapedLogo;
  rastrel::xml::AppendXmlText(escapedLogo, rastrel::os::Utf8FromWide(logo), false);
  ImportCr2(
      "<engraving_template><table_size width='24' height='12' origin='bottom left' margins='1'/>"
      "<template spacing='0.5'><placement width='4' height='2'/>"
      "<color target='stroke' format='RGB'><rgb red='255' green='0' blue='0'/></color>"
      "<cutline stroke='hairline'><file>cut.svg</file>"
      "<placement x='1' y='1' width='2' height='1' origin='bottom left'/></cutline></template>"
      "<graphics><graphic_location name='logo'><file>" +
      escapedLogo +
      "</file></graphic_location></graphics>"
      "<plates><plate><graphic_frame><graphic>logo</graphic>"
      "<placement x='1' y='0.5' width='2' height='4' origin='top left' "
      "constrained_proportions='true'/></graphic_frame></plate>"
      "<plate><text_frame><placement x='0' y='0' width='2' height='1' origin='bottom right'/>"
      "<font face='Arial' style='Bold' size='0.5' line_height='1.5' justification='center'>"
      "<line>PUMP &amp;amp; 1</line></font></text_frame></plate></plates></engraving_template>");
  const std::string red = "RGB(255 0 0)";
  const std::string margins = "(2.54 2.54 2.54 2.54), 1.27, 1.27";
  const std::string loading =
      "GetDisplayPage() -> 1\n"
      "Read(\"Preferences\", \"DontStripThickLine\") -> null\n" +
      Cr2SettingsChanged();
  std::string calls =
      "NewFontReplacement(\"cr2\")\nSetSignBlankSize(60.96, 30.48, 1)\n"
      "SetSignBlankOriginPos(7)\nIsColorInPalette(" +
      red + ") -> 0\nAddColorToPalette(" + red + ") -> 1\n" +
      NewPlate({.measures = "10.16, 5.08, " + margins,
                .margins = margins,
                .start = "P1.CreatePanesWithOriginBottomLeft((2.54 2.54), 60.96, "
                         "30.48) -> 1",
                .color = red});
  // The cut line, 2 by 1 cm scaled by 2.54, an inch from the lower left corner of the first pane,
  // whose edges are 2.54 and 7.62, 12.7 and 2.54.
  calls += "DBGetObjectElement(#2)\nP1 gives pane 1\nGetDisplayPage() -> 1\n" + loading +
           LoadedObjects(
               "ExpectCutLine(true)\nLoadTHZ(document, null, \"cut.svg\", 1, 1) -> 1\n"
               "ExpectCutLine(false)",
               {"#2"}, {"#3"}, 1) +
           "DSCreateSelectedList() -> L4\n" + OnPlatesLayer("L4", {"#3"}) +
           "DBGetSelectedListBounds(L4) -> (0 2 0 1)\n" +
           Placed("L4", {"#3"}, "2.54 0 0 2.54 5.08 5.08") + Cr2SettingsRestored() +
           Walk("L4", {"#3"}) +
           "DBGetLineStyle(#3) -> (width 0 style 0)\nDBSetLineStyle(#3, (width " +
           TextOf(LineStyleHairline) +
           " style 32))\nDBGetMemberCount(L4) -> 1\nDBGetFirstMember(L4) -> #3\n"
           "SetPageRange(#3, 1)\nDBDestroyList(L4)\nAddPaneToPlateObject(#2)\n"
           "DBGetObjectElement(#2)\nP1 gives pane 1\n";
  // The graphic, scaled by 2.54 both ways since 4 inches of height would be 10.16: 5.08 by 2.54 cm,
  // an inch from the left, its top half an inch below that of the pane: 7.62 - 1.27 - 2.54.
  calls += "GetDisplayPage() -> 1\nRead(\"Preferences\", \"DontStripThickLine\") -> null\n" +
           Cr2SettingsChanged(true) +
           LoadedObjects(Call("LoadTHZ(document, null, ", logo, ", 1, 1) -> 1"), {"#2", "#3"},
                         {"#4"}, 5) +
           "DSCreateSelectedList() -> L8\n" + OnPlatesLayer("L8", {"#4"}) +
           "DBGetSelectedListBounds(L8) -> (0 2 0 1)\n" +
           Placed("L8", {"#4"}, "2.54 0 0 2.54 5.08 " + TextOf(7.62 - 1.27 - 2.54)) +
           Cr2SettingsRestored() +
           "DBGetMemberCount(L8) -> 1\nDBGetFirstMember(L8) -> #4\n"
           "DBGetObjectType(#4) -> 0\n" +
           Walk("L8", {"#4"}) +
           "GetDisplayPage() -> 1\nDBGetMemberCount(L8) -> 1\nDBGetFirstMember(L8) -> #4\n"
           "SetPageRange(#4, 1)\nDBDestroyList(L8)\nP1 gives pane 2\n";
  // The text, in the lower right corner of the second pane, whose right edge is at 13.97 + 10.16.
  const std::string arial = "AddFont(0, 2, \"Arial Bold\", 0, 0) -> F1\n";
  calls += OpenedText(Corner(13.97 + 10.16 - 5.08, 2.54), Corner(13.97 + 10.16, 5.08)) +
           LaidOutText() + "line.size = 500\nline.leading = 750\nstyle.size = 500\n" + arial +
           "SetTextLineJustification(paragraph, lines, 2)\n" + arial +
           "style.font = F1\nstyle.fontId = 1\nedPasteString(\"PUMP & 1\", 8, 0, null, false)\n"
           "TerminateNewText(null, 1)\nP1 has no further pane\nAdjustPlateObjects(0, 0, 1) -> #2\n";
  EXPECT_EQ(Calls().Text(), calls);
}

TEST_F(CrownTrophyImport, of_a_zml_from_the_file_to_the_last_call) {
  Calls().Always("IsColorInPalette", 1);
  ImportZml(
      "<ENGRAVINGTEMPLATE><Units>mm</Units><table_size width='400' height='200' origin='center'/>"
      "<template Xspacing='5' Yspacing='2.5' margins='10'>"
      "<placement width='100' height='50' origin='top left'/>"
      "<color target='stroke' format='HEX'><hex value='0xFF0000'/></color>"
      "<cutline stroke='5' format='FILE' file='cut.svg' group='true'><FILE/>"
      "<placement x='0' y='0' width='80' height='0' origin='top left'/></cutline></template>"
      "<graphics/><plates><plate><graphic_frame><graphic>none</graphic>"
      "<placement width='1' height='1'/></graphic_frame></plate>"
      "<plate><text_frame><placement x='10' y='20' width='40' height='10' origin='bottom left'/>"
      "<font face='Roman.shx' size='25.4' line_height='12.7' justification='right'>"
      "<line><span size='10'>A&amp;#169;</span></line><line/></font></text_frame></plate></plates>"
      "</ENGRAVINGTEMPLATE>");
  const std::string red = "RGB(255 0 0)";
  const std::string layer = "DBGetPageRange(#2) -> 1..1\nDBGetSheetLayer(#2) -> 1\n";
  std::string calls =
      "NewFontReplacement(\"cr2\")\nRead(\"Crown\", \"ImagePath\") -> null\n"
      "SetImportRotation(0)\nIsColorInPalette(" +
      red +
      ") -> 1\nRead(\"zippo\", \"NumStrings\") -> null\nOnNew()\n"
      "SetSignBlankSize(40, 20, 1)\nSetSignBlankOriginPos(5)\n" +
      NewPlate({.blank = "40 20",
                .measures = "10, 5, (0 0 0 0), 0.5, 0.25",
                .margins = "(0 0 0 0), 0.5, 0.25",
                .start = "P1.CreatePanesWithOriginTopLeft((0 20), 40, 20) -> 1",
                .origin = "5",
                .color = red,
                .isZml = true}) +
      "AddPanesToPlateObject(#2, 1)\nDBCreateList(1, 9, IsGenericPlate) -> L1\n" +
      Walk("L1", {"#2"}) + "DBGetObjectElement(#2)\n";
  // Of each pane the cut line: 8 cm wide and so 4 high, its upper left corner at that of the pane
  // less its margins of 1 cm. The panes' tops are at 20, their left edges at 0 and 10.5.
  const auto cutLine = [&](const Names& before, const std::string& object, int list,
                           const std::string& left, bool again) {
    const std::string loaded = "L" + std::to_string(list + 3);
    return layer + "GetDisplayPage() -> 1\n" + ZmlSettingsChanged(again) +
           LoadedObjects(
               "ExpectCutLine(true)\nLoadTHZ(document, null, \"cut.svg\", 1, 1) -> 1\n"
               "ExpectCutLine(false)",
               before, {object}, list) +
           "DSCreateSelectedList() -> " + loaded + "\n" + OnPlatesLayer(loaded, {object}) +
           Walk(loaded, {object}) + "DBGetLineStyle(" + object +
           ") -> (width 0 style 0)\nDBSetLineStyle(" + object +
           ", (width 0.5 style 48))\nDBInvalidateBounds(" + object + ")\nDBValidateBounds(" +
           object + ")\nDBGetSelectedListBounds(" + loaded + ") -> (0 2 0 1)\n" +
           Placed(loaded, {object}, "4 0 0 4 " + left + " 15") + ZmlSettingsRestored() +
           "DBGetFirstMember(" + loaded + ") -> " + object + "\nDBGetObjectType(" + object +
           ") -> 0\n" + Walk(loaded, {object}) + Walk(loaded, {object}) + "DBSetPageRange(" +
           object + ", 1..1)\nDBSetSheetLayer(" + object + ", 1)\nDBGetMemberCount(" + loaded +
           ") -> 1\nDBDestroyList(" + loaded + ")\n";
  };
  calls += "P1 gives pane 1\n" + cutLine({"#2"}, "#3", 2, "1", false) + layer + layer +
           "P1 gives pane 2\n" + cutLine({"#2", "#3"}, "#4", 6, "11.5", true) + layer;
  // The text: the point is 1 cm right of the inner left edge at 11.5, and 2 below the top at 19.
  const std::string roman = "AddFont(0, 13, \"Roman\", 0, 0) -> F1\n";
  calls += OpenedText(Corner(12.5, 17), Corner(16.5, 18)) + LaidOutText() +
           "line.size = 1000\nline.leading = " + TextOf(static_cast<double>(1.27F) * 1000) +
           "\nstyle.size = 1000\nSetTextLineJustification(paragraph, lines, 1)\n" + roman +
           "style.font = F1\nstyle.fontId = 1\nedPasteString(\"A\u00A9\", 2, 0, null, false)\n"
           "edPasteString(\"\\r\\n\", 2, 0, null, false)\n" +
           roman +
           "style.size = 2540\nedPasteString(\" \", 1, 0, null, false)\n"
           "TerminateNewText(null, 1)\nGetTerminateTextEditHI() -> #5\nDBSetPageRange(#5, 1..1)\n"
           "DBSetSheetLayer(#5, 1)\nP1 has no further pane\nDBDestroyList(L1)\n";
  EXPECT_EQ(Calls().Text(), calls);
}

TEST_F(CrownTrophyImport, of_a_cr2_that_is_refused_asks_for_a_blank_and_a_plate_of_no_size) {
  for (const wchar_t* path : {L"", L".cr2", L"/none/plates.cr2"}) {
    Calls().Clear();
    m_Host.m_Application.m_BlankOrigin = 1;
    const CCR2FileImport importer(path, nullptr);
    EXPECT_EQ(Calls().Text(), Refused());
  }
  Calls().Clear();
  const CCR2FileImport null(nullptr, nullptr);
  EXPECT_EQ(Calls().Text(), Refused());
  Calls().Clear();
  const CCR2FileImport zml(Write("<engraving_template/>", "plates.zml").c_str(), nullptr);
  EXPECT_EQ(Calls().Text(), Refused());
}

TEST_F(CrownTrophyImport, of_a_cr2_whose_format_is_file_sets_the_blank_and_builds_no_plates) {
  ImportCr2(
      "<engraving_template><table_size width='24' height='12' origin='bottom left'/><template>"
      "<placement width='4' height='2'/><cutline format='FILE'><file>cut.svg</file>"
      "<placement width='2' height='1'/></cutline></template><plates><plate/></plates>"
      "</engraving_template>");
  EXPECT_TRUE(Calls().Has("SetSignBlankSize(60.96, 30.48, 1)"));
  EXPECT_EQ(Calls().Count("LoadTHZ"), 0U);
  EXPECT_EQ(Calls().Count("AddPaneToPlateObject"), 0U);
}

TEST_F(CrownTrophyImport, of_a_zml_that_is_refused_changes_nothing_and_shows_nothing) {
  ImportZml("<ENGRAVINGTEMPLATE><table_size width='4' height='2'/></ENGRAVINGTEMPLATE>");
  EXPECT_EQ(Calls().Count("OnNew"), 0U);
  EXPECT_EQ(Calls().Count("SetSignBlankSize"), 0U);
  EXPECT_EQ(Calls().Count("MessageBoxW"), 0U);
  Calls().Clear();
  const CCR2FileImportVers2 null(nullptr, nullptr);
  EXPECT_EQ(Calls().Text(), "NewFontReplacement(\"cr2\")\n");
}

TEST_F(CrownTrophyImport, without_a_document_of_the_host_changes_nothing_and_the_log_says_so) {
  m_Host.m_HasDocument = false;
  const std::string text = TemplateText({}, "engraving_template");
  ImportCr2(text);
  ImportZml(text);
  EXPECT_EQ(Calls().Text(), "");
  const std::string line = "[Import] the host has no document to import into\r\n";
  EXPECT_EQ(Log(), line + line);
}

TEST_F(CrownTrophyImport, of_a_font_that_the_user_refuses_ends_with_a_message) {
  RecordingHost host;
  host.m_Text.m_MissingFonts = {L"Gone"};
  const std::string frame = TextFrame("<font face='Gone' size='0.5'><line>A</line></font>");
  TemplateParts parts;
  parts.plates =
      "<plates><plate>" + frame + frame + "</plate><plate>" + frame + "</plate></plates>";
  const std::string text = TemplateText(parts, "engraving_template");
  const CCR2FileImport cr2(Write(text, "plates.cr2").c_str(), nullptr);
  EXPECT_EQ(host.m_Calls.Count("InitNewText"), 1U);
  EXPECT_EQ(host.m_Calls.All().back(),
            "MessageBoxW(\"Import cancelled!\", \"Crown Trophy XML\", 16)");
  host.m_Calls.Clear();
  const CCR2FileImportVers2 zml(Write(text, "plates.zml").c_str(), nullptr);
  EXPECT_EQ(host.m_Calls.Count("InitNewText"), 1U);
  EXPECT_EQ(host.m_Calls.All().back(), "MessageBoxW(\"Import cancelled!\", \"ZML FILE\", 16)");
}

}  // namespace
