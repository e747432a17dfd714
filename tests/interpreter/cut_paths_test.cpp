// The cut paths' file, made of reports.

#include "interpreter/cut_paths.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/interpreter/reported_path.h"

namespace rastrel::interpreter {
namespace {

using test::Reported;

// A page of 200 by 100 pixels at 144 and 72 pixels per inch: 100 by 100 points.
pages::PageInfo PageInfoOf(unsigned page) {
  pages::PageInfo info;
  info.page = page;
  info.width = 200;
  info.height = 100;
  info.xResolution = 144;
  info.yResolution = 72;
  return info;
}

const std::string WholePage = Reported("K m 0 0 l 200 0 l 200 100 l 0 100 h ");

// Kind, line width and the color's number; segments; the clip. In pieces.
void Draw(CutPaths& paths, const std::string& head, const std::string& segments) {
  EXPECT_TRUE(paths.Add({"CUT", head + " "}));
  EXPECT_TRUE(paths.Add({"CUT", Reported(segments)}));
  EXPECT_TRUE(paths.Add({"CUT", WholePage.substr(0, 9)}));
  EXPECT_TRUE(paths.Add({"CUT", WholePage.substr(9)}));
}

// Cut paths with the color gray 0.2 set.
CutPaths WithGray() {
  CutPaths paths;
  EXPECT_TRUE(paths.Add({"CUTTER", "gray 0.2"}));
  return paths;
}

const std::string Start = "Rastrel cut paths 1\nunit: point\nwidth: 100\nheight: 100\nclips: 0\n";

TEST(CutPaths, stand_in_points_from_the_bottom_left) {
  CutPaths paths;
  EXPECT_TRUE(paths.Add({"CUTTER", "rgb 1.0 0.0 0.0"}));
  Draw(paths, "S 2 0", "m 0 100 l 200 0.5 c 1 2 3 4 5 6 h ");
  paths.EndPage();
  // The width's scale is the mean of 1/2 and 1: 0.7071.
  EXPECT_EQ(
      paths.Take(PageInfoOf(1)),
      Start +
          "paths: 1\npath\nkind: stroke\ncolour: rgb 1.0 0.0 0.0\nline-width: 1.4142\n"
          "clip: inside\nclosed: 1\nm 0 0\nl 100 99.5\nc 0.5 98 1.5 96 2.5 94\nh\nend-path\nend\n");
}

TEST(CutPaths, say_which_parts_are_closed_and_leave_out_moves_that_draw_nothing) {
  CutPaths paths = WithGray();
  Draw(paths, "F 0 0", "m 9 9 m 0 100 l 2 100 h l 4 100 m 0 0 l 2 0 m 8 8 ");
  paths.EndPage();
  EXPECT_EQ(paths.Take(PageInfoOf(1)),
            Start +
                "paths: 1\npath\nkind: fill\ncolour: gray 0.2\nline-width: 0\nclip: "
                "inside\nclosed: 1 0 0\n"
                "m 0 0\nl 1 0\nh\nm 0 0\nl 2 0\nm 0 100\nl 1 100\nend-path\nend\n");
}

TEST(CutPaths, that_draw_nothing_or_can_not_be_read_make_no_block) {
  CutPaths paths = WithGray();
  for (const std::string segments : {"", "m 1 1 ", "m 1 ", "m 1 1 l 2 ", "m 1 1 l 2 nan ",
                                     "m 1 1 l 2 inf ", "m 1 1 x 2 2 ", "m 1 1 l 1e999 2 "}) {
    Draw(paths, "E 0 0", segments);
  }
  for (const std::string head : {"E", "E 0", "E 0 1", "E 0 -1", "E 0 1e300", "E x 0"}) {
    Draw(paths, head, "m 1 1 l 2 2 ");
  }
  paths.EndPage();
  EXPECT_EQ(paths.Take(PageInfoOf(1)), Start + "paths: 0\nend\n");
}

// Where a piece ends means nothing, not even within a number.
TEST(CutPaths, are_the_same_in_pieces_of_any_size) {
  const std::string text = Reported("S 1.5 0 m 1 1 l 20.5 -2 E 0 0 m 9 9 c 1 2 3 4 5 6 h ") +
                           WholePage +
                           Reported("T 0 0 m 1 1 X F 0 0 m 0 0 l 7 7 K m 0 0 l 9 0 l 9 9 h ");
  const auto fileOf = [&](std::size_t piece) {
    CutPaths paths = WithGray();
    for (std::size_t at = 0; at < text.size(); at += piece)
      EXPECT_TRUE(paths.Add({"CUT", text.substr(at, piece)}));
    paths.EndPage();
    return paths.Take(PageInfoOf(1));
  };
  const std::string whole = fileOf(text.size());
  EXPECT_NE(whole.find("paths: 3\n"), std::string::npos) << whole;
  for (std::size_t piece = 1; piece < 40; ++piece) EXPECT_EQ(fileOf(piece), whole) << piece;
}

TEST(CutPaths, that_failed_on_their_way_are_left_out) {
  CutPaths paths = WithGray();
  Draw(paths, "E 0 0", "m 1 1 l 2 2 X ");
  EXPECT_TRUE(paths.Add({"CUT", "X "}));
  EXPECT_TRUE(paths.Add({"CUT", Reported("m 1 1 l 2 2 ")}));
  paths.EndPage();
  EXPECT_EQ(paths.Take(PageInfoOf(1)).find("path\n"), std::string::npos);
}

TEST(CutPaths, before_one_that_failed_at_its_beginning_stay) {
  CutPaths paths = WithGray();
  Draw(paths, "S 0 0", "m 1 1 l 2 2 ");
  EXPECT_TRUE(paths.Add({"CUT", "S "}));
  EXPECT_TRUE(paths.Add({"CUT", "X X "}));
  paths.EndPage();
  EXPECT_NE(paths.Take(PageInfoOf(1)).find("paths: 1\n"), std::string::npos);
}

TEST(CutPaths, keep_the_clip_of_a_path_that_failed_for_those_after_it) {
  CutPaths paths = WithGray();
  EXPECT_TRUE(paths.Add(
      {"CUT", Reported("S 0 0 m 1 1 l 2 2 K m 0 0 l 9 0 l 9 9 h X S 0 0 m 20 20 l 30 20 ")}));
  paths.EndPage();
  EXPECT_NE(paths.Take(PageInfoOf(1))
                .find("paths: 1\npath\nkind: stroke\ncolour: gray 0.2\n"
                      "line-width: 0\nclip: outside\n"),
            std::string::npos);
}

TEST(CutPaths, of_the_next_page_have_the_clip_of_the_last_one_until_another_comes) {
  CutPaths paths = WithGray();
  Draw(paths, "S 0 0", "m 0 0 l 2 0 ");
  paths.EndPage();
  EXPECT_TRUE(paths.Add({"CUT", Reported("S 0 0 m 0 0 l 4 0 ")}));
  paths.EndPage();
  for (const unsigned page : {1U, 2U})
    EXPECT_NE(paths.Take(PageInfoOf(page)).find("clip: inside\n"), std::string::npos) << page;
}

TEST(CutPaths, belong_to_the_page_that_ends_after_them) {
  CutPaths paths = WithGray();
  Draw(paths, "S 0 0", "m 0 0 l 2 0 ");
  paths.BeginPage();  // the page that it was for was never put out
  Draw(paths, "S 0 0", "m 0 0 l 4 0 ");
  paths.EndPage();
  paths.EndPage();
  const std::string first = paths.Take(PageInfoOf(1));
  EXPECT_NE(first.find("paths: 1\n"), std::string::npos) << first;
  EXPECT_NE(first.find("l 2 100\n"), std::string::npos) << first;
  EXPECT_EQ(paths.Take(PageInfoOf(2)), Start + "paths: 0\nend\n");
}

TEST(CutPaths, keep_a_colors_name_on_its_line) {
  CutPaths paths;
  EXPECT_TRUE(paths.Add({"CUTTER", "separation Cut\nend \xFF%"}));
  EXPECT_TRUE(paths.TakesSeparation("Cut\nend \xFF%"));
  EXPECT_FALSE(paths.TakesSeparation("Cut"));
  Draw(paths, "T 0 0", "m 0 0 l 2 0 ");
  paths.EndPage();
  const std::string text = paths.Take(PageInfoOf(1));
  EXPECT_NE(text.find("\ncolour: separation Cut%0Aend %FF%25\n"), std::string::npos) << text;
}

TEST(CutPaths, say_how_they_lie_to_the_clip_and_list_those_that_cross_one) {
  CutPaths paths = WithGray();
  const std::string clip = Reported("K m 20 20 l 120 20 l 120 80 l 20 80 h ");
  EXPECT_TRUE(paths.Add({"CUT", Reported("S 0 0 m 20 20 l 120 80 ") + clip}));
  EXPECT_TRUE(paths.Add({"CUT", Reported("S 0 0 m 0 0 l 10 100 S 0 0 m 20 20 l 121 80 ")}));
  EXPECT_TRUE(paths.Add({"CUT", Reported("S 0 0 m 0 0 l 10 100 ") + WholePage}));
  EXPECT_TRUE(paths.Add({"CUT", Reported("S 0 0 m 20 20 l 20 81 ") + clip}));
  paths.EndPage();
  const std::string path = "path\nkind: stroke\ncolour: gray 0.2\nline-width: 0\nclip: ";
  EXPECT_EQ(paths.Take(PageInfoOf(1)),
            "Rastrel cut paths 1\nunit: point\nwidth: 100\nheight: 100\nclips: 1\n"
            "clip\nm 10 80\nl 60 80\nl 60 20\nl 10 20\nh\nend-clip\npaths: 5\n" +
                path + "inside\nclosed: 0\nm 10 80\nl 60 20\nend-path\n" + path +
                "outside\nclosed: 0\nm 0 100\nl 5 0\nend-path\n" + path +
                "crosses 1\nclosed: 0\nm 10 80\nl 60.5 20\nend-path\n" + path +
                "inside\nclosed: 0\nm 0 100\nl 5 0\nend-path\n" + path +
                "crosses 1\nclosed: 0\nm 10 80\nl 10 19\nend-path\nend\n");
}

TEST(CutPaths, are_wanted_while_a_color_is_set) {
  CutPaths paths;
  EXPECT_FALSE(paths.Wanted(1));
  EXPECT_TRUE(paths.Add({"CUTTER", "rgb 1 0 0"}));
  EXPECT_TRUE(paths.Wanted(1));
  EXPECT_TRUE(paths.Add({"CUTTER", ""}));
  EXPECT_FALSE(paths.Wanted(1));
}

TEST(CutPaths, are_refused_beyond_their_limit) {
  for (const std::string start : {"S 0 0 ", "K "}) {
    CutPaths paths = WithGray();
    EXPECT_TRUE(paths.Add({"CUT", start}));
    const std::string part(std::size_t{1} << 20, '9');
    std::uint64_t taken = 0;
    while (taken <= CutPaths::Limit && paths.Add({"CUT", part})) taken += part.size();
    EXPECT_LE(taken, CutPaths::Limit);
    EXPECT_GT(taken, CutPaths::Limit / 2);
    paths.BeginPage();
    EXPECT_TRUE(paths.Add({"CUT", "S 0 0 K "}));
  }
}

}  // namespace
}  // namespace rastrel::interpreter
