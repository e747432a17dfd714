#include "host/graphics/vector_path.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace rastrel::graphics {
namespace {

using document::FillRule;
using document::PathSegment;
using document::SubPath;

VectorPath Usual() {
  VectorPath path;
  path.shape.fillRule = FillRule::NonZero;
  path.shape.fillsOpen = true;
  SubPath& run = path.shape.subPaths.emplace_back();
  run.start = {1, 2};
  run.segments.push_back({false, {CWorldPoint(), CWorldPoint(), CWorldPoint{3, 4}}});
  run.segments.push_back({true, {CWorldPoint{5, 6}, CWorldPoint{7, 8}, CWorldPoint{9, 1e9}}});
  run.closed = true;
  path.shape.subPaths.push_back({{0.1, -1e9}, {run.segments[0]}, false});
  path.fill = {0, 127.5, 255};
  path.line = {1, 2, 3};
  path.lineWidth = 0.25;
  return path;
}

// A body with one number in the place of another.
std::string WithNumber(std::size_t place, double number) {
  std::string body = PathRecord(Usual());
  std::memcpy(body.data() + place, &number, sizeof number);
  return body;
}

TEST(PathRecord, brings_back_the_same_path) {
  VectorPath path = Usual();
  EXPECT_EQ(*ReadPathRecord(PathRecord(path)), path);
  path.fill.reset();
  EXPECT_EQ(*ReadPathRecord(PathRecord(path)), path);
  path.line.reset();
  path.shape.fillRule = FillRule::EvenOdd;
  path.shape.fillsOpen = false;
  EXPECT_EQ(*ReadPathRecord(PathRecord(path)), path);
}

// But where a run, or a step of one, ends.
TEST(PathRecord, one_that_is_cut_off_is_a_failure_or_a_shorter_path) {
  const std::string body = PathRecord(Usual());
  const std::size_t head = 1 + 7 * sizeof(double);
  int shorter = 0;
  for (std::size_t length = 0; length < body.size(); ++length) {
    const auto read = ReadPathRecord(body.substr(0, length));
    EXPECT_FALSE(read && length <= head) << length;
    if (read) ++shorter;
  }
  EXPECT_EQ(shorter, 5) << "after m, l, c, h and the second m";
}

TEST(PathRecord, bytes_after_the_end_or_of_no_step_are_a_failure) {
  const std::string body = PathRecord(Usual());
  EXPECT_FALSE(ReadPathRecord(body + "x"));
  EXPECT_FALSE(ReadPathRecord(body + "m"));
  std::string flags = body;
  flags[0] = static_cast<char>(flags[0] | 16);
  EXPECT_FALSE(ReadPathRecord(flags));
  // Lines before a run begins, or after it is closed.
  VectorPath bare;
  const std::string head = PathRecord(bare);
  EXPECT_FALSE(ReadPathRecord(head));
  EXPECT_FALSE(ReadPathRecord(head + "h"));
  EXPECT_FALSE(ReadPathRecord(head + "l" + std::string(16, '\0')));
  const std::string closed = head + "m" + std::string(16, '\0') + "h";
  EXPECT_TRUE(ReadPathRecord(closed));
  EXPECT_FALSE(ReadPathRecord(closed + "l" + std::string(16, '\0')));
  EXPECT_FALSE(ReadPathRecord(closed + "h"));
}

TEST(PathRecord, numbers_that_are_none_or_too_large_are_a_failure) {
  const std::size_t fill = 1;
  const std::size_t width = 1 + 6 * sizeof(double);
  const std::size_t start = 1 + 7 * sizeof(double) + 1;
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinite = std::numeric_limits<double>::infinity();
  for (const std::size_t place : {fill, width, start}) {
    for (const double number : {nan, infinite, -infinite, -1.1e9, 1.1e9}) {
      EXPECT_FALSE(ReadPathRecord(WithNumber(place, number))) << place << " " << number;
    }
  }
  EXPECT_TRUE(ReadPathRecord(WithNumber(fill, 255)));
  EXPECT_FALSE(ReadPathRecord(WithNumber(fill, 255.01)));
  EXPECT_FALSE(ReadPathRecord(WithNumber(fill, -0.01)));
  EXPECT_FALSE(ReadPathRecord(WithNumber(width, -0.01)));
}

}  // namespace
}  // namespace rastrel::graphics
