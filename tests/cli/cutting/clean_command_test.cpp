// `rastrel cut --check` and `--heal`.

#include <gtest/gtest.h>

#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"
#include "tests/cutting/clean/shapes.h"

namespace rastrel::test {
namespace {

using cutting::test::Circle;
using cutting::test::JobOf;
using cutting::test::Line;
using cutting::test::Rectangle;

class CleanCommand : public testing::Test {
 protected:
  CommandResult Run(const cutting::CutJob& job, std::vector<std::string> options) {
    runner.Place().Write("in.json", cutting::JobFileText(job));
    std::vector<std::string> arguments{"cut", "in.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runner.Run(arguments);
  }

  cutting::CutJob sound = JobOf({Circle({50, 50}, 20)});
  cutting::CutJob doubled = JobOf({Rectangle(10, 20, 30, 40), Rectangle(10, 20, 30, 40)});
  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(CleanCommand, check_of_a_sound_job_ends_with_0) {
  const CommandResult result = Run(JobOf({Rectangle(10, 20, 30, 40)}), {"--check"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, "0 faults in 1 contour of 1 path, 0.14 m\n");
}

TEST_F(CleanCommand, check_lists_each_fault_with_its_place_and_ends_with_11) {
  const CommandResult result = Run(doubled, {"--check"});
  EXPECT_EQ(result.status, 11) << result.error;
  EXPECT_EQ(result.output,
            "path 2, contour 1: duplicate (path 1, contour 1), 140 mm, at 10, 20\n"
            "1 fault in 2 contours of 2 paths, 0.28 m\n");
}

TEST_F(CleanCommand, check_as_json_counts_from_0) {
  const CommandResult result = Run(doubled, {"--check", "--json"});
  EXPECT_EQ(result.status, 11) << result.error;
  EXPECT_EQ(result.output,
            R"({"event":"fault","kind":"duplicate","path":1,"contour":0,"other_path":0,)"
            R"("other_contour":0,"x_mm":10.0,"y_mm":20.0,"length_mm":140.0})"
            "\n"
            R"({"event":"done","exit":11,"faults":1,"cut_paths":2,"contours":2,)"
            R"("length_mm":280.0,"complete":true,"paths":[]})"
            "\n");
}

TEST_F(CleanCommand, check_draws_the_faults_where_they_are) {
  const CommandResult result = Run(doubled, {"--check", "-o", "faults.svg"});
  EXPECT_EQ(result.status, 11) << result.error;
  const std::string picture = runner.Place().Read("faults.svg");
  // The page of 1,000 by 1,000 has 5 mm around it, and the ring is at 10, 20 from below.
  EXPECT_NE(picture.find("width=\"1010mm\" height=\"1010mm\""), std::string::npos);
  EXPECT_NE(picture.find("<title>duplicate, 140 mm</title><circle cx=\"15\" cy=\"985\" r=\"2\"/>"),
            std::string::npos)
      << picture;
}

TEST_F(CleanCommand, check_draws_into_no_other_form_and_not_over_its_file) {
  EXPECT_EQ(Run(doubled, {"--check", "-o", "faults.json"}).status, 2);
  EXPECT_FALSE(runner.Place().Has("faults.json"));
  runner.Place().Write("in.svg", "kept");
  EXPECT_EQ(Run(doubled, {"--check", "-o", "missing/faults.svg"}).status, 1);
}

TEST_F(CleanCommand, heal_says_what_it_did_and_writes_the_job) {
  const CommandResult result = Run(doubled, {"--heal", "-o", "out.json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "out.json\n");
  EXPECT_EQ(result.error,
            "note: path 2, contour 1: dropped-duplicate (path 1, contour 1), 140 mm, at 10, "
            "20\n");
  EXPECT_EQ(runner.Place().Read("out.json"),
            cutting::JobFileText(JobOf({Rectangle(10, 20, 30, 40)})));
}

TEST_F(CleanCommand, heal_and_check_list_the_faults_that_are_left) {
  const auto job = JobOf({Line({{10, 10}, {60, 10}}), Line({{60.05, 10}, {60, 40}})});
  const CommandResult result = Run(job, {"--heal", "--check"});
  EXPECT_EQ(result.status, 11);
  EXPECT_EQ(result.output,
            "path 1, contour 1: open, 80.05 mm, at 10, 10\n"
            "1 fault in 1 contour of 1 path, 0.08 m\n");
}

TEST_F(CleanCommand, heal_of_a_sound_job_changes_no_byte) {
  const CommandResult result = Run(sound, {"--heal", "--unite", "-o", "out.json", "--json"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(runner.Place().Read("out.json"), cutting::JobFileText(sound));
}

TEST_F(CleanCommand, unite_makes_one_outline) {
  const auto job = JobOf({Rectangle(10, 10, 50, 30), Rectangle(40, 10, 50, 30)});
  EXPECT_EQ(Run(job, {"--unite", "-o", "out.json"}).status, 2);
  const CommandResult result = Run(job, {"--heal", "--unite", "--check"});
  EXPECT_EQ(result.status, 0) << result.output << result.error;
  EXPECT_EQ(result.output, "0 faults in 1 contour of 1 path, 0.22 m\n");
}

}  // namespace
}  // namespace rastrel::test
