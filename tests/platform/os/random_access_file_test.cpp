#include "rastrel/platform/os/random_access_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::test::ScratchDirectory;

namespace {

std::string Read(os::RandomAccessFile& file, std::uint64_t offset, std::size_t count) {
  std::string bytes(count, '\0');
  const auto got = file.ReadAt(offset, bytes);
  if (!got) return "failed";
  bytes.resize(*got);
  return bytes;
}

}  // namespace

TEST(RandomAccessFile, any_offset_is_read_in_any_order) {
  const ScratchDirectory scratch;
  scratch.Write("file", "0123456789");
  auto file = os::RandomAccessFile::Open(scratch.Wide("file"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Size(), 10U);
  EXPECT_EQ(Read(*file, 0, 3), "012");
  EXPECT_EQ(Read(*file, 3, 3), "345");
  EXPECT_EQ(Read(*file, 8, 5), "89");
  EXPECT_EQ(Read(*file, 10, 5), "");
  EXPECT_EQ(Read(*file, 1000, 5), "");
  EXPECT_EQ(Read(*file, 1, 1), "1");
}

TEST(RandomAccessFile, a_file_that_is_not_regular_is_refused_without_waiting) {
  const ScratchDirectory scratch;
  ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
  const auto errorOf = [](const std::wstring& path) {
    const auto file = os::RandomAccessFile::Open(path);
    return file ? 0 : file.Error().error;
  };
  EXPECT_EQ(errorOf(scratch.Wide("pipe")), EINVAL);
  EXPECT_EQ(errorOf(scratch.Wide()), EISDIR);
  EXPECT_EQ(errorOf(L"/dev/null"), EINVAL);
  EXPECT_EQ(errorOf(scratch.Wide("missing")), ENOENT);
}

TEST(RandomAccessFile, a_failed_read_is_reported_and_the_next_one_starts_right) {
  const ScratchDirectory scratch;
  scratch.Write("file", "0123456789");
  auto file = os::RandomAccessFile::Open(scratch.Wide("file"));
  ASSERT_TRUE(file);
  {
    const os::SystemCallsGuard guard;
    os::Calls().read = [](int, void*, size_t) -> ssize_t {
      errno = EIO;
      return -1;
    };
    EXPECT_EQ(Read(*file, 4, 2), "failed");
  }
  EXPECT_EQ(Read(*file, 4, 2), "45");
}

TEST(RandomAccessFile, bytes_never_written_are_zeros) {
  const ScratchDirectory scratch;
  scratch.Write("file", std::string(100, 'a'));
  const std::string path = scratch.Path("file");
  ASSERT_EQ(::truncate(path.c_str(), 1 << 20), 0);
  const int descriptor = ::open(path.c_str(), O_WRONLY);
  ASSERT_EQ(::pwrite(descriptor, "b", 1, 700000), 1);
  ::close(descriptor);
  auto file = os::RandomAccessFile::Open(scratch.Wide("file"));
  ASSERT_TRUE(file);
  // In steps of another size than the holes, and once more by small reads.
  for (const std::size_t step : {100000, 65536, 4000, 1 << 21}) {
    std::string all;
    for (std::string piece; !(piece = Read(*file, all.size(), step)).empty();) all += piece;
    std::string expected(1 << 20, '\0');
    expected.replace(0, 100, 100, 'a');
    expected[700000] = 'b';
    EXPECT_TRUE(all == expected) << step;
  }
}
