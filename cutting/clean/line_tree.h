#pragma once

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

  /// Numbers of the lines, so that neighbors on the page are mostly neighbors in the list.
  [[nodiscard]] std::span<const std::uint32_t> Order() const { return m_Order; }

  /// Calls `visit(number)` for each line whose box meets `box`, and possibly for some others.
  /// Returns the number of boxes looked at.
  template <typename Visit>
  std::size_t ForEachNear(const Box& box, const Visit& visit) const {
    if (m_Levels.empty()) return 0;
    std::size_t looked = 0;
    const auto descend = [&](const auto& self, std::size_t level, std::size_t node) -> void {
      ++looked;
      const Box& there = m_Levels[level][node];
      if (there.left > box.right || there.right < box.left || there.bottom > box.top ||
          there.top < box.bottom)
        return;
      const std::size_t count = level == 0 ? m_Order.size() : m_Levels[level - 1].size();
      for (std::size_t child = node * Fan; child < count && child < (node + 1) * Fan; ++child) {
        if (level == 0)
          visit(m_Order[child]);
        else
          self(self, level - 1, child);
      }
    };
    for (std::size_t node = 0; node < m_Levels.back().size(); ++node)
      descend(descend, m_Levels.size() - 1, node);
    return looked;
  }

 private:
  static constexpr std::size_t Fan = 4;

  std::vector<std::uint32_t> m_Order;
  std::vector<std::vector<Box>> m_Levels;  ///< the last has one box
};

/// Of one line.
[[nodiscard]] Box BoxOf(const FlatLine& line);

}  // namespace rastrel::cutting::clean
