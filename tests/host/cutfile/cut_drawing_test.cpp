#include "host/cutfile/cut_drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/document/palette.h"
#include "tests/host/cutfile/drawings.h"

namespace rastrel::cutfile {
namespace {

using document::Attributes;
using document::Document;
using document::GroupShape;
using document::PathSegment;
using document::PathShape;
using document::SubPath;

PathSegment LineTo(double x, double y) { return {false, {CWorldPoint{}, CWorldPoint{}, {x, y}}}; }

PathShape Square(double side) {
  return {
      .subPaths = {
          {{0, 0}, {LineTo(side, 0), LineTo(side, side), LineTo(0, side), LineTo(0, 0)}, true}}};
}

host::ObjectHandle Add(Document& document, document::Shape shape, Attributes attributes = {},
                       host::ObjectHandle parent = host::DocumentRoot) {
  const auto handle = document.Create(std::move(shape), attributes);
  EXPECT_TRUE(document.Insert(handle, parent));
  return handle;
}

CutDrawing DrawingOf(const Document& document, int page = 1) {
  auto drawing = CutDrawingOf(document, page);
  EXPECT_TRUE(drawing) << Describe(drawing.Error());
  return drawing ? *std::move(drawing) : CutDrawing();
}

TEST(CutDrawing, a_closed_run_does_not_repeat_its_first_point) {
  Document document;
  document.SetBlank({.width = 12, .height = 7});
  Add(document, Square(2));
  const CutDrawing drawing = DrawingOf(document);
  EXPECT_EQ(drawing.width, 12);
  EXPECT_EQ(drawing.height, 7);
  ASSERT_EQ(drawing.objects.size(), 1U);
  EXPECT_EQ(drawing.objects[0].runs.at(0), (CutRun{{{0, 0}, {2, 0}, {2, 2}, {0, 2}}, true}));
}

TEST(CutDrawing, points_are_where_the_matrix_puts_them) {
  Document document;
  Attributes turned;
  turned.matrix = {0, 2, -2, 0, 10, 1};  // twice as large, a quarter turn
  Add(document, Square(1), turned);
  EXPECT_EQ(DrawingOf(document).objects.at(0).runs.at(0),
            (CutRun{{{10, 1}, {10, 3}, {8, 3}, {8, 1}}, true}));
}

TEST(CutDrawing, groups_are_walked_and_invisible_and_other_objects_left_out) {
  Document document;
  const auto outer = Add(document, GroupShape());
  Add(document, Square(1), {}, outer);
  const auto inner = Add(document, GroupShape(), {}, outer);
  Add(document, Square(2), {}, inner);
  Attributes hidden;
  hidden.traits = 0;
  Add(document, Square(3), hidden);
  Add(document, document::DrillShape{{1, 1}, 1});
  const CutDrawing drawing = DrawingOf(document);
  ASSERT_EQ(drawing.objects.size(), 2U);
  EXPECT_EQ(drawing.objects[0].runs.at(0).points.at(1).x, 1);
  EXPECT_EQ(drawing.objects[1].runs.at(0).points.at(1).x, 2);
}

TEST(CutDrawing, only_objects_of_the_page_count) {
  Document document;
  Attributes second;
  second.pages = {2, 3};
  Add(document, Square(1), second);
  EXPECT_EQ(DrawingOf(document, 1).objects.size(), 0U);
  EXPECT_EQ(DrawingOf(document, 2).objects.size(), 1U);
  EXPECT_EQ(DrawingOf(document, 3).objects.size(), 1U);
  EXPECT_EQ(DrawingOf(document, 4).objects.size(), 0U);
}

TEST(CutDrawing, an_object_has_the_color_of_its_inside_or_else_of_its_outline) {
  Document document;
  Attributes attributes;
  attributes.layer = test::Rgb(1, 2, 3);
  attributes.lineColor = test::Rgb(4, 5, 6);
  Add(document, Square(1), attributes);
  attributes.layer = document::InvisibleColor();
  Add(document, Square(1), attributes);
  const CutDrawing drawing = DrawingOf(document);
  EXPECT_EQ(drawing.objects.at(0).color, test::Rgb(1, 2, 3));
  EXPECT_EQ(drawing.objects.at(1).color, test::Rgb(4, 5, 6));
}

TEST(CutDrawing, a_line_is_of_its_paths_kind) {
  using document::CutLine;
  for (const auto& [line, kind] :
       {std::pair(CutLine::None, CutKind::Line), std::pair(CutLine::Cut, CutKind::Cut),
        std::pair(CutLine::Through, CutKind::CutThrough)}) {
    Document document;
    PathShape square = Square(1);
    square.cutLine = line;
    Add(document, square);
    EXPECT_EQ(DrawingOf(document).objects.at(0).kind, kind);
  }
}

TEST(CutDrawing, a_point_alone_is_no_line) {
  Document document;
  Add(document, PathShape{.subPaths = {{{1, 1}, {}, false}, {{2, 2}, {LineTo(2, 2)}, true}}});
  EXPECT_EQ(DrawingOf(document).objects.size(), 0U);
}

// A quarter of a circle of 10 cm: each straight line between two points of the curve lies within
// the tolerance of the circle, less the 0.0028 cm by which the curve itself leaves it.
TEST(CutDrawing, a_curve_becomes_straight_lines_within_the_tolerance) {
  Document document;
  const double handle = 10 * 0.5522847498;
  PathSegment quarter{true, {CWorldPoint{10, handle}, CWorldPoint{handle, 10}, {0, 10}}};
  Add(document, PathShape{.subPaths = {{{10, 0}, {quarter}, false}}});
  const CutDrawing drawing = DrawingOf(document);
  const auto& points = drawing.objects.at(0).runs.at(0).points;
  EXPECT_EQ(points.front(), (CWorldPoint{10, 0}));
  EXPECT_EQ(points.back(), (CWorldPoint{0, 10}));
  EXPECT_LT(points.size(), 200U);
  for (std::size_t i = 1; i < points.size(); ++i) {
    const double middle =
        std::hypot((points[i - 1].x + points[i].x) / 2, (points[i - 1].y + points[i].y) / 2);
    EXPECT_NEAR(middle, 10, CurveTolerance + 0.0028);
  }
}

TEST(CutDrawing, a_curve_is_never_made_of_more_than_ten_thousand_lines) {
  Document document;
  PathSegment wide{true, {CWorldPoint{1e6, 1e6}, CWorldPoint{-1e6, 1e6}, {0, 0}}};
  Add(document, PathShape{.subPaths = {{{0, 0}, {wide}, false}}});
  EXPECT_EQ(DrawingOf(document).objects.at(0).runs.at(0).points.size(), 10'001U);
}

TEST(CutDrawing, a_point_out_of_reach_is_refused) {
  for (const double x : {FarthestPoint, std::nextafter(FarthestPoint, INFINITY), -2 * FarthestPoint,
                         static_cast<double>(INFINITY), std::nan("")}) {
    Document document;
    Add(document, PathShape{.subPaths = {{{0, 0}, {LineTo(x, 0)}, false}}});
    EXPECT_EQ(static_cast<bool>(CutDrawingOf(document, 1)), x == FarthestPoint) << x;
  }
}

}  // namespace
}  // namespace rastrel::cutfile
