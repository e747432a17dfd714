#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rastrel::bench {

/// `rastrel serve` of this build, on the data root of this process. Runs while this lives.
class RunningServer {
 public:
  RunningServer() : m_Id(::fork()) {
    if (m_Id == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // also where the bench is killed
      ::execl(RASTREL_BINARY_DIR "/libexec/rastrel/rastrel-server", "rastrel", "serve", nullptr);
      ::_exit(1);
    }
  }
  ~RunningServer() {
    ::kill(m_Id, SIGTERM);
    ::waitpid(m_Id, nullptr, 0);
  }
  RunningServer(const RunningServer&) = delete;
  RunningServer& operator=(const RunningServer&) = delete;

 private:
  pid_t m_Id;
};

}  // namespace rastrel::bench
