#include "host/drawing/script_reader.h"

#include <gtest/gtest.h>

#include "host/drawing/path_sink.h"
#include "tests/host/drawing/path_files.h"

namespace rastrel::drawing {
namespace {

using document::FillRule;
using Rgb = VectorPath::Rgb;

const std::string Head =
    "%!CairoScript\n<< /content //COLOR_ALPHA /width 1000 /height 500 >> surface context\n";

struct Reading {
  std::vector<VectorPath> paths;
  std::string reason;
};

// A device of 1000 by 500 units, of a script in pieces of so many bytes.
Reading Read(const std::string& script, std::size_t piece = 4096, bool dashes = false) {
  Reading reading;
  ScriptReader reader(1000, 500, TM(), dashes, [&](const VectorPath& path) {
    reading.paths.push_back(path);
    return true;
  });
  const std::string whole = Head + script + "\npop\n";
  for (std::size_t i = 0; i < whole.size(); i += piece) reader.Write(whole.substr(i, piece));
  reader.Finish();
  reading.reason = reader.Reason();
  return reading;
}

TEST(Script, a_rectangle_and_a_path_are_filled_in_their_colors) {
  const auto read = Read(
      "1 0 0 rgb set-source\nn 10 20 30 40 rectangle\nfill+\n0.2 g set-source\n"
      "//EVEN_ODD set-fill-rule\n"
      "n 1 2 m 3 2 l 3 4 5 6 7 8 c h 1 2 m\nfill+");
  EXPECT_EQ(read.reason, "");
  ASSERT_EQ(read.paths.size(), 2U);
  test::ExpectBox(read.paths[0], 10, 20, 40, 60);
  EXPECT_EQ(read.paths[0].fill, (Rgb{255, 0, 0}));
  EXPECT_EQ(read.paths[0].shape.fillRule, FillRule::NonZero);
  EXPECT_EQ(read.paths[1].fill, (Rgb{51, 51, 51}));
  EXPECT_EQ(read.paths[1].shape.fillRule, FillRule::EvenOdd);
  ASSERT_EQ(read.paths[1].shape.subPaths.size(), 1U) << "a move alone is no run";
  EXPECT_TRUE(read.paths[1].shape.subPaths[0].closed);
  EXPECT_TRUE(read.paths[1].shape.subPaths[0].segments.at(1).curve);
}

TEST(Script, pieces_of_any_size_give_the_same_paths) {
  const std::string script =
      "1 0 0 rgb set-source\nn 10 20 30 40 rectangle\nfill+\n[2 0 0 2 0 0] set-matrix\n"
      "[] 0 set-dash\n3 set-line-width\nstroke+\nidentity set-matrix\nn 1 2 m 3 4 l\nstroke+";
  const auto whole = Read(script);
  ASSERT_EQ(whole.paths.size(), 2U);
  for (std::size_t piece = 1; piece < 20; ++piece) {
    EXPECT_EQ(Read(script, piece).paths, whole.paths) << piece;
  }
}

TEST(Script, a_line_after_the_fill_of_the_same_path_joins_it) {
  const auto joined = Read("n 0 0 9 9 rectangle\nfill+\n1 g set-source\n4 set-line-width\nstroke+");
  ASSERT_EQ(joined.paths.size(), 1U);
  EXPECT_EQ(joined.paths[0].fill, (Rgb{0, 0, 0}));
  EXPECT_EQ(joined.paths[0].line, (Rgb{255, 255, 255}));
  EXPECT_EQ(joined.paths[0].lineWidth, 4);
  EXPECT_EQ(Read("n 0 0 9 9 rectangle\nstroke+\nfill+").paths.size(), 2U);
  EXPECT_EQ(Read("n 0 0 9 9 rectangle\nfill+\nn 0 0 9 9 rectangle\nstroke+").paths.size(), 2U);
  EXPECT_EQ(Read("n 0 0 9 9 rectangle\nfill+\nfill+\nstroke+\nstroke+").paths.size(), 3U);
}

TEST(Script, the_width_of_a_line_is_in_its_own_units) {
  const auto width = [](const std::string& state) {
    return Read(state + "\nn 1 1 m 9 9 l\nstroke+").paths.at(0).lineWidth;
  };
  EXPECT_EQ(width(""), 2);
  EXPECT_EQ(width("3 set-line-width 4 4 scale identity set-matrix"), 3);
  EXPECT_EQ(width("1 set-line-width"), 0) << "a unit of the device is the thinnest line";
  EXPECT_EQ(width("0.5 set-line-width"), 0);
  EXPECT_NEAR(width("1.001 set-line-width"), 1.001, 1e-12);
}

TEST(Script, what_paths_do_not_express_ends_it_with_a_reason) {
  const std::string box = "n 0 0 9 9 rectangle\n";
  EXPECT_EQ(Read("0 0 1 0 linear 0 1 0 0 1 add-color-stop set-source " + box + "fill+").reason,
            "it has a gradient");
  EXPECT_EQ(Read("0 0 1 0 0 1 radial").reason, "it has a gradient");
  EXPECT_EQ(Read("<< /width 1 /height 1 /format //ARGB32 /source <~x~> >> image pattern").reason,
            "it has an image");
  EXPECT_EQ(Read("dup 9 9 //COLOR_ALPHA similar dup /s1 exch def context").reason,
            "it has opacity, a mask, a filter or a pattern");
  EXPECT_EQ(Read("<< /type 42 /index 0").reason, "it has letters in a font");
  EXPECT_EQ(Read("paint").reason, "it paints a whole area");
  EXPECT_EQ(Read("0.5 a set-source " + box + "fill+").reason, "it is translucent");
  EXPECT_EQ(Read("1 0 0 0.5 rgba set-source " + box + "stroke+").reason, "it is translucent");
  EXPECT_EQ(Read("//MULTIPLY set-operator " + box + "fill+").reason,
            "it mixes the colours of parts that lie above each other");
  EXPECT_EQ(Read("[3 1] 0 set-dash " + box + "stroke+").reason, "it has dashed lines");
  EXPECT_EQ(Read("unheard-of").reason, "it has parts that are no paths");
  EXPECT_EQ(Read(std::string(5000, 'x')).reason, "it has parts that are no paths");
  EXPECT_EQ(Read(std::string("1 ") +
                 [] {
                   std::string many;
                   for (int i = 0; i < 100; ++i) many += "2 ";
                   return many;
                 }())
                .reason,
            "it has parts that are no paths");
}

TEST(Script, nothing_is_taken_after_a_reason) {
  const auto read = Read(
      "n 0 0 9 9 rectangle fill+ n 1 1 5 5 rectangle fill+ paint\n"
      "n 0 0 9 9 rectangle fill+");
  EXPECT_EQ(read.paths.size(), 1U) << "the second waited for its line";
}

TEST(Script, what_does_not_show_is_no_path) {
  EXPECT_TRUE(Read("0 a set-source n 0 0 9 9 rectangle fill+").paths.empty());
  EXPECT_TRUE(Read("n fill+ stroke+").paths.empty());
  EXPECT_TRUE(Read("n 5 5 m fill+").paths.empty());
  EXPECT_TRUE(Read("n 1001 0 9 9 rectangle fill+").paths.empty());
  EXPECT_TRUE(Read("n 0 0 9 9 rectangle clip+ n 20 20 5 5 rectangle fill+").paths.empty());
  EXPECT_TRUE(
      Read("0.5 a set-source //CLEAR set-operator n 2000 0 9 9 rectangle fill+").reason.empty());
}

TEST(Script, dashes_are_taken_as_whole_lines_where_that_is_wanted) {
  EXPECT_EQ(Read("[3 1] 0 set-dash n 0 0 9 9 rectangle stroke+", 99, true).paths.size(), 1U);
}

TEST(Script, a_clip_may_be_one_unit_smaller_than_a_path) {
  const auto clipped = [](const std::string& size) {
    return Read("n 100 100 50 50 rectangle clip+ n 100 100 " + size + " " + size +
                " rectangle fill+")
        .reason;
  };
  EXPECT_EQ(clipped("50"), "");
  EXPECT_EQ(clipped("51"), "");
  EXPECT_EQ(clipped("51.01"), "a clip with straight edges cuts off a part of it");
}

TEST(Script, clips_add_up_until_they_are_reset) {
  const std::string two = "n 0 0 100 100 rectangle clip+ n 50 50 100 100 rectangle clip+ ";
  EXPECT_EQ(Read(two + "n 60 60 20 20 rectangle fill+").paths.size(), 1U);
  EXPECT_EQ(Read(two + "n 60 60 80 20 rectangle fill+").reason,
            "a clip with straight edges cuts off a part of it");
  EXPECT_EQ(Read(two + "reset-clip n 60 60 80 20 rectangle fill+").paths.size(), 1U);
}

TEST(Script, a_path_that_the_page_cuts_says_so) {
  const std::string reason = "the edge of its page cuts off a part of it";
  const std::string path = "n 900 100 150 50 rectangle fill+";
  EXPECT_EQ(Read(path).reason, reason);
  EXPECT_EQ(Read("n 0 0 1000 500 rectangle clip+ " + path).reason, reason)
      << "a clip as large as the page is the page's";
  EXPECT_EQ(Read("n 0 0 950 500 rectangle clip+ n 900 100 80 50 rectangle fill+").reason,
            "a clip with straight edges cuts off a part of it");
}

TEST(Script, a_line_may_be_wider_than_the_clip_that_holds_its_path) {
  const auto read =
      Read("n 100 100 50 50 rectangle clip+ 40 set-line-width n 100 100 50 50 rectangle stroke+");
  EXPECT_EQ(read.reason, "");
  ASSERT_EQ(read.paths.size(), 1U);
  test::ExpectBox(read.paths[0], 100, 100, 150, 150);
  EXPECT_EQ(read.paths[0].lineWidth, 40);
}

TEST(Script, a_convex_clip_of_lines_may_hold_a_path) {
  const std::string diamond = "n 50 0 m 100 50 l 50 100 l 0 50 l h clip+ ";
  EXPECT_EQ(Read(diamond + "n 40 40 20 20 rectangle fill+").paths.size(), 1U);
  EXPECT_EQ(Read("n 0 50 m 50 100 l 100 50 l 50 0 l clip+ n 40 40 20 20 rectangle fill+").reason,
            "");
  EXPECT_EQ(Read(diamond + "n 50 0 m 100 50 l 50 100 l fill+").paths.size(), 1U)
      << "its box is larger than the clip, its points are not";
  EXPECT_EQ(Read(diamond + "n 10 10 80 80 rectangle fill+").reason,
            "a clip with straight edges cuts off a part of it");
  const auto beside = Read(diamond + "n 0 0 20 20 rectangle fill+");
  EXPECT_TRUE(beside.paths.empty());
  EXPECT_EQ(beside.reason, "");
}

TEST(Script, a_clip_of_any_other_form_ends_it_at_the_next_paint) {
  const std::string box = " n 10 10 5 5 rectangle fill+";
  EXPECT_EQ(Read("n 0 0 m 100 0 l 100 100 l 0 100 l h clip+" + box).paths.size(), 1U);
  for (const char* clip : {"n 0 0 m 50 40 l 100 0 l 100 100 l 0 100 l h clip+",
                           "n 0 0 9 9 rectangle 20 20 9 9 rectangle clip+", "n clip+",
                           "n 0 0 m 9 0 90 0 100 0 c 100 100 l 0 100 l h clip+"}) {
    EXPECT_EQ(Read(std::string(clip) + box).reason, "a path cuts out a part of it") << clip;
  }
}

TEST(Script, a_page_that_was_turned_is_turned_back) {
  // A quarter: x' = y, y' = 500 - x.
  std::vector<VectorPath> paths;
  ScriptReader reader(1000, 500, {0, -1, 1, 0, 0, 500}, false, [&](const VectorPath& path) {
    paths.push_back(path);
    return true;
  });
  reader.Write(Head + "n 10 20 30 40 rectangle fill+\n");
  reader.Finish();
  ASSERT_EQ(paths.size(), 1U);
  test::ExpectBox(paths[0], 20, 460, 60, 490);
}

TEST(Script, a_run_that_goes_on_after_its_end_begins_where_it_began) {
  const auto read = Read("n 1 1 m 5 1 l 5 5 l h 9 9 l fill+");
  ASSERT_EQ(read.paths.size(), 1U);
  ASSERT_EQ(read.paths[0].shape.subPaths.size(), 2U);
  EXPECT_EQ(read.paths[0].shape.subPaths[1].start, (CWorldPoint{1, 1}));
}

// --- The limits ---

VectorPath PathOfPoints(std::size_t count) {
  VectorPath path;
  path.shape.subPaths.emplace_back().segments.resize(count - 1);
  return path;
}

TEST(PathSink, takes_five_million_points_and_no_more) {
  using graphics::MaximumVectorPoints;
  std::size_t taken = 0;
  PathSink sink([&](const VectorPath&) { ++taken; }, [](const std::string&) {});
  EXPECT_TRUE(sink.Take(PathOfPoints(1000)));
  EXPECT_TRUE(sink.HasRoomFor(MaximumVectorPoints - 1001));
  EXPECT_TRUE(sink.HasRoomFor(MaximumVectorPoints - 1000));
  EXPECT_TRUE(sink.Taken());
  EXPECT_FALSE(sink.HasRoomFor(MaximumVectorPoints - 999));
  EXPECT_EQ(Describe(sink.Taken().Error()), "it has more than 5000000 points, which are the most");
  EXPECT_FALSE(sink.Take(PathOfPoints(2)));
  EXPECT_EQ(taken, 1U);
}

TEST(PathSink, takes_a_million_paths_and_no_more) {
  std::size_t taken = 0;
  PathSink sink([&](const VectorPath&) { ++taken; }, [](const std::string&) {});
  const VectorPath path = PathOfPoints(2);
  for (std::size_t i = 0; i < graphics::MaximumVectorPaths; ++i) ASSERT_TRUE(sink.Take(path));
  EXPECT_FALSE(sink.Take(path));
  EXPECT_EQ(taken, 1'000'000U);
  EXPECT_EQ(Describe(sink.Taken().Error()), "it has more than 1000000 paths, which are the most");
}

TEST(Script, a_path_with_too_many_points_ends_it) {
  ScriptReader reader(1000, 500, TM(), false, [](const VectorPath&) { return true; });
  reader.Write(Head + "n 0 0 m ");
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "1 1 l ";
  std::size_t pieces = 0;
  while (reader.Write(lines)) ASSERT_LE(++pieces, 5000U);
  EXPECT_TRUE(reader.IsTooLong());
  EXPECT_GE(pieces, 4998U);
}

}  // namespace
}  // namespace rastrel::drawing
