// Kerf, order, overcut, lead-in, bridges and weeding as options of `rastrel cut`.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

using cutting::Contour;
using cutting::LineTo;

class CutToolPaths : public testing::Test {
 protected:
  CutToolPaths() {
    job.width = 200;
    job.height = 100;
    job.paths = {
        {.contours = {Rectangle(10, 10, 110, 90), Rectangle(20, 20, 30, 30)}},
        {.contours = {Rectangle(50, 50, 60, 60)}, .operation = cutting::Operation::CutHalf}};
  }

  static Contour Rectangle(double left, double bottom, double right, double top) {
    return {.start = {left, bottom},
            .segments = {LineTo({right, bottom}), LineTo({right, top}), LineTo({left, top})},
            .closed = true};
  }

  CommandResult Cut(const std::vector<std::string>& options) {
    runner.Place().Write("in.json", cutting::JobFileText(job));
    std::vector<std::string> arguments{"cut", "in.json", "-o", "out.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runner.Run(arguments);
  }

  // The contours of the result, path by path.
  std::vector<Contour> Result() {
    const auto read = cutting::ReadJobFile(runner.Place().Read("out.json"), "out.json");
    std::vector<Contour> contours;
    if (!read) return contours;
    for (const cutting::CutPath& path : read->paths)
      contours.insert(contours.end(), path.contours.begin(), path.contours.end());
    return contours;
  }

  cutting::CutJob job;
  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(CutToolPaths, a_kerf_moves_outlines_out_and_holes_in) {
  const CommandResult result = Cut({"--kerf", "2mm", "--corners", "pointed", "--no-order"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Result(), (std::vector<Contour>{Rectangle(9, 9, 111, 91), Rectangle(21, 21, 29, 29),
                                            Rectangle(49, 49, 61, 61)}));
}

TEST_F(CutToolPaths, without_an_option_a_cut_job_stays_as_it_is) {
  EXPECT_EQ(Cut({}).status, 0);
  EXPECT_EQ(runner.Place().Read("out.json"), cutting::JobFileText(job));
}

TEST_F(CutToolPaths, half_cuts_and_holes_come_before_the_outline) {
  EXPECT_EQ(Cut({"--overcut", "1"}).status, 0);
  const std::vector<Contour> contours = Result();
  ASSERT_EQ(contours.size(), 3U);
  EXPECT_EQ(BoxOf(contours[0]), (cutting::Box{50, 50, 60, 60}));
  EXPECT_EQ(BoxOf(contours[1]), (cutting::Box{20, 20, 30, 30}));
  EXPECT_FALSE(contours[2].closed);
  EXPECT_EQ(contours[2].segments.size(), 5U);
}

TEST_F(CutToolPaths, bridges_hold_what_is_cut_through_alone) {
  EXPECT_EQ(Cut({"--bridges", "4,0.1cm"}).status, 0);
  // Two closed paths in four pieces each, and the half cut in one.
  EXPECT_EQ(Result().size(), 9U);
}

TEST_F(CutToolPaths, weeding_adds_a_box_and_lines) {
  EXPECT_EQ(Cut({"--weed-box", "5mm", "--weed-lines", "20mm", "--no-order"}).status, 0);
  const std::vector<Contour> contours = Result();
  ASSERT_GT(contours.size(), 4U);
  EXPECT_EQ(contours.back(), Rectangle(5, 5, 115, 95));
}

TEST_F(CutToolPaths, json_reports_travel_before_and_after) {
  job.paths = {{.contours = {{.start = {100, 0}, .segments = {LineTo({110, 0})}},
                             {.start = {10, 0}, .segments = {LineTo({20, 0})}}}}};
  const CommandResult result = Cut({"--overcut", "1", "--json"});
  const nlohmann::json report =
      nlohmann::json::parse(result.output.substr(0, result.output.find('\n')));
  EXPECT_EQ(report.at("event"), "tool-paths");
  EXPECT_EQ(report.at("travel_before_mm"), 200);
  EXPECT_EQ(report.at("travel_mm"), 90);
  EXPECT_EQ(report.at("lines"), 2);
  EXPECT_EQ(report.at("length_mm"), 20);
}

TEST_F(CutToolPaths, a_shorter_way_is_told) {
  job.paths = {{.contours = {{.start = {100, 0}, .segments = {LineTo({110, 0})}},
                             {.start = {10, 0}, .segments = {LineTo({20, 0})}}}}};
  EXPECT_EQ(Cut({"--overcut", "1"}).error,
            "note: the tool travels 90 mm between 2 paths; in the file's order it would be "
            "200 mm\n");
}

TEST_F(CutToolPaths, a_hole_that_the_kerf_fills_is_told_with_its_place) {
  job.paths[0].contours[1] = Rectangle(20, 20, 30, 20.5);
  const CommandResult result = Cut({"--kerf", "1", "--no-order"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error,
            "warning: the hole at 25,20.25 mm is narrower than the kerf and is left out\n");
}

TEST_F(CutToolPaths, values_that_are_none_are_refused_and_no_file_is_made) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"--kerf", "wide"}, "--kerf wide: 'wide' is no length above 0 and up to 10 m, as 0.2mm"},
      {{"--kerf", "0"}, "--kerf 0: '0' is no length above 0 and up to 10 m, as 0.2mm"},
      {{"--overcut", "-1mm"}, "--overcut -1mm: '-1mm' is no length above 0"},
      {{"--lead-in", "10001"}, "--lead-in 10001: '10001' is no length above 0 and up to 10 m"},
      {{"--weed-box", "nan"}, "--weed-box nan: 'nan' is no length above 0"},
      {{"--bridges", "4"}, "--bridges 4: bridges are N,LENGTH, as in 4,1mm"},
      {{"--bridges", "0,1"}, "--bridges 0: not a number from 1 to 1000"},
      {{"--bridges", "1001,1"}, "--bridges 1001: not a number from 1 to 1000"},
      {{"--bridges", "2,x"}, "--bridges 2,x: 'x' is no length above 0 and up to 10 m"},
      {{"--corners", "oval"}, "--corners oval: corners are round, square or pointed"},
  };
  for (const auto& [options, message] : cases) {
    const CommandResult result = Cut(options);
    EXPECT_EQ(result.status, 2) << options[0];
    EXPECT_NE(result.error.find(message), std::string::npos) << result.error;
    EXPECT_FALSE(runner.Place().Has("out.json"));
  }
  EXPECT_EQ(Cut({"--weed-lines", "0.001mm"}).error,
            "rastrel: the weeding lines would be more than 10000; give a larger step\n");
  EXPECT_EQ(Cut({"--bridges", "1000,0.001"}).status, 0);
  EXPECT_EQ(Cut({"--lead-in", "10000", "--force"}).status, 0);
}

}  // namespace
}  // namespace rastrel::test
