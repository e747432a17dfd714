#include "cutting/picture/cut_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace rastrel::cutting {
namespace {

Contour Square(double left, double bottom, double edge) {
  return {.start = {left, bottom},
          .segments = {LineTo({left + edge, bottom}), LineTo({left + edge, bottom + edge}),
                       LineTo({left, bottom + edge})},
          .closed = true};
}

CutJob Sign(double width, double height) {
  CutJob job{.width = width, .height = height, .paths = {}};
  job.paths.push_back({.contours = {Square(width * 0.1, height * 0.1, height * 0.3)}});
  job.paths.push_back(
      {.contours = {{.start = {width * 0.5, height * 0.5},
                     .segments = {CurveTo({width * 0.6, height}, {width * 0.8, height},
                                          {width * 0.9, height * 0.5})}}},
       .operation = Operation::Crease});
  job.marks.push_back({.center = {width * 0.05, height * 0.05}, .size = height * 0.03});
  return job;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

double Attribute(const std::string& svg, const std::string& name) {
  const std::size_t at = svg.find(" " + name + "=\"");
  return std::stod(svg.substr(at + name.size() + 3));
}

/// Width and height as the picture's header has them.
std::pair<unsigned, unsigned> SizeOfPng(const std::string& png) {
  const auto number = [&](std::size_t at) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      value = value * 256 + static_cast<unsigned char>(png.at(at + i));
    }
    return value;
  };
  return {number(16), number(20)};
}

TEST(CutPicture, PathsHaveTheirOrderAndTheLegendTheirLengths) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {Square(10, 10, 20), Square(60, 60, 20)}});
  const std::string svg = *CutPictureSvg(job);
  EXPECT_NE(svg.find(">1</text>"), std::string::npos);
  EXPECT_NE(svg.find(">2</text>"), std::string::npos);
  EXPECT_NE(svg.find(">cut: 2 contours, 160 mm<"), std::string::npos) << svg;
  // From the corner to 10,10 and from there to 60,60: 14.142 and 70.711.
  EXPECT_NE(svg.find(">travel: 84.9 mm<"), std::string::npos);
  EXPECT_NE(svg.find(">page: 100 x 100 mm<"), std::string::npos);
}

TEST(CutPicture, AnArrowPointsAlongThePath) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {{.start = {10, 50}, .segments = {LineTo({90, 50})}}}});
  const std::string svg = *CutPictureSvg(job);
  // The only filled path: its tip is right of the middle, and its other corners left of it.
  const std::size_t at = svg.find("<path fill=\"#");
  ASSERT_NE(at, std::string::npos);
  const std::size_t data = svg.find(" d=\"M", at) + 5;
  const double tip = std::stod(svg.substr(data));
  const double corner = std::stod(svg.substr(svg.find('L', data) + 1));
  EXPECT_GT(tip, corner);
  job.paths[0].contours[0] = Reversed(job.paths[0].contours[0]);
  const std::string back = *CutPictureSvg(job);
  const std::size_t other = back.find(" d=\"M", back.find("<path fill=\"#")) + 5;
  EXPECT_LT(std::stod(back.substr(other)), std::stod(back.substr(back.find('L', other) + 1)));
}

TEST(CutPicture, CurvesStayCurves) { EXPECT_GE(Count(*CutPictureSvg(Sign(297, 210)), "C"), 1u); }

TEST(CutPicture, ASignOfThreeMetresLooksAsASmallOne) {
  const std::string small = *CutPictureSvg(Sign(297, 210));
  const std::string large = *CutPictureSvg(Sign(2970, 2100));
  EXPECT_NEAR(Attribute(large, "font-size") / Attribute(small, "font-size"), 10, 0.01);
  EXPECT_EQ(Count(small, "<text"), Count(large, "<text"));
  EXPECT_NEAR(Attribute(large, "width") / Attribute(small, "width"), 10, 0.01);
}

TEST(CutPicture, PathsWithoutAToolAreNotShown) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  job.paths.push_back({.contours = {Square(10, 10, 20)}, .operation = Operation::Print});
  EXPECT_EQ(Count(*CutPictureSvg(job), "contour"), 0u);
}

TEST(CutPicture, TheSameJobGivesTheSameBytes) {
  EXPECT_EQ(*CutPictureSvg(Sign(300, 200)), *CutPictureSvg(Sign(300, 200)));
  EXPECT_EQ(*CutPicturePng(Sign(300, 200), 600), *CutPicturePng(Sign(300, 200), 600));
}

TEST(CutPicture, APngHasThePixelsThatAreAskedFor) {
  for (const double size : {1.0, 300.0, 3000.0}) {
    const auto [width, height] = SizeOfPng(*CutPicturePng(Sign(size, size / 2), 600));
    EXPECT_EQ(std::max(width, height), 600u) << size;
  }
}

TEST(CutPicture, APngOutOfTheLimitsIsRefused) {
  EXPECT_FALSE(CutPicturePng(Sign(300, 200), SmallestPicture - 1));
  EXPECT_TRUE(CutPicturePng(Sign(300, 200), SmallestPicture));
  EXPECT_FALSE(CutPicturePng(Sign(300, 200), LargestPicture + 1));
}

TEST(CutPicture, AnEmptyJobHasAPicture) {
  EXPECT_TRUE(CutPictureSvg(CutJob{}));
  EXPECT_TRUE(CutPicturePng(CutJob{}, 100));
}

TEST(CutPicture, CoordinatesThatNoPageHasAreRefused) {
  for (const double bad : {1e6 + 1, std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()}) {
    CutJob job = Sign(100, 100);
    job.paths[0].contours[0].segments[0].end.x = bad;
    EXPECT_FALSE(CutPictureSvg(job)) << bad;
    job = Sign(100, 100);
    job.height = bad;
    EXPECT_FALSE(CutPicturePng(job, 100)) << bad;
    job = Sign(100, 100);
    job.marks[0].size = bad * 3;
    EXPECT_FALSE(CutPicturePng(job, 100)) << bad;
  }
}

TEST(CutPicture, CrowdedNumbersAreLeftOut) {
  CutJob job{.width = 100, .height = 100, .paths = {}};
  CutPath path;
  for (int i = 0; i < 20000; ++i) path.contours.push_back(Square(i % 100, i / 200.0, 0.2));
  job.paths.push_back(path);
  EXPECT_LT(Count(*CutPictureSvg(job), "<text"), 5100u);
}

}  // namespace
}  // namespace rastrel::cutting
