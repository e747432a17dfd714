#include "cutting/frame/mark_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "cutting/frame/map_estimate.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

using Points = std::vector<Point>;

constexpr double MaximumStretch = 2;  // of a distance between two marks
constexpr double MinimumSpread = 0.01;
// Of measuring itself, as a share of the limit: below that, residuals are not compared.
constexpr double Noise = 1.0 / 6;
// All but one mark fit so many times better without that one than without any other.
constexpr double Distinct = 3;

std::string Millimetres(double length) { return os::ShortDecimal(length, 2) + " mm"; }

std::string MarkName(std::size_t index) { return "mark " + std::to_string(index + 1); }

Failure BadMarks(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

std::size_t MarksFor(MapKind kind) {
  switch (kind) {
    case MapKind::Similar: return 2;
    case MapKind::Affine: return 3;
    case MapKind::Projective: return 4;
  }
  return 0;
}

MapKind KindFor(std::size_t marks) {
  if (marks >= 4) return MapKind::Projective;
  return marks == 3 ? MapKind::Affine : MapKind::Similar;
}

Expected<void> CheckNumbers(const Points& printed, const Points& measured) {
  if (printed.size() != measured.size())
    return BadMarks("the job has " + std::to_string(printed.size()) + " marks, and " +
                    std::to_string(measured.size()) + " are measured");
  if (printed.size() < 2)
    return BadMarks("a fit takes 2 marks at least, and the job has " +
                    std::to_string(printed.size()));
  if (printed.size() > MaximumFittedMarks)
    return BadMarks("a fit takes " + std::to_string(MaximumFittedMarks) +
                    " marks at most, and the job has " + std::to_string(printed.size()));
  const auto isBad = [](Point point) { return !std::isfinite(point.x) || !std::isfinite(point.y); };
  for (std::size_t i = 0; i < printed.size(); ++i)
    if (isBad(printed[i]) || isBad(measured[i]))
      return BadMarks("the place of " + MarkName(i) + " is no number");
  return {};
}

Expected<void> CheckDistances(const Points& printed, const Points& measured) {
  for (std::size_t i = 0; i < printed.size(); ++i) {
    for (std::size_t k = i + 1; k < printed.size(); ++k) {
      const double there = Distance(printed[i], printed[k]);
      const double here = Distance(measured[i], measured[k]);
      const std::string names = "marks " + std::to_string(i + 1) + " and " + std::to_string(k + 1);
      if (there == 0) return BadMarks(names + " of the job are at one place");
      if (here * MaximumStretch < there || here > there * MaximumStretch)
        return BadMarks(names + " are " + Millimetres(there) + " apart on the page and measured " +
                        Millimetres(here) + " apart");
    }
  }
  return {};
}

// The least over the largest extent of the points around their middle, whatever their direction:
// of the axes of their ellipse of inertia.
double SpreadOf(const Points& points) {
  const auto count = static_cast<double>(points.size());
  Point middle;
  for (const Point point : points) {
    middle.x += point.x / count;
    middle.y += point.y / count;
  }
  double xx = 0;
  double xy = 0;
  double yy = 0;
  for (const Point point : points) {
    const double x = point.x - middle.x;
    const double y = point.y - middle.y;
    xx += x * x;
    xy += x * y;
    yy += y * y;
  }
  const double root = std::hypot((xx - yy) / 2, xy);
  const double large = (xx + yy) / 2 + root;
  // The product of the two is the determinant, which loses fewer digits than their difference.
  const double small = std::max((xx * yy - xy * xy) / large, 0.0);
  return std::sqrt(small / large);
}

Expected<void> CheckSpread(const Points& printed, const Points& measured) {
  if (printed.size() < 3) return {};
  if (SpreadOf(printed) < MinimumSpread)
    return BadMarks("all marks of the job lie almost on one line, across which nothing is known");
  if (SpreadOf(measured) < MinimumSpread)
    return BadMarks("the measured marks lie almost on one line, and the printed ones do not");
  const auto affine = EstimatedMap(MapKind::Affine, printed, measured);
  if (affine && affine->m[0] * affine->m[4] - affine->m[1] * affine->m[3] < 0)
    return BadMarks(
        "the measured marks run the other way round than the printed ones, as in a mirror: they "
        "are "
        "measured in another order, or with an axis reversed");
  return {};
}

Points Without(const Points& points, std::size_t left) {
  Points others = points;
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
  return others;
}

// A mark without which the others fit.
struct Stray {
  std::size_t index = 0;
  double distance = 0;  ///< of it from its place then
  double residual = 0;  ///< the largest of the others
};

// The mark whose leaving makes the largest residual of the others least. Nothing if another one's
// does so nearly as well.
std::optional<Stray> FindStray(MapKind kind, const Points& printed, const Points& measured,
                               double limit) {
  std::optional<Stray> best;
  double second = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < printed.size(); ++i) {
    const Points from = Without(printed, i);
    const Points to = Without(measured, i);
    const auto map = EstimatedMap(kind, from, to);
    if (!map) return std::nullopt;
    const auto residuals = ResidualsOf(*map, from, to);
    const double residual = *std::max_element(residuals.begin(), residuals.end());
    if (best && residual >= best->residual) {
      second = std::min(second, residual);
      continue;
    }
    if (best) second = best->residual;
    best = Stray{i, Distance(map->Apply(printed[i]), measured[i]), residual};
  }
  if (!best || best->residual > limit) return std::nullopt;
  if (second < Distinct * std::max(best->residual, Noise * limit)) return std::nullopt;
  return best;
}

// Tries the maps with the least freedom first: most sheets are only turned and stretched, and a
// fit with less is the more certain. Each needs one mark more than fix it, and the stray.
std::optional<Stray> FindStray(const Points& printed, const Points& measured, double limit) {
  for (const MapKind kind : {MapKind::Similar, MapKind::Affine, MapKind::Projective}) {
    if (printed.size() < MarksFor(kind) + 2) return std::nullopt;
    if (const auto stray = FindStray(kind, printed, measured, limit)) return stray;
  }
  return std::nullopt;
}

Failure StrayFailure(const Stray& stray) {
  return BadMarks(MarkName(stray.index) + " does not fit: it is " + Millimetres(stray.distance) +
                  " from the place where all other marks have it");
}

Expected<void> CheckResiduals(const MarkFit& fit, const Points& printed, const Points& measured,
                              double limit) {
  if (fit.LargestResidual() <= limit) return {};
  if (const auto stray = FindStray(printed, measured, limit)) return StrayFailure(*stray);
  const auto worst = std::max_element(fit.residuals.begin(), fit.residuals.end());
  return BadMarks("the marks do not fit together: " +
                  MarkName(static_cast<std::size_t>(worst - fit.residuals.begin())) + " is " +
                  Millimetres(*worst) + " from its place, where " + Millimetres(limit) +
                  " are allowed");
}

void SetForm(MarkFit& fit, const Points& printed) {
  Point middle;
  for (const Point point : printed) {
    middle.x += point.x / static_cast<double>(printed.size());
    middle.y += point.y / static_cast<double>(printed.size());
  }
  const Transform at = fit.map.At(middle);
  const double degree = 180 / std::numbers::pi;
  fit.scaleX = std::hypot(at.a, at.b);
  fit.scaleY = (at.a * at.d - at.b * at.c) / fit.scaleX;
  fit.turn = std::atan2(at.b, at.a) * degree;
  fit.shear = std::atan2(at.a * at.c + at.b * at.d, at.a * at.d - at.b * at.c) * degree;
}

// The sign of a map is free. Its weights are above 0 here, or the marks lie on both sides of its
// horizon.
bool HasSoundWeights(const FrameMap& map, const Points& printed) {
  return std::all_of(printed.begin(), printed.end(),
                     [&](Point point) { return map.Weight(point) > 0; });
}

}  // namespace

std::string_view NameOf(MapKind kind) {
  switch (kind) {
    case MapKind::Similar: return "move, turn and scale";
    case MapKind::Affine: return "move, turn, scales and shear";
    case MapKind::Projective: return "projective map";
  }
  return "";
}

double MarkFit::LargestResidual() const {
  return residuals.empty() ? 0 : *std::max_element(residuals.begin(), residuals.end());
}

Expected<MarkFit> FitMarks(const Points& printed, const Points& measured, double limit,
                           std::optional<MapKind> kind) {
  if (auto checked = CheckNumbers(printed, measured); !checked) return checked.Error();
  if (auto checked = CheckDistances(printed, measured); !checked) return checked.Error();
  if (auto checked = CheckSpread(printed, measured); !checked) return checked.Error();
  MarkFit fit;
  fit.kind = kind.value_or(KindFor(printed.size()));
  if (printed.size() < MarksFor(fit.kind))
    return BadMarks("a " + std::string(NameOf(fit.kind)) + " takes " +
                    std::to_string(MarksFor(fit.kind)) + " marks, and the job has " +
                    std::to_string(printed.size()));
  const auto map = EstimatedMap(fit.kind, printed, measured);
  if (!map || !HasSoundWeights(*map, printed))
    return BadMarks("too many of the marks lie on one line: they fix no " +
                    std::string(NameOf(fit.kind)));
  fit.map = *map;
  fit.residuals = ResidualsOf(fit.map, printed, measured);
  fit.isChecked = printed.size() > MarksFor(fit.kind);
  SetForm(fit, printed);
  if (auto checked = CheckResiduals(fit, printed, measured, limit); !checked)
    return checked.Error();
  return fit;
}

std::vector<std::string> Describe(const MarkFit& fit) {
  std::vector<std::string> lines;
  std::string form = std::string(NameOf(fit.kind)) + " by " + std::to_string(fit.residuals.size()) +
                     " marks: turned by " + os::ShortDecimal(fit.turn, 3) + " degrees, scaled by " +
                     os::ShortDecimal(fit.scaleX, 5);
  if (fit.kind != MapKind::Similar)
    form += " and " + os::ShortDecimal(fit.scaleY, 5) + ", sheared by " +
            os::ShortDecimal(fit.shear, 3) + " degrees";
  lines.push_back(std::move(form));
  for (std::size_t i = 0; i < fit.residuals.size(); ++i)
    lines.push_back(MarkName(i) + ": residual " + os::ShortDecimal(fit.residuals[i], 3) + " mm");
  if (!fit.isChecked)
    lines.push_back("as many marks fix such a map exactly, and a wrong one can't be seen");
  return lines;
}

}  // namespace rastrel::cutting
