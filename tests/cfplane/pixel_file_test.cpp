#include "cfplane/pixel_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/page_files.h"

using rastrel::planes::PixelFile;
using rastrel::test::CountingBytes;
using rastrel::test::GrayTiff;
using rastrel::test::Netpbm;
using rastrel::test::ScratchDirectory;
using rastrel::test::TiffForm;

namespace {

// The samples of a file in three pieces, or "sides, samples: why" of a refusal.
std::string Samples(const std::string& content) {
  const ScratchDirectory root;
  root.Write("f", content);
  auto file = PixelFile::Open(root.Path(), {"f", content.size(), {}});
  if (!file) {
    EXPECT_EQ(file.Error().where, root.Path("f"));
    return "refused: " + file.Error().why;
  }
  std::string samples(file->RowBytes() * file->Height(), '\0');
  const auto bytes = std::as_writable_bytes(std::span(samples));
  const std::size_t third = bytes.size() / 3;
  EXPECT_TRUE(file->Read(bytes.first(third)));
  EXPECT_TRUE(file->Read(bytes.subspan(third, third)));
  EXPECT_TRUE(file->Read(bytes.subspan(2 * third)));
  return samples;
}

TEST(PixelFile, reads_netpbm_pictures_of_one_and_three_samples) {
  EXPECT_EQ(Samples(Netpbm("P5", 5, 3, CountingBytes(15))), CountingBytes(15));
  EXPECT_EQ(Samples(Netpbm("P6", 5, 3, CountingBytes(45))), CountingBytes(45));
}

TEST(PixelFile, passes_samples_over_also_across_strips) {
  const ScratchDirectory root;
  // Strips of two rows of three samples, the last of which lies first.
  const std::string content = GrayTiff(
      {.width = 3, .height = 5, .rowsPerStrip = 2, .isBackwards = true}, CountingBytes(15));
  root.Write("f", content);
  auto file = PixelFile::Open(root.Path(), {"f", content.size(), {}});
  ASSERT_TRUE(file);
  std::string samples(4, '\0');
  const auto bytes = std::as_writable_bytes(std::span(samples));
  file->Skip(0);
  file->Skip(5);
  ASSERT_TRUE(file->Read(bytes.first(2)));  // the last of a strip, and the first of the next
  file->Skip(6);                            // to the one after that
  ASSERT_TRUE(file->Read(bytes.subspan(2)));
  EXPECT_EQ(samples, "\6\7\16\17");
}

TEST(PixelFile, reads_a_netpbm_head_with_comments_and_any_whitespace) {
  EXPECT_EQ(Samples("P5 # a comment\n# 9 9\n\t2\r\n1 255\nab"), "ab");
}

TEST(PixelFile, refuses_netpbm_pictures_whose_head_does_not_hold) {
  EXPECT_EQ(Samples("P5"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 2"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 2 1"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 2 1 255"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 0 1 255\n"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 1 0 255\n"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 -1 1 255\n"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 99999999999999999999 1 255\n"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 #"), "refused: has no whole head");
  EXPECT_EQ(Samples("P5 2 1 65535\nabcd"), "refused: has not 8 bits a sample");
  EXPECT_EQ(Samples("P5 2 1 255\na"), "refused: has not the size that its head says");
  EXPECT_EQ(Samples("P5 2 1 255\nabc"), "refused: has not the size that its head says");
}

TEST(PixelFile, takes_sides_of_2000000_pixels_and_no_more) {
  for (const std::uint32_t side : {1'999'999U, 2'000'000U, 2'000'001U}) {
    const bool isRefused = side > 2'000'000;
    const std::string samples = CountingBytes(side);
    EXPECT_EQ(Samples(Netpbm("P5", side, 1, samples)) == samples, !isRefused) << side;
    EXPECT_EQ(Samples(GrayTiff({.width = side, .height = 1}, samples)) == samples, !isRefused)
        << side;
  }
}

TEST(PixelFile, reads_gray_tiff_files_of_one_strip_and_of_many) {
  const std::string samples = CountingBytes(7 * 10);
  for (const std::uint32_t rows : {1U, 3U, 9U, 10U, 11U})
    EXPECT_EQ(Samples(GrayTiff({.width = 7, .height = 10, .rowsPerStrip = rows}, samples)), samples)
        << rows;
}

TEST(PixelFile, reads_strips_that_lie_in_another_order) {
  const std::string samples = CountingBytes(7 * 10);
  EXPECT_EQ(Samples(GrayTiff({.width = 7, .height = 10, .rowsPerStrip = 3, .isBackwards = true},
                             samples)),
            samples);
}

TEST(PixelFile, refuses_tiff_files_of_another_form) {
  const std::string samples = CountingBytes(6);
  const auto with = [&](TiffForm form) {
    form.width = 3;
    form.height = 2;
    return Samples(GrayTiff(form, samples));
  };
  EXPECT_EQ(with({}), samples);
  EXPECT_EQ(with({.bits = 16}), "refused: has not 8 bits a sample");
  EXPECT_EQ(with({.compression = 5}), "refused: is compressed");
  EXPECT_EQ(with({.photometric = 0}), "refused: is not gray with 0 for black");
  EXPECT_EQ(with({.samples = 3}), "refused: has more than one sample a pixel");
  EXPECT_EQ(with({.isTiled = true}), "refused: lies in tiles");
  EXPECT_EQ(Samples("a picture of no kind"), "refused: is no little-endian TIFF file");
  EXPECT_EQ(Samples(""), "refused: is cut off in its description");
  EXPECT_EQ(Samples(std::string("II*\0", 4) + "\xF0\xFF\xFF\xFF"),
            "refused: is cut off in its description");
}

// A file whose directory says other sides than its strips have.
std::string Claiming(std::uint32_t width, std::uint32_t height, std::uint32_t rowsPerStrip) {
  std::string file = GrayTiff({.width = 4, .height = 4, .rowsPerStrip = 2}, CountingBytes(16));
  const auto set = [&](std::uint32_t tag, std::uint32_t value) {
    const std::string entry = rastrel::test::LittleEndianText(tag, 2) + std::string("\4\0", 2) +
                              rastrel::test::LittleEndianText(1, 4);
    const std::size_t at = file.find(entry);
    ASSERT_NE(at, std::string::npos);
    file.replace(at + 8, 4, rastrel::test::LittleEndianText(value, 4));
  };
  set(256, width);
  set(257, height);
  set(278, rowsPerStrip);
  return Samples(file);
}

TEST(PixelFile, refuses_tiff_files_whose_strips_do_not_hold_the_rows) {
  EXPECT_EQ(Claiming(4, 4, 2), CountingBytes(16));
  EXPECT_EQ(Claiming(4, 5, 2), "refused: has not as many strips as its rows make");
  EXPECT_EQ(Claiming(4, 4, 1), "refused: has not as many strips as its rows make");
  EXPECT_EQ(Claiming(4, 4, 4), "refused: has not as many strips as its rows make");
  EXPECT_EQ(Claiming(4, 4, 0), "refused: has not as many strips as its rows make");
  EXPECT_EQ(Claiming(5, 4, 2), "refused: has a strip of a wrong size");
  EXPECT_EQ(Claiming(3, 4, 2), "refused: has a strip of a wrong size");
  EXPECT_EQ(Claiming(0, 4, 2), "refused: has a side of no or too many pixels");
  EXPECT_EQ(Claiming(4, 0, 2), "refused: has a side of no or too many pixels");
  EXPECT_EQ(Claiming(4, 4'000'000, 2'000'000), "refused: has a side of no or too many pixels");
  EXPECT_EQ(Claiming(2'000'000, 2'000'000, 1'000'000),
            "refused: claims more pixels than it has bytes");
}

TEST(PixelFile, refuses_a_tiff_file_cut_anywhere) {
  const std::string whole =
      GrayTiff({.width = 5, .height = 5, .rowsPerStrip = 2}, CountingBytes(25));
  // The last four bytes say that no directory follows, and nobody reads them.
  for (std::size_t length = 0; length + 4 < whole.size(); ++length)
    EXPECT_TRUE(Samples(whole.substr(0, length)).starts_with("refused: ")) << length;
}

TEST(PixelFile, refuses_a_size_other_than_the_listed_one) {
  const ScratchDirectory root;
  const std::string content = Netpbm("P5", 2, 1, "ab");
  root.Write("f", content);
  for (const std::size_t listed : {content.size() - 1, content.size() + 1}) {
    const auto file = PixelFile::Open(root.Path(), {"f", listed, {}});
    ASSERT_FALSE(file);
    EXPECT_EQ(file.Error().why,
              "has 13 bytes, and " + std::to_string(listed) + " by the page's description");
  }
  EXPECT_TRUE(PixelFile::Open(root.Path(), {"f", content.size(), {}}));
}

TEST(PixelFile, opens_no_link_no_directory_and_waits_for_no_pipe) {
  const ScratchDirectory root;
  root.Write("f", Netpbm("P5", 2, 1, "ab"));
  std::filesystem::create_symlink("f", root.Path("link"));
  std::filesystem::create_directory(root.Path("folder"));
  ASSERT_EQ(::mkfifo(root.Path("pipe").c_str(), 0600), 0);
  const auto link = PixelFile::Open(root.Path(), {"link", 13, {}});
  ASSERT_FALSE(link);
  EXPECT_EQ(link.Error().error, ELOOP);
  for (const char* const name : {"folder", "pipe"}) {
    const auto file = PixelFile::Open(root.Path(), {name, 0, {}});
    ASSERT_FALSE(file) << name;
    EXPECT_EQ(file.Error().why, "is no regular file") << name;
  }
  const auto missing = PixelFile::Open(root.Path(), {"missing", 0, {}});
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.Error().error, ENOENT);
}

TEST(PixelFile, fails_without_a_signal_where_it_was_cut_short_meanwhile) {
  const ScratchDirectory root;
  const std::string content = Netpbm("P5", 1000, 1000, CountingBytes(1'000'000));
  root.Write("f", content);
  auto file = PixelFile::Open(root.Path(), {"f", content.size(), {}});
  ASSERT_TRUE(file);
  std::string samples(1'000'000, '\0');
  const auto bytes = std::as_writable_bytes(std::span(samples));
  ASSERT_TRUE(file->Read(bytes.first(400'000)));
  std::filesystem::resize_file(root.Path("f"), 500'000);
  const auto read = file->Read(bytes.subspan(400'000));
  ASSERT_FALSE(read);
  EXPECT_EQ(read.Error().error, EIO);
  EXPECT_EQ(read.Error().why, "was cut short meanwhile");
  EXPECT_EQ(read.Error().where, root.Path("f"));
}

}  // namespace
