#include "interpreter/job_feed.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

#include "interpreter/job_file.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

constexpr const char* Job = "%!PS\nshowpage\n";

class JobFeedTest : public testing::Test {
 protected:
  JobFeedTest() {
    m_Scratch.Write("job.ps", Job);
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    m_Reading.Reset(ends[0]);
    m_Writing.Reset(ends[1]);
  }

  [[nodiscard]] os::FileDescriptor Open(int flags) const {
    return os::FileDescriptor(open(m_Scratch.Path("job.ps").c_str(), flags | O_CLOEXEC));
  }

  test::ScratchDirectory m_Scratch;
  os::FileDescriptor m_Reading;
  os::FileDescriptor m_Writing;
};

TEST_F(JobFeedTest, sends_its_part_and_closes_the_pipe) {
  const os::FileDescriptor file = Open(O_RDONLY);
  JobFeed feed(file.Get(), 5, 4, std::move(m_Writing));
  ASSERT_TRUE(feed.Send());
  EXPECT_EQ(feed.Descriptor(), -1);
  std::array<char, 64> got{};
  EXPECT_EQ(read(m_Reading.Get(), got.data(), got.size()), 4);
  EXPECT_STREQ(got.data(), "show");
}

TEST_F(JobFeedTest, ends_without_a_failure_when_nobody_reads_any_more) {
  const os::FileDescriptor file = Open(O_RDONLY);
  JobFeed feed(file.Get(), 0, 15, std::move(m_Writing));
  m_Reading.Reset();
  EXPECT_TRUE(feed.Send());
  EXPECT_EQ(feed.Descriptor(), -1);
}

// A pipe's end that can't be written to fails otherwise than one that nobody reads. Half a job must
// not count as a whole one.
TEST_F(JobFeedTest, fails_when_the_pipe_does) {
  const os::FileDescriptor file = Open(O_RDONLY);
  JobFeed feed(file.Get(), 0, 15, std::move(m_Reading));
  const auto sent = feed.Send();
  ASSERT_FALSE(sent);
  EXPECT_EQ(Describe(sent.Error()),
            "The job can't be handed to the interpreter: Bad file descriptor");
}

TEST_F(JobFeedTest, fails_when_the_file_can_not_be_read) {
  const os::FileDescriptor file = Open(O_WRONLY);
  JobFeed feed(file.Get(), 0, 15, std::move(m_Writing));
  const auto sent = feed.Send();
  ASSERT_FALSE(sent);
  EXPECT_EQ(Describe(sent.Error()), "The job can't be read: Bad file descriptor");
}

TEST_F(JobFeedTest, reads_a_part_or_says_why_not) {
  const os::FileDescriptor file = Open(O_RDONLY);
  EXPECT_EQ(*ReadPart(file.Get(), 5, 100), "showpage\n");
  EXPECT_EQ(*ReadPart(file.Get(), 100, 4), "");
  const os::FileDescriptor unreadable = Open(O_WRONLY);
  const auto part = ReadPart(unreadable.Get(), 0, 4);
  ASSERT_FALSE(part);
  EXPECT_EQ(part.Error().error, EBADF);
}

}  // namespace
}  // namespace rastrel::interpreter
