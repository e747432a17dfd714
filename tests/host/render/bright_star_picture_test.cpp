// BrightStar templates from file to picture: each frame lies where its origin puts it, in the
// document and in the drawn page.

#include "rastrel/imports/bright_star_xml_import.h"

#include <array>
#include <variant>

#include "host/document_host.h"
#include "rastrel/platform/host/host.h"
#include "tests/host/render/drawn_document.h"
#include "tests/support/library_fixture.h"

namespace rastrel::render {
namespace {

constexpr double Hundredth = 0.01;   // millimetres
constexpr double Inch = 25.4;        // millimetres
constexpr double Width = 6 * Inch;   // of the blank
constexpr double Height = 4 * Inch;  // of the blank

struct Rectangle {
  double left = 0;
  double bottom = 0;
  double right = 0;
  double top = 0;
};

/// A frame in inches as the file has it.
struct FileFrame {
  double upperX = 0;
  double upperY = 0;
  double lowerX = 0;
  double lowerY = 0;
};

/// Where a frame lies on the blank, by geometry: an origin is a point of the blank in thirds, x
/// counts to the left from the right side and else to the right, y upward from the bottom and else
/// downward.
Rectangle Expected(const FileFrame& frame, int origin) {
  const int column = (origin - 1) % 3;
  const int row = (origin - 1) / 3;
  const double originX = Width / 2 * column;
  const double originY = Height - Height / 2 * row;
  const double xSign = column == 2 ? -1 : 1;
  const double ySign = row == 2 ? 1 : -1;
  const auto [left, right] =
      std::minmax({originX + xSign * frame.upperX * Inch, originX + xSign * frame.lowerX * Inch});
  const auto [bottom, top] =
      std::minmax({originY + ySign * frame.upperY * Inch, originY + ySign * frame.lowerY * Inch});
  return {.left = left, .bottom = bottom, .right = right, .top = top};
}

constexpr std::array<const char*, 9> OriginTexts{"TOP LEFT",    "TOP CENTER",   "TOP RIGHT",
                                                 "LEFT CENTER", "CENTER",       "RIGHT CENTER",
                                                 "LOWER LEFT",  "LOWER CENTER", "LOWER RIGHT"};

/// A frame that lies on the blank from that origin, one by half an inch.
FileFrame FrameFor(int origin) {
  const bool isMiddleColumn = (origin - 1) % 3 == 1;
  const bool isBottomRow = origin >= 7;
  FileFrame frame;
  frame.upperX = isMiddleColumn ? -1.25 : 0.75;
  frame.lowerX = frame.upperX + 2;
  frame.upperY = isBottomRow ? 1.5 : 0.5;
  frame.lowerY = isBottomRow ? 0.5 : 1.5;
  return frame;
}

class BrightStarPicture : public testing::Test {
 protected:
  BrightStarPicture() { host::SetHost(&m_Host); }
  ~BrightStarPicture() override { host::SetHost(nullptr); }

  void Import(const std::string& children) {
    m_Scratch.Write("template.xml", "<B><ENGRAVINGTEMPLATE><WIDTH>6</WIDTH><HEIGHT>4</HEIGHT>" +
                                        children + "</ENGRAVINGTEMPLATE></B>");
    const std::wstring path = m_Scratch.Wide("template.xml");
    CBrightStarXMLImport importer(path.c_str());
    ASSERT_EQ(importer.ImportXMLFile(), 1);
    EXPECT_EQ(m_Host.StillOpen(), document::DocumentHost::OpenWork());
  }
  static std::string FrameElement(const FileFrame& frame, const std::string& justification) {
    const auto number = [](double value) { return std::to_string(value); };
    return "<TEXTFRAME UPPERXLOC='" + number(frame.upperX) + "' UPPERYLOC='" +
           number(frame.upperY) + "' LOWERXLOC='" + number(frame.lowerX) + "' LOWERYLOC='" +
           number(frame.lowerY) + "'><FONT name='DejaVuSans.ttf' size='0.2' justification='" +
           justification + "'/><LINE>PUMP</LINE></TEXTFRAME>";
  }
  /// The frame of the document's last text, in millimetres.
  Rectangle LastFrame() {
    const auto members = m_Host.GetDocument().Members(host::DocumentRoot);
    const auto& shape =
        std::get<document::TextShape>(m_Host.GetDocument().Find(members.back())->shape);
    return {.left = shape.frame.left * 10,
            .bottom = shape.frame.bottom * 10,
            .right = shape.frame.right * 10,
            .top = shape.frame.top * 10};
  }
  /// The lines of text on the drawn page: x, y, length and size of each, in millimetres.
  std::vector<std::vector<double>> Texts() {
    const auto images = DrawDocument({m_Host.GetDocument(), m_Host.GetFonts(), m_Host.GetNotices()},
                                     ImageFormat::Svg, {});
    if (!images) {
      ADD_FAILURE() << Describe(images.Error());
      return {};
    }
    m_Scratch.Write("page.svg", images->front());
    std::istringstream lines(test::Output("python3 -B '" RASTREL_SOURCE_DIR
                                          "/tests/host/render/measure_svg.py' '" +
                                          m_Scratch.Path("page.svg") + "'"));
    std::vector<std::vector<double>> texts;
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with("text")) texts.push_back(test::Numbers(line));
    return texts;
  }

  test::LibraryRoot m_Library;
  test::ScratchDirectory m_Scratch;
  document::DocumentHost m_Host;
};

class BrightStarOrigins : public BrightStarPicture, public testing::WithParamInterface<int> {};

TEST_P(BrightStarOrigins, a_frame_lies_inward_from_its_origin_with_its_text_in_it) {
  const int origin = GetParam();
  const FileFrame frame = FrameFor(origin);
  Import("<ORIGIN>" + std::string(OriginTexts.at(static_cast<std::size_t>(origin) - 1)) +
         "</ORIGIN>" + FrameElement(frame, "Left") + FrameElement(frame, "Right"));
  const Rectangle expected = Expected(frame, origin);
  const Rectangle found = LastFrame();
  EXPECT_NEAR(found.left, expected.left, Hundredth);
  EXPECT_NEAR(found.right, expected.right, Hundredth);
  EXPECT_NEAR(found.bottom, expected.bottom, Hundredth);
  EXPECT_NEAR(found.top, expected.top, Hundredth);
  const auto texts = Texts();
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_NEAR(texts[0].at(0), expected.left, Hundredth);
  EXPECT_NEAR(texts[1].at(0) + texts[1].at(2), expected.right, Hundredth);
  for (const auto& text : texts) {
    EXPECT_GT(text.at(1), expected.bottom);
    EXPECT_LT(text.at(1), expected.top);
  }
}

INSTANTIATE_TEST_SUITE_P(EachCode, BrightStarOrigins, testing::Range(1, 10));

TEST_F(BrightStarPicture, the_blank_has_the_size_and_origin_of_the_template) {
  Import("<ORIGIN>LOWER CENTER</ORIGIN>");
  const auto& blank = m_Host.GetDocument().Blank();
  EXPECT_NEAR(blank.width * 10, Width, Hundredth);
  EXPECT_NEAR(blank.height * 10, Height, Hundredth);
  EXPECT_EQ(blank.origin, 8);
}

TEST_F(BrightStarPicture, lines_go_down_the_frame_and_an_empty_one_keeps_its_place) {
  Import(
      "<ORIGIN>TOP LEFT</ORIGIN><TEXTFRAME UPPERXLOC='1' UPPERYLOC='0.5' LOWERXLOC='5'"
      " LOWERYLOC='3.5'><FONT name='DejaVuSans.ttf' size='0.25' justification='Center'/>"
      "<LINE>ONE</LINE><LINE/><LINE>THREE</LINE></TEXTFRAME>");
  const auto texts = Texts();
  ASSERT_EQ(texts.size(), 2U);
  const double center = 3 * Inch;
  for (const auto& text : texts) EXPECT_NEAR(text.at(0) + text.at(2) / 2, center, Hundredth);
  // Two lines down: more than the height of one and a half.
  EXPECT_GT(texts[0].at(1) - texts[1].at(1), 1.5 * 0.25 * Inch);
}

TEST_F(BrightStarPicture, a_frame_without_area_is_left_out_and_the_next_one_is_there) {
  Import("<ORIGIN>LOWER LEFT</ORIGIN>" + FrameElement({1, 1, 1, 1}, "Left") +
         FrameElement({1, 2, 3, 1}, "Left"));
  EXPECT_EQ(m_Host.GetDocument().Members(host::DocumentRoot).size(), 1U);
  EXPECT_EQ(Texts().size(), 1U);
}

TEST_F(BrightStarPicture,
       a_blank_and_a_frame_beyond_all_measure_are_refused_and_the_next_one_is_there) {
  const auto before = m_Host.GetDocument().Blank();
  Import(
      "<WIDTH>1e999</WIDTH><HEIGHT>-3</HEIGHT><ORIGIN>LOWER LEFT</ORIGIN>"
      "<TEXTFRAME UPPERXLOC='1e999' UPPERYLOC='1' LOWERXLOC='-1e999' LOWERYLOC='2'>"
      "<FONT name='DejaVuSans.ttf' size='1e999'/><LINE>A</LINE></TEXTFRAME>" +
      FrameElement(FrameFor(7), "Left"));
  EXPECT_EQ(m_Host.GetDocument().Blank().width, before.width);
  EXPECT_EQ(m_Host.GetDocument().Blank().height, before.height);
  EXPECT_EQ(Texts().size(), 1U);
}

}  // namespace
}  // namespace rastrel::render
