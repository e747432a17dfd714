// The queue command on a pseudo-terminal, as a person has it.

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>

#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

using test::CommandRunner;

// The command with a pseudo-terminal of its own for all three streams.
class OnTerminal : public ::testing::Test {
 protected:
  explicit OnTerminal(CommandRunner::Children children = CommandRunner::Children::None)
      : m_Command(children) {
    m_Command.Place().Write("sign.ps", "%!PS\nshowpage\n");
  }
  ~OnTerminal() override {
    if (m_Id > 0) ::kill(m_Id, SIGKILL), ::waitpid(m_Id, nullptr, 0);
    if (m_Keyboard >= 0) ::close(m_Keyboard);
    if (m_Terminal >= 0) ::close(m_Terminal);
    EXPECT_EQ(m_Command.Processes(), 0);
    EXPECT_EQ(m_Command.NamesIn("jobs"), std::vector<std::string>());
  }

  void Start(unsigned short columns = 80) {
    winsize size{};
    size.ws_col = columns;
    ASSERT_EQ(::openpty(&m_Keyboard, &m_Terminal, nullptr, nullptr, &size), 0);
    ::tcgetattr(m_Terminal, &m_Before);
    m_Id = ::fork();
    ASSERT_GE(m_Id, 0);
    if (m_Id == 0) Become();
  }
  /// Reads the command's output until the text has come.
  void WaitFor(const std::string& text) {
    for (int round = 0; round < 200; ++round) {
      if (m_Drawn.find(text) != std::string::npos) return;
      pollfd entry{.fd = m_Keyboard, .events = POLLIN, .revents = 0};
      if (::poll(&entry, 1, 100) <= 0) continue;
      char bytes[4096];
      const ssize_t count = ::read(m_Keyboard, bytes, sizeof bytes);
      if (count <= 0) break;
      m_Drawn.append(bytes, static_cast<std::size_t>(count));
    }
    ADD_FAILURE() << "'" << text << "' never came: " << m_Drawn;
  }
  void Press(std::string_view keys) {
    ASSERT_EQ(::write(m_Keyboard, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  /// Exit status of the command.
  int End() {
    int state = 0;
    for (int round = 0; round < 300; ++round) {
      const pid_t ended = ::waitpid(m_Id, &state, WNOHANG);
      if (ended == m_Id) {
        m_Id = -1;
        termios after{};
        ::tcgetattr(m_Terminal, &after);
        EXPECT_EQ(after.c_lflag, m_Before.c_lflag) << "the terminal has its old state";
        return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
      }
      Drain();
    }
    ADD_FAILURE() << "the command does not end: " << m_Drawn;
    return -1;
  }

  CommandRunner m_Command;
  std::string m_Drawn;

 private:
  [[noreturn]] void Become() {
    ::login_tty(m_Terminal);
    if (::chdir(m_Command.Place().Path().c_str()) != 0) ::_exit(98);
    for (std::string entry : m_Command.Variables()) {
      const std::size_t equals = entry.find('=');
      ::setenv(entry.substr(0, equals).c_str(), entry.substr(equals + 1).c_str(), 1);
    }
    ::setenv("TERM", "xterm", 1);
    ::execl(RASTREL_COMMAND, "rastrel", "queue", "sign.ps", nullptr);
    ::_exit(99);
  }
  void Drain() {
    pollfd entry{.fd = m_Keyboard, .events = POLLIN, .revents = 0};
    if (::poll(&entry, 1, 100) <= 0) return;
    char bytes[4096];
    if (const ssize_t count = ::read(m_Keyboard, bytes, sizeof bytes); count > 0)
      m_Drawn.append(bytes, static_cast<std::size_t>(count));
  }

  int m_Keyboard = -1;
  int m_Terminal = -1;
  pid_t m_Id = -1;
  termios m_Before{};
};

constexpr const char* HangingQueue =
    "echo 'INFO: CONVERTING' >&2\necho 'PROGRESS: 42 %' >&2\nexec sleep 1000\n";

TEST_F(OnTerminal, a_line_shows_stage_percentage_bar_time_and_the_key_that_cancels) {
  m_Command.WriteQueue(HangingQueue);
  Start();
  WaitFor("Converting           42 %  [########------------]  0:0");
  WaitFor("q: cancel");
  Press("q");
  EXPECT_EQ(End(), 4);
  WaitFor("rastrel: cancelled");
}

TEST_F(OnTerminal, escape_cancels_and_other_keys_do_not) {
  m_Command.WriteQueue(HangingQueue);
  Start();
  WaitFor("Converting");
  Press("x\r\x1b[A\x1b[1;5C\x1bOP");
  WaitFor("0:01");
  Press("\x1b");
  EXPECT_EQ(End(), 4);
}

TEST_F(OnTerminal, control_c_cancels_and_is_a_key_not_a_signal) {
  m_Command.WriteQueue(HangingQueue);
  Start();
  WaitFor("Converting");
  Press("\x03");
  EXPECT_EQ(End(), 4);
  WaitFor("rastrel: cancelled");
}

TEST_F(OnTerminal, cancels_while_the_child_floods) {
  m_Command.WriteQueue("echo 'INFO: CONVERTING' >&2\nwhile :; do echo 'PROGRESS: 5 %'; done >&2\n");
  Start();
  WaitFor("Converting");
  Press("q");
  EXPECT_EQ(End(), 4);
}

TEST_F(OnTerminal, cancels_while_the_child_is_silent) {
  m_Command.WriteQueue("exec sleep 1000\n");
  Start();
  WaitFor("Processing");
  Press("q");
  EXPECT_EQ(End(), 4);
}

TEST_F(OnTerminal, a_narrow_terminal_gets_a_line_that_fits) {
  m_Command.WriteQueue(HangingQueue);
  Start(20);
  WaitFor("Converting  ");
  Press("q");
  EXPECT_EQ(End(), 4);
  std::size_t begin = 0;
  for (std::size_t at = m_Drawn.find('\r'); at != m_Drawn.npos; at = m_Drawn.find('\r', at + 1)) {
    const std::string drawn = m_Drawn.substr(begin, at - begin);
    if (drawn.find('\n') == drawn.npos && drawn.ends_with("\x1b[K")) {
      EXPECT_LT(drawn.size(), 20U + 4) << drawn;
    }
    begin = at + 1;
  }
}

TEST_F(OnTerminal, ends_by_itself_and_leaves_no_line_behind) {
  m_Command.WriteQueue("echo 'INFO: CONVERTING' >&2\nsleep 0.3\necho 'INFO: CLQ_success' >&2\n");
  Start();
  EXPECT_EQ(End(), 0);
  EXPECT_TRUE(m_Drawn.ends_with("\r\x1b[K")) << m_Drawn;
}

// With the real interpreter.
class OnTerminalWithInterpreter : public OnTerminal {
 protected:
  OnTerminalWithInterpreter() : OnTerminal(CommandRunner::Children::Real) {}
};

TEST_F(OnTerminalWithInterpreter, a_cancelled_conversion_leaves_no_process_and_no_file) {
  m_Command.Place().Write("sign.ps", "%!PS\n0 0 moveto 99 99 lineto stroke\n{ } loop\n");
  Start();
  WaitFor("Interpreting");
  Press("q");
  EXPECT_EQ(End(), 4);
  EXPECT_EQ(m_Command.Processes(), 0);
  EXPECT_EQ(m_Command.NamesIn("jobs"), std::vector<std::string>());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), std::vector<std::string>());
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(m_Command.Place().Path()))
    files += entry.exists() ? 1 : 0;
  EXPECT_EQ(files, 1U) << "only the file itself";
}

TEST_F(OnTerminalWithInterpreter, a_conversion_ends_with_its_files) {
  Start();
  EXPECT_EQ(End(), 0);
  WaitFor("sign.cfm");
  EXPECT_TRUE(m_Command.Place().Has("sign.cfm/.info"));
}

}  // namespace
}  // namespace rastrel::cli
