#include "server/web/preview/cut_svg.h"

#include <gtest/gtest.h>

#include "tests/support/page_files.h"

using rastrel::test::CountingBytes;
using rastrel::test::ScratchDirectory;
using rastrel::test::WriteGrayPage;

namespace rastrel::server::web {
namespace {

// 72 by 36 points are 25.4 by 12.7 mm.
constexpr const char* Paths = R"(Rastrel cut paths 1
unit: point
width: 72
height: 36
clips: 0
paths: 1
path
kind: stroke
colour: separation </svg><script>
line-width: 2
clip: inside
closed: 1
m 0 36
l 72 36
c 72 18 36 0 0 0
h
end-path
end
)";

pages::PageInfo PageWith(const ScratchDirectory& root, const std::string& paths) {
  auto page = WriteGrayPage(root, "p", 2, 1, CountingBytes(2));
  root.Write("p/cut-paths", paths);
  page.files.push_back({pages::CutPathsName, paths.size(), {}});
  return page;
}

TEST(CutSvg, draws_lines_and_curves_in_millimetres_from_the_top) {
  const ScratchDirectory root;
  const auto svg = CutSvgOfPage(root.Path("p"), PageWith(root, Paths));
  ASSERT_TRUE(svg) << Describe(svg.Error());
  EXPECT_NE(svg->find("width=\"25.4mm\" height=\"12.7mm\" viewBox=\"0 0 25.4 12.7\""),
            std::string::npos)
      << *svg;
  EXPECT_NE(svg->find("d=\"M0 0L25.4 0C25.4 6.35 12.7 12.7 0 12.7Z\""), std::string::npos) << *svg;
}

TEST(CutSvg, has_nothing_of_the_text_of_the_file) {
  const ScratchDirectory root;
  const auto svg = CutSvgOfPage(root.Path("p"), PageWith(root, Paths));
  ASSERT_TRUE(svg);
  EXPECT_EQ(svg->find("script"), std::string::npos);
}

TEST(CutSvg, of_no_paths_is_an_empty_drawing) {
  EXPECT_EQ(CutSvg({.width = 10, .height = 20, .paths = {}}).find("<path"), std::string::npos);
}

TEST(CutSvg, a_page_without_cut_paths_is_refused) {
  const ScratchDirectory root;
  const auto page = WriteGrayPage(root, "p", 2, 1, CountingBytes(2));
  const auto svg = CutSvgOfPage(root.Path("p"), page);
  ASSERT_FALSE(svg);
  EXPECT_EQ(svg.Error().why, "The page has no cut paths.");
}

TEST(CutSvg, a_file_of_another_form_is_refused_with_its_line) {
  const ScratchDirectory root;
  const auto svg =
      CutSvgOfPage(root.Path("p"), PageWith(root, "Rastrel cut paths 1\nunit: inch\n"));
  ASSERT_FALSE(svg);
  EXPECT_EQ(svg.Error().line, 2);
}

}  // namespace
}  // namespace rastrel::server::web
