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
// A pixel for each point. Ink shows at any resolution: a painted area touches one pixel at least.
constexpr const char* Resolution = "-r72";
// The page is a square of one of these sides, in points, and its lower left corner shows the area,
// made smaller if it must be: so that all files have the interpreter's options in common, and one
// that is warm serves them all.
constexpr std::array<int, 2> Sides{300, 1500};

// Where on the page the area is: its lower left corner, of so many pixels.
struct Sheet {
  int side = Sides.back();
  double scale = 1;
  PlanePart part{};
};

Sheet SheetFor(const PageArea& area) {
  const double width = area.right - area.left + 2;  // with a point around it
  const double height = area.top - area.bottom + 2;
  Sheet sheet;
  for (const int side : Sides) {
    sheet.side = side;
    if (width <= side && height <= side) break;
  }
  sheet.scale = std::min(1.0, sheet.side / std::max(width, height));
  sheet.part.columns = static_cast<std::uint32_t>(std::lround(width * sheet.scale));
  sheet.part.rows = static_cast<std::uint32_t>(std::lround(height * sheet.scale));
  return sheet;
}

// (The interpreter's own way to crop an EPS moves some files within a DOS EPS off the page.)
std::vector<std::string> PageOptions(const PageArea& area, const Sheet& sheet) {
  const auto text = [](double value) { return os::ShortDecimal(value, 6); };
  return {"-dDEVICEWIDTHPOINTS=" + std::to_string(sheet.side),
          "-dDEVICEHEIGHTPOINTS=" + std::to_string(sheet.side), "-dFIXEDMEDIA", "-c",
          "<</Install {" + text(sheet.scale) + " dup scale " + text(1.0 - area.left) + " " +
              text(1.0 - area.bottom) + " translate}>> setpagedevice"};
}

Failure CanNotPaint(const std::string& reason) {
  return FailureOf("Ghostscript can't paint it: " + reason);
}

// At a limit, or without an interpreter. The file may be sound.
Failure GivenUp(const Failure& failure) {
  return FailureOf("the painting was given up: " + Describe(failure));
}

Expected<void> Paint(const std::string& path, const std::vector<std::string>& pageOptions,
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
  run.arguments = {"-sstdout=%stderr",      "-sDEVICE=tiffsep",     "-sCompression=none",
                   "-dMaxBitmap=200000000", "-sOutputFile=p%d.tif", Resolution};
  run.arguments.insert(run.arguments.end(), pageOptions.begin(), pageOptions.end());
  run.arguments.insert(run.arguments.end(), {"-f", "/dev/fd/0"});
  const auto ran = RunToEnd(run, place);
  if (!ran) return GivenUp(ran.Error());
  if (const auto reason = ReasonOfEnd(*ran); !reason.empty()) return CanNotPaint(reason);
  return {};
}

// The name of a plane that has ink, if the file is a plane of a spot color.
Expected<std::optional<std::string>> InkedSpot(const std::filesystem::path& file,
                                               const PlanePart& part) {
  constexpr std::array<std::string_view, 4> process{"Cyan", "Magenta", "Yellow", "Black"};
  const auto name = PlaneNameBytes(file.filename().string());
  if (!name || std::ranges::find(process, *name) != process.end())
    return std::optional<std::string>();
  const auto bytes = os::ReadWholeFile(os::FromNative(file.string()), PlaneLimit);
  const auto ink = bytes ? PlaneHasInk(*bytes, part) : std::nullopt;
  if (!ink) return FailureOf("a plane of it can't be read");
  if (!*ink) return std::optional<std::string>();
  return std::optional(os::Utf8FromUtf8OrAnsi(*name));
}

}  // namespace

Expected<std::vector<std::string>> PaintedSpots(const std::string& path,
                                                const std::optional<PageArea>& area) {
  auto place = TaskPlace::Make("rastrel-inspect-");
  if (!place) return GivenUp(place.Error());
  const Sheet sheet = area ? SheetFor(*area) : Sheet();
  const auto options = area ? PageOptions(*area, sheet) : std::vector<std::string>();
  if (const auto painted = Paint(path, options, *place); !painted) return painted.Error();
  std::set<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(place->Directory(), error), last;
       !error && entry != last; entry.increment(error)) {
    const auto spot = InkedSpot(entry->path(), sheet.part);
    if (!spot) return spot.Error();
    if (*spot) names.insert(**spot);
  }
  return std::vector<std::string>(names.begin(), names.end());
}

}  // namespace rastrel::interpreter
