#include "cutting/output/drawn_contour.h"

#include <algorithm>
#include <set>

namespace rastrel::cutting {

bool IsPoint(const Contour& contour) {
  return std::ranges::all_of(contour.segments, [&](const Segment& segment) {
    return segment.end == contour.start && (!segment.isCurve || (segment.first == contour.start &&
                                                                 segment.second == contour.start));
  });
}

bool IsDrawn(const CutPath& path, const Contour& contour) {
  return path.operation == Operation::Drill || !IsPoint(contour);
}

std::vector<Operation> ToolOperationsOf(const CutJob& job) {
  std::set<Operation> operations;
  for (const CutPath& path : job.paths) {
    if (HasTool(path.operation)) operations.insert(path.operation);
  }
  return {operations.begin(), operations.end()};
}

Box PageBoxOf(const CutJob& job, const Transform& toDevice) {
  Box page{0, 0, job.width, job.height};
  page.Add(ToolBoxOf(job));
  Box moved;
  moved.Add(toDevice.Apply({page.left, page.bottom}));
  moved.Add(toDevice.Apply({page.right, page.top}));
  return moved;
}

}  // namespace rastrel::cutting
