#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cutting/clean/flat_lines.h"

namespace rastrel::cutting::clean {

/// The boxes of lines in a tree, for finding those near a box. The lines must outlive it.
///
/// A leaf has up to four lines that follow each other in one contour, so they are near each other
/// in memory and on the page. Leaves are sorted along a space-filling curve, so that neighbors in
/// the order are neighbors on the page; four boxes of a level make one of the next:
///
///     lines     ....  ...  ....  .  ....
///     level 0    o     o    o    o   o
///     level 1    o-----o----o----o   o
///     level 2    o-------------------o
class LineTree {
 public:
  /// Lines of one contour follow each other.
  explicit LineTree(std::span<const FlatLine> lines);

  /// Calls `visit(number, other)` once for each two lines whose boxes are at most `distance` apart,
  /// and for some whose boxes are farther by less than a millionth of their place.
  /// Asks `proceed(looked)` from time to time, with the number of boxes looked at, and returns
  /// false if it has said no.
  template <typename Visit, typename Proceed>
  bool ForEachPair(double distance, const Visit& visit, const Proceed& proceed) const {
    PairSearch<Visit, Proceed> search{*this, SmallBox::Above(distance), visit, proceed};
    return m_Levels.empty() || search.Within(m_Levels.size() - 1, 0);
  }

  /// Calls `visit(number)` for each line whose box meets `box`, and for some that almost do.
  /// Returns the number of boxes looked at.
  template <typename Visit>
  std::size_t ForEachNear(const Box& given, const Visit& visit) const {
    if (m_Levels.empty()) return 0;
    std::size_t looked = 0;
    const SmallBox box(given);
    const auto descend = [&](const auto& self, std::size_t level, std::size_t node) -> void {
      ++looked;
      if (!AreNear(m_Levels[level][node], box, 0)) return;
      if (level == 0) {
        for (std::uint32_t line = m_Leaves[node].first; line < m_Leaves[node].end; ++line) {
          if (AreNear(m_Boxes[line], box, 0)) visit(line);
        }
        return;
      }
      for (std::size_t child = node * Fan; child < ChildrenEnd(level, node); ++child)
        self(self, level - 1, child);
    };
    descend(descend, m_Levels.size() - 1, 0);
    return looked;
  }

 private:
  static constexpr std::size_t Fan = 4;

  /// At least as large as the box that it is made of, in half of the memory: a tree of a large job
  /// is then read from the processor's caches.
  struct SmallBox {
    explicit SmallBox(const Box& box)
        : left(Below(box.left)),
          bottom(Below(box.bottom)),
          right(Above(box.right)),
          top(Above(box.top)) {}
    static float Above(double value) { return static_cast<float>(value + Rounding(value)); }
    static float Below(double value) { return static_cast<float>(value - Rounding(value)); }
    /// More than the conversion and the sum of such numbers lose.
    static double Rounding(double value) { return (value < 0 ? -value : value) * 2.5e-7; }
    float left, bottom, right, top;
  };

  /// Numbers of lines.
  struct Leaf {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
  };

  // Goes down on both sides at once, so that two parts of the page that are apart are told apart
  // by one look, and not by one for each leaf.
  template <typename Visit, typename Proceed>
  struct PairSearch {
    const LineTree& tree;
    float distance;
    const Visit& visit;
    const Proceed& proceed;
    std::size_t looked = 0;

    // The pairs of which both lines are below the node.
    bool Within(std::size_t level, std::size_t node) {
      ++looked;
      if (level == 0) {
        const Leaf leaf = tree.m_Leaves[node];
        for (std::uint32_t line = leaf.first; line < leaf.end; ++line)
          VisitNear(line, {line + 1, leaf.end});
        return proceed(looked);
      }
      const std::size_t end = tree.ChildrenEnd(level, node);
      for (std::size_t child = node * Fan; child < end; ++child) {
        if (!Within(level - 1, child)) return false;
        for (std::size_t other = child + 1; other < end; ++other) {
          if (!Between(level - 1, child, other)) return false;
        }
      }
      return true;
    }

    // The pairs of one line below each of two nodes.
    bool Between(std::size_t level, std::size_t node, std::size_t other) {
      ++looked;
      const SmallBox& otherBox = tree.m_Levels[level][other];
      if (!AreNear(tree.m_Levels[level][node], otherBox, distance)) return true;
      if (level == 0) {
        const Leaf leaf = tree.m_Leaves[node];
        for (std::uint32_t line = leaf.first; line < leaf.end; ++line) {
          if (AreNear(tree.m_Boxes[line], otherBox, distance))
            VisitNear(line, tree.m_Leaves[other]);
        }
        return proceed(looked);
      }
      for (std::size_t child = node * Fan; child < tree.ChildrenEnd(level, node); ++child) {
        if (!AreNear(tree.m_Levels[level - 1][child], otherBox, distance)) continue;
        for (std::size_t k = other * Fan; k < tree.ChildrenEnd(level, other); ++k) {
          if (!Between(level - 1, child, k)) return false;
        }
      }
      return true;
    }

    void VisitNear(std::uint32_t line, Leaf leaf) const {
      for (std::uint32_t other = leaf.first; other < leaf.end; ++other) {
        if (AreNear(tree.m_Boxes[line], tree.m_Boxes[other], distance)) visit(line, other);
      }
    }
  };

  static bool AreNear(const SmallBox& a, const SmallBox& b, float distance) {
    return a.left <= b.right + distance && a.right >= b.left - distance &&
           a.bottom <= b.top + distance && a.top >= b.bottom - distance;
  }

  [[nodiscard]] std::size_t ChildrenEnd(std::size_t level, std::size_t node) const {
    return std::min((node + 1) * Fan, m_Levels[level - 1].size());
  }

  std::vector<Leaf> m_Leaves;
  std::vector<SmallBox> m_Boxes;                ///< of the lines
  std::vector<std::vector<SmallBox>> m_Levels;  ///< the first has the leaves', the last has one box
};

/// Of one line.
[[nodiscard]] Box BoxOf(const FlatLine& line);

}  // namespace rastrel::cutting::clean
