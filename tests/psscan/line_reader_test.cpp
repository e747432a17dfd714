#include "rastrel/psscan/line_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "tests/psscan/scan_fixture.h"
#include "tests/support/literal_ps_scans.h"
#include "tests/support/ps_scan_files.h"

namespace os = rastrel::os;
using rastrel::psscan::BufferSize;
using rastrel::psscan::LineReader;
using rastrel::test::LiteralPsScans;
using rastrel::test::ScannedFile;

namespace {

LineReader Open(const ScannedFile& file) {
  auto opened = os::RandomAccessFile::Open(file.Wide());
  EXPECT_TRUE(opened);
  return LineReader(std::move(*opened));
}

std::vector<std::string> LinesOf(std::string_view content) {
  const ScannedFile file(content);
  LineReader in = Open(file);
  std::vector<std::string> lines;
  while (!in.AtEnd()) lines.emplace_back(in.NextLine());
  return lines;
}

using Lines = std::vector<std::string>;

// Reads the file line by line in both ways, and compares line, buffer, position and end state.
void ExpectSameReadings(const std::string& content) {
  const ScannedFile file(content);
  LineReader views = Open(file);
  LineReader copies = Open(file);
  std::ifstream literal(file.Path(), std::ios::binary);
  char expected[BufferSize] = {};
  char copy[BufferSize] = {};
  for (int line = 0; !literal.eof(); ++line) {
    LiteralPsScans::EPSGetLine(literal, expected);
    ASSERT_EQ(views.NextLine(), std::string_view(expected)) << "line " << line;
    file.Parser().EPSGetLine(copies, copy);
    ASSERT_EQ(std::memcmp(copy, expected, BufferSize), 0) << "line " << line;
    // Looking at the buffer of every other line shows that looking changes nothing.
    if (line % 2 == 0) {
      ASSERT_EQ(std::memcmp(views.Buffer(), expected, BufferSize), 0) << "line " << line;
    }
    ASSERT_EQ(views.AtEnd(), literal.eof());
    ASSERT_EQ(copies.AtEnd(), literal.eof());
    if (literal.eof()) break;
    ASSERT_EQ(static_cast<long long>(views.Tell()), static_cast<long long>(literal.tellg()));
    ASSERT_EQ(static_cast<long long>(copies.Tell()), static_cast<long long>(literal.tellg()));
  }
}

}  // namespace

TEST(EPSGetLine, two_line_ends_in_a_row_are_one) {
  EXPECT_EQ(LinesOf("a\r\nb\n\nc\n\rd\r\re\n\n\nf\n"), (Lines{"a", "b", "c", "d", "e", "", "f"}));
}

TEST(EPSGetLine, a_zero_ends_a_line_and_takes_a_line_end_with_it) {
  EXPECT_EQ(LinesOf(std::string("a\0\nb\0\0c\n", 8)), (Lines{"a", "b", "", "c"}));
}

TEST(EPSGetLine, an_empty_file_is_one_empty_line) { EXPECT_EQ(LinesOf(""), Lines{""}); }

TEST(EPSGetLine, a_last_line_without_an_end_runs_on_into_stale_bytes) {
  EXPECT_EQ(LinesOf("abc\nxy"), (Lines{"abc", "xyc"}));
  EXPECT_EQ(LinesOf("abc\nx"), (Lines{"abc", "xbc"}));
  EXPECT_EQ(LinesOf("ab\ncdefgh"), (Lines{"ab", "cdefghfgh"}));
}

TEST(EPSGetLine, of_a_line_of_4096_bytes_the_byte_behind_is_lost) {
  const std::string text(4094, 'x');
  EXPECT_EQ(LinesOf(text + "\n\nb\n"), (Lines{text, "b"}));
  EXPECT_EQ(LinesOf(text + "x\n\nb\n"), (Lines{text + "x", "", "b"}));
  EXPECT_EQ(LinesOf(text + "xx\n\nb\n"), (Lines{text + "xx", "", "b"}));
  EXPECT_EQ(LinesOf(text + "xx\nb\n"), (Lines{text + "xx", "b"}));
  EXPECT_EQ(LinesOf(text + "xxyb\n"), (Lines{text + "xx", "b"}));
}

TEST(EPSGetLine, a_reading_of_exactly_the_last_bytes_is_followed_by_a_stale_line) {
  const std::string line(4095, 'x');
  EXPECT_EQ(LinesOf(line + "\n"), (Lines{line, line}));
  EXPECT_EQ(LinesOf(line + "x"), (Lines{line + "x", line + "x"}));
  EXPECT_EQ(LinesOf("a\n" + line + "\n"), (Lines{"a", line, line}));
}

TEST(LineReader, seeking_within_and_out_of_the_window_gives_the_same_lines) {
  std::string content;
  for (int line = 0; line < 60000; ++line) content += std::to_string(100000 + line) + " ----\n";
  const ScannedFile file(content);
  LineReader in = Open(file);
  for (const int line : {0, 1, 59000, 30000, 2, 50000, 49999, 700, 58000}) {
    in.Seek(static_cast<std::uint64_t>(line) * 12);
    EXPECT_EQ(in.NextLine(), std::to_string(100000 + line) + " ----");
  }
  in.Seek(1'000'000'000'000);
  EXPECT_EQ(in.NextLine(), "158000 ----");
  EXPECT_TRUE(in.AtEnd());
  in.Seek(0);
  EXPECT_EQ(in.NextLine(), "158000 ----");
}

TEST(LineReader, every_reading_leaves_the_same_as_the_literal_one) {
  rastrel::test::PsScanFiles files(7);
  for (int file = 0; file < 400; ++file) {
    const std::string content = files.Next();
    ExpectSameReadings(content);
    if (HasFatalFailure()) return;
  }
}

TEST(LineReader, every_prefix_of_long_and_short_lines_is_read_alike) {
  std::string content;
  for (const int length : {3, 4095, 0, 5, 4096, 1, 700, 4097, 2})
    content += std::string(static_cast<std::size_t>(length), static_cast<char>('a' + length % 26)) +
               "\r\n";
  for (std::size_t size = 0; size <= content.size(); size += size % 4096 < 4080 ? 7 : 1) {
    ExpectSameReadings(content.substr(0, size));
    if (HasFatalFailure()) return;
  }
}

TEST(LineReader, a_read_that_fails_ends_the_scan_with_false) {
  static int readsLeft;
  const os::SystemCallsGuard guard;
  std::string content =
      "%!PS-Adobe EPSF\n%%DocumentCustomColors: (A)\n%%RGBCustomColor: 1 1 1 (A)\n";
  content += "%%BoundingBox: (atend)\n";
  for (int line = 0; line < 100000; ++line) content += "% a comment of some length\n";
  content += "%%BoundingBox: 1 2 3 4\nx\n";
  const ScannedFile file(content);
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    if (readsLeft-- > 0) return ::read(descriptor, bytes, count);
    errno = EIO;
    return -1;
  };
  CSpotMatchList list;
  BOUNDS bounds;
  for (int reads = 0; reads < 4; ++reads) {
    readsLeft = reads;
    EXPECT_EQ(file.Bounds(), "none") << reads;
    readsLeft = reads;
    EXPECT_EQ(file.Strings(), "none") << reads;
    readsLeft = reads;
    EXPECT_FALSE(file.Parser().LoadSpotMatchItems(&list)) << reads;
    readsLeft = reads;
    EXPECT_FALSE(file.Parser().LoadSpotItemsAndBounds(&list, bounds)) << reads;
  }
  EXPECT_TRUE(list.empty());
  readsLeft = 0;
  EXPECT_FALSE(file.Parser().IsEpsFile());
  EXPECT_EQ(file.Start(), "none");
  readsLeft = 1;  // the header can be read, the file's end can't
  EXPECT_EQ(file.Start(), "none");
}

TEST(LineReader, reads_that_are_interrupted_or_short_change_nothing) {
  static int calls;
  calls = 0;
  const os::SystemCallsGuard guard;
  const ScannedFile file("%!PS-Adobe\n" + std::string(30000, 'x') +
                         "\n%%BoundingBox: 1 2 3 4\nx\n");
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    if (++calls % 3 == 0) {
      errno = EINTR;
      return -1;
    }
    return ::read(descriptor, bytes, std::min<size_t>(count, 13));
  };
  EXPECT_EQ(file.Bounds(), "1 2 3 4");
  EXPECT_GT(calls, 2000);
}
