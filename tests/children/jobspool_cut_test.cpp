#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "children/jobspool/cut_archive.h"
#include "children/jobspool/flatten.h"
#include "tests/children/queue_fixture.h"

namespace rastrel::jobspool::testing {
namespace {

namespace fs = std::filesystem;

constexpr double PointsPerCentimetre = 72 / 2.54;

std::vector<std::string> OutputOf(const std::string& command) {
  std::vector<std::string> lines;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::array<char, 512> line{};
  while (pipe && std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
    lines.emplace_back(line.data());
    if (lines.back().ends_with('\n')) lines.back().pop_back();
  }
  return lines;
}

std::string Tool(const std::string& name) {
  return "python3 -B '" RASTREL_SOURCE_DIR "/tests/children/" + name + "'";
}

struct Part {
  bool closed = false;
  std::vector<Point> points;
};
struct Object {
  std::string head;  // "NUMBER KIND COLOR"
  std::vector<std::vector<Part>> polygons;
};

// An archive as the decoder beside this file reads it.
std::vector<Object> Decode(const std::string& archive) {
  std::vector<Object> objects;
  const auto lines = OutputOf(Tool("cut_archive.py") + " '" + archive + "'");
  if (lines.empty() || lines.back() != "end") {
    ADD_FAILURE() << "not an archive: " << archive;
    return objects;
  }
  for (const std::string& line : lines) {
    if (line.starts_with("object ")) {
      objects.push_back({line.substr(7), {}});
    } else if (line == "polygon") {
      objects.back().polygons.emplace_back();
    } else if (line.starts_with("part ")) {
      objects.back().polygons.back().push_back({line == "part 1", {}});
    } else if (line != "end") {
      Point point;
      std::istringstream(line) >> point.x >> point.y;
      objects.back().polygons.back().back().points.push_back(point);
    }
  }
  return objects;
}

double Distance(const Point& a, const Point& b) { return std::hypot(a.x - b.x, a.y - b.y); }

void ExpectPoints(const std::vector<Point>& found, const std::vector<Point>& points) {
  ASSERT_EQ(found.size(), points.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_NEAR(found[i].x * PointsPerCentimetre, points[i].x, 0.01) << i;
    EXPECT_NEAR(found[i].y * PointsPerCentimetre, points[i].y, 0.01) << i;
  }
}

const std::string Box = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 300 300\n";

class QueueCut : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  std::vector<Object> Run(const std::string& lines, const std::string& art,
                          const std::string& resolution = "720") {
    const std::string file =
        m_Bench.Job("vkaaaaaa.ps", Header("%# KVI_Res= " + resolution + "\r\n" + lines) + art);
    m_Outcome = m_Bench.Convert(file);
    EXPECT_EQ(m_Outcome.status, 0) << m_Outcome.reports;
    return Decode(m_Bench.RipDirectory() + "/vkaaaaaa.cut");
  }

  QueueFixture m_Bench;
  ProgramRun m_Outcome;
};

TEST_F(QueueCut, a_path_stands_in_centimetres_below_the_top_left_corner) {
  const auto objects =
      Run("%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n",
          Box +
              "1 0 0 setrgbcolor newpath 110 280 moveto 150 280 lineto 150 210 lineto closepath "
              "stroke 0 0 1 setrgbcolor 0 0 400 400 rectstroke\n");
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(objects[0].head, "1.0 1 RGB: 1.000  0.000  0.000");
  ASSERT_EQ(objects[0].polygons.size(), 1U);
  ASSERT_EQ(objects[0].polygons[0].size(), 1U);
  EXPECT_TRUE(objects[0].polygons[0][0].closed);
  ExpectPoints(objects[0].polygons[0][0].points, {{10, -20}, {50, -20}, {50, -90}});
}

TEST_F(QueueCut, the_page_size_scales_paths_as_it_scales_the_picture) {
  const auto objects =
      Run("%#PageSize=Custom,400,50\r\n%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n",
          Box + "1 0 0 setrgbcolor newpath 110 280 moveto 150 280 lineto 150 210 lineto stroke\n");
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_FALSE(objects[0].polygons.at(0).at(0).closed);
  ExpectPoints(objects[0].polygons[0][0].points, {{20, -10}, {100, -10}, {100, -45}});
}

TEST_F(QueueCut, a_path_that_is_hidden_wholly_is_left_out) {
  const auto objects =
      Run("%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n",
          Box +
              "1 0 0 setrgbcolor newpath 400 210 moveto 420 230 lineto stroke "
              "newpath 290 210 moveto 420 230 lineto stroke "
              "110 210 20 20 rectclip newpath 150 250 moveto 160 260 lineto stroke\n");
  ASSERT_EQ(objects.size(), 1U);
  ASSERT_EQ(objects[0].polygons.size(), 1U);
  ExpectPoints(objects[0].polygons[0].at(0).points, {{190, -90}, {320, -70}});
}

TEST_F(QueueCut, two_lines_are_two_objects_in_their_order) {
  const std::string art =
      Box +
      "[ /Separation (CutContour) /DeviceCMYK { 0 exch 0 0 } ] setcolorspace 1 setcolor "
      "newpath 110 210 moveto 120 210 lineto stroke\n"
      "0 1 0 0 setcmykcolor newpath 130 210 moveto 140 210 lineto stroke "
      "newpath 130 220 moveto 140 220 lineto 130 230 moveto 140 230 lineto stroke\n";
  const auto objects =
      Run("%# KVI_CutLine= CMYK, 0.0000, 1.0000, 0.0000, 0.0000\r\n"
          "%# KVI_CutLine= SEP, CutContour\r\n",
          art);
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(objects[0].head, "1.0 1 CMYK: 0.0000  1.0000  0.0000  0.0000");
  ASSERT_EQ(objects[0].polygons.size(), 2U);
  EXPECT_EQ(objects[0].polygons[0].size(), 1U);
  EXPECT_EQ(objects[0].polygons[1].size(), 2U);
  EXPECT_EQ(objects[1].head, "1.0 1 CutContour");
  ASSERT_EQ(objects[1].polygons.size(), 1U);
}

TEST_F(QueueCut, a_color_that_nothing_has_makes_an_archive_without_objects) {
  EXPECT_TRUE(
      Run("%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n", Box + "0 0 9 9 rectfill\n").empty());
}

TEST_F(QueueCut, without_a_cut_line_there_is_no_archive) {
  m_Outcome = m_Bench.Convert(m_Bench.Job("vkaaaaaa.ps", Header() + Box));
  EXPECT_EQ(m_Outcome.status, 0);
  EXPECT_FALSE(fs::exists(m_Bench.RipDirectory() + "/vkaaaaaa.cut"));
}

TEST_F(QueueCut, a_name_beyond_ascii_is_found_in_either_spelling) {
  for (const std::string spelling : {"D\xE9"
                                     "coupe",
                                     "D\xC3\xA9"
                                     "coupe"}) {
    const auto objects = Run(
        "%# KVI_CutLine= SEP, D\xE9"
        "coupe\r\n",
        Box + "[ /Separation (" + spelling +
            ") cvn /DeviceCMYK { 0 exch 0 0 } ] setcolorspace 1 setcolor 110 210 5 5 rectfill\n");
    ASSERT_EQ(objects.size(), 1U) << spelling;
    EXPECT_EQ(objects[0].head,
              "1.0 1 D\xC3\xA9"
              "coupe");
  }
}

TEST_F(QueueCut, a_pdf_has_cut_paths_too) {
  const std::string content =
      "/S CS 1 SCN 60 390 m 100 390 l 100 350 l S 0 0 1 RG 0 0 m 300 500 l S\n";
  const std::string pdf =
      "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
      "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
      "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 500]/CropBox[50 100 250 400]"
      "/Resources<</ColorSpace<</S[/Separation/CutContour/DeviceCMYK<</FunctionType 2/Domain[0 1]"
      "/C0[0 0 0 0]/C1[0 1 0 0]/N 1>>]>>>>/Contents 4 0 R>>endobj\n4 0 obj<</Length " +
      std::to_string(content.size()) + ">>stream\n" + content +
      "endstream endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";
  const std::string file = m_Bench.Job("vkaaaaaa.pdf", pdf);
  for (const auto& [size, scale] : {std::pair{"", 1.0}, {"%#PageSize=Custom,400,600\r\n", 2.0}}) {
    m_Bench.Job("vkaaaaaa.jhdr", Header("%# KVI_Res= 144\r\n" + std::string(size) +
                                        "%# KVI_CutLine= SEP, CutContour\r\n"));
    m_Outcome = m_Bench.Convert(file);
    ASSERT_EQ(m_Outcome.status, 0) << m_Outcome.reports;
    const auto objects = Decode(m_Bench.RipDirectory() + "/vkaaaaaa.cut");
    ASSERT_EQ(objects.size(), 1U);
    ASSERT_EQ(objects[0].polygons.size(), 1U);
    ExpectPoints(objects[0].polygons[0].at(0).points,
                 {{10 * scale, -10 * scale}, {50 * scale, -10 * scale}, {50 * scale, -50 * scale}});
  }
}

TEST_F(QueueCut, a_curve_keeps_to_its_flatness) {
  const std::string circle =
      Box + "1 0 0 setrgbcolor newpath 200 250 40 0 360 arc closepath stroke\n";
  std::size_t count = 0;
  for (const auto& [flatness, tolerance] : {std::pair{"20", 0.2}, {"10", 0.1}, {"1", 0.01}}) {
    const auto objects =
        Run("%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n%# KVI_Setflat= " + std::string(flatness) +
                "\r\n",
            circle, "36");
    ASSERT_EQ(objects.size(), 1U);
    const auto& points = objects[0].polygons.at(0).at(0).points;
    EXPECT_GT(points.size(), count) << flatness;
    count = points.size();
    const Point centre{100 / PointsPerCentimetre, -50 / PointsPerCentimetre};
    const double radius = 40 / PointsPerCentimetre;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const Point& next = points[(i + 1) % points.size()];
      const Point middle{(points[i].x + next.x) / 2, (points[i].y + next.y) / 2};
      EXPECT_NEAR(Distance(points[i], centre), radius, 0.002);
      // Millimetres; the interpreter's own arc is no exact circle.
      EXPECT_LE((radius - Distance(middle, centre)) * 10, tolerance + 0.02);
    }
  }
}

TEST_F(QueueCut, a_real_contour_lies_where_another_device_puts_it) {
  const std::string file = CorpusFile("doseps/coreldraw-x7-cutcontour.eps");
  if (file.empty()) GTEST_SKIP() << "The shared files are not here.";
  constexpr double Resolution = 150;
  std::ifstream content(file, std::ios::binary);
  const auto objects = Run("%# KVI_CutLine= SEP, CutContour\r\n%# KVI_Setflat= 10\r\n",
                           {std::istreambuf_iterator<char>(content), {}}, "150");
  ASSERT_EQ(objects.size(), 1U);
  EXPECT_EQ(objects[0].head, "1.0 1 CutContour");
  std::vector<Point> cut;
  for (const auto& polygon : objects[0].polygons) {
    for (const Part& part : polygon) cut.insert(cut.end(), part.points.begin(), part.points.end());
  }
  // The PostScript comes after 30 bytes, as the file's head says.
  std::ifstream whole(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
  const std::string plain = m_Bench.File("plain.eps", bytes.substr(30, 117905));
  const auto lines = OutputOf(Tool("spot_paths.py") + " '" + plain + "' CutContour");
  ASSERT_GT(lines.size(), 20U);
  double width = 0;
  double height = 0;
  ASSERT_EQ(std::sscanf(lines[0].c_str(), "size %lf %lf", &width, &height), 2);
  std::size_t paths = 0;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    Point point;
    if (std::sscanf(lines[i].c_str(), "%lf %lf", &point.x, &point.y) != 2) {
      ++paths;
      continue;
    }
    double nearest = 1e9;
    for (const Point& place : cut) {
      nearest = std::min(nearest, Distance(point, {place.x * PointsPerCentimetre,
                                                   height + place.y * PointsPerCentimetre}));
    }
    EXPECT_LE(nearest, 72 / Resolution / 2) << lines[i];
  }
  EXPECT_EQ(objects[0].polygons.size(), paths);
}

TEST_F(QueueCut, a_generated_contour_lies_where_another_device_puts_it) {
  std::string art = Box +
                    "[ /Separation (CutContour) /DeviceCMYK { 0 exch 0 0 } ] setcolorspace 1 "
                    "setcolor newpath 110 250 moveto\n";
  for (int i = 0; i < 30; ++i) {
    const double x = 110 + i * 6;
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "%.3f %.3f %.3f %.3f %.3f %.3f curveto\n", x + 1.37,
                  250 + 40 * std::sin(i), x + 4.11, 250 - 40 * std::cos(i), x + 6,
                  250 + 20 * std::sin(i * 1.7));
    art += text.data();
  }
  art += "stroke\n";
  const auto objects = Run("%# KVI_CutLine= SEP, CutContour\r\n", art, "100");
  ASSERT_EQ(objects.size(), 1U);
  const auto& points = objects[0].polygons.at(0).at(0).points;
  const auto lines =
      OutputOf(Tool("spot_paths.py") + " '" + m_Bench.File("plain.eps", art) + "' CutContour");
  ASSERT_EQ(lines.size(), 2U + 31U);
  for (std::size_t i = 2; i < lines.size(); ++i) {
    Point point;
    ASSERT_EQ(std::sscanf(lines[i].c_str(), "%lf %lf", &point.x, &point.y), 2) << lines[i];
    double nearest = 1e9;
    for (const Point& place : points) {
      nearest = std::min(nearest, Distance(point, {place.x * PointsPerCentimetre,
                                                   100 + place.y * PointsPerCentimetre}));
    }
    EXPECT_LE(nearest, 0.36) << lines[i];
  }
}

TEST(QueueColorText, prints_as_the_host_compares) {
  EXPECT_EQ(ColorText({CutLine::Kind::Rgb, {1, 0.502, 0}, {}}), "RGB: 1.000  0.502  0.000");
  EXPECT_EQ(ColorText({CutLine::Kind::Cmyk, {0, 1, 1, 0.12345}, {}}),
            "CMYK: 0.0000  1.0000  1.0000  0.1235");
  EXPECT_EQ(ColorText({CutLine::Kind::Separation, {}, "Cut \x80"}), "Cut \xE2\x82\xAC");
}

class QueueCutFile : public ::testing::Test {
 protected:
  bool Write(const std::string& text) {
    m_Scratch.Write("cut-paths", text);
    fs::remove(m_Scratch.Path("a.cut"));
    const CutLine line{CutLine::Kind::Rgb, {1, 0, 0}, {}};
    return static_cast<bool>(
        WriteCutArchive(m_Scratch.Path("cut-paths"), m_Scratch.Path("a.cut"), {line}, 0.1));
  }

  test::ScratchDirectory m_Scratch;
  const std::string m_Text =
      "Rastrel cut paths 1\nunit: point\nwidth: 100\nheight: 50\nclips: 1\nclip\nm 0 0\nl 1 "
      "1\nend-clip\npaths: 2\n"
      "path\nkind: stroke\ncolour: rgb 1.0 0.0 0.0\nline-width: 2\nclip: crosses 1\nclosed: 1 0\nm "
      "1 2\nl 3 4\nh\n"
      "m 5 6\nc 7 8 9 10 11 12\nend-path\n"
      "path\nkind: fill\ncolour: rgb 0.0 0.0 0.0\nline-width: 0\nclip: inside\nclosed: 0\nm 1 2\nl "
      "3 "
      "4\nend-path\n"
      "end\n";
};

TEST_F(QueueCutFile, is_turned_into_an_archive) {
  ASSERT_TRUE(Write(m_Text));
  const auto objects = Decode(m_Scratch.Path("a.cut"));
  ASSERT_EQ(objects.size(), 1U);
  ASSERT_EQ(objects[0].polygons.size(), 1U);
  ASSERT_EQ(objects[0].polygons[0].size(), 2U);
  EXPECT_TRUE(objects[0].polygons[0][0].closed);
  EXPECT_FALSE(objects[0].polygons[0][1].closed);
  ExpectPoints(objects[0].polygons[0][0].points, {{1, -48}, {3, -46}});
}

TEST_F(QueueCutFile, that_is_cut_at_any_byte_is_refused) {
  for (std::size_t cut = 0; cut < m_Text.size(); ++cut) {
    EXPECT_FALSE(Write(m_Text.substr(0, cut))) << cut;
  }
}

TEST_F(QueueCutFile, with_other_parts_than_it_says_is_refused) {
  for (const auto& [from, to] :
       std::vector<std::pair<std::string, std::string>>{{"closed: 1 0", "closed: 1"},
                                                        {"closed: 1 0", "closed: 1 0 0"},
                                                        {"l 3 4\nh", "x 3 4\nh"},
                                                        {"l 3 4\nh", "l 3\nh"},
                                                        {"l 3 4\nh", "l 3 4 5\nh"},
                                                        {"l 3 4\nh", "l 3 nan\nh"},
                                                        {"m 1 2\nl", "l 1 2\nl"},
                                                        {"h\nm 5 6", "h\nl 5 6"}}) {
    std::string text = m_Text;
    text.replace(text.find(from), from.size(), to);
    EXPECT_FALSE(Write(text)) << to;
  }
}

TEST(QueueFlatten, no_curve_lies_further_than_the_tolerance_beside_its_lines) {
  const std::array<Point, 4> curve{{{0, 0}, {100, 300}, {-50, 200}, {80, -10}}};
  for (const double tolerance : {5.0, 0.5, 0.05}) {
    std::vector<Point> points{curve[0]};
    AppendCurve(points, curve, tolerance);
    EXPECT_EQ(points.back(), curve[3]);
    double farthest = 0;
    for (int i = 0; i <= 1000; ++i) {
      const double t = i / 1000.0;
      const double u = 1 - t;
      const double x = u * u * u * 0 + 3 * u * u * t * 100 + 3 * u * t * t * -50 + t * t * t * 80;
      const double y = u * u * u * 0 + 3 * u * u * t * 300 + 3 * u * t * t * 200 + t * t * t * -10;
      double nearest = 1e9;
      for (std::size_t k = 1; k < points.size(); ++k) {
        const Point& a = points[k - 1];
        const Point& b = points[k];
        const double length = Distance(a, b);
        const double share = std::clamp(
            ((x - a.x) * (b.x - a.x) + (y - a.y) * (b.y - a.y)) / (length * length), 0.0, 1.0);
        nearest = std::min(
            nearest, Distance({x, y}, {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)}));
      }
      farthest = std::max(farthest, nearest);
    }
    EXPECT_LE(farthest, tolerance);
    EXPECT_GE(farthest, tolerance / 20) << "far more lines than needed";
  }
}

TEST(QueueFlatten, a_curve_never_takes_more_than_its_limit) {
  std::vector<Point> points{{0, 0}};
  AppendCurve(points, {{{0, 0}, {1e9, 1e9}, {-1e9, 1e9}, {0, 0}}}, 1e-4);
  EXPECT_EQ(points.size(), LinesOfCurve + 1);
  points.assign(1, {0, 0});
  AppendCurve(points, {{{0, 0}, {1, 1}, {2, 2}, {3, 3}}}, 0.1);
  EXPECT_EQ(points.size(), 2U);
}

}  // namespace
}  // namespace rastrel::jobspool::testing
