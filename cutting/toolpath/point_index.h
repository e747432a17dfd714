#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// Points that are looked up by their distance, a k-d tree with boxes. Owners can be taken out. Not
/// for several threads at once.
class PointIndex {
 public:
  struct Entry {
    Point place;
    std::uint32_t owner = 0;
    std::uint32_t tag = 0;  ///< the caller's own: which of the owner's points it is
  };

  /// Coordinates are finite. `owners` is above each entry's owner.
  PointIndex(std::vector<Entry> entries, std::size_t owners);

  /// Takes all points of one owner out.
  void Remove(std::uint32_t owner);
  /// The nearest one that is left. Where many are about as near, it looks at MaximumVisits nodes
  /// and returns the best of those; at one in any case.
  [[nodiscard]] std::optional<Entry> Nearest(Point from) const;
  /// Up to `count` nearest ones of other owners than `own`, the nearest first; likewise limited.
  void FindNearest(Point from, std::size_t count, std::uint32_t own,
                   std::vector<Entry>& found) const;

  static constexpr std::size_t MaximumVisits = 2'000;

 private:
  struct Node {
    Box box;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t left = 0;  // 0: a leaf
    std::uint32_t right = 0;
    std::uint32_t parent = 0;
    std::uint32_t remaining = 0;
  };
  struct Search;

  std::uint32_t Build(std::uint32_t begin, std::uint32_t end, std::uint32_t parent);
  void Visit(std::uint32_t node, Search& search) const;

  std::vector<Entry> m_entries;
  std::vector<std::uint32_t> m_leaves;  // of each entry
  std::vector<bool> m_isThere;          // of each entry
  std::vector<Node> m_nodes;
  std::vector<std::uint32_t> m_firstOfOwner;  // into m_ofOwner
  std::vector<std::uint32_t> m_ofOwner;       // entries, sorted by their owner
};

}  // namespace rastrel::cutting
