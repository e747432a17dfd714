#include "rastrel/platform/mfc/file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/scratch_directory.h"

using rastrel::test::OpenDescriptors;
using rastrel::test::ScratchDirectory;

TEST(CFile, written_bytes_are_read_back) {
  const ScratchDirectory scratch;
  const std::size_t before = OpenDescriptors();
  {
    CFile file;
    ASSERT_TRUE(file.Open(scratch.Wide("f").c_str(), CFile::modeCreate | CFile::modeWrite));
    EXPECT_TRUE(file.Write("abc", 3));
    file.Close();
    file.Close();
    ASSERT_TRUE(file.Open(scratch.Wide("F").c_str(), CFile::modeRead));
    char bytes[5] = {};
    EXPECT_EQ(file.Read(bytes, 2), 2U);
    EXPECT_EQ(file.Read(bytes, 5), 1U);
    EXPECT_EQ(bytes[0], 'c');
    EXPECT_EQ(file.Read(bytes, 5), 0U);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(CFile, creating_truncates_and_writing_alone_does_not) {
  const ScratchDirectory scratch;
  scratch.Write("f", "abcdef");
  CFile file;
  ASSERT_TRUE(file.Open(scratch.Wide("f").c_str(), CFile::modeWrite));
  EXPECT_TRUE(file.Write("X", 1));
  EXPECT_EQ(scratch.Read("f"), "Xbcdef");
  ASSERT_TRUE(file.Open(scratch.Wide("f").c_str(), CFile::modeCreate | CFile::modeWrite));
  EXPECT_EQ(scratch.Read("f"), "");
}

TEST(CFile, one_that_can_not_be_opened_says_why_and_takes_nothing) {
  const ScratchDirectory scratch;
  CFile file;
  EXPECT_FALSE(file.Open(scratch.Wide("none").c_str(), CFile::modeRead));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.Open(scratch.Wide("no/f").c_str(), CFile::modeCreate | CFile::modeWrite));
  EXPECT_FALSE(file.Open(scratch.Wide("none").c_str(), CFile::modeWrite));
  char byte = 0;
  EXPECT_EQ(file.Read(&byte, 1), 0U);
  EXPECT_FALSE(file.Write(&byte, 1));
}

TEST(CFile, a_full_device_and_a_failing_read_are_reported) {
  CFile file;
  ASSERT_TRUE(file.Open(L"/dev/full", CFile::modeWrite));
  EXPECT_FALSE(file.Write("x", 1));
  ASSERT_TRUE(file.Open(L"/proc/self/status", CFile::modeRead));
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().read = [](int, void*, size_t) -> ssize_t {
    errno = EIO;
    return -1;
  };
  char byte = 0;
  EXPECT_EQ(file.Read(&byte, 1), 0U);
}

TEST(CMemFile, reading_follows_the_written_bytes_and_starts_again_after_close) {
  CMemFile file({1, 2, 3});
  unsigned char bytes[8] = {};
  EXPECT_EQ(file.Read(bytes, 2), 2U);
  EXPECT_TRUE(file.Write("\x04", 1));
  EXPECT_EQ(file.Read(bytes, 8), 2U);
  EXPECT_EQ(bytes[1], 4);
  EXPECT_EQ(file.Read(bytes, 8), 0U);
  file.Close();
  EXPECT_EQ(file.Read(bytes, 8), 4U);
  EXPECT_EQ(file.Bytes(), (std::vector<std::uint8_t>{1, 2, 3, 4}));
}

TEST(CMemFile, has_no_path) { EXPECT_FALSE(CMemFile().Open(L"/dev/null", CFile::modeRead)); }
