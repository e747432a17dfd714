#include "children/jobspool/prefix_text.h"

#include <array>
#include <charconv>

#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

constexpr double PointsPerInch = 72;
constexpr std::string_view Start =
    "%!PS\n%%Title: Prefix of the queue program\nserverdict begin 0 exitserver\nuserdict begin\n";

// With the digits that tell it exactly, and never with an exponent, which PostScript would read but
// people would not.
std::string Number(double value) {
  std::array<char, 400> digits{};
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  return error == std::errc() ? std::string(digits.data(), end) : "0";
}

std::string HexText(std::string_view bytes) {
  std::string text = "<";
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4];
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 15U];
  }
  return text + ">";
}

std::string CutLines(const std::vector<CutLine>& lines) {
  std::string text;
  const auto add = [&](const std::string& operands) {
    text += "mark false " + operands + (text.empty() ? " $setcutter\n" : " $stripcontour\n");
  };
  for (const CutLine& line : lines) {
    const auto& v = line.values;
    switch (line.kind) {
      case CutLine::Kind::Rgb:
        add(Number(v[0]) + " " + Number(v[1]) + " " + Number(v[2]) + " /DeviceRGB");
        break;
      case CutLine::Kind::Cmyk:
        add(Number(v[0]) + " " + Number(v[1]) + " " + Number(v[2]) + " " + Number(v[3]) +
            " /DeviceCMYK");
        break;
      case CutLine::Kind::Separation:
        for (const std::string& name : SpellingsOf(line.name)) add(HexText(name) + " /Separation");
        break;
    }
  }
  return text;
}

// Lays the area, [ left bottom right top ] on the stack, over the whole picture, whichever way the
// interpreter would have fitted and turned it.
constexpr std::string_view Lay =
    "/queue.lay {\n"
    "  8 dict begin aload pop /top exch def /right exch def /bottom exch def /left exch def\n"
    "  /x //queue.dots 0 get right left sub div def\n"
    "  /y //queue.dots 1 get top bottom sub div def\n"
    "  [ x 0 0 y neg left x mul neg top y mul ] end setmatrix\n"
    "} bind def\n";

// The picture's size in dots decides about the page, not the size that the job asks for.
std::string Page(const PictureSize& size, const PictureTask& task) {
  const double width = size.width * task.resolution / PointsPerInch;
  const double height = size.height * task.resolution / PointsPerInch;
  std::string text = "/queue.dots [ " + Number(width) + " " + Number(height) + " ] def\n";
  text += Lay;
  text += "/queue.picture {\n  statusdict /printer_desc get /BBoxInches [ 0.0 " +
          Number(size.height / PointsPerInch) + " " + Number(size.width / PointsPerInch) +
          " 0.0 ] put\n  InitRIP\n  <<\n    /Install { ";
  if (task.area) {
    text += "[ " + Number(task.area->left) + " " + Number(task.area->bottom) + " " +
            Number(task.area->right) + " " + Number(task.area->top) + " ]";
  } else {
    text += "[ 0 0 currentpagedevice /PageSize get aload pop ]";
  }
  text +=
      " //queue.lay exec }\n"
      "  >> //rip.setpagedevice exec\n} bind def\n/queue.picture SetScaleTarget\n";
  return text;
}

}  // namespace

std::vector<std::string> SpellingsOf(const std::string& name) {
  const std::string utf8 = os::Utf8FromWide(os::WideFromAnsi(name));
  if (utf8 == name) return {name};
  return {name, utf8};
}

std::string PicturePrefix(const PictureTask& task) {
  const std::string dots = std::to_string(task.resolution);
  std::string text(Start);
  text += "3Color\n" + dots + " " + dots + " SetXYResolution\n" + CutLines(task.cutLines);
  std::optional<PictureSize> size = task.size;
  if (!size && task.area) size = PictureSize{task.area->Width(), task.area->Height()};
  if (size) text += Page(*size, task);
  return text + "end\n";
}

std::string SeparationPrefix() {
  return std::string(Start) + "4Color\n300 300 SetXYResolution\nend\n";
}

}  // namespace rastrel::jobspool
