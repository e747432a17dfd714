#include "cutting/toolpath/point_index.h"

#include <algorithm>

namespace rastrel::cutting {
namespace {

constexpr std::uint32_t LeafSize = 8;

double SquareDistance(Point a, Point b) {
  return (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
}

double SquareDistance(Point point, const Box& box) {
  const double x = std::max({box.left - point.x, 0.0, point.x - box.right});
  const double y = std::max({box.bottom - point.y, 0.0, point.y - box.top});
  return x * x + y * y;
}

}  // namespace

struct PointIndex::Search {
  struct Hit {
    double distance;
    std::uint32_t entry;
  };
  Point from;
  std::size_t count = 1;
  std::optional<std::uint32_t> own{};
  std::size_t visits = 0;
  std::vector<Hit> hits{};  // the nearest first, `count` at most

  [[nodiscard]] bool CanTake(double distance) const {
    return hits.size() < count || distance < hits.back().distance;
  }
  void Take(double distance, std::uint32_t entry) {
    const auto place = std::ranges::upper_bound(hits, distance, {}, &Hit::distance);
    hits.insert(place, {distance, entry});
    if (hits.size() > count) hits.pop_back();
  }
};

PointIndex::PointIndex(std::vector<Entry> entries, std::size_t owners)
    : m_entries(std::move(entries)),
      m_leaves(m_entries.size()),
      m_isThere(m_entries.size(), true),
      m_firstOfOwner(owners + 1) {
  const auto count = static_cast<std::uint32_t>(m_entries.size());
  if (count > 0) Build(0, count, 0);
  for (const Entry& entry : m_entries) ++m_firstOfOwner[entry.owner + 1];
  for (std::size_t i = 1; i <= owners; ++i) m_firstOfOwner[i] += m_firstOfOwner[i - 1];
  m_ofOwner.resize(count);
  std::vector<std::uint32_t> next = m_firstOfOwner;
  for (std::uint32_t i = 0; i < count; ++i) m_ofOwner[next[m_entries[i].owner]++] = i;
}

std::uint32_t PointIndex::Build(std::uint32_t begin, std::uint32_t end, std::uint32_t parent) {
  const auto index = static_cast<std::uint32_t>(m_nodes.size());
  Node node{.box = {},
            .begin = begin,
            .end = end,
            .left = 0,
            .right = 0,
            .parent = parent,
            .remaining = end - begin};
  const bool isLeaf = end - begin <= LeafSize;
  Box& box = node.box;
  box = {m_entries[begin].place.x, m_entries[begin].place.y, m_entries[begin].place.x,
         m_entries[begin].place.y};
  for (std::uint32_t i = begin; i < end; ++i) {
    const Point place = m_entries[i].place;
    box.left = std::min(box.left, place.x);
    box.right = std::max(box.right, place.x);
    box.bottom = std::min(box.bottom, place.y);
    box.top = std::max(box.top, place.y);
    if (isLeaf) m_leaves[i] = index;
  }
  m_nodes.push_back(node);
  if (isLeaf) return index;
  const bool isWide = node.box.Width() >= node.box.Height();
  const std::uint32_t middle = begin + (end - begin) / 2;
  std::nth_element(m_entries.begin() + begin, m_entries.begin() + middle, m_entries.begin() + end,
                   [isWide](const Entry& a, const Entry& b) {
                     return isWide ? a.place.x < b.place.x : a.place.y < b.place.y;
                   });
  const std::uint32_t left = Build(begin, middle, index);
  const std::uint32_t right = Build(middle, end, index);
  m_nodes[index].left = left;
  m_nodes[index].right = right;
  return index;
}

void PointIndex::Remove(std::uint32_t owner) {
  for (std::uint32_t i = m_firstOfOwner[owner]; i < m_firstOfOwner[owner + 1]; ++i) {
    const std::uint32_t entry = m_ofOwner[i];
    if (!m_isThere[entry]) continue;
    m_isThere[entry] = false;
    std::uint32_t node = m_leaves[entry];
    while (true) {
      --m_nodes[node].remaining;
      if (node == 0) break;
      node = m_nodes[node].parent;
    }
  }
}

void PointIndex::Visit(std::uint32_t index, Search& search) const {
  const Node& node = m_nodes[index];
  if (node.remaining == 0) return;
  if (!search.hits.empty() && search.visits >= MaximumVisits) return;
  ++search.visits;
  if (!search.CanTake(SquareDistance(search.from, node.box))) return;
  if (node.left == 0) {
    for (std::uint32_t i = node.begin; i < node.end; ++i) {
      if (!m_isThere[i] || m_entries[i].owner == search.own) continue;
      const double distance = SquareDistance(search.from, m_entries[i].place);
      if (search.CanTake(distance)) search.Take(distance, i);
    }
    return;
  }
  const double left = SquareDistance(search.from, m_nodes[node.left].box);
  const double right = SquareDistance(search.from, m_nodes[node.right].box);
  Visit(left <= right ? node.left : node.right, search);
  Visit(left <= right ? node.right : node.left, search);
}

std::optional<PointIndex::Entry> PointIndex::Nearest(Point from) const {
  Search search{.from = from};
  if (!m_nodes.empty()) Visit(0, search);
  if (search.hits.empty()) return std::nullopt;
  return m_entries[search.hits.front().entry];
}

void PointIndex::FindNearest(Point from, std::size_t count, std::uint32_t own,
                             std::vector<Entry>& found) const {
  found.clear();
  Search search{.from = from, .count = count, .own = own};
  if (!m_nodes.empty() && count > 0) Visit(0, search);
  for (const Search::Hit& hit : search.hits) found.push_back(m_entries[hit.entry]);
}

}  // namespace rastrel::cutting
