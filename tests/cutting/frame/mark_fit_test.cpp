#include "cutting/frame/mark_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace rastrel::cutting {
namespace {

using Points = std::vector<Point>;

// The corners of an A2 page, and two marks at its long edges.
const Points Six{{0, 0}, {594, 0}, {594, 380}, {0, 420}, {297, 0}, {297, 420}};

Points First(std::size_t count) { return {Six.begin(), Six.begin() + static_cast<long>(count)}; }

FrameMap Similar(double degrees, double scale, double x, double y) {
  const double angle = degrees * std::numbers::pi / 180;
  const double c = scale * std::cos(angle);
  const double s = scale * std::sin(angle);
  return {{c, -s, x, s, c, y, 0, 0, 1}};
}

const FrameMap Sheared{{1.01, 0.03, 12, -0.02, 0.99, -7, 0, 0, 1}};
const FrameMap Perspective{{1.01, 0.03, 12, -0.02, 0.99, -7, 2e-5, -1e-5, 1}};

Points Images(const FrameMap& map, const Points& points) {
  Points images;
  for (const Point point : points) images.push_back(map.Apply(point));
  return images;
}

void ExpectSameMap(const FrameMap& one, const FrameMap& other) {
  for (double x = -50; x <= 650; x += 50)
    for (double y = -50; y <= 450; y += 50)
      ASSERT_LE(Distance(one.Apply({x, y}), other.Apply({x, y})), 1e-6) << x << "," << y;
}

std::string WhyNot(const Points& printed, const Points& measured, double limit = UsualResidual) {
  const auto fit = FitMarks(printed, measured, limit);
  return fit ? "fits" : fit.Error().why;
}

TEST(FitMarks, two_marks_give_move_turn_and_scale) {
  const FrameMap map = Similar(30, 1.02, 5, -8);
  const auto fit = FitMarks(First(2), Images(map, First(2)));
  ASSERT_TRUE(fit);
  EXPECT_EQ(fit->kind, MapKind::Similar);
  ExpectSameMap(fit->map, map);
  EXPECT_NEAR(fit->turn, 30, 1e-9);
  EXPECT_NEAR(fit->scaleX, 1.02, 1e-9);
  EXPECT_NEAR(fit->scaleY, 1.02, 1e-9);
  EXPECT_NEAR(fit->shear, 0, 1e-9);
}

TEST(FitMarks, three_marks_give_scales_and_shear_as_well) {
  const auto fit = FitMarks(First(3), Images(Sheared, First(3)));
  ASSERT_TRUE(fit);
  EXPECT_EQ(fit->kind, MapKind::Affine);
  EXPECT_TRUE(fit->map.IsAffine());
  ExpectSameMap(fit->map, Sheared);
  EXPECT_NEAR(fit->scaleX, std::hypot(1.01, 0.02), 1e-9);
}

TEST(FitMarks, four_marks_and_more_give_perspective_as_well) {
  for (const std::size_t count : {4U, 5U, 6U}) {
    const auto fit = FitMarks(First(count), Images(Perspective, First(count)));
    ASSERT_TRUE(fit);
    EXPECT_EQ(fit->kind, MapKind::Projective);
    EXPECT_EQ(fit->isChecked, count > 4);
    ExpectSameMap(fit->map, Perspective);
    EXPECT_LE(fit->LargestResidual(), 1e-6);
  }
}

TEST(FitMarks, far_from_the_origin_loses_no_digits) {
  Points far;
  for (const Point point : Six) far.push_back({point.x + 900000, point.y - 900000});
  const auto fit = FitMarks(far, Images(Similar(2, 1, 0, 0), far));
  ASSERT_TRUE(fit);
  EXPECT_LE(fit->LargestResidual(), 1e-6);
}

TEST(FitMarks, has_the_least_sum_of_squares_of_all_maps_around) {
  std::mt19937 random(5);
  std::normal_distribution<double> noise(0, 0.05);
  Points measured = Images(Perspective, Six);
  for (Point& point : measured) point = {point.x + noise(random), point.y + noise(random)};
  const auto fit = FitMarks(Six, measured);
  ASSERT_TRUE(fit);
  const auto squares = [&](const FrameMap& map) {
    double sum = 0;
    for (std::size_t i = 0; i < Six.size(); ++i)
      sum += std::pow(Distance(map.Apply(Six[i]), measured[i]), 2);
    return sum;
  };
  const double least = squares(fit->map);
  for (std::size_t k = 0; k < 8; ++k) {
    for (const double factor : {1 - 1e-5, 1 + 1e-5}) {
      FrameMap other = fit->map;
      other.m[k] *= factor;
      EXPECT_GE(squares(other), least) << k;
    }
  }
}

TEST(FitMarks, noise_of_a_hundredth_moves_no_point_by_a_tenth) {
  std::mt19937 random(9);
  std::uniform_real_distribution<double> noise(-0.01, 0.01);
  for (int round = 0; round < 200; ++round) {
    Points measured = Images(Perspective, Six);
    for (Point& point : measured) point = {point.x + noise(random), point.y + noise(random)};
    const auto fit = FitMarks(Six, measured);
    ASSERT_TRUE(fit);
    for (double x = 0; x <= 594; x += 54)
      for (double y = 0; y <= 420; y += 42)
        ASSERT_LE(Distance(fit->map.Apply({x, y}), Perspective.Apply({x, y})), 0.1);
  }
}

void ExpectStrayIsNamed(const FrameMap& map, const Points& printed,
                        std::optional<MapKind> kind = std::nullopt) {
  for (std::size_t stray = 0; stray < printed.size(); ++stray) {
    Points measured = Images(map, printed);
    measured[stray].x += 3;
    measured[stray].y -= 4;
    const auto fit = FitMarks(printed, measured, UsualResidual, kind);
    ASSERT_FALSE(fit);
    EXPECT_EQ(fit.Error().why, "mark " + std::to_string(stray + 1) +
                                   " does not fit: it is 5 mm from the place where all other marks "
                                   "have it");
  }
}

TEST(FitMarks, says_the_number_of_the_one_mark_that_does_not_fit) {
  Points eight = Six;
  eight.push_back({0, 200});
  eight.push_back({594, 230});
  ExpectStrayIsNamed(Perspective, eight);
  ExpectStrayIsNamed(Sheared, Six);
  ExpectStrayIsNamed(Similar(-4, 1.003, 20, 20), First(5));
}

TEST(FitMarks, of_four_names_the_stray_if_the_map_has_no_perspective) {
  ExpectStrayIsNamed(Similar(-4, 1.003, 20, 20), First(4), MapKind::Affine);
}

TEST(FitMarks, of_four_takes_any_fault_for_perspective) {
  Points measured = First(4);
  measured[2].x += 5;
  EXPECT_EQ(WhyNot(First(4), measured), "fits");
  const auto fit = FitMarks(First(4), measured);
  EXPECT_EQ(Describe(*fit).back(),
            "as many marks fix such a map exactly, and a wrong one can't be seen");
}

TEST(FitMarks, of_four_with_any_small_perspective_is_not_refused) {
  for (double tilt = 0; tilt < 1e-4; tilt += 1e-6) {
    const FrameMap map{{1, 0, 0, 0, 1, 0, tilt, 0, 1}};
    EXPECT_EQ(WhyNot(First(4), Images(map, First(4))), "fits") << tilt;
    const FrameMap other{{1, 0, 0, 0, 1, 0, tilt, -tilt / 2, 1}};
    EXPECT_EQ(WhyNot(First(4), Images(other, First(4))), "fits") << tilt;
  }
}

// Marks 3 and 4 are all that there is at the upper edge: each alone fixes the height.
TEST(FitMarks, names_no_mark_for_certain_where_two_could_be_the_stray) {
  const Points five = First(5);
  Points measured = Images(Sheared, five);
  measured[2].y -= 3;
  EXPECT_EQ(WhyNot(five, measured).substr(0, 30), "the marks do not fit together:");
}

TEST(FitMarks, takes_a_map_of_fewer_freedoms_if_asked) {
  const auto fit = FitMarks(Six, Images(Similar(10, 1.01, 0, 0), Six), 0.3, MapKind::Similar);
  ASSERT_TRUE(fit);
  EXPECT_EQ(fit->kind, MapKind::Similar);
  EXPECT_LE(fit->LargestResidual(), 1e-9);
  EXPECT_FALSE(FitMarks(Six, Images(Sheared, Six), 0.3, MapKind::Similar));
  const auto few = FitMarks(First(3), First(3), 0.3, MapKind::Projective);
  ASSERT_FALSE(few);
  EXPECT_EQ(few.Error().why, "a projective map takes 4 marks, and the job has 3");
}

TEST(FitMarks, of_two_strays_names_the_worst) {
  Points measured = Images(Sheared, Six);
  measured[0].x += 6;
  measured[3].y += 9;
  const std::string why = WhyNot(Six, measured);
  EXPECT_EQ(why.substr(0, 35), "the marks do not fit together: mark");
  EXPECT_NE(why.find("where 0.3 mm are allowed"), why.npos) << why;
}

TEST(FitMarks, is_refused_just_above_the_limit_alone) {
  Points measured = Images(Sheared, Six);
  measured[4].y += 1;
  const auto fit = FitMarks(Six, measured, 10);
  ASSERT_TRUE(fit);
  const double largest = fit->LargestResidual();
  EXPECT_GT(largest, 0.1);
  EXPECT_TRUE(FitMarks(Six, measured, largest));
  EXPECT_FALSE(FitMarks(Six, measured, std::nextafter(largest, 0)));
}

TEST(FitMarks, takes_2_to_256_marks_and_as_many_measured) {
  EXPECT_EQ(WhyNot({}, {}), "a fit takes 2 marks at least, and the job has 0");
  EXPECT_EQ(WhyNot(First(1), First(1)), "a fit takes 2 marks at least, and the job has 1");
  EXPECT_EQ(WhyNot(First(2), First(2)), "fits");
  EXPECT_EQ(WhyNot(First(4), First(3)), "the job has 4 marks, and 3 are measured");
  EXPECT_EQ(WhyNot(First(4), First(5)), "the job has 4 marks, and 5 are measured");
  Points many;
  for (int i = 0; i < 257; ++i) many.push_back({i * 10.0, (i % 7) * 100.0});
  EXPECT_EQ(WhyNot(many, many), "a fit takes 256 marks at most, and the job has 257");
  many.pop_back();
  EXPECT_EQ(WhyNot(many, many), "fits");
  many.pop_back();
  EXPECT_EQ(WhyNot(many, many), "fits");
}

TEST(FitMarks, refuses_numbers_that_are_none) {
  const double bad[] = {std::nan(""), std::numeric_limits<double>::infinity()};
  for (const double number : bad) {
    Points measured = Six;
    measured[1].y = number;
    EXPECT_EQ(WhyNot(Six, measured), "the place of mark 2 is no number");
  }
}

TEST(FitMarks, refuses_marks_at_one_place) {
  Points measured = First(4);
  measured[2] = measured[1];
  EXPECT_EQ(WhyNot(First(4), measured),
            "marks 2 and 3 are 380 mm apart on the page and measured 0 mm apart");
  EXPECT_EQ(WhyNot({{1, 1}, {1, 1}}, {{1, 1}, {5, 5}}),
            "marks 1 and 2 of the job are at one place");
}

TEST(FitMarks, refuses_distances_that_are_twice_or_half_of_the_printed_ones) {
  const Points two{{0, 0}, {100, 0}};
  EXPECT_EQ(WhyNot(two, {{0, 0}, {50, 0}}), "fits");
  EXPECT_EQ(WhyNot(two, {{0, 0}, {200, 0}}), "fits");
  EXPECT_EQ(WhyNot(two, {{0, 0}, {49.99, 0}}),
            "marks 1 and 2 are 100 mm apart on the page and measured 49.99 mm apart");
  EXPECT_EQ(WhyNot(two, {{0, 0}, {200.01, 0}}),
            "marks 1 and 2 are 100 mm apart on the page and measured 200.01 mm apart");
}

TEST(FitMarks, refuses_marks_on_one_line) {
  const Points line{{0, 0}, {100, 50}, {200, 100}};
  EXPECT_EQ(WhyNot(line, line),
            "all marks of the job lie almost on one line, across which nothing is known");
  const Points nearly{{0, 0}, {100, 51}, {200, 100}};
  EXPECT_EQ(WhyNot(nearly, nearly),
            "all marks of the job lie almost on one line, across which nothing is known");
  const Points bent{{0, 0}, {100, 60}, {200, 100}};
  EXPECT_EQ(WhyNot(bent, bent), "fits");
  EXPECT_EQ(WhyNot(bent, line),
            "the measured marks lie almost on one line, and the printed ones do not");
}

TEST(FitMarks, refuses_four_marks_of_which_three_are_on_one_line) {
  const Points four{{0, 0}, {100, 0}, {200, 0}, {0, 100}};
  EXPECT_EQ(WhyNot(four, four),
            "too many of the marks lie on one line: they fix no projective map");
}

TEST(FitMarks, refuses_a_mirrored_page) {
  Points mirrored;
  for (const Point point : Six) mirrored.push_back({-point.x, point.y});
  EXPECT_EQ(WhyNot(Six, mirrored).substr(0, 50),
            "the measured marks run the other way round than th");
}

TEST(FitMarks, never_fails_otherwise_on_random_points) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> place(-300, 300);
  std::uniform_int_distribution<std::size_t> count(0, 9);
  for (int round = 0; round < 5000; ++round) {
    Points printed;
    Points measured;
    for (std::size_t i = count(random); i > 0; --i) {
      printed.push_back({place(random), place(random)});
      measured.push_back(
          {place(random) / 10 + printed.back().x, place(random) / 10 + printed.back().y});
    }
    const auto fit = FitMarks(printed, measured, 1000);
    if (!fit) continue;
    for (const double residual : fit->residuals) ASSERT_TRUE(std::isfinite(residual));
    for (const Point point : printed) ASSERT_GT(fit->map.Weight(point), 0);
  }
}

TEST(FitMarks, is_described_with_each_residual) {
  const auto fit = FitMarks(First(2), Images(Similar(90, 1, 0, 0), First(2)));
  ASSERT_TRUE(fit);
  const auto lines = Describe(*fit);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "move, turn and scale by 2 marks: turned by 90 degrees, scaled by 1");
  EXPECT_EQ(lines[1], "mark 1: residual 0 mm");
}

TEST(ParseMeasured, reads_two_numbers) {
  EXPECT_EQ(*ParseMeasured("1,2"), (Point{1, 2}));
  EXPECT_EQ(*ParseMeasured(" -0.5 , +12.25\t"), (Point{-0.5, 12.25}));
  EXPECT_EQ(*ParseMeasured("1000000,-1000000"), (Point{1e6, -1e6}));
}

TEST(ParseMeasured, says_why_a_place_is_none) {
  const auto why = [](std::string_view text) {
    const auto point = ParseMeasured(text);
    return point ? "a place" : point.Error().why;
  };
  EXPECT_EQ(why(""), "'' is no measured place: two numbers with a comma between them are needed");
  EXPECT_EQ(why("12"),
            "'12' is no measured place: two numbers with a comma between them are needed");
  EXPECT_EQ(why("1,"), "'1,' is no measured place: a number is missing");
  EXPECT_EQ(why(",1"), "',1' is no measured place: a number is missing");
  EXPECT_EQ(why("1,2,3"),
            "'1,2,3' is no measured place: it has more than one comma; decimals have a point");
  EXPECT_EQ(
      why("1mm,2mm"),
      "'1mm,2mm' is no measured place: places are in millimetres, without a unit, an exponent "
      "or a name");
  EXPECT_EQ(why("1e3,2e3x"),
            "'1e3,2e3x' is no measured place: a place is two numbers, X,Y, in millimetres, with a "
            "point for decimals");
  EXPECT_EQ(
      why("nan,0"),
      "'nan,0' is no measured place: places are in millimetres, without a unit, an exponent or "
      "a name");
  EXPECT_EQ(why("1000000.5,0"),
            "'1000000.5,0' is no measured place: a place is at most 1000000 mm from the origin");
  EXPECT_EQ(why(std::string(100, 'x')),
            "'" + std::string(40, 'x') +
                "...' is no measured place: two numbers with a comma between them are needed");
}

TEST(ParseMeasurements, reads_a_place_in_each_line) {
  const auto points = ParseMeasurements("# cutter 2\n1,2\r\n\n  3.5,4  \n5,6", "m.txt");
  ASSERT_TRUE(points);
  EXPECT_EQ(*points, (Points{{1, 2}, {3.5, 4}, {5, 6}}));
  EXPECT_TRUE(ParseMeasurements("", "m.txt")->empty());
}

TEST(ParseMeasurements, says_the_line_of_a_fault) {
  const auto points = ParseMeasurements("1,2\n\n1 in,2 in\n", "m.txt");
  ASSERT_FALSE(points);
  EXPECT_EQ(
      Describe(points.Error()),
      "m.txt:3:1: '1 in,2 in' is no measured place: places are in millimetres, without a unit, "
      "an exponent or a name");
}

TEST(ParseMeasurements, takes_256_lines) {
  const auto lines = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "1,2\n";
    return text;
  };
  EXPECT_EQ(ParseMeasurements(lines(255), "m")->size(), 255U);
  EXPECT_EQ(ParseMeasurements(lines(256), "m")->size(), 256U);
  const auto more = ParseMeasurements(lines(257), "m");
  ASSERT_FALSE(more);
  EXPECT_EQ(Describe(more.Error()), "m:257:1: at most 256 marks are measured");
}

}  // namespace
}  // namespace rastrel::cutting
