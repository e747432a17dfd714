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
  EXPECT_NE(result.error.find("can't write 'out.xyz': its form is none of .json"),
            std::string::npos)
      << result.error;
}

TEST_F(CutJobCommand, the_job_does_not_take_its_own_place) {
  runner.Place().Write("in.json", cutting::JobFileText(job));
  EXPECT_EQ(runner.Run({"cut", "in.json", "-o", "in.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json", "--cut-color", "spot:A", "-o", "out.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "in.json", "in.json", "-o", "out.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "missing.json", "-o", "out.json"}).status, 3);
}

}  // namespace
}  // namespace rastrel::test
