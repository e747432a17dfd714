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
/// Lines are sorted along a space-filling curve, so that neighbors in the order are neighbors on
/// the page; four boxes of a level make one of the next:
///
///     lines   ....|....|....|....|..
///     level 0   o    o    o    o   o
///     level 1   o----o----o----o   o
///     level 2   o------------------o
class LineTree {
 public:
  explicit LineTree(std::span<const FlatLine> lines);

  /// Calls `visit(number, other)` once for each two lines whose boxes are at most `distance` apart.
  /// Asks `proceed(looked)` from time to time, with the number of boxes looked at, and returns
  /// false if it has said no.
  template <typename Visit, typename Proceed>
  bool ForEachPair(double distance, const Visit& visit, const Proceed& proceed) const {
    std::size_t looked = 0;
    for (std::size_t leaf = 0; leaf * Fan < m_Order.size(); ++leaf) {
      PairsOf(leaf, m_Levels.size() - 1, 0, distance, visit, looked);
      if (!proceed(looked)) return false;
    }
    return true;
  }

  /// Calls `visit(number)` for each line whose box meets `box`. Returns the number of boxes looked
  /// at.
  template <typename Visit>
  std::size_t ForEachNear(const Box& box, const Visit& visit) const {
    if (m_Levels.empty()) return 0;
    std::size_t looked = 0;
    const auto descend = [&](const auto& self, std::size_t level, std::size_t node) -> void {
      ++looked;
      if (!AreNear(m_Levels[level][node], box, 0)) return;
      const std::size_t count = level == 0 ? m_Order.size() : m_Levels[level - 1].size();
      for (std::size_t child = node * Fan; child < count && child < (node + 1) * Fan; ++child) {
        if (level > 0)
          self(self, level - 1, child);
        else if (AreNear(m_Boxes[child], box, 0))
          visit(m_Order[child]);
      }
    };
    for (std::size_t node = 0; node < m_Levels.back().size(); ++node)
      descend(descend, m_Levels.size() - 1, node);
    return looked;
  }

 private:
  static constexpr std::size_t Fan = 4;

  static bool AreNear(const Box& a, const Box& b, double distance) {
    return a.left <= b.right + distance && a.right >= b.left - distance &&
           a.bottom <= b.top + distance && a.top >= b.bottom - distance;
  }

  // The pairs of a leaf's lines with those of a node, and of leaves after the leaf alone.
  template <typename Visit>
  void PairsOf(std::size_t leaf, std::size_t level, std::size_t node, double distance,
               const Visit& visit, std::size_t& looked) const {
    ++looked;
    if (!AreNear(m_Levels[level][node], m_Levels[0][leaf], distance)) return;
    if (level == 0) return PairsOfLeaves(leaf, node, distance, visit);
    // The last leaf of child c of a node at this level.
    const std::size_t leaves = std::size_t{1} << (2 * (level - 1));
    for (std::size_t child = node * Fan;
         child < m_Levels[level - 1].size() && child < (node + 1) * Fan; ++child) {
      if ((child + 1) * leaves > leaf) PairsOf(leaf, level - 1, child, distance, visit, looked);
    }
  }

  template <typename Visit>
  void PairsOfLeaves(std::size_t leaf, std::size_t other, double distance,
                     const Visit& visit) const {
    const std::size_t end = std::min(m_Order.size(), (leaf + 1) * Fan);
    const std::size_t otherEnd = std::min(m_Order.size(), (other + 1) * Fan);
    for (std::size_t i = leaf * Fan; i < end; ++i) {
      for (std::size_t j = other == leaf ? i + 1 : other * Fan; j < otherEnd; ++j) {
        if (AreNear(m_Boxes[i], m_Boxes[j], distance)) visit(m_Order[i], m_Order[j]);
      }
    }
  }

  std::vector<std::uint32_t> m_Order;
  std::vector<Box> m_Boxes;                ///< of the lines, in this order
  std::vector<std::vector<Box>> m_Levels;  ///< the last has one box
};

/// Of one line.
[[nodiscard]] Box BoxOf(const FlatLine& line);

}  // namespace rastrel::cutting::clean
