#include "cutting/picture/assembly_picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cutting/picture/cut_picture.h"

namespace rastrel::cutting {
namespace {

CutJob Sign() {
  CutJob job{.width = 200, .height = 100, .paths = {}};
  job.paths.push_back(
      {.contours = {{.start = {10, 10}, .segments = {LineTo({190, 10}), LineTo({190, 90})}}}});
  return job;
}

Box BoxFrom(double left, double bottom, double right, double top) {
  return {.left = left, .bottom = bottom, .right = right, .top = top};
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

std::vector<AssemblyPart> FourPanels() {
  return {{.column = 0, .row = 0, .area = BoxFrom(0, 0, 110, 55), .number = "1", .note = "a"},
          {.column = 1, .row = 0, .area = BoxFrom(90, 0, 200, 55), .number = "2", .note = "b"},
          {.column = 0, .row = 1, .area = BoxFrom(0, 45, 110, 100), .number = "3", .note = ""},
          {.column = 1, .row = 1, .area = BoxFrom(90, 45, 200, 100), .number = "4", .note = ""}};
}

TEST(AssemblyPicture, has_the_number_of_each_panel_and_an_edge_around_it) {
  const auto picture = AssemblyPictureSvg(Sign(), FourPanels());
  ASSERT_TRUE(picture);
  for (const char* text : {">1<", ">2<", ">3<", ">4<", ">a<", ">b<"})
    EXPECT_EQ(CountOf(*picture, text), 1U) << text;
  // The sign's path and four edges; the page in millimetres, with a margin of a two hundredth.
  EXPECT_EQ(CountOf(*picture, "<path "), 5U);
  EXPECT_NE(picture->find("width=\"202mm\" height=\"102mm\""), std::string::npos) << *picture;
}

// Of 0.35 of the panel's height, or so that 0.6 of a size for each letter take 0.8 of its width.
TEST(AssemblyPicture, numbers_fill_their_panel_in_height_or_width) {
  const auto sizeOf = [](double width, double height, const char* number) {
    const auto picture = AssemblyPictureSvg(Sign(), {{.column = 0,
                                                      .row = 0,
                                                      .area = BoxFrom(0, 0, width, height),
                                                      .number = number,
                                                      .note = ""}});
    EXPECT_TRUE(picture);
    const std::size_t at = picture->find("font-size=\"");
    return std::stod(picture->substr(at + 11));
  };
  EXPECT_NEAR(sizeOf(200, 20, "1"), 7, 0.01);
  EXPECT_NEAR(sizeOf(9, 100, "1"), 12, 0.01);
  EXPECT_NEAR(sizeOf(9, 100, "12"), 6, 0.01);
}

TEST(AssemblyPicture, neighbors_have_edges_of_different_colors) {
  const auto picture = AssemblyPictureSvg(Sign(), FourPanels());
  ASSERT_TRUE(picture);
  for (const char* color : {"#c02020", "#1060c0", "#208040", "#a05000"})
    EXPECT_EQ(CountOf(*picture, "stroke=\"" + std::string(color) + "\""), 1U) << color;
}

TEST(AssemblyPicture, is_a_png_of_the_wanted_size_or_refused) {
  for (const int pixels : {SmallestPicture, LargestPicture}) {
    const auto picture = AssemblyPicturePng(Sign(), FourPanels(), pixels);
    ASSERT_TRUE(picture) << pixels;
    EXPECT_EQ(picture->substr(1, 3), "PNG");
  }
  EXPECT_FALSE(AssemblyPicturePng(Sign(), FourPanels(), SmallestPicture - 1));
  EXPECT_FALSE(AssemblyPicturePng(Sign(), FourPanels(), LargestPicture + 1));
  CutJob far = Sign();
  far.paths[0].contours[0].start.x = std::nan("");
  EXPECT_FALSE(AssemblyPictureSvg(far, FourPanels()));
}

}  // namespace
}  // namespace rastrel::cutting
