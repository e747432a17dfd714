#include "cutting/dxf/dxf_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "cutting/dxf/dxf_color.h"
#include "cutting/dxf/spline.h"

namespace rastrel::cutting {
namespace {

// Groups "code value" parted by semicolons, each in its two lines.
std::string Groups(std::string text) {
  std::string lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(';', at), text.size());
    const std::string group = text.substr(at, end - at);
    const std::size_t space = group.find(' ');
    lines += group.substr(0, space) + "\n" + group.substr(space + 1) + "\n";
    at = end + 1;
  }
  return lines;
}

std::string File(const std::string& objects, const std::string& tables = {},
                 const std::string& blocks = {}, const std::string& header = "9 $INSUNITS;70 4;") {
  return Groups("0 SECTION;2 HEADER;" + header + "0 ENDSEC;0 SECTION;2 TABLES;" + tables +
                "0 ENDSEC;0 SECTION;2 BLOCKS;" + blocks + "0 ENDSEC;0 SECTION;2 ENTITIES;" +
                objects + "0 ENDSEC;0 EOF");
}

constexpr const char* Line = "0 LINE;8 A;10 5;20 5;11 15;21 5;";

Drawing Read(const std::string& text) {
  auto drawing = ReadDxf(text, "plan.dxf");
  EXPECT_TRUE(drawing) << Describe(drawing.Error());
  return drawing ? *std::move(drawing) : Drawing{};
}

std::string FaultOf(const std::string& text) {
  const auto drawing = ReadDxf(text, "plan.dxf");
  if (drawing) return "read";
  EXPECT_EQ(drawing.Error().code, FailureCode::BadInput);
  return Describe(drawing.Error());
}

std::string FindingsOf(const Drawing& drawing) {
  std::string texts;
  for (const Finding& finding : drawing.findings) texts += finding.text + "\n";
  return texts;
}

TEST(DxfReader, an_old_polyline_is_closed_by_its_flag) {
  const char* vertices =
      "0 VERTEX;8 A;10 0;20 0;0 VERTEX;8 A;10 5;20 0;0 VERTEX;8 A;10 5;20 5;0 SEQEND;";
  for (const bool isClosed : {false, true}) {
    const Drawing drawing =
        Read(File("0 POLYLINE;8 A;66 1;70 " + std::string(isClosed ? "1;" : "0;") + vertices));
    ASSERT_EQ(drawing.job.paths.size(), 1U) << FindingsOf(drawing);
    ASSERT_EQ(drawing.job.paths[0].contours.size(), 1U);
    EXPECT_EQ(drawing.job.paths[0].contours[0].closed, isClosed);
  }
}

TEST(Spline, has_a_knot_for_each_control_point_and_for_its_order) {
  Spline spline{.degree = 1, .knots = {0, 0, 1, 1}, .controls = {{0, 0}, {1, 1}}};
  EXPECT_TRUE(IsSound(spline));
  spline.knots.push_back(1);
  EXPECT_FALSE(IsSound(spline));
  spline.knots = {0, 0, 1};
  EXPECT_FALSE(IsSound(spline));
  spline = {.degree = 2, .knots = {0, 0, 1, 1, 1}, .controls = {{0, 0}, {1, 1}}};
  EXPECT_FALSE(IsSound(spline)) << "of degree 2 it has three points at least";
  spline = {.degree = 1, .knots = {0, 0, 1, 1}, .controls = {{0, 0}, {1, 1}}, .weights = {1}};
  EXPECT_FALSE(IsSound(spline));
}

// With the knots 0 and 1, four of each, its control points are those of one curve.
TEST(DxfReader, a_spline_of_one_curve_is_that_curve) {
  const std::string begin = "0 SPLINE;8 A;70 8;71 3;40 0;40 0;40 0;40 0;40 1;40 1;40 1;40 1;";
  const std::string points = "10 0;20 1;30 0;10 1;20 0;30 0;10 2;20 3;30 0;10 4;20 2;30 0;";
  for (const std::string weights : {"", "41 1;41 1;41 1;41 1;"}) {
    const Drawing drawing = Read(File(begin + weights + points));
    ASSERT_EQ(drawing.job.paths.size(), 1U);
    const Contour& contour = drawing.job.paths[0].contours.at(0);
    EXPECT_FALSE(contour.closed);
    ASSERT_EQ(contour.segments.size(), 1U);
    ASSERT_TRUE(contour.segments[0].isCurve);
    // The page begins where the drawing does.
    const Segment& curve = contour.segments[0];
    const auto at = [&](double x, double y) {
      return Point{contour.start.x + x, contour.start.y + y};
    };
    EXPECT_LT(Distance(curve.first, at(1, -1)), 1e-9);
    EXPECT_LT(Distance(curve.second, at(2, 2)), 1e-9);
    EXPECT_LT(Distance(curve.end, at(4, 1)), 1e-9);
  }
}

TEST(DxfReader, a_line_has_its_layer_and_the_layers_color_and_width) {
  const Drawing drawing =
      Read(File(Line, "0 TABLE;2 LAYER;0 LAYER;2 A;70 0;62 1;370 25;0 ENDTAB;"));
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  const CutPath& path = drawing.job.paths[0];
  EXPECT_EQ(path.paint.layer, "A");
  EXPECT_EQ(path.paint.color, (PaintColor{ColorModel::Rgb, {1, 0, 0}, {}}));
  EXPECT_EQ(path.paint.lineWidth, 0.25);
  EXPECT_EQ(path.contours[0].start, (Point{0, 0})) << "the page is the box around the paths";
  EXPECT_EQ(path.contours[0].End(), (Point{10, 0}));
  EXPECT_EQ(drawing.job.width, 10);
  EXPECT_EQ(FindingsOf(drawing), "");
}

TEST(DxfReader, the_objects_own_color_goes_before_the_layers) {
  const auto color = [](const std::string& groups) {
    return Read(File("0 LINE;8 a;" + groups + "10 0;20 0;11 9;21 0;", "0 LAYER;2 A;62 1;"))
        .job.paths.at(0)
        .paint.color.components;
  };
  EXPECT_EQ(color("62 5;"), (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(color("62 256;"), (std::vector<double>{1, 0, 0}));
  EXPECT_EQ(color("420 65280;"), (std::vector<double>{0, 1, 0}));
}

TEST(DxfReader, color_numbers_are_those_of_the_palette) {
  EXPECT_EQ(DxfColor(7).components, (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(DxfColor(30).components, (std::vector<double>{1, 127 / 255.0, 0}));
  EXPECT_EQ(DxfColor(12).components, (std::vector<double>{165 / 255.0, 0, 0}));
  EXPECT_EQ(DxfColor(11).components, (std::vector<double>{1, 127 / 255.0, 127 / 255.0}));
  EXPECT_EQ(DxfColor(255).components, (std::vector<double>{1, 1, 1}));
  for (const int number : {-1, 0, 256, 100000}) EXPECT_EQ(DxfColor(number), DxfColor(7));
}

TEST(DxfReader, objects_of_hidden_layers_and_invisible_ones_are_not_cut) {
  const Drawing drawing =
      Read(File("0 LINE;8 OFF;10 0;20 0;11 1;21 1;0 LINE;8 FROZEN;10 0;20 0;11 1;21 1;"
                "0 LINE;8 A;60 1;10 0;20 0;11 1;21 1;0 LINE;8 A;67 1;10 0;20 0;11 1;21 1;",
                "0 LAYER;2 OFF;62 -1;0 LAYER;2 FROZEN;62 1;70 1;"));
  EXPECT_TRUE(drawing.job.paths.empty());
  EXPECT_EQ(FindingsOf(drawing), "the objects of the paper space are not read\n");
}

TEST(DxfReader, the_unit_makes_millimetres) {
  const auto width = [](const std::string& unit) {
    return Read(File(Line, {}, {}, "9 $INSUNITS;70 " + unit + ";")).job.width;
  };
  EXPECT_DOUBLE_EQ(width("1"), 254);
  EXPECT_DOUBLE_EQ(width("2"), 3048);
  EXPECT_DOUBLE_EQ(width("4"), 10);
  EXPECT_DOUBLE_EQ(width("5"), 100);
  EXPECT_DOUBLE_EQ(width("6"), 10000);
  const Drawing none = Read(File(Line, {}, {}, ""));
  EXPECT_DOUBLE_EQ(none.job.width, 10);
  EXPECT_EQ(FindingsOf(none), "the drawing names no unit; its numbers are taken as millimetres\n");
  EXPECT_EQ(FaultOf(File(Line, {}, {}, "9 $INSUNITS;70 99;")),
            "plan.dxf:1:1: the drawing's unit is not read: $INSUNITS 99");
}

TEST(DxfReader, objects_of_a_block_on_layer_0_take_the_insertions_layer_and_color) {
  const std::string block =
      "0 BLOCK;2 Badge;10 1;20 1;0 LINE;8 0;62 0;10 1;20 1;11 3;21 1;0 LINE;8 B;10 1;20 1;11 1;21 "
      "3;0 ENDBLK;";
  const Drawing drawing =
      Read(File("0 INSERT;8 A;62 3;2 BADGE;10 0;20 0;41 2;42 2;", "0 LAYER;2 B;62 1;", block));
  ASSERT_EQ(drawing.job.paths.size(), 2U);
  EXPECT_EQ(drawing.job.paths[0].paint.layer, "A");
  EXPECT_EQ(drawing.job.paths[0].paint.color.components, (std::vector<double>{0, 1, 0}));
  EXPECT_EQ(drawing.job.paths[0].contours[0].End(), (Point{4, 0}));
  EXPECT_EQ(drawing.job.paths[1].paint.layer, "B");
  EXPECT_EQ(drawing.job.paths[1].paint.color.components, (std::vector<double>{1, 0, 0}));
}

TEST(DxfReader, objects_that_are_not_read_are_told_once) {
  const Drawing drawing =
      Read(File("0 TEXT;8 A;1 Sign;0 TEXT;8 A;1 Shop;0 HATCH;8 A;0 CIRCLE;8 A;10 0;20 0;40 0;"
                "0 LINE;8 A;10 0;20 0;11 1;21 1;210 1;220 0;230 0;0 INSERT;8 A;2 none;10 0;20 0;"
                "0 POLYLINE;8 A;70 64;0 VERTEX;8 A;10 0;20 0;0 SEQEND;"));
  EXPECT_EQ(FindingsOf(drawing),
            "objects of the type TEXT are not read\n"
            "objects of the type HATCH are not read\n"
            "objects of the type CIRCLE are not read where their numbers make no such curve\n"
            "objects that are turned out of the drawing's plane are not read\n"
            "blocks that the file does not have are left out\n"
            "meshes are not read\n");
  EXPECT_EQ(drawing.findings[0].times, 2U);
  EXPECT_TRUE(drawing.job.paths.empty());
}

TEST(DxfReader, faults_have_their_line_and_reason) {
  EXPECT_EQ(FaultOf(""), "plan.dxf:1:1: the file ends too early");
  EXPECT_EQ(FaultOf("0\nEOF\n"), "plan.dxf:1:1: the file is no DXF drawing: it has no section");
  EXPECT_EQ(FaultOf("AutoCAD Binary DXF\r\n"),
            "plan.dxf:1:1: the drawing is a binary DXF file; only those that are text are read");
  EXPECT_EQ(FaultOf("0\nSECTION\n2\nENTITIES\n0\nLINE\nten\n5\n"),
            "plan.dxf:7:1: a group code is expected here");
  EXPECT_EQ(FaultOf("0\nSECTION\n2\nENTITIES\n0\nLINE\n10"),
            "plan.dxf:8:1: the value of the group code 10 is missing");
  EXPECT_EQ(FaultOf("0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nfive\n0\nENDSEC\n0\nEOF\n"),
            "plan.dxf:8:1: a number is expected here");
  std::string cut = File(Line);
  EXPECT_NE(FaultOf(cut.substr(0, cut.size() - 7)), "read");
}

TEST(DxfReader, every_begin_of_a_file_fails_or_is_read) {
  const std::string whole =
      File("0 INSERT;8 A;2 B;10 0;20 0;0 SPLINE;8 A;71 3;40 0;40 1;10 0;20 1;", "0 LAYER;2 A;62 1;",
           "0 BLOCK;2 B;0 CIRCLE;8 0;40 5;0 ENDBLK;");
  for (std::size_t size = 0; size + 4 < whole.size(); ++size)
    EXPECT_NE(FaultOf(whole.substr(0, size)), "read") << size;
}

TEST(DxfReader, blocks_within_blocks_are_read_to_their_limit) {
  const auto nested = [](int depth) {
    std::string blocks = "0 BLOCK;2 b0;0 LINE;8 0;10 0;20 0;11 1;21 1;0 ENDBLK;";
    for (int i = 1; i < depth; ++i)
      blocks += "0 BLOCK;2 b" + std::to_string(i) + ";0 INSERT;8 0;2 b" + std::to_string(i - 1) +
                ";10 0;20 0;0 ENDBLK;";
    return FaultOf(
        File("0 INSERT;8 A;2 b" + std::to_string(depth - 1) + ";10 0;20 0;", {}, blocks));
  };
  EXPECT_EQ(nested(15), "read");
  EXPECT_EQ(nested(16), "read");
  EXPECT_NE(nested(17).find("blocks lie more than 16 deep"), std::string::npos);
}

TEST(DxfReader, a_small_file_makes_no_large_job) {
  std::string blocks = "0 BLOCK;2 b0;0 LINE;8 0;10 0;20 0;11 1;21 1;0 ENDBLK;";
  for (int i = 1; i < 10; ++i)
    blocks += "0 BLOCK;2 b" + std::to_string(i) + ";0 INSERT;8 0;2 b" + std::to_string(i - 1) +
              ";70 100;71 100;10 0;20 0;44 1;45 1;0 ENDBLK;";
  EXPECT_NE(FaultOf(File("0 INSERT;8 A;2 b9;10 0;20 0;", {}, blocks)), "read");
  EXPECT_NE(
      FaultOf(File("0 INSERT;8 A;2 b;70 999999;71 999999;10 0;20 0;", {}, "0 BLOCK;2 b;0 ENDBLK;")),
      "read");
}

TEST(DxfReader, names_of_layers_are_read_in_their_encodings) {
  const auto layer = [](const std::string& name, const std::string& version) {
    return Read(File("0 LINE;8 " + name + ";10 0;20 0;11 1;21 1;", {}, {},
                     "9 $ACADVER;1 " + version + ";9 $INSUNITS;70 4;"))
        .job.paths.at(0)
        .paint.layer;
  };
  EXPECT_EQ(layer("Schnei\xDF", "AC1009"), "Schnei\u00DF");
  EXPECT_EQ(layer("Schnei\\U+00DF", "AC1015"), "Schnei\u00DF");
  EXPECT_EQ(layer("Schnei\u00DF", "AC1032"), "Schnei\u00DF");
  EXPECT_EQ(layer("\\U+00D", "AC1009"), "\\U+00D");
}

TEST(DxfReader, a_point_is_a_path_of_one_point) {
  const Drawing drawing = Read(File("0 POINT;8 A;10 3;20 4;"));
  ASSERT_EQ(drawing.job.paths.size(), 1U);
  EXPECT_TRUE(drawing.job.paths[0].contours[0].segments.empty());
}

}  // namespace
}  // namespace rastrel::cutting
