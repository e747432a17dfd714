#include "tests/interpreter/warm/warm_fixture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "interpreter/interpreter.h"
#include "tests/support/wait_until.h"

namespace rastrel::interpreter::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* Program = RASTREL_BINARY_DIR "/libexec/rastrel/rastrel-warm";

std::string Content(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

os::FileDescriptor FileWith(const std::string& content) {
  os::FileDescriptor file(memfd_create("job", MFD_CLOEXEC));
  EXPECT_EQ(write(file.Get(), content.data(), content.size()),
            static_cast<ssize_t>(content.size()));
  return file;
}

std::vector<std::string> Arguments(const TestJob& job) {
  std::vector<std::string> arguments{"-sstdout=%stderr", "-sDEVICE=" + job.device,
                                     "-sOutputFile=p%d"};
  arguments.insert(arguments.end(), job.options.begin(), job.options.end());
  arguments.insert(arguments.end(), {"-f", "/dev/fd/0"});
  arguments.insert(arguments.end(), job.after.begin(), job.after.end());
  return arguments;
}

os::FileDescriptor Created(const std::string& path) {
  return os::FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_APPEND, 0600));
}

}  // namespace

std::string WhyNoWarm() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return "A sanitizer's own memory is more than a job may take.";
#endif
  if (FindGhostscript().empty()) return "Ghostscript is not installed.";
  std::error_code error;
  if (fs::canonical(FindGhostscript(), error) != "/usr/bin/gs") {
    return "gs on the path is not the machine's own.";
  }
  return fs::exists(Program) ? "" : "rastrel-warm is not built.";
}

bool TestEnd::IsAs(const TestEnd& other) const {
  return end.byItself == other.end.byItself && end.status == other.end.status &&
         output == other.output && messages == other.messages && files == other.files;
}

std::ostream& operator<<(std::ostream& stream, const TestEnd& end) {
  stream << (end.warm ? "warm, " : "by exec, ") << (end.end.byItself ? "status " : "signal ")
         << end.end.status << '\n'
         << end.messages;
  for (const auto& [name, content] : end.files) {
    stream << name << ": " << content.size() << " bytes\n";
  }
  return stream;
}

WarmFixture::WarmFixture() {
  fs::create_directory(Directory());
  fs::permissions(Directory(), fs::perms::owner_all);
  fs::permissions(m_Root.Path(), fs::perms::owner_all);
  fs::copy_file(Program, Directory() + "/rastrel-warm");
}

WarmFixture::~WarmFixture() {
  const auto place = WarmPlace::Open(Directory());
  if (!place) return;
  for (const std::string& name : place->Living()) {
    const auto connection = place->Connect(name);
    ucred peer{};
    socklen_t size = sizeof peer;
    if (connection && getsockopt(connection->Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0) {
      kill(peer.pid, SIGKILL);
    }
  }
}

WarmPlace WarmFixture::Place() const {
  auto place = WarmPlace::Open(Directory());
  if (!place) throw std::runtime_error(Describe(place.Error()));
  return std::move(*place);
}

// A request as StartGhostscript makes it of the job.
WarmOptions WarmFixture::Options(const TestJob& job) {
  GhostscriptRequest request;
  request.program = FindGhostscript();
  request.arguments = Arguments(job);
  request.temporary = "/dev/fd/3";
  request.limits = job.limits;
  const auto options = WarmOptionsOf(ProcessOf(request));
  if (!options) throw std::runtime_error("no warm interpreter does such a job");
  return *options;
}

std::string WarmFixture::Name(const TestJob& job) { return WarmName(WarmIdentity(Options(job))); }

void WarmFixture::Warm(const TestJob& job, unsigned restSeconds, unsigned jobs) {
  const auto launched = LaunchWarm(Directory(), Options(job), restSeconds, jobs);
  ASSERT_TRUE(launched) << Describe(launched.Error());
  ASSERT_TRUE(test::WaitUntil([&] { return Keeper(job) != 0; }));
}

pid_t WarmFixture::Keeper(const TestJob& job) const {
  const auto connection = Place().Connect(Name(job));
  ucred peer{};
  socklen_t size = sizeof peer;
  if (!connection || getsockopt(connection->Get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    return 0;
  }
  return peer.pid;
}

void WarmFixture::Kill(const TestJob& job) const {
  const pid_t keeper = Keeper(job);
  if (keeper == 0) return;
  kill(keeper, SIGKILL);
  ASSERT_TRUE(test::WaitUntil([&] { return Keeper(job) != keeper && !Lives(keeper); }));
}

std::unique_ptr<RunningJob> WarmFixture::Start(const TestJob& job) {
  auto place = TaskPlace::Make("rastrel-test-");
  if (!place) throw std::runtime_error(Describe(place.Error()));
  auto running = std::make_unique<RunningJob>(std::move(*place));
  const os::FileDescriptor input = FileWith(job.content);
  const os::FileDescriptor output = Created(running->streams.Path("output"));
  const os::FileDescriptor messages = Created(running->streams.Path("messages"));
  const std::string& directory = running->place.Directory();
  const os::FileDescriptor temporary(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  GhostscriptRequest request;
  request.program = FindGhostscript();
  request.arguments = Arguments(job);
  request.temporary = "/dev/fd/3";
  request.directory = directory;
  request.descriptors = {input.Get(), output.Get(), messages.Get(), temporary.Get()};
  request.limits = job.limits;
  request.files = {{directory, WallAccess::Write}, {{}, WallAccess::Read, input.Get()}};
  request.isSmall = true;
  auto process = StartGhostscript(request, running->place.Guard());
  if (!process) throw std::runtime_error(Describe(process.Error()));
  running->process.emplace(std::move(*process));
  return running;
}

TestEnd WarmFixture::Run(const TestJob& job) {
  const auto running = Start(job);
  TestEnd end;
  end.warm = running->process->IsWarm();
  const auto ended = running->process->Wait();
  if (!ended) throw std::runtime_error(Describe(ended.Error()));
  end.end = *ended;
  end.output = Content(running->streams.Path("output"));
  end.messages = Content(running->streams.Path("messages"));
  for (const auto& entry : fs::directory_iterator(running->place.Directory())) {
    end.files[entry.path().filename()] = Content(entry.path());
  }
  return end;
}

TestEnd WarmFixture::RunByExec(const TestJob& job) {
  const test::EnvironmentGuard off("RASTREL_WARM", "0");
  return Run(job);
}

bool Lives(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  if (!std::getline(status, line)) return false;
  const std::size_t end = line.rfind(')');
  return end != line.npos && line.size() > end + 2 && line[end + 2] != 'Z';
}

}  // namespace rastrel::interpreter::testing
