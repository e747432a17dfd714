// Nesting and panels of any contours: each piece lies on its sheet and no layout takes long, and
// the panels of a page have all of its paths.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "cutting/nest/nest.h"
#include "cutting/panel/panel.h"
#include "fuzz/contour_source.h"

namespace {

using namespace rastrel::cutting;
using rastrel::fuzz::ContourFrom;
using rastrel::fuzz::Source;

CutPath PathFrom(Source& source) {
  const std::uint8_t head = source.Byte();
  CutPath path{.contours = {ContourFrom(head, source)}};
  path.operation = (head & 12) == 12 ? Operation::Engrave : Operation::Cut;
  return path;
}

void Require(bool holds) {
  if (!holds) std::abort();
}

void NestThem(const std::vector<CutJob>& jobs, const NestOptions& options) {
  std::vector<NestInput> inputs;
  for (const CutJob& job : jobs) inputs.push_back({.name = "job", .job = &job});
  const auto result = Nest(inputs, options);
  if (!result) return;
  Require(result->placements.size() == jobs.size());
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const NestPlacement& placed = result->placements[i];
    Require(placed.sheet < result->usedLengths.size());
    for (const CutPath& path : jobs[i].paths)
      for (const Contour& contour : path.contours) {
        const Box box = BoxOf(Transformed(contour, placed.transform));
        Require(box.left > -0.01 && box.bottom > -0.01 && box.top < options.height + 0.01 &&
                box.right < result->usedLengths[placed.sheet] + 0.01);
      }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Source source(data, size);
  NestOptions options{.width = source.Number(), .height = source.Number(), .gap = source.Number()};
  const std::uint8_t head = source.Byte();
  options.roll = (head & 1) != 0;
  options.turns = static_cast<NestTurns>(head / 2 % 3);
  options.effort = head / 8 % 4;
  const PanelOptions panels{
      .width = source.Number(), .height = source.Number(), .overlap = source.Number()};
  std::vector<CutJob> jobs;
  CutJob all{.width = source.Number(), .height = source.Number(), .paths = {}};
  while (!source.IsEmpty() && jobs.size() < 8) {
    CutJob job{.width = 100, .height = 100, .paths = {PathFrom(source)}};
    all.paths.push_back(job.paths.front());
    jobs.push_back(std::move(job));
  }
  NestThem(jobs, options);
  // Ten thousand panels of a page are right, and slow.
  if (all.width / panels.width * (all.height / panels.height) < 100)
    static_cast<void>(SplitIntoPanels(all, panels));
  return 0;
}
