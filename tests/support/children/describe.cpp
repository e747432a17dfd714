// Replaces a child program and writes its arguments, directory, descriptors and signals to the file
// $RASTREL_HOME/NAME.told, where NAME is that of its program file.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::string TargetOf(const std::string& link) {
  std::array<char, PATH_MAX> target{};
  const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
  return length < 0 ? "(none)" : std::string(target.data(), static_cast<std::size_t>(length));
}

}  // namespace

int main(int count, char** arguments) {
  const std::string program = std::filesystem::path(arguments[0]).filename();
  const std::string own = program.substr(program.find_last_of('\\') + 1);
  std::ofstream told(std::string(std::getenv("RASTREL_HOME")) + "/" + own + ".told");
  for (int index = 0; index < count; ++index) told << "argument " << arguments[index] << '\n';
  told << "directory " << std::filesystem::current_path().string() << '\n';
  for (const int descriptor : {0, 1, 2})
    told << descriptor << ' ' << TargetOf("/proc/self/fd/" + std::to_string(descriptor)) << '\n';
  // The file that is written here is one, the listing itself another.
  int others = -2;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    others += std::stoi(entry.path().filename()) > 2 ? 1 : 0;
  told << "other descriptors " << others << '\n';
  told << "leads its session " << (::getsid(0) == ::getpid() ? "yes" : "no") << '\n';
  const int terminal = ::open("/dev/tty", O_RDWR);
  told << "terminal " << (terminal >= 0 ? "yes" : "no") << '\n';
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  struct sigaction action {};
  ::sigaction(SIGPIPE, nullptr, &action);
  told << "broken pipe signal "
       << (sigismember(&blocked, SIGPIPE) == 0 && action.sa_handler == SIG_DFL ? "as usual"
                                                                               : "changed")
       << '\n';
  return 0;
}
