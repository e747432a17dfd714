#include <gtest/gtest.h>

#include <string>

#include "rastrel/psscan/ps_parser.h"
#include "tests/psscan/scan_fixture.h"

using rastrel::test::ScannedFile;

namespace {

const std::string Head = "%!PS-Adobe-3.0 EPSF-3.0\n";
const std::string Deferred = Head + "%%DocumentCustomColors: (atend)\n%%EndComments\n";
const std::string Lists =
    "%%DocumentCustomColors: (A) (B)\n%%CMYKCustomColor: 1 0 0 0 (A)\n%%RGBCustomColor: 0 0 1 "
    "(B)\n%%EOF\n";

// Program text of about that many bytes, in lines.
std::string Body(std::size_t bytes) {
  std::string text;
  while (text.size() < bytes)
    text += "10 10 moveto 20 20 lineto 30 30 40 40 50 50 curveto stroke\n";
  return text;
}

}  // namespace

TEST(LoadSpotMatchItems, definitions_on_continuation_lines_are_taken_in_order) {
  const ScannedFile file(
      Head +
      "%%DocumentCustomColors: (A)\n%%+ (B) (C)\n%%CMYKCustomColor: 0 0 0 .5 (B)\n%%+ 0 0 0 1 "
      "(A)\n%%+ 1 1 1 1 (C)\nshowpage\n%%CMYKCustomColor: 0 0 0 0 (A)\nx\n");
  EXPECT_EQ(file.Spots(), "B=0,0,0,0.5|A=0,0,0,1|C=1,1,1,1");
  EXPECT_EQ(file.SpotsWithBounds(), file.Spots());
}

TEST(LoadSpotMatchItems,
     deferred_lists_in_the_last_mib_of_5_mb_are_found_and_the_body_is_passed_over) {
  const std::string hidden = "%%CMYKCustomColor: 0 0 0 0 (A)\n";
  const ScannedFile file(Deferred + hidden + Body(4 << 20) + Body(500 << 10) + "%%Trailer\n" +
                         Lists + "x\n");
  EXPECT_EQ(file.Spots(), "A=1,0,0,0|B=0,0,255");
  EXPECT_EQ(file.SpotsWithBounds(), file.Spots());
}

TEST(LoadSpotMatchItems, a_trailer_more_than_a_mib_before_the_end_is_passed_over) {
  EXPECT_EQ(ScannedFile(Deferred + Body(3 << 20) + Lists + Body(1100 << 10)).Spots(), "");
}

TEST(LoadSpotMatchItems, a_file_under_a_mib_is_read_on_from_the_header_up_to_its_eof_comment) {
  EXPECT_EQ(ScannedFile(Deferred + Body(500 << 10) + Lists + "%%CMYKCustomColor: 0 1 0 0 (A)\nx\n")
                .Spots(),
            "A=1,0,0,0|B=0,0,255");
}

TEST(LoadSpotMatchItems, a_color_that_the_document_does_not_name_is_not_delivered) {
  EXPECT_EQ(ScannedFile(Head + "%%DocumentCustomColors: (A)\n%%CMYKCustomColor: 0 0 0 1 (B) 1 0 0 "
                               "0 (A)\n%%EndComments\nx\n")
                .Spots(),
            "A=1,0,0,0");
  EXPECT_EQ(
      ScannedFile(Head +
                  "%%DocumentCustomColors: (a)\n%%CMYKCustomColor: 0 0 0 1 (A)\n%%EndComments\nx\n")
          .Spots(),
      "");
}

TEST(LoadSpotMatchItems, a_color_defined_both_ways_comes_twice_cmyk_first) {
  EXPECT_EQ(ScannedFile(Head + "%%RGBCustomColor: 1 0 0 (A)\n%%CMYKCustomColor: 0 1 1 0 "
                               "(A)\n%%DocumentCustomColors: (A) (A)\n%%EndComments\nx\n")
                .Spots(),
            "A=0,1,1,0|A=255,0,0");
}

TEST(LoadSpotMatchItems, several_colors_stand_on_one_line) {
  EXPECT_EQ(ScannedFile(Head + "%%CMYKCustomColor: 0 0 0 1 (Spot 1) 1 0 0 0 (Spot "
                               "2)\n%%DocumentCustomColors: (Spot 1) (Spot 2)\n%%EndComments\nx\n")
                .Spots(),
            "Spot 1=0,0,0,1|Spot 2=1,0,0,0");
}

TEST(LoadSpotMatchItems, rgb_values_are_multiplied_by_255) {
  EXPECT_EQ(ScannedFile(Head + "%%RGBCustomColor: 1 0.5 0 (Orange)\n%%DocumentCustomColors: "
                               "(Orange)\n%%EndComments\nx\n")
                .Spots(),
            "Orange=255,127.5,0");
}

TEST(LoadSpotMatchItems, a_group_that_the_line_end_cuts_ends_the_line) {
  EXPECT_EQ(ScannedFile(Head + "%%CMYKCustomColor: 0 0 0\n%%+ 1 (A) 1 1 1 "
                               "(A)\n%%DocumentCustomColors: (A)\n%%EndComments\nx\n")
                .Spots(),
            "");
  EXPECT_EQ(
      ScannedFile(Head +
                  "%%RGBCustomColor: no (.5) - A\n%%DocumentCustomColors: A\n%%EndComments\nx\n")
          .Spots(),
      "A=0,127.5,0");
}

TEST(LoadSpotMatchItems, an_empty_line_in_the_header_stops_only_the_scan_with_bounds) {
  const ScannedFile file(
      Head +
      "%%DocumentCustomColors: (A)\n% \n\n\n%%CMYKCustomColor: 0 0 0 1 (A)\n%%EndComments\nx\n");
  EXPECT_EQ(file.Spots(), "A=0,0,0,1");
  EXPECT_EQ(file.SpotsWithBounds(), "");
}

TEST(LoadSpotMatchItems, a_blank_line_behind_a_line_end_is_never_seen) {
  EXPECT_EQ(ScannedFile(
                Head +
                "%%DocumentCustomColors: (A)\n\n%%CMYKCustomColor: 0 0 0 1 (A)\n%%EndComments\nx\n")
                .SpotsWithBounds(),
            "A=0,0,0,1");
}

TEST(LoadSpotMatchItems, end_of_comments_and_text_end_the_header) {
  const std::string colors = "%%DocumentCustomColors: (A)\n%%CMYKCustomColor: 0 0 0 1 (A)\nx\n";
  EXPECT_EQ(ScannedFile(Head + colors).Spots(), "A=0,0,0,1");
  EXPECT_EQ(ScannedFile(Head + "%%EndComments\n" + colors).Spots(), "");
  EXPECT_EQ(ScannedFile(Head + "x\n" + colors).Spots(), "");
  EXPECT_EQ(ScannedFile(Head + "%%EOF\n" + colors).Spots(), "");
}

TEST(LoadSpotMatchItems, a_color_comment_on_the_very_last_line_is_not_read) {
  EXPECT_EQ(
      ScannedFile(Head + "%%DocumentCustomColors: (A)\n%%CMYKCustomColor: 0 0 0 1 (A)\n").Spots(),
      "");
  EXPECT_EQ(
      ScannedFile(Head + "%%CMYKCustomColor: 0 0 0 1 (A)\n%%DocumentCustomColors: (A)").Spots(),
      "");
}

TEST(LoadSpotMatchItems, earlier_items_of_the_list_stay_in_front) {
  CSpotMatchList list;
  CSpotMatchItem before;
  before.SetName(L"before");
  list.push_back(before);
  const ScannedFile file(Head + "%%DocumentCustomColors: (A)\n%%CMYKCustomColor: 0 0 0 1 (A)\nx\n");
  ASSERT_TRUE(file.Parser().LoadSpotMatchItems(&list));
  EXPECT_EQ(ScannedFile::TextOf(list), "before=0,0,0|A=0,0,0,1");
}

TEST(LoadSpotMatchItems, a_name_with_a_zero_character_is_compared_whole) {
  const ScannedFile file(Head +
                         "%%DocumentCustomColors: (A\\0B)\n%%CMYKCustomColor: 0 0 0 1 (A) 1 0 0 0 "
                         "(A\\0C) 0 1 0 0 (A\\0B)\nx\n");
  EXPECT_EQ(file.Spots(), "A" + std::string(1, '\0') + "B=0,1,0,0");
}

TEST(LoadSpotItemsAndBounds, points_become_centimetres_of_single_precision) {
  BOUNDS bounds;
  CSpotMatchList list;
  const ScannedFile file(Head + "%%BoundingBox: 0 0 72 144\n%%EndComments\nx\n");
  ASSERT_TRUE(file.Parser().LoadSpotItemsAndBounds(&list, bounds));
  EXPECT_EQ(bounds, (BOUNDS{.xmin = 0, .xmax = 2.54F, .ymin = 0, .ymax = 5.08F}));
}

TEST(LoadSpotItemsAndBounds, a_missing_number_repeats_the_one_before) {
  BOUNDS bounds;
  CSpotMatchList list;
  const ScannedFile file(Head + "%%BoundingBox: 72\n%%EndComments\nx\n");
  ASSERT_TRUE(file.Parser().LoadSpotItemsAndBounds(&list, bounds));
  EXPECT_EQ(bounds, (BOUNDS{2.54F, 2.54F, 2.54F, 2.54F}));
  const ScannedFile empty(Head + "%%BoundingBox: 72\n%%BoundingBox:\n%%EndComments\nx\n");
  ASSERT_TRUE(empty.Parser().LoadSpotItemsAndBounds(&list, bounds));
  EXPECT_EQ(bounds, BOUNDS());
}

TEST(LoadSpotItemsAndBounds, without_a_box_the_answer_is_false_and_the_items_come_all_the_same) {
  BOUNDS bounds{1, 2, 3, 4};
  CSpotMatchList list;
  const ScannedFile file(Head +
                         "%%BoundingBox: (atend)\n%%DocumentCustomColors: A\n%%RGBCustomColor: 0 0 "
                         "0 A\nx\n%%BoundingBox: 1 2 3 4\nx\n");
  EXPECT_FALSE(file.Parser().LoadSpotItemsAndBounds(&list, bounds));
  EXPECT_EQ(ScannedFile::TextOf(list), "A=0,0,0");
  EXPECT_EQ(bounds, (BOUNDS{1, 2, 3, 4}));
}

TEST(LoadSpotItemsAndBounds, a_trailers_box_is_read_when_the_colors_are_deferred) {
  EXPECT_TRUE(ScannedFile(Deferred + Body(2 << 20) + "%%BoundingBox: 1 2 3 4\n" + Lists + "x\n")
                  .HasBounds());
  EXPECT_FALSE(ScannedFile(Head + "%%EndComments\n" + Body(1000) + "%%BoundingBox: 1 2 3 4\n" +
                           Lists + "x\n")
                   .HasBounds());
}

TEST(LoadSpotItemsAndBounds, an_empty_line_ends_a_header_whose_names_are_deferred) {
  // Both scans leave the header there; that the size is under a MiB keeps them where they are.
  const std::string content = Head + "%%DocumentCustomColors: (atend)\n% \n\n\n" + Lists + "x\n";
  EXPECT_EQ(ScannedFile(content).Spots(), "A=1,0,0,0|B=0,0,255");
  EXPECT_EQ(ScannedFile(content).SpotsWithBounds(), "A=1,0,0,0|B=0,0,255");
}

TEST(CVKColor, a_color_keeps_the_values_set) {
  CVKColor color;
  const double value = 0.25;
  color.SetColor(value, 2, -1, 0.5, COLORSPACE_CMYK);
  EXPECT_EQ(color.GetColorSpace(), 3);
  EXPECT_EQ(color.GetComponents(), (std::array<double, 4>{0.25, 2, -1, 0.5}));
  color.SetColor(255, value, 1, COLORSPACE_RGB);
  EXPECT_EQ(color.GetColorSpace(), 1);
  EXPECT_EQ(color.GetComponents(), (std::array<double, 4>{255, 0.25, 1, 0}));
}
