// Tries all that a program for foreign bytes has no business with, and says how far it came:
// one line on its standard error, "Error: NAME=REASON NAME=REASON ...", with "done" where it got
// through. Its HOME names a directory of another's, which holds a file "there". Ends with status 3.
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string g_Line = "Error:";

void Report(const char* name, bool done) {
  const int error = errno;
  g_Line += std::string(" ") + name + "=" + (done ? "done" : strerrorname_np(error));
}

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

// Starts a program; the error of the exec becomes the child's status.
bool Runs(const char* program) {
  const pid_t child = fork();
  if (child == 0) {
    execl(program, program, static_cast<char*>(nullptr));
    _exit(errno);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return false;
  errno = WEXITSTATUS(status);
  return errno == 0;
}

}  // namespace

int main() {
  const std::string home = Variable("HOME");
  const std::string there = home + "/there";
  const std::string own = Variable("TMPDIR") + "/own";
  Report("read-passwd", open("/etc/passwd", O_RDONLY) >= 0);
  Report("read-there", open(there.c_str(), O_RDONLY) >= 0);
  Report("write-there", open(there.c_str(), O_WRONLY) >= 0);
  Report("empty-there", truncate(there.c_str(), 0) == 0);
  Report("remove-there", unlink(there.c_str()) == 0);
  Report("open-up-there", chmod(there.c_str(), 0777) == 0);
  Report("make-outside", open((home + "/made").c_str(), O_WRONLY | O_CREAT, 0600) >= 0);
  Report("make-own", open(own.c_str(), O_WRONLY | O_CREAT, 0600) >= 0);
  Report("move-own", rename(own.c_str(), (home + "/made").c_str()) == 0);
  Report("make-directory", mkdir((own + "-directory").c_str(), 0700) == 0);
  Report("link", symlink("/etc/passwd", (own + "-link").c_str()) == 0);
  Report("socket", socket(AF_INET, SOCK_STREAM, 0) >= 0);
  Report("local-socket", socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
  Report("trace", ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr) == 0);
  Report("signal", kill(getppid(), 0) == 0);
  Report("own-signal", kill(getpid(), 0) == 0);
  Report("namespace", unshare(CLONE_NEWUSER) == 0);
  Report("mount", mount("none", home.c_str(), "tmpfs", 0, nullptr) == 0);
  Report("run", Runs("/bin/true"));
  rlimit memory{};
  getrlimit(RLIMIT_AS, &memory);
  errno = ENOENT;
  Report("memory-limit", memory.rlim_cur != RLIM_INFINITY);
  g_Line += "\n";
  return write(2, g_Line.data(), g_Line.size()) < 0 ? 4 : 3;
}
