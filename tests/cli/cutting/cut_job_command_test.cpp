// `rastrel cut` with a cut job as its file.

#include <gtest/gtest.h>

#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

class CutJobCommand : public testing::Test {
 protected:
  CutJobCommand() {
    job.width = 100;
    job.height = 50;
    job.paths.push_back({.contours = {{.start = {1, 2},
                                       .segments = {cutting::CurveTo({3, 4}, {5, 6}, {7, 8})},
                                       .closed = true}},
                         .operation = cutting::Operation::CutHalf});
  }

  cutting::CutJob job;
  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(CutJobCommand, a_job_is_written_to_the_named_file) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const CommandResult result = runner.Run({"cut", "in.json", "-o", "out.json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, "out.json\n");
  EXPECT_EQ(runner.Place().Read("out.json"), cutting::JobFileText(job));
}

TEST_F(CutJobCommand, a_job_goes_to_standard_output_alone) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const CommandResult result = runner.Run({"cut", "in.json", "-o", "-"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, cutting::JobFileText(job));
}

TEST_F(CutJobCommand, json_gives_size_and_number_of_paths) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  EXPECT_EQ(runner.Run({"cut", "in.json", "-o", "out.json", "--json"}).LastLine(),
            R"({"event":"done","exit":0,"paths":["out.json"],"width_mm":100.0,"height_mm":50.0,)"
            R"("cut_paths":1})");
}

TEST_F(CutJobCommand, a_fault_is_told_with_line_and_column_and_no_file_is_made) {
  runner.Place().Write("in.json", "{\n  \"width\": \"wide\"}");
  const CommandResult result = runner.Run({"cut", "in.json", "-o", "out.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error, "rastrel: in.json:2:12: a number is expected here\n");
  EXPECT_FALSE(runner.Place().Has("out.json"));
}

TEST_F(CutJobCommand, an_unknown_ending_is_refused_with_the_known_ones) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const CommandResult result = runner.Run({"cut", "in.json", "-o", "out.xyz"});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.error.find(
                "can't write 'out.xyz': its form is none of .json, .plt, .hpgl, .dxf, .svg, "
                ".pdf, .gcode, .nc, .ngc"),
            std::string::npos)
      << result.error;
}

TEST_F(CutJobCommand, a_preview_is_the_picture_that_picture_draws) {
  // Files for cutters count from the first mark, and the picture does not.
  job.marks = {{.center = {4, 4}, .size = 5}, {.center = {90, 4}, .size = 5}};
  runner.Place().Write("in.json", cutting::JobFileText(job));
  for (const std::string name :
       {"preview.svg", "sign.preview.svg", "Sign.Preview.SVG", "any.png"}) {
    const std::string other = name.ends_with(".png") ? "other.png" : "other.svg";
    ASSERT_EQ(runner.Run({"cut", "in.json", "-o", name}).status, 0) << name;
    ASSERT_EQ(runner.Run({"cut", "in.json", "--picture", other}).status, 0) << name;
    EXPECT_EQ(runner.Place().Read(name), runner.Place().Read(other)) << name;
  }
  ASSERT_EQ(runner.Run({"cut", "in.json", "-o", "mypreview.svg"}).status, 0);
  EXPECT_NE(runner.Place().Read("mypreview.svg"), runner.Place().Read("other.svg"))
      << "a file for a cutter";
}

TEST_F(CutJobCommand, the_job_does_not_take_its_own_place) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  EXPECT_EQ(runner.Run({"cut", "in.json", "-o", "in.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json", "--cut-color", "spot:A", "-o", "out.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json", "in.json", "-o", "out.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "missing.json", "-o", "out.json"}).status, 3);
}

TEST_F(CutJobCommand, the_ending_chooses_the_form) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const auto begins = [&](const char* name, const char* begin) {
    const CommandResult result = runner.Run({"cut", "in.json", "-o", name});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(runner.Place().Read(name).starts_with(begin)) << name;
  };
  for (const char* name : {"out.plt", "out.hpgl", "OUT.PLT"}) begins(name, "IN;\nSP2;\nPU40,80;\n");
  begins("out.dxf", "  0\r\nSECTION\r\n  2\r\nHEADER\r\n  9\r\n$ACADVER\r\n  1\r\nAC1015\r\n");
  begins("out.svg", "<?xml");
  begins("out.pdf", "%PDF-1.6\n");
  for (const char* name : {"out.gcode", "out.nc", "out.ngc"})
    begins(name, "G21\nG90\nM5\nF600\nG0 X1 Y2\nM3 S100\n");
}

TEST_F(CutJobCommand, version_origin_and_tolerance_are_the_forms_own) {
  job.marks.push_back(
      {.center = {1, 2}, .shape = cutting::RegistrationMark::Shape::Circle, .size = 5});
  runner.Place().Write("in.json", cutting::JobFileText(job));
  EXPECT_EQ(runner.Run({"cut", "in.json", "-o", "out.dxf", "--dxf-version", "r12"}).status, 0);
  EXPECT_NE(runner.Place().Read("out.dxf").find("AC1009"), std::string::npos);
  const CommandResult plotted = runner.Run(
      {"cut", "in.json", "-o", "out.plt", "--origin", "first-mark", "--tolerance", "10mm"});
  EXPECT_EQ(plotted.status, 0) << plotted.error;
  EXPECT_EQ(runner.Place().Read("out.plt"), "IN;\nSP2;\nPU0,0;\nPD240,240,0,0;\nPU;\nSP0;\n");
}

TEST_F(CutJobCommand, values_that_these_options_can_not_have_are_refused) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const auto refused = [&](const char* option, const char* value, const char* text) {
    const CommandResult result = runner.Run({"cut", "in.json", "-o", "out.dxf", option, value});
    EXPECT_EQ(result.status, 2) << value;
    EXPECT_NE(result.error.find(text), std::string::npos) << result.error;
    EXPECT_FALSE(runner.Place().Has("out.dxf"));
  };
  refused("--dxf-version", "r13", "--dxf-version can't be 'r13'; it is one of r12 r2000");
  refused("--origin", "middle", "--origin can't be 'middle'; it is one of lower-left");
  for (const char* value : {"0", "-1", "0.00009", "10.1", "nan", "inf", "0.1in", "x", "0.1mmm"})
    refused("--tolerance", value, "--tolerance is a length of 0.0001 to 10 mm, and not '");
  for (const char* value : {"0.0001", "10", "0.5mm"})
    EXPECT_EQ(runner.Run({"cut", "in.json", "-o", "out.gcode", "--tolerance", value}).status, 0);
}

TEST_F(CutJobCommand, an_origin_at_a_mark_that_is_not_there_makes_no_file) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  const CommandResult result =
      runner.Run({"cut", "in.json", "-o", "out.plt", "--origin", "first-mark"});
  EXPECT_NE(result.status, 0);
  EXPECT_EQ(result.error,
            "rastrel: the origin is to be the first mark, but the job has no marks\n");
  EXPECT_FALSE(runner.Place().Has("out.plt"));
}

}  // namespace
}  // namespace rastrel::test
