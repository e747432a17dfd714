#include <cmath>

#include "host/document/document_application.h"
#include "host/text/text_layout.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/host/layout/cro_template.h"
#include "tests/host/layout/laid_out_template.h"

namespace rastrel::layout {
namespace {

using document::Object;
using document::PlateShape;
using document::TextShape;
using test::ExpectRect;

constexpr double Inch = 2.54;
constexpr double Near = 1e-6;
// Of measured drawings, in millimetres.
constexpr double Hundredth = 0.01;
// A line is this many times as high as its letters.
constexpr double LineRoom = 1.2;

class CroLayoutTest : public test::LaidOutTemplate {
 protected:
  CroLayoutTest() {
    // 20 by 10 dots at 2835 dots a metre: 0.70547 by 0.35273 cm.
    m_Directory.Write("dot.png", test::PngFile(2835, 2835, 1));
    Doc().SetBlank({30, 20, 1});
  }

  [[nodiscard]] const TextShape& Text(std::size_t number) {
    const auto texts = All<TextShape>();
    EXPECT_GT(texts.size(), number);
    return std::get<TextShape>(texts.at(number)->shape);
  }
  // The size of a line's letters and its leading in centimetres.
  [[nodiscard]] static double SizeOf(const document::TextLine& line) {
    return line.runs.at(0).size / 1000 * Inch;
  }
  [[nodiscard]] static double LeadingOf(const document::TextLine& line) {
    return line.leading / 1000 * Inch;
  }
};

// --- Plates ---

TEST_F(CroLayoutTest, plates_are_in_rows_on_the_blank_and_then_on_further_pages) {
  // Two side by side and two below each other.
  ASSERT_TRUE(Cro(Size("5", "3.5") + Plates({"", "", "", "", "", ""})));
  const auto plates = All<PlateShape>();
  ASSERT_EQ(plates.size(), 2U);
  EXPECT_EQ(Doc().Blank(), (document::SignBlank{30, 20, 1}));
  const double w = 5 * Inch;
  const double h = 3.5 * Inch;
  const auto panes = Panes();
  ASSERT_EQ(panes.size(), 6U);
  ExpectRect(panes[0], {0, 20, w, 20 - h});
  ExpectRect(panes[1], {w, 20, 2 * w, 20 - h});
  ExpectRect(panes[2], {0, 20 - h, w, 20 - 2 * h});
  ExpectRect(panes[3], {w, 20 - h, 2 * w, 20 - 2 * h});
  ExpectRect(panes[4], panes[0]);
  ExpectRect(panes[5], panes[1]);
  EXPECT_EQ(plates[0]->attributes.pages, (VK_PAGE_RANGE{1, 1}));
  EXPECT_EQ(plates[1]->attributes.pages, (VK_PAGE_RANGE{2, 2}));
  const auto& first = std::get<PlateShape>(plates[0]->shape);
  EXPECT_EQ(Doc().Find(first.continuation), plates[1]) << "one plate object over both pages";
  EXPECT_NE(plates[0]->attributes.sheetLayer, plates[1]->attributes.sheetLayer);
  EXPECT_EQ(m_Host.StillOpen(), document::DocumentHost::OpenWork());
}

TEST_F(CroLayoutTest, plates_of_a_bottom_left_origin_go_upward) {
  ASSERT_TRUE(Cro(Size("5", "3.5") + "<TEMPLATEORIGIN>bottom left</TEMPLATEORIGIN>" +
                  Plates({"", "", ""})));
  EXPECT_EQ(Doc().Blank().origin, 7);
  const double w = 5 * Inch;
  const double h = 3.5 * Inch;
  ExpectRect(Panes().at(0), {0, h, w, 0});
  ExpectRect(Panes().at(2), {0, 2 * h, w, h});
}

TEST_F(CroLayoutTest, each_origin_of_the_template_becomes_that_of_the_blank) {
  const char* origins[] = {"top left",  "top center",  "top right",     "mid left",    "mid center",
                           "mid right", "bottom left", "bottom center", "bottom right"};
  for (int i = 0; i < 9; ++i) {
    ASSERT_TRUE(Cro(Size("5", "3.5") + "<TEMPLATEORIGIN>" + origins[i] + "</TEMPLATEORIGIN>" +
                    Plates({""})));
    EXPECT_EQ(Doc().Blank().origin, i + 1);
  }
}

TEST_F(CroLayoutTest, a_template_without_an_origin_keeps_the_blanks) {
  Doc().SetBlank({30, 20, 9});
  ASSERT_TRUE(Cro(Size("5", "3.5") + Plates({""})));
  EXPECT_EQ(Doc().Blank().origin, 9);
}

TEST_F(CroLayoutTest, a_blank_of_the_templates_size_has_one_plate_a_page) {
  ASSERT_TRUE(Cro(Size("5", "3.5", true) + Plates({"<TEXT>a</TEXT>", "<TEXT>b</TEXT>"})));
  EXPECT_EQ(Doc().Blank(), (document::SignBlank{5 * Inch, 3.5 * Inch, 1}));
  EXPECT_EQ(Doc().HighestPage(), 2);
  const auto texts = All<TextShape>();
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[1]->attributes.pages, (VK_PAGE_RANGE{2, 2}));
  EXPECT_EQ(texts[1]->attributes.sheetLayer, All<PlateShape>()[1]->attributes.sheetLayer);
}

TEST_F(CroLayoutTest, lengths_of_a_metric_file_are_centimetres) {
  ASSERT_TRUE(Cro("<METRIC yes=\"1\"/>" + Size("5", "3.5") + Plates({"", ""})));
  ExpectRect(Panes().at(1), {5, 20, 10, 16.5});
}

TEST_F(CroLayoutTest, a_template_without_a_size_has_plates_as_large_as_the_blank) {
  ASSERT_TRUE(Cro(Plates({"", ""})));
  ASSERT_EQ(Panes().size(), 2U);
  ExpectRect(Panes()[1], {0, 20, 30, 0});
  ASSERT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Texts()[0],
            L"the template gives its plates no size: they are 30 by 20 cm, as the blank");
}

TEST_F(CroLayoutTest, a_plate_larger_than_the_blank_is_refused_and_nothing_changes) {
  const auto done =
      Cro(Size("12", "3") + "<TEMPLATEORIGIN>center</TEMPLATEORIGIN>" + Plates({"<TEXT>a</TEXT>"}));
  ASSERT_FALSE(done);
  EXPECT_EQ(Describe(done.Error()),
            "a plate of 30.48 by 7.62 cm does not fit on the blank of 30 by 20 cm");
  EXPECT_EQ(Doc().Blank(), (document::SignBlank{30, 20, 1}));
  EXPECT_EQ(Doc().ObjectCount(), 0U);
}

TEST_F(CroLayoutTest, a_template_without_plates_is_refused) {
  const auto done = Cro(Size("5", "3.5"));
  ASSERT_FALSE(done);
  EXPECT_EQ(Describe(done.Error()), "the template has no plates");
}

TEST_F(CroLayoutTest, sizes_that_no_plate_can_have_are_refused) {
  for (const char* bad : {"-1", "1e300", "1e999", "-1e999"}) {
    EXPECT_EQ(static_cast<bool>(Cro(Size("5", bad) + Plates({""}))), false) << bad;
    EXPECT_EQ(Doc().ObjectCount(), 0U);
  }
}

TEST_F(CroLayoutTest, a_refused_file_changes_nothing) {
  m_Directory.Write("bad.cro", "<OTHER/>");
  const CCROFileImport file(m_Directory.Wide("bad.cro").c_str(), nullptr);
  EXPECT_FALSE(ImportCro(file, m_Host, Resolver()));
  EXPECT_EQ(Doc().ObjectCount(), 0U);
}

// --- Text ---

TEST_F(CroLayoutTest, lines_share_the_plates_height_less_its_margins) {
  ASSERT_TRUE(Cro(Size("5", "3.5") + "<VERTICALSPACING><MARGINS>0.25</MARGINS></VERTICALSPACING>" +
                  Plates({"<TEXT>il</TEXT><TEXT>li</TEXT><TEXT>ll</TEXT>"})));
  const TextShape& text = Text(0);
  ExpectRect(text.frame, {0, 20, 5 * Inch, 20 - 3.5 * Inch});
  ASSERT_EQ(text.lines.size(), 3U);
  EXPECT_NEAR(LeadingOf(text.lines[1]), 1.0 * Inch, Near) << "a third of 3 inches";
  EXPECT_NEAR(LeadingOf(text.lines[2]), 1.0 * Inch, Near);
  for (const auto& line : text.lines) {
    EXPECT_NEAR(SizeOf(line), 1.0 * Inch / LineRoom, Near);
    EXPECT_EQ(line.justification, JUSTIFY_CENTER);
    EXPECT_EQ(line.runs.at(0).font, L"DejaVu Sans");
  }
  EXPECT_TRUE(m_Host.GetNotices().Texts().empty());
}

// DejaVu Sans: 1901 units above the base line and 483 below it, of 2048; i and l are 569 wide.
TEST_F(CroLayoutTest, base_lines_are_measured_where_the_shares_put_them) {
  ASSERT_TRUE(Cro(Size("5", "3.5") + "<VERTICALSPACING><MARGINS>0.25</MARGINS></VERTICALSPACING>" +
                  Plates({"<TEXT>il</TEXT><TEXT>li</TEXT><TEXT>ll</TEXT>"})));
  const double size = 25.4 / LineRoom;
  const double above = 1901 / 2048.0 * size;
  const double below = 483 / 2048.0 * size;
  const auto rows = Measured("text");
  ASSERT_EQ(rows.size(), 3U);
  for (int i = 0; i < 3; ++i) {
    const auto& row = rows[static_cast<std::size_t>(i)];
    const double top = 200 - 0.25 * 25.4 - i * 25.4;
    EXPECT_NEAR(row.at(1), top - (25.4 - above - below) / 2 - above, Hundredth);
    EXPECT_NEAR(row.at(2), 2 * 569 / 2048.0 * size, Hundredth);
    EXPECT_NEAR(row.at(0) + row.at(2) / 2, 2.5 * 25.4, Hundredth) << "centered";
    EXPECT_NEAR(row.at(3), size, Hundredth);
  }
}

TEST_F(CroLayoutTest, a_line_of_its_own_height_leaves_the_rest_to_the_others) {
  ASSERT_TRUE(Cro(Size("5", "3") +
                  "<TEMPLATETEXT line=\"2\"><HEIGHT>0.5</HEIGHT><FONT>DejaVu "
                  "Serif</FONT></TEMPLATETEXT>" +
                  Plates({"<TEXT>a</TEXT><TEXT>b</TEXT><TEXT>c</TEXT>"})));
  const TextShape& text = Text(0);
  EXPECT_NEAR(SizeOf(text.lines.at(1)), 0.5 * Inch, Near);
  // A quarter of a line's letters is below its base line, and 0.95 of the next one's above theirs.
  EXPECT_NEAR(LeadingOf(text.lines.at(1)), (0.25 * 1.0 + 0.95 * 0.5) * Inch, Near);
  EXPECT_NEAR(LeadingOf(text.lines.at(2)), (0.25 * 0.5 + 0.95 * 1.0) * Inch, Near);
  EXPECT_EQ(text.lines.at(1).runs.at(0).font, L"DejaVu Serif");
  for (const std::size_t other : {0U, 2U}) {
    EXPECT_NEAR(SizeOf(text.lines.at(other)), 1.0 * Inch, Near) << "of half of 2.4 inches";
    EXPECT_EQ(text.lines.at(other).runs.at(0).font, L"DejaVu Sans");
  }
}

TEST_F(CroLayoutTest, a_plates_own_line_wins_over_the_templates_in_what_it_gives) {
  ASSERT_TRUE(
      Cro(Size("5", "3") +
          "<TEMPLATETEXT line=\"1\"><HEIGHT>0.5</HEIGHT><FONT>DejaVu Serif</FONT></TEMPLATETEXT>" +
          Plates({"<TEXT>a</TEXT>",
                  "<TEMPLATETEXT line=\"1\"><HEIGHT>0.25</HEIGHT></TEMPLATETEXT><TEXT>a</TEXT>",
                  "<TEXT>a</TEXT><TEMPLATETEXT line=\"1\"><FONT>DejaVu Sans "
                  "Mono</FONT></TEMPLATETEXT>"})));
  const double heights[] = {0.5, 0.25, 0.5};
  const wchar_t* fonts[] = {L"DejaVu Serif", L"DejaVu Serif", L"DejaVu Sans Mono"};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(SizeOf(Text(i).lines.at(0)), heights[i] * Inch, Near) << i;
    EXPECT_EQ(Text(i).lines.at(0).runs.at(0).font, fonts[i]) << i;
  }
}

TEST_F(CroLayoutTest, a_line_number_of_0_or_none_is_all_lines_and_a_lines_own_wins) {
  ASSERT_TRUE(Cro(Size("5", "3") +
                  "<TEMPLATETEXT><HEIGHT>0.25</HEIGHT></TEMPLATETEXT>"
                  "<TEMPLATETEXT line=\"2\"><HEIGHT>0.5</HEIGHT></TEMPLATETEXT>" +
                  Plates({"<TEXT>a</TEXT><TEXT>b</TEXT><TEXT>c</TEXT>"})));
  const TextShape& text = Text(0);
  EXPECT_NEAR(SizeOf(text.lines.at(0)), 0.25 * Inch, Near);
  EXPECT_NEAR(SizeOf(text.lines.at(1)), 0.5 * Inch, Near);
  EXPECT_NEAR(SizeOf(text.lines.at(2)), 0.25 * Inch, Near);
}

TEST_F(CroLayoutTest, the_last_of_two_for_one_line_counts_where_it_has_a_value) {
  ASSERT_TRUE(Cro(Size("5", "3") +
                  "<TEMPLATETEXT line=\"1\"><HEIGHT>0.5</HEIGHT></TEMPLATETEXT>"
                  "<TEMPLATETEXT line=\"1\"><FONT>DejaVu Serif</FONT></TEMPLATETEXT>"
                  "<TEMPLATETEXT line=\"1\"><HEIGHT>0.25</HEIGHT></TEMPLATETEXT>" +
                  Plates({"<TEXT>a</TEXT>"})));
  EXPECT_NEAR(SizeOf(Text(0).lines.at(0)), 0.25 * Inch, Near);
  EXPECT_EQ(Text(0).lines.at(0).runs.at(0).font, L"DejaVu Serif");
}

TEST_F(CroLayoutTest, heights_of_template_and_plate_are_centimetres_in_a_metric_file) {
  ASSERT_TRUE(
      Cro("<METRIC yes=\"1\"/>" + Size("10", "6") +
          "<TEMPLATETEXT line=\"1\"><HEIGHT>1.5</HEIGHT></TEMPLATETEXT>" +
          Plates({"<TEXT>a</TEXT>",
                  "<TEXT>a</TEXT><TEMPLATETEXT line=\"1\"><HEIGHT>1.5</HEIGHT></TEMPLATETEXT>"})));
  EXPECT_NEAR(SizeOf(Text(0).lines.at(0)), 1.5, Near);
  EXPECT_NEAR(SizeOf(Text(1).lines.at(0)), 1.5, Near);
}

TEST_F(CroLayoutTest, lines_with_heights_are_a_block_in_the_middle_or_spread_over_the_plate) {
  const std::string lines = "<TEMPLATETEXT line=\"0\"><HEIGHT>0.5</HEIGHT></TEMPLATETEXT>" +
                            Plates({"<TEXT>il</TEXT><TEXT>li</TEXT>"});
  ASSERT_TRUE(Cro(Size("5", "3") + lines));
  EXPECT_NEAR(LeadingOf(Text(0).lines.at(1)), 0.6 * Inch, Near);
  ASSERT_TRUE(
      Cro(Size("5", "3") + "<VERTICALSPACING><MARGINS>0.3</MARGINS></VERTICALSPACING>" + lines));
  // 2.4 inches less 1.2: each line has 0.6 more.
  EXPECT_NEAR(LeadingOf(Text(1).lines.at(1)), 1.2 * Inch, Near);
  const auto rows = Measured("text");
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_NEAR(rows[0].at(1) - rows[1].at(1), 0.6 * 25.4, Hundredth);
  const double middle = (rows[0].at(1) + rows[1].at(1)) / 2;
  // The base lines are below the middle by half of the difference of ascent and descent.
  EXPECT_NEAR(middle, 200 - 1.5 * 25.4 - (1901 - 483) / 2048.0 / 2 * 0.5 * 25.4, Hundredth);
}

TEST_F(CroLayoutTest, an_empty_line_takes_its_share_and_shows_nothing) {
  ASSERT_TRUE(Cro(Size("5", "3") + Plates({"<TEXT>a</TEXT><TEXT/><TEXT>c</TEXT>"})));
  EXPECT_NEAR(LeadingOf(Text(0).lines.at(2)), 1.0 * Inch, Near);
  EXPECT_TRUE(Text(0).lines.at(1).runs.empty());
  EXPECT_EQ(Measured("text").size(), 2U);
}

TEST_F(CroLayoutTest, a_plate_without_text_has_no_text_object) {
  ASSERT_TRUE(Cro(Size("5", "3") + Plates({"", "<TEXT/>", "<TEXT>a</TEXT>"})));
  EXPECT_EQ(All<TextShape>().size(), 1U);
  EXPECT_EQ(Panes().size(), 3U);
}

TEST_F(CroLayoutTest, a_line_wider_than_its_room_is_squeezed_and_the_notice_says_by_how_much) {
  ASSERT_TRUE(Cro(Size("2", "1") + "<TEMPLATETEXT line=\"1\"><HEIGHT>0.5</HEIGHT></TEMPLATETEXT>" +
                  Plates({"<TEXT>a</TEXT>", "<TEXT>MMMMM</TEXT>"})));
  const auto& notices = m_Host.GetNotices().Texts();
  ASSERT_EQ(notices.size(), 1U);
  // Five letters M, 1767 of 2048 units each, of 1.27 cm; 5.08 cm less 5 percent at both sides.
  EXPECT_NEAR(5 * 1767 / 2048.0 * 1.27, 5.4787, 1e-3);
  EXPECT_EQ(notices[0].find(L"plate 2, line 1, is 5.47"), 0U) << notices[0].size();
  EXPECT_NE(notices[0].find(L" cm long and has 4.572 cm: it is squeezed to 83.4 percent of its "
                            L"width"),
            std::wstring::npos);
}

TEST_F(CroLayoutTest, lines_higher_than_their_plate_are_made_smaller_with_a_notice) {
  ASSERT_TRUE(Cro(Size("5", "1") + "<TEMPLATETEXT line=\"1\"><HEIGHT>2</HEIGHT></TEMPLATETEXT>" +
                  Plates({"<TEXT>i</TEXT><TEXT>l</TEXT>"})));
  // Both are of 2 inches, since the one without a height has the lowest of the others: 2.4 from
  // base line to base line, the ascent of the first and the descent of the last, 2384 of 2048
  // units.
  EXPECT_NEAR(1 / (2.4 + 2 * 2384 / 2048.0), 0.212, 0.0005);
  ASSERT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Texts()[0],
            L"plate 1: its lines are higher than the plate between its margins, and are made "
            L"smaller, to 21.2 percent");
  const text::TextLayout layout(Text(0), m_Host.GetFonts());
  for (const auto& line : layout.Lines()) {
    EXPECT_LE(line.baseline + line.ascent, 20 / Inch * 72 + 1e-6);
    EXPECT_GE(line.baseline - line.descent, (20 - Inch) / Inch * 72 - 1e-6);
  }
}

TEST_F(CroLayoutTest, squeezed_lines_beyond_a_hundred_are_counted) {
  std::vector<std::string> plates(103, "<TEXT>MMMMM</TEXT>");
  ASSERT_TRUE(Cro(Size("1", "1") + Plates(plates)));
  const auto& notices = m_Host.GetNotices().Texts();
  ASSERT_EQ(notices.size(), 101U);
  EXPECT_EQ(notices.back(), L"3 more lines are squeezed");
}

TEST_F(CroLayoutTest, margins_that_leave_no_room_are_made_smaller_with_a_notice) {
  const auto set = [&](const std::string& margins) {
    document::DocumentHost host;
    m_Directory.Write("m.cro", "<ENGRAVINGTEMPLATE>" + Size("4", "2") +
                                   "<VERTICALSPACING><MARGINS>" + margins +
                                   "</MARGINS></VERTICALSPACING>" + Plates({"<TEXT>i</TEXT>"}) +
                                   "</ENGRAVINGTEMPLATE>");
    const CCROFileImport file(m_Directory.Wide("m.cro").c_str(), nullptr);
    EXPECT_TRUE(ImportCro(file, host, {}));
    const auto& members = host.GetDocument().Members(host::DocumentRoot);
    const auto& text = std::get<TextShape>(host.GetDocument().Find(members.at(1))->shape);
    return std::pair(text.paragraph.topMargin / 1000, host.GetNotices().Texts().size());
  };
  EXPECT_EQ(set("0.5"), std::pair(0.5, std::size_t{0})) << "a quarter of the plate's height";
  EXPECT_EQ(set("0.75"), std::pair(0.5, std::size_t{1}));
  EXPECT_EQ(set("1e30"), std::pair(0.5, std::size_t{1}));
  EXPECT_EQ(set("-1"), std::pair(0.0, std::size_t{1}));
  EXPECT_EQ(set("0"), std::pair(0.0, std::size_t{0}));
}

TEST_F(CroLayoutTest, heights_that_no_letter_has_are_passed_over_with_a_notice) {
  ASSERT_TRUE(Cro(Size("5", "3") +
                  "<TEMPLATETEXT line=\"1\"><HEIGHT>-1</HEIGHT></TEMPLATETEXT>"
                  "<TEMPLATETEXT line=\"2\"><HEIGHT>1e30</HEIGHT></TEMPLATETEXT>" +
                  Plates({"<TEXT>i</TEXT><TEXT>l</TEXT>"})));
  EXPECT_NEAR(LeadingOf(Text(0).lines.at(1)), 1.5 * Inch, Near);
  EXPECT_EQ(m_Host.GetNotices().Texts().size(), 2U);
}

TEST_F(CroLayoutTest, a_missing_font_is_replaced_once_and_a_refused_one_leaves_its_line_out) {
  const std::string lines = "<TEMPLATETEXT line=\"1\"><FONT>NoSuchFont.otf</FONT></TEMPLATETEXT>" +
                            Plates({"<TEXT>a</TEXT><TEXT>b</TEXT>", "<TEXT>a</TEXT>"});
  ASSERT_TRUE(Cro(Size("5", "3") + lines));
  EXPECT_EQ(Text(0).lines.at(0).runs.at(0).replacement, L"DejaVu Sans");
  EXPECT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  m_Host.CancelMissingFonts(true);
  ASSERT_TRUE(Cro(Size("5", "3") + lines));
  EXPECT_TRUE(Text(2).lines.at(0).runs.empty());
  EXPECT_FALSE(Text(2).lines.at(1).runs.empty());
}

TEST_F(CroLayoutTest, lines_and_characters_beyond_their_maxima_are_left_out_with_a_notice) {
  for (const int over : {-1, 0, 1}) {
    document::DocumentHost host;
    std::string plate;
    for (int i = 0; i < MaximumPlateLines + over; ++i) plate += "<TEXT>i</TEXT>";
    m_Directory.Write(
        "m.cro", "<ENGRAVINGTEMPLATE>" + Size("5", "3") + Plates({plate}) + "</ENGRAVINGTEMPLATE>");
    const CCROFileImport lines(m_Directory.Wide("m.cro").c_str(), nullptr);
    ASSERT_TRUE(ImportCro(lines, host, {}));
    EXPECT_EQ(host.GetNotices().Losses().size(), over > 0 ? 1U : 0U);
    const auto& members = host.GetDocument().Members(host::DocumentRoot);
    EXPECT_EQ(std::get<TextShape>(host.GetDocument().Find(members.at(1))->shape).lines.size(),
              static_cast<std::size_t>(MaximumPlateLines + std::min(over, 0)));
    m_Directory.Write(
        "m.cro", "<ENGRAVINGTEMPLATE>" + Size("5", "3") +
                     Plates({"<TEXT>" +
                             std::string(static_cast<std::size_t>(MaximumLineLength + over), 'i') +
                             "</TEXT>"}) +
                     "</ENGRAVINGTEMPLATE>");
    const CCROFileImport characters(m_Directory.Wide("m.cro").c_str(), nullptr);
    document::DocumentHost other;
    ASSERT_TRUE(ImportCro(characters, other, {}));
    EXPECT_EQ(other.GetNotices().Losses().size(), over > 0 ? 1U : 0U);
  }
}

// --- Graphics ---

// Each row by hand: the graphic is 1 by 0.5 inches on the second plate of 4 by 3, whose left edge
// is at 4 inches and whose upper one at 20 cm.
TEST_F(CroLayoutTest, graphics_are_inward_from_each_origin_of_their_plate) {
  const struct {
    const char* origin;
    double left, bottom;
  } rows[] = {
      {"top left", 0.25, 2.375},    {"top center", 1.75, 2.375},    {"top right", 2.75, 2.375},
      {"mid left", 0.25, 1.375},    {"mid center", 1.75, 1.375},    {"mid right", 2.75, 1.375},
      {"bottom left", 0.25, 0.125}, {"bottom center", 1.75, 0.125}, {"bottom right", 2.75, 0.125}};
  std::string graphics;
  std::string names;
  for (const auto& row : rows) {
    graphics += Graphic(row.origin,
                        "<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><XLOC>0.25</XLOC><YLOC>0.125</YLOC>"
                        "<ORIGIN>" +
                            std::string(row.origin) + "</ORIGIN>");
    names += "<GRAPHIC>" + std::string(row.origin) + "</GRAPHIC>";
  }
  ASSERT_TRUE(Cro(Size("4", "3") + graphics + Plates({"", names})));
  const auto measured = Measured("graphic");
  ASSERT_EQ(Graphics().size(), 9U);
  ASSERT_EQ(measured.size(), 9U);
  for (std::size_t i = 0; i < 9; ++i) {
    SCOPED_TRACE(rows[i].origin);
    const double left = 4 * 25.4 + rows[i].left * 25.4;
    const double bottom = 200 - 3 * 25.4 + rows[i].bottom * 25.4;
    EXPECT_NEAR(Graphics()[i].xmin, left / 10, Near);
    EXPECT_NEAR(Graphics()[i].ymin, bottom / 10, Near);
    EXPECT_NEAR(measured[i].at(0), left, Hundredth);
    EXPECT_NEAR(measured[i].at(1), bottom, Hundredth);
    EXPECT_NEAR(measured[i].at(2), left + 25.4, Hundredth);
    EXPECT_NEAR(measured[i].at(3), bottom + 12.7, Hundredth);
  }
}

TEST_F(CroLayoutTest, a_graphic_without_an_origin_has_the_templates_or_the_bottom_left) {
  const std::string rest =
      Graphic("a", "<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT>") + Plates({"<GRAPHIC>a</GRAPHIC>"});
  ASSERT_TRUE(Cro(Size("4", "3") + rest));
  EXPECT_NEAR(Graphics().at(0).xmin, 0, Near);
  EXPECT_NEAR(Graphics().at(0).ymin, 20 - 3 * Inch, Near);
  ASSERT_TRUE(Cro(Size("4", "3") + "<TEMPLATEORIGIN>top right</TEMPLATEORIGIN>" + rest));
  EXPECT_NEAR(Graphics().at(1).xmax, 4 * Inch, Near);
  EXPECT_NEAR(Graphics().at(1).ymax, 20, Near);
}

TEST_F(CroLayoutTest, graphics_are_on_their_plates_page_and_layer) {
  ASSERT_TRUE(Cro(Size("5", "3.5", true) + Graphic("a", "") +
                  Plates({"<GRAPHIC>a</GRAPHIC>", "<TEXT>b</TEXT>", "<GRAPHIC>a</GRAPHIC>"})));
  const auto graphics = All<document::GraphicShape>();
  ASSERT_EQ(graphics.size(), 2U);
  EXPECT_EQ(graphics[0]->attributes.pages, (VK_PAGE_RANGE{1, 1}));
  EXPECT_EQ(graphics[1]->attributes.pages, (VK_PAGE_RANGE{3, 3}));
  EXPECT_EQ(graphics[1]->attributes.sheetLayer, All<PlateShape>().at(2)->attributes.sheetLayer);
  EXPECT_EQ(m_Resolved.size(), 1U) << "loaded once";
  EXPECT_TRUE(Doc().Selection().empty());
}

TEST_F(CroLayoutTest, a_name_that_the_template_lacks_is_left_out_and_named_once) {
  ASSERT_TRUE(Cro(Size("5", "3") + Graphic("a", "") +
                  Plates({"<GRAPHIC>A</GRAPHIC><GRAPHIC/>", "<GRAPHIC>A</GRAPHIC>"})));
  EXPECT_TRUE(Graphics().empty());
  EXPECT_EQ(m_Host.GetNotices().Losses(),
            std::vector<std::wstring>{L"the graphic \"A\": the template has none of that name"});
}

TEST_F(CroLayoutTest, the_first_graphic_of_a_name_counts) {
  ASSERT_TRUE(Cro(Size("5", "3") + Graphic("a", "<WIDTH>1</WIDTH>") +
                  Graphic("a", "<WIDTH>2</WIDTH>") + Plates({"<GRAPHIC>a</GRAPHIC>"})));
  EXPECT_NEAR(Graphics().at(0).xmax - Graphics().at(0).xmin, 1 * Inch, Near);
}

TEST_F(CroLayoutTest, a_graphic_that_only_a_wrong_place_names_leaves_nothing) {
  ASSERT_TRUE(
      Cro(Size("5", "3") + Graphic("a", "<XLOC>1e300</XLOC>") + Plates({"<GRAPHIC>a</GRAPHIC>"})));
  EXPECT_TRUE(Graphics().empty());
  ASSERT_EQ(m_Host.GetNotices().Losses().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Losses()[0],
            L"the graphic \"a\" of plate 1: its place or size is none that a plate could have");
}

// The rectangle is 6 by 3 of a page of 10 by 5: a graphic's size is that of its drawn part.
TEST_F(CroLayoutTest, a_vector_file_is_paths_of_the_size_that_the_template_asks_for) {
  m_Directory.Write(
      "box.svg",
      "<svg xmlns='http://www.w3.org/2000/svg' width='100mm' height='50mm' "
      "viewBox='0 0 10 5'><rect x='2' y='1' width='6' height='3' fill='#f00'/></svg>");
  ASSERT_TRUE(Cro(Size("5", "3") +
                  "<TEMPLATEGRAPHIC name=\"a\"><FILE>box.svg</FILE><WIDTH>3</WIDTH>"
                  "<ORIGIN>bottom left</ORIGIN></TEMPLATEGRAPHIC>" +
                  Plates({"<GRAPHIC>a</GRAPHIC>", "<GRAPHIC>a</GRAPHIC>"})));
  ASSERT_EQ(All<document::PathShape>().size(), 2U);
  for (const std::size_t i : {0U, 1U}) {
    const BOUNDS box = Graphics().at(i);
    EXPECT_NEAR(box.xmin, static_cast<double>(i) * 5 * Inch, 1e-3);
    EXPECT_NEAR(box.xmax - box.xmin, 3 * Inch, 1e-3);
    EXPECT_NEAR(box.ymin, 20 - 3 * Inch, 1e-3);
    EXPECT_NEAR(box.ymax - box.ymin, 1.5 * Inch, 1e-3);
  }
}

// --- Rotation ---

TEST_F(CroLayoutTest, a_quarter_turn_lays_content_out_across_and_turns_it_on_its_plate) {
  ASSERT_TRUE(Cro(Size("2", "4") + "<ROTATION>90</ROTATION>" +
                  Graphic("a", "<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><ORIGIN>top left</ORIGIN>") +
                  Plates({"<TEXT>il</TEXT><GRAPHIC>a</GRAPHIC>"})));
  ExpectRect(Panes().at(0), {0, 20, 2 * Inch, 20 - 4 * Inch});
  // A line across 4 inches has the 2 inches of the plate's width for its height.
  EXPECT_NEAR(SizeOf(Text(0).lines.at(0)), 2 * Inch / LineRoom, Near);
  EXPECT_NEAR(Text(0).frame.right - Text(0).frame.left, 4 * Inch, Near);
  const BOUNDS text = Doc().Bounds(Doc().Members(host::DocumentRoot).back());
  EXPECT_NEAR(text.xmin, 0, Near);
  EXPECT_NEAR(text.xmax, 2 * Inch, Near);
  EXPECT_NEAR(text.ymin, 20 - 4 * Inch, Near);
  EXPECT_NEAR(text.ymax, 20, Near);
  // The content's top left corner is the plate's bottom left one.
  const BOUNDS graphic = Graphics().at(0);
  EXPECT_NEAR(graphic.xmin, 0, Near);
  EXPECT_NEAR(graphic.xmax, 0.5 * Inch, Near);
  EXPECT_NEAR(graphic.ymin, 20 - 4 * Inch, Near);
  EXPECT_NEAR(graphic.ymax, 20 - 3 * Inch, Near);
}

TEST_F(CroLayoutTest, half_a_turn_puts_the_content_on_its_head) {
  ASSERT_TRUE(Cro(Size("4", "2") + "<ROTATION>-180</ROTATION>" +
                  Graphic("a", "<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><ORIGIN>top left</ORIGIN>") +
                  Plates({"<TEXT>il</TEXT><GRAPHIC>a</GRAPHIC>"})));
  EXPECT_NEAR(Graphics().at(0).xmax, 4 * Inch, Near);
  EXPECT_NEAR(Graphics().at(0).ymin, 20 - 2 * Inch, Near);
  EXPECT_EQ(All<TextShape>().at(0)->attributes.matrix.a, -1);
}

TEST_F(CroLayoutTest, text_turned_by_any_other_angle_stays_on_its_plate) {
  ASSERT_TRUE(Cro(Size("4", "2") + "<ROTATION>30</ROTATION>" + Plates({"", "<TEXT>il</TEXT>"})));
  const BOUNDS text = Doc().Bounds(Doc().Members(host::DocumentRoot).back());
  EXPECT_NEAR((text.xmin + text.xmax) / 2, 6 * Inch, Near);
  EXPECT_NEAR((text.ymin + text.ymax) / 2, 20 - 1 * Inch, Near);
  EXPECT_GE(text.xmin, 4 * Inch - Near);
  EXPECT_GE(text.ymin, 20 - 2 * Inch - Near);
}

TEST_F(CroLayoutTest, a_rotation_that_is_no_angle_turns_nothing) {
  ASSERT_TRUE(Cro(Size("4", "2") + "<ROTATION>1e999</ROTATION>" + Plates({"<TEXT>il</TEXT>"})));
  EXPECT_EQ(All<TextShape>().at(0)->attributes.matrix, TM());
  EXPECT_EQ(m_Host.GetNotices().Texts(),
            std::vector<std::wstring>{L"the template's rotation is no angle: nothing is turned"});
}

}  // namespace
}  // namespace rastrel::layout
