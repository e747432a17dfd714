#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rastrel/psscan/ps_parser.h"
#include "tests/psscan/scan_fixture.h"

using rastrel::test::ScannedFile;

namespace {
const std::string Head = "%!PS-Adobe-3.0 EPSF-3.0\n";
}

TEST(GetBounds, the_four_numbers_are_left_bottom_right_top) {
  CRect rect{9, 9, 9, 9};
  const ScannedFile file(Head + "%%BoundingBox: 0.9 1.9 100.5 -2.5\nx\n");
  ASSERT_TRUE(file.Parser().GetBounds(rect));
  EXPECT_EQ(rect, (CRect{.left = 0, .top = -2, .right = 100, .bottom = 1}));
}

TEST(GetBounds, a_deferred_box_is_found_in_the_trailer) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: (atend)\nshowpage\n%%BoundingBox: 1 2 3 4\n%%EOF\n")
                .Bounds(),
            "1 2 3 4");
}

TEST(GetBounds, a_box_on_the_very_last_line_does_not_count) {
  CRect rect{9, 9, 9, 9};
  for (const char* end : {"", "\n", "\r\n", "\n\n"}) {
    const ScannedFile file(Head + "%%BoundingBox: (atend)\nx\n%%BoundingBox: 1 2 3 4" + end);
    EXPECT_FALSE(file.Parser().GetBounds(rect));
    EXPECT_EQ(rect, CRect());
  }
}

TEST(GetBounds, the_first_box_wins_wherever_it_stands) {
  EXPECT_EQ(
      ScannedFile(Head + "moveto\n%%BoundingBox: 1 2 3 4\n%%BoundingBox: 5 6 7 8\nx\n").Bounds(),
      "1 2 3 4");
}

TEST(GetBounds, any_parenthesis_on_the_line_passes_the_box_over) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: 1 2 3 4 )\n%%BoundingBox: 5 6 7 8\nx\n").Bounds(),
            "5 6 7 8");
}

TEST(GetBounds, a_missing_number_is_0) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: 7 8\nx\n").Bounds(), "7 8 0 0");
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox:\nx\n").Bounds(), "0 0 0 0");
}

TEST(GetBounds, case_and_place_of_the_keyword_count) {
  EXPECT_EQ(
      ScannedFile(Head +
                  "%%boundingbox: 1 2 3 4\n %%BoundingBox: 1 2 3 4\nx%%BoundingBox: 1 2 3 4\nx\n")
          .Bounds(),
      "none");
}

TEST(GetBounds, every_pair_of_line_ends_is_one) {
  for (const char* end : {"\n", "\r", "\r\n", "\n\n", "\n\r", "\r\r"})
    EXPECT_EQ(ScannedFile(std::string("%!PS") + end + "x" + end + "%%BoundingBox: 1 2 3 4" + end +
                          "x" + end + "y")
                  .Bounds(),
              "1 2 3 4");
}

TEST(GetBounds, a_zero_byte_ends_a_line) {
  EXPECT_EQ(ScannedFile(Head + "x" + std::string(1, '\0') + "%%BoundingBox: 1 2 3 4" +
                        std::string(1, '\0') + "5 6\nx\n")
                .Bounds(),
            "1 2 3 4");
}

TEST(GetBounds, a_cut_line_goes_on_as_a_line_behind_the_lost_byte) {
  const std::string tail = "%%BoundingBox: 1 2 3 4\n" + std::string(5000, '.') + "\n";
  EXPECT_EQ(ScannedFile(Head + std::string(4096, 'x') + "?" + tail).Bounds(), "1 2 3 4");
  EXPECT_EQ(ScannedFile(Head + std::string(4096, 'x') + tail).Bounds(), "none");
  EXPECT_EQ(ScannedFile(Head + std::string(4095, 'x') + "?" + tail).Bounds(), "none");
  EXPECT_EQ(ScannedFile(Head + std::string(2 * 4097, 'x') + tail).Bounds(), "1 2 3 4");
  EXPECT_EQ(ScannedFile(Head + std::string(100 * 4097, 'x') + tail).Bounds(), "1 2 3 4");
  EXPECT_EQ(ScannedFile(Head + std::string(100 * 4097 + 1, 'x') + tail).Bounds(), "none");
}

TEST(GetBoundsAndStrings, a_last_line_without_an_end_runs_on_into_bytes_of_earlier_readings) {
  // Three readings, at 0, 24 and 29, of 55, 31 and 26 bytes. After the last one's 26 are bytes
  // 26 to 30 of the second, which are the file's last five, and bytes 31 to 54 of the first, which
  // are its last 24; then comes a zero.
  EXPECT_EQ(ScannedFile(Head + "x(B)\n%%DocumentCustomColors:(A)").Strings(),
            "0 0 0 0|A|s:(A)DocumentCustomColors:(A)");
}

TEST(GetBounds, a_line_of_exactly_the_last_4096_bytes_is_not_the_last) {
  // Its reading gets all that was asked for, so the end of the file shows with the next one only.
  const std::string line = "%%BoundingBox: 1 2 3 4";
  const std::string padded = line + std::string(4096 - line.size() - 1, ' ') + "\n";
  EXPECT_EQ(ScannedFile(Head + padded).Bounds(), "1 2 3 4");
  EXPECT_EQ(ScannedFile(Head + line + padded.substr(line.size() + 1)).Bounds(), "none");
  EXPECT_EQ(ScannedFile(Head + padded.substr(0, 4095) + " ").Bounds(), "1 2 3 4");
}

TEST(GetBoundsAndStrings, names_on_continuation_lines_arrive_in_order_and_the_box_behind_is_read) {
  EXPECT_EQ(
      ScannedFile(Head +
                  "%%DocumentCustomColors: (A B) C\n%%+ (D)\n%%+E\n%%BoundingBox: 1 2 3 4\nx\n")
          .Strings(),
      "1 2 3 4|A B|C|D|E");
}

TEST(GetBoundsAndStrings, the_scan_ends_when_it_has_both) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: 1 2 3 4\n%%DocumentCustomColors: A\n%%BoundingBox: "
                               "5 6 7 8\n%%BoundingBox: 9 9 9 9\nx\n")
                .Strings(),
            "5 6 7 8|A");
  EXPECT_EQ(ScannedFile(
                Head +
                "%%BoundingBox: 1 2 3 4\n%%DocumentCustomColors: A\nx\n%%BoundingBox: 9 9 9 9\nx\n")
                .Strings(),
            "1 2 3 4|A");
}

TEST(GetBoundsAndStrings, deferred_colors_count_as_seen) {
  EXPECT_EQ(
      ScannedFile(
          Head +
          "%%DocumentCustomColors: (atend)\n%%BoundingBox: 1 2 3 4\n%%DocumentCustomColors: A\nx\n")
          .Strings(),
      "1 2 3 4");
}

TEST(GetBoundsAndStrings, a_name_before_atend_is_no_deferral) {
  EXPECT_EQ(ScannedFile(Head + "%%DocumentCustomColors: (A) (atend)\nx\n").Strings(),
            "0 0 0 0|A|atend");
}

TEST(GetBoundsAndStrings, the_line_behind_the_names_is_lost_to_other_tests) {
  EXPECT_EQ(ScannedFile(
                Head +
                "%%DocumentCustomColors: A\n%%DocumentCustomColors: B\n%%BoundingBox: 1 2 3 4\nx\n")
                .Strings(),
            "1 2 3 4|A");
  EXPECT_EQ(ScannedFile(
                Head + "%%DocumentCustomColors: A\n%BeginPhotoshop: 1\n%%BoundingBox: 1 2 3 4\nx\n")
                .Strings(),
            "1 2 3 4|A");
}

TEST(GetBoundsAndStrings, image_data_ends_the_scan) {
  EXPECT_EQ(ScannedFile(Head + "%BeginPhotoshop: 1\n%%BoundingBox: 1 2 3 4\nx\n").Strings(),
            "0 0 0 0");
  EXPECT_EQ(ScannedFile(Head + "%BeginPhotoshxx\n%%BoundingBox: 1 2 3 4\nx\n").Strings(),
            "1 2 3 4");
  EXPECT_EQ(ScannedFile(Head + "%BeginPhotoshoxx\n%%BoundingBox: 1 2 3 4\nx\n").Strings(),
            "0 0 0 0");
}

TEST(GetBoundsAndStrings, names_on_the_last_line_are_taken_and_boxes_are_not) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: 1 2 3 4\n%%DocumentCustomColors: A\n").Strings(),
            "1 2 3 4|A");
  EXPECT_EQ(ScannedFile(Head + "%%DocumentCustomColors: A\n%%BoundingBox: 1 2 3 4\n").Strings(),
            "0 0 0 0|A");
  EXPECT_EQ(ScannedFile(Head + "%%DocumentCustomColors: A\n%%+ B\n").Strings(), "0 0 0 0|A");
}

TEST(GetBoundsAndStrings, a_number_missing_in_a_later_box_keeps_the_earlier_value) {
  EXPECT_EQ(ScannedFile(Head + "%%BoundingBox: 1 2 3 4\n%%BoundingBox: 5 6\nx\n").Strings(),
            "5 6 3 4");
}

TEST(GetBoundsAndStrings, the_names_are_appended) {
  std::vector<CString> names = {L"before"};
  CRect rect{9, 9, 9, 9};
  const ScannedFile file(Head + "%%DocumentCustomColors: A\nx\n");
  EXPECT_TRUE(file.Parser().GetBoundsAndStrings(rect, names));
  EXPECT_EQ(names, (std::vector<CString>{L"before", L"A"}));
  EXPECT_EQ(rect, CRect());
}

TEST(CPSParser, copies_and_moves_keep_the_path) {
  const ScannedFile file(Head + "%%BoundingBox: 1 2 3 4\nx\n");
  CPSParser first(file.Wide().c_str());
  CPSParser copy(first);
  CPSParser moved(std::move(first));
  CPSParser assigned(L"nowhere");
  assigned = copy;
  CRect rect;
  for (CPSParser* parser : {&copy, &moved, &assigned}) EXPECT_TRUE(parser->GetBounds(rect));
  assigned = CPSParser(L"nowhere");
  EXPECT_FALSE(assigned.GetBounds(rect));
}
