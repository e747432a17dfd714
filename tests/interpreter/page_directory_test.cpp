#include "interpreter/page_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

#include "interpreter/cut_paths.h"
#include "pages/page_info.h"
#include "pages/plain_tiff.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

constexpr PageSize Size{2, 1, 3};
constexpr std::array<std::byte, 6> Pixels{};

TEST(PageDirectory, a_page_is_its_pixels_its_picture_and_last_its_info) {
  const test::ScratchDirectory directory;
  auto page = PageDirectory::Create(directory.Path(), 1, Size, {});
  ASSERT_TRUE(page);
  ASSERT_TRUE((*page)->AddPixels(Pixels));
  ASSERT_TRUE((*page)->Finish({}));
  EXPECT_EQ(directory.Read("p0001/page.ppm"), "P6\n2 1\n255\n" + std::string(6, '\0'));
  EXPECT_TRUE(directory.Has("p0001/preview.png"));
  EXPECT_TRUE(directory.Has("p0001/.info"));
  EXPECT_FALSE(directory.Has("p0001/cut-paths"));
}

RunDescription TiffRun(double resolution) {
  RunDescription run;
  run.keepsTiff = true;
  run.xResolution = run.yResolution = resolution;
  return run;
}

std::string HeadAt(std::uint32_t resolution) {
  return pages::PlainTiffHead({2, 1, 3, {resolution, 1}, {resolution, 1}}).value_or("");
}

TEST(PageDirectory, a_page_of_a_run_that_keeps_tiff_is_one) {
  const test::ScratchDirectory directory;
  auto page = PageDirectory::Create(directory.Path(), 1, Size, TiffRun(300));
  ASSERT_TRUE(page);
  ASSERT_TRUE((*page)->AddPixels(Pixels));
  ASSERT_TRUE((*page)->Finish(TiffRun(300)));
  EXPECT_EQ(directory.Read("p0001/page.tif"), HeadAt(300) + std::string(6, '\0'));
  const auto info = pages::ReadPageInfo(directory.Path("p0001"));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->planes.front().file, "page.tif");
  const auto described = pages::DescribeFile(directory.Path("p0001"), "page.tif");
  ASSERT_TRUE(described);
  EXPECT_EQ(info->files.front().sum, described->sum);
}

TEST(PageDirectory, a_resolution_that_is_known_only_at_the_end_is_in_the_tiff_and_its_sum) {
  const test::ScratchDirectory directory;
  auto page = PageDirectory::Create(directory.Path(), 1, Size, TiffRun(72));
  ASSERT_TRUE(page);
  ASSERT_TRUE((*page)->AddPixels(Pixels));
  ASSERT_TRUE((*page)->Finish(TiffRun(600)));
  EXPECT_EQ(directory.Read("p0001/page.tif"), HeadAt(600) + std::string(6, '\0'));
  const auto info = pages::ReadPageInfo(directory.Path("p0001"));
  const auto described = pages::DescribeFile(directory.Path("p0001"), "page.tif");
  ASSERT_TRUE(info && described);
  EXPECT_EQ(info->files.front().sum, described->sum);
  EXPECT_EQ(info->files.front().bytes, described->bytes);
}

TEST(PageDirectory, a_page_that_is_too_large_for_32_bit_offsets_is_netpbm) {
  const test::ScratchDirectory directory;
  auto page = PageDirectory::Create(directory.Path(), 1, {40'000, 40'000, 3}, TiffRun(300));
  ASSERT_TRUE(page);
  EXPECT_EQ(directory.Read("p0001/page.ppm"), "P6\n40000 40000\n255\n");
}

TEST(PageDirectory, a_page_whose_cut_file_can_not_be_written_is_not_finished) {
  const test::ScratchDirectory directory;
  CutPaths cuts;
  ASSERT_TRUE(cuts.Add({"CUTTER", "gray 0.2"}));
  RunDescription run;
  run.cuts = &cuts;
  auto page = PageDirectory::Create(directory.Path(), 1, Size, run);
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
