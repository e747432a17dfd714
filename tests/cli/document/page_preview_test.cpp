#include "cli/document/page_preview.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>

#include "cli/document/preview_picture.h"
#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/values/world.h"
#include "tests/conversion/queue_fixture.h"

namespace rastrel::cli {
namespace {

using host::PreviewPicture;

// The color of a pixel as RRGGBB.
unsigned PixelAt(const PreviewPicture& picture, int x, int y) {
  const auto at = (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                   static_cast<std::size_t>(x)) *
                  4;
  const auto part = [&](std::size_t which) {
    return static_cast<unsigned>(picture.bgra.at(at + which));
  };
  return part(2) << 16 | part(1) << 8 | part(0);
}

constexpr unsigned White = 0xFFFFFF;
constexpr unsigned Magenta = 0xFF00FF;

PreviewPicture WhitePicture(int width, int height) {
  return {
      .width = width,
      .height = height,
      .bgra = std::vector<std::byte>(
          static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, std::byte{255}),
      .note = {}};
}

std::size_t CountOf(const PreviewPicture& picture, unsigned color) {
  std::size_t count = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) count += PixelAt(picture, x, y) == color ? 1 : 0;
  }
  return count;
}

TEST(PictureFromNetpbm, has_the_file_s_pixels_blue_first) {
  const auto picture =
      PictureFromNetpbm(std::string("P6\n2 1\n255\n\x01\x02\x03\xff\x80\x00", 17) + "rest");
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 2);
  EXPECT_EQ(picture->height, 1);
  EXPECT_EQ(PixelAt(*picture, 0, 0), 0x010203U);
  EXPECT_EQ(PixelAt(*picture, 1, 0), 0xFF8000U);
  EXPECT_EQ(picture->bgra[3], std::byte{255}) << "opaque";
}

TEST(PictureFromNetpbm, files_of_another_form_have_no_picture) {
  const std::string pixels(12, 'x');
  EXPECT_TRUE(PictureFromNetpbm("P6 2 2 255\n" + pixels));
  EXPECT_FALSE(PictureFromNetpbm("P6 2 2 255\n" + pixels.substr(1))) << "one byte too few";
  EXPECT_FALSE(PictureFromNetpbm("P5 2 2 255\n" + pixels));
  EXPECT_FALSE(PictureFromNetpbm("P6 2 2 254\n" + pixels));
  EXPECT_FALSE(PictureFromNetpbm("P6 0 2 255\n" + pixels));
  EXPECT_FALSE(PictureFromNetpbm("P6 -2 2 255\n" + pixels));
  EXPECT_FALSE(PictureFromNetpbm("P6 4097 1 255\n" + std::string(4097 * 3, 'x')));
  EXPECT_TRUE(PictureFromNetpbm("P6 4096 1 255\n" + std::string(4096 * 3, 'x')));
  EXPECT_FALSE(PictureFromNetpbm("P6 99999999999 99999999999 255\n" + pixels));
  for (const char* const cut : {"", "P6", "P6 ", "P6 2", "P6 2 2", "P6 2 2 255"})
    EXPECT_FALSE(PictureFromNetpbm(cut)) << cut;
}

CCutObjects PathOf(std::initializer_list<std::array<double, 2>> points, bool closed) {
  PolyReference<conversion::SubPoly> subPoly(new conversion::SubPoly);
  for (const auto& [x, y] : points) subPoly->vertices.emplace_back(x, y, 0, 0, 0);
  subPoly->closed = closed ? 1 : 0;
  conversion::SubPolyEntry entry;
  entry.subPoly = subPoly;
  PolyReference<conversion::Polygon> polygon(new conversion::Polygon);
  polygon->entries.push_back(entry);
  conversion::CutObject object;
  object.polygons = PolyReference<conversion::Polygons>(new conversion::Polygons);
  object.polygons->polygons.push_back(polygon);
  CCutObjects objects;
  objects.m_Objects.push_back(object);
  return objects;
}

// One centimetre is 100 pixels.
constexpr int Resolution = 254;

TEST(DrawCutLines, a_path_is_drawn_from_the_top_left_corner_downward) {
  PreviewPicture picture = WhitePicture(100, 60);
  DrawCutLines(PathOf({{0.1, -0.2}, {0.9, -0.2}, {0.9, -0.5}}, false), Resolution, picture);
  EXPECT_EQ(PixelAt(picture, 10, 20), Magenta);
  EXPECT_EQ(PixelAt(picture, 50, 20), Magenta);
  EXPECT_EQ(PixelAt(picture, 90, 35), Magenta);
  EXPECT_EQ(PixelAt(picture, 50, 35), White) << "the path is open";
  EXPECT_EQ(PixelAt(picture, 8, 20), White);
}

TEST(DrawCutLines, a_closed_path_ends_at_its_first_point) {
  PreviewPicture picture = WhitePicture(100, 60);
  DrawCutLines(PathOf({{0.1, -0.1}, {0.9, -0.1}, {0.9, -0.5}, {0.1, -0.5}}, true), Resolution,
               picture);
  EXPECT_EQ(PixelAt(picture, 10, 30), Magenta);
}

TEST(DrawCutLines, points_outside_the_picture_and_no_numbers_draw_nothing_there) {
  constexpr double Far = 1e300;
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  const double none = std::nan("");
  PreviewPicture picture = WhitePicture(100, 60);
  DrawCutLines(PathOf({{-5, 5}, {-4, 5}, {none, -0.3}, {0.5, -Infinity}, {-Far, 3}}, false),
               Resolution, picture);
  EXPECT_EQ(CountOf(picture, Magenta), 0U);
  DrawCutLines(PathOf({{-50, -0.3}, {50, -0.3}}, false), Resolution, picture);
  EXPECT_EQ(CountOf(picture, Magenta), 200U) << "2 rows of 100";
  DrawCutLines(PathOf({}, true), Resolution, picture);
  DrawCutLines(CCutObjects(), Resolution, picture);
  EXPECT_EQ(CountOf(picture, Magenta), 200U);
}

// A view of the conversion's dialog with these values.
class ValuesView : public host::DialogView {
 public:
  void SetText(int, const std::wstring&) override {}
  void SetRange(int, int, int) override {}
  void SetPosition(int, int) override {}
  void RunModal() override {}
  host::ControlValue GetValue(int control) override { return m_Values[control]; }

  std::map<int, host::ControlValue> m_Values{{CPS2BmpDlg::WidthEdit, 2.54},
                                             {CPS2BmpDlg::HeightEdit, 1.27},
                                             {CPS2BmpDlg::CutLineCheckBox, false},
                                             {CPS2BmpDlg::RgbRadio, true}};
};

class PagePreviewTest : public test::QueueTest {
 protected:
  PagePreviewTest() {
    Root().Write("job/sign.eps",
                 "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 36\n%%EndComments\n"
                 "0 0 1 setrgbcolor 0 0 36 36 rectfill\n"
                 "1 0 0 setrgbcolor 45 9 18 18 rectstroke showpage\n");
    m_Files = Files();
  }
  // The real queue program, with its prolog.
  void UseQueueProgram() {
    std::filesystem::remove_all(Root().Path("Queue/rip/System/prolog"));
    std::filesystem::create_directory_symlink(RASTREL_SOURCE_DIR "/share/rip/System/prolog",
                                              Root().Path("Queue/rip/System/prolog"));
    std::filesystem::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/JobSpool.exe",
                               Root().Path("Queue/JobSpool.exe"));
  }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Root().Path("Queue/rip")))
      if (entry.path().extension() != ".log") names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }
  static std::optional<PreviewPicture> Next(PagePreview& preview) {
    for (int round = 0; round < 600; ++round) {
      const std::array<HANDLE, 1> ready{preview.GetReadyHandle()};
      static_cast<void>(
          os::WaitReadable(ready, os::Deadline::After(std::chrono::milliseconds(100))));
      if (auto picture = preview.Take()) return picture;
    }
    ADD_FAILURE() << "no picture came";
    return std::nullopt;
  }

  std::vector<std::string> m_Files;
  ValuesView m_View;
};

TEST_F(PagePreviewTest, draws_the_page_as_large_as_the_view_wants_it) {
  UseQueueProgram();
  PagePreview preview(Root().Path("job/sign.eps"));
  preview.Request(m_View, 200, 200);
  const auto picture = Next(preview);
  ASSERT_TRUE(picture);
  // An inch by half an inch: 200 pixels per inch fit.
  EXPECT_EQ(picture->width, 200);
  EXPECT_EQ(picture->height, 100);
  EXPECT_EQ(PixelAt(*picture, 20, 50), 0x0000FFU);
  EXPECT_EQ(PixelAt(*picture, 110, 50), White);
  EXPECT_EQ(CountOf(*picture, Magenta), 0U);
  EXPECT_EQ(picture->note, L"");
  EXPECT_EQ(Files(), m_Files) << "nothing is left";
}

TEST_F(PagePreviewTest, draws_the_cut_line_over_the_page) {
  UseQueueProgram();
  PagePreview preview(Root().Path("job/sign.eps"));
  m_View.m_Values[CPS2BmpDlg::CutLineCheckBox] = true;
  m_View.m_Values[CPS2BmpDlg::RgbPicker] = host::PickedColor{host::PickerType::Rgb, {255, 0, 0}};
  preview.Request(m_View, 144, 144);
  auto picture = Next(preview);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->note, L"The cut line is drawn in magenta.");
  EXPECT_EQ(CountOf(*picture, 0xFF0000), 0U) << "the path is no part of the picture";
  // 36 pixels a side, two pixels wide.
  EXPECT_NEAR(static_cast<double>(CountOf(*picture, Magenta)), 4 * 36 * 2, 20);
  EXPECT_EQ(PixelAt(*picture, 90, 36), Magenta) << "the left side";
  m_View.m_Values[CPS2BmpDlg::RgbPicker] = host::PickedColor{host::PickerType::Rgb, {0, 255, 0}};
  preview.Request(m_View, 144, 144);
  picture = Next(preview);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->note, L"Nothing has the colour of the cut line.");
  EXPECT_EQ(CountOf(*picture, Magenta), 0U);
  EXPECT_EQ(Files(), m_Files);
}

TEST_F(PagePreviewTest, draws_the_cut_line_of_a_named_color) {
  UseQueueProgram();
  Root().Write("job/sign.eps",
               "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 36\n%%EndComments\n"
               "[/Separation (Kiss cut) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor\n"
               "45 9 18 18 rectstroke showpage\n");
  PagePreview preview(Root().Path("job/sign.eps"));
  m_View.m_Values[CPS2BmpDlg::CutLineCheckBox] = true;
  m_View.m_Values[CPS2BmpDlg::RgbRadio] = false;
  m_View.m_Values[CPS2BmpDlg::NamedRadio] = true;
  m_View.m_Values[CPS2BmpDlg::ColorNames] = std::wstring(L"Kiss cut");
  preview.Request(m_View, 144, 144);
  const auto picture = Next(preview);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->note, L"The cut line is drawn in magenta.");
  EXPECT_NEAR(static_cast<double>(CountOf(*picture, Magenta)), 4 * 36 * 2, 20);
}

TEST_F(PagePreviewTest, draws_the_last_of_the_requests_that_come_during_a_run) {
  Queue(
      "echo run >>\"$RASTREL_HOME/runs\"\nname=\"${3%.ps}\"\nmkdir \"$name.cfm\"\n"
      "printf 'P6 1 1 255\\nabc' >\"$name.cfm/page.ppm\"\n");
  PagePreview preview(Root().Path("job/sign.eps"));
  for (const double width : {1.0, 2.0, 3.0, 4.0}) {
    m_View.m_Values[CPS2BmpDlg::WidthEdit] = width;
    preview.Request(m_View, 200, 200);
  }
  preview.Request(m_View, 200, 200);  // the same again
  EXPECT_TRUE(Next(preview));
  EXPECT_TRUE(Next(preview));
  preview.Request(m_View, 200, 200);
  EXPECT_FALSE(preview.Take());
  EXPECT_EQ(Root().Read("runs"), "run\nrun\n");
  EXPECT_EQ(Files(), m_Files);
}

TEST_F(PagePreviewTest, says_so_where_there_is_no_picture) {
  Queue("exit 1\n");
  PagePreview preview(Root().Path("job/sign.eps"));
  preview.Request(m_View, 200, 200);
  auto picture = Next(preview);
  ASSERT_TRUE(picture);
  EXPECT_TRUE(picture->bgra.empty());
  EXPECT_EQ(picture->note, L"There is no preview.");
  PagePreview missing(Root().Path("job/none.eps"));
  missing.Request(m_View, 200, 200);
  picture = Next(missing);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->note, L"There is no preview.");
  EXPECT_EQ(Files(), m_Files);
}

TEST_F(PagePreviewTest, a_page_of_too_many_pixels_is_not_drawn) {
  Queue("touch \"$RASTREL_HOME/runs\"\n");
  PagePreview preview(Root().Path("job/sign.eps"));
  m_View.m_Values[CPS2BmpDlg::WidthEdit] = 1e9;
  preview.Request(m_View, 200, 200);
  const auto picture = Next(preview);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->note, L"There is no preview.");
  EXPECT_FALSE(std::filesystem::exists(Root().Path("runs")));
}

TEST_F(PagePreviewTest, its_end_ends_a_run_and_leaves_nothing) {
  Queue(test::Hang);
  {
    PagePreview preview(Root().Path("job/sign.eps"));
    preview.Request(m_View, 200, 200);
    EXPECT_FALSE(preview.Take());
  }
  EXPECT_FALSE(test::HasChildren());
  EXPECT_EQ(Files(), m_Files);
}

}  // namespace
}  // namespace rastrel::cli
