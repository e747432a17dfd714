#include "cli/server/password_prompt.h"

#include <array>
#include <cstdint>

#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t FileLimit = 4096;
constexpr std::size_t LineLimit = 1024;
constexpr char ControlC = 3;
constexpr char ControlD = 4;
constexpr char Backspace = 8;
constexpr char Delete = 127;

// Takes the last character of UTF-8.
void TakeBack(std::string& line) {
  while (!line.empty() && (static_cast<unsigned char>(line.back()) & 0xc0U) == 0x80U)
    line.pop_back();
  if (!line.empty()) line.pop_back();
}

Expected<std::string> ReadHiddenLine(os::TerminalKeys& keys) {
  std::string line;
  for (;;) {
    static_cast<void>(os::WaitReadable(std::array{keys.GetHandle()}, os::Deadline::Never()));
    for (const char key : keys.Read()) {
      if (key == '\r' || key == '\n') return line;
      if (key == ControlC || key == ControlD) return FailureOf("no password was given");
      if (key == Backspace || key == Delete) {
        TakeBack(line);
      } else if (line.size() < LineLimit) {
        line += key;
      }
    }
    if (keys.IsGone()) return FailureOf("no password was given");
  }
}

}  // namespace

Expected<std::string> PasswordOfFile(const std::string& path) {
  const auto text = os::ReadWholeFile(os::FromNative(path), FileLimit);
  if (!text) return FailureAt(path, text.Error());
  return text->substr(0, text->find_first_of("\r\n"));
}

Expected<std::string> AskForPassword(const std::string& name) {
  const auto keys = os::TerminalKeys::Take(0);
  if (!keys)
    return FailureOf("there is no terminal to ask for the password: give --password-file FILE");
  WriteErrorLine("Password of " + name + ":");
  auto first = ReadHiddenLine(*keys);
  if (!first) return first;
  WriteErrorLine("Once more:");
  const auto second = ReadHiddenLine(*keys);
  if (!second) return second;
  if (*first != *second) return FailureOf("the two passwords differ");
  return first;
}

}  // namespace rastrel::cli
