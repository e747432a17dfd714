#include <gtest/gtest.h>

#include <filesystem>

#include "server/web/preview/picture_store.h"
#include "tests/support/allocation_limit.h"
#include "tests/support/page_files.h"

namespace rastrel::server::web {
namespace {

// A page of A0 at 300 pixels per inch, 418 MB of samples, of which the disk holds none.
pages::PageInfo WriteLargePage(const test::ScratchDirectory& root) {
  const std::string head = "P6\n9933 14043\n255\n";
  root.Write("p/page.ppm", head);
  pages::PageInfo page;
  page.width = 9933;
  page.height = 14043;
  page.xResolution = page.yResolution = 300;
  page.planes = {{"Red", "page.ppm", 0}, {"Green", "page.ppm", 1}, {"Blue", "page.ppm", 2}};
  page.files = {{"page.ppm", head.size() + std::uint64_t{page.width} * page.height * 3,
                 std::string(32, '0')}};
  std::filesystem::resize_file(root.Path("p/page.ppm"), page.files[0].bytes);
  return page;
}

TEST(PictureMemory, a_thumbnail_of_a_large_page_takes_little) {
  const test::ScratchDirectory root;
  const pages::PageInfo page = WriteLargePage(root);
  // A thumbnail has 256 * 362 pixels, about 280 kB.
  const test::AllocationLimit limit(1 << 20);
  const auto png = WholePagePng(root.Path("p"), page, 256, root.Path());
  ASSERT_TRUE(png) << Describe(png.Error());
}

TEST(PictureMemory, a_tile_of_a_large_page_takes_little) {
  const test::ScratchDirectory root;
  const pages::PageInfo page = WriteLargePage(root);
  const auto tile = Tile(page, 0, 38, 54);  // the last one of the page
  ASSERT_TRUE(tile);
  EXPECT_EQ(tile->width, 9933U - 38 * 256);
  const test::AllocationLimit limit(1 << 20);
  EXPECT_TRUE(DrawPng(root.Path("p"), page, *tile));
}

}  // namespace
}  // namespace rastrel::server::web
