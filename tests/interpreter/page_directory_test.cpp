#include "interpreter/page_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

#include "interpreter/cut_paths.h"
#include "pages/page_info.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

constexpr PageSize Size{2, 1, 3};
constexpr std::array<std::byte, 6> Pixels{};

TEST(PageDirectory, a_page_is_its_pixels_its_picture_and_last_its_info) {
  const test::ScratchDirectory directory;
  auto page = PageDirectory::Create(directory.Path(), 1, Size);
  ASSERT_TRUE(page);
  ASSERT_TRUE((*page)->AddPixels(Pixels));
  ASSERT_TRUE((*page)->Finish({}));
  EXPECT_EQ(directory.Read("p0001/page.ppm"), "P6\n2 1\n255\n" + std::string(6, '\0'));
  EXPECT_TRUE(directory.Has("p0001/preview.png"));
  EXPECT_TRUE(directory.Has("p0001/.info"));
  EXPECT_FALSE(directory.Has("p0001/cut-paths"));
}

TEST(PageDirectory, a_page_whose_cut_file_can_not_be_written_is_not_finished) {
  const test::ScratchDirectory directory;
  CutPaths cuts;
  ASSERT_TRUE(cuts.Add({"CUTTER", "gray 0.2"}));
  RunDescription run;
  run.cuts = &cuts;
  auto page = PageDirectory::Create(directory.Path(), 1, Size);
  ASSERT_TRUE(page);
  ASSERT_TRUE((*page)->AddPixels(Pixels));
  directory.Write("p0001/cut-paths", "of somebody else");
  const auto finished = (*page)->Finish(run);
  ASSERT_FALSE(finished);
  EXPECT_EQ(finished.Error().error, EEXIST);
  EXPECT_EQ(finished.Error().where, directory.Path("p0001/cut-paths"));
  EXPECT_FALSE(directory.Has("p0001/.info")) << "a page with an info counts as whole";
  EXPECT_EQ(directory.Read("p0001/cut-paths"), "of somebody else");
}

}  // namespace
}  // namespace rastrel::interpreter
