// `rastrel cut` with registration marks, and with the places where a cutter has found them.

#include "cli/cutting/frame_stages.h"

#include <gtest/gtest.h>

#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

using cutting::CutJob;
using cutting::Point;

class FrameStages : public testing::Test {
 protected:
  FrameStages() {
    CutJob job{.width = 200, .height = 100, .paths = {}};
    job.paths.push_back({.contours = {{.start = {10, 10},
                                       .segments = {cutting::CurveTo({10, 60}, {60, 60}, {60, 10})},
                                       .closed = true}}});
    runner.Place().Write("in.json", cutting::JobFileText(job));
    const CommandResult result =
        runner.Run({"cut", "in.json", "--marks", "circle:5mm", "-o", "marked.json"});
    EXPECT_EQ(result.status, 0) << result.error;
    note = result.error;
  }

  CutJob Read(const std::string& name) {
    auto job = cutting::ReadJobFile(runner.Place().Read(name), name);
    EXPECT_TRUE(job);
    return job ? *job : CutJob{};
  }

  CommandResult Fit(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"cut", "marked.json", "-o", "knife.json"});
    return runner.Run(arguments);
  }

  CommandRunner runner{CommandRunner::Children::None};
  std::string note;
};

// Of the job above: marks at (4.5, 4.5), (229.5, 4.5), (229.5, 119.5), (4.5, 129.5).

TEST_F(FrameStages, marks_go_around_the_page_and_the_growth_is_said) {
  const CutJob marked = Read("marked.json");
  EXPECT_EQ(marked.width, 234);
  EXPECT_EQ(marked.marks.size(), 4U);
  EXPECT_EQ(marked.marks[0].center, (Point{4.5, 4.5}));
  EXPECT_EQ(marked.paths[0].contours[0].start, (Point{27, 27}));
  EXPECT_EQ(note,
            "note: 4 marks; the page grows by 17 mm at the left, 17 mm at the bottom, 17 mm at the "
            "right and 17 mm at the top\n");
}

TEST_F(FrameStages, the_growth_is_said_in_hundredths_of_a_millimetre) {
  const CommandResult result =
      runner.Run({"cut", "in.json", "--marks", "circle:4.3333mm", "-o", "third.json"});
  EXPECT_EQ(result.error.substr(0, result.error.find(" at")),
            "note: 4 marks; the page grows by 16.33 mm");
}

TEST_F(FrameStages, measured_marks_map_the_paths_to_the_cutter) {
  // A quarter turn counterclockwise: (x, y) to (200 - y, x).
  const CommandResult result = Fit({"--measured", "195.5,4.5", "--measured", "195.5,229.5",
                                    "--measured", "80.5,229.5", "--measured", "70.5,4.5"});
  EXPECT_EQ(result.status, 0) << result.error;
  const CutJob knife = Read("knife.json");
  EXPECT_TRUE(knife.marks.empty());
  EXPECT_NEAR(knife.paths[0].contours[0].start.x, 173, 1e-4);
  EXPECT_NEAR(knife.paths[0].contours[0].start.y, 27, 1e-4);
  EXPECT_EQ(result.error.substr(0, 62),
            "note: projective map by 4 marks: turned by 90 degrees, scaled ");
  EXPECT_NE(result.error.find("note: mark 4: residual 0 mm\n"), std::string::npos);
}

TEST_F(FrameStages, places_may_be_negative_and_come_from_a_file) {
  runner.Place().Write("m.txt",
                       "# moved by -100,-200\n-95.5,-195.5\n129.5,-195.5\n129.5,-80.5\n"
                       "-95.5,-70.5\n");
  EXPECT_EQ(Fit({"--measurements", "m.txt"}).status, 0);
  const std::string one = runner.Place().Read("knife.json");
  EXPECT_EQ(Fit({"--measured", "-95.5,-195.5", "--measured", "129.5,-195.5", "--measured",
                 "129.5,-80.5", "--measured", "-95.5,-70.5"})
                .status,
            0);
  EXPECT_EQ(runner.Place().Read("knife.json"), one);
}

TEST_F(FrameStages, a_mark_that_does_not_fit_is_refused_by_its_number_and_no_file_is_made) {
  const CommandResult result =
      Fit({"--fit", "affine", "--measured", "4.5,4.5", "--measured", "229.5,4.5", "--measured",
           "227.5,119.5", "--measured", "4.5,129.5"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "rastrel: mark 3 does not fit: it is 2 mm from the place where all other marks have "
            "it\n");
  EXPECT_FALSE(runner.Place().Has("knife.json"));
  EXPECT_EQ(Fit({"--fit", "affine", "--residual", "2", "--measured", "4.5,4.5", "--measured",
                 "229.5,4.5", "--measured", "227.5,119.5", "--measured", "4.5,129.5"})
                .status,
            0);
}

TEST_F(FrameStages, too_few_too_many_and_bad_places_are_refused_with_their_reason) {
  const CommandResult few = Fit({"--measured", "1,2", "--measured", "3,4"});
  EXPECT_EQ(few.status, 3);
  EXPECT_EQ(few.error, "rastrel: the job has 4 marks, and 2 are measured\n");
  const CommandResult many = Fit({"--measured", "1,2", "--measured", "3,4", "--measured", "5,6",
                                  "--measured", "7,8", "--measured", "9,9"});
  EXPECT_EQ(many.error, "rastrel: the job has 4 marks, and 5 are measured\n");
  const CommandResult unit = Fit({"--measured", "1,2", "--measured", "3mm,4"});
  EXPECT_EQ(unit.status, 3);
  EXPECT_EQ(unit.error,
            "rastrel: mark 2: '3mm,4' is no measured place: places are in millimetres, without a "
            "unit, an exponent or a name\n");
  runner.Place().Write("m.txt", "1,2\n3;4\n");
  const CommandResult line = Fit({"--measurements", "m.txt"});
  EXPECT_EQ(line.status, 3);
  EXPECT_EQ(line.error,
            "rastrel: m.txt:2:1: '3;4' is no measured place: two numbers with a comma between them "
            "are needed\n");
  EXPECT_EQ(Fit({"--measurements", "missing.txt"}).status, 3);
}

TEST_F(FrameStages, options_that_do_not_go_together_are_wrong_use) {
  EXPECT_EQ(Fit({"--residual", "0.2"}).status, 2);
  EXPECT_EQ(Fit({"--fit", "affine"}).status, 2);
  EXPECT_EQ(Fit({"--marks", "circle", "--measured", "1,2"}).status, 2);
  EXPECT_EQ(Fit({"--marks", "square"}).status, 2);
  EXPECT_EQ(Fit({"--measured", "1,2", "--measurements", "m.txt"}).status, 2);
  EXPECT_EQ(Fit({"--measured", "1,2", "--fit", "crooked"}).status, 2);
  for (const char* limit : {"0.009", "10.001", "x", "1mm", "-1", ""})
    EXPECT_EQ(Fit({"--measured", "1,2", "--residual", limit}).status, 2) << limit;
  // In range: only the number of places is wrong.
  for (const char* limit : {"0.01", "10"})
    EXPECT_EQ(Fit({"--measured", "1,2", "--residual", limit}).status, 3) << limit;
  EXPECT_EQ(Fit({"--marks", "circle"}).error, "rastrel: the job has registration marks already\n");
}

TEST_F(FrameStages, files_for_cutters_count_from_the_first_mark_and_cut_jobs_from_the_page) {
  cli::Invocation invocation;
  for (const auto& [name, start] :
       {std::pair{"a.plt", Point{22.5, 22.5}}, std::pair{"a.json", Point{27, 27}},
        std::pair{"A.JSON", Point{27, 27}}, std::pair{"-", Point{27, 27}}}) {
    invocation.options[cli::OptionId::ResultOutput] = name;
    cli::CutRun run(invocation);
    run.job = Read("marked.json");
    ASSERT_TRUE(cli::CountFromFirstMark(run));
    EXPECT_EQ(run.job.paths[0].contours[0].start, start) << name;
  }
}

}  // namespace
}  // namespace rastrel::test
