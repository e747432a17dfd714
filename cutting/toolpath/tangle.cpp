#include "cutting/toolpath/tangle.h"

#include <algorithm>
#include <cstddef>

namespace rastrel::cutting {
namespace {

constexpr std::size_t MaximumLooks = 50'000'000;
constexpr std::size_t OverlapsOfLine = 64;
constexpr std::size_t FreeOverlaps = 2'000'000;

}  // namespace

std::vector<Box> BoxesOfLines(const std::vector<Point>& points, bool closed) {
  std::vector<Box> boxes;
  const std::size_t lines = closed ? points.size() : points.size() - 1;
  for (std::size_t i = 0; i < lines; ++i) {
    Box box;
    box.Add(points[i]);
    box.Add(points[(i + 1) % points.size()]);
    boxes.push_back(box);
  }
  return boxes;
}

bool IsTangled(std::vector<Box> boxes, double distance) {
  std::ranges::sort(boxes, {}, &Box::left);
  const std::size_t allowed = FreeOverlaps + OverlapsOfLine * boxes.size();
  std::size_t looks = 0;
  std::size_t overlaps = 0;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    const double right = boxes[i].right + 2 * distance;
    for (std::size_t k = i + 1; k < boxes.size() && boxes[k].left <= right; ++k) {
      if (++looks > MaximumLooks) return true;
      const bool isBeside = boxes[k].bottom > boxes[i].top + 2 * distance ||
                            boxes[i].bottom > boxes[k].top + 2 * distance;
      if (!isBeside && ++overlaps > allowed) return true;
    }
  }
  return false;
}

}  // namespace rastrel::cutting
