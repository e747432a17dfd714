#pragma once

#include <cstdint>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// Straight lines that are looked up by whether a line crosses them: a tree of boxes. Any thread.
class LineIndex {
 public:
  struct Line {
    Point from;
    Point to;
  };

  /// Coordinates are finite.
  explicit LineIndex(std::vector<Line> lines);

  /// Whether the line from `from` to `to` meets one of the lines at another place than `from`
  /// (within 0.001 mm). A search that finds many boxes around it ends after MaximumVisits with
  /// true.
  [[nodiscard]] bool IsCrossed(Point from, Point to) const;

  static constexpr std::size_t MaximumVisits = 20'000;

 private:
  struct Node {
    Box box;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t left = 0;  // 0: a leaf
    std::uint32_t right = 0;
  };
  std::uint32_t Build(std::uint32_t begin, std::uint32_t end);

  std::vector<Line> m_lines;
  std::vector<Node> m_nodes;
};

}  // namespace rastrel::cutting
