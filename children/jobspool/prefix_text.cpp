#include "children/jobspool/prefix_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::jobspool {
namespace {

constexpr double PointsPerInch = 72;
constexpr std::string_view Start =
    "%!PS\n%%Title: Prefix of the queue program\nserverdict begin 0 exitserver\nuserdict begin\n";

// With as many digits as make it exact, and never with an exponent, which PostScript would read but
// people would not.
std::string Number(double value) {
  std::array<char, 400> digits{};
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  return error == std::errc() ? std::string(digits.data(), end) : "0";
}

std::string HexText(std::string_view bytes) { return "<" + os::HexFromBytes(bytes) + ">"; }

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
      case CutLine::Kind::Separation: add(HexText(NameOf(line)) + " /Separation"); break;
    }
  }
  return text;
}

// Lays the page that the job sets over a picture of that size in dots.
constexpr std::string_view LayPage =
    "currentpagedevice /PageSize get aload pop\n"
    "      //queue.dots 1 get exch div exch //queue.dots 0 get exch div exch\n"
    "      [ 3 1 roll 0 exch 0 exch neg 0 //queue.dots 1 get ] setmatrix";

// Lays the area over it. The matrix is set outright, so it doesn't matter how the interpreter has
// fitted and turned the page that the job asks for.
std::string LayArea(const PointBox& area, const PictureSize& dots) {
  const double x = dots.width / area.Width();
  const double y = dots.height / area.Height();
  return "[ " + Number(x) + " 0 0 " + Number(-y) + " " + Number(-area.left * x) + " " +
         Number(area.top * y) + " ] setmatrix";
}

// A page is made of dots, so a smaller page at a higher resolution has the same ones.
std::string Page(const PictureSize& dots, const PictureTask& task) {
  const int device = std::max(task.resolution, LowestDeviceResolution);
  const std::string resolution = std::to_string(task.resolution);
  return "/queue.dots [ " + Number(dots.width) + " " + Number(dots.height) +
         " ] def\n/queue.picture {\n  statusdict /printer_desc get /BBoxInches [ 0.0 " +
         Number(dots.height / device) + " " + Number(dots.width / device) +
         " 0.0 ] put\n  InitRIP\n  (RESOLUTION ) (" + resolution + " " + resolution +
         ") //rip.report exec\n  << /Install {\n      " +
         (task.area ? LayArea(*task.area, dots) : std::string(LayPage)) +
         "\n  } bind >> //rip.setpagedevice exec\n} bind def\n/queue.picture SetScaleTarget\n";
}

}  // namespace

std::string NameOf(const CutLine& line) { return os::Utf8FromWide(os::WideFromAnsi(line.name)); }

std::optional<PictureSize> DotsOf(const PictureTask& task) {
  std::optional<PictureSize> size = task.size;
  if (!size && task.area) size = PictureSize{task.area->Width(), task.area->Height()};
  if (!size) return {};
  return PictureSize{std::max(1.0, size->width * task.resolution / PointsPerInch),
                     std::max(1.0, size->height * task.resolution / PointsPerInch)};
}

std::string PicturePrefix(const PictureTask& task) {
  const std::string device = std::to_string(std::max(task.resolution, LowestDeviceResolution));
  const auto dots = DotsOf(task);
  return std::string(Start) + "3Color\n" + device + " " + device + " SetXYResolution\n" +
         CutLines(task.cutLines) + (dots ? Page(*dots, task) : "") + "end\n";
}

std::string SeparationPrefix(std::uint64_t resolution) {
  const std::string number = std::to_string(resolution);
  return std::string(Start) + "4Color\n" + number + " " + number + " SetXYResolution\nend\n";
}

}  // namespace rastrel::jobspool
