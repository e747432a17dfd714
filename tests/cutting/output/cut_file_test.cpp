#include "cutting/output/cut_file.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "tests/cutting/output/sample_jobs.h"

namespace rastrel::cutting {
namespace {

using test::JobOf;
using test::Line;
using test::PathOf;

constexpr std::array AllForms{CutForm::Hpgl, CutForm::Dxf, CutForm::Svg, CutForm::Pdf,
                              CutForm::Gcode};

std::string Fault(const CutJob& job, CutForm form, const CutFileOptions& options = {}) {
  const auto text = WriteCutFile(job, form, options);
  return text ? "" : Describe(text.Error());
}

TEST(CutFormOfFile, endings_in_capitals_or_not_name_the_forms) {
  EXPECT_EQ(CutFormOfFile("a.plt"), CutForm::Hpgl);
  EXPECT_EQ(CutFormOfFile("a.b.HPGL"), CutForm::Hpgl);
  EXPECT_EQ(CutFormOfFile("dir/a.Dxf"), CutForm::Dxf);
  EXPECT_EQ(CutFormOfFile("a.svg"), CutForm::Svg);
  EXPECT_EQ(CutFormOfFile("a.pdf"), CutForm::Pdf);
  for (const char* name : {"a.gcode", "a.nc", "a.ngc"})
    EXPECT_EQ(CutFormOfFile(name), CutForm::Gcode);
  for (const char* name : {"", "a", "plt", "a.json", "a.plt.gz"})
    EXPECT_EQ(CutFormOfFile(name), std::nullopt);
}

TEST(CutFormOf, each_name_leads_back_to_its_form) {
  for (const CutForm form : AllForms) EXPECT_EQ(CutFormOf(NameOf(form)), form);
  EXPECT_EQ(CutFormOf("plt"), std::nullopt);
}

TEST(WriteCutFile, coordinates_go_to_a_kilometre) {
  const auto job = [](double x) {
    return JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {x, 0}})})});
  };
  for (const CutForm form : {CutForm::Dxf, CutForm::Svg, CutForm::Pdf, CutForm::Gcode}) {
    for (const double x : {999'999.0, 1e6, -1e6}) EXPECT_EQ(Fault(job(x), form), "");
    for (const double x : {1'000'000.01, -1'000'000.01, std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity()})
      EXPECT_EQ(Fault(job(x), form), "path 1 leads farther than a kilometre");
  }
}

TEST(WriteCutFile, a_control_point_that_is_no_number_is_refused_in_each_form) {
  CutJob job = test::Plate();
  job.paths[5].contours[0].segments[2].first.x = std::numeric_limits<double>::quiet_NaN();
  for (const CutForm form : AllForms)
    EXPECT_TRUE(Fault(job, form).starts_with("path 6 leads ")) << NameOf(form);
}

TEST(WriteCutFile, settings_that_no_device_has_are_refused) {
  const auto fault = [](const ToolSettings& settings) {
    return Fault(JobOf({PathOf(Operation::Cut, {Line({{0, 0}, {1, 0}})}, settings)}),
                 CutForm::Hpgl);
  };
  for (const double value : {0.0, -1.0, 1e6 + 1, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(fault({.speed = value}),
              "path 1 has a speed that is not above 0 and at most 1000000");
    EXPECT_EQ(fault({.force = value}),
              "path 1 has a force that is not above 0 and at most 1000000");
  }
  EXPECT_EQ(fault({.speed = 1e6, .force = 1e6}), "");
  EXPECT_EQ(fault({.passes = 0}), "path 1 is followed less than once or more than 99 times");
  EXPECT_EQ(fault({.passes = 1}), "");
  EXPECT_EQ(fault({.passes = 99}), "");
  EXPECT_EQ(fault({.passes = 100}), "path 1 is followed less than once or more than 99 times");
}

TEST(WriteCutFile, settings_of_a_path_without_a_tool_do_not_count) {
  EXPECT_EQ(Fault(JobOf({PathOf(Operation::Print, {Line({{0, 0}, {1, 0}})}, {.passes = 0})}),
                  CutForm::Hpgl),
            "");
}

TEST(WriteCutFile, a_tolerance_is_a_tenth_of_a_micrometre_or_more) {
  CutFileOptions options;
  for (const double tolerance : {0.00009, 0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity()}) {
    options.tolerance = tolerance;
    EXPECT_EQ(Fault({}, CutForm::Hpgl, options), "the tolerance of curves is 0.0001 mm or more");
  }
  options.tolerance = 0.0001;
  EXPECT_EQ(Fault({}, CutForm::Hpgl, options), "");
}

TEST(WriteCutFile, a_page_and_marks_have_sizes_that_are_numbers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double side : {-1.0, 1e6 + 1, nan}) {
    EXPECT_EQ(Fault({.width = side, .height = 1, .paths = {}}, CutForm::Svg),
              "the page's sides are 0 to a million millimetres long");
    EXPECT_EQ(Fault({.width = 1, .height = side, .paths = {}}, CutForm::Pdf),
              "the page's sides are 0 to a million millimetres long");
  }
  EXPECT_EQ(
      Fault({.width = 1, .height = 1, .paths = {}, .marks = {{.center = {nan, 0}}}}, CutForm::Dxf),
      "a registration mark lies farther than a kilometre");
}

}  // namespace
}  // namespace rastrel::cutting
