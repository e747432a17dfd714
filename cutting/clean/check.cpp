#include "cutting/clean/check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <tuple>
#include <utility>

#include "cutting/clean/covering.h"
#include "cutting/clean/survey.h"

namespace rastrel::cutting {
namespace {

using namespace clean;

constexpr std::array<std::string_view, 11> Names{
    "unusable", "open",          "unjoined-ends", "duplicate",     "overlap", "tiny",
    "spike",    "self-crossing", "crossing",      "outside-sheet", "covered"};

Point Between(Point a, Point b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }

class Checker {
 public:
  Checker(const CutJob& job, const CheckLimits& limits)
      : m_Job(job), m_Survey(SurveyOf(job, limits)) {
    const std::size_t count = m_Survey.flat.contours.size();
    m_Left.assign(count, false);
    m_Report.contours = count;
    m_Report.complete = m_Survey.complete;
    for (const CutPath& path : job.paths) m_Report.paths += HasTool(path.operation) ? 1U : 0U;
    for (const FlatContour& contour : m_Survey.flat.contours) m_Report.length += contour.length;
  }

  CheckReport Run() {
    AddWholeContours();
    AddEnds();
    for (const SpikeAt& spike : m_Survey.spikes)
      Add({FaultKind::Spike, spike.place, spike.place, spike.spike.tip, spike.spike.length});
    AddRuns();
    AddOutside();
    AddCovered();
    std::ranges::sort(m_Report.faults, {}, [](const Fault& fault) {
      return std::tuple(fault.contour, fault.kind, fault.place.x, fault.place.y, fault.other);
    });
    return std::move(m_Report);
  }

 private:
  void Add(const Fault& fault) {
    if (m_Report.faults.size() < MaximumFaults)
      m_Report.faults.push_back(fault);
    else
      m_Report.complete = false;
  }

  [[nodiscard]] const Contour& Given(ContourPlace place) const {
    return m_Job.paths[place.path].contours[place.contour];
  }

  void AddWholeContours() {
    for (std::size_t i = 0; i < m_Left.size(); ++i) {
      const FlatContour& contour = m_Survey.flat.contours[i];
      const ContourPlace place = contour.place;
      const Contour& given = Given(place);
      if (!IsUsable(given)) {
        Add({FaultKind::Unusable, place, place, {}, 0});
        m_Left[i] = true;
      } else if (m_Survey.sameAs[i]) {
        const ContourPlace other = m_Survey.flat.contours[*m_Survey.sameAs[i]].place;
        Add({FaultKind::Duplicate, place, other, given.start, LengthOf(given)});
        m_Left[i] = true;
      } else if (IsTiny(given, contour.operation, m_Survey.limits.tinySize)) {
        Add({FaultKind::Tiny, place, place, given.start, LengthOf(given)});
        m_Tiny.push_back(i);
      }
    }
  }

  void AddEnds() {
    const JobEnds ends = EndsOf(m_Survey.job, m_Survey.flat, m_Survey.limits.joining, m_Left);
    std::vector<bool> met(ends.ends.size());
    for (const EndPair& pair : ends.pairs) {
      const OpenEnd& first = ends.ends[pair.first];
      const OpenEnd& second = ends.ends[pair.second];
      met[pair.first] = met[pair.second] = true;
      // A crumb's own ends are no gap.
      if (first.contour == second.contour && IsTinyContour(first.contour)) continue;
      Add({FaultKind::UnjoinedEnds, PlaceOf(first.contour), PlaceOf(second.contour),
           Between(first.point, second.point), pair.gap});
    }
    for (std::size_t i = 0; i < met.size(); i += 2) {
      const std::size_t contour = ends.ends[i].contour;
      if ((met[i] && met[i + 1]) || IsTinyContour(contour)) continue;
      const Point place = ends.ends[met[i] ? i + 1 : i].point;
      Add({FaultKind::Open, PlaceOf(contour), PlaceOf(contour), place,
           m_Survey.flat.contours[contour].length});
    }
  }

  void AddRuns() {
    for (const ContactRun& run : m_Survey.overlaps) {
      const FlatContour& on = m_Survey.flat.contours[run.on];
      double middle = run.from + run.length / 2;
      if (middle > on.length) middle -= on.length;
      Add({FaultKind::Overlap, on.place, PlaceOf(run.of), PointAlong(m_Survey.flat, on, middle),
           run.length});
    }
    for (const ContactRun& run : m_Survey.crossings) {
      const bool own = run.on == run.of;
      for (const Point place : run.crossings)
        Add({own ? FaultKind::SelfCrossing : FaultKind::Crossing, PlaceOf(run.on), PlaceOf(run.of),
             place, m_Survey.flat.contours[run.on].length});
    }
  }

  void AddOutside() {
    if (!(m_Job.width > 0 && m_Job.height > 0)) return;
    for (std::size_t i = 0; i < m_Left.size(); ++i) {
      if (m_Survey.sameAs[i]) continue;
      const FlatContour& contour = m_Survey.flat.contours[i];
      double outside = 0;
      double farthest = 0;
      Point place;
      for (std::uint32_t k = 0; k < contour.lines; ++k) {
        const FlatLine& line = m_Survey.flat.lines[contour.firstLine + k];
        outside += line.length * OutsideShare(line);
        for (const Point point : {Millimeters(line.from), Millimeters(line.to)}) {
          if (DistanceOutside(point) <= farthest) continue;
          farthest = DistanceOutside(point);
          place = point;
        }
      }
      if (farthest > m_Survey.limits.tolerance)
        Add({FaultKind::OutsideSheet, contour.place, contour.place, place, outside});
    }
  }

  [[nodiscard]] double DistanceOutside(Point point) const {
    return std::max({-point.x, point.x - m_Job.width, -point.y, point.y - m_Job.height, 0.0});
  }

  [[nodiscard]] double OutsideShare(const FlatLine& line) const {
    const Point from = Millimeters(line.from);
    const Point to = Millimeters(line.to);
    double enters = 0;
    double leaves = 1;
    const auto clip = [&](double start, double step, double high) {
      if (step == 0) {
        if (start < 0 || start > high) leaves = -1;
        return;
      }
      const double a = -start / step;
      const double b = (high - start) / step;
      enters = std::max(enters, std::min(a, b));
      leaves = std::min(leaves, std::max(a, b));
    };
    clip(from.x, to.x - from.x, m_Job.width);
    clip(from.y, to.y - from.y, m_Job.height);
    return 1 - std::max(0.0, leaves - enters);
  }

  void AddCovered() {
    const Coverings coverings = FindCoverings(m_Survey);
    m_Report.complete = m_Report.complete && coverings.complete;
    for (const Covering& covering : coverings.found) {
      const ContourPlace place = PlaceOf(covering.contour);
      Add({FaultKind::Covered,
           place,
           {covering.path, 0},
           Given(place).start,
           LengthOf(Given(place))});
    }
  }

  [[nodiscard]] ContourPlace PlaceOf(std::size_t contour) const {
    return m_Survey.flat.contours[contour].place;
  }

  [[nodiscard]] bool IsTinyContour(std::size_t contour) const {
    return std::ranges::binary_search(m_Tiny, contour);
  }

  const CutJob& m_Job;
  Survey m_Survey;
  std::vector<bool> m_Left;         ///< contours of which nothing else is said
  std::vector<std::size_t> m_Tiny;  ///< in order
  CheckReport m_Report;
};

}  // namespace

std::string_view NameOf(FaultKind kind) { return Names[static_cast<std::size_t>(kind)]; }

CheckReport Check(const CutJob& job, const CheckLimits& limits) {
  return Checker(job, limits).Run();
}

}  // namespace rastrel::cutting
