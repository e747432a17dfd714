// The life of a warm interpreter: who starts it, who may talk to it, and when it ends.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "interpreter/interpreter.h"
#include "tests/interpreter/warm/warm_fixture.h"
#include "tests/support/wait_until.h"

namespace rastrel::interpreter::testing {
namespace {

namespace fs = std::filesystem;

TestJob JobAt(int resolution) {
  return {.device = "bbox",
          .content = "%!PS\n0 0 9 9 rectfill showpage\n",
          .options = {"-r" + std::to_string(resolution)}};
}

// ---- When there is one ----

TEST(WarmWish, the_second_within_a_minute_starts_one_and_the_next_job_is_warm) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  EXPECT_FALSE(WarmFixture::Run(job).warm);
  EXPECT_FALSE(fixture.Place().IsHeld(WarmFixture::Name(job)));
  EXPECT_FALSE(WarmFixture::Run(job).warm);
  ASSERT_TRUE(test::WaitUntil([&] { return fixture.Keeper(job) != 0; }));
  EXPECT_TRUE(WarmFixture::Run(job).warm);
}

TEST(WarmWish, the_second_after_more_than_a_minute_starts_none) {
  REQUIRE_WARM();
  const WarmFixture fixture;
  const WarmPlace place = fixture.Place();
  EXPECT_FALSE(place.Wish("name"));
  const std::string note = fixture.Directory() + "/name.wish";
  const auto age = [&](int seconds) {
    fs::last_write_time(note, fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
  };
  age(90);
  EXPECT_FALSE(place.Wish("name"));
  age(30);
  EXPECT_TRUE(place.Wish("name"));
  EXPECT_FALSE(place.Wish("name"));
  EXPECT_TRUE(place.Wish("name"));
}

TEST(WarmWish, is_none_where_it_is_switched_off) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  EXPECT_TRUE(WarmFixture::Run(job).warm);
  EXPECT_FALSE(WarmFixture::RunByExec(job).warm);
  const test::EnvironmentGuard on("RASTREL_WARM", "1");
  EXPECT_TRUE(WarmFixture::Run(job).warm);
}

TEST(WarmWish, without_the_program_or_its_directory_a_job_is_done_by_exec) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  EXPECT_EQ(StateOfWarm(), WarmState::Ready);
  fs::remove(fixture.Directory() + "/rastrel-warm");
  EXPECT_EQ(StateOfWarm(), WarmState::NoProgram);
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(WarmFixture::Run(job).warm);
  fs::remove_all(fixture.Directory());
  EXPECT_EQ(StateOfWarm(), WarmState::Closed);
  const TestEnd end = WarmFixture::Run(job);
  EXPECT_FALSE(end.warm);
  EXPECT_EQ(end.end.status, 0);
  EXPECT_FALSE(fs::exists(fixture.Directory()));
}

TEST(WarmWish, a_program_that_others_may_change_is_not_started) {
  REQUIRE_WARM();
  const WarmFixture fixture;
  fs::permissions(fixture.Directory() + "/rastrel-warm", fs::perms::others_write,
                  fs::perm_options::add);
  EXPECT_FALSE(LaunchWarm(fixture.Directory(), WarmFixture::Options(JobAt(72))));
}

TEST(WarmWish, of_other_devices_programs_and_options_there_is_none) {
  REQUIRE_WARM();
  ProcessRequest request;
  request.executable = "/usr/bin/gs";
  request.environment = {"TMPDIR=/dev/fd/3"};
  request.arguments = {"gs", "-q", "-sDEVICE=bbox", "-f", "/dev/fd/0"};
  const auto options = WarmOptionsOf(request);
  ASSERT_TRUE(options);
  EXPECT_EQ(options->arguments, (std::vector<std::string>{"gs", "-q", "-sDEVICE=bbox"}));
  const auto with = [&](auto change) {
    ProcessRequest changed = request;
    change(changed);
    return WarmOptionsOf(changed).has_value();
  };
  EXPECT_FALSE(with([](ProcessRequest& r) { r.arguments[2] = "-sDEVICE=pdfwrite"; }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.arguments[2] = "-sDEVICE=bboxes"; }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.arguments.erase(r.arguments.begin() + 2); }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.arguments.resize(3); }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.arguments[1] = "-dWRITESYSTEMDICT"; }));
  EXPECT_TRUE(with([](ProcessRequest& r) { r.arguments.push_back("-dWRITESYSTEMDICT"); }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.executable = "/bin/sh"; }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.executable = "/none"; }));
  EXPECT_FALSE(with([](ProcessRequest& r) { r.environment = {"TMPDIR=/tmp/x"}; }));
}

// ---- Who may talk to it ----

TEST(WarmPeer, another_user_is_refused_and_the_own_is_not) {
  EXPECT_TRUE(MayTalk(1000, 1000));
  EXPECT_FALSE(MayTalk(1000, 1001));
  EXPECT_FALSE(MayTalk(1000, 0));
  EXPECT_FALSE(MayTalk(0, 1000));
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
  EXPECT_TRUE(IsOwnPeer(ends[0]));
  close(ends[0]);
  close(ends[1]);
  EXPECT_FALSE(IsOwnPeer(ends[0]));
  const os::FileDescriptor file(open("/dev/null", O_RDWR | O_CLOEXEC));
  EXPECT_FALSE(IsOwnPeer(file.Get()));
}

TEST(WarmPlaceOf, a_directory_that_others_may_enter_is_not_used) {
  const WarmFixture fixture;
  EXPECT_TRUE(WarmPlace::Open(fixture.Directory()));
  for (const fs::perms open : {fs::perms::group_read, fs::perms::group_exec, fs::perms::others_exec,
                               fs::perms::others_write}) {
    fs::permissions(fixture.Directory(), fs::perms::owner_all | open);
    EXPECT_FALSE(WarmPlace::Open(fixture.Directory()));
  }
  fs::permissions(fixture.Directory(), fs::perms::owner_all);
  fs::create_directory_symlink(fixture.Directory(), fixture.Directory() + "/link");
  EXPECT_FALSE(WarmPlace::Open(fixture.Directory() + "/link"));
  EXPECT_FALSE(WarmPlace::Open(fixture.Directory() + "/none"));
  EXPECT_FALSE(WarmPlace::Open(fixture.Directory() + "/rastrel-warm"));
}

TEST(WarmPlaceOf, a_path_longer_than_a_sockets_name_serves) {
  REQUIRE_WARM();
  const test::ScratchDirectory scratch;
  const std::string deep = scratch.Path(std::string(150, 'd'));
  fs::create_directory(deep);
  fs::permissions(deep, fs::perms::owner_all);
  const auto place = WarmPlace::Open(deep);
  ASSERT_TRUE(place);
  const auto listening = place->Listen("name");
  ASSERT_TRUE(listening) << Describe(listening.Error());
  const auto connection = place->Connect("name");
  EXPECT_TRUE(connection) << Describe(connection.Error());
}

// ---- Requests ----

// A connection to the fixture's warm interpreter.
os::FileDescriptor Connected(const WarmFixture& fixture, const TestJob& job) {
  auto connection = fixture.Place().Connect(WarmFixture::Name(job));
  if (!connection) throw std::runtime_error(Describe(connection.Error()));
  return std::move(*connection);
}

WarmJob RequestOf(const TestJob& job) {
  WarmJob request;
  request.identity = WarmIdentity(WarmFixture::Options(job));
  request.script = {"-c", "(no) ="};
  request.directory = "/";
  request.descriptors = {-1, -1, -1, 0};
  request.fileBytes = 1 << 20;
  request.processorSeconds = 10;
  request.memoryBytes = std::uint64_t{2} << 30;
  request.paths = {{"/usr/share", WallAccess::Read}, {{}, WallAccess::Write, 3}};
  return request;
}

WarmReply Answer(const WarmFixture& fixture, const TestJob& job, std::string_view message,
                 const std::vector<int>& files) {
  const os::FileDescriptor connection = Connected(fixture, job);
  EXPECT_TRUE(SendWarm(connection.Get(), message, files));
  const auto received = ReceiveWarm(connection.Get());
  EXPECT_TRUE(received);
  const auto reply = received ? WarmReplyOf(*received) : Expected<WarmReply>(FailureOf("none"));
  return reply ? *reply : WarmReply{};
}

TEST(WarmRequest, cut_at_any_byte_is_refused) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  const pid_t keeper = fixture.Keeper(job);
  const std::string whole = FormatWarmJob(RequestOf(job));
  const std::vector<int> files{STDERR_FILENO};
  for (std::size_t size = 1; size < whole.size(); size += size < 16 ? 1 : 37) {
    const WarmReply reply = Answer(fixture, job, whole.substr(0, size), files);
    EXPECT_EQ(reply.news, WarmNews::Refused) << size;
    EXPECT_EQ(reply.value, EBADMSG) << size;
  }
  EXPECT_EQ(Answer(fixture, job, whole, files).news, WarmNews::Ready);
  EXPECT_EQ(fixture.Keeper(job), keeper);
}

TEST(WarmRequest, for_other_options_with_garbage_or_too_many_files_is_refused) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  WarmJob other = RequestOf(job);
  other.identity[0] = other.identity[0] == '0' ? '1' : '0';
  EXPECT_EQ(Answer(fixture, job, FormatWarmJob(other), {2}).value, ENOENT);
  EXPECT_EQ(Answer(fixture, job, std::string(1000, '\xA5'), {}).value, EBADMSG);
  EXPECT_EQ(Answer(fixture, job, FormatWarmJob(RequestOf(job)), {}).value, EBADMSG);
  WarmJob lost = RequestOf(job);
  lost.directory = "/no/such/directory";
  EXPECT_EQ(Answer(fixture, job, FormatWarmJob(lost), {2}).value, ENOENT);
  // One more file than a request may have, past the function that would not send it.
  const os::FileDescriptor connection = Connected(fixture, job);
  std::vector<int> files(MaximumWarmDescriptors + 1, STDERR_FILENO);
  std::string message = FormatWarmJob(RequestOf(job));
  iovec part{message.data(), message.size()};
  std::vector<char> control(CMSG_SPACE(files.size() * sizeof(int)));
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  head.msg_control = control.data();
  head.msg_controllen = control.size();
  cmsghdr* const first = CMSG_FIRSTHDR(&head);
  first->cmsg_level = SOL_SOCKET;
  first->cmsg_type = SCM_RIGHTS;
  first->cmsg_len = CMSG_LEN(files.size() * sizeof(int));
  std::copy(files.begin(), files.end(), reinterpret_cast<int*>(CMSG_DATA(first)));
  ASSERT_GT(sendmsg(connection.Get(), &head, 0), 0);
  const auto received = ReceiveWarm(connection.Get());
  ASSERT_TRUE(received);
  const auto reply = WarmReplyOf(*received);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->news, WarmNews::Refused);
  EXPECT_EQ(reply->value, EMSGSIZE);
  EXPECT_TRUE(WarmFixture::Run(job).warm);
}

// Nothing of a job is done before the leave to begin, and without it the fork goes.
TEST(WarmRequest, without_the_leave_to_begin_does_nothing) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  const test::ScratchDirectory scratch;
  WarmJob request = RequestOf(job);
  const os::FileDescriptor file(
      open(scratch.Path("printed").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  request.descriptors = {-1, 0, 0, 0};
  os::FileDescriptor process;
  {
    const os::FileDescriptor connection = Connected(fixture, job);
    ASSERT_TRUE(SendWarm(connection.Get(), FormatWarmJob(request), std::array{file.Get()}));
    auto received = ReceiveWarm(connection.Get());
    ASSERT_TRUE(received);
    ASSERT_EQ(received->files.size(), 2U);
    process = std::move(received->files.front());
  }
  ASSERT_TRUE(test::WaitUntil([&] {
    pollfd entry{process.Get(), POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
  }));
  EXPECT_EQ(fs::file_size(scratch.Path("printed")), 0U);
}

// The kernel may signal a message after it was read: as the one that gives leave to begin, so a
// later one must not end the job.
TEST(WarmRequest, followed_by_another_message_is_done_to_its_end) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  WarmJob request = RequestOf(job);
  request.script = {"-c", "0 1 3000000 { pop } for quit"};
  const os::FileDescriptor connection = Connected(fixture, job);
  ASSERT_TRUE(SendWarm(connection.Get(), FormatWarmJob(request), std::array{STDERR_FILENO}));
  const auto ready = ReceiveWarm(connection.Get());
  ASSERT_TRUE(ready && ready->files.size() == 2);
  ASSERT_TRUE(SendWarm(connection.Get(), WarmReply{WarmNews::Ready, 0}));
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_TRUE(SendWarm(connection.Get(), WarmReply{WarmNews::Ready, 0}));
  const auto ended = ReceiveWarm(connection.Get());
  ASSERT_TRUE(ended);
  const auto reply = WarmReplyOf(*ended);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->news, WarmNews::Exited);
  EXPECT_EQ(reply->value, 0);
}

// ---- Its end ----

TEST(WarmLife, ends_without_a_job_for_its_time_of_rest) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job, 1);
  const std::string name = WarmFixture::Name(job);
  EXPECT_TRUE(test::WaitUntil([&] { return !fixture.Place().IsHeld(name); }));
  EXPECT_FALSE(fs::exists(fixture.Directory() + "/" + name));
  EXPECT_FALSE(fs::exists(fixture.Directory() + "/" + name + ".lock"));
  EXPECT_FALSE(WarmFixture::Run(job).warm);
}

TEST(WarmLife, ends_after_its_number_of_jobs) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  ASSERT_TRUE(LaunchWarm(fixture.Directory(), WarmFixture::Options(job), 600, 3));
  const std::string name = WarmFixture::Name(job);
  ASSERT_TRUE(test::WaitUntil([&] { return fs::exists(fixture.Directory() + "/" + name); }));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(WarmFixture::Run(job).warm) << i;
  EXPECT_TRUE(test::WaitUntil([&] { return !fixture.Place().IsHeld(name); }));
  EXPECT_FALSE(WarmFixture::Run(job).warm);
}

TEST(WarmLife, ends_when_the_data_root_is_removed) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  const pid_t keeper = fixture.Keeper(job);
  fs::remove_all(fixture.Directory());
  EXPECT_TRUE(test::WaitUntil([&] { return !Lives(keeper); }));
}

TEST(WarmLife, of_five_the_one_that_had_no_job_for_the_longest_time_ends) {
  REQUIRE_WARM();
  WarmFixture fixture;
  for (int i = 1; i <= 4; ++i) fixture.Warm(JobAt(10 * i));
  EXPECT_EQ(fixture.Place().Living().size(), 4U);
  for (const int i : {1, 3, 4}) EXPECT_TRUE(WarmFixture::Run(JobAt(10 * i)).warm);
  fixture.Warm(JobAt(50));
  EXPECT_TRUE(test::WaitUntil([&] { return fixture.Place().Living().size() == 4; }));
  EXPECT_FALSE(fixture.Place().IsHeld(WarmFixture::Name(JobAt(20))));
  for (const int i : {1, 3, 4, 5}) EXPECT_TRUE(WarmFixture::Run(JobAt(10 * i)).warm) << i;
}

TEST(WarmLife, of_two_for_the_same_options_one_ends_at_once) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  const pid_t keeper = fixture.Keeper(job);
  fixture.Warm(job);
  EXPECT_EQ(fixture.Keeper(job), keeper);
  EXPECT_EQ(fixture.Place().Living().size(), 1U);
}

TEST(WarmLife, a_socket_without_a_process_is_replaced) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  fixture.Kill(job);
  EXPECT_TRUE(fs::exists(fixture.Directory() + "/" + WarmFixture::Name(job)));
  EXPECT_FALSE(WarmFixture::Run(job).warm);
  fixture.Warm(job);
  EXPECT_TRUE(WarmFixture::Run(job).warm);
}

TEST(WarmLife, is_one_without_our_streams_session_directory_and_descriptors) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobAt(72);
  fixture.Warm(job);
  const pid_t keeper = fixture.Keeper(job);
  EXPECT_NE(getsid(keeper), getsid(0));
  const std::string self = "/proc/" + std::to_string(keeper);
  EXPECT_EQ(fs::read_symlink(self + "/cwd"), "/");
  for (const auto& entry : fs::directory_iterator(self + "/fd")) {
    const std::string target = fs::read_symlink(entry.path());
    const bool own = target == "/dev/null" || target.starts_with(fixture.Directory()) ||
                     target.starts_with("socket:") || target.starts_with("anon_inode:[signalfd]");
    EXPECT_TRUE(own) << target;
  }
}

}  // namespace
}  // namespace rastrel::interpreter::testing
