#include "interpreter/warm_message.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <random>

namespace rastrel::interpreter {
namespace {

WarmJob Job() {
  WarmJob job;
  job.identity = "1a2b";
  job.script = {"-c", "", "(x) =", "-f", "/dev/fd/0"};
  job.directory = "/tmp/place";
  job.descriptors = {0, -1, 1, 0};
  job.fileBytes = 0x123456789ABCDEF0;
  job.processorSeconds = 60;
  job.memoryBytes = 1;
  job.paths = {{"/usr", WallAccess::Execute}, {{}, WallAccess::Write, 3}};
  return job;
}

TEST(WarmMessage, of_a_job_is_read_as_it_was_written) {
  const auto job = ParseWarmJob(FormatWarmJob(Job()), 2);
  ASSERT_TRUE(job) << Describe(job.Error());
  EXPECT_EQ(job->identity, "1a2b");
  EXPECT_EQ(job->script, Job().script);
  EXPECT_EQ(job->directory, "/tmp/place");
  EXPECT_EQ(job->descriptors, (std::vector<int>{0, -1, 1, 0}));
  EXPECT_EQ(job->fileBytes, 0x123456789ABCDEF0U);
  EXPECT_EQ(job->processorSeconds, 60U);
  EXPECT_EQ(job->memoryBytes, 1U);
  ASSERT_EQ(job->paths.size(), 2U);
  EXPECT_EQ(job->paths[0].path, "/usr");
  EXPECT_EQ(job->paths[0].access, WallAccess::Execute);
  EXPECT_EQ(job->paths[0].descriptor, -1);
  EXPECT_EQ(job->paths[1].access, WallAccess::Write);
  EXPECT_EQ(job->paths[1].descriptor, 3);
}

TEST(WarmMessage, cut_at_any_byte_or_longer_is_no_job) {
  const std::string whole = FormatWarmJob(Job());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(ParseWarmJob(whole.substr(0, size), 2)) << size;
    // The same with a length that says so.
    std::string shorter = whole.substr(0, size);
    if (size < 8) continue;
    const auto length = static_cast<std::uint32_t>(size);
    std::memcpy(shorter.data() + 4, &length, sizeof length);
    EXPECT_FALSE(ParseWarmJob(shorter, 2)) << size;
  }
  EXPECT_FALSE(ParseWarmJob(whole + "x", 2));
}

TEST(WarmMessage, that_names_a_file_that_did_not_come_is_no_job) {
  EXPECT_TRUE(ParseWarmJob(FormatWarmJob(Job()), 2));
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(Job()), 1));
  WarmJob job = Job();
  job.paths[1].descriptor = 4;
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(job), 2));
}

TEST(WarmMessage, without_a_directory_or_the_three_streams_is_no_job) {
  WarmJob job = Job();
  job.directory.clear();
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(job), 2));
  job = Job();
  job.paths.clear();
  job.descriptors.resize(2);
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(job), 2));
  job.descriptors.resize(3);
  EXPECT_TRUE(ParseWarmJob(FormatWarmJob(job), 2));
}

TEST(WarmMessage, has_a_maximum_of_descriptors) {
  WarmJob job = Job();
  for (const std::size_t count : {MaximumWarmDescriptors - 1, MaximumWarmDescriptors}) {
    job.descriptors.assign(count, -1);
    EXPECT_TRUE(ParseWarmJob(FormatWarmJob(job), 0)) << count;
  }
  job.descriptors.assign(MaximumWarmDescriptors + 1, -1);
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(job), 0));
}

TEST(WarmMessage, with_a_zero_byte_in_a_text_is_no_job) {
  WarmJob job = Job();
  job.directory = std::string("/tmp\0/x", 7);
  EXPECT_FALSE(ParseWarmJob(FormatWarmJob(job), 2));
}

TEST(WarmMessage, with_any_bytes_changed_is_read_without_harm) {
  const std::string whole = FormatWarmJob(Job());
  std::mt19937 random(3);
  for (int i = 0; i < 100'000; ++i) {
    std::string changed = whole;
    for (unsigned count = random() % 4 + 1; count > 0; --count) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    if (const auto job = ParseWarmJob(changed, 2)) {
      for (const int file : job->descriptors) EXPECT_LT(file, 2);
      EXPECT_LE(job->paths.size(), whole.size());
    }
  }
}

TEST(WarmIdentityOf, options_differs_in_each_part) {
  const WarmOptions options{"/usr/bin/gs", {"gs", "-q"}, {"A=1"}};
  const std::string identity = WarmIdentity(options);
  EXPECT_EQ(WarmIdentity(options), identity);
  EXPECT_EQ(WarmName(identity).size(), 32U);
  EXPECT_EQ(WarmName(identity).find_first_not_of("0123456789abcdef"), std::string::npos);
  for (const WarmOptions& other :
       {WarmOptions{"/bin/sh", {"gs", "-q"}, {"A=1"}}, WarmOptions{"/usr/bin/gs", {"gs"}, {"A=1"}},
        WarmOptions{"/usr/bin/gs", {"gs", "-q", "A=1"}, {}},
        WarmOptions{"/usr/bin/gs", {"gs-q"}, {"A=1"}},
        WarmOptions{"/usr/bin/gs", {"gs", "-q"}, {"A=2"}}}) {
    EXPECT_NE(WarmIdentity(other), identity);
    EXPECT_NE(WarmName(WarmIdentity(other)), WarmName(identity));
  }
}

struct Ends {
  Ends() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    one.Reset(ends[0]);
    other.Reset(ends[1]);
  }
  os::FileDescriptor one;
  os::FileDescriptor other;
};

TEST(WarmSocket, hands_files_over_beside_a_message) {
  const Ends ends;
  ASSERT_TRUE(SendWarm(ends.one.Get(), "text", std::array{0, 1}));
  const auto received = ReceiveWarm(ends.other.Get());
  ASSERT_TRUE(received);
  EXPECT_EQ(received->bytes, "text");
  EXPECT_EQ(received->files.size(), 2U);
  EXPECT_FALSE(received->isCut);
  EXPECT_FALSE(WarmReplyOf(*received));
}

TEST(WarmSocket, that_is_closed_gives_an_empty_message) {
  Ends ends;
  ends.one.Reset();
  const auto received = ReceiveWarm(ends.other.Get());
  ASSERT_TRUE(received);
  EXPECT_TRUE(received->bytes.empty());
  EXPECT_FALSE(SendWarm(ends.other.Get(), "text"));
}

TEST(WarmSocket, takes_messages_up_to_its_maximum) {
  const Ends ends;
  const std::string text(MaximumWarmMessage, 'x');
  EXPECT_FALSE(SendWarm(ends.one.Get(), text + "x"));
  ASSERT_TRUE(SendWarm(ends.one.Get(), text));
  auto received = ReceiveWarm(ends.other.Get());
  ASSERT_TRUE(received);
  EXPECT_EQ(received->bytes.size(), MaximumWarmMessage);
  EXPECT_FALSE(received->isCut);
  const std::string longer = text + "x";
  ASSERT_EQ(send(ends.one.Get(), longer.data(), longer.size(), 0),
            static_cast<ssize_t>(longer.size()));
  received = ReceiveWarm(ends.other.Get());
  ASSERT_TRUE(received);
  EXPECT_TRUE(received->isCut);
}

TEST(WarmSocket, carries_replies) {
  const Ends ends;
  ASSERT_TRUE(SendWarm(ends.one.Get(), WarmReply{WarmNews::Killed, 9}));
  const auto received = ReceiveWarm(ends.other.Get());
  ASSERT_TRUE(received);
  const auto reply = WarmReplyOf(*received);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->news, WarmNews::Killed);
  EXPECT_EQ(reply->value, 9);
}

TEST(WarmSocket, that_is_none_is_a_failure) {
  EXPECT_FALSE(SendWarm(-1, "text"));
  EXPECT_FALSE(ReceiveWarm(-1));
}

}  // namespace
}  // namespace rastrel::interpreter
