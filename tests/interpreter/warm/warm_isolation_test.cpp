// Jobs that mean harm, or come to one, in a warm interpreter: the next job is as from a fresh
// start, the walls hold, and nothing stays.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <regex>
#include <thread>

#include "tests/interpreter/warm/warm_fixture.h"
#include "tests/support/wait_until.h"

namespace rastrel::interpreter::testing {
namespace {

namespace fs = std::filesystem;

TestJob JobOf(std::string content) { return {.device = "ppmraw", .content = std::move(content)}; }

const std::string Endless = "%!PS\n(begun) = flush { } loop\n";
const std::string Page =
    "%!PS\n<< /PageSize [60 40] >> setpagedevice /Helvetica findfont 20 scalefont setfont\n"
    "5 10 moveto (Page) show 1 0 0 setrgbcolor 0 0 9 9 rectfill showpage\n"
    // Whatever a job before it may have left shows here.
    "(userdict) = userdict length = (globaldict) = globaldict length = (systemdict) = systemdict "
    "length = FontDirectory { pop = } forall (operands) = count = (dictionaries) = countdictstack "
    "= (random) = rrand = currentpagedevice /PageCount get = currentdevice getdeviceprops "
    ".dicttomark /PageCount get =\n";

// The interpreter says at an error how much memory is in use: some hundred bytes more after a warm
// start.
TestEnd WithoutMemory(TestEnd end) {
  end.messages = std::regex_replace(end.messages, std::regex("VM status: .*"), "");
  return end;
}

// Whether a file that a running job prints into holds that text.
bool Prints(const RunningJob& job, const std::string& text) {
  std::ifstream file(job.streams.Path("messages"));
  std::string line;
  while (std::getline(file, line)) {
    if (line == text) return true;
  }
  return false;
}

const std::vector<std::string>& Harms() {
  static const std::vector<std::string> harms{
      "userdict /showpage {} put systemdict /foo 1 {put} stopped",
      "true setglobal globaldict /left 1 put /LeftFont 10 dict def false setglobal",
      "serverdict begin 0 exitserver /left 1 def userdict /moveto {} put",
      "<< /PageSize [9 9] /HWResolution [300 300] /Install {1 setgray} >> setpagedevice showpage",
      "{ 1 1 100000 { array } for } stopped",
      "[ { 1000000 string } loop ] ",
      "/Helvetica findfont dup length dict copy /FontName /Other put "
      "/Helvetica 3 dict dup /FontType 3 put {definefont} stopped",
      "1 1 1000 { pop (x) } for",
      "{ 0 srand 1 2 moveto currentpoint stop } stopped",
      "(%stdin) (r) file closefile",
      "(a) (w) file dup (b) writestring closefile (c) (w) file",
      "<< /OutputDevice /pgmraw >> setpagedevice showpage",
      "/x {x 1} def x",
      "quit",
      "stop",
      "<< /MaxFontCache 0 >> setsystemparams",
      "<< /VMReclaim -2 >> setuserparams 2 vmreclaim",
      "save restore grestoreall initgraphics erasepage",
      "currentfile 100000 string readstring",
      "1183615869 internaldict begin superexec",
  };
  return harms;
}

TEST(WarmIsolation, the_job_after_each_harm_is_as_from_a_fresh_start) {
  REQUIRE_WARM();
  WarmFixture fixture;
  fixture.Warm(JobOf(Page));
  const TestEnd fresh = WarmFixture::RunByExec(JobOf(Page));
  for (const std::string& harm : Harms()) {
    SCOPED_TRACE(harm);
    const TestJob harmful = JobOf("%!PS\n" + harm + "\n");
    const TestEnd exec = WithoutMemory(WarmFixture::RunByExec(harmful));
    const TestEnd harmed = WithoutMemory(WarmFixture::Run(harmful));
    EXPECT_TRUE(harmed.warm);
    EXPECT_TRUE(harmed.IsAs(exec)) << harmed << "----\n" << exec;
    const TestEnd after = WarmFixture::Run(JobOf(Page));
    EXPECT_TRUE(after.warm);
    EXPECT_TRUE(after.IsAs(fresh)) << after << "----\n" << fresh;
  }
}

// RASTREL_WARM_JOBS makes it longer: 1,000 is the number to run before a release.
TEST(WarmIsolation, jobs_in_random_order_are_each_as_from_a_fresh_start) {
  REQUIRE_WARM();
  WarmFixture fixture;
  std::vector<TestJob> jobs{JobOf(Page)};
  for (const std::string& harm : Harms()) jobs.push_back(JobOf("%!PS\n" + harm + "\n"));
  jobs.push_back(JobOf("%!PS\n(before) = (left) == 1 0 div\n"));
  fixture.Warm(jobs.front());
  std::vector<TestEnd> fresh;
  for (const TestJob& job : jobs) fresh.push_back(WithoutMemory(WarmFixture::RunByExec(job)));
  const char* const wanted = std::getenv("RASTREL_WARM_JOBS");
  const int count = wanted != nullptr ? std::atoi(wanted) : 150;
  std::mt19937 random(16);
  for (int i = 0; i < count; ++i) {
    const std::size_t at = random() % jobs.size();
    const TestEnd end = WithoutMemory(WarmFixture::Run(jobs[at]));
    EXPECT_TRUE(end.warm);
    EXPECT_TRUE(end.IsAs(fresh[at])) << i << ": " << jobs[at].content << end;
  }
}

TEST(WarmIsolation, a_job_that_crashes_is_ended_by_its_signal_and_the_next_is_not) {
  REQUIRE_WARM();
  WarmFixture fixture;
  fixture.Warm(JobOf(Page));
  const auto running = WarmFixture::Start(JobOf(Endless));
  ASSERT_TRUE(running->process->IsWarm());
  ASSERT_TRUE(test::WaitUntil([&] { return Prints(*running, "begun"); }));
  kill(running->process->Number(), SIGSEGV);
  const auto end = running->process->Wait();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, SIGSEGV);
  EXPECT_TRUE(WarmFixture::Run(JobOf(Page)).warm);
}

TEST(WarmIsolation, a_job_that_hangs_is_killed_with_its_group) {
  REQUIRE_WARM();
  WarmFixture fixture;
  fixture.Warm(JobOf(Page));
  const auto running = WarmFixture::Start(JobOf(Endless));
  ASSERT_TRUE(running->process->IsWarm());
  const pid_t process = running->process->Number();
  EXPECT_EQ(getpgid(process), process);
  EXPECT_EQ(getsid(process), process);
  ASSERT_TRUE(test::WaitUntil([&] { return Prints(*running, "begun"); }));
  running->process->Kill();
  const auto end = running->process->Wait();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, SIGKILL);
  // Nothing of it is left in the waiting process either.
  EXPECT_TRUE(test::WaitUntil([&] { return kill(process, 0) != 0; }));
}

// ---- Limits ----

TEST(WarmLimits, a_job_over_its_processor_time_is_ended) {
  REQUIRE_WARM();
  WarmFixture fixture;
  TestJob job = JobOf(Endless);
  job.limits.processorSeconds = 1;
  fixture.Warm(job);
  const TestEnd end = WarmFixture::Run(job);
  EXPECT_TRUE(end.warm);
  EXPECT_FALSE(end.end.byItself);
  EXPECT_TRUE(end.end.status == SIGKILL || end.end.status == SIGXCPU) << end.end.status;
}

TEST(WarmLimits, a_file_over_its_size_ends_the_job) {
  REQUIRE_WARM();
  WarmFixture fixture;
  TestJob job =
      JobOf("%!PS\n/f null (w) .tempfile exch pop def { f 100000 string writestring } loop\n");
  job.limits.fileBytes = 1 << 20;
  fixture.Warm(job);
  const TestEnd end = WarmFixture::Run(job);
  EXPECT_TRUE(end.warm);
  EXPECT_FALSE(end.end.byItself);
  EXPECT_EQ(end.end.status, SIGXFSZ);
}

TEST(WarmLimits, memory_is_refused_beyond_the_interpreters_own_limit) {
  REQUIRE_WARM();
  WarmFixture fixture;
  TestJob job =
      JobOf("%!PS\n/a 10000 array def 0 1 9999 { a exch 60000 string put } for (whole) =\n");
  job.limits.memoryKibibytes = 64 << 10;
  fixture.Warm(job);
  const TestEnd warm = WarmFixture::Run(job);
  EXPECT_TRUE(warm.warm);
  EXPECT_EQ(warm.end.status, 1);
  EXPECT_NE(warm.messages.find("VMerror"), std::string::npos) << warm.messages;
  EXPECT_EQ(warm.messages.find("whole"), std::string::npos);
}

// ---- Walls ----

TEST(WarmWalls, a_job_reaches_no_file_program_or_other_process) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const test::ScratchDirectory outside;
  outside.Write("secret", "(SECRET) =");
  const std::string secret = "(" + outside.Path("secret") + ")";
  const std::string made = "(" + outside.Path("made") + ")";
  const std::vector<std::string> attempts{
      secret + " (r) file",
      secret + " run",
      made + " (w) file",
      secret + " deletefile",
      secret + " " + made + " renamefile",
      "(%pipe%touch " + outside.Path("made") + ") (w) file",
      "(/etc/hostname) (r) file",
      "(/proc/self/environ) (r) file",
      "(/proc/self/mem) (w) file",
      "(../../../../../../../etc/hostname) (r) file",
      "<< /OutputFile " + made + " >> setpagedevice showpage",
      "<< /PermitFileReading [(*)] >> setuserparams " + secret + " (r) file",
      "/SAFER false def " + secret + " (r) file",
      "(/dev/fd/100) (r) file",
      "(/dev/fd/101) (r) file",
      "(/dev/fd/4) (r) file"};
  std::string content =
      "%!PS\n/n 0 def /try { /n n 1 add store mark exch stopped { (refused ) } { (DONE ) } ifelse "
      "print n = flush cleartomark } bind def\n";
  for (const std::string& attempt : attempts) content += "save { " + attempt + " } try pop\n";
  fixture.Warm(JobOf(content));
  const TestEnd end = WarmFixture::Run(JobOf(content));
  EXPECT_TRUE(end.warm);
  for (std::size_t i = 1; i <= attempts.size(); ++i) {
    EXPECT_NE(end.messages.find("refused " + std::to_string(i) + "\n"), std::string::npos)
        << attempts[i - 1];
  }
  EXPECT_EQ(end.messages.find("DONE"), std::string::npos) << end.messages;
  EXPECT_EQ(end.messages.find("SECRET"), std::string::npos);
  EXPECT_FALSE(fs::exists(outside.Path("made")));
  EXPECT_TRUE(fs::exists(outside.Path("secret")));
}

// Of a process that runs a job: a line of /proc/ID/status.
std::string StatusOf(pid_t process, const std::string& key) {
  std::ifstream file("/proc/" + std::to_string(process) + "/status");
  std::string line;
  while (std::getline(file, line)) {
    if (line.starts_with(key + ":"))
      return line.substr(line.find_first_not_of(" \t", key.size() + 1));
  }
  return "(none)";
}

TEST(WarmWalls, stand_around_the_job_and_not_around_the_waiting_process) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobOf(Endless);
  fixture.Warm(job);
  const auto running = WarmFixture::Start(job);
  ASSERT_TRUE(running->process->IsWarm());
  ASSERT_TRUE(test::WaitUntil([&] { return Prints(*running, "begun"); }));
  const pid_t process = running->process->Number();
  EXPECT_EQ(StatusOf(process, "NoNewPrivs"), "1");
  if (WallsOfThisMachine().calls) {
    EXPECT_EQ(StatusOf(process, "Seccomp"), "2");
  }
  EXPECT_EQ(StatusOf(fixture.Keeper(job), "Seccomp"), StatusOf(getpid(), "Seccomp"));
  std::vector<std::string> open;
  for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
    open.push_back(entry.path().filename());
  }
  std::ranges::sort(open);
  // The four of the job, the connection, the pipe of whoever asked, and the job's file as the
  // interpreter has it open.
  EXPECT_EQ(open.size(), 7U);
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(process) + "/cwd"),
            fs::path(running->place.Directory()));
}

// ---- Ends ----

// A process that has started an endless job, and the parts of it.
struct Asker {
  Asker() {
    int ends[2];
    if (pipe(ends) != 0) return;
    process = fork();
    if (process == 0) {
      const auto running = WarmFixture::Start(JobOf(Endless));
      const pid_t warm = running->process->IsWarm() ? running->process->Number() : 0;
      const std::string line = std::to_string(warm) + " " + running->place.Directory() + "\n";
      if (write(ends[1], line.data(), line.size()) < 0) _exit(1);
      while (true) pause();
    }
    close(ends[1]);
    std::string line;
    for (char byte = 0; read(ends[0], &byte, 1) == 1 && byte != '\n';) line += byte;
    close(ends[0]);
    job = std::atoi(line.c_str());
    directory = line.substr(line.find(' ') + 1);
  }
  ~Asker() { Kill(); }
  void Kill() {
    if (process <= 0) return;
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    process = 0;
  }
  // Its only child, since the job is not one.
  [[nodiscard]] pid_t Guardian() const {
    for (const auto& entry : fs::directory_iterator("/proc")) {
      const std::string name = entry.path().filename();
      if (name.find_first_not_of("0123456789") != name.npos) continue;
      if (StatusOf(std::atoi(name.c_str()), "PPid") == std::to_string(process)) {
        return std::atoi(name.c_str());
      }
    }
    return 0;
  }

  pid_t process = 0;
  pid_t job = 0;
  std::string directory;
};

TEST(WarmEnds, whoever_asked_is_killed_and_the_job_with_its_files_goes) {
  REQUIRE_WARM();
  WarmFixture fixture;
  fixture.Warm(JobOf(Endless));
  Asker asker;
  ASSERT_GT(asker.job, 1);
  EXPECT_TRUE(Lives(asker.job));
  EXPECT_TRUE(fs::exists(asker.directory));
  asker.Kill();
  EXPECT_TRUE(test::WaitUntil([&] { return !Lives(asker.job); }));
  EXPECT_TRUE(test::WaitUntil([&] { return !fs::exists(asker.directory); }));
  EXPECT_NE(fixture.Keeper(JobOf(Endless)), 0);
}

// Nobody but the kernel is left to end the job then.
TEST(WarmEnds, whoever_asked_is_killed_after_its_guardian_and_the_waiting_process) {
  REQUIRE_WARM();
  WarmFixture fixture;
  fixture.Warm(JobOf(Endless));
  Asker asker;
  ASSERT_GT(asker.job, 1);
  const pid_t guardian = asker.Guardian();
  ASSERT_GT(guardian, 1);
  fixture.Kill(JobOf(Endless));
  kill(guardian, SIGKILL);
  ASSERT_TRUE(test::WaitUntil([&] { return !Lives(guardian); }));
  EXPECT_TRUE(Lives(asker.job));
  asker.Kill();
  EXPECT_TRUE(test::WaitUntil([&] { return !Lives(asker.job); }));
  fs::remove_all(asker.directory);
}

TEST(WarmEnds, a_job_outlives_the_killed_waiting_process_and_says_its_status) {
  REQUIRE_WARM();
  WarmFixture fixture;
  // It makes its page when there is a file of that name.
  const TestJob job = JobOf(
      "%!PS\n(begun) = flush { (/dev/fd/3/go) status { pop pop pop pop exit } if } loop "
      "<< /PageSize [9 9] >> setpagedevice showpage\n");
  fixture.Warm(job);
  const auto running = WarmFixture::Start(job);
  ASSERT_TRUE(running->process->IsWarm());
  ASSERT_TRUE(test::WaitUntil([&] { return Prints(*running, "begun"); }));
  fixture.Kill(job);
  std::ofstream(running->place.Directory() + "/go") << "go";
  const auto end = running->process->Wait();
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->byItself);
  EXPECT_EQ(end->status, 0);
  EXPECT_TRUE(fs::exists(running->place.Directory() + "/p1"));
}

TEST(WarmEnds, killed_at_random_moments_every_job_is_right_or_done_by_exec) {
  REQUIRE_WARM();
  WarmFixture fixture;
  const TestJob job = JobOf(Page);
  const TestEnd fresh = WarmFixture::RunByExec(job);
  std::mt19937 random(7);
  int warm = 0;
  for (int i = 0; i < 25; ++i) {
    fixture.Warm(job);
    const pid_t keeper = fixture.Keeper(job);
    const std::chrono::microseconds delay(random() % 30'000);
    std::thread killer([&] {
      std::this_thread::sleep_for(delay);
      kill(keeper, SIGKILL);
    });
    for (int run = 0; run < 3; ++run) {
      const TestEnd end = WarmFixture::Run(job);
      warm += end.warm ? 1 : 0;
      EXPECT_TRUE(end.IsAs(fresh)) << delay.count() << " " << end.end.status << end.messages;
    }
    killer.join();
    ASSERT_TRUE(test::WaitUntil([&] { return !Lives(keeper); }));
  }
  std::cout << warm << " of 75 jobs were warm\n";
}

}  // namespace
}  // namespace rastrel::interpreter::testing
