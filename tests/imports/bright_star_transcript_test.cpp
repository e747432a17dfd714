// Whole imports of BrightStar templates, call by call, as the host is asked.

#include "tests/imports/bright_star_fixture.h"

namespace {

/// A paragraph from its opening to the first line, in a frame that is written as text.
std::string Opened(const std::string& info, const std::string& corners, int justification = 0,
                   const std::string& lineFit = {}) {
  std::string text = "SetOpenParagraphInfo(0) -> " + info + "\n";
  text += "OpenParagraph(4, " + info + ", " + corners + ") -> 0\n";
  text += "GetCurParagraph()\n";
  text += "lines.mode = 4\n";
  text += "SetTextLineJustifyMode(paragraph, lines, 2)\n";
  text += "SetTextLineJustification(paragraph, lines, " + std::to_string(justification) + ")\n";
  text += lineFit;
  text += "paragraph.fit = 2\n";
  text += "paragraph.frameMode = 3\n";
  return text;
}

/// Its end, and the refresh of its object.
std::string Closed(const std::string& info, const std::string& object) {
  std::string text = "SetOpenParagraphInfo(0) -> " + info + "\n";
  text += "CloseParagraph(1, " + info + ")\n";
  text += "GetDefaultAttributes()\n";
  text += "DBInsertElement(attributes, 8192, paragraph " + info + ", 0, 0, 0, 1, false) -> " +
          object + "\n";
  text += "DBSetTrait(" + object + ", 128, 1)\n";
  text += "TString(\"(*v*)Adding text\") -> \"Adding text\"\n";
  text += "UNOpenStep(\"Adding text\")\n";
  text += "DSAddSourceObject(" + object + ", 2, " + object + ") -> 1\n";
  text += "UNCloseStep()\n";
  text += "DBInvalidateBounds(" + object + ")\n";
  text += "DBValidateBounds(" + object + ")\n";
  text += "InvalidateObject(" + object + ", 1)\n";
  return text;
}

/// The blank of 6 by 4 inches, and the code of its origin.
std::string Blank(int origin) {
  return "BeginWaitCursor()\nSetSignBlankSize(15.24, 10.16, 1)\nSetSignBlankOriginPos(" +
         std::to_string(origin) + ")\n";
}

/// The questions of each frame; the grid of the recording host begins at (0, 0).
std::string Asked(int origin, const std::string& grid = "(0 0)") {
  return "GetGridOriginXY() -> " + grid + "\nGetSignBlankOriginPos() -> " + std::to_string(origin) +
         "\n";
}

constexpr const char* Size = "<WIDTH>6</WIDTH><HEIGHT>4</HEIGHT>";

class BrightStarTranscript : public rastrel::test::BrightStarTest {
 protected:
  int Import(const std::string& children) { return Parse(children).ImportXMLFile(); }
  /// The code that a blank with this origin gets.
  std::string OriginCall(const std::string& text) {
    Calls().Clear();
    Import(Size + text);
    return Calls().Of({"SetSignBlankOriginPos"}).at(0);
  }
  /// The corners of a frame of (1, 0.5) to (2, 1.5) inches on a blank with that origin. The grid
  /// begins at (8000, 5000).
  std::string Corners(int origin) {
    Calls().Always("GetGridOriginXY.x", 8000);
    Calls().Always("GetGridOriginXY.y", 5000);
    m_Host.m_Application.m_BlankOrigin = origin;
    CBrightStarXMLImport importer(nullptr);
    tagTEXTFRAME frame;
    frame.upperX = 1;
    frame.upperY = 0.5;
    frame.lowerX = 2;
    frame.lowerY = 1.5;
    Calls().Clear();
    importer.AddFrameText(frame);
    const std::string opened = Calls().Of({"OpenParagraph"}).at(0);
    const std::size_t begin = opened.find("), (") + 3;
    return opened.substr(begin, opened.rfind(')') - begin);
  }
};

TEST_F(BrightStarTranscript, a_template_with_two_frames) {
  EXPECT_EQ(Import(std::string(Size) +
                   "<ORIGIN>LOWER LEFT</ORIGIN>"
                   "<TEXTFRAME UPPERXLOC='0.5' UPPERYLOC='3' LOWERXLOC='5.5' LOWERYLOC='2'"
                   " compression='Each Line Individually'><FONT name='Roman.shx' size='0.1'"
                   " justification='Center'/><LINE>ONE</LINE><LINE>TWO</LINE></TEXTFRAME>"
                   "<TEXTFRAME UPPERXLOC='1' UPPERYLOC='1' LOWERXLOC='2' LOWERYLOC='0.5'"
                   " compression='Equal Height Lines'><FONT name='Arial.ttf' size='0.5'"
                   " justification='Right'/><LINE>THREE</LINE></TEXTFRAME>"),
            1);
  // 0.1 inch is 100 text units, in single precision as it happens exactly. The second line finds no
  // dot in the font's name, so its font is of type 2.
  EXPECT_EQ(Calls().Text(),
            Blank(7) + Asked(7) +
                Opened("(1 101)", "(500 3000), (5500 2000)", 2, "paragraph.lineFit = 0\n") +
                "AddFont(0, 13, \"Roman\", -1, 1) -> F1\nstyle.font = F1\nstyle.size = 100\n"
                "edPasteString(\"ONE\\r\\n\", 5, 0, null, false)\n"
                "AddFont(0, 2, \"Roman\", -1, 1) -> F2\nstyle.font = F2\n"
                "edPasteString(\"TWO\", 3, 0, null, false)\n" +
                Closed("(1 101)", "#2") + Asked(7) +
                Opened("(2 102)", "(1000 1000), (2000 500)", 1, "paragraph.lineFit = 2\n") +
                "AddFont(0, 2, \"Arial\", -1, 1) -> F3\nstyle.font = F3\nstyle.size = 500\n"
                "edPasteString(\"THREE\", 5, 0, null, false)\n" +
                Closed("(2 102)", "#3"));
  EXPECT_EQ(Log(), "");
}

TEST_F(BrightStarTranscript, a_template_without_frames_sets_the_blank_alone) {
  EXPECT_EQ(Import(Size), 1);
  EXPECT_EQ(Calls().Text(), Blank(7));
}

TEST_F(BrightStarTranscript, a_second_run_does_all_of_it_again_with_the_fonts_own_type) {
  CBrightStarXMLImport& importer =
      Parse(std::string(Size) +
            "<TEXTFRAME UPPERXLOC='1' UPPERYLOC='1' LOWERXLOC='2' LOWERYLOC='2'>"
            "<FONT name='Roman.shx' size='0.25'/><LINE>A</LINE></TEXTFRAME>");
  const auto run = [](const std::string& info, const std::string& object) {
    return Blank(7) + Asked(7) + Opened(info, "(1000 1000), (2000 2000)") +
           "AddFont(0, 13, \"Roman\", -1, 1) -> F1\nstyle.font = F1\nstyle.size = 250\n"
           "edPasteString(\"A\", 1, 0, null, false)\n" +
           Closed(info, object);
  };
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), run("(1 101)", "#2"));
  Calls().Clear();
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), run("(2 102)", "#3"));
}

TEST_F(BrightStarTranscript, of_two_templates_the_first_is_imported) {
  EXPECT_EQ(Read("<A><ENGRAVINGTEMPLATE><WIDTH>6</WIDTH><HEIGHT>4</HEIGHT></ENGRAVINGTEMPLATE>"
                 "<ENGRAVINGTEMPLATE><WIDTH>9</WIDTH><TEXTFRAME/></ENGRAVINGTEMPLATE></A>")
                .ImportXMLFile(),
            1);
  EXPECT_EQ(Calls().Text(), Blank(7));
}

TEST_F(BrightStarTranscript, a_walk_that_was_begun_does_not_change_which_template_is_imported) {
  CBrightStarXMLImport& importer = Read(
      "<A><ENGRAVINGTEMPLATE><WIDTH>6</WIDTH><HEIGHT>4</HEIGHT></ENGRAVINGTEMPLATE>"
      "<ENGRAVINGTEMPLATE><WIDTH>9</WIDTH></ENGRAVINGTEMPLATE></A>");
  importer.GetFirstPlate();
  importer.GetNextPlate();
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), Blank(7));
}

TEST_F(BrightStarTranscript, a_document_without_a_template_changes_nothing_and_the_log_says_so) {
  EXPECT_EQ(Read("<BRIGHTSTAR><OTHER/></BRIGHTSTAR>").ImportXMLFile(), 0);
  EXPECT_EQ(Calls().Text(), "");
  EXPECT_EQ(Log(),
            "[Import] there is no ENGRAVINGTEMPLATE below the root, and nothing is imported\r\n");
}

TEST_F(BrightStarTranscript, a_refused_file_changes_nothing) {
  EXPECT_EQ(Read("<A>").ImportXMLFile(), 0);
  EXPECT_EQ(Calls().Text(), "");
}

TEST_F(BrightStarTranscript, a_host_without_a_document_is_asked_nothing) {
  m_Host.m_HasDocument = false;
  EXPECT_EQ(Import(std::string(Size) + "<TEXTFRAME/>"), 0);
  m_Importer->SetSignBlankOrigin(L"CENTER");
  m_Importer->AddFrameText({});
  m_Importer->AddGraphics({});
  EXPECT_EQ(Calls().Text(), "");
}

// The blank's origin.

TEST_F(BrightStarTranscript, each_origin_has_its_code) {
  int code = 0;
  for (const char* text : {"TOP LEFT", "TOP CENTER", "TOP RIGHT", "LEFT CENTER", "CENTER",
                           "RIGHT CENTER", "LOWER LEFT", "LOWER CENTER", "LOWER RIGHT"})
    EXPECT_EQ(OriginCall("<ORIGIN>" + std::string(text) + "</ORIGIN>"),
              "SetSignBlankOriginPos(" + std::to_string(++code) + ")");
}

TEST_F(BrightStarTranscript, any_other_origin_and_none_is_7) {
  for (const char* text : {"BOTTOM LEFT", "lower right", "CENTER CENTER", "mid left", "9"})
    EXPECT_EQ(OriginCall("<ORIGIN>" + std::string(text) + "</ORIGIN>"), "SetSignBlankOriginPos(7)");
  EXPECT_EQ(OriginCall(""), "SetSignBlankOriginPos(7)");
  EXPECT_EQ(OriginCall("<ORIGIN/>"), "SetSignBlankOriginPos(7)");
}

// Frames.

TEST_F(BrightStarTranscript, corners_count_from_each_origin_as_its_row_of_the_table_has_it) {
  // The upper corner is (1000, 500) and the lower one (2000, 1500); the grid begins at (8000,
  // 5000).
  EXPECT_EQ(Corners(1), "(1000 4500), (2000 3500)");
  EXPECT_EQ(Corners(2), "(9000 4500), (10000 3500)");
  EXPECT_EQ(Corners(3), "(6000 4500), (7000 3500)");
  EXPECT_EQ(Corners(4), "(1000 4500), (2000 3500)");
  EXPECT_EQ(Corners(5), "(9000 4500), (10000 3500)");
  EXPECT_EQ(Corners(6), "(6000 4500), (7000 3500)");
  EXPECT_EQ(Corners(7), "(1000 500), (2000 1500)");
  EXPECT_EQ(Corners(8), "(9000 500), (10000 1500)");
  EXPECT_EQ(Corners(9), "(6000 500), (7000 1500)");
}

TEST_F(BrightStarTranscript, corners_of_a_code_that_is_no_origin_stay) {
  for (const int origin : {0, -1, 10, 2147483647})
    EXPECT_EQ(Corners(origin), "(1000 500), (2000 1500)") << origin;
}

TEST_F(BrightStarTranscript, a_frame_without_lines_is_an_empty_text) {
  EXPECT_EQ(Import(std::string(Size) + "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'/>"), 1);
  EXPECT_EQ(Calls().Text(), Blank(7) + Asked(7) + Opened("(1 101)", "(0 0), (1000 1000)") +
                                Closed("(1 101)", "#2"));
}

TEST_F(BrightStarTranscript, an_empty_line_is_pasted_with_its_line_end) {
  EXPECT_EQ(
      Import(std::string(Size) + "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='A' size='1'/>"
                                 "<LINE/><LINE>B</LINE><LINE/></TEXTFRAME>"),
      1);
  EXPECT_EQ(Calls().Of({"edPasteString"}),
            (rastrel::test::HostCalls::Lines{"edPasteString(\"\\r\\n\", 2, 0, null, false)",
                                             "edPasteString(\"B\\r\\n\", 3, 0, null, false)",
                                             "edPasteString(\"\", 0, 0, null, false)"}));
}

TEST_F(BrightStarTranscript, a_paragraph_that_cannot_be_opened_drops_its_frame_and_not_the_next) {
  Calls().Next("OpenParagraph", {1});
  EXPECT_EQ(Import(std::string(Size) +
                   "<TEXTFRAME UPPERXLOC='1' LOWERXLOC='2.5'><LINE>A</LINE></TEXTFRAME>"
                   "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'/>"),
            1);
  EXPECT_EQ(Calls().Text(), Blank(7) + Asked(7) +
                                "SetOpenParagraphInfo(0) -> (1 101)\n"
                                "OpenParagraph(4, (1 101), (1000 0), (2500 0)) -> 1\n" +
                                Asked(7) + Opened("(2 102)", "(0 0), (1000 1000)") +
                                Closed("(2 102)", "#2"));
  EXPECT_EQ(Log(), "[Import] the host opens no text in the frame of (1, 0) to (2.5, 0) inches\r\n");
}

TEST_F(BrightStarTranscript, lines_whose_font_cannot_be_had_are_dropped_and_logged_once) {
  m_Host.m_Text.m_MissingFonts = {L"Gone"};
  EXPECT_EQ(Import(std::string(Size) +
                   "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='Gone.pfb' size='1'/>"
                   "<LINE>A</LINE><LINE>B</LINE></TEXTFRAME>"),
            1);
  EXPECT_EQ(Calls().Text(), Blank(7) + Asked(7) + Opened("(1 101)", "(0 0), (1000 1000)") +
                                "AddFont(0, 3, \"Gone\", -1, 1) -> none\n"
                                "AddFont(0, 2, \"Gone\", -1, 1) -> none\n" +
                                Closed("(1 101)", "#2"));
  EXPECT_EQ(Log(), "[Import] the host has no font \"Gone\": lines left out: 2\r\n");
}

TEST_F(BrightStarTranscript, a_font_name_in_the_log_is_on_one_line) {
  m_Host.m_Text.m_MissingFonts = {L"a\nb\u202Ec"};
  Import(std::string(Size) +
         "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='a&#10;b&#x202E;c'/><LINE>A</LINE>"
         "</TEXTFRAME>");
  EXPECT_EQ(Log(), "[Import] the host has no font \"a\\x0ab\\u202ec\": lines left out: 1\r\n");
}

TEST_F(BrightStarTranscript, a_font_name_of_two_dots_is_cut_again_by_the_second_line) {
  Import(std::string(Size) +
         "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='Roman.shx.ttf' size='1'/>"
         "<LINE>A</LINE><LINE>B</LINE><LINE>C</LINE></TEXTFRAME>");
  EXPECT_EQ(Calls().Of({"AddFont"}),
            (rastrel::test::HostCalls::Lines{"AddFont(0, 2, \"Roman.shx\", -1, 1) -> F1",
                                             "AddFont(0, 13, \"Roman\", -1, 1) -> F2",
                                             "AddFont(0, 2, \"Roman\", -1, 1) -> F3"}));
}

TEST_F(BrightStarTranscript, an_object_that_cannot_be_made_is_not_refreshed) {
  Calls().Next("DBInsertElement", {0});
  EXPECT_EQ(Import(std::string(Size) + "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'/>"), 1);
  const std::string text = Calls().Text();
  EXPECT_TRUE(text.ends_with("-> none\n")) << text;
  EXPECT_EQ(Calls().Count("InvalidateObject"), 0U);
  EXPECT_EQ(Log(), "[Import] the host made no object of a text\r\n");
}

TEST_F(BrightStarTranscript, a_size_goes_through_single_precision) {
  Import(std::string(Size) +
         "<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT name='A' size='0.0701'/><LINE>A</LINE>"
         "</TEXTFRAME>");
  // The single precision number nearest to 70.1 is 0x1.186666p6.
  EXPECT_TRUE(Calls().Has("style.size = " + rastrel::test::TextOf(0x1.186666p+6)))
      << Calls().Text();
}

TEST_F(BrightStarTranscript, justifications_are_three_texts_spelled_exactly_so) {
  const auto justification = [this](const std::string& text) {
    Calls().Clear();
    Import("<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1'><FONT justification='" + text +
           "'/></TEXTFRAME>");
    const std::string call = Calls().Of({"SetTextLineJustification"}).at(0);
    return call.substr(call.size() - 2, 1);
  };
  EXPECT_EQ(justification("Left"), "0");
  EXPECT_EQ(justification("Right"), "1");
  EXPECT_EQ(justification("Center"), "2");
  EXPECT_EQ(justification("left"), "0");
  EXPECT_EQ(justification("right"), "0");
  EXPECT_EQ(justification(""), "0");
}

TEST_F(BrightStarTranscript, line_fits_are_three_texts_and_any_other_is_1) {
  const auto written = [this](const std::string& text) {
    Calls().Clear();
    Import("<TEXTFRAME LOWERXLOC='1' LOWERYLOC='1' compression='" + text + "'/>");
    const std::string all = Calls().Text();
    const std::size_t at = all.find("paragraph.lineFit = ");
    return at == std::string::npos ? "1, as it was" : all.substr(at + 20, 1);
  };
  EXPECT_EQ(written("Each Line Individually"), "0");
  EXPECT_EQ(written("All Lines Equally"), "1, as it was");
  EXPECT_EQ(written("Equal Height Lines"), "2");
  EXPECT_EQ(written(""), "1, as it was");
  EXPECT_EQ(written("each line individually"), "1, as it was");
}

// Graphics, which only a host can append.

TEST_F(BrightStarTranscript, a_graphic_is_loaded_in_an_undo_step) {
  m_Scratch.Write("logo.svg", "<svg/>");
  CBrightStarXMLImport& importer = Parse(Size);
  auto* const record = static_cast<tagBRIGHT_STAR_DATA*>(importer.GetFirstPlate());
  const std::wstring path = m_Scratch.Wide("logo.svg");
  record->graphics.push_back(std::make_unique<tagGRAPHIC>(tagGRAPHIC{.file = path}));
  EXPECT_EQ(importer.ImportXMLFile(), 1);
  EXPECT_EQ(Calls().Text(), Blank(7) +
                                "HourGlass(1)\n"
                                "TString(\"(*v*)XML Import\") -> \"XML Import\"\n"
                                "UNOpenStep(\"XML Import\")\n"
                                "DBDeselectAll()\n"
                                "DBHoldNotifications()\n"
                                "LoadTHZ(document, null, " +
                                rastrel::test::TextOf(path) +
                                ", 1, 1) -> 1\n"
                                "UNCloseStep()\n"
                                "UpdatePageWindow(0)\n"
                                "DBReleaseNotifications()\n"
                                "HourGlass(0)\n");
  EXPECT_EQ(Log(), "");
}

TEST_F(BrightStarTranscript, a_graphic_that_the_host_does_not_load_ends_its_step_and_is_logged) {
  m_Scratch.Write("logo.svg", "");
  Calls().Always("LoadTHZ", 0);
  CBrightStarXMLImport importer(nullptr);
  importer.AddGraphics({.file = m_Scratch.Wide("logo.svg")});
  EXPECT_EQ(Calls().Count("UNCloseStep"), 1U);
  EXPECT_EQ(Calls().All().back(), "HourGlass(0)");
  EXPECT_EQ(Log(),
            "[Import] the host loads no graphic from \"" + m_Scratch.Path("logo.svg") + "\"\r\n");
}

TEST_F(BrightStarTranscript,
       a_graphic_that_is_not_there_leaves_the_step_open_and_the_hourglass_on) {
  CBrightStarXMLImport importer(nullptr);
  importer.AddGraphics({.file = m_Scratch.Wide("absent.svg")});
  EXPECT_EQ(Calls().Text(),
            "HourGlass(1)\n"
            "TString(\"(*v*)XML Import\") -> \"XML Import\"\n"
            "UNOpenStep(\"XML Import\")\n");
  EXPECT_EQ(m_Host.LeftOpen().size(), 2U);
  m_Host.m_Store.UNCloseStep();
  m_Host.m_Application.HourGlass(0);
}

}  // namespace
