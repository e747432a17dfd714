#include "rastrel/psscan/postscript_start.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/psscan/scan_fixture.h"

using rastrel::test::ScannedFile;
using namespace std::string_literals;

namespace {

const std::string DosSignature = "\xC5\xD0\xD3\xC6";

std::string Word(unsigned long value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(value >> shift));
  return bytes;
}

}  // namespace

TEST(FindEPSStart, a_file_under_twenty_bytes_that_begins_with_the_mark_starts_at_0) {
  EXPECT_EQ(ScannedFile("%!PS\n").Start(), "0 4");
  EXPECT_EQ(ScannedFile("%!").Start(), "0 1");
}

TEST(FindEPSStart, trailing_bytes_that_are_no_letters_do_not_count) {
  EXPECT_EQ(ScannedFile("%!PS\nshowpage\r\n\x04 123 \xE9").Start(), "0 13");
  EXPECT_EQ(ScannedFile("%!PS z").Start(), "0 6");
}

TEST(FindEPSStart, a_file_without_a_letter_is_one_byte_long) {
  EXPECT_EQ(ScannedFile("%!" + std::string(200000, '1')).Start(), "0 1");
}

TEST(FindEPSStart, the_last_letter_is_found_far_from_the_end) {
  EXPECT_EQ(ScannedFile("%!PS" + std::string(300000, '\0')).Start(), "0 4");
  for (const std::size_t zeros : {510, 511, 512, 513, 2559, 2560, 2561})
    EXPECT_EQ(ScannedFile("%!123a" + std::string(zeros, '.')).Start(), "0 6") << zeros;
}

TEST(FindEPSStart, a_dos_header_has_offset_and_length) {
  EXPECT_EQ(ScannedFile(DosSignature + Word(30) + Word(17) + std::string(18, 'x')).Start(),
            "30 17");
  EXPECT_EQ(ScannedFile(DosSignature + Word(0xFFFFFFFF) + Word(0x80000000)).Start(),
            "4294967295 2147483648");
}

TEST(FindEPSStart, a_length_of_0_in_a_dos_header_is_computed_from_the_last_letter) {
  const std::string header = DosSignature + Word(30) + Word(0) + std::string(18, '\0');
  EXPECT_EQ(ScannedFile(header + "%!PS\nshowpage\n").Start(), "30 13");
}

TEST(FindEPSStart, bytes_that_a_dos_header_lacks_are_0) {
  EXPECT_EQ(ScannedFile(DosSignature).Start(), "0 1");
  EXPECT_EQ(ScannedFile(DosSignature + "\x05").Start(), "5 -4");
}

TEST(FindEPSStart, a_start_behind_the_last_letter_gives_a_length_of_0_or_less) {
  // The last letter is at 12, so the range from 13 to it is empty.
  EXPECT_EQ(ScannedFile(DosSignature + Word(13) + Word(0) + "a...").Start(), "13 0");
  EXPECT_EQ(ScannedFile(DosSignature + Word(100) + Word(0) + "a...").Start(), "100 -87");
}

TEST(FindEPSStart, a_mark_inside_the_file_is_found) {
  EXPECT_EQ(ScannedFile("\x1b%-12345X@PJL\n%!PS-Adobe\n").Start(), "14 10");
}

TEST(FindEPSStart, a_mark_close_behind_another_percent_is_missed) {
  for (int distance = 1; distance <= 4; ++distance)
    EXPECT_EQ(ScannedFile("x%" + std::string(static_cast<std::size_t>(distance - 1), 'y') +
                          "%!PS-Adobe\n")
                  .Start(),
              "none")
        << distance;
  EXPECT_EQ(ScannedFile("x%yyyy%!PS-Adobe\n").Start(), "6 10");
}

TEST(FindEPSStart, a_mark_as_the_very_last_bytes_is_missed) {
  EXPECT_EQ(ScannedFile("x%!PS").Start(), "none");
  EXPECT_EQ(ScannedFile("x%!PS\n").Start(), "1 4");
}

TEST(FindEPSStart, a_mark_is_found_at_every_offset_round_a_piece_of_reading) {
  for (const std::size_t edge : {4096, 8192, 8192 + 65536})
    for (std::size_t offset = edge - 8; offset <= edge + 8; ++offset)
      EXPECT_EQ(ScannedFile(std::string(offset, '.') + "%!PS\n").Start(),
                std::to_string(offset) + " 4");
}

TEST(FindEPSStart, pure_binary_has_no_start_and_no_answer) {
  std::string binary;
  for (unsigned value = 1; binary.size() < 100000; value = value * 1103515245 + 12345)
    binary.push_back(static_cast<char>(value >> 16));
  for (std::size_t at = binary.find("%!PS"); at != std::string::npos; at = binary.find("%!PS"))
    binary[at] = '.';
  const ScannedFile file(binary);
  EXPECT_EQ(file.Start(), "none");
  EXPECT_EQ(file.Bounds(), "none");
  EXPECT_EQ(file.Strings(), "none");
  EXPECT_EQ(file.Spots(), "none");
  EXPECT_FALSE(file.HasBounds());
  EXPECT_EQ(IsEPSFile(file.Wide().c_str()), 0);
  EXPECT_EQ(IsPostscriptFile(file.Wide().c_str()), 0);
}

TEST(IsEPSFile, the_first_line_decides_in_either_case) {
  const auto kinds = [](std::string_view content) {
    const ScannedFile file(content);
    return std::to_string(IsEPSFile(file.Wide().c_str())) +
           std::to_string(IsPostscriptFile(file.Wide().c_str()));
  };
  EXPECT_EQ(kinds("%!PS-Adobe-3.0 EPSF-3.0\n"), "11");
  EXPECT_EQ(kinds("%!PS-ADOBE-3.0\n"), "01");
  EXPECT_EQ(kinds("%!PS\n"), "00");
  EXPECT_EQ(kinds("%!\n"), "00");
  EXPECT_EQ(kinds("%! ePsF\n"), "10");
  EXPECT_EQ(kinds("%! x %!ps-adobe"), "01");
  EXPECT_EQ(kinds("%!PS\nEPSF %!PS-Adobe\n"), "00");
}

TEST(IsEPSFile, a_keyword_behind_the_first_reading_is_not_seen) {
  const std::string line = "%!" + std::string(4090, '.');
  const ScannedFile inside(line + "EPSF" + std::string(100, '.'));
  EXPECT_EQ(IsEPSFile(inside.Wide().c_str()), 1);
  const ScannedFile behind(line + ".EPSF" + std::string(100, '.'));
  EXPECT_EQ(IsEPSFile(behind.Wide().c_str()), 0);
}

TEST(IsEPSFile, a_null_path_is_no_file) {
  EXPECT_EQ(IsEPSFile(nullptr), 0);
  EXPECT_EQ(IsPostscriptFile(nullptr), 0);
}
