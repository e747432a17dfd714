#include "cutting/clean/heal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

#include "cutting/clean/covering.h"
#include "cutting/clean/joining.h"
#include "cutting/clean/survey.h"
#include "cutting/clean/uniting.h"

namespace rastrel::cutting {
namespace {

using namespace clean;

constexpr std::array<std::string_view, 7> Names{
    "dropped-unusable", "removed-spike", "dropped-duplicate", "joined", "dropped-tiny",
    "dropped-covered",  "united"};

Point Between(Point a, Point b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }

// Contours stay in their places until the end, so that all repairs speak of the given job; one that
// is dropped has no segments in the meantime.
class Healer {
 public:
  Healer(CutJob job, const HealLimits& limits)
      : m_Limits(UsableLimits(limits.faults)), m_Unite(limits.unite) {
    m_Result.job = std::move(job);
    for (const CutPath& path : m_Result.job.paths)
      m_Dropped.emplace_back(path.contours.size(), false);
  }

  HealResult Run() {
    DropUnusable();
    Survey survey = TakeSurvey();
    for (const SpikeAt& spike : survey.spikes)
      m_Result.repairs.push_back({RepairKind::RemovedSpike, spike.place, spike.place,
                                  spike.spike.tip, spike.spike.length});
    DropDuplicates(survey);
    Join(survey);
    DropTiny();
    // A contour in pieces is seen to be a duplicate when it is whole.
    if (m_Unite) {
      survey = TakeSurvey();
      DropDuplicates(survey);
    } else if (!m_Joined.empty()) {
      DropDuplicates(SurveyOf(LikeJoined(), m_Limits));
    }
    if (m_Unite) {
      DropCovered(survey);
      UniteAreas(survey);
    }
    RemoveDropped();
    return std::move(m_Result);
  }

 private:
  // Leaves the job without spikes.
  Survey TakeSurvey() {
    Survey survey = SurveyOf(std::move(m_Result.job), m_Limits);
    m_Result.job = survey.job;
    m_Result.complete = m_Result.complete && survey.complete;
    return survey;
  }

  Contour& At(ContourPlace place) { return m_Result.job.paths[place.path].contours[place.contour]; }
  std::vector<bool>::reference IsDropped(ContourPlace place) {
    return m_Dropped[place.path][place.contour];
  }

  void Clear(ContourPlace place) {
    At(place) = {};
    IsDropped(place) = true;
  }

  void Drop(RepairKind kind, ContourPlace place, ContourPlace other) {
    const Contour& contour = At(place);
    const bool usable = kind != RepairKind::DroppedUnusable;
    m_Result.repairs.push_back(
        {kind, place, other, usable ? contour.start : Point{}, usable ? LengthOf(contour) : 0});
    Clear(place);
  }

  template <typename Visit>
  void ForEachContour(const Visit& visit) {
    for (std::size_t path = 0; path < m_Result.job.paths.size(); ++path) {
      if (!HasTool(m_Result.job.paths[path].operation)) continue;
      for (std::size_t i = 0; i < m_Result.job.paths[path].contours.size(); ++i) {
        if (!m_Dropped[path][i]) visit(ContourPlace{path, i});
      }
    }
  }

  void DropUnusable() {
    ForEachContour([&](ContourPlace place) {
      if (!IsUsable(At(place))) Drop(RepairKind::DroppedUnusable, place, place);
    });
  }

  void DropDuplicates(const Survey& survey) {
    const std::vector<std::size_t> ways = WaysOfWorking(m_Result.job);
    for (std::size_t i = 0; i < survey.flat.contours.size(); ++i) {
      if (!survey.sameAs[i]) continue;
      const ContourPlace place = survey.flat.contours[i].place;
      const ContourPlace other = survey.flat.contours[*survey.sameAs[i]].place;
      if (ways[place.path] == ways[other.path]) Drop(RepairKind::DroppedDuplicate, place, other);
    }
  }

  void Join(const Survey& survey) {
    std::vector<bool> left(survey.flat.contours.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
      const ContourPlace place = survey.flat.contours[i].place;
      left[i] = IsDropped(place) || (survey.sameAs[i].has_value());
    }
    const JobEnds ends = EndsOf(m_Result.job, survey.flat, m_Limits.joining, left);
    for (const EndPair& pair : ends.pairs) {
      const OpenEnd& first = ends.ends[pair.first];
      const OpenEnd& second = ends.ends[pair.second];
      m_Result.repairs.push_back({RepairKind::Joined, survey.flat.contours[first.contour].place,
                                  survey.flat.contours[second.contour].place,
                                  Between(first.point, second.point), pair.gap});
    }
    for (const Chain& chain : ChainsOf(ends.ends, ends.pairs)) JoinChain(survey.flat, chain);
  }

  void JoinChain(const FlatJob& flat, const Chain& chain) {
    Contour joined;
    ContourPlace home = flat.contours[chain.links.front().contour].place;
    for (const ChainLink& link : chain.links) {
      const ContourPlace place = flat.contours[link.contour].place;
      Contour next = link.reversed ? Reversed(At(place)) : std::move(At(place));
      if (&link == &chain.links.front()) {
        joined = std::move(next);
      } else {
        if (joined.End() != next.start) joined.segments.push_back(LineTo(next.start));
        joined.segments.insert(joined.segments.end(), next.segments.begin(), next.segments.end());
      }
      Clear(place);
      home = std::min(home, place);
    }
    joined.closed = chain.closes;
    At(home) = std::move(joined);
    IsDropped(home) = false;
    m_Joined.push_back(home);
  }

  // The job with only those contours that may lie where a joined one does: the corners of their
  // boxes lie in the same cells of a grid. A row of plates has many that begin as far to the left,
  // and as many that begin as high: only both together tell them apart.
  CutJob LikeJoined() {
    using Cell = std::pair<std::int64_t, std::int64_t>;
    const double reach = 2 * m_Limits.tolerance;
    const auto cellOf = [&](double left, double bottom) {
      return Cell{static_cast<std::int64_t>(std::floor(left / (2 * reach))),
                  static_cast<std::int64_t>(std::floor(bottom / (2 * reach)))};
    };
    std::vector<Cell> cells;
    for (const ContourPlace place : m_Joined) {
      const Box box = BoxOf(At(place));
      for (const double x : {-reach, reach}) {
        for (const double y : {-reach, reach})
          cells.push_back(cellOf(box.left + x, box.bottom + y));
      }
    }
    std::ranges::sort(cells);
    CutJob like = m_Result.job;
    for (CutPath& path : like.paths) {
      for (Contour& contour : path.contours) {
        if (contour.segments.empty()) continue;
        const auto isLike = [&] {
          const Box box = BoxOf(contour);
          return std::ranges::binary_search(cells, cellOf(box.left, box.bottom));
        };
        if (!IsUsable(contour) || !isLike()) contour = {};
      }
    }
    return like;
  }

  void DropTiny() {
    ForEachContour([&](ContourPlace place) {
      const Operation operation = m_Result.job.paths[place.path].operation;
      if (IsTiny(At(place), operation, m_Limits.tinySize))
        Drop(RepairKind::DroppedTiny, place, place);
    });
  }

  void DropCovered(const Survey& survey) {
    const Coverings coverings = FindCoverings(survey);
    m_Result.complete = m_Result.complete && coverings.complete;
    for (const Covering& covering : coverings.found) {
      const ContourPlace place = survey.flat.contours[covering.contour].place;
      if (!IsDropped(place)) Drop(RepairKind::DroppedCovered, place, {covering.path, 0});
    }
  }

  struct Overlapping {
    ContourPlace first;
    ContourPlace second;
    Point place;
  };

  // Contours whose areas overlap.
  std::vector<Overlapping> FindOverlapping(const Survey& survey) {
    const std::vector<std::size_t> ways = WaysOfWorking(m_Result.job);
    std::vector<Overlapping> found;
    const auto add = [&](const ContactRun& run, bool crosses) {
      const ContourPlace first = survey.flat.contours[run.of].place;
      const ContourPlace second = survey.flat.contours[run.on].place;
      if (IsDropped(first) || IsDropped(second) || ways[first.path] != ways[second.path]) return;
      if (!At(first).closed || !At(second).closed) return;
      if (!IsOutline(survey.flat.contours[run.on].operation)) return;
      // Plates that share an edge have nothing else in common.
      if (!crosses &&
          (first == second || CommonArea(At(first), At(second), survey.flat.tolerance) <=
                                  run.length * m_Limits.tolerance))
        return;
      const FlatContour& on = survey.flat.contours[run.on];
      found.push_back(
          {first, second, crosses ? run.crossings.front() : PointAlong(survey.flat, on, run.from)});
    };
    for (const ContactRun& run : survey.crossings) add(run, true);
    for (const ContactRun& run : survey.overlaps) add(run, false);
    return found;
  }

  void UniteAreas(const Survey& survey) {
    const std::vector<Overlapping> overlapping = FindOverlapping(survey);
    // Paths whose contours overlap belong together, each with its first overlap.
    std::vector<std::size_t> root(m_Result.job.paths.size());
    std::iota(root.begin(), root.end(), std::size_t{0});
    const auto rootOf = [&](std::size_t path) {
      while (root[path] != path) path = root[path] = root[root[path]];
      return path;
    };
    for (const Overlapping& pair : overlapping) {
      const std::size_t first = rootOf(pair.first.path);
      const std::size_t second = rootOf(pair.second.path);
      root[std::max(first, second)] = std::min(first, second);
    }
    std::vector<std::vector<std::size_t>> paths(root.size());
    for (std::size_t path = 0; path < root.size(); ++path) paths[rootOf(path)].push_back(path);
    std::vector<bool> done(root.size());
    for (const Overlapping& pair : overlapping) {
      const std::size_t together = rootOf(pair.first.path);
      if (done[together]) continue;
      done[together] = true;
      UnitePaths(paths[together], pair, survey.flat.tolerance);
    }
  }

  void UnitePaths(const std::vector<std::size_t>& paths, const Overlapping& pair,
                  double tolerance) {
    std::vector<AreaContour> contours;
    std::vector<ContourPlace> places;
    for (const std::size_t path : paths) {
      for (std::size_t i = 0; i < m_Dropped[path].size(); ++i) {
        const ContourPlace place{path, i};
        if (IsDropped(place) || !At(place).closed) continue;
        contours.push_back({&At(place), path, m_Result.job.paths[path].paint.kind});
        places.push_back(place);
      }
    }
    auto united = Unite(contours, tolerance);
    if (!united) {
      m_Result.complete = false;
      return;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (!united->kept[i]) Clear(places[i]);
    }
    double length = 0;
    for (Contour& contour : united->added) {
      length += LengthOf(contour);
      m_Result.job.paths[paths.front()].contours.push_back(std::move(contour));
      m_Dropped[paths.front()].push_back(false);
    }
    m_Result.repairs.push_back({RepairKind::United, pair.first, pair.second, pair.place, length});
  }

  void RemoveDropped() {
    std::vector<CutPath>& paths = m_Result.job.paths;
    std::size_t number = 0;
    std::erase_if(paths, [&](CutPath& path) {
      const std::vector<bool>& dropped = m_Dropped[number++];
      std::size_t contour = 0;
      const std::size_t gone =
          std::erase_if(path.contours, [&](const Contour&) { return dropped[contour++]; });
      return gone > 0 && path.contours.empty();
    });
  }

  CheckLimits m_Limits;
  bool m_Unite;
  HealResult m_Result;
  std::vector<ContourPlace> m_Joined;
  std::vector<std::vector<bool>> m_Dropped;  ///< by path and contour
};

}  // namespace

std::string_view NameOf(RepairKind kind) { return Names[static_cast<std::size_t>(kind)]; }

HealResult Heal(CutJob job, const HealLimits& limits) {
  return Healer(std::move(job), limits).Run();
}

}  // namespace rastrel::cutting
