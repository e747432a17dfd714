#include "cli/console/terminal_picture.h"

#include <algorithm>

#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/base64.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view Signature = "\x89PNG\r\n\x1a\n";
constexpr std::size_t WidthPlace = 16;  // in the file, after the signature and a chunk's head
constexpr unsigned PixelsOfColumn = 10;
constexpr unsigned UsualColumns = 80;
constexpr std::size_t KittyChunk = 4096;  // characters that one of its sequences may carry

// The first sequence has the parameters; all but the last announce more.
std::string KittySequence(std::string_view png, unsigned columns) {
  const std::string data = os::Base64FromBytes(png);
  std::string text;
  for (std::size_t at = 0; at < data.size(); at += KittyChunk) {
    const bool more = at + KittyChunk < data.size();
    text += "\x1b_G";
    if (at == 0) text += "a=T,f=100,q=2,c=" + std::to_string(columns) + ",";
    text += std::string("m=") + (more ? "1" : "0") + ";";
    text += data.substr(at, KittyChunk);
    text += "\x1b\\";
  }
  return text;
}

std::string ItermSequence(std::string_view png, unsigned columns) {
  return "\x1b]1337;File=inline=1;size=" + std::to_string(png.size()) +
         ";width=" + std::to_string(columns) +
         ";preserveAspectRatio=1:" + os::Base64FromBytes(png) + "\a";
}

}  // namespace

PictureProtocol ProtocolOf(const VariableReader& variable) {
  const std::string wish = variable("RASTREL_PICTURES");
  if (wish == "kitty") return PictureProtocol::Kitty;
  if (wish == "iterm2") return PictureProtocol::Iterm2;
  const std::string term = variable("TERM");
  const bool multiplexed = !variable("TMUX").empty() || !variable("STY").empty() ||
                           term.starts_with("tmux") || term.starts_with("screen");
  if (!wish.empty() || multiplexed || term == "dumb") return PictureProtocol::None;
  const std::string program = variable("TERM_PROGRAM");
  if (term == "xterm-kitty" || term == "xterm-ghostty" || program == "ghostty" ||
      program == "WezTerm" || !variable("KITTY_WINDOW_ID").empty() ||
      !variable("KONSOLE_VERSION").empty()) {
    return PictureProtocol::Kitty;
  }
  if (program == "iTerm.app" || program == "mintty" || variable("LC_TERMINAL") == "iTerm2") {
    return PictureProtocol::Iterm2;
  }
  return PictureProtocol::None;
}

std::string PictureSequence(PictureProtocol protocol, std::string_view png, unsigned columns) {
  const std::string text = protocol == PictureProtocol::Kitty ? KittySequence(png, columns)
                                                              : ItermSequence(png, columns);
  return text + "\n";
}

unsigned PictureColumns(std::string_view png, unsigned terminalColumns) {
  if (!png.starts_with(Signature) || png.size() < WidthPlace + 4) return 0;
  std::uint32_t width = 0;
  for (const char byte : png.substr(WidthPlace, 4)) {
    width = width << 8 | static_cast<unsigned char>(byte);
  }
  const unsigned maximum = terminalColumns > 0 ? terminalColumns : UsualColumns;
  return std::clamp(width / PixelsOfColumn, 1U, maximum);
}

namespace {

PictureProtocol ProtocolOfOutput() {
  if (!os::IsTerminal(os::StandardHandle(os::StandardStream::Output))) return PictureProtocol::None;
  return ProtocolOf([](const char* name) { return os::EnvironmentValue(name); });
}

}  // namespace

bool ShowsPictures() { return ProtocolOfOutput() != PictureProtocol::None; }

bool ShowPicture(const std::wstring& path) {
  const PictureProtocol protocol = ProtocolOfOutput();
  if (protocol == PictureProtocol::None) return false;
  const auto png = os::ReadWholeFile(path, PictureLimit);
  if (!png) return false;
  const HANDLE output = os::StandardHandle(os::StandardStream::Output);
  const unsigned columns = PictureColumns(*png, os::TerminalColumns(output));
  if (columns == 0) return false;
  WriteOutControl(PictureSequence(protocol, *png, columns));
  return true;
}

}  // namespace rastrel::cli
