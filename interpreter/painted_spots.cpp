#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string_view>

#include "interpreter/interpreter.h"
#include "interpreter/plane_file.h"
#include "interpreter/short_run.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_content.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::interpreter {
namespace {

constexpr std::chrono::seconds TimeLimit{60};
constexpr std::uint64_t MemoryKibibytes = std::uint64_t{1} << 20;
// A page in six colors takes about 3 MB at that resolution.
constexpr std::uint64_t WorkBytes = std::uint64_t{4} << 30;
constexpr std::uint64_t MaximumFiles = 10'000;
constexpr std::uint64_t PlaneLimit = std::uint64_t{256} << 20;
// Ink shows at any resolution: a painted area touches one pixel at least.
constexpr double PixelsAcross = 1500;
constexpr double HighestResolution = 72;

// The page that holds the area and a point around them, moved to where the interpreter's page is.
// (Its own way to crop an EPS moves some files within a DOS EPS off the page.)
std::vector<std::string> PageOptions(const std::optional<PageArea>& area) {
  const auto text = [](double value) { return os::ShortDecimal(value, 6); };
  const auto option = [&](const char* name, double value) { return name + text(value); };
  if (!area) return {option("-r", HighestResolution)};
  const double width = area->right - area->left + 2;
  const double height = area->top - area->bottom + 2;
  const std::string begin = "/BeginPage {pop " + text(1.0 - area->left) + " " +
                            text(1.0 - area->bottom) + " translate}>> setpagedevice";
  const double scale = std::min(1.0, PixelsAcross / std::max(width, height));
  // With options that all such files have, so that a warm interpreter takes them. A page is fixed
  // as the options of its size would do it: its size is the one medium, and that size alone may be
  // set where the media are fixed.
  if (scale == 1) {
    const auto pixels = [](double points) { return std::to_string(std::lround(points)); };
    const std::string size = "[" + text(width) + " cvr " + text(height) + " cvr]";
    return {option("-r", HighestResolution), "-dFIXEDMEDIA", "-c",
            "<</InputAttributes <<0 <</PageSize " + size + ">> >> /PageSize " + size +
                " /HWSize [" + pixels(width) + " " + pixels(height) +
                "] /Policies <</PageSize 13>> >> setpagedevice <</Policies <</PageSize 0>> " +
                begin};
  }
  return {option("-r", HighestResolution * scale),
          option("-dDEVICEWIDTHPOINTS=", width),
          option("-dDEVICEHEIGHTPOINTS=", height),
          "-dFIXEDMEDIA",
          "-c",
          "<<" + begin};
}

Failure CanNotPaint(const std::string& reason) {
  return FailureOf("Ghostscript can't paint it: " + reason);
}

// At a limit, or without an interpreter. The file may be sound.
Failure GivenUp(const Failure& failure) {
  return FailureOf("the painting was given up: " + Describe(failure));
}

Expected<void> Paint(const std::string& path, const std::optional<PageArea>& area,
                     TaskPlace& place) {
  // The interpreter takes its arguments for UTF-8, which a file's name need not be.
  const auto file = os::OpenRegularFile(os::FromNative(path));
  if (!file) return CanNotPaint(Describe(file.Error()));
  ShortRun run;
  run.program = FindGhostscript();
  run.time = TimeLimit;
  run.memoryKibibytes = MemoryKibibytes;
  run.workBytes = WorkBytes;
  run.workFiles = MaximumFiles;
  run.input = file->Get();
  // The planes' name is a relative one: a `%` in the directory's would be taken for a page number.
  run.arguments = {"-sstdout=%stderr", "-sDEVICE=tiffsep", "-sCompression=none",
                   "-dMaxBitmap=200000000", "-sOutputFile=p%d.tif"};
  for (std::string& option : PageOptions(area)) run.arguments.push_back(std::move(option));
  run.arguments.insert(run.arguments.end(), {"-f", "/dev/fd/0"});
  const auto ran = RunToEnd(run, place);
  if (!ran) return GivenUp(ran.Error());
  if (const auto reason = ReasonOfEnd(*ran); !reason.empty()) return CanNotPaint(reason);
  return {};
}

// The name of a plane that has ink, if the file is a plane of a spot color.
Expected<std::optional<std::string>> InkedSpot(const std::filesystem::path& file) {
  constexpr std::array<std::string_view, 4> process{"Cyan", "Magenta", "Yellow", "Black"};
  const auto name = PlaneNameBytes(file.filename().string());
  if (!name || std::ranges::find(process, *name) != process.end())
    return std::optional<std::string>();
  const auto bytes = os::ReadWholeFile(os::FromNative(file.string()), PlaneLimit);
  const auto ink = bytes ? PlaneHasInk(*bytes) : std::nullopt;
  if (!ink) return FailureOf("a plane of it can't be read");
  if (!*ink) return std::optional<std::string>();
  return std::optional(os::Utf8FromUtf8OrAnsi(*name));
}

}  // namespace

Expected<std::vector<std::string>> PaintedSpots(const std::string& path,
                                                const std::optional<PageArea>& area) {
  auto place = TaskPlace::Make("rastrel-inspect-");
  if (!place) return GivenUp(place.Error());
  if (const auto painted = Paint(path, area, *place); !painted) return painted.Error();
  std::set<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(place->Directory(), error), last;
       !error && entry != last; entry.increment(error)) {
    const auto spot = InkedSpot(entry->path());
    if (!spot) return spot.Error();
    if (*spot) names.insert(**spot);
  }
  return std::vector<std::string>(names.begin(), names.end());
}

}  // namespace rastrel::interpreter
