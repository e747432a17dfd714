#include "interpreter/warm/job.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include "interpreter/warm_message.h"

namespace rastrel::interpreter::warm {
namespace {

// Above every number that a job is given, so that putting one in place never hits another.
constexpr int LowestOwn = 100;
constexpr time_t RequestSeconds = 10;

// A fork that nobody may hear of any more, or that was refused.
[[noreturn]] void End(int status) { _exit(status); }

[[noreturn]] void Refuse(int connection, int error) {
  static_cast<void>(SendWarm(connection, WarmReply{WarmNews::Refused, error}));
  End(1);
}

// A connection that sends nothing must not keep a process.
void LimitWaits(int connection, time_t seconds) {
  const timeval limit{seconds, 0};
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

struct Request {
  WarmJob job;
  std::vector<os::FileDescriptor> files;
};

Request TakeRequest(int connection, const JobBase& base) {
  auto received = ReceiveWarm(connection);
  if (!received || received->bytes.empty()) End(0);
  if (received->isCut) Refuse(connection, EMSGSIZE);
  auto job = ParseWarmJob(received->bytes, received->files.size());
  if (!job) Refuse(connection, EBADMSG);
  if (job->identity != base.identity) Refuse(connection, ENOENT);
  return {std::move(*job), std::move(received->files)};
}

// Descriptors 0 to n - 1 become the job's; of the others only the connection stays.
bool PlaceDescriptors(int connection, Request& request) {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  std::vector<int> sources;
  for (const int place : request.job.descriptors) {
    const int file = place < 0 ? nothing : request.files[static_cast<std::size_t>(place)].Get();
    sources.push_back(fcntl(file, F_DUPFD_CLOEXEC, connection + 1));
    if (sources.back() < 0) return false;
  }
  request.files.clear();
  for (std::size_t target = 0; target < sources.size(); ++target) {
    if (dup2(sources[target], static_cast<int>(target)) < 0) return false;
  }
  const auto kept = static_cast<unsigned>(connection);
  return close_range(static_cast<unsigned>(sources.size()), kept - 1, 0) == 0 &&
         close_range(kept + 1, ~0U, 0) == 0;
}

Expected<Wall> WallOf(const WarmJob& job, const JobBase& base) {
  WallRequest request;
  request.fileBytes = job.fileBytes;
  request.processorSeconds = job.processorSeconds;
  request.memoryBytes = job.memoryBytes;
  request.confined = true;
  request.programs = WallPrograms::None;
  request.paths = base.ownFiles;
  request.paths.insert(request.paths.end(), job.paths.begin(), job.paths.end());
  return Wall::Build(request);
}

// Whoever asked holds the writing end of a pipe as long as it lives. When the last copy is closed
// the kernel kills this process. The connection can't serve for that: its signal may come late for
// a message that was taken already.
bool EndWith(int readingEnd) {
  return fcntl(readingEnd, F_SETOWN, getpid()) == 0 && fcntl(readingEnd, F_SETSIG, SIGKILL) == 0 &&
         fcntl(readingEnd, F_SETFL, O_ASYNC) == 0;
}

// Says so on the connection with the two files that whoever asked needs. The reading end stays open
// until this process ends.
bool SayReady(int connection) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  const os::FileDescriptor low(ends[0]);
  const os::FileDescriptor writingEnd(ends[1]);
  const int readingEnd = fcntl(low.Get(), F_DUPFD_CLOEXEC, connection + 1);
  if (readingEnd < 0 || !EndWith(readingEnd)) return false;
  const os::FileDescriptor self(static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0)));
  if (!self.IsOpen()) return false;
  const std::array files{self.Get(), writingEnd.Get()};
  if (SendWarm(connection, WarmReply{WarmNews::Ready, 0}, files)) return true;
  fcntl(readingEnd, F_SETFL, 0);  // so that it can still refuse
  return false;
}

// Returns when whoever asked has this process under guard.
void AwaitLeave(int connection) {
  const auto received = ReceiveWarm(connection);
  const auto reply = received ? WarmReplyOf(*received) : Expected<WarmReply>(FailureOf("none"));
  if (!reply || reply->news != WarmNews::Ready) End(0);
}

}  // namespace

void LiveAsJob(os::FileDescriptor accepted, const JobBase& base, Library& library) {
  setsid();
  const int connection = fcntl(accepted.Get(), F_DUPFD_CLOEXEC, LowestOwn);
  if (connection < 0) End(1);
  accepted.Reset();
  LimitWaits(connection, RequestSeconds);
  Request request = TakeRequest(connection, base);
  if (!PlaceDescriptors(connection, request)) Refuse(connection, errno);
  if (chdir(request.job.directory.c_str()) != 0) Refuse(connection, errno);
  {
    auto wall = WallOf(request.job, base);
    if (!wall) Refuse(connection, wall.Error().error);
    if (!SayReady(connection)) Refuse(connection, errno);
    AwaitLeave(connection);
    wall->Enter();
  }
  const int status = library.Run(request.job.script);
  static_cast<void>(SendWarm(connection, WarmReply{WarmNews::Exited, status}));
  End(status);
}

}  // namespace rastrel::interpreter::warm
