#include "rastrel/platform/os/growing_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "rastrel/platform/os/random_access_file.h"
#include "tests/support/scratch_directory.h"

using rastrel::os::GrowingFile;
using rastrel::os::Growth;
using rastrel::os::RandomAccessFile;
using rastrel::test::ScratchDirectory;

namespace {

void Append(const ScratchDirectory& directory, const std::string& bytes) {
  std::ofstream(directory.Path("file"), std::ios::binary | std::ios::app) << bytes;
}

// Reads to the end, and waits while the file grows. `end` becomes the state there.
std::string ReadAll(RandomAccessFile& file, Growth& end) {
  std::string content;
  std::string piece(100000, '\0');
  for (;;) {
    const auto count = file.ReadAt(content.size(), piece);
    if (!count) return "(failed)";
    content.append(piece, 0, *count);
    if (*count > 0) continue;
    end = file.AwaitGrowth(content.size());
    if (end != Growth::Grown) return content;
  }
}

}  // namespace

TEST(GrowingFile, a_file_that_nobody_announced_is_whole) {
  const ScratchDirectory directory;
  directory.Write("file", "text");
  auto file = RandomAccessFile::Open(directory.Wide("file"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->AwaitGrowth(4), Growth::Whole);
  const GrowingFile other(directory.Path("other"));
  EXPECT_EQ(file->AwaitGrowth(4), Growth::Whole);
}

TEST(GrowingFile, a_reader_waits_for_all_that_is_still_written) {
  const ScratchDirectory directory;
  GrowingFile growing(directory.Path("file"));
  ASSERT_TRUE(growing.State());
  std::string expected;
  for (int piece = 0; piece < 200; ++piece)
    expected +=
        std::string(static_cast<std::size_t>(piece) * 37, static_cast<char>('a' + piece % 26));
  std::thread writer([&] {
    for (std::size_t at = 0; at < expected.size(); at += 5000) {
      Append(directory, expected.substr(at, 5000));
      growing.Grow(std::min(at + 5000, expected.size()));
    }
    growing.End(true);
  });
  auto file = RandomAccessFile::Open(directory.Wide("file"));
  Growth end = Growth::Failed;
  const std::string content = file ? ReadAll(*file, end) : "(no file)";
  writer.join();
  EXPECT_EQ(content, expected);
  EXPECT_EQ(end, Growth::Whole);
}

TEST(GrowingFile,
     bytes_written_after_the_readers_last_look_are_read_although_the_writer_has_ended) {
  const ScratchDirectory directory;
  GrowingFile growing(directory.Path("file"));
  auto file = RandomAccessFile::Open(directory.Wide("file"));
  ASSERT_TRUE(file);
  std::string piece(100, '\0');
  ASSERT_EQ(file->ReadAt(0, piece).ValueOr(1), 0U);
  Append(directory, "text");
  growing.Grow(4);
  growing.End(true);
  EXPECT_EQ(file->AwaitGrowth(0), Growth::Grown);
  EXPECT_EQ(file->AwaitGrowth(3), Growth::Grown);
  EXPECT_EQ(file->AwaitGrowth(4), Growth::Whole);
}

TEST(GrowingFile, a_late_reader_too_learns_that_the_rest_never_comes) {
  const ScratchDirectory directory;
  GrowingFile growing(directory.Path("file"));
  Append(directory, "begin");
  growing.Grow(5);
  growing.End(false);
  auto file = RandomAccessFile::Open(directory.Wide("file"));
  ASSERT_TRUE(file);
  Growth end = Growth::Whole;
  EXPECT_EQ(ReadAll(*file, end), "begin");
  EXPECT_EQ(end, Growth::Failed);
}

TEST(GrowingFile, a_writer_that_is_gone_leaves_an_ordinary_file) {
  const ScratchDirectory directory;
  auto growing = std::make_unique<GrowingFile>(directory.Path("file"));
  growing->End(false);
  growing.reset();
  auto file = RandomAccessFile::Open(directory.Wide("file"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->AwaitGrowth(0), Growth::Whole);
}

TEST(GrowingFile, a_file_that_cannot_be_made_says_so) {
  const ScratchDirectory directory;
  GrowingFile growing(directory.Path("no folder/file"));
  EXPECT_FALSE(growing.State());
  growing.Grow(1);
  growing.End(true);
}
