#include "rastrel/conversion/bitmap/queue_program.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <limits>
#include <string>

#include "tests/support/library_fixture.h"

namespace {

class QueueProgram : public rastrel::test::LibraryTest {};

TEST_F(QueueProgram, is_there_when_its_file_exists) {
  EXPECT_EQ(IsQAvailable(), 0);
  m_Library.Directory().Write("Queue/JobSpool.exe", "");
  EXPECT_EQ(IsQAvailable(), 1);
  std::filesystem::remove(m_Library.Directory().Path("Queue/JobSpool.exe"));
  EXPECT_EQ(IsQAvailable(), 0);
}

TEST_F(QueueProgram, gives_the_directory_to_a_buffer_that_holds_it_with_its_terminator) {
  const std::wstring directory = m_Library.RipDirectory();
  const int length = static_cast<int>(directory.size());
  for (const int size : {length + 1, length + 2, std::numeric_limits<int>::max()}) {
    std::wstring buffer(directory.size() + 2, L'?');
    EXPECT_EQ(GetCmdLineRipDir(buffer.data(), size), length);
    EXPECT_STREQ(buffer.c_str(), directory.c_str());
    EXPECT_EQ(buffer.back(), L'?') << "nothing is written after the terminator";
  }
}

TEST_F(QueueProgram, leaves_a_buffer_that_is_too_short_and_returns_the_size_that_it_needs) {
  const int length = static_cast<int>(m_Library.RipDirectory().size());
  for (const int size : {length, length - 1, 1, 0, -1, std::numeric_limits<int>::min()}) {
    std::wstring buffer(m_Library.RipDirectory().size() + 1, L'?');
    const std::wstring before = buffer;
    EXPECT_EQ(GetCmdLineRipDir(buffer.data(), size), length + 1) << size;
    EXPECT_EQ(buffer, before) << size;
  }
}

TEST_F(QueueProgram, returns_the_size_of_the_directory_without_a_buffer) {
  const int length = static_cast<int>(m_Library.RipDirectory().size());
  EXPECT_EQ(GetCmdLineRipDir(nullptr, 0), length + 1);
  EXPECT_EQ(GetCmdLineRipDir(nullptr, 1000), length + 1);
}

}  // namespace
