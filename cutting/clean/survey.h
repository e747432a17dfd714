#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "cutting/clean/contacts.h"
#include "cutting/clean/ends.h"
#include "cutting/clean/spikes.h"

/// The base of checking and healing: the job without its needles, and how its lines lie beside
/// each other.
namespace rastrel::cutting::clean {

struct SpikeAt {
  ContourPlace place;
  Spike spike;
};

struct Survey {
  CheckLimits limits;  ///< all usable
  CutJob job;          ///< without spikes; places are those of the job that was given
  FlatJob flat;
  std::vector<SpikeAt> spikes;
  /// For each contour of `flat`, the earlier one that it lies on all along.
  std::vector<std::optional<std::uint32_t>> sameAs;
  std::vector<ContactRun> overlaps;   ///< on the later contour of the two, or the later part
  std::vector<ContactRun> crossings;  ///< of outlines; on the later contour
  bool complete = true;
};

[[nodiscard]] Survey SurveyOf(CutJob job, const CheckLimits& limits);

/// Each value a number of at least a nanometre.
[[nodiscard]] CheckLimits UsableLimits(CheckLimits limits);

/// Cut and CutHalf: lines of theirs are meant to close, and not to cross.
[[nodiscard]] bool IsOutline(Operation operation);

struct JobEnds {
  std::vector<OpenEnd> ends;  ///< of outlines that are usable, open and longer than nothing;
                              ///< `contour` is a number in the flat job
  std::vector<EndPair> pairs;
};

/// The ends of contours that `left` does not name. Ends are paired within one operation with the
/// same settings.
[[nodiscard]] JobEnds EndsOf(const CutJob& job, const FlatJob& flat, double joining,
                             const std::vector<bool>& left);

/// Whether a usable contour of an operation is smaller than tools can do; drilled ones never are.
[[nodiscard]] bool IsTiny(const Contour& contour, Operation operation, double tinySize);

/// For each path a number that is the same for those with the same operation and settings.
[[nodiscard]] std::vector<std::size_t> WaysOfWorking(const CutJob& job);

}  // namespace rastrel::cutting::clean
