// The queue program's reader of cut paths on any file: it makes an archive whose size is in
// proportion to the file, or it refuses the file.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "children/jobspool/cut_archive.h"
#include "children/jobspool/cut_path_reader.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel::jobspool;

void Check(bool holds) {
  if (!holds) std::abort();
}

// Two colors that the corpus has.
std::vector<CutLine> Lines() {
  CutLine red;
  red.values = {1, 0, 0, 0};
  CutLine spot;
  spot.kind = CutLine::Kind::Separation;
  spot.name = "Cut";
  return {red, spot};
}

// Points of all parts. Each is finite.
std::size_t CountPoints(const std::string& path) {
  CutPathReader reader(path, 0.5);
  std::size_t points = 0;
  while (reader.NextPath()) {
    while (const auto part = reader.NextPart()) {
      Check(!part->points.empty());
      points += part->points.size();
      for (const Point& point : part->points)
        Check(std::isfinite(point.x) && std::isfinite(point.y));
    }
  }
  return points;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const rastrel::test::MemoryScratchDirectory scratch;
  static const std::vector<CutLine> lines = Lines();
  const std::string path = scratch.Path("cut-paths");
  const std::string archive = scratch.Path("sign.cut");
  scratch.Write("cut-paths", {reinterpret_cast<const char*>(bytes), size});
  std::filesystem::remove(archive);
  // A curve takes at least 15 bytes of the file.
  Check(CountPoints(path) <= (size / 15 + 1) * LinesOfCurve);
  const auto written = WriteCutArchive(path, archive, lines, 0.5);
  if (!written) {
    Check(written.Error().error == EINVAL || written.Error().error == EFBIG);
    return 0;
  }
  Check(std::filesystem::file_size(archive) >= 8);
  return 0;
}
