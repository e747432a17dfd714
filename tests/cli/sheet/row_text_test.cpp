// The form of the text that a spreadsheet is shown as, its limit, and its failures.

#include "cli/sheet/row_text.h"

#include <gtest/gtest.h>

#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

using cli::sheet::AppendEscaped;
using cli::sheet::RowText;

// Writes one row to a file; the failure as a person reads it, or nothing.
std::string WriteRow(const std::string& path, std::uint64_t row, std::vector<std::string> cells,
                     std::uint64_t maximumBytes) {
  RowText text(path, RowText::Form::Table, false, maximumBytes);
  EXPECT_TRUE(text.BeginSheet({}, 1));
  EXPECT_TRUE(text.Row(row, cells));
  const auto finished = text.Finish();
  return finished ? std::string() : Describe(finished.Error());
}

TEST(RowText, is_counted) {
  const ScratchDirectory scratch;
  for (const std::uint64_t maximum : {7U, 8U, 9U}) {
    const std::string failure = WriteRow(scratch.Path("t"), 2, {"ab", "", "cd"}, maximum);
    EXPECT_EQ(failure, maximum >= 8 ? "" : "the text has more than 7 bytes, which is the limit");
    if (maximum < 8) continue;
    EXPECT_EQ(scratch.Read("t"), "\nab\t\tcd\n");
  }
}

TEST(RowText, that_can_not_be_written_is_said) {
  const ScratchDirectory scratch;
  EXPECT_EQ(WriteRow("/dev/full", 1, {"a"}, 100),
            "write '/dev/full': No space left on device (28)");
  const std::string path = scratch.Path("none/t");
  EXPECT_EQ(WriteRow(path, 1, {"a"}, 100), "open '" + path + "': No such file or directory (2)");
}

TEST(AppendEscaped, can_be_read_back) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
  std::string line;
  AppendEscaped(line, every + "\\t\\x00");
  EXPECT_EQ(line.find_first_of("\t\n\r"), line.npos);
  std::string back;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] != '\\') {
      back += line[at];
      continue;
    }
    const char kind = line[++at];
    if (kind == 'x') {
      back += static_cast<char>(std::stoi(line.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      back += kind == 't' ? '\t' : kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind;
    }
  }
  EXPECT_EQ(back, every + "\\t\\x00");
}

}  // namespace
}  // namespace rastrel::test
