#include "rastrel/readers/sheet_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

using rastrel::readers::SheetText;

namespace {

std::string Content(const SheetText& text) {
  std::string content;
  text.ForEachPiece(0, text.Size(), [&content](std::string_view piece) {
    content += piece;
    return true;
  });
  return content;
}

}  // namespace

TEST(SheetText, an_empty_text_takes_empty_pieces_and_is_trimmed_to_nothing) {
  SheetText text(10);
  text.Append(std::string_view());
  text.Append(0, '\t');
  text.TrimRight("x");
  text.Truncate(0);
  EXPECT_EQ(Content(text), "");
  EXPECT_EQ(text.TrimmedRange(), std::pair(std::size_t{0}, std::size_t{0}));
}

TEST(SheetText, the_limit_holds_to_the_byte_in_every_way_of_appending) {
  for (const std::size_t size : {9U, 10U, 11U}) {
    SheetText pieces(10);
    pieces.Append(std::string(size, 'a'));
    SheetText run(10);
    run.Append(size, 'a');
    SheetText bytes(10);
    for (std::size_t at = 0; at < size; ++at) bytes.Append('a');
    for (const SheetText* text : {&pieces, &run, &bytes}) {
      EXPECT_EQ(text->IsOverLimit(), size > 10) << size;
      EXPECT_EQ(Content(*text), std::string(std::min<std::size_t>(size, 10), 'a'));
    }
  }
}

TEST(SheetText, text_that_is_cut_off_may_be_written_again) {
  SheetText text(10);
  text.Append("0123456789ab");
  EXPECT_TRUE(text.IsOverLimit());
  text.Truncate(4);
  EXPECT_FALSE(text.IsOverLimit());
  text.Append("xyz\t\n ");
  EXPECT_EQ(Content(text), "0123xyz\t\n ");
  EXPECT_EQ(text.TrimmedRange(), std::pair(std::size_t{0}, std::size_t{7}));
}

TEST(SheetText, over_many_blocks_it_equals_a_string) {
  std::mt19937 random(1);
  SheetText text(SIZE_MAX);
  std::string expected;
  for (int step = 0; step < 3000; ++step) {
    const std::size_t size = random() % 5000;
    switch (random() % 8) {
      case 0:
        text.Truncate(std::min(size * 20, expected.size()));
        expected.resize(std::min(size * 20, expected.size()));
        break;
      case 1:
        text.Append(size, '\t');
        expected.append(size, '\t');
        break;
      case 2:
        text.TrimRight("\t\n");
        expected.erase(expected.find_last_not_of("\t\n") + 1);
        break;
      case 3:
        text.Append('\n');
        expected += '\n';
        break;
      default:
        text.Append(std::string(size, static_cast<char>('a' + step % 26)));
        expected.append(size, static_cast<char>('a' + step % 26));
        break;
    }
    ASSERT_EQ(text.Size(), expected.size()) << step;
  }
  EXPECT_EQ(Content(text), expected);
}
