// Cut lines, from a placed object to the host's points, against the separation that Ghostscript's
// own device paints for the cut line's ink.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "rastrel/conversion/cut/generate_cut_data.h"
#include "tests/children/queue_fixture.h"
#include "tests/conversion/cut/recorded_objects.h"
#include "tests/support/checked_host.h"
#include "tests/support/library_fixture.h"

namespace rastrel::jobspool::testing {
namespace {

constexpr int Resolution = 90;  // of the job, dots per inch
// Pixels of the separation in one of the job, for lines. Text is compared pixel by pixel: its
// letters are fitted to the pixels of the resolution that they are painted at.
constexpr int Finer = 8;
// A page of 300 by 200 points.
constexpr double Width = 300;
constexpr double Height = 200;
constexpr double CentimetresPerPoint = 2.54 / 72;

struct Point {
  double x = 0;
  double y = 0;
};
using Polyline = std::vector<Point>;

// A separation: true where there is ink.
class Plane {
 public:
  // Reads an uncompressed TIFF file of 8 bits a pixel, in which 255 is no ink.
  explicit Plane(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    m_File.assign(std::istreambuf_iterator<char>(file), {});
    if (!m_File.starts_with("II*")) return;
    const std::size_t directory = Number(4, 4);
    std::size_t strips = 0;
    std::size_t offsets = 0;
    for (std::size_t entry = 0; entry < Number(directory, 2); ++entry) {
      const std::size_t at = directory + 2 + 12 * entry;
      const std::size_t value = Number(at + 8, Number(at + 2, 2) == 3 ? 2 : 4);
      switch (Number(at, 2)) {
        case 256: m_Width = value; break;
        case 257: m_Height = value; break;
        case 258: EXPECT_EQ(value, 8U); break;
        case 259: EXPECT_EQ(value, 1U) << "compressed"; break;
        case 273:
          strips = Number(at + 4, 4);
          offsets = strips == 1 ? at + 8 : value;
          break;
        case 278: m_RowsPerStrip = value; break;
        default: break;
      }
    }
    for (std::size_t strip = 0; strip < strips; ++strip) {
      const std::size_t rows = std::min(m_RowsPerStrip, m_Height - strip * m_RowsPerStrip);
      m_Pixels.append(m_File, Number(offsets + 4 * strip, 4), rows * m_Width);
    }
    EXPECT_EQ(m_Pixels.size(), m_Width * m_Height);
  }

  [[nodiscard]] bool IsThere() const { return !m_Pixels.empty(); }
  [[nodiscard]] int Columns() const { return static_cast<int>(m_Width); }
  [[nodiscard]] int Rows() const { return static_cast<int>(m_Height); }
  [[nodiscard]] bool HasInk(int column, int row) const {
    if (column < 0 || row < 0 || column >= Columns() || row >= Rows()) return false;
    return m_Pixels[static_cast<std::size_t>(row) * m_Width + static_cast<std::size_t>(column)] !=
           '\xFF';
  }
  // A pixel with ink beside one without: all of a hairline, and the rim of a fill.
  [[nodiscard]] bool IsEdge(int column, int row) const {
    return HasInk(column, row) && !(HasInk(column - 1, row) && HasInk(column + 1, row) &&
                                    HasInk(column, row - 1) && HasInk(column, row + 1));
  }

 private:
  [[nodiscard]] std::size_t Number(std::size_t at, std::size_t size) const {
    std::size_t number = 0;
    for (std::size_t index = size; index-- > 0;)
      number = number << 8 | static_cast<unsigned char>(m_File.at(at + index));
    return number;
  }

  std::string m_File;
  std::string m_Pixels;
  std::size_t m_Width = 0;
  std::size_t m_Height = 0;
  std::size_t m_RowsPerStrip = 0;
};

// Points on the lines, at most half a pixel apart; the lines are in pixels.
std::vector<Point> SamplesOf(const std::vector<Polyline>& lines) {
  std::vector<Point> samples;
  for (const Polyline& line : lines) {
    for (std::size_t index = 0; index + 1 < line.size(); ++index) {
      const Point from = line[index];
      const Point to = line[index + 1];
      const int steps =
          static_cast<int>(std::ceil(std::hypot(to.x - from.x, to.y - from.y) * 2)) + 1;
      for (int step = 0; step <= steps; ++step) {
        const double part = static_cast<double>(step) / steps;
        samples.push_back({from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)});
      }
    }
  }
  return samples;
}

double DistanceToLine(const Point& point, const Point& from, const Point& to) {
  const Point way{to.x - from.x, to.y - from.y};
  const double square = way.x * way.x + way.y * way.y;
  double part = 0;
  if (square > 0)
    part = std::clamp(((point.x - from.x) * way.x + (point.y - from.y) * way.y) / square, 0.0, 1.0);
  return std::hypot(point.x - from.x - part * way.x, point.y - from.y - part * way.y);
}

// How far the middle of a pixel is from the outlines, at most, if it has ink outside of them or
// none inside, in pixels. The inside is where the outlines wind around a point.
double CompareInside(const std::vector<Polyline>& lines, const Plane& plane) {
  double worst = 0;
  for (int row = 0; row < plane.Rows(); ++row) {
    for (int column = 0; column < plane.Columns(); ++column) {
      const Point middle{column + 0.5, row + 0.5};
      int winding = 0;
      double nearest = 1e9;
      for (const Polyline& line : lines) {
        for (std::size_t index = 0; index + 1 < line.size(); ++index) {
          const Point& from = line[index];
          const Point& to = line[index + 1];
          nearest = std::min(nearest, DistanceToLine(middle, from, to));
          if ((from.y <= middle.y) == (to.y <= middle.y)) continue;
          const double x = from.x + (middle.y - from.y) / (to.y - from.y) * (to.x - from.x);
          if (x > middle.x) winding += to.y > from.y ? 1 : -1;
        }
      }
      if ((winding != 0) != plane.HasInk(column, row)) worst = std::max(worst, nearest);
    }
  }
  return worst;
}

// The longest way from a point of either to the nearest of the other, in pixels of the job; 99 for
// one that is further away than two.
struct Distances {
  double linesToInk = 0;
  double inkToLines = 0;
};
Distances Compare(const std::vector<Polyline>& lines, const Plane& plane) {
  constexpr int Far = 2 * Finer;
  const auto columns = static_cast<std::size_t>(plane.Columns());
  std::vector<float> nearest(columns * static_cast<std::size_t>(plane.Rows()), 99.0F * Finer);
  Distances distances;
  for (const Point& sample : SamplesOf(lines)) {
    double best = 99.0 * Finer;
    const int column = static_cast<int>(sample.x);
    const int row = static_cast<int>(sample.y);
    for (int y = std::max(row - Far, 0); y <= std::min(row + Far, plane.Rows() - 1); ++y) {
      for (int x = std::max(column - Far, 0); x <= std::min(column + Far, plane.Columns() - 1);
           ++x) {
        const double distance = std::hypot(x + 0.5 - sample.x, y + 0.5 - sample.y);
        float& present =
            nearest[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)];
        present = std::min(present, static_cast<float>(distance));
        if (distance < best && plane.IsEdge(x, y)) best = distance;
      }
    }
    distances.linesToInk = std::max(distances.linesToInk, best / Finer);
  }
  for (int y = 0; y < plane.Rows(); ++y) {
    for (int x = 0; x < plane.Columns(); ++x) {
      if (!plane.IsEdge(x, y)) continue;
      const float distance =
          nearest[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)];
      distances.inkToLines = std::max(distances.inkToLines, static_cast<double>(distance) / Finer);
    }
  }
  return distances;
}

// The lines that a recording host got, in pixels from the upper left corner; `finer` of them are
// one of the job.
std::vector<Polyline> LinesOf(test::HostCalls& calls, int finer) {
  const double pixelsPerCentimetre = Resolution * finer / 2.54;
  std::vector<Polyline> lines;
  for (const std::string& line : calls.Of({"PA_NewSubPoly", "PA_AddVertice", "PA_CloseSubpoly"})) {
    Point point;
    if (line.starts_with("PA_NewSubPoly"))
      lines.emplace_back();
    else if (line.starts_with("PA_CloseSubpoly"))
      lines.back().push_back(lines.back().front());
    else if (std::sscanf(line.c_str(), "PA_AddVertice(%*d, %*d, %lf, %lf", &point.x, &point.y) == 2)
      // An archive's y goes upward from that corner.
      lines.back().push_back({point.x * pixelsPerCentimetre, -point.y * pixelsPerCentimetre});
  }
  return lines;
}

class CutLinesTruth : public ::testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_GHOSTSCRIPT();
    PutQueueProgram(m_Root.Directory());
    // A hundredth of a millimetre, so that only the place of the lines is left.
    m_Host.m_Settings[{L"RASTREL", L"Flatness"}] = L"1";
    m_Cut.colorKind = CutColorNamed;
    m_Cut.enabled = 1;
    m_Cut.color.SetColorName(L"CutContour");
  }

  // The ink's plane of a file, as the device paints it.
  Plane Separation(const std::string& file, const std::string& options) {
    const std::string command =
        "cd '" + m_Root.Directory().Path() +
        "' && gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=tiffsep -sCompression=none -r" +
        std::to_string(Resolution * m_Finer) + ' ' + options + " -o sep.tif '" + file +
        "' >gs.log 2>&1 </dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << m_Root.Directory().Read("gs.log");
    return Plane(m_Root.Directory().Path("sep(CutContour).tif"));
  }

  void ExpectTruth(const Plane& plane) {
    const std::vector<Polyline> lines = LinesOf(m_Host.m_Calls, m_Finer);
    ASSERT_FALSE(lines.empty());
    ASSERT_TRUE(plane.IsThere());
    EXPECT_EQ(plane.Columns(), Width / 72 * Resolution * m_Finer);
    EXPECT_EQ(m_Host.m_Calls.Count("ChangeObjectsToContourCut"), 1U);
    if (m_Finer == 1) {
      EXPECT_LE(CompareInside(lines, plane), m_Limit);
      return;
    }
    const Distances distances = Compare(lines, plane);
    EXPECT_LE(distances.linesToInk, HalfAPixel);
    EXPECT_LE(distances.inkToLines, HalfAPixel);
  }
  void CompareByPixel() { m_Finer = 1; }

  // Art in points from 0, 0, with the ink set.
  static std::string PostScriptArt(const std::string& art) {
    return "[ /Separation (CutContour) /DeviceCMYK { 0 exch 0 0 } ] setcolorspace 1 setcolor\n"
           "0 setlinewidth\n" +
           art + "\n0 0 0 1 setcmykcolor 2 2 3 3 rectfill\n";
  }
  void Eps(const std::string& art) {
    // A box that does not begin at 0, 0.
    const std::string eps =
        "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 50 400 250\n"
        "100 50 translate\n" +
        PostScriptArt(art) + "%%EOF\n";
    m_Root.Directory().Write("art.eps", eps);
    test::RecordedEps object(m_Host.m_Calls);
    object.m_Cut = m_Cut;
    object.m_Content = eps;
    object.m_Width = Width * CentimetresPerPoint;
    object.m_Height = Height * CentimetresPerPoint;
    EXPECT_NE(
        GenerateEPSCutData(&object, Resolution, 0, m_Root.Directory().Wide("art.eps").c_str()), 0U);
    ExpectTruth(Separation("art.eps", "-dEPSCrop"));
  }
  // `painted`: the art of the plane, if it is another.
  void Ps(const std::string& art, const std::string& painted = {}) {
    const std::string size = "-dFIXEDMEDIA -dDEVICEWIDTHPOINTS=300 -dDEVICEHEIGHTPOINTS=200";
    m_Root.Directory().Write("art.ps", "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 300 200\n" +
                                           PostScriptArt(art) + "showpage\n%%EOF\n");
    test::RecordedPs object(m_Host.m_Calls);
    object.m_Cut = m_Cut;
    object.m_Bounds = {.xmax = Width * CentimetresPerPoint, .ymax = Height * CentimetresPerPoint};
    EXPECT_NE(GeneratePSCutData(&object, Resolution, 0, m_Root.Directory().Wide("art.ps").c_str()),
              0U);
    if (!painted.empty())
      m_Root.Directory().Write("art.ps", "%!PS\n" + PostScriptArt(painted) + "showpage\n");
    ExpectTruth(Separation("art.ps", size));
  }
  void Pdf(const std::string& art) {
    const std::string content =
        "/S CS 1 SCN /S cs 1 scn 0 w\n" + art + "\n0 0 0 1 k 2 2 3 3 re f\n";
    m_Root.Directory().Write(
        "art.pdf",
        "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
        "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
        "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 200]/Resources<</Font<</F<</Type/Font"
        "/Subtype/Type1/BaseFont/Helvetica>>>>/ColorSpace<</S[/Separation/CutContour/DeviceCMYK"
        "<</FunctionType 2/Domain[0 1]/C0[0 0 0 0]/C1[0 1 0 0]/N 1>>]>>>>/Contents 4 0 R>>endobj\n"
        "4 0 obj<</Length " +
            std::to_string(content.size()) + ">>stream\n" + content +
            "endstream endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n");
    test::RecordedPdf object(m_Host.m_Calls);
    object.m_Cut = m_Cut;
    object.m_Bounds = {.xmax = Width * CentimetresPerPoint, .ymax = Height * CentimetresPerPoint};
    EXPECT_NE(
        GeneratePDFCutData(&object, Resolution, 0, m_Root.Directory().Wide("art.pdf").c_str()), 0U);
    ExpectTruth(Separation("art.pdf", ""));
  }

  static constexpr double HalfAPixel = 0.5;

  test::LibraryRoot m_Root;
  test::CheckedHost m_Host;
  CPS2CutData m_Cut;
  int m_Finer = Finer;
  double m_Limit = HalfAPixel;  // pixels
};

const std::string RectanglePs =
    "newpath 20 30 moveto 250 30 lineto 250 170 lineto 20 170 lineto "
    "closepath stroke";
const std::string CurvePs =
    "newpath 150 100 80 0 360 arc closepath stroke\n"
    "newpath 20 20 moveto 290 30 10 180 280 190 curveto stroke";
const std::string RotatedPs =
    "gsave 150 100 translate 33 rotate 1.2 0.8 scale newpath "
    "-60 -40 moveto 60 -40 lineto 60 40 lineto -60 40 lineto closepath "
    "stroke newpath 0 0 30 0 300 arc stroke grestore";
const std::string TextPs = "/Helvetica findfont 90 scalefont setfont 40 60 moveto (Bag8) show";

const std::string RectanglePdf = "20 30 230 140 re S";
const std::string CurvePdf =
    "230 100 m 230 144.2 194.2 180 150 180 c 105.8 180 70 144.2 70 100 c "
    "70 55.8 105.8 20 150 20 c 194.2 20 230 55.8 230 100 c h S\n"
    "20 20 m 290 30 10 180 280 190 c S";
const std::string RotatedPdf =
    "q 0.8387 0.5446 -0.5446 0.8387 150 100 cm -60 -40 120 80 re S "
    "30 0 m 30 16 16 30 0 30 c -16 30 -30 16 -30 0 c S Q";
const std::string TextPdf = "BT /F 90 Tf 40 60 Td (Bag8) Tj ET";

TEST_F(CutLinesTruth, a_rectangle_of_an_eps_is_where_its_ink_is) { Eps(RectanglePs); }
TEST_F(CutLinesTruth, curves_of_an_eps_are_where_their_ink_is) { Eps(CurvePs); }
TEST_F(CutLinesTruth, a_rotated_path_of_an_eps_is_where_its_ink_is) { Eps(RotatedPs); }
TEST_F(CutLinesTruth, outlines_of_text_of_an_eps_are_where_their_ink_is) {
  CompareByPixel();
  Eps(TextPs);
}

TEST_F(CutLinesTruth, a_rectangle_of_postscript_is_where_its_ink_is) { Ps(RectanglePs); }
TEST_F(CutLinesTruth, curves_of_postscript_are_where_their_ink_is) { Ps(CurvePs); }
TEST_F(CutLinesTruth, a_rotated_path_of_postscript_is_where_its_ink_is) { Ps(RotatedPs); }
TEST_F(CutLinesTruth, outlines_of_text_of_postscript_are_where_their_ink_is) {
  CompareByPixel();
  Ps(TextPs);
}

// Letters that are shown are fitted to whole pixels; their outlines, filled without growing by half
// a pixel, are not.
TEST_F(CutLinesTruth, outlines_of_text_are_where_the_ink_of_filled_outlines_is) {
  CompareByPixel();
  m_Limit = 0.15;
  const std::string letters = "/Helvetica findfont 90 scalefont setfont 40 60 moveto (Bag8) ";
  Ps(letters + "show",
     letters + "false charpath 0.01 setflat 0 0 .setfilladjust2 fill 0.5 0.5 .setfilladjust2");
}

TEST_F(CutLinesTruth, a_rectangle_of_a_pdf_is_where_its_ink_is) { Pdf(RectanglePdf); }
TEST_F(CutLinesTruth, curves_of_a_pdf_are_where_their_ink_is) { Pdf(CurvePdf); }
TEST_F(CutLinesTruth, a_rotated_path_of_a_pdf_is_where_its_ink_is) { Pdf(RotatedPdf); }
TEST_F(CutLinesTruth, outlines_of_text_of_a_pdf_are_where_their_ink_is) {
  CompareByPixel();
  Pdf(TextPdf);
}

}  // namespace
}  // namespace rastrel::jobspool::testing
