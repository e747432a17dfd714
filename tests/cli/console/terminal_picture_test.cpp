// Pictures on a terminal: which terminals get them, in which bytes, and that nothing else does.

#include "cli/console/terminal_picture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <string>

#include "rastrel/platform/os/path.h"
#include "tests/support/forked_child.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using Variables = std::map<std::string, std::string>;

PictureProtocol ProtocolIn(const Variables& variables) {
  return ProtocolOf([&variables](const char* name) {
    const auto found = variables.find(name);
    return found == variables.end() ? std::string() : found->second;
  });
}

// The smallest PNG there is of that width: the command reads its beginning alone.
std::string PngOf(unsigned width, std::size_t rest = 0) {
  std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
  for (int shift = 24; shift >= 0; shift -= 8) png += static_cast<char>(width >> shift & 255U);
  return png + std::string(rest, 'x');
}

TEST(TerminalPicture, is_shown_where_the_terminal_says_that_it_can) {
  for (const Variables& variables :
       {Variables{{"TERM", "xterm-kitty"}}, Variables{{"KITTY_WINDOW_ID", "1"}, {"TERM", "xterm"}},
        Variables{{"TERM", "xterm-ghostty"}}, Variables{{"TERM_PROGRAM", "WezTerm"}},
        Variables{{"TERM_PROGRAM", "ghostty"}}, Variables{{"KONSOLE_VERSION", "220401"}},
        Variables{{"RASTREL_PICTURES", "kitty"}, {"TERM", "dumb"}}}) {
    EXPECT_EQ(ProtocolIn(variables), PictureProtocol::Kitty);
  }
  for (const Variables& variables :
       {Variables{{"TERM_PROGRAM", "iTerm.app"}}, Variables{{"LC_TERMINAL", "iTerm2"}},
        Variables{{"TERM_PROGRAM", "mintty"}}, Variables{{"RASTREL_PICTURES", "iterm2"}}}) {
    EXPECT_EQ(ProtocolIn(variables), PictureProtocol::Iterm2);
  }
}

TEST(TerminalPicture, is_not_shown_elsewhere) {
  for (const Variables& variables :
       {Variables{}, Variables{{"TERM", "xterm-256color"}}, Variables{{"TERM", "dumb"}},
        Variables{{"TERM", "screen-256color"}, {"TERM_PROGRAM", "iTerm.app"}},
        Variables{{"TERM", "xterm-kitty"}, {"TMUX", "/tmp/tmux-1"}},
        Variables{{"KITTY_WINDOW_ID", "1"}, {"STY", "1.pts"}},
        Variables{{"TERM", "xterm-kitty"}, {"RASTREL_PICTURES", "none"}}}) {
    EXPECT_EQ(ProtocolIn(variables), PictureProtocol::None);
  }
}

TEST(TerminalPicture, takes_a_column_for_ten_pixels_up_to_the_terminals_width) {
  EXPECT_EQ(PictureColumns(PngOf(500), 120), 50U);
  EXPECT_EQ(PictureColumns(PngOf(1199), 120), 119U);
  EXPECT_EQ(PictureColumns(PngOf(1200), 120), 120U);
  EXPECT_EQ(PictureColumns(PngOf(1210), 120), 120U);
  EXPECT_EQ(PictureColumns(PngOf(4000000000U), 120), 120U);
  EXPECT_EQ(PictureColumns(PngOf(9), 120), 1U);
  EXPECT_EQ(PictureColumns(PngOf(0), 120), 1U);
  EXPECT_EQ(PictureColumns(PngOf(5000), 0), 80U);
}

TEST(TerminalPicture, is_a_png_file_or_none) {
  const std::string png = PngOf(500);
  for (std::size_t length = 0; length < png.size(); ++length) {
    EXPECT_EQ(PictureColumns(png.substr(0, length), 80), 0U) << length;
  }
  EXPECT_EQ(PictureColumns("II*" + std::string(40, '\0'), 80), 0U);
}

// RFC 4648 has "foobar" and its beginnings as examples.
TEST(TerminalPicture, is_sent_in_base_64) {
  for (const auto& [bytes, text] : {std::pair("f", "Zg=="),
                                    {"fo", "Zm8="},
                                    {"foo", "Zm9v"},
                                    {"foob", "Zm9vYg=="},
                                    {"fooba", "Zm9vYmE="},
                                    {"foobar", "Zm9vYmFy"}}) {
    EXPECT_EQ(PictureSequence(PictureProtocol::Iterm2, bytes, 7),
              "\x1b]1337;File=inline=1;size=" + std::to_string(std::string(bytes).size()) +
                  ";width=7;preserveAspectRatio=1:" + text + "\a\n");
    EXPECT_EQ(PictureSequence(PictureProtocol::Kitty, bytes, 7),
              "\x1b_Ga=T,f=100,q=2,c=7,m=0;" + std::string(text) + "\x1b\\\n");
  }
}

TEST(TerminalPicture, goes_to_kitty_in_chunks_of_4096_characters) {
  const auto chunks = [](std::size_t bytes) {
    std::vector<std::size_t> sizes;
    const std::string text = PictureSequence(PictureProtocol::Kitty, std::string(bytes, 'x'), 7);
    for (std::size_t at = text.find("\x1b_G"); at != text.npos; at = text.find("\x1b_G", at + 1)) {
      const std::size_t data = text.find(';', at) + 1;
      const bool last = text.find("\x1b_G", data) == text.npos;
      EXPECT_EQ(text.substr(data - 4, 4), last ? "m=0;" : "m=1;");
      sizes.push_back(text.find('\x1b', data) - data);
    }
    return sizes;
  };
  EXPECT_EQ(chunks(3071), (std::vector<std::size_t>{4096}));
  EXPECT_EQ(chunks(3072), (std::vector<std::size_t>{4096}));
  EXPECT_EQ(chunks(3073), (std::vector<std::size_t>{4096, 4}));
}

// The bytes that a process sends to the pseudo-terminal on its standard output, and whether it says
// that it has shown the picture.
struct Shown {
  bool said = false;
  std::string sent;
};

Shown ShowOnTerminal(const std::string& path, const Variables& variables) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  EXPECT_GE(terminal, 0);
  EXPECT_EQ(::grantpt(terminal), 0);
  EXPECT_EQ(::unlockpt(terminal), 0);
  const std::string name = ::ptsname(terminal);
  test::ForkedChild child([&](test::ForkedChild::Side&) {
    const int screen = ::open(name.c_str(), O_RDWR | O_NOCTTY);
    termios state{};
    if (::tcgetattr(screen, &state) != 0) return 90;
    ::cfmakeraw(&state);
    winsize size{};
    size.ws_col = 40;
    size.ws_row = 10;
    if (::tcsetattr(screen, TCSANOW, &state) != 0) return 91;
    if (::ioctl(screen, TIOCSWINSZ, &size) != 0) return 92;
    ::dup2(screen, 1);
    ::clearenv();
    for (const auto& [key, value] : variables) ::setenv(key.c_str(), value.c_str(), 1);
    const bool shown = ShowPicture(os::FromNative(path));
    if (::write(1, "END", 3) != 3) return 93;
    ::tcdrain(1);
    return shown ? 1 : 0;
  });
  Shown shown;
  while (!shown.sent.ends_with("END")) {
    pollfd waiting{terminal, POLLIN, 0};
    char piece[4096];
    if (::poll(&waiting, 1, 10000) <= 0) break;
    const ssize_t got = ::read(terminal, piece, sizeof piece);
    if (got <= 0) break;
    shown.sent.append(piece, static_cast<std::size_t>(got));
  }
  const int status = child.Exit();
  EXPECT_TRUE(status == 0 || status == 1) << status;
  shown.said = status == 1;
  ::close(terminal);
  return shown;
}

TEST(TerminalPicture, reaches_a_terminal_that_shows_pictures) {
  const test::ScratchDirectory scratch;
  const std::string png = PngOf(1000, 20000);
  scratch.Write("a.png", png);
  const Shown kitty = ShowOnTerminal(scratch.Path("a.png"), {{"TERM", "xterm-kitty"}});
  EXPECT_TRUE(kitty.said);
  EXPECT_EQ(kitty.sent, PictureSequence(PictureProtocol::Kitty, png, 40) + "END");
  const Shown iterm =
      ShowOnTerminal(scratch.Path("a.png"), {{"TERM", "xterm"}, {"TERM_PROGRAM", "iTerm.app"}});
  EXPECT_TRUE(iterm.said);
  EXPECT_EQ(iterm.sent, PictureSequence(PictureProtocol::Iterm2, png, 40) + "END");
}

TEST(TerminalPicture, is_kept_from_other_terminals_and_so_are_other_files) {
  const test::ScratchDirectory scratch;
  scratch.Write("a.png", PngOf(1000));
  scratch.Write("b.tif", "II*");
  scratch.Write("large.png", PngOf(1000, PictureLimit));
  for (const auto& [name, term] : {std::pair("a.png", "xterm"),
                                   {"a.png", "dumb"},
                                   {"b.tif", "xterm-kitty"},
                                   {"large.png", "xterm-kitty"},
                                   {"none.png", "xterm-kitty"}}) {
    SCOPED_TRACE(std::string(name) + " " + term);
    const Shown shown = ShowOnTerminal(scratch.Path(name), {{"TERM", term}});
    EXPECT_FALSE(shown.said);
    EXPECT_EQ(shown.sent, "END");
  }
}

TEST(TerminalPicture, is_not_written_to_a_pipe) {
  const test::ScratchDirectory scratch;
  scratch.Write("a.png", PngOf(1000));
  test::ForkedChild child([&](test::ForkedChild::Side&) {
    ::setenv("TERM", "xterm-kitty", 1);
    ::dup2(2, 1);  // standard error is a pipe here
    return ShowPicture(os::FromNative(scratch.Path("a.png"))) ? 1 : 0;
  });
  EXPECT_EQ(child.Exit(), 0);
  EXPECT_EQ(child.StandardError(), "");
}

}  // namespace
}  // namespace rastrel::cli
