#include "children/shared/delivery_command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <utility>

#include "children/shared/reporter.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/program_search.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::children {
namespace {

constexpr std::size_t TailBytes = 4096;
constexpr std::size_t LastLineLimit = 300;
// A shell adds the number of the signal that ended a program of its script.
constexpr int ShellSignalStatus = 128;
constexpr int TakenInterval = 250;  // milliseconds

struct Pipe {
  os::FileDescriptor read;
  os::FileDescriptor write;
  /// False with errno set.
  [[nodiscard]] bool Open() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    read.Reset(ends[0]);
    write.Reset(ends[1]);
    return true;
  }
};

/// The child's side, between fork and exec. Never returns. A failure is sent as an error
/// number through the pipe that an exec closes.
[[noreturn]] void BecomeProgram(const char* program, char* const* arguments, int input, int output,
                                int failure, int guardian) {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  const bool known = interpreter::Guardian::GuardGroup(guardian, ::getpid());
  errno = known ? 0 : ESRCH;
  if (known && ::dup2(input, 0) == 0 && ::dup2(output, 1) == 1 && ::dup2(output, 2) == 2) {
    ::execvp(program, arguments);
  }
  const int error = errno;
  static_cast<void>(!::write(failure, &error, sizeof error));
  ::_exit(127);
}

/// The program of a command's first word; empty if none of that name is on the path. It is found
/// here, since execvp would look into relative directories of the path too.
std::string PathOf(const std::string& word) {
  return word.find('/') == std::string::npos ? os::FindProgram(word) : word;
}

/// A device's program. It is not an interpreter::GuardedProcess, which kills the rest of the group
/// when the leader has ended: a device's program may leave a process that goes on delivering. Also,
/// execvp runs scripts that name no interpreter.
class Running {
 public:
  Running(std::string program, interpreter::Guardian& guardian)
      : m_Program(std::move(program)), m_Guardian(guardian) {}
  ~Running() {
    if (m_Id > 0) End();
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  Expected<void> Start(const std::vector<std::string>& words, const std::string& file) {
    const std::string program = PathOf(m_Program);
    if (program.empty()) return Failure{"find the command", m_Program, ENOENT};
    // A missing one is the exec's to name.
    auto trusted = os::CheckTrustedFile(program);
    if (!trusted && trusted.Error().error == EPERM) return trusted;
    m_Input.Reset(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!m_Input.IsOpen()) return Failure{"open", file, errno};
    Pipe output;
    Pipe failure;
    if (!output.Open() || !failure.Open()) return Failure{"pipe2", m_Program, errno};
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    m_Id = ::fork();
    if (m_Id == 0) {
      BecomeProgram(program.c_str(), arguments.data(), m_Input.Get(), output.write.Get(),
                    failure.write.Get(), m_Guardian.Descriptor());
    }
    if (m_Id < 0) return Failure{"fork", m_Program, errno};
    ::setpgid(m_Id, m_Id);
    failure.write.Reset();
    int error = 0;
    ssize_t count = 0;
    while ((count = ::read(failure.read.Get(), &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (count == sizeof error) return Failure{"start the command", m_Program, error};
    m_Output = std::move(output.read);
    ::fcntl(m_Output.Get(), F_SETFL, O_NONBLOCK);
    return {};
  }

  Expected<void> Wait(unsigned timeoutSeconds, const CommandWatch& watch) {
    const os::FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, m_Id, 0)));
    if (!process.IsOpen()) return Failure{"pidfd_open", m_Program, errno};
    const os::Deadline deadline = timeoutSeconds == 0
                                      ? os::Deadline::Never()
                                      : os::Deadline::After(std::chrono::seconds(timeoutSeconds));
    pollfd entries[3] = {
        {process.Get(), POLLIN, 0}, {m_Output.Get(), POLLIN, 0}, {watch.stop, POLLIN, 0}};
    while ((entries[0].revents & POLLIN) == 0) {
      if (deadline.HasPassed()) {
        return Interrupted("was ended after " + std::to_string(timeoutSeconds) + " seconds");
      }
      if (entries[2].revents != 0) return Failure{"run", m_Program, ECANCELED};
      if (::poll(entries, 3, WaitTime(deadline, watch)) < 0 && errno != EINTR) {
        return Failure{"poll", m_Program, errno};
      }
      Report(watch);
      // At its end the pipe stays ready for ever; it is not asked again then.
      if (entries[1].revents != 0 && !Drain()) entries[1].fd = -1;
    }
    static_cast<void>(Drain());
    Report(watch);
    return TakeEnd();
  }

 private:
  static int WaitTime(const os::Deadline& deadline, const CommandWatch& watch) {
    const int rest = deadline.PollTimeout();
    if (!watch.onTaken) return rest;
    return rest < 0 ? TakenInterval : std::min(rest, TakenInterval);
  }

  /// The program's standard input is this open file, position and all.
  void Report(const CommandWatch& watch) const {
    const off_t taken = watch.onTaken ? ::lseek(m_Input.Get(), 0, SEEK_CUR) : -1;
    if (taken >= 0) watch.onTaken(static_cast<std::uint64_t>(taken));
  }

  /// Kills the group and takes the end of its leader over.
  void End() {
    ::kill(-m_Id, SIGKILL);
    ::kill(m_Id, SIGKILL);
    static_cast<void>(Reap());
  }

  int Reap() {
    siginfo_t ended{};
    while (::waitid(P_PID, static_cast<id_t>(m_Id), &ended, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {
    }
    static_cast<void>(m_Guardian.ReleaseGroup(m_Id));
    int status = 0;
    while (::waitpid(m_Id, &status, 0) < 0 && errno == EINTR) {
    }
    m_Id = -1;
    return status;
  }

  Expected<void> TakeEnd() {
    const int status = Reap();
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
    if (WIFEXITED(status)) {
      const std::string how = "ended with status " + std::to_string(WEXITSTATUS(status));
      return WEXITSTATUS(status) > ShellSignalStatus ? Interrupted(how) : Failed(how);
    }
    return Interrupted("was ended by signal " + std::to_string(WTERMSIG(status)));
  }

  /// It did not say itself how far it came.
  Failure Interrupted(const std::string& how) const {
    Failure failure = Failed(how);
    failure.error = EINTR;
    return failure;
  }

  Failure Failed(const std::string& how) const {
    const std::string line = LastLine();
    return FailureOf("the command '" + m_Program + "' " + how + (line.empty() ? "" : ": " + line));
  }

  /// Takes the program's output so far; only the end of it is kept. False at the pipe's end.
  bool Drain() {
    char block[4096];
    for (int rounds = 0; rounds < 64; ++rounds) {
      const ssize_t count = ::read(m_Output.Get(), block, sizeof block);
      if (count < 0) return errno == EAGAIN || errno == EINTR;
      if (count == 0) return false;
      m_Tail.append(block, static_cast<std::size_t>(count));
      if (m_Tail.size() > TailBytes) m_Tail.erase(0, m_Tail.size() - TailBytes);
    }
    return true;
  }

  /// The last line with anything in it.
  std::string LastLine() const {
    const std::size_t last = m_Tail.find_last_not_of(" \t\r\n");
    if (last == std::string::npos) return {};
    const std::size_t before = m_Tail.find_last_of("\r\n", last);
    const std::size_t first = before == std::string::npos ? 0 : before + 1;
    return OneLine(m_Tail.substr(first, std::min(last + 1 - first, LastLineLimit)));
  }

  std::string m_Program;
  interpreter::Guardian& m_Guardian;
  pid_t m_Id = -1;
  os::FileDescriptor m_Input;
  os::FileDescriptor m_Output;
  std::string m_Tail;
};

}  // namespace

Expected<void> RunCommand(const std::vector<std::string>& words, const std::string& file,
                          interpreter::Guardian& guardian, unsigned timeoutSeconds,
                          const CommandWatch& watch) {
  Running running(words.front(), guardian);
  if (auto started = running.Start(words, file); !started) return started;
  return running.Wait(timeoutSeconds, watch);
}

}  // namespace rastrel::children
