// A print with registration marks and its cut file: one frame for both.

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cmath>
#include <string>
#include <vector>

#include "cutting/job/job_file.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

using cutting::CutJob;
using cutting::Point;

constexpr double Inch = 25.4;

// An image, which is printed, and a rectangle around just the same place, which is cut. Neither the
// page nor the place is of whole pixels.
constexpr const char* Sign =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 200 101\n%%EndComments\n"
    "gsave 40.3 30.7 translate 96 48 scale\n"
    "1 1 8 [1 0 0 1 0 0] {<00>} image grestore\n"
    "0.3 setlinewidth 40.3 30.7 96 48 rectstroke\nshowpage\n%%EOF\n";

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  float xResolution = 0;
  std::vector<std::uint8_t> ink;  // rows from the top; 255 is black
};

Picture Read(const std::string& path) {
  Picture picture;
  TIFF* file = TIFFOpen(path.c_str(), "r");
  if (file == nullptr) return picture;
  TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &picture.width);
  TIFFGetField(file, TIFFTAG_IMAGELENGTH, &picture.height);
  TIFFGetField(file, TIFFTAG_XRESOLUTION, &picture.xResolution);
  std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(file)));
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    EXPECT_EQ(TIFFReadScanline(file, row.data(), y), 1);
    for (std::uint32_t x = 0; x < picture.width; ++x)
      picture.ink.push_back(static_cast<std::uint8_t>(255 - row.at(std::size_t{x} * 3)));
  }
  TIFFClose(file);
  return picture;
}

// The middle of all ink in a box of millimetres from the lower left.
Point Centroid(const Picture& picture, Point middle, double halfWidth, double halfHeight) {
  const double scale = picture.xResolution / Inch;
  double sum = 0;
  Point center;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::uint32_t x = 0; x < picture.width; ++x) {
      const Point at{(x + 0.5) / scale, (picture.height - y - 0.5) / scale};
      if (std::abs(at.x - middle.x) > halfWidth || std::abs(at.y - middle.y) > halfHeight) continue;
      const double ink = picture.ink[std::size_t{y} * picture.width + x];
      sum += ink;
      center.x += ink * at.x;
      center.y += ink * at.y;
    }
  }
  return {center.x / sum, center.y / sum};
}

TEST(MarkedPrint, has_marks_and_picture_where_the_cut_job_has_them) {
  CommandRunner runner{CommandRunner::Children::Real};
  runner.Place().Write("sign.eps", Sign);
  for (const std::string dpi : {"150", "300"}) {
    const CommandResult result =
        runner.Run({"cut", "sign.eps", "--marks", "circle:5mm,gap=3.3mm,count=6", "--print",
                    "sign.tif", "--dpi", dpi, "-o", "sign.json"});
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.output, "sign.tif\nsign.json\n");
    const auto job = cutting::ReadJobFile(runner.Place().Read("sign.json"), "sign.json");
    ASSERT_TRUE(job);
    const Picture picture = Read(runner.Place().Path("sign.tif"));
    ASSERT_GT(picture.height, 0U);
    const double quarter = Inch / std::stod(dpi) / 4;
    ASSERT_EQ(job->marks.size(), 6U);
    for (const cutting::RegistrationMark& mark : job->marks) {
      const Point printed = Centroid(picture, mark.center, 3.5, 3.5);
      EXPECT_LE(cutting::Distance(printed, mark.center), quarter);
    }
    // The picture fills the pixels that it touches, so that each side may be one too far.
    ASSERT_EQ(job->paths.size(), 1U);
    const cutting::Box box = BoxOf(job->paths[0]);
    const Point middle{(box.left + box.right) / 2, (box.bottom + box.top) / 2};
    const Point printed = Centroid(picture, middle, box.Width() / 2 + 1, box.Height() / 2 + 1);
    EXPECT_LE(std::abs(printed.x - middle.x), 2 * quarter);
    EXPECT_LE(std::abs(printed.y - middle.y), 2 * quarter);
  }
}

TEST(MarkedPrint, needs_a_file_with_a_picture_and_the_name_of_a_tiff) {
  CommandRunner runner{CommandRunner::Children::Real};
  runner.Place().Write("sign.eps", Sign);
  runner.Place().Write("job.json", cutting::JobFileText({.width = 9, .height = 9, .paths = {}}));
  EXPECT_EQ(runner.Run({"cut", "job.json", "--print", "a.tif", "-o", "b.json"}).status, 2);
  EXPECT_EQ(runner.Run({"cut", "sign.eps", "--print", "a.png", "-o", "b.json"}).status, 2);
  EXPECT_EQ(
      runner.Run({"cut", "sign.eps", "--print", "a.tif", "--dpi", "0", "-o", "b.json"}).status, 2);
  EXPECT_FALSE(runner.Place().Has("a.tif"));
  EXPECT_FALSE(runner.Place().Has("b.json"));
}

}  // namespace
}  // namespace rastrel::test
