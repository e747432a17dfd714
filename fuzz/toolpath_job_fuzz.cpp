// Tool paths of any contours: numbers of every kind, settings and options.

#include <cstddef>
#include <cstdint>

#include "cutting/toolpath/toolpath.h"
#include "fuzz/contour_source.h"

namespace {

using namespace rastrel::cutting;
using rastrel::fuzz::ContourFrom;
using rastrel::fuzz::Source;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Source source(data, size);
  CutJob job{.width = source.Number(), .height = source.Number(), .paths = {}};
  ToolPathOptions options;
  options.corners = static_cast<Corners>(source.Byte() % 3);
  const std::uint8_t head = source.Byte();
  if ((head & 1) != 0) options.weeding.boxGap = source.Number();
  if ((head & 2) != 0) options.weeding.step = source.Number();
  options.order = (head & 4) == 0;
  while (!source.IsEmpty() && job.paths.size() < 50) {
    CutPath path{.contours = {}, .operation = static_cast<Operation>(source.Byte() % 9)};
    path.settings.order = source.Byte() % 3;
    path.settings.kerf = source.Number();
    path.settings.overcut = source.Number();
    path.settings.leadIn = source.Number();
    path.settings.bridges = source.Byte() % 5;
    path.settings.bridgeWidth = source.Number();
    for (int i = source.Byte() % 6; i > 0; --i) path.contours.push_back(ContourFrom(source));
    job.paths.push_back(path);
  }
  if (const auto result = MakeToolPaths(job, options)) {
    // Settings that were worked are not worked again.
    for (const CutPath& path : result->job.paths) {
      if (HasTool(path.operation) && path.settings != ToolSettings{.order = path.settings.order})
        __builtin_trap();
    }
  }
  return 0;
}
