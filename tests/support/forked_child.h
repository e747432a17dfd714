#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>

namespace rastrel::test {

/// A copy of this process that does something of its own, with its standard error kept for the
/// test. Fork before the test starts threads. The copy is ended with this object at the latest.
class ForkedChild {
 public:
  /// The child's ends of the two pipes.
  class Side {
   public:
    /// Sends a text to the parent.
    void Tell(const std::string& words) const {
      if (::write(m_Out, words.data(), words.size()) < 0) ::_exit(99);
    }
    /// Waits until the parent calls Release, or is gone.
    void Await() const {
      char byte = 0;
      while (::read(m_In, &byte, 1) < 0 && errno == EINTR) {
      }
    }

   private:
    friend class ForkedChild;
    int m_In = -1;
    int m_Out = -1;
  };

  /// The child runs `body` and ends at once with its result: no destructor of the test runs there.
  explicit ForkedChild(const std::function<int(Side&)>& body) {
    std::array<int, 2> toChild{};
    std::array<int, 2> fromChild{};
    std::array<int, 2> error{};
    if (::pipe(toChild.data()) != 0 || ::pipe(fromChild.data()) != 0 || ::pipe(error.data()) != 0)
      std::abort();
    m_Id = ::fork();
    if (m_Id == 0) {
      ::alarm(30);
      ::close(toChild[1]);
      ::close(fromChild[0]);
      ::dup2(error[1], 2);
      ::close(error[0]);
      ::close(error[1]);
      Side side;
      side.m_In = toChild[0];
      side.m_Out = fromChild[1];
      ::_exit(body(side));
    }
    ::close(toChild[0]);
    ::close(fromChild[1]);
    ::close(error[1]);
    m_Out = toChild[1];
    m_In = fromChild[0];
    m_Error = error[0];
  }
  ~ForkedChild() {
    if (m_Id > 0) {
      ::kill(m_Id, SIGKILL);
      ::waitpid(m_Id, nullptr, 0);
    }
    Release();
    ::close(m_In);
    ::close(m_Error);
  }
  ForkedChild(const ForkedChild&) = delete;
  ForkedChild& operator=(const ForkedChild&) = delete;

  [[nodiscard]] int Id() const { return m_Id; }
  /// The next text of that length, or a shorter one if the child is gone.
  [[nodiscard]] std::string Hear(std::size_t length) const { return ReadAll(m_In, length); }
  /// Lets Await return.
  void Release() {
    if (m_Out >= 0) ::close(m_Out);
    m_Out = -1;
  }
  /// Waits for the end: the exit status, or minus the signal's number.
  [[nodiscard]] int Exit() {
    int status = 0;
    ::waitpid(m_Id, &status, 0);
    m_Id = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  /// The bytes of its standard error. Call it after Exit; less than a pipe holds.
  [[nodiscard]] std::string StandardError() {
    m_ErrorText += ReadAll(m_Error, std::string::npos);
    return m_ErrorText;
  }

 private:
  static std::string ReadAll(int descriptor, std::size_t most) {
    std::string text;
    std::array<char, 4096> piece{};
    while (text.size() < most) {
      const std::size_t wanted = std::min(piece.size(), most - text.size());
      const ssize_t got = ::read(descriptor, piece.data(), wanted);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      text.append(piece.data(), static_cast<std::size_t>(got));
    }
    return text;
  }

  pid_t m_Id = 0;
  int m_In = -1;
  int m_Out = -1;
  int m_Error = -1;
  std::string m_ErrorText;
};

}  // namespace rastrel::test
