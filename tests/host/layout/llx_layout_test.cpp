#include <cmath>

#include "tests/host/graphics/graphic_files.h"
#include "tests/host/layout/laid_out_template.h"

namespace rastrel::layout {
namespace {

using document::ArcTextShape;
using document::PlateShape;
using test::ExpectRect;

constexpr double Inch = 2.54;
constexpr double Near = 1e-6;
// Of measured drawings, in millimetres.
constexpr double Hundredth = 0.01;

class LlxLayoutTest : public test::LaidOutTemplate {
 protected:
  // 20 by 10 dots at 2835 dots a metre: 0.70547 by 0.35273 cm.
  LlxLayoutTest() { m_Directory.Write("dot.png", test::PngFile(2835, 2835, 1)); }

  static std::string Arc(const std::string& children) {
    return "<ARCTEXT><RADIUS>1</RADIUS><HEIGHT>0.2</HEIGHT><TEXT>Rim</TEXT>" + children +
           "</ARCTEXT>";
  }
  static std::string Graphic(const std::string& children) {
    return "<GRAPHIC><FILE>dot.png</FILE>" + children + "</GRAPHIC>";
  }
  [[nodiscard]] ArcTextShape OnlyArc() {
    const auto texts = All<ArcTextShape>();
    EXPECT_EQ(texts.size(), 1U);
    return texts.empty() ? ArcTextShape() : std::get<ArcTextShape>(texts[0]->shape);
  }

  const std::string m_Size = "<WIDTH>4</WIDTH><HEIGHT>3</HEIGHT>";
};

TEST_F(LlxLayoutTest, the_plate_is_the_blank_and_one_pane_that_covers_it) {
  ASSERT_TRUE(Llx(m_Size + "<ORIGIN>top right</ORIGIN>"));
  EXPECT_EQ(Doc().Blank(), (document::SignBlank{4 * Inch, 3 * Inch, 3}));
  ASSERT_EQ(Panes().size(), 1U);
  ExpectRect(Panes()[0], {0, 3 * Inch, 4 * Inch, 0});
  EXPECT_EQ(m_Host.StillOpen(), document::DocumentHost::OpenWork());
  EXPECT_TRUE(m_Host.GetNotices().Texts().empty());
  EXPECT_TRUE(m_Host.GetNotices().Losses().empty());
}

TEST_F(LlxLayoutTest, a_plate_without_an_origin_counts_from_the_bottom_left) {
  ASSERT_TRUE(Llx(m_Size + Arc("<CENTERX>1</CENTERX><CENTERY>0.5</CENTERY>")));
  EXPECT_EQ(Doc().Blank().origin, 7);
  EXPECT_NEAR(OnlyArc().center.x, 1 * Inch, Near);
  EXPECT_NEAR(OnlyArc().center.y, 0.5 * Inch, Near);
}

TEST_F(LlxLayoutTest, a_graphic_without_an_origin_is_in_the_middle) {
  ASSERT_TRUE(Llx(m_Size + Graphic("")));
  ASSERT_EQ(Graphics().size(), 1U);
  const BOUNDS box = Graphics()[0];
  EXPECT_NEAR((box.xmin + box.xmax) / 2, 2 * Inch, Near);
  EXPECT_NEAR((box.ymin + box.ymax) / 2, 1.5 * Inch, Near);
}

// Each row by hand: the graphic is 1 by 0.5 inches on a plate of 4 by 3.
TEST_F(LlxLayoutTest, graphics_are_inward_from_each_origin) {
  const struct {
    const char* origin;
    double left, bottom;
  } rows[] = {
      {"top left", 0.25, 2.375},    {"top center", 1.75, 2.375},    {"top right", 2.75, 2.375},
      {"mid left", 0.25, 1.375},    {"center", 1.75, 1.375},        {"mid right", 2.75, 1.375},
      {"bottom left", 0.25, 0.125}, {"bottom center", 1.75, 0.125}, {"bottom right", 2.75, 0.125}};
  std::string graphics;
  for (const auto& row : rows) {
    graphics += Graphic("<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><X>0.25</X><Y>0.125</Y><ORIGIN>" +
                        std::string(row.origin) + "</ORIGIN>");
  }
  ASSERT_TRUE(Llx(m_Size + graphics));
  const auto measured = Measured("graphic");
  ASSERT_EQ(measured.size(), 9U);
  ASSERT_EQ(Graphics().size(), 9U);
  for (std::size_t i = 0; i < 9; ++i) {
    SCOPED_TRACE(rows[i].origin);
    const BOUNDS box = Graphics()[i];
    EXPECT_NEAR(box.xmin, rows[i].left * Inch, Near);
    EXPECT_NEAR(box.xmax, (rows[i].left + 1) * Inch, Near);
    EXPECT_NEAR(box.ymin, rows[i].bottom * Inch, Near);
    EXPECT_NEAR(box.ymax, (rows[i].bottom + 0.5) * Inch, Near);
    EXPECT_NEAR(measured[i].at(0), rows[i].left * 25.4, Hundredth);
    EXPECT_NEAR(measured[i].at(1), rows[i].bottom * 25.4, Hundredth);
    EXPECT_NEAR(measured[i].at(2), (rows[i].left + 1) * 25.4, Hundredth);
    EXPECT_NEAR(measured[i].at(3), (rows[i].bottom + 0.5) * 25.4, Hundredth);
  }
}

TEST_F(LlxLayoutTest, a_graphic_turns_counter_clockwise_about_its_point) {
  ASSERT_TRUE(Llx(m_Size + Graphic("<WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><ORIGIN>bottom "
                                   "left</ORIGIN><X>2</X><Y>1</Y><ROTATION>90</ROTATION>")));
  const BOUNDS box = Graphics().at(0);
  EXPECT_NEAR(box.xmin, 1.5 * Inch, Near);
  EXPECT_NEAR(box.xmax, 2 * Inch, Near);
  EXPECT_NEAR(box.ymin, 1 * Inch, Near);
  EXPECT_NEAR(box.ymax, 2 * Inch, Near);
}

TEST_F(LlxLayoutTest, a_graphic_without_a_size_has_its_own_and_with_one_side_its_proportions) {
  ASSERT_TRUE(Llx(m_Size + Graphic("") + Graphic("<WIDTH>1</WIDTH>") +
                  Graphic("<HEIGHT>1</HEIGHT>") + Graphic("<WIDTH>0.25</WIDTH>") +
                  Graphic("<HEIGHT>0.25</HEIGHT>")));
  const double widths[] = {20 / 28.35, 1 * Inch, 2 * Inch, 0.25 * Inch, 0.5 * Inch};
  ASSERT_EQ(Graphics().size(), 5U);
  for (std::size_t i = 0; i < 5; ++i) {
    const BOUNDS box = Graphics()[i];
    EXPECT_NEAR(box.xmax - box.xmin, widths[i], 1e-3);
    EXPECT_NEAR(box.ymax - box.ymin, widths[i] / 2, 1e-3);
  }
}

TEST_F(LlxLayoutTest, a_file_that_several_graphics_name_is_resolved_and_kept_once) {
  ASSERT_TRUE(Llx(m_Size + Graphic("") + Graphic("<X>1</X>") + Graphic("<X>-1</X>")));
  EXPECT_EQ(m_Resolved, (std::vector<std::wstring>{L"dot.png"}));
  const std::string svg = DrawSvg();
  EXPECT_EQ(svg.find("<image"), svg.rfind("<image"));
  EXPECT_EQ(Graphics().size(), 3U);
}

TEST_F(LlxLayoutTest, graphics_that_can_not_be_had_are_left_out_and_named_once) {
  ASSERT_TRUE(Llx(m_Size +
                  "<GRAPHIC><FILE>none.svg</FILE></GRAPHIC><GRAPHIC><FILE>none.svg</FILE></GRAPHIC>"
                  "<GRAPHIC><FILE>../out.svg</FILE></GRAPHIC>" +
                  Graphic("<WIDTH>-1</WIDTH>") + Graphic("<X>1e30</X>") + Graphic("")));
  EXPECT_EQ(Graphics().size(), 1U) << "the one that is right";
  const auto& losses = m_Host.GetNotices().Losses();
  ASSERT_EQ(losses.size(), 4U);
  EXPECT_NE(losses[0].find(L"none.svg can't be placed"), std::wstring::npos);
  EXPECT_EQ(losses[1], L"the graphic file \"../out.svg\": it is outside");
  EXPECT_EQ(losses[2],
            L"the graphic 4, \"dot.png\": its place or size is none that a plate could have");
}

TEST_F(LlxLayoutTest, text_on_a_circle_is_measured_where_the_file_puts_it) {
  ASSERT_TRUE(Llx(m_Size + "<ORIGIN>center</ORIGIN>" +
                  Arc("<CENTERX>0.5</CENTERX><CENTERY>0.25</CENTERY><ROTATION>30</ROTATION>"
                      "<JUSTIFY>left</JUSTIFY><FONT>DejaVuSans.ttf</FONT>")));
  const auto rows = Measured("arc-text");
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_NEAR(rows[0].at(0), 2.5 * 25.4, Hundredth);
  EXPECT_NEAR(rows[0].at(1), 1.75 * 25.4, Hundredth);
  EXPECT_NEAR(rows[0].at(2), 25.4, Hundredth);
  EXPECT_NEAR(rows[0].at(3), 30, 0.02);
  // R, i and m of DejaVu Sans: 1423, 569 and 1995 of 2048 units, and the size is 0.2 inches.
  EXPECT_NEAR(rows[0].at(4), (1423 + 569 + 1995) / 2048.0 * 0.2 * 25.4, 0.02);
  EXPECT_NEAR(rows[0].at(5), 0.2 * 25.4, Hundredth);
}

TEST_F(LlxLayoutTest, the_center_counts_inward_from_the_plates_origin) {
  const struct {
    const char* origin;
    double x, y;
  } rows[] = {{"top left", 1, 2.5},    {"top center", 3, 2.5},    {"top right", 3, 2.5},
              {"mid left", 1, 2},      {"center", 3, 2},          {"mid right", 3, 2},
              {"bottom left", 1, 0.5}, {"bottom center", 3, 0.5}, {"bottom right", 3, 0.5}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.origin);
    document::DocumentHost host;
    m_Directory.Write("a.llx", "<LLX><ENGRAVINGTEMPLATE><PLATE>" + m_Size + "<ORIGIN>" +
                                   row.origin + "</ORIGIN>" +
                                   Arc("<CENTERX>1</CENTERX><CENTERY>0.5</CENTERY>") +
                                   "</PLATE></ENGRAVINGTEMPLATE></LLX>");
    const CLLXFileImport file(m_Directory.Wide("a.llx").c_str(), nullptr);
    ASSERT_TRUE(ImportLlx(file, host, {}));
    const auto& members = host.GetDocument().Members(host::DocumentRoot);
    ASSERT_EQ(members.size(), 2U);
    const auto& arc = std::get<ArcTextShape>(host.GetDocument().Find(members[1])->shape);
    EXPECT_NEAR(arc.center.x, row.x * Inch, Near);
    EXPECT_NEAR(arc.center.y, row.y * Inch, Near);
  }
}

TEST_F(LlxLayoutTest, a_text_without_a_font_is_set_in_the_usual_one_without_a_notice) {
  ASSERT_TRUE(Llx(m_Size + Arc("")));
  EXPECT_EQ(OnlyArc().run.font, L"DejaVu Sans");
  EXPECT_TRUE(m_Host.GetNotices().Texts().empty());
}

TEST_F(LlxLayoutTest, line_ends_within_a_text_on_a_circle_are_blanks) {
  ASSERT_TRUE(Llx(m_Size + "<ARCTEXT><RADIUS>1</RADIUS><HEIGHT>0.25</HEIGHT>"
                           "<TEXT>a&#13;b&#10;c</TEXT></ARCTEXT>"));
  EXPECT_EQ(OnlyArc().run.text, L"a b c");
}

TEST_F(LlxLayoutTest, a_missing_font_is_replaced_with_a_notice) {
  ASSERT_TRUE(Llx(m_Size + Arc("<FONT>NoSuchFont.ttf</FONT>")));
  EXPECT_EQ(OnlyArc().run.font, L"NoSuchFont");
  EXPECT_EQ(OnlyArc().run.replacement, L"DejaVu Sans");
  ASSERT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Texts()[0],
            L"the font \"NoSuchFont\" can't be had; DejaVu Sans stands in for it");
}

TEST_F(LlxLayoutTest, a_text_whose_font_is_refused_is_left_out) {
  m_Host.CancelMissingFonts(true);
  ASSERT_TRUE(Llx(m_Size + Arc("<FONT>NoSuchFont</FONT>")));
  EXPECT_TRUE(All<ArcTextShape>().empty());
  ASSERT_EQ(m_Host.GetNotices().Losses().size(), 2U);
  EXPECT_EQ(m_Host.GetNotices().Losses()[1], L"the text on a circle 1, \"Rim\" has no font");
}

TEST_F(LlxLayoutTest, a_text_longer_than_its_circle_is_squeezed_with_a_notice) {
  ASSERT_TRUE(Llx(m_Size + "<ARCTEXT><RADIUS>0.1</RADIUS><HEIGHT>0.5</HEIGHT>"
                           "<TEXT>MMMM</TEXT></ARCTEXT>"));
  ASSERT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  // Four letters M, 1767 of 2048 units each, of 1.27 cm: 4.383 cm; the circle is 1.596 cm.
  const std::wstring& notice = m_Host.GetNotices().Texts()[0];
  EXPECT_EQ(notice.find(L"the text on a circle 1, \"MMMM\" is 4.38"), 0U);
  EXPECT_NE(notice.find(L" cm long and its circle 1.59593 cm: its letters are squeezed to 36.4 "
                        L"percent of their width"),
            std::wstring::npos);
}

TEST_F(LlxLayoutTest, texts_without_a_circle_or_a_size_are_left_out_and_named) {
  const char* faults[] = {
      "<RADIUS>0</RADIUS>",      "<RADIUS>-1</RADIUS>",  "<RADIUS>1e30</RADIUS>",
      "<HEIGHT>0</HEIGHT>",      "<HEIGHT>-2</HEIGHT>",  "<HEIGHT>1e30</HEIGHT>",
      "<CENTERX>1e30</CENTERX>", "<RADIUS>nan</RADIUS>", "<RADIUS>inf</RADIUS>"};
  std::string texts;
  for (const char* fault : faults) texts += Arc(fault);
  ASSERT_TRUE(Llx(m_Size + texts + Arc("<TEXT>right</TEXT>")));
  EXPECT_EQ(All<ArcTextShape>().size(), 1U);
  const auto& losses = m_Host.GetNotices().Losses();
  ASSERT_EQ(losses.size(), std::size(faults));
  EXPECT_EQ(losses[1],
            L"the text on a circle 2, \"Rim\": its radius is -1 inches, which no circle has");
  EXPECT_EQ(losses[3],
            L"the text on a circle 4, \"Rim\": its height is 0 inches, which no letter has");
}

TEST_F(LlxLayoutTest, a_text_longer_than_the_maximum_is_cut_off_with_a_notice) {
  for (const std::size_t length : {document::MaximumArcText, document::MaximumArcText + 1}) {
    document::DocumentHost host;
    m_Directory.Write("a.llx", "<LLX><ENGRAVINGTEMPLATE><PLATE>" + m_Size +
                                   "<ARCTEXT><RADIUS>100</RADIUS><HEIGHT>0.1</HEIGHT><TEXT>" +
                                   std::string(length, 'i') +
                                   "</TEXT></ARCTEXT></PLATE></ENGRAVINGTEMPLATE></LLX>");
    const CLLXFileImport file(m_Directory.Wide("a.llx").c_str(), nullptr);
    ASSERT_TRUE(ImportLlx(file, host, {}));
    EXPECT_EQ(host.GetNotices().Losses().size(), length > document::MaximumArcText ? 1U : 0U);
    const auto& members = host.GetDocument().Members(host::DocumentRoot);
    const auto& arc = std::get<ArcTextShape>(host.GetDocument().Find(members[1])->shape);
    EXPECT_EQ(arc.run.text.size(), document::MaximumArcText);
  }
}

TEST_F(LlxLayoutTest, a_side_that_the_file_does_not_give_is_the_blanks) {
  Doc().SetBlank({25, 12, 7});
  ASSERT_TRUE(Llx("<WIDTH>4</WIDTH>"));
  EXPECT_EQ(Doc().Blank(), (document::SignBlank{4 * Inch, 12, 7}));
  ASSERT_EQ(m_Host.GetNotices().Texts().size(), 1U);
  EXPECT_EQ(m_Host.GetNotices().Texts()[0],
            L"the template gives its plates no height: they are 10.16 by 12 cm, as the blank");
}

TEST_F(LlxLayoutTest, a_size_that_no_plate_can_have_is_refused_and_nothing_changes) {
  const document::SignBlank before = Doc().Blank();
  for (const char* size :
       {"<WIDTH>-4</WIDTH><HEIGHT>3</HEIGHT>", "<WIDTH>4</WIDTH><HEIGHT>1e300</HEIGHT>",
        "<WIDTH>nan</WIDTH><HEIGHT>-1</HEIGHT>"}) {
    const auto done = Llx(size);
    ASSERT_FALSE(done) << size;
    EXPECT_NE(Describe(done.Error()).find("which no plate can be"), std::string::npos)
        << Describe(done.Error());
    EXPECT_EQ(Doc().Blank(), before);
    EXPECT_EQ(Doc().ObjectCount(), 0U);
  }
}

TEST_F(LlxLayoutTest, a_refused_file_changes_nothing) {
  m_Directory.Write("bad.llx", "<LLX/>");
  const CLLXFileImport file(m_Directory.Wide("bad.llx").c_str(), nullptr);
  EXPECT_FALSE(ImportLlx(file, m_Host, Resolver()));
  EXPECT_EQ(Doc().ObjectCount(), 0U);
}

TEST_F(LlxLayoutTest, a_second_template_goes_to_a_page_of_its_own) {
  ASSERT_TRUE(Llx(m_Size + Arc("")));
  ASSERT_TRUE(Llx(m_Size + Arc("") + Graphic("")));
  EXPECT_EQ(Doc().HighestPage(), 2);
  const auto texts = All<ArcTextShape>();
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0]->attributes.pages, (VK_PAGE_RANGE{1, 1}));
  EXPECT_EQ(texts[1]->attributes.pages, (VK_PAGE_RANGE{2, 2}));
  EXPECT_EQ(Doc().Find(Doc().Members(host::DocumentRoot).back())->attributes.pages,
            (VK_PAGE_RANGE{2, 2}));
}

}  // namespace
}  // namespace rastrel::layout
