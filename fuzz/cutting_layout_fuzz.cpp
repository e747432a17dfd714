// Nesting and panels of any contours: each piece lies on its sheet and no layout takes long, and
// the panels of a page have all of its paths.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "cutting/nest/nest.h"
#include "cutting/panel/panel.h"

namespace {

using namespace rastrel::cutting;

// Takes the input apart, and is all zeros at its end.
class Source {
 public:
  Source(const std::uint8_t* data, std::size_t size) : m_Data(data), m_Size(size) {}
  [[nodiscard]] bool IsEmpty() const { return m_Size == 0; }
  std::uint8_t Byte() {
    if (m_Size == 0) return 0;
    --m_Size;
    return *m_Data++;
  }
  // Small numbers by a byte, and any by eight.
  double Number() {
    const std::uint8_t first = Byte();
    if (first < 250 || m_Size < sizeof(double)) return first;
    double value = 0;
    std::memcpy(&value, m_Data, sizeof(double));
    m_Data += sizeof(double);
    m_Size -= sizeof(double);
    return value;
  }
  Point Place() {
    const double x = Number();
    return {x, Number()};
  }

 private:
  const std::uint8_t* m_Data;
  std::size_t m_Size;
};

CutPath PathFrom(Source& source) {
  const std::uint8_t head = source.Byte();
  Contour contour{.start = source.Place(), .segments = {}, .closed = (head & 1) != 0};
  for (int i = head >> 4; i > 0; --i) {
    const Point end = source.Place();
    if ((head & 2) == 0) {
      contour.segments.push_back(LineTo(end));
    } else {
      const Point first = source.Place();
      contour.segments.push_back(CurveTo(first, source.Place(), end));
    }
  }
  CutPath path{.contours = {std::move(contour)}};
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
