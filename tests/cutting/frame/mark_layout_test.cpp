#include "cutting/frame/mark_layout.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cutting/frame/mark_fit.h"
#include "cutting/frame/mark_shape.h"

namespace rastrel::cutting {
namespace {

using Shape = RegistrationMark::Shape;

CutJob Page(double width, double height) {
  CutJob job{.width = width, .height = height, .paths = {}};
  job.paths.push_back(
      {.contours = {{.start = {10, 10}, .segments = {LineTo({20, 10}), LineTo({20, 20})}}}});
  return job;
}

std::vector<Point> Centers(const CutJob& job) {
  std::vector<Point> centers;
  for (const RegistrationMark& mark : job.marks) centers.push_back(mark.center);
  return centers;
}

std::string WhyNot(const CutJob& job, const MarkOptions& options) {
  const auto marked = WithMarks(job, options);
  return marked ? "marked" : marked.Error().why;
}

TEST(WithMarks, puts_four_circles_around_the_page_and_moves_the_paths) {
  const auto marked = WithMarks(Page(200, 100), {});
  ASSERT_TRUE(marked);
  // 2 mm edge, 5 mm mark, 10 mm gap.
  EXPECT_EQ(marked->growth.left, 17);
  EXPECT_EQ(marked->growth.top, 17);
  EXPECT_EQ(marked->job.width, 234);
  EXPECT_EQ(marked->job.height, 134);
  EXPECT_EQ(marked->job.paths[0].contours[0].start, (Point{27, 27}));
  // The third is twice a mark's size below its corner.
  EXPECT_EQ(Centers(marked->job),
            (std::vector<Point>{{4.5, 4.5}, {229.5, 4.5}, {229.5, 119.5}, {4.5, 129.5}}));
}

TEST(WithMarks, of_three_leaves_the_upper_right_out) {
  const auto marked = WithMarks(Page(200, 100), {.count = 3});
  ASSERT_TRUE(marked);
  EXPECT_EQ(Centers(marked->job), (std::vector<Point>{{4.5, 4.5}, {229.5, 4.5}, {4.5, 129.5}}));
}

TEST(WithMarks, puts_further_marks_at_the_long_edges) {
  const auto marked = WithMarks(Page(400, 100), {.count = 6});
  ASSERT_TRUE(marked);
  const auto& marks = marked->job.marks;
  ASSERT_EQ(marks.size(), 6U);
  EXPECT_EQ(marks[1].center, (Point{217, 4.5}));
  EXPECT_EQ(marks[4].center, (Point{217, 129.5}));
  for (int count = 3; count <= 8; ++count)
    EXPECT_EQ(WithMarks(Page(400, 100), {.count = count})->job.marks.size(),
              static_cast<std::size_t>(count));
}

TEST(WithMarks, adds_marks_until_none_is_further_from_the_next_than_the_spacing) {
  const auto marked = WithMarks(Page(3000, 500), {.spacing = 600});
  ASSERT_TRUE(marked);
  const auto& marks = marked->job.marks;
  // 3025 by 525 between the corners: five more at the long edges each.
  EXPECT_EQ(marks.size(), 14U);
  for (std::size_t i = 0; i < marks.size(); ++i)
    EXPECT_LE(Distance(marks[i].center, marks[(i + 1) % marks.size()].center), 600);
}

TEST(WithMarks, lie_over_no_print_and_no_path_and_keep_their_gap) {
  for (const Shape shape : {Shape::Corner, Shape::Cross, Shape::Circle}) {
    for (int count = 3; count <= 8; ++count) {
      CutJob job = Page(300, 200);
      // A path that sticks out of the page at two sides.
      job.paths.push_back({.contours = {{.start = {-30, 50}, .segments = {LineTo({100, 260})}}}});
      const auto marked =
          WithMarks(job, {.shape = shape, .size = 8, .gap = 6, .count = count, .edge = 3});
      ASSERT_TRUE(marked);
      Box print{0, 0, 300, 200};
      for (const CutPath& path : job.paths) print.Add(BoxOf(path));
      const double x = marked->growth.left;
      const double y = marked->growth.bottom;
      const Box kept{print.left + x - 6, print.bottom + y - 6, print.right + x + 6,
                     print.top + y + 6};
      for (const RegistrationMark& mark : marked->job.marks) {
        const Box ink = BoxOf(mark);
        EXPECT_TRUE(ink.right <= kept.left + 1e-9 || ink.left >= kept.right - 1e-9 ||
                    ink.top <= kept.bottom + 1e-9 || ink.bottom >= kept.top - 1e-9 ||
                    shape == Shape::Corner);
        EXPECT_GE(ink.left, 3 - 1e-9);
        EXPECT_GE(ink.bottom, 3 - 1e-9);
        EXPECT_LE(ink.right, marked->job.width - 3 + 1e-9);
        EXPECT_LE(ink.top, marked->job.height - 3 + 1e-9);
        // The ink of a corner goes around the print's box: each of its points counts.
        for (const Contour& contour : InkOf(mark))
          for (const Point point : Flatten(contour, 0.01))
            EXPECT_TRUE(point.x <= kept.left + 1e-9 || point.x >= kept.right - 1e-9 ||
                        point.y <= kept.bottom + 1e-9 || point.y >= kept.top - 1e-9);
      }
    }
  }
}

// A sheet that lies turned: its marks, taken in the order in which an operator would find them, fit
// only where they are the printed ones.
TEST(WithMarks, of_a_turned_sheet_do_not_fit) {
  for (const double width : {300.0, 200.0}) {
    for (int count = 4; count <= 8; ++count) {
      const auto marked = WithMarks(Page(width, 200), {.count = count});
      ASSERT_TRUE(marked);
      const auto printed = Centers(marked->job);
      EXPECT_TRUE(FitMarks(printed, printed, 0.3, MapKind::Similar));
      for (std::size_t first = 1; first < printed.size(); ++first) {
        std::vector<Point> turned;
        for (std::size_t i = 0; i < printed.size(); ++i)
          turned.push_back(printed[(i + first) % printed.size()]);
        EXPECT_FALSE(FitMarks(printed, turned, 1, MapKind::Similar)) << count << " " << first;
      }
    }
  }
}

TEST(WithMarks, grows_the_page_by_whole_pixels) {
  const double pixel = 25.4 / 300;
  const auto marked = WithMarks(Page(200, 100), {.pixelWidth = pixel, .pixelHeight = pixel / 2});
  ASSERT_TRUE(marked);
  // 17 mm are 200.79 pixels of 1/300 inch, and 401.57 of 1/600.
  EXPECT_NEAR(marked->growth.left, 201 * pixel, 1e-9);
  EXPECT_NEAR(marked->growth.right, 201 * pixel, 1e-9);
  EXPECT_NEAR(marked->growth.bottom, 402 * pixel / 2, 1e-9);
  EXPECT_NEAR(marked->job.marks[0].center.x, 201 * pixel - 12.5, 1e-9);
}

TEST(WithMarks, takes_sizes_of_1_to_100_gaps_to_1000_and_counts_of_3_to_8) {
  const CutJob page = Page(1000, 1000);
  EXPECT_EQ(WhyNot(page, {.size = 1}), "marked");
  EXPECT_EQ(WhyNot(page, {.size = 0.999}),
            "the size of the marks is 0.999 mm: from 1 to 100 mm are possible");
  EXPECT_EQ(WhyNot(page, {.size = 100}), "marked");
  EXPECT_EQ(WhyNot(page, {.size = 100.001}),
            "the size of the marks is 100.001 mm: from 1 to 100 mm are possible");
  EXPECT_EQ(WhyNot(page, {.size = std::nan("")}),
            "the size of the marks is nan mm: from 1 to 100 mm are possible");
  EXPECT_EQ(WhyNot(page, {.gap = 0}), "marked");
  EXPECT_EQ(WhyNot(page, {.gap = 1000}), "marked");
  EXPECT_EQ(WhyNot(page, {.gap = 1000.001}),
            "the gap of the marks is 1000.001 mm: from 0 to 1000 mm are possible");
  EXPECT_EQ(WhyNot(page, {.count = 2}), "the count of marks is 3 to 8, and more by their spacing");
  EXPECT_EQ(WhyNot(page, {.count = 9}), "the count of marks is 3 to 8, and more by their spacing");
  EXPECT_EQ(WhyNot(page, {.spacing = 10}),
            "marks that are at most 10 mm apart are more than 256 here");
  EXPECT_EQ(WhyNot(page, {.spacing = 9.999}),
            "the spacing of the marks is 9.999 mm: from 10 to 100000 mm are possible");
}

TEST(WithMarks, refuses_pages_that_they_can_not_be_around) {
  EXPECT_EQ(WhyNot(Page(0, 100), {}), "the page has no extent that marks could be around");
  EXPECT_EQ(WhyNot(Page(std::nan(""), 100), {}),
            "the page has no extent that marks could be around");
  EXPECT_EQ(WhyNot(Page(2e6, 100), {}), "the page with its paths is more than a kilometre long");
  EXPECT_EQ(WhyNot(Page(21, 21), {.size = 40, .gap = 0}).substr(0, 31),
            "marks 2 and 3 would touch: the ");
  EXPECT_EQ(WhyNot(WithMarks(Page(100, 100), {})->job, {}),
            "the job has registration marks already");
}

TEST(Rebased, has_the_first_mark_at_the_origin_and_all_else_right_and_above) {
  const auto marked = WithMarks(Page(200, 100), {});
  ASSERT_TRUE(marked);
  const CutJob rebased = Rebased(marked->job);
  EXPECT_EQ(rebased.marks[0].center, (Point{0, 0}));
  EXPECT_EQ(rebased.marks[1].center, (Point{225, 0}));
  EXPECT_EQ(rebased.paths[0].contours[0].start, (Point{22.5, 22.5}));
  EXPECT_EQ(rebased.width, 229.5);
  EXPECT_EQ(Rebased(Page(200, 100)), Page(200, 100));
  CutJob beyond = Page(10, 20);
  beyond.marks.push_back({.center = {30, 50}});
  EXPECT_EQ(Rebased(beyond).width, 0);
  EXPECT_EQ(Rebased(beyond).height, 0);
}

TEST(ParseMarks, reads_shape_size_and_lengths_with_units) {
  const auto options = ParseMarks("cross:0.5in,gap=1cm,count=6,spacing=500mm,edge=72pt");
  ASSERT_TRUE(options);
  EXPECT_EQ(options->shape, Shape::Cross);
  EXPECT_DOUBLE_EQ(options->size, 12.7);
  EXPECT_DOUBLE_EQ(options->gap, 10);
  EXPECT_EQ(options->count, 6);
  EXPECT_DOUBLE_EQ(options->spacing, 500);
  EXPECT_DOUBLE_EQ(options->edge, 25.4);
  const auto plain = ParseMarks("corner");
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->shape, Shape::Corner);
  EXPECT_EQ(plain->size, MarkOptions{}.size);
}

TEST(ParseMarks, says_which_part_is_wrong) {
  const auto why = [](std::string_view text) {
    const auto options = ParseMarks(text);
    return options ? "marks" : options.Error().why;
  };
  EXPECT_EQ(why(""), "'' is wrong for marks: the shape is corner, cross or circle");
  EXPECT_EQ(why("star:5"), "'star:5' is wrong for marks: the shape is corner, cross or circle");
  EXPECT_EQ(why("circle:"),
            "'circle:' is wrong for marks: the size is a length in mm, cm, in or pt");
  EXPECT_EQ(why("circle:5ft"),
            "'circle:5ft' is wrong for marks: the size is a length in mm, cm, in or pt");
  EXPECT_EQ(why("circle,gap"), "'gap' is wrong for marks: a length in mm, cm, in or pt is needed");
  EXPECT_EQ(why("circle,gap=-1"),
            "'gap=-1' is wrong for marks: a length in mm, cm, in or pt is needed");
  EXPECT_EQ(why("circle,count=9"), "'count=9' is wrong for marks: the count is 3 to 8");
  EXPECT_EQ(why("circle,color=red"),
            "'color=red' is wrong for marks: gap, count, spacing, edge and ink are known");
  EXPECT_EQ(why("circle,"), "'' is wrong for marks: gap, count, spacing, edge and ink are known");
}

TEST(MarkShape, has_the_area_of_its_ink) {
  const auto area = [](Shape shape, double rotation = 0) {
    const RegistrationMark mark{
        .center = {50, 50}, .shape = shape, .size = 10, .rotation = rotation};
    double sum = 0;
    for (const Contour& contour : InkOf(mark)) sum += AreaOf(contour);
    return sum;
  };
  // Bars of 1 mm.
  EXPECT_NEAR(area(Shape::Corner), 19, 1e-9);
  EXPECT_NEAR(area(Shape::Corner, 33), 19, 1e-9);
  EXPECT_NEAR(area(Shape::Cross), 19, 1e-9);
  EXPECT_NEAR(area(Shape::Circle), 78.54, 0.05);
}

TEST(MarkShape, of_a_corner_has_its_tip_at_the_center) {
  const auto box = [](double rotation) {
    return BoxOf(RegistrationMark{
        .center = {50, 50}, .shape = Shape::Corner, .size = 10, .rotation = rotation});
  };
  EXPECT_EQ(box(0), (Box{50, 50, 60, 60}));
  EXPECT_EQ(box(90), (Box{40, 50, 50, 60}));
  EXPECT_EQ(box(180), (Box{40, 40, 50, 50}));
  EXPECT_EQ(box(270), (Box{50, 40, 60, 50}));
}

}  // namespace
}  // namespace rastrel::cutting
