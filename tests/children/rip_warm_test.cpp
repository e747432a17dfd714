// The RIP and the queue program with an interpreter that is kept ready: the same pages, reports and
// measures as with one that is started for each job.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "interpreter/warm_place.h"
#include "tests/children/rip_fixture.h"
#include "tests/support/wait_until.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsSanitized = true;  // a sanitizer's own memory is more than a job may take
#else
constexpr bool IsSanitized = false;
#endif

// A RIP whose data root has the program, and the processes that it starts, which end with this.
class WarmedRip {
 public:
  WarmedRip() {
    fs::create_directory(Directory());
    for (const std::string& place : {m_Rip.Root(), Directory()}) {
      fs::permissions(place, fs::perms::owner_all);
    }
    fs::copy_file(RASTREL_BINARY_DIR "/libexec/rastrel/rastrel-warm",
                  Directory() + "/rastrel-warm");
  }
  ~WarmedRip() {
    for (const pid_t process : Waiting()) kill(process, SIGKILL);
  }

  [[nodiscard]] std::string Directory() const { return m_Rip.Root() + "/warm"; }
  RipFixture& Rip() { return m_Rip; }

  // Processes that wait for jobs.
  [[nodiscard]] std::vector<pid_t> Waiting() const {
    std::vector<pid_t> processes;
    const auto place = interpreter::WarmPlace::Open(Directory());
    if (!place) return processes;
    for (const std::string& name : place->Living()) {
      const auto connection = place->Connect(name);
      ucred peer{};
      socklen_t size = sizeof peer;
      if (connection && getsockopt(connection->Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0)
        processes.push_back(peer.pid);
    }
    return processes;
  }
  // When one of them has last served a job: its lock's file has that time.
  [[nodiscard]] fs::file_time_type LastJob() const {
    fs::file_time_type last = fs::file_time_type::min();
    for (const auto& entry : fs::directory_iterator(Directory())) {
      if (entry.path().extension() == ".lock" && entry.path().filename() != "start.lock")
        last = std::max(last, fs::last_write_time(entry.path()));
    }
    return last;
  }

 private:
  RipFixture m_Rip;
};

std::string Content(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

struct RipResult {
  int status = 0;
  std::vector<std::string> reports;  // sorted: those of pages and of texts come by two pipes
  std::vector<std::string> pixels;   // of all pages
};

RipResult RunOf(WarmedRip& warm, const std::vector<std::string>& paths, const char* isWarm) {
  warm.Rip().Set("RASTREL_WARM", isWarm);
  const ProgramRun ended = warm.Rip().Run(paths);
  RipResult run{ended.status, {}, {}};
  std::istringstream lines(ended.reports);
  for (std::string line; std::getline(lines, line);) {
    // How often progress is said depends on the time.
    if (!line.starts_with("PROGRESS")) run.reports.push_back(line);
  }
  std::ranges::sort(run.reports);
  for (const std::string& page : RipFixture::PagesOf(ended)) {
    for (const auto& entry : fs::directory_iterator(page)) {
      const std::string name = entry.path().filename();
      if (name.ends_with(".ppm") || name.ends_with(".pgm") || name.ends_with(".png"))
        run.pixels.push_back(name + Content(entry.path()));
    }
  }
  std::ranges::sort(run.pixels);
  return run;
}

TEST(WarmRip, makes_the_pages_and_reports_of_a_cold_one) {
  REQUIRE_GHOSTSCRIPT();
  if (IsSanitized) GTEST_SKIP() << "A sanitizer's memory is more than a job may take.";
  WarmedRip warm;
  const std::string prefix = warm.Rip().Prefix();
  const std::string page =
      "<< /PageSize [72 72] >> setpagedevice /Helvetica findfont 20 scalefont setfont 5 5 moveto "
      "(Page) show 1 0 0 setrgbcolor 20 30 9 9 rectfill showpage\n";
  const std::vector<std::string> contents{
      "%!PS\n" + page + page,
      "%!PS\n/left 1 def userdict /showpage {} put " + page,
      "%!PS\n" + page + "moveto\n",
      "%!PS\n0 0 9 9 rectfill\n",
      "%!PS\n(printed) = flush " + page,
      "%!PS\nserverdict begin 0 exitserver userdict /moveto {} put " + page,
      "%!PS\n" + page,
  };
  std::vector<std::string> paths;
  std::vector<RipResult> cold;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    paths.push_back(warm.Rip().File("jobs/job" + std::to_string(i) + ".ps", contents[i]));
    cold.push_back(RunOf(warm, {prefix, paths.back()}, "0"));
  }
  EXPECT_EQ(cold.front().status, 0);
  EXPECT_FALSE(cold.front().pixels.empty());
  EXPECT_TRUE(warm.Waiting().empty());
  // Two wishes start one.
  for (int i = 0; i < 2; ++i) RunOf(warm, {prefix, paths.front()}, "1");
  ASSERT_TRUE(test::WaitUntil([&] { return !warm.Waiting().empty(); }));
  for (std::size_t i = 0; i < contents.size(); ++i) {
    SCOPED_TRACE(contents[i]);
    const fs::file_time_type before = warm.LastJob();
    const RipResult run = RunOf(warm, {prefix, paths[i]}, "1");
    EXPECT_TRUE(test::WaitUntil([&] { return warm.LastJob() != before; }));
    EXPECT_EQ(run.status, cold[i].status);
    EXPECT_EQ(run.reports, cold[i].reports);
    EXPECT_TRUE(run.pixels == cold[i].pixels);
  }
}

// A run that is killed leaves neither its job's process nor its files; the waiting one stays.
TEST(WarmRip, that_is_killed_takes_its_job_with_it) {
  REQUIRE_GHOSTSCRIPT();
  if (IsSanitized) GTEST_SKIP() << "A sanitizer's memory is more than a job may take.";
  WarmedRip warm;
  const std::string prefix = warm.Rip().Prefix();
  const std::string page = warm.Rip().File("jobs/page.ps", "%!PS\nshowpage\n");
  for (int i = 0; i < 2; ++i) RunOf(warm, {prefix, page}, "1");
  ASSERT_TRUE(test::WaitUntil([&] { return !warm.Waiting().empty(); }));
  const pid_t waiting = warm.Waiting().front();
  fs::remove_all(warm.Rip().RipDirectory() + "/System/c-out");
  const std::string endless = warm.Rip().File("jobs/endless.ps", "%!PS\n{ } loop\n");
  for (const unsigned microseconds : {3'000U, 20'000U, 60'000U, 200'000U}) {
    SCOPED_TRACE(microseconds);
    EXPECT_FALSE(warm.Rip().RunAndKill({prefix, endless}, microseconds).byItself);
    EXPECT_EQ(warm.Rip().Remains(), std::vector<std::string>{});
    // Of it, not even a zombie.
    EXPECT_TRUE(test::WaitUntil([&] {
      return Content("/proc/" + std::to_string(waiting) + "/task/" + std::to_string(waiting) +
                     "/children")
          .empty();
    }));
  }
  EXPECT_EQ(warm.Waiting(), std::vector<pid_t>{waiting});
}

}  // namespace
}  // namespace rastrel::corerast::testing
