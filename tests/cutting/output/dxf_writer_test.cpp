#include "cutting/output/dxf_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "cutting/output/cut_file.h"
#include "tests/cutting/output/judge.h"
#include "tests/cutting/output/line_distance.h"
#include "tests/cutting/output/sample_jobs.h"
#include "tests/support/comma_locale.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cutting {
namespace {

using test::Circle;
using test::JobOf;
using test::Line;
using test::PathOf;
using test::Rectangle;

struct Entity {
  std::string kind;
  std::string layer;
  Contour contour;
};

struct Drawing {
  bool hasJudge = true;
  std::vector<std::string> faults;
  std::string heading;
  std::vector<Entity> entities;
};

Drawing Read(const std::string& text) {
  rastrel::test::ScratchDirectory place;
  place.Write("a.dxf", text);
  Drawing drawing;
  const int status = test::StatusOf("/usr/bin/python3 -B '" RASTREL_SOURCE_DIR
                                    "/tests/cutting/output/dxf_judge.py' '" +
                                    place.Path("a.dxf") + "' > '" + place.Path("out") + "'");
  drawing.hasJudge = status != 77 && status != 127;
  if (!drawing.hasJudge) return drawing;
  EXPECT_EQ(status, 0);
  std::istringstream lines(place.Read("out"));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string kind;
    words >> kind;
    if (kind == "fault") {
      drawing.faults.push_back(line);
    } else if (kind == "version") {
      drawing.heading = line;
    } else {
      Entity entity{.kind = kind, .layer = {}, .contour = {}};
      std::string closed;
      std::vector<Point> points;
      words >> entity.layer >> closed;
      for (Point point; words >> point.x >> point.y;) points.push_back(point);
      entity.contour = Line(points, closed == "closed");
      drawing.entities.push_back(entity);
    }
  }
  return drawing;
}

std::vector<std::string> KindsOf(const Drawing& drawing) {
  std::vector<std::string> kinds;
  for (const Entity& entity : drawing.entities) kinds.push_back(entity.kind + " " + entity.layer);
  return kinds;
}

class DxfFile : public testing::TestWithParam<DxfVersion> {
 protected:
  static std::string Text(const CutJob& job) { return DxfText(job, {}, 0.02, GetParam()); }
};

TEST_P(DxfFile, another_program_finds_no_fault_in_a_plate_and_every_path_in_its_place) {
  const CutJob job = test::Plate();
  const Drawing drawing = Read(Text(job));
  if (!drawing.hasJudge) GTEST_SKIP() << "python3-ezdxf is not installed";
  EXPECT_EQ(drawing.faults, std::vector<std::string>{});
  EXPECT_EQ(drawing.heading,
            GetParam() == DxfVersion::R12 ? "version AC1009 units 4" : "version AC1015 units 4");
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    std::string layer(NameOf(path.operation));
    for (char& byte : layer) byte = byte == '-' ? '_' : static_cast<char>(std::toupper(byte));
    std::vector<Contour> of;
    for (const Entity& entity : drawing.entities)
      if (entity.layer == layer) of.push_back(entity.contour);
    // Splines are exact, but for the six decimals and the judge's own lines.
    EXPECT_LE(test::Distance(of, path.contours), GetParam() == DxfVersion::R12 ? 0.02001 : 0.0012)
        << layer;
  }
}

TEST_P(DxfFile, an_empty_job_is_a_sound_drawing) {
  const Drawing drawing = Read(Text({}));
  if (!drawing.hasJudge) GTEST_SKIP() << "python3-ezdxf is not installed";
  EXPECT_EQ(drawing.faults, std::vector<std::string>{});
  EXPECT_TRUE(drawing.entities.empty());
}

TEST_P(DxfFile, a_locale_with_a_comma_changes_no_byte) {
  const std::string text = Text(test::Plate());
  const rastrel::test::CommaLocale comma;
  EXPECT_EQ(Text(test::Plate()), text);
}

TEST_P(DxfFile, contours_that_are_points_are_left_out_but_those_of_a_drill) {
  const std::vector<Contour> points{Line({{1, 1}}), Line({{2, 2}, {2, 2}}, true)};
  EXPECT_EQ(Text(JobOf({PathOf(Operation::Cut, points)})).find("POINT"), std::string::npos);
  const Drawing drawing = Read(Text(JobOf({PathOf(Operation::Drill, points)})));
  if (!drawing.hasJudge) GTEST_SKIP() << "python3-ezdxf is not installed";
  EXPECT_EQ(KindsOf(drawing), (std::vector<std::string>{"POINT DRILL", "POINT DRILL"}));
}

INSTANTIATE_TEST_SUITE_P(Versions, DxfFile, testing::Values(DxfVersion::R12, DxfVersion::R2000),
                         [](const auto& version) {
                           return version.param == DxfVersion::R12 ? "R12" : "R2000";
                         });

TEST(DxfText, straight_and_curved_runs_of_a_contour_are_entities_that_meet) {
  const CutJob job = JobOf({PathOf(Operation::Cut, {test::LetterD({20, 20}, 30)})});
  const Drawing drawing = Read(DxfText(job, {}, 0.02, DxfVersion::R2000));
  if (!drawing.hasJudge) GTEST_SKIP() << "python3-ezdxf is not installed";
  EXPECT_EQ(KindsOf(drawing),
            (std::vector<std::string>{"LINE CUT", "SPLINE CUT", "LWPOLYLINE CUT"}));
  for (std::size_t i = 0; i < 3; ++i) {
    const Point end = drawing.entities[i].contour.End();
    const Point next = drawing.entities[(i + 1) % 3].contour.start;
    EXPECT_LE(Distance(end, next), 1e-6) << i;
  }
}

TEST(DxfText, a_straight_closed_contour_is_one_closed_polyline) {
  // Its last segment leads to its start, which is not said twice.
  const CutJob job = JobOf({PathOf(
      Operation::Cut, {Line({{0, 0}, {5, 0}, {5, 5}, {0, 0}}, true), Rectangle(0, 0, 2, 1)})});
  const std::string text = DxfText(job, {}, 0.02, DxfVersion::R2000);
  EXPECT_NE(text.find("AcDbPolyline\r\n 90\r\n3\r\n 70\r\n1\r\n"), std::string::npos);
  EXPECT_NE(text.find("AcDbPolyline\r\n 90\r\n4\r\n 70\r\n1\r\n"), std::string::npos);
}

TEST(DxfText, a_spline_of_two_curves_has_threefold_inner_knots) {
  const CutJob job = JobOf(
      {PathOf(Operation::Cut,
              {{.start = {0, 0},
                .segments = {CurveTo({1, 0}, {2, 1}, {2, 2}), CurveTo({2, 3}, {1, 4}, {0, 4})}}})});
  const std::string text = DxfText(job, {}, 0.02, DxfVersion::R2000);
  std::string knots = " 70\r\n8\r\n 71\r\n3\r\n 72\r\n11\r\n 73\r\n7\r\n 74\r\n0\r\n";
  for (const char* knot : {"0", "0", "0", "0", "1", "1", "1", "2", "2", "2", "2"})
    knots += std::string(" 40\r\n") + knot + ".0\r\n";
  EXPECT_NE(text.find(knots + " 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n 10\r\n1.0\r\n"),
            std::string::npos)
      << text;
}

// Of the table STYLE the groups of the published reference: flags, fixed height, width, slant,
// mirroring, the height that was used last, and the font's file.
TEST(DxfText, the_text_style_has_all_its_groups) {
  const std::string text = DxfText({}, {}, 0.02, DxfVersion::R2000);
  EXPECT_NE(text.find("AcDbTextStyleTableRecord\r\n  2\r\nStandard\r\n 70\r\n0\r\n 40\r\n0.0\r\n"
                      " 41\r\n1.0\r\n 50\r\n0.0\r\n 71\r\n0\r\n 42\r\n1.0\r\n  3\r\ntxt\r\n"
                      "  4\r\n\r\n"),
            std::string::npos)
      << text;
}

// By the published reference each block begins and ends with an entity that has a handle, the
// handle of its record as its owner, and the paper's ones the mark of paper.
TEST(DxfText, both_blocks_begin_and_end_with_their_entities) {
  const std::string text = DxfText({}, {}, 0.02, DxfVersion::R2000);
  const std::size_t begin = text.find("  2\r\nBLOCKS\r\n");
  ASSERT_NE(begin, std::string::npos);
  std::istringstream lines(text.substr(begin, text.find("ENDSEC", begin) - begin));
  std::vector<std::string> codes;
  for (std::string code, value; std::getline(lines, code) && std::getline(lines, value);)
    codes.push_back(std::to_string(std::atoi(code.c_str())) +
                    (std::atoi(code.c_str()) == 0 ? " " + value : ""));
  codes.erase(codes.begin());
  const std::vector<std::string> expected{
      "0 BLOCK\r",  "5",  "330",        "100", "8",   "100", "2",   "70",  "10",        "20", "30",
      "3",          "1",  "0 ENDBLK\r", "5",   "330", "100", "8",   "100", "0 BLOCK\r", "5",  "330",
      "100",        "67", "8",          "100", "2",   "70",  "10",  "20",  "30",        "3",  "1",
      "0 ENDBLK\r", "5",  "330",        "100", "67",  "8",   "100", "0"};
  codes.resize(std::min(codes.size(), expected.size() - 1));
  EXPECT_EQ(codes, std::vector<std::string>(expected.begin(), expected.end() - 1));
}

TEST(DxfText, every_handle_is_there_once_and_below_the_seed) {
  const std::string text = DxfText(test::Plate(), {}, 0.02, DxfVersion::R2000);
  std::istringstream lines(text);
  std::vector<unsigned long> handles;
  unsigned long seed = 0;
  bool isSeed = false;
  for (std::string code, value; std::getline(lines, code) && std::getline(lines, value);) {
    const int number = std::atoi(code.c_str());
    if (isSeed) {
      seed = std::strtoul(value.c_str(), nullptr, 16);
      isSeed = false;
    } else if (number == 9) {
      isSeed = value == "$HANDSEED\r";
    } else if (number == 5 || number == 105) {
      handles.push_back(std::strtoul(value.c_str(), nullptr, 16));
    }
  }
  ASSERT_GT(handles.size(), 30U);
  std::ranges::sort(handles);
  EXPECT_EQ(std::ranges::adjacent_find(handles), handles.end());
  EXPECT_LT(handles.back(), seed);
}

TEST(DxfText, the_origin_is_the_first_marks) {
  CutJob job = JobOf({PathOf(Operation::Cut, {Line({{10, 10}, {20, 15}})})});
  job.marks.push_back({.center = {10, 12}});
  CutFileOptions options;
  options.placement.origin = Origin::FirstMark;
  const auto text = WriteCutFile(job, CutForm::Dxf, options);
  ASSERT_TRUE(text);
  EXPECT_NE(text->find(" 10\r\n0.0\r\n 20\r\n-2.0\r\n 30\r\n0.0\r\n 11\r\n10.0\r\n 21\r\n3.0\r\n"),
            std::string::npos);
}

TEST(DxfVersionOf, each_name_leads_back_to_its_version) {
  for (const DxfVersion version : {DxfVersion::R12, DxfVersion::R2000})
    EXPECT_EQ(DxfVersionOf(NameOf(version)), version);
  EXPECT_EQ(DxfVersionOf("R12"), std::nullopt);
}

}  // namespace
}  // namespace rastrel::cutting
