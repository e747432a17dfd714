#include "cutting/clean/survey.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>
#include <utility>

#include "cutting/clean/same_contours.h"

namespace rastrel::cutting::clean {
namespace {

constexpr double SmallestLimit = 1e-6;
// Of the tolerance: a curve that only touches spreads by 0.28 of it, and one line beside another,
// both flattened, by less than 0.1.
constexpr double SpreadOfOverlap = 0.15;
// Of the tolerance, how far the flat lines may be from their curves.
constexpr double FlatteningShare = 0.25;

void TakeSpikes(Survey& survey) {
  for (std::size_t path = 0; path < survey.job.paths.size(); ++path) {
    CutPath& cut = survey.job.paths[path];
    if (!HasTool(cut.operation)) continue;
    for (std::size_t number = 0; number < cut.contours.size(); ++number) {
      Contour& contour = cut.contours[number];
      if (!IsUsable(contour)) continue;
      WithoutSpikes without = RemoveSpikes(contour, survey.limits.spikeWidth);
      if (without.spikes.empty()) continue;
      contour = std::move(without.contour);
      for (const Spike& spike : without.spikes) survey.spikes.push_back({{path, number}, spike});
    }
  }
}

using Pair = std::pair<std::uint32_t, std::uint32_t>;

// The pairs of which the first lies on the second all along, in order.
std::vector<Pair> CoveredPairs(const FlatJob& flat, const std::vector<ContactRun>& runs,
                               double tolerance) {
  std::vector<Pair> covered;
  for (std::size_t i = 0; i < runs.size();) {
    const Pair pair{runs[i].on, runs[i].of};
    double length = 0;
    for (; i < runs.size() && Pair{runs[i].on, runs[i].of} == pair; ++i) length += runs[i].length;
    if (pair.first == pair.second) continue;
    if (length >= flat.contours[pair.first].length - tolerance / 2) covered.push_back(pair);
  }
  return covered;
}

void FindDuplicates(Survey& survey, const std::vector<ContactRun>& runs, double tolerance) {
  const std::vector<Pair> covered = CoveredPairs(survey.flat, runs, tolerance);
  for (const auto& [on, of] : covered) {
    if (on < of || survey.sameAs[on] || survey.sameAs[of]) continue;
    if (std::ranges::binary_search(covered, Pair{of, on})) survey.sameAs[on] = of;
  }
}

void TakeRuns(Survey& survey, const std::vector<ContactRun>& runs, double tolerance) {
  for (const ContactRun& run : runs) {
    if (run.on < run.of || survey.sameAs[run.on] || survey.sameAs[run.of]) continue;
    if (run.length >= survey.limits.overlapLength && run.spread <= SpreadOfOverlap * tolerance)
      survey.overlaps.push_back(run);
    else if (!run.crossings.empty() && IsOutline(survey.flat.contours[run.on].operation))
      survey.crossings.push_back(run);
  }
}

// Equal for paths that are worked alike.
using WayOfWorking = std::pair<std::string, std::array<std::uint64_t, 11>>;

WayOfWorking WorkingOf(const CutPath& path) {
  const ToolSettings& settings = path.settings;
  const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
  const auto whole = [](int value) { return static_cast<std::uint64_t>(value); };
  return {
      settings.tool,
      {whole(static_cast<int>(path.operation)), settings.speed ? 1U : 0U,
       bits(settings.speed.value_or(0)), settings.force ? 1U : 0U, bits(settings.force.value_or(0)),
       whole(settings.passes) << 32U | whole(settings.bridges), whole(settings.order),
       bits(settings.kerf), bits(settings.overcut), bits(settings.leadIn),
       bits(settings.bridgeWidth)}};
}

}  // namespace

std::vector<std::size_t> WaysOfWorking(const CutJob& job) {
  std::map<WayOfWorking, std::size_t> groups;
  std::vector<std::size_t> ofPath;
  ofPath.reserve(job.paths.size());
  for (const CutPath& path : job.paths)
    ofPath.push_back(groups.try_emplace(WorkingOf(path), groups.size()).first->second);
  return ofPath;
}

CheckLimits UsableLimits(CheckLimits limits) {
  for (double* value : {&limits.joining, &limits.tolerance, &limits.tinySize, &limits.spikeWidth,
                        &limits.overlapLength})
    *value = std::min(*value >= SmallestLimit ? *value : SmallestLimit, Farthest);
  return limits;
}

bool IsOutline(Operation operation) {
  return operation == Operation::Cut || operation == Operation::CutHalf;
}

JobEnds EndsOf(const CutJob& job, const FlatJob& flat, double joining,
               const std::vector<bool>& left) {
  const std::vector<std::size_t> groups = WaysOfWorking(job);
  JobEnds found;
  for (std::size_t i = 0; i < flat.contours.size(); ++i) {
    const FlatContour& contour = flat.contours[i];
    if (left[i] || contour.closed || contour.lines == 0 || !IsOutline(contour.operation)) continue;
    const Contour& open = job.paths[contour.place.path].contours[contour.place.contour];
    const std::size_t group = groups[contour.place.path];
    found.ends.push_back({open.start, i, false, group});
    found.ends.push_back({open.End(), i, true, group});
  }
  found.pairs = PairEnds(found.ends, joining);
  return found;
}

bool IsTiny(const Contour& contour, Operation operation, double tinySize) {
  if (operation == Operation::Drill) return false;
  const Box box = BoxOf(contour);
  return box.Width() < tinySize && box.Height() < tinySize;
}

Survey SurveyOf(CutJob job, const CheckLimits& limits) {
  Survey survey;
  survey.limits = UsableLimits(limits);
  survey.job = std::move(job);
  TakeSpikes(survey);
  survey.flat = FlatLinesOf(survey.job, survey.limits.tolerance * FlatteningShare);
  const double tolerance =
      std::max(survey.limits.tolerance, survey.flat.tolerance / FlatteningShare);
  survey.sameAs = FindSameContours(survey.job, survey.flat);
  std::vector<bool> left(survey.sameAs.size());
  for (std::size_t i = 0; i < left.size(); ++i) left[i] = survey.sameAs[i].has_value();
  const LineTree tree(survey.flat.lines);
  const Contacts contacts = FindContacts(survey.flat, tree, tolerance, left);
  survey.complete = contacts.complete;
  FindDuplicates(survey, contacts.runs, tolerance);
  TakeRuns(survey, contacts.runs, tolerance);
  return survey;
}

}  // namespace rastrel::cutting::clean
