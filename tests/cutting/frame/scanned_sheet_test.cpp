// Printed marks as pixels, and whole sheets that are scanned crooked, as a cutter's eye sees them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cutting/frame/mark_fit.h"
#include "cutting/frame/mark_layout.h"
#include "cutting/frame/mark_raster.h"
#include "cutting/frame/mark_shape.h"

namespace rastrel::cutting {
namespace {

using Shape = RegistrationMark::Shape;

constexpr double Inch = 25.4;

// Ink of 0 to 255, rows from the top.
struct Picture {
  std::size_t width;
  std::size_t height;
  std::vector<std::uint8_t> ink;

  [[nodiscard]] double At(std::ptrdiff_t x, std::ptrdiff_t y) const {
    if (x < 0 || y < 0 || x >= static_cast<std::ptrdiff_t>(width) ||
        y >= static_cast<std::ptrdiff_t>(height))
      return 0;
    return ink[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
  }
  // Between the centers of pixels.
  [[nodiscard]] double Bilinear(double x, double y) const {
    const double left = std::floor(x - 0.5);
    const double top = std::floor(y - 0.5);
    const double u = x - 0.5 - left;
    const double v = y - 0.5 - top;
    const auto i = static_cast<std::ptrdiff_t>(left);
    const auto k = static_cast<std::ptrdiff_t>(top);
    return (1 - v) * ((1 - u) * At(i, k) + u * At(i + 1, k)) +
           v * ((1 - u) * At(i, k + 1) + u * At(i + 1, k + 1));
  }
};

Picture Printed(const CutJob& job, double dpi) {
  Picture picture{static_cast<std::size_t>(std::lround(job.width * dpi / Inch)),
                  static_cast<std::size_t>(std::lround(job.height * dpi / Inch)),
                  {}};
  picture.ink.resize(picture.width * picture.height);
  MarkRaster raster(job.marks, {picture.width, picture.height, dpi, dpi});
  for (std::size_t y = 0; y < picture.height; ++y)
    (void)raster.CoverageOf(y, std::span(picture.ink).subspan(y * picture.width, picture.width));
  return picture;
}

// The middle of the ink around a place in millimetres, in millimetres from the lower left.
Point Centroid(const Picture& picture, Point around, double reach, double dpi) {
  const double scale = dpi / Inch;
  const double top = static_cast<double>(picture.height);
  double sum = 0;
  Point middle;
  for (auto y = std::lround(top - (around.y + reach) * scale);
       y < std::lround(top - (around.y - reach) * scale); ++y) {
    for (auto x = std::lround((around.x - reach) * scale);
         x < std::lround((around.x + reach) * scale); ++x) {
      const double ink = picture.At(x, y);
      sum += ink;
      middle.x += ink * (static_cast<double>(x) + 0.5);
      middle.y += ink * (static_cast<double>(y) + 0.5);
    }
  }
  return {middle.x / sum / scale, (top - middle.y / sum) / scale};
}

FrameMap Inverse(const FrameMap& map) {
  const auto& m = map.m;
  return {{m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
           m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
           m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]}};
}

// The sheet under a map of millimetres, as a scanner sees it at the same resolution. Only the
// surroundings of marks are made.
Picture Scanned(const Picture& printed, const FrameMap& map, const CutJob& job, double dpi) {
  const double scale = dpi / Inch;
  Picture scan{printed.width + printed.width / 4, printed.height + printed.height / 4, {}};
  scan.ink.resize(scan.width * scan.height);
  const FrameMap back = Inverse(map);
  const auto top = static_cast<double>(scan.height);
  for (const RegistrationMark& mark : job.marks) {
    const Point place = map.Apply(mark.center);
    const double reach = mark.size * 1.5;
    for (auto y = std::lround(top - (place.y + reach) * scale);
         y < std::lround(top - (place.y - reach) * scale); ++y) {
      for (auto x = std::lround((place.x - reach) * scale);
           x < std::lround((place.x + reach) * scale); ++x) {
        const Point on = back.Apply(
            {(static_cast<double>(x) + 0.5) / scale, (top - static_cast<double>(y) - 0.5) / scale});
        scan.ink.at(static_cast<std::size_t>(y) * scan.width + static_cast<std::size_t>(x)) =
            static_cast<std::uint8_t>(std::lround(printed.Bilinear(
                on.x * scale, static_cast<double>(printed.height) - on.y * scale)));
      }
    }
  }
  return scan;
}

// An A2 page with marks, one square in the middle, and one curve along all of its long side.
CutJob A2(int count, Shape shape = Shape::Circle) {
  CutJob job{.width = 594, .height = 420, .paths = {}};
  job.paths.push_back(
      {.contours = {{.start = {0, 0}, .segments = {CurveTo({0, 420}, {594, 420}, {594, 0})}}}});
  const double pixel = Inch / 150;
  auto marked =
      WithMarks(job, {.shape = shape, .count = count, .pixelWidth = pixel, .pixelHeight = pixel});
  EXPECT_TRUE(marked);
  return marked->job;
}

// How far the fitted map is from the true one, anywhere on the page, in millimetres.
double LargestError(const FrameMap& fitted, const FrameMap& map, const CutJob& job) {
  double largest = 0;
  for (int i = 0; i <= 60; ++i)
    for (int k = 0; k <= 60; ++k) {
      const Point point{job.width * i / 60, job.height * k / 60};
      largest = std::max(largest, Distance(fitted.Apply(point), map.Apply(point)));
    }
  return largest;
}

double DistanceToLine(Point p, const std::vector<Point>& line) {
  double nearest = 1e9;
  for (std::size_t i = 1; i < line.size(); ++i) {
    const Point a = line[i - 1];
    const Point b = line[i];
    const double along =
        ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / std::pow(Distance(a, b), 2);
    const double t = std::clamp(along, 0.0, 1.0);
    nearest = std::min(nearest, Distance(p, {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)}));
  }
  return nearest;
}

void ExpectScanFits(const FrameMap& map, int count, Shape shape = Shape::Circle) {
  const double dpi = 150;
  const CutJob job = A2(count, shape);
  const Picture scan = Scanned(Printed(job, dpi), map, job, dpi);
  std::vector<Point> centers;
  std::vector<Point> seen;
  for (const RegistrationMark& mark : job.marks) {
    centers.push_back(mark.center);
    seen.push_back(Centroid(scan, map.Apply(mark.center), mark.size * 1.2, dpi));
  }
  const auto fit = FitMarks(centers, seen);
  ASSERT_TRUE(fit) << Describe(fit.Error());
  EXPECT_LE(LargestError(fit->map, map, job), 0.1);
  const auto mapped = Mapped(job, fit->map);
  ASSERT_TRUE(mapped);
  // The whole curve, and not its control points alone.
  const Contour& drawn = job.paths[0].contours[0];
  const auto knife = Flatten(mapped->paths[0].contours[0], 0.001);
  for (const Point point : Flatten(drawn, 0.01))
    ASSERT_LE(DistanceToLine(map.Apply(point), knife), 0.1);
}

FrameMap Crooked(double degrees, double scale, double shear, double tiltX, double tiltY) {
  const double angle = degrees * std::numbers::pi / 180;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return {{scale * c, scale * (shear * c - s), 60, scale * s, scale * (shear * s + c), 20, tiltX,
           tiltY, 1}};
}

TEST(MarkRaster, covers_as_much_as_the_ink_has_and_around_its_middle) {
  for (const Shape shape : {Shape::Corner, Shape::Cross, Shape::Circle}) {
    for (const double shift : {0.0, 0.013, 0.04, 0.077}) {
      CutJob job{.width = 30, .height = 20, .paths = {}};
      job.marks.push_back(
          {.center = {12 + shift, 9 - shift / 3}, .shape = shape, .size = 5, .rotation = 90});
      const Picture picture = Printed(job, 300);
      double sum = 0;
      for (const std::uint8_t ink : picture.ink) sum += ink / 255.0;
      EXPECT_NEAR(sum * std::pow(Inch / 300, 2), AreaOf(InkOf(job.marks[0])[0]), 0.02);
      if (shape == Shape::Corner) continue;
      const Point middle = Centroid(picture, job.marks[0].center, 4, 300);
      // The picture's height is rounded to whole pixels, and the origin is its lower left corner.
      EXPECT_LE(Distance(middle, job.marks[0].center), 0.05 * Inch / 300);
    }
  }
}

TEST(MarkRaster, of_a_corner_begins_at_its_tip) {
  CutJob job{.width = 25.4, .height = 25.4, .paths = {}};
  job.marks.push_back({.center = {2.54, 2.54}, .shape = Shape::Corner, .size = 5.08});
  const Picture picture = Printed(job, 100);
  // The tip is 10 pixels from the left and from the bottom; its bars are 20 pixels long and 2 wide.
  EXPECT_EQ(picture.At(10, 89), 255);
  EXPECT_EQ(picture.At(9, 89), 0);
  EXPECT_EQ(picture.At(10, 90), 0);
  EXPECT_EQ(picture.At(29, 89), 255);
  EXPECT_EQ(picture.At(30, 89), 0);
  EXPECT_EQ(picture.At(10, 70), 255);
  EXPECT_EQ(picture.At(10, 69), 0);
  EXPECT_EQ(picture.At(12, 87), 0);
}

TEST(MarkRaster, has_no_ink_in_rows_without_marks_and_clips_marks_at_the_page) {
  CutJob job{.width = 10, .height = 10, .paths = {}};
  job.marks.push_back({.center = {0, 0}, .shape = Shape::Circle, .size = 5});
  job.marks.push_back({.center = {500, 500}, .shape = Shape::Circle, .size = 5});
  MarkRaster raster(job.marks, {100, 100, 254, 254});
  std::vector<std::uint8_t> row(100);
  EXPECT_FALSE(raster.CoverageOf(0, row));
  EXPECT_FALSE(raster.CoverageOf(74, row));
  EXPECT_TRUE(raster.CoverageOf(75, row));
  EXPECT_TRUE(raster.CoverageOf(99, row));
  EXPECT_EQ(row[0], 255);
  EXPECT_EQ(row[25], 0);
  EXPECT_FALSE(raster.CoverageOf(100, row) && row[99] > 0);
}

TEST(ScannedSheet, three_marks_put_a_turned_scaled_and_sheared_sheet_in_its_place) {
  ExpectScanFits(Crooked(3, 1.004, 0.006, 0, 0), 3);
  ExpectScanFits(Crooked(-1.5, 0.99, -0.02, 0, 0), 3);
  ExpectScanFits(Crooked(2, 1.01, 0.01, 0, 0), 3, Shape::Cross);
}

TEST(ScannedSheet, four_marks_put_one_in_perspective_in_its_place) {
  ExpectScanFits(Crooked(3, 1.004, 0.006, 2e-5, -3e-5), 4);
  ExpectScanFits(Crooked(-1.5, 1.02, -0.02, -2e-5, 4e-5), 4);
  ExpectScanFits(Crooked(2, 1.01, 0.01, 3e-5, 3e-5), 8, Shape::Cross);
}

// The judge is no rubber stamp: a map without perspective misses such a sheet by more than that.
TEST(ScannedSheet, in_perspective_is_missed_by_three_marks) {
  const CutJob job = A2(3);
  const FrameMap map = Crooked(3, 1.004, 0.006, 2e-5, -3e-5);
  std::vector<Point> centers;
  std::vector<Point> seen;
  for (const RegistrationMark& mark : job.marks) {
    centers.push_back(mark.center);
    seen.push_back(map.Apply(mark.center));
  }
  const auto fit = FitMarks(centers, seen);
  ASSERT_TRUE(fit);
  EXPECT_GT(LargestError(fit->map, map, job), 0.1);
}

}  // namespace
}  // namespace rastrel::cutting
