// `rastrel nest` and `rastrel tile` with cut jobs.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

cutting::Contour Rectangle(double left, double bottom, double width, double height) {
  return {.start = {left, bottom},
          .segments = {cutting::LineTo({left + width, bottom}),
                       cutting::LineTo({left + width, bottom + height}),
                       cutting::LineTo({left, bottom + height})},
          .closed = true};
}

cutting::CutJob Plate(double width, double height) {
  cutting::CutJob job{.width = width, .height = height, .paths = {}};
  job.paths.push_back({.contours = {Rectangle(0, 0, width, height)}});
  return job;
}

class NestCommand : public testing::Test {
 protected:
  void Write(const std::string& name, const cutting::CutJob& job) const {
    runner.Place().Write(name, cutting::JobFileText(job));
  }
  [[nodiscard]] cutting::CutJob Read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(runner.Place().Path(name)).rdbuf();
    const auto job = cutting::ReadJobFile(text.str(), name);
    EXPECT_TRUE(job) << Describe(job.Error());
    return job ? *job : cutting::CutJob{};
  }

  CommandRunner runner{CommandRunner::Children::None};
};

TEST_F(NestCommand, places_every_copy_on_a_roll_and_says_where) {
  Write("a.json", Plate(100, 50));
  Write("b.json", Plate(40, 40));
  const CommandResult result = runner.Run({"nest", "a.json", "b.json", "--sheet", "roll:200mm",
                                           "--gap", "5mm", "--copies", "3", "-o", "all.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  const cutting::CutJob all = Read("all.json");
  EXPECT_EQ(all.paths.size(), 6U);
  const cutting::Box box = cutting::ToolBoxOf(all);
  EXPECT_GE(box.left, -1e-6);
  EXPECT_GE(box.bottom, -1e-6);
  EXPECT_LE(box.top, 200 + 1e-6);
  // Three of 100 by 50 and three of 40 by 40 have 19,800 square millimetres.
  EXPECT_GE(box.right, 99);
  EXPECT_LE(box.right, 200);
  for (std::size_t i = 0; i < all.paths.size(); ++i) {
    for (std::size_t k = i + 1; k < all.paths.size(); ++k) {
      const cutting::Box one = cutting::BoxOf(all.paths[i]);
      const cutting::Box other = cutting::BoxOf(all.paths[k]);
      const bool isApart = one.right + 5 <= other.left + 1e-6 ||
                           other.right + 5 <= one.left + 1e-6 ||
                           one.top + 5 <= other.bottom + 1e-6 || other.top + 5 <= one.bottom + 1e-6;
      EXPECT_TRUE(isApart) << i << " and " << k;
    }
  }
  EXPECT_NE(result.output.find("a.json\t3\t1\t"), std::string::npos) << result.output;
  EXPECT_NE(result.error.find(" % is waste"), std::string::npos) << result.error;
}

TEST_F(NestCommand, makes_a_file_for_each_sheet) {
  Write("a.json", Plate(90, 90));
  const CommandResult result =
      runner.Run({"nest", "a.json", "--sheet", "100x100mm", "--copies", "2", "-o", "out.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Read("out-1.json").paths.size(), 1U);
  EXPECT_EQ(Read("out-2.json").paths.size(), 1U);
  EXPECT_NE(result.error.find("note: 19 % is waste\n"), std::string::npos) << result.error;
}

TEST_F(NestCommand, says_of_each_sheet_how_far_it_is_used_in_tenths_of_a_millimetre) {
  Write("a.json", Plate(90.3456, 70));
  const CommandResult result =
      runner.Run({"nest", "a.json", "--sheet", "100x100mm", "--rotate", "none", "-o", "out.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.error.find("note: sheet 1 is used up to 90.3 mm\n"), std::string::npos)
      << result.error;
}

TEST_F(NestCommand, lists_sheets_and_pieces_in_a_manifest) {
  Write("a.json", Plate(90, 90));
  const CommandResult result = runner.Run({"nest", "a.json", "--sheet", "100x100mm", "--copies",
                                           "2", "-o", "out.json", "--manifest", "list.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto list = nlohmann::json::parse(runner.Place().Read("list.json"));
  EXPECT_EQ(list.at("sheets").size(), 2U);
  EXPECT_EQ(list.at("sheets").at(1).at("file"), "out-2.json");
  EXPECT_EQ(list.at("sheets").at(1).at("used_mm"), 90);
  EXPECT_EQ(list.at("pieces").at(1).at("copy"), 2);
  EXPECT_EQ(list.at("pieces").at(1).at("sheet"), 2);
  EXPECT_EQ(list.at("pieces").at(1).at("matrix").size(), 6U);
  EXPECT_EQ(runner
                .Run({"nest", "a.json", "--sheet", "100x100mm", "-o", "out.json", "--manifest",
                      "list.txt"})
                .status,
            2);
  EXPECT_EQ(
      runner
          .Run({"nest", "a.json", "--sheet", "100x100mm", "-o", "out.json", "--manifest", "a.json"})
          .status,
      2);
}

TEST_F(NestCommand, of_a_large_job_lists_and_draws_which_panel_goes_where) {
  Write("large.json", Plate(180, 90));
  const CommandResult result =
      runner.Run({"tile", "large.json", "--panel", "100x100mm", "--overlap", "20mm", "-o",
                  "panel.json", "--manifest", "list.json", "--picture", "panels.svg"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto list = nlohmann::json::parse(runner.Place().Read("list.json"));
  ASSERT_EQ(list.at("panels").size(), 2U);
  EXPECT_EQ(list.at("overlap_mm"), 20);
  EXPECT_EQ(list.at("panels").at(1).at("left_mm"), 80);
  EXPECT_EQ(list.at("panels").at(1).at("file"), "panel-2.json");
  const std::string picture = runner.Place().Read("panels.svg");
  EXPECT_NE(picture.find(">1</text>"), std::string::npos) << picture;
  EXPECT_NE(picture.find(">column 2, row 1, 100 x 90 mm</text>"), std::string::npos) << picture;
  Write("odd.json", Plate(180.26, 90.26));
  EXPECT_EQ(runner
                .Run({"tile", "odd.json", "--panel", "200x200mm", "-o", "odd-panel.json",
                      "--picture", "odd.svg"})
                .status,
            0);
  EXPECT_NE(runner.Place().Read("odd.svg").find(">column 1, row 1, 180.3 x 90.3 mm</text>"),
            std::string::npos)
      << runner.Place().Read("odd.svg");
  EXPECT_EQ(runner
                .Run({"tile", "large.json", "--panel", "100x100mm", "-o", "panel.json", "--picture",
                      "panels.jpg"})
                .status,
            2);
}

TEST_F(NestCommand, names_a_piece_that_fits_nowhere_and_writes_nothing) {
  Write("small.json", Plate(10, 10));
  Write("large.json", Plate(300, 300));
  const CommandResult result =
      runner.Run({"nest", "small.json", "large.json", "--sheet", "100x100mm", "-o", "out.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("large.json"), std::string::npos) << result.error;
  EXPECT_FALSE(std::filesystem::exists(runner.Place().Path("out.json")));
}

TEST_F(NestCommand, refuses_values_that_it_can_not_use) {
  Write("a.json", Plate(10, 10));
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--sheet", "100x100mm"},
        {"-o", "out.json"},
        {"-o", "-", "--sheet", "100x100mm"},
        {"-o", "out.json", "--sheet", "roll:"},
        {"-o", "out.json", "--sheet", "100"},
        {"-o", "out.json", "--sheet", "100x100mm", "--rotate", "30"},
        {"-o", "out.json", "--sheet", "100x100mm", "--copies", "0"},
        {"-o", "out.json", "--sheet", "100x100mm", "--gap", "-1mm"},
        {"-o", "out.json", "--sheet", "100x100mm", "--effort", "10001"},
        {"-o", "out.json", "--sheet", "100x100mm", "--seconds", "0"},
        {"-o", "out.json", "--sheet", "100x100mm", "--seconds", "3601"}}) {
    std::vector<std::string> arguments{"nest", "a.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(runner.Run(arguments).status, 2) << options.back();
  }
}

TEST_F(NestCommand, of_a_large_job_splits_it_into_panels_that_hold_all_of_it) {
  cutting::CutJob job{.width = 250, .height = 80, .paths = {}};
  job.paths.push_back({.contours = {Rectangle(10, 10, 230, 60)}});
  Write("long.json", job);
  const CommandResult result = runner.Run(
      {"tile", "long.json", "--panel", "100x100mm", "--overlap", "10mm", "-o", "panel.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  double length = 0;
  int panels = 0;
  for (; std::filesystem::exists(
           runner.Place().Path("panel-" + std::to_string(panels + 1) + ".json"));
       ++panels) {
    for (const cutting::CutPath& path : Read("panel-" + std::to_string(panels + 1) + ".json").paths)
      for (const cutting::Contour& contour : path.contours) length += cutting::LengthOf(contour);
  }
  // Panels step by 90 mm: 0 to 100, 90 to 190, 180 to 250.
  EXPECT_EQ(panels, 3);
  EXPECT_NEAR(length, 2 * (230 + 60), 1e-6);
  EXPECT_NE(result.output.find("2\t90\t0\t100\t80\t"), std::string::npos) << result.output;
}

TEST_F(NestCommand, of_a_job_that_fits_makes_one_panel_of_the_given_name) {
  Write("a.json", Plate(50, 50));
  const CommandResult result =
      runner.Run({"tile", "a.json", "--panel", "100x100mm", "-o", "one.json"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(Read("one.json").paths.size(), 1U);
}

}  // namespace
}  // namespace rastrel::test
