#include "host/drawing/exchange_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <numbers>

#include "host/graphics/indexed_color.h"
#include "tests/host/drawing/path_files.h"

namespace rastrel::drawing {
namespace {

using graphics::IndexedColor;
using Rgb = VectorPath::Rgb;

// Pairs of a code and a value, as "10 2.5", as the lines of a file.
std::string Pairs(std::initializer_list<const char*> pairs) {
  std::string lines;
  for (const std::string pair : pairs) {
    const std::size_t blank = pair.find(' ');
    lines += pair.substr(0, blank) + "\n" + pair.substr(blank + 1) + "\n";
  }
  return lines;
}

std::string Section(const std::string& name, const std::string& pairs) {
  return "0\nSECTION\n2\n" + name + "\n" + pairs + "0\nENDSEC\n";
}

// A file in centimetres.
std::string Drawing(const std::string& entities, const std::string& before = "") {
  return Section("HEADER", Pairs({"9 $INSUNITS", "70 5"})) + before +
         Section("ENTITIES", entities) + "0\nEOF\n";
}

test::ReadPaths Read(const std::string& bytes) { return test::PathsBy(ReadExchangeFile, bytes); }

// The one path of a file with these entities.
VectorPath PathOf(const std::string& entities) {
  const auto read = Read(Drawing(entities));
  EXPECT_EQ(read.refusal, "");
  EXPECT_EQ(read.paths.size(), 1U);
  return read.paths.empty() ? VectorPath() : read.paths[0];
}

const std::string Line = Pairs({"0 LINE", "8 0", "10 1", "20 2", "11 4", "21 6"});

TEST(Dxf, a_line_is_a_path_from_end_to_end) {
  const VectorPath path = PathOf(Line);
  test::ExpectBox(path, 1, 2, 4, 6);
  EXPECT_FALSE(path.shape.subPaths.at(0).closed);
  EXPECT_EQ(path.lineWidth, 0);
  EXPECT_FALSE(path.fill.has_value());
}

TEST(Dxf, the_unit_is_the_files_and_millimetres_without_one) {
  const auto width = [](const std::string& header) {
    const auto read = Read(header + Section("ENTITIES", Line));
    EXPECT_EQ(read.paths.size(), 1U);
    const BOUNDS bounds = test::BoundsOfPath(read.paths.at(0));
    return bounds.xmax - bounds.xmin;
  };
  const auto unit = [](const std::string& number) {
    return Section("HEADER", "9\n$INSUNITS\n70\n" + number + "\n");
  };
  EXPECT_NEAR(width(""), 0.3, 1e-9);
  EXPECT_NEAR(width(unit("0")), 0.3, 1e-9);
  EXPECT_NEAR(width(unit("1")), 3 * 2.54, 1e-9);
  EXPECT_NEAR(width(unit("2")), 3 * 30.48, 1e-9);
  EXPECT_NEAR(width(unit("4")), 0.3, 1e-9);
  EXPECT_NEAR(width(unit("5")), 3, 1e-9);
  EXPECT_NEAR(width(unit("6")), 300, 1e-9);
  EXPECT_NEAR(width(unit("-1")), 0.3, 1e-9);
  EXPECT_NEAR(width(unit("99")), 0.3, 1e-9);
}

TEST(Dxf, line_ends_of_another_system_and_blanks_do_not_count) {
  std::string file =
      "  0\r\nSECTION\r\n  2\r\nENTITIES\r\n  0\r\nLINE\r\n 10\r\n 1.0 \r\n 20\r\n0\r\n"
      " 11\r\n11\r\n 21\r\n0\r\n  0\r\nEOF";
  const auto read = Read(file);
  ASSERT_EQ(read.paths.size(), 1U);
  test::ExpectBox(read.paths[0], 0.1, 0, 1.1, 0);
}

TEST(Dxf, a_polyline_is_closed_where_it_says_so) {
  const std::string corners = Pairs({"10 0", "20 0", "10 4", "20 0", "10 4", "20 3"});
  const VectorPath open = PathOf("0\nLWPOLYLINE\n70\n0\n" + corners);
  EXPECT_FALSE(open.shape.subPaths.at(0).closed);
  EXPECT_EQ(open.shape.subPaths.at(0).segments.size(), 2U);
  const VectorPath closed = PathOf("0\nLWPOLYLINE\n70\n1\n" + corners);
  EXPECT_TRUE(closed.shape.subPaths.at(0).closed);
  test::ExpectBox(closed, 0, 0, 4, 3);
}

TEST(Dxf, a_bulge_of_1_is_half_a_circle_to_the_right_of_its_chord) {
  const VectorPath path =
      PathOf(Pairs({"0 LWPOLYLINE", "70 0", "10 0", "20 0", "42 1", "10 4", "20 0"}));
  test::ExpectBox(path, 0, -2, 4, 0, 2e-5);
  test::VisitPoints(path, 20,
                    [](const CWorldPoint& p) { EXPECT_NEAR(std::hypot(p.x - 2, p.y), 2, 2e-5); });
  const VectorPath left =
      PathOf(Pairs({"0 LWPOLYLINE", "70 0", "10 0", "20 0", "42 -1", "10 4", "20 0"}));
  test::ExpectBox(left, 0, 0, 4, 2, 2e-5);
}

// A quarter circle: the bulge is tan(90 / 4).
TEST(Dxf, a_bulge_on_the_closing_side_counts) {
  const VectorPath path = PathOf(
      Pairs({"0 LWPOLYLINE", "70 1", "10 0", "20 0", "10 1", "20 0", "10 0", "20 1", "42 0"}));
  EXPECT_EQ(path.shape.subPaths.at(0).segments.size(), 2U);
  const VectorPath round =
      PathOf(Pairs({"0 LWPOLYLINE", "70 1", "10 0", "20 0", "10 4", "20 0", "42 1"}));
  test::ExpectBox(round, 0, 0, 4, 2, 2e-5);
}

TEST(Dxf, a_polyline_of_vertices_is_read_to_its_end) {
  const auto read = Read(Drawing(
      Pairs({"0 POLYLINE", "66 1", "70 1", "0 VERTEX", "10 0", "20 0", "0 VERTEX", "10 4", "20 0",
             "0 VERTEX", "70 16", "10 9", "20 9", "0 VERTEX", "10 4", "20 3", "0 SEQEND"}) +
      Line));
  ASSERT_EQ(read.paths.size(), 2U);
  test::ExpectBox(read.paths[0], 0, 0, 4, 3);
  test::ExpectBox(read.paths[1], 1, 2, 4, 6);
  EXPECT_TRUE(read.notes.empty());
}

TEST(Dxf, circles_and_arcs_of_any_size_are_within_a_ten_thousandth_of_a_centimetre) {
  for (const double radius : {0.01, 1.0, 30.0, 3000.0}) {
    const std::string size = std::to_string(radius);
    const VectorPath circle = PathOf("0\nCIRCLE\n10\n7\n20\n8\n40\n" + size + "\n");
    EXPECT_TRUE(circle.shape.subPaths.at(0).closed);
    test::VisitPoints(circle, 16, [&](const CWorldPoint& p) {
      EXPECT_NEAR(std::hypot(p.x - 7, p.y - 8), radius, 1e-4);
    });
    const VectorPath arc = PathOf("0\nARC\n10\n7\n20\n8\n40\n" + size + "\n50\n350\n51\n100\n");
    EXPECT_FALSE(arc.shape.subPaths.at(0).closed);
    test::VisitPoints(arc, 16, [&](const CWorldPoint& p) {
      EXPECT_NEAR(std::hypot(p.x - 7, p.y - 8), radius, 1e-4);
    });
    const BOUNDS bounds = test::BoundsOfPath(arc);
    EXPECT_NEAR(bounds.xmin, 7 + radius * std::cos(100 * std::numbers::pi / 180), 1e-4);
    EXPECT_NEAR(bounds.ymin, 8 + radius * std::sin(-10 * std::numbers::pi / 180), 1e-4);
    EXPECT_NEAR(bounds.xmax, 7 + radius, 1e-4);
    EXPECT_NEAR(bounds.ymax, 8 + radius, 1e-4);
  }
}

TEST(Dxf, an_ellipse_has_its_long_axis_and_its_part) {
  const VectorPath whole = PathOf(Pairs(
      {"0 ELLIPSE", "10 0", "20 0", "11 0", "21 4", "40 0.5", "41 0", "42 6.283185307179586"}));
  EXPECT_TRUE(whole.shape.subPaths.at(0).closed);
  test::ExpectBox(whole, -2, -4, 2, 4, 2e-5);
  // From the end of the long axis a quarter to the left of it.
  const VectorPath quarter = PathOf(Pairs(
      {"0 ELLIPSE", "10 0", "20 0", "11 0", "21 4", "40 0.5", "41 0", "42 1.5707963267948966"}));
  test::ExpectBox(quarter, -2, 0, 0, 4, 2e-5);
}

// Of a curve with one polynomial piece the control points are Bézier's.
TEST(Dxf, a_cubic_spline_of_one_piece_is_its_bezier_curve) {
  const VectorPath path = PathOf(
      Pairs({"0 SPLINE", "70 0", "71 3", "40 0", "40 0", "40 0", "40 0", "40 1", "40 1", "40 1",
             "40 1", "10 0", "20 0", "10 1", "20 4", "10 5", "20 4", "10 6", "20 0"}));
  const auto& run = path.shape.subPaths.at(0);
  ASSERT_EQ(run.segments.size(), 1U);
  EXPECT_EQ(run.start, (CWorldPoint{0, 0}));
  EXPECT_EQ(run.segments[0].points[0], (CWorldPoint{1, 4}));
  EXPECT_EQ(run.segments[0].points[1], (CWorldPoint{5, 4}));
  EXPECT_EQ(run.segments[0].points[2], (CWorldPoint{6, 0}));
}

// The value of a spline by the recursion that defines its basis functions.
double Basis(const std::vector<double>& knots, std::size_t i, int degree, double t) {
  if (degree == 0) return knots[i] <= t && t < knots[i + 1] ? 1 : 0;
  const double left = knots[i + static_cast<std::size_t>(degree)] - knots[i];
  const double right = knots[i + static_cast<std::size_t>(degree) + 1] - knots[i + 1];
  return (left > 0 ? (t - knots[i]) / left * Basis(knots, i, degree - 1, t) : 0) +
         (right > 0 ? (knots[i + static_cast<std::size_t>(degree) + 1] - t) / right *
                          Basis(knots, i + 1, degree - 1, t)
                    : 0);
}

TEST(Dxf, splines_of_several_pieces_degrees_and_weights_keep_to_their_definition) {
  for (const int degree : {1, 2, 3, 4}) {
    for (const bool weighted : {false, true}) {
      const std::vector<CWorldPoint> points = {{0, 0}, {1, 3}, {3, 4}, {5, -1}, {6, 2}, {9, 0}};
      std::vector<double> knots;
      for (int i = 0; i <= degree; ++i) knots.push_back(0);
      for (int i = 1; i + degree < 6; ++i) knots.push_back(i);
      for (int i = 0; i <= degree; ++i) knots.push_back(6 - degree);
      std::string entity = "0\nSPLINE\n71\n" + std::to_string(degree) + "\n";
      std::vector<double> weights;
      for (const double knot : knots) entity += "40\n" + std::to_string(knot) + "\n";
      for (std::size_t i = 0; i < points.size(); ++i) {
        weights.push_back(weighted && i % 2 == 1 ? 2 : 1);
        if (weighted) entity += "41\n" + std::to_string(weights.back()) + "\n";
        entity +=
            "10\n" + std::to_string(points[i].x) + "\n20\n" + std::to_string(points[i].y) + "\n";
      }
      const VectorPath path = PathOf(entity);
      // Every point of the definition is near a point of the path.
      std::vector<CWorldPoint> drawn;
      test::VisitPoints(path, 400, [&](const CWorldPoint& p) { drawn.push_back(p); });
      for (double t = 0; t < 6 - degree; t += 0.05) {
        double x = 0;
        double y = 0;
        double w = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
          const double part = weights[i] * Basis(knots, i, degree, t);
          x += part * points[i].x;
          y += part * points[i].y;
          w += part;
        }
        double nearest = INFINITY;
        for (const CWorldPoint& p : drawn) {
          nearest = std::min(nearest, std::hypot(p.x - x / w, p.y - y / w));
        }
        EXPECT_LT(nearest, 0.02) << degree << " at " << t;
      }
    }
  }
}

TEST(Dxf, a_spline_that_is_none_is_lines_through_its_fit_points_or_nothing) {
  const VectorPath fit = PathOf(Pairs({"0 SPLINE", "71 3", "11 0", "21 0", "11 2", "21 3"}));
  test::ExpectBox(fit, 0, 0, 2, 3);
  // Knots that fall, too few points, a weight of 0.
  for (const std::string& entity :
       {Pairs({"0 SPLINE", "71 1", "40 0", "40 2", "40 1", "40 3", "10 0", "20 0", "10 1", "20 1"}),
        Pairs({"0 SPLINE", "71 3", "40 0", "40 1", "10 0", "20 0"}),
        Pairs({"0 SPLINE", "71 1", "40 0", "40 0", "40 1", "40 1", "41 0", "41 1", "10 0", "20 0",
               "10 1", "20 1"}),
        Pairs({"0 SPLINE", "71 99", "40 0", "10 0", "20 0"})}) {
    EXPECT_EQ(Read(Drawing(entity)).refusal, "it draws nothing");
  }
}

TEST(Dxf, a_solid_is_filled_with_its_corners_in_order) {
  const VectorPath path = PathOf(
      Pairs({"0 SOLID", "62 1", "10 0", "20 0", "11 4", "21 0", "12 0", "22 3", "13 4", "23 3"}));
  EXPECT_EQ(path.fill, (Rgb{255, 0, 0}));
  EXPECT_FALSE(path.line.has_value());
  const auto& run = path.shape.subPaths.at(0);
  ASSERT_EQ(run.segments.size(), 3U);
  EXPECT_EQ(run.segments[1].points[2], (CWorldPoint{4, 3}));
  EXPECT_EQ(run.segments[2].points[2], (CWorldPoint{0, 3}));
}

TEST(Dxf, what_is_seen_from_below_is_mirrored) {
  test::ExpectBox(PathOf(Pairs({"0 CIRCLE", "10 5", "20 1", "40 1", "230 -1"})), -6, 0, -4, 2,
                  2e-5);
  test::ExpectBox(PathOf(Line + "230\n-1\n"), 1, 2, 4, 6);
}

// --- Colors, widths, layers ---

const std::string Layers = Section(
    "TABLES",
    Pairs({"0 TABLE", "2 LAYER", "0 LAYER", "2 cut", "70 0",    "62 5",        "370 50",
           "0 LAYER", "2 off",   "70 0",    "62 -1", "0 LAYER", "2 frozen",    "70 1",
           "62 1",    "0 LAYER", "2 true",  "70 0",  "62 1",    "420 1056816", "0 ENDTAB"}));

std::string LineOn(const std::string& layer, const std::string& more = "") {
  return "0\nLINE\n8\n" + layer + "\n" + more + "10\n0\n20\n0\n11\n1\n21\n1\n";
}

TEST(Dxf, color_and_width_come_from_the_entity_or_else_its_layer) {
  const auto read =
      Read(Drawing(LineOn("cut") + LineOn("cut", "62\n1\n370\n25\n") +
                       LineOn("cut", "420\n65280\n370\n0\n") + LineOn("true") + LineOn("unknown"),
                   Layers));
  ASSERT_EQ(read.paths.size(), 5U);
  EXPECT_EQ(read.paths[0].line, (Rgb{0, 0, 255}));
  EXPECT_NEAR(read.paths[0].lineWidth, 0.05, 1e-12);
  EXPECT_EQ(read.paths[1].line, (Rgb{255, 0, 0}));
  EXPECT_NEAR(read.paths[1].lineWidth, 0.025, 1e-12);
  EXPECT_EQ(read.paths[2].line, (Rgb{0, 255, 0}));
  EXPECT_EQ(read.paths[2].lineWidth, 0);
  EXPECT_EQ(read.paths[3].line, (Rgb{0x10, 0x20, 0x30}));
  EXPECT_EQ(read.paths[4].line, (Rgb{0, 0, 0}));
}

TEST(Dxf, layers_that_are_off_or_frozen_and_paper_are_not_drawn) {
  const auto read = Read(Drawing(LineOn("off") + LineOn("frozen") + LineOn("cut", "67\n1\n") +
                                     LineOn("cut", "60\n1\n") + LineOn("cut"),
                                 Layers));
  EXPECT_EQ(read.paths.size(), 1U);
}

TEST(Dxf, a_wide_polyline_is_as_wide_as_it_says) {
  EXPECT_NEAR(PathOf(Pairs({"0 LWPOLYLINE", "43 0.5", "10 0", "20 0", "10 4", "20 0"})).lineWidth,
              0.5, 1e-12);
}

TEST(Dxf, the_numbered_colors_are_a_circle_of_hues) {
  EXPECT_EQ(IndexedColor(1), (Rgb{255, 0, 0}));
  EXPECT_EQ(IndexedColor(7), (Rgb{0, 0, 0}));
  EXPECT_EQ(IndexedColor(10), (Rgb{255, 0, 0}));
  EXPECT_EQ(IndexedColor(11), (Rgb{255, 127, 127}));
  EXPECT_EQ(IndexedColor(30), (Rgb{255, 127, 0}));
  EXPECT_EQ(IndexedColor(50), (Rgb{255, 255, 0}));
  EXPECT_EQ(IndexedColor(90), (Rgb{0, 255, 0}));
  EXPECT_EQ(IndexedColor(130), (Rgb{0, 255, 255}));
  EXPECT_EQ(IndexedColor(170), (Rgb{0, 0, 255}));
  EXPECT_EQ(IndexedColor(210), (Rgb{255, 0, 255}));
  EXPECT_EQ(IndexedColor(255), (Rgb{255, 255, 255}));
  for (const int index : {-1, 0, 256}) EXPECT_EQ(IndexedColor(index), (Rgb{0, 0, 0}));
}

// --- Blocks ---

std::string Block(const std::string& name, const std::string& entities) {
  return "0\nBLOCK\n2\n" + name + "\n10\n1\n20\n1\n" + entities + "0\nENDBLK\n";
}

TEST(Dxf, a_block_is_placed_turned_scaled_and_repeated) {
  const std::string blocks =
      Section("BLOCKS", Block("b", Pairs({"0 LINE", "8 0", "10 1", "20 1", "11 2", "21 1"})));
  const auto read = Read(Drawing(
      Pairs({"0 INSERT", "2 b", "8 cut", "62 3", "10 10", "20 5", "41 2", "42 3", "50 90"}) +
          Pairs({"0 INSERT", "2 b", "8 cut", "10 0", "20 0", "70 3", "71 2", "44 4", "45 5"}),
      Layers + blocks));
  ASSERT_EQ(read.paths.size(), 7U);
  // From the base point, 1, 1, two long to the right; turned upward.
  test::ExpectBox(read.paths[0], 10, 5, 10, 7, 1e-9);
  // The line is on layer 0: that of its insertion counts.
  EXPECT_EQ(read.paths[0].line, (Rgb{0, 0, 255}));
  test::ExpectBox(read.paths[3], 8, 0, 9, 0);
  test::ExpectBox(read.paths[6], 8, 5, 9, 5);
}

TEST(Dxf, an_entity_takes_the_color_of_its_block_where_it_says_so) {
  const std::string blocks = Section("BLOCKS", Block("b", LineOn("cut", "62\n0\n")));
  const auto read =
      Read(Drawing(Pairs({"0 INSERT", "2 b", "8 cut", "62 1", "10 0", "20 0"}), Layers + blocks));
  ASSERT_EQ(read.paths.size(), 1U);
  EXPECT_EQ(read.paths[0].line, (Rgb{255, 0, 0}));
}

TEST(Dxf, a_block_that_holds_itself_ends) {
  const std::string self = Pairs({"0 INSERT", "2 b", "10 1", "20 0"});
  const auto read = Read(Drawing(self, Section("BLOCKS", Block("b", Line + self))));
  EXPECT_EQ(read.refusal, "");
  EXPECT_EQ(read.paths.size(), 32U) << "one for each depth";
}

TEST(Dxf, blocks_that_multiply_are_refused) {
  std::string ten;
  for (int i = 0; i < 10; ++i) ten += Pairs({"0 INSERT", "2 b", "10 1", "20 0"});
  EXPECT_EQ(Read(Drawing(ten, Section("BLOCKS", Block("b", ten)))).refusal,
            "its blocks are drawn more than 100000 times");
  const std::string many = Pairs({"0 INSERT", "2 b", "70 2000000000", "71 2000000000"});
  EXPECT_EQ(Read(Drawing(many, Section("BLOCKS", Block("b", "")))).refusal,
            "its blocks are drawn more than 100000 times");
  EXPECT_EQ(Read(Drawing(many)).refusal, "it draws nothing");
}

TEST(Dxf, a_large_block_that_is_drawn_often_is_refused) {
  std::string remarks;
  for (int i = 0; i < 200; ++i) remarks += "999\n" + std::string(96, 'x') + "\n";
  const std::string block = Section("BLOCKS", Block("b", remarks + Line + remarks));
  const auto drawn = [&](const char* columns) {
    return Read(Drawing(Pairs({"0 INSERT", "2 b", "70 100", columns, "44 1", "45 1"}), block));
  };
  EXPECT_EQ(drawn("71 10").refusal, "") << "1,000 times 40 KB";
  EXPECT_EQ(drawn("71 40").refusal,
            "its blocks are drawn so often that they have more than 64 MiB of text together");
}

// --- Damaged files ---

TEST(Dxf, other_entities_are_noted_once_each) {
  const auto read = Read(Drawing(Pairs({"0 TEXT", "1 a", "0 HATCH", "0 TEXT", "1 b"}) + Line));
  ASSERT_EQ(read.notes.size(), 1U);
  EXPECT_EQ(read.notes[0], "entities that are no lines are left out: HATCH, TEXT");
}

TEST(Dxf, numbers_that_are_none_are_0_and_infinite_measures_draw_nothing) {
  test::ExpectBox(PathOf(Pairs({"0 LINE", "10 nan", "20 x", "11 1e999", "21 3"})), 0, 0, 0, 3);
  EXPECT_EQ(Read(Drawing(Pairs({"0 CIRCLE", "10 1e308", "20 0", "40 1e308"}))).refusal,
            "it draws nothing");
}

TEST(Dxf, a_file_that_is_cut_off_anywhere_ends) {
  const std::string whole = Drawing(Line +
                                        Pairs({"0 POLYLINE", "70 1", "0 VERTEX", "10 1", "20 1",
                                               "0 VERTEX", "10 2", "20 2", "0 SEQEND"}) +
                                        Pairs({"0 INSERT", "2 b", "10 0", "20 0"}),
                                    Layers + Section("BLOCKS", Block("b", Line)));
  EXPECT_EQ(Read(whole).paths.size(), 3U);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto read = Read(whole.substr(0, length));
    EXPECT_EQ(read.refusal.empty(), !read.paths.empty()) << length;
  }
}

}  // namespace
}  // namespace rastrel::drawing
