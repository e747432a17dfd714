#include "pages/plain_tiff.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace rastrel::pages {
namespace {

std::string Number(std::uint32_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xFF);
  return text;
}

// An entry of the directory, as TIFF 6.0 (section 2) lays it out: tag, type, count, value or place.
// Types: 2 text, 3 of two bytes, 4 of four, 5 two of four.
std::string Entry(std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t value) {
  return Number(tag, 2) + Number(type, 2) + Number(count, 4) + Number(value, 4);
}

std::optional<FoundPlainTiff> Find(const std::string& file) {
  return FindPlainTiff(std::as_bytes(std::span(file)));
}

// Worked out by hand: 8 bytes of header, 2 + 15 * 12 + 4 of directory, so that values begin at 194.
TEST(PlainTiff, a_page_of_one_strip_has_this_head) {
  const auto head = PlainTiffHead({3, 2, 3, {300, 1}, {600, 1}});
  const std::string expected =
      "II" + Number(42, 2) + Number(8, 4) + Number(15, 2) + Entry(256, 4, 1, 3) +  // width
      Entry(257, 4, 1, 2) +                                                        // height
      Entry(258, 3, 3, 194) +  // bits of the samples
      Entry(259, 3, 1, 1) +    // no compression
      Entry(262, 3, 1, 2) +    // RGB
      Entry(273, 4, 1, 224) +  // the strip
      Entry(274, 3, 1, 1) +    // the first row is the top
      Entry(277, 3, 1, 3) +    // samples of a pixel
      Entry(278, 4, 1, 2) +    // rows of a strip
      Entry(279, 4, 1, 18) +   // its bytes
      Entry(282, 5, 1, 200) +  // pixels per inch, across
      Entry(283, 5, 1, 208) +  // and down
      Entry(284, 3, 1, 1) +    // samples side by side
      Entry(296, 3, 1, 2) +    // inches
      Entry(305, 2, 8, 216) +  // the program's name
      Number(0, 4) + Number(8, 2) + Number(8, 2) + Number(8, 2) + Number(300, 4) + Number(1, 4) +
      Number(600, 4) + Number(1, 4) + std::string("Rastrel", 8);
  ASSERT_EQ(expected.size(), 224U);
  EXPECT_EQ(head, expected);
}

// Rows of 65,536 bytes are a strip each. 3 places and 3 lengths, from 218 on, end at 242; the
// pixels begin at the next multiple of 16.
TEST(PlainTiff, a_gray_page_of_several_strips_lists_them) {
  const auto head = PlainTiffHead({65'536, 3, 1, {}, {}});
  ASSERT_TRUE(head);
  EXPECT_EQ(head->size(), 256U);
  EXPECT_EQ(head->substr(8 + 2 + 5 * 12, 12), Entry(273, 4, 3, 218));
  EXPECT_EQ(head->substr(8 + 2 + 9 * 12, 12), Entry(279, 4, 3, 230));
  EXPECT_EQ(head->substr(218, 24), Number(256, 4) + Number(256 + 65'536, 4) +
                                       Number(256 + 2 * 65'536, 4) + Number(65'536, 4) +
                                       Number(65'536, 4) + Number(65'536, 4));
  EXPECT_EQ(head->substr(242), std::string(14, '\0'));
}

TEST(PlainTiff, the_last_strip_has_the_rows_that_are_left) {
  EXPECT_EQ(RowsPerStripOf(7440, 3508), 8U);
  EXPECT_EQ(RowsPerStripOf(65'537, 9), 1U);
  EXPECT_EQ(RowsPerStripOf(1, 9), 9U);
  const auto head = PlainTiffHead({32'768, 3, 1, {}, {}});
  ASSERT_TRUE(head);
  EXPECT_EQ(head->substr(218 + 8, 8), Number(65'536, 4) + Number(32'768, 4));
}

TEST(PlainTiff, a_picture_of_another_form_has_none) {
  EXPECT_FALSE(PlainTiffHead({0, 1, 3, {}, {}}));
  EXPECT_FALSE(PlainTiffHead({1, 0, 3, {}, {}}));
  EXPECT_FALSE(PlainTiffHead({1, 1, 2, {}, {}}));
  EXPECT_FALSE(PlainTiffHead({1, 1, 4, {}, {}}));
}

TEST(PlainTiff, a_picture_of_the_largest_size_has_one_and_a_row_more_none) {
  constexpr std::uint32_t Width = 28'000;
  constexpr std::uint32_t Height = 100'000;
  static_assert(std::uint64_t{Width} * Height == PlainTiffLimit);
  EXPECT_TRUE(PlainTiffHead({Width, Height - 1, 1, {}, {}}));
  EXPECT_TRUE(PlainTiffHead({Width, Height, 1, {}, {}}));
  EXPECT_FALSE(PlainTiffHead({Width, Height + 1, 1, {}, {}}));
  EXPECT_FALSE(PlainTiffHead({0xFFFFFFFF, 0xFFFFFFFF, 3, {}, {}}));
}

TEST(PlainTiff, a_head_is_found_again) {
  for (const PlainTiff& picture :
       {PlainTiff{1, 1, 1, {72, 1}, {72, 1}}, PlainTiff{2479, 3508, 3, {300, 1}, {300, 1}},
        PlainTiff{70'000, 1, 3, {1'234'567, 1000}, {1, 100'000}}}) {
    const auto head = PlainTiffHead(picture);
    ASSERT_TRUE(head);
    const auto found = Find(*head);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->picture, picture);
    EXPECT_EQ(found->pixelsAt, head->size());
  }
}

TEST(PlainTiff, a_head_that_is_cut_or_changed_in_a_byte_is_not_found) {
  const std::string head = PlainTiffHead({5, 4, 3, {300, 1}, {300, 1}}).value_or("");
  ASSERT_EQ(head.size(), FixedHeadBytes);
  for (std::size_t size = 0; size < head.size(); ++size) EXPECT_FALSE(Find(head.substr(0, size)));
  // Sizes and resolutions may be others, which then is another picture's head.
  const PlainTiff picture = Find(head)->picture;
  for (std::size_t at = 0; at < head.size(); ++at) {
    std::string changed = head;
    changed[at] = static_cast<char>(changed[at] ^ 0x40);
    const auto found = Find(changed);
    EXPECT_FALSE(found && found->picture == picture) << at;
  }
}

TEST(PlainTiff, a_file_is_whole_with_its_last_strip_and_its_last_pixel_only) {
  // Three strips, so that their places and lengths lie after the fixed part of the head.
  const PlainTiff picture{100, 500, 3, {300, 1}, {300, 1}};
  const std::string file =
      PlainTiffHead(picture).value_or("") + std::string(picture.PixelBytes(), 'x');
  const auto isWhole = [&](const std::string& bytes, std::uint64_t size) {
    const ReadFileAt readAt = [&](std::uint64_t offset, std::span<std::byte> into) {
      if (offset > bytes.size() || into.size() > bytes.size() - offset) return false;
      std::memcpy(into.data(), bytes.data() + offset, into.size());
      return true;
    };
    return FindWholePlainTiff(readAt, size).has_value();
  };
  EXPECT_TRUE(isWhole(file, file.size()));
  EXPECT_FALSE(isWhole(file, file.size() - 1));
  EXPECT_FALSE(isWhole(file, file.size() + 1));
  const std::size_t headBytes = file.size() - picture.PixelBytes();
  ASSERT_GT(headBytes, FixedHeadBytes);
  for (std::size_t size = 0; size < headBytes; ++size)
    EXPECT_FALSE(isWhole(file.substr(0, size), size)) << size;
  for (std::size_t at = FixedHeadBytes; at < headBytes; ++at) {
    std::string changed = file;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_FALSE(isWhole(changed, changed.size())) << at;
  }
}

TEST(PlainTiff, resolutions_are_fractions_of_whole_numbers) {
  EXPECT_EQ(TiffResolutionOf(300), (TiffResolution{300, 1}));
  EXPECT_EQ(TiffResolutionOf(72.5), (TiffResolution{725, 10}));
  EXPECT_EQ(TiffResolutionOf(100'000), (TiffResolution{100'000, 1}));
  EXPECT_EQ(TiffResolutionOf(0.001), (TiffResolution{1, 1000}));
  const TiffResolution third = TiffResolutionOf(1000.0 / 3);
  EXPECT_NEAR(static_cast<double>(third.numerator) / third.denominator, 1000.0 / 3, 1e-5);
  const TiffResolution tiny = TiffResolutionOf(1e-9);
  EXPECT_GT(tiny.numerator, 0U) << "a fraction of 0 is no resolution";
}

}  // namespace
}  // namespace rastrel::pages
