// Where a path lies to a clip, as far as that is sure.

#include "interpreter/clip_shape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/interpreter/reported_path.h"

namespace rastrel::interpreter {
namespace {

const std::string Box = "m 10 10 l 90 10 l 90 60 l 10 60 h ";

ClipPosition PositionOf(const std::string& clip, const std::vector<PixelPoint>& points) {
  const ClipShape shape(test::Reported(clip));
  ClipJudge judge(shape);
  for (const PixelPoint& point : points) judge.Add(point);
  return judge.Position();
}

TEST(ClipShape, of_a_rectangle_holds_points_in_it_or_on_its_border) {
  for (const std::string& clip : {Box, std::string("m 10 10 l 10 60 l 90 60 l 90 10 l 10 10 h "),
                                  std::string("m 90 60 l 10 60 l 10 60 l 10 10 l 90 10 ")}) {
    SCOPED_TRACE(clip);
    EXPECT_EQ(PositionOf(clip, {{10, 10}, {90, 60}, {50, 30}}), ClipPosition::Inside);
    EXPECT_EQ(PositionOf(clip, {{10 - 1.0 / 256, 10}}), ClipPosition::Inside);
    EXPECT_EQ(PositionOf(clip, {{50, 30}, {91, 30}}), ClipPosition::Crosses);
    EXPECT_EQ(PositionOf(clip, {{50, 30}, {50, 9.9}}), ClipPosition::Crosses);
    EXPECT_EQ(PositionOf(clip, {{91, 0}, {100, 100}}), ClipPosition::Outside);
    EXPECT_EQ(PositionOf(clip, {{0, 61}, {100, 70}}), ClipPosition::Outside);
  }
}

TEST(ClipShape, of_a_turned_square_holds_no_corner_of_its_box) {
  const std::string clip = "m 50 0 l 100 50 l 50 100 l 0 50 h ";
  EXPECT_EQ(PositionOf(clip, {{50, 50}, {75, 25}}), ClipPosition::Inside);
  EXPECT_EQ(PositionOf(clip, {{76, 24}}), ClipPosition::Crosses);
  EXPECT_EQ(PositionOf(clip, {{101, 24}}), ClipPosition::Outside);
}

// A hook, a star that goes round twice, a bow tie, a ring of two parts, a round one, a line.
TEST(ClipShape, that_is_not_convex_is_sure_of_nothing_inside) {
  for (const std::string clip :
       {"m 0 0 l 100 0 l 100 100 l 60 100 l 60 40 l 0 40 h ",
        "m 50 0 l 79 90 l 2 35 l 98 35 l 21 90 h ", "m 0 0 l 100 100 l 100 0 l 0 100 h ",
        "m 0 0 l 100 0 l 100 100 l 0 100 h m 20 20 l 80 20 l 80 80 l 20 80 h ",
        "m 0 50 c 0 22 22 0 50 0 c 78 0 100 22 100 50 c 100 78 78 100 50 100 h ",
        "m 0 0 l 100 100 ", "m 0 0 l 100 0 l 100 100 l 0 100 x "}) {
    EXPECT_EQ(PositionOf(clip, {{50, 50}}), ClipPosition::Crosses) << clip;
    EXPECT_EQ(PositionOf(clip, {{150, 50}}), ClipPosition::Outside) << clip;
  }
}

TEST(ClipShape, of_an_empty_clip_holds_nothing) {
  EXPECT_EQ(PositionOf("", {{50, 50}}), ClipPosition::Outside);
  EXPECT_EQ(PositionOf("m 50 50 ", {{0, 0}}), ClipPosition::Outside);
}

// A polygon around a circle: convex with as many corners as asked for.
std::string Round(unsigned corners) {
  std::string text;
  for (unsigned i = 0; i < corners; ++i) {
    const double angle = 6.283185307179586 * i / corners;
    text += (i == 0 ? "m " : "l ") + std::to_string(50 + 50 * std::cos(angle)) + " " +
            std::to_string(50 + 50 * std::sin(angle)) + " ";
  }
  return text + "h ";
}

TEST(ClipShape, of_many_corners_is_sure_up_to_sixty_four) {
  EXPECT_EQ(PositionOf(Round(63), {{50, 50}}), ClipPosition::Inside);
  EXPECT_EQ(PositionOf(Round(64), {{50, 50}}), ClipPosition::Inside);
  EXPECT_EQ(PositionOf(Round(65), {{50, 50}}), ClipPosition::Crosses);
}

}  // namespace
}  // namespace rastrel::interpreter
